#include "arraycommand.h"
#include "charcommand.h"
#include "xbytearray.h"

#include <QtTest>

Q_DECLARE_METATYPE(CharCommand::Cmd)
Q_DECLARE_METATYPE(ArrayCommand::Cmd)

namespace {
/// Bytes, and flags as 0 and 1.
QByteArray state(XByteArray &array)
{
    QByteArray text = array.data() + ' ';
    for (const char flag : array.dataChanged(0, array.data().size()))
        text += flag == 0 ? '0' : '1';
    return text;
}

/// "abcd", of which "b" and "c" are changed bytes.
XByteArray halfChanged()
{
    XByteArray array;
    array.setData("abcd");
    array.setDataChanged(1, QByteArray(2, 1));
    return array;
}
} // namespace

class TestHexCommands : public QObject
{
    Q_OBJECT

private slots:
    void byteCommandIsDoneAndTakenBack_data();
    void byteCommandIsDoneAndTakenBack();
    void arrayCommandIsDoneAndTakenBack_data();
    void arrayCommandIsDoneAndTakenBack();
    void commandOutsideTheBytesDoesNothing_data();
    void commandOutsideTheBytesDoesNothing();
    void negativeLengthDoesNothing_data();
    void negativeLengthDoesNothing();
    void onlyByteCommandsHaveAnId();
    void byteCommandsMerge_data();
    void byteCommandsMerge();
    void byteCommandDoesNotMergeWithAnotherKind();
    void mergedCommandTakesTheLastByteAndKeepsTheFirst();
};

void TestHexCommands::byteCommandIsDoneAndTakenBack_data()
{
    QTest::addColumn<CharCommand::Cmd>("cmd");
    QTest::addColumn<int>("position");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("insert") << CharCommand::insert << 2 << QByteArray("abxcd 01110");
    QTest::newRow("insert behind the last") << CharCommand::insert << 4 << QByteArray("abcdx 01101");
    QTest::newRow("remove an unchanged byte") << CharCommand::remove << 0 << QByteArray("bcd 110");
    QTest::newRow("remove a changed byte") << CharCommand::remove << 1 << QByteArray("acd 010");
    QTest::newRow("replace an unchanged byte") << CharCommand::replace << 3 << QByteArray("abcx 0111");
    QTest::newRow("replace a changed byte") << CharCommand::replace << 1 << QByteArray("axcd 0110");
}

void TestHexCommands::byteCommandIsDoneAndTakenBack()
{
    QFETCH(CharCommand::Cmd, cmd);
    QFETCH(int, position);
    QFETCH(QByteArray, result);
    XByteArray array = halfChanged();
    CharCommand command(&array, cmd, position, 'x');
    for (int round = 0; round < 2; ++round) {
        command.redo();
        QCOMPARE(state(array), result);
        command.undo();
        QCOMPARE(state(array), QByteArray("abcd 0110"));
    }
}

void TestHexCommands::arrayCommandIsDoneAndTakenBack_data()
{
    QTest::addColumn<ArrayCommand::Cmd>("cmd");
    QTest::addColumn<int>("position");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("insert") << ArrayCommand::insert << 2 << QByteArray("xy") << 2 << QByteArray("abxycd 011110");
    QTest::newRow("remove") << ArrayCommand::remove << 0 << QByteArray() << 2 << QByteArray("cd 10");
    QTest::newRow("remove past the end") << ArrayCommand::remove << 2 << QByteArray() << 9 << QByteArray("ab 01");
    QTest::newRow("replace") << ArrayCommand::replace << 2 << QByteArray("xy") << 2 << QByteArray("abxy 0111");
    QTest::newRow("replace past the end")
        << ArrayCommand::replace << 3 << QByteArray("xyz") << 3 << QByteArray("abcx 0111");
    QTest::newRow("replace by fewer") << ArrayCommand::replace << 0 << QByteArray("x") << 2 << QByteArray("xcd 110");
    QTest::newRow("replace by fewer up to the end")
        << ArrayCommand::replace << 1 << QByteArray("x") << 3 << QByteArray("ax 01");
    QTest::newRow("replace by the first of more")
        << ArrayCommand::replace << 0 << QByteArray("xyz") << 2 << QByteArray("xycd 1110");
}

void TestHexCommands::arrayCommandIsDoneAndTakenBack()
{
    QFETCH(ArrayCommand::Cmd, cmd);
    QFETCH(int, position);
    QFETCH(QByteArray, bytes);
    QFETCH(int, length);
    QFETCH(QByteArray, result);
    XByteArray array = halfChanged();
    ArrayCommand command(&array, cmd, position, bytes, length);
    for (int round = 0; round < 2; ++round) {
        command.redo();
        QCOMPARE(state(array), result);
        command.undo();
        QCOMPARE(state(array), QByteArray("abcd 0110"));
    }
}

