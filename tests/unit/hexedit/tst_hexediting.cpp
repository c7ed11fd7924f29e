#include "hexeditor.h"

#include <limits>

namespace {
constexpr int largest = std::numeric_limits<int>::max();
constexpr int smallest = std::numeric_limits<int>::min();
} // namespace

class TestHexEditing : public QObject
{
    Q_OBJECT

private slots:
    void loadingMovesTheCursorToTheStartAndTellsOnce();
    void loadingKeepsLimits();
    void loadingCannotBeUndone();
    void everyEditTellsTheWholeLengthOnce_data();
    void everyEditTellsTheWholeLengthOnce();
    void editBeyondALimitChangesAndTellsNothing_data();
    void editBeyondALimitChangesAndTellsNothing();
    void fullEditorTakesSingleBytesOnly();
    void insertingFillsTheRoomAndCutsTheArray();
    void insertingWithoutRoomEmptiesTheArray();
    void insertingArrayInOverwriteModeReplaces();
    void insertingByteInsertsInBothModes();
    void overwritingIgnoresTheLimitAndEndsWithTheBytes();
    void removingZeroesInOverwriteMode_data();
    void removingZeroesInOverwriteMode();
    void removingShrinksInInsertMode_data();
    void removingShrinksInInsertMode();
    void replacingResetsTheSelection();
    void historyKeepsNoMoreThanIsReplaced();
    void extremeArgumentsDoNoHarm_data();
    void extremeArgumentsDoNoHarm();
};

void TestHexEditing::loadingMovesTheCursorToTheStartAndTellsOnce()
{
    QHexEdit edit;
    edit.setData("abcd");
    edit.setCursorPosition(2);
    QSignalSpy counts(&edit, &QHexEdit::dataCountChanged);
    edit.setData("xyz");
    QCOMPARE(edit.cursorPosition(), 0);
    QCOMPARE(counts, QList<QVariantList>({{3}}));
}

void TestHexEditing::loadingKeepsLimits()
{
    HexEditor editor("abcd");
    editor.edit.setByteCountEnabled(2);
    editor.edit.setData("xyz");
    QCOMPARE(editor.edit.toReadableString().simplified(), QStringLiteral("0000 78 79 xy"));
}

void TestHexEditing::loadingCannotBeUndone()
{
    QHexEdit edit;
    edit.setData("abcd");
    edit.insert(0, 'x');
    edit.setData("xyz");
    edit.undo();
    QCOMPARE(edit.data(), QByteArray("xyz"));
    edit.redo();
    QCOMPARE(edit.data(), QByteArray("xyz"));
}

void TestHexEditing::everyEditTellsTheWholeLengthOnce_data()
{
    QTest::addColumn<QByteArray>("edit");
    QTest::addColumn<int>("length");

    QTest::newRow("insert a byte") << QByteArray("insert") << 9;
    QTest::newRow("insert an array") << QByteArray("insert array") << 10;
    QTest::newRow("remove a byte") << QByteArray("remove") << 7;
    QTest::newRow("remove an array") << QByteArray("remove array") << 6;
    QTest::newRow("replace") << QByteArray("replace") << 8;
    QTest::newRow("undo") << QByteArray("undo") << 8;
    QTest::newRow("redo") << QByteArray("redo") << 8;
}

void TestHexEditing::everyEditTellsTheWholeLengthOnce()
{
    QFETCH(QByteArray, edit);
    QHexEdit editor;
    editor.setOverwriteMode(false);
    editor.setData("abcdefgh");
    QSignalSpy counts(&editor, &QHexEdit::dataCountChanged);
    QSignalSpy silent(&editor, &QHexEdit::dataChanged);
    QByteArray two("xy");
    if (edit == "insert")
        editor.insert(0, 'x');
    else if (edit == "insert array")
        editor.insert(0, two);
    else if (edit == "remove")
        editor.remove(0, 1);
    else if (edit == "remove array")
        editor.remove(0, 2);
    else if (edit == "replace")
        editor.replace(0, 2, two);
    else if (edit == "undo")
        editor.undo();
    else if (edit == "redo")
        editor.redo();
    QCOMPARE(counts.count(), 1);
    QTEST(counts.at(0).at(0).toInt(), "length");
    QCOMPARE(silent.count(), 0);
}

void TestHexEditing::editBeyondALimitChangesAndTellsNothing_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("overwrite");

    for (const bool overwrite : {false, true}) {
        const char *mode = overwrite ? "overwriting" : "inserting";
        QTest::addRow("%s, full", mode) << 0 << overwrite;
        QTest::addRow("%s before the first", mode) << -1 << overwrite;
        QTest::addRow("%s far before", mode) << smallest << overwrite;
        QTest::addRow("%s behind the last", mode) << 9 << overwrite;
        QTest::addRow("%s far behind", mode) << largest << overwrite;
    }
}

void TestHexEditing::editBeyondALimitChangesAndTellsNothing()
{
    QFETCH(int, position);
    QFETCH(bool, overwrite);
    HexEditor editor("abcdefgh");
    editor.edit.setOverwriteMode(overwrite);
    const bool full = position == 0;
    if (full)
        editor.edit.setMaximumByteCount(8);
    QSignalSpy counts(&editor.edit, &QHexEdit::dataCountChanged);
    QByteArray bytes("xyz");
    editor.edit.insert(position, 'x');
    editor.edit.replace(position, 3, bytes);
    editor.view->replace(position, bytes);
    if (!full) {
        editor.edit.remove(position, 1);
        editor.edit.remove(position, 2);
        editor.view->replace(position, 'x');
    }
    if (!full || !overwrite)
        editor.edit.insert(position, bytes);
    QCOMPARE(editor.edit.data(), QByteArray("abcdefgh"));
    QCOMPARE(counts.count(), 0);
}

void TestHexEditing::fullEditorTakesSingleBytesOnly()
{
    HexEditor editor("abcdefgh");
    editor.edit.setMaximumByteCount(8);
    editor.view->replace(0, 'x');
    editor.view->replace(1, QByteArray("y"));
    QCOMPARE(editor.edit.data(), QByteArray("xbcdefgh"));
    editor.view->replace(8, 'z');
    QCOMPARE(editor.edit.data(), QByteArray("xbcdefgh"));
}

void TestHexEditing::insertingFillsTheRoomAndCutsTheArray()
{
    QHexEdit edit;
    edit.setOverwriteMode(false);
    edit.setData("ab");
    edit.setMaximumByteCount(7);
    QByteArray bytes = countingBytes(10);
    edit.insert(1, bytes);
    QCOMPARE(bytes, countingBytes(5));
    QCOMPARE(edit.data(), "a" + countingBytes(5) + "b");
}

void TestHexEditing::insertingWithoutRoomEmptiesTheArray()
{
    QHexEdit edit;
    edit.setOverwriteMode(false);
    edit.setData("abcd");
    edit.setMaximumByteCount(2);
    QSignalSpy counts(&edit, &QHexEdit::dataCountChanged);
    QByteArray bytes("xyz");
    edit.insert(1, bytes);
    QCOMPARE(bytes, QByteArray());
    QCOMPARE(counts.count(), 0);
}

void TestHexEditing::insertingArrayInOverwriteModeReplaces()
{
    QHexEdit edit;
    edit.setData("abcd");
    QByteArray bytes("xy");
    edit.insert(1, bytes);
    QCOMPARE(edit.data(), QByteArray("axyd"));
}

void TestHexEditing::insertingByteInsertsInBothModes()
{
    QHexEdit edit;
    edit.setData("ab");
    edit.insert(1, 'x');
    edit.setOverwriteMode(false);
    edit.insert(3, 'y');
    QCOMPARE(edit.data(), QByteArray("axby"));
}

void TestHexEditing::overwritingIgnoresTheLimitAndEndsWithTheBytes()
{
    QHexEdit edit;
    edit.setData("abcd");
    edit.setMaximumByteCount(4);
    edit.setByteCountEnabled(3);
    QByteArray bytes = countingBytes(100);
    edit.insert(1, bytes);
    QCOMPARE(edit.data(), "a" + countingBytes(3));
    QCOMPARE(bytes.size(), 100);
    edit.undo();
    QCOMPARE(edit.data(), QByteArray("abcd"));
}