void TestHexCommands::commandOutsideTheBytesDoesNothing_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("length");

    for (int kind = 0; kind < 3; ++kind) {
        QTest::addRow("%d before the first", kind) << -3 << kind << 3;
        QTest::addRow("%d before the first and beyond the end", kind) << -3 << kind << 10;
        QTest::addRow("%d behind the last", kind) << 5 << kind << 3;
    }
    for (const int kind : {1, 2})
        QTest::addRow("%d right behind the last", kind) << 4 << kind << 3;
}

void TestHexCommands::commandOutsideTheBytesDoesNothing()
{
    QFETCH(int, position);
    QFETCH(int, kind);
    QFETCH(int, length);
    XByteArray array = halfChanged();
    CharCommand byte(&array, CharCommand::Cmd(kind), position, 'x');
    ArrayCommand bytes(&array, ArrayCommand::Cmd(kind), position, "xyz", length);
    byte.redo();
    bytes.redo();
    QCOMPARE(state(array), QByteArray("abcd 0110"));
    bytes.undo();
    byte.undo();
    QCOMPARE(state(array), QByteArray("abcd 0110"));
}

void TestHexCommands::negativeLengthDoesNothing_data()
{
    QTest::addColumn<ArrayCommand::Cmd>("cmd");

    QTest::newRow("remove") << ArrayCommand::remove;
    QTest::newRow("replace") << ArrayCommand::replace;
}

void TestHexCommands::negativeLengthDoesNothing()
{
    QFETCH(ArrayCommand::Cmd, cmd);
    XByteArray array = halfChanged();
    ArrayCommand command(&array, cmd, 1, "xyz", -1);
    command.redo();
    QCOMPARE(state(array), QByteArray("abcd 0110"));
    command.undo();
    QCOMPARE(state(array), QByteArray("abcd 0110"));
}

void TestHexCommands::onlyByteCommandsHaveAnId()
{
    XByteArray array;
    QCOMPARE(CharCommand(&array, CharCommand::insert, 0, 'x').id(), 1234);
    QCOMPARE(ArrayCommand(&array, ArrayCommand::insert, 0, "x", 1).id(), -1);
}

void TestHexCommands::byteCommandsMerge_data()
{
    QTest::addColumn<CharCommand::Cmd>("first");
    QTest::addColumn<CharCommand::Cmd>("second");
    QTest::addColumn<int>("distance");
    QTest::addColumn<bool>("merge");

    QTest::newRow("typing twice on a byte") << CharCommand::replace << CharCommand::replace << 0 << true;
    QTest::newRow("a byte inserted and typed") << CharCommand::insert << CharCommand::replace << 0 << true;
    QTest::newRow("another byte") << CharCommand::replace << CharCommand::replace << 1 << false;
    QTest::newRow("after removing") << CharCommand::remove << CharCommand::replace << 0 << false;
    QTest::newRow("inserting") << CharCommand::replace << CharCommand::insert << 0 << false;
    QTest::newRow("removing") << CharCommand::replace << CharCommand::remove << 0 << false;
}

void TestHexCommands::byteCommandsMerge()
{
    QFETCH(CharCommand::Cmd, first);
    QFETCH(CharCommand::Cmd, second);
    QFETCH(int, distance);
    XByteArray array = halfChanged();
    CharCommand command(&array, first, 1, 'x');
    const CharCommand next(&array, second, 1 + distance, 'y');
    QTEST(command.mergeWith(&next), "merge");
}

void TestHexCommands::byteCommandDoesNotMergeWithAnotherKind()
{
    XByteArray array = halfChanged();
    CharCommand command(&array, CharCommand::replace, 0, 'x');
    const ArrayCommand next(&array, ArrayCommand::replace, 0, "y", 1);
    QVERIFY(!command.mergeWith(&next));
}

void TestHexCommands::mergedCommandTakesTheLastByteAndKeepsTheFirst()
{
    XByteArray array = halfChanged();
    CharCommand command(&array, CharCommand::replace, 0, 'x');
    CharCommand next(&array, CharCommand::replace, 0, 'y');
    command.redo();
    next.redo();
    QVERIFY(command.mergeWith(&next));
    command.undo();
    QCOMPARE(state(array), QByteArray("abcd 0110"));
    command.redo();
    QCOMPARE(state(array), QByteArray("ybcd 1110"));
}

QTEST_GUILESS_MAIN(TestHexCommands)
#include "tst_hexcommands.moc"