void TestHexEditing::removingZeroesInOverwriteMode_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("negative") << -1 << QByteArray("abcd");
    QTest::newRow("nothing") << 0 << QByteArray("abcd");
    QTest::newRow("one") << 1 << QByteArray("a\0cd", 4);
    QTest::newRow("two") << 2 << QByteArray("a\0\0d", 4);
    QTest::newRow("past the end") << largest << QByteArray("a\0\0\0", 4);
}

void TestHexEditing::removingZeroesInOverwriteMode()
{
    QFETCH(int, length);
    QHexEdit edit;
    edit.setData("abcd");
    edit.remove(1, length);
    QTEST(edit.data(), "result");
}

void TestHexEditing::removingShrinksInInsertMode_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("negative") << -1 << QByteArray("abcd");
    QTest::newRow("nothing") << 0 << QByteArray("abcd");
    QTest::newRow("one") << 1 << QByteArray("acd");
    QTest::newRow("two") << 2 << QByteArray("ad");
    QTest::newRow("past the end") << largest << QByteArray("a");
}

void TestHexEditing::removingShrinksInInsertMode()
{
    QFETCH(int, length);
    QHexEdit edit;
    edit.setOverwriteMode(false);
    edit.setData("abcd");
    edit.remove(1, length);
    QTEST(edit.data(), "result");
}

void TestHexEditing::replacingResetsTheSelection()
{
    HexEditor editor("abcd");
    editor.select(1, 3);
    editor.edit.replace(0, 1, "x");
    QCOMPARE(editor.selection(), QVector<int>({1, 1}));
}

void TestHexEditing::extremeArgumentsDoNoHarm_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("largest") << largest;
    QTest::newRow("smallest") << smallest;
    QTest::newRow("negative") << -1;
}

void TestHexEditing::extremeArgumentsDoNoHarm()
{
    QFETCH(int, number);
    HexEditor editor("abcd");
    for (const bool overwrite : {true, false}) {
        QByteArray bytes("xyz");
        editor.edit.setOverwriteMode(overwrite);
        editor.edit.setByteCountEnabled(number);
        editor.edit.setMaximumByteCount(number);
        editor.edit.insert(1, bytes);
        editor.edit.insert(1, 'x');
        editor.edit.replace(1, number, bytes);
        editor.edit.remove(1, number);
        editor.edit.indexOf(bytes, number);
        editor.edit.lastIndexOf(bytes, number);
        editor.edit.setCursorPosition(number);
        editor.view->grab();
    }
    editor.edit.setOverwriteMode(true);
    editor.edit.setByteCountEnabled(XByteArray::mostBytes);
    editor.edit.setMaximumByteCount(XByteArray::mostBytes);
    editor.edit.setData("abcd");
    editor.edit.setAddressOffset(number);
    editor.edit.setAddressWidth(number);
    editor.edit.setBytesPerLine(number);
    editor.edit.setCursorPosition(number);
    editor.view->resetSelection(number);
    editor.view->setSelection(number);
    editor.edit.selectionToReadableString();
    editor.view->grab();
    editor.type("a");
    editor.press(QKeySequence::Cut);
    editor.press(QKeySequence::Paste);
    editor.press(QKeySequence::Delete);
    editor.press(Qt::Key_Backspace);
    editor.edit.setOverwriteMode(false);
    editor.view->resetSelection(number);
    editor.edit.setCursorPosition(0);
    editor.type("a");
    editor.press(QKeySequence::Copy);
    QCOMPARE(editor.edit.data().size(), 4 + 1);
}

void TestHexEditing::historyKeepsNoMoreThanIsReplaced()
{
    HexEditor editor("abcd");
    const QByteArray after(1000, 'x');
    editor.edit.replace(0, 1, after);
    QVERIFY(after.isDetached());
    editor.view->replace(3, after);
    QVERIFY(after.isDetached());
    QCOMPARE(editor.edit.data(), QByteArray("xbcx"));
}

QTEST_MAIN(TestHexEditing)
#include "tst_hexediting.moc"
