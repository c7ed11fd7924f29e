#include "hexeditor.h"

class TestHexTyping : public QObject
{
    Q_OBJECT

private slots:
    void digitChangesItsHalfOfTheByte();
    void upperCaseLetterIsNoDigit();
    void onlyDigitsAreTaken();
    void charactersAreTakenInTheirArea();
    void controlCharactersAreNotTaken();
    void typingInsertsAByteWithItsFirstDigit();
    void typingInsertsACharacter();
    void typingAppendsBehindTheLastByte();
    void typingIntoNothingWhenOverwritingDoesNothing();
    void typingWithoutRoomOverwrites();
    void typingConsidersTheByte();
    void typingConsidersNothingWithoutConsideration();
    void typingConsidersWithinTheBitsOnly();
    void typingReplacesTheSelection_data();
    void typingReplacesTheSelection();
    void typingReachesNoHiddenByte();
    void typingReachesTheLastOfManyLines();
    void deletingWithACharacterDeletesWhatItEntered_data();
    void deletingWithACharacterDeletesWhatItEntered();
    void cursorBehindTheLastByteOverwritesNothing();
};

void TestHexTyping::digitChangesItsHalfOfTheByte()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("a");
    QCOMPARE(editor.hex(), QStringLiteral("a102"));
    editor.type("b9");
    QCOMPARE(editor.hex(), QStringLiteral("ab92"));
    QCOMPARE(editor.view->cursorPos(), 3);
}

void TestHexTyping::upperCaseLetterIsNoDigit()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("A");
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    QCOMPARE(editor.view->cursorPos(), 0);
}

void TestHexTyping::onlyDigitsAreTaken()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("/:`gzG ");
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    editor.type("09af");
    QCOMPARE(editor.hex(), QStringLiteral("09af"));
}

void TestHexTyping::charactersAreTakenInTheirArea()
{
    HexEditor editor(QByteArray(4, '\0'));
    editor.click(editor.characterAt(1));
    editor.type("Ag ");
    QCOMPARE(editor.edit.data(), QByteArray("\0Ag ", 4));
}

void TestHexTyping::controlCharactersAreNotTaken()
{
    HexEditor editor(QByteArray(2, 'x'));
    editor.click(editor.characterAt(0));
    for (const QString &text : {QStringLiteral("\x1F"), QStringLiteral("\u20AC")}) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, text);
        QApplication::sendEvent(editor.view, &event);
    }
    QCOMPARE(editor.edit.data(), QByteArray("xx"));
}

void TestHexTyping::typingInsertsAByteWithItsFirstDigit()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setOverwriteMode(false);
    editor.edit.setCursorPosition(1);
    editor.type("a");
    QCOMPARE(editor.hex(), QStringLiteral("01a002"));
    editor.type("b");
    QCOMPARE(editor.hex(), QStringLiteral("01ab02"));
}

void TestHexTyping::typingInsertsACharacter()
{
    HexEditor editor("xy");
    editor.edit.setOverwriteMode(false);
    editor.click(editor.characterAt(1));
    editor.type("ab");
    QCOMPARE(editor.edit.data(), QByteArray("xaby"));
}

void TestHexTyping::typingAppendsBehindTheLastByte()
{
    HexEditor editor;
    editor.edit.setOverwriteMode(false);
    editor.type("abcd");
    QCOMPARE(editor.hex(), QStringLiteral("abcd"));
}

void TestHexTyping::typingIntoNothingWhenOverwritingDoesNothing()
{
    HexEditor editor;
    editor.type("ab");
    QCOMPARE(editor.hex(), QString());
    QCOMPARE(editor.view->cursorPos(), 0);
}

void TestHexTyping::typingWithoutRoomOverwrites()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setMaximumByteCount(2);
    editor.edit.setOverwriteMode(false);
    editor.type("ab");
    QCOMPARE(editor.hex(), QStringLiteral("ab02"));
}

void TestHexTyping::typingConsidersTheByte()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setCursorPosition(5);
    editor.type("a");
    QCOMPARE(editor.considered(), QVector<int>({5}));
}

void TestHexTyping::typingConsidersNothingWithoutConsideration()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setConsideration(false);
    editor.type("a");
    QCOMPARE(editor.considered(), QVector<int>());
}

void TestHexTyping::typingConsidersWithinTheBitsOnly()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setConsiderBitArray(QBitArray(3));
    editor.edit.setCursorPosition(2);
    editor.type("abcd");
    QCOMPARE(editor.considered(), QVector<int>({2}));
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 3);
}

void TestHexTyping::typingReplacesTheSelection_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<QString>("result");

    QTest::newRow("overwriting") << true << QStringLiteral("01a00004");
    QTest::newRow("inserting") << false << QStringLiteral("01a004");
}

void TestHexTyping::typingReplacesTheSelection()
{
    QFETCH(bool, overwrite);
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.setOverwriteMode(overwrite);
    editor.select(1, 3);
    editor.edit.setCursorPosition(3);
    editor.type("a");
    QTEST(editor.hex(), "result");
    QCOMPARE(editor.view->cursorPos(), 3);
    QCOMPARE(editor.selection(), QVector<int>({1, 1}));
    QCOMPARE(editor.considered(), QVector<int>({1}));
}

void TestHexTyping::typingReachesNoHiddenByte()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setCursorPosition(6);
    editor.edit.setByteCountEnabled(4);
    editor.type("ab");
    QCOMPARE(editor.edit.data().mid(4), countingBytes(8).mid(4));
}

void TestHexTyping::typingReachesTheLastOfManyLines()
{
    constexpr int size = 16777215;
    HexEditor editor;
    editor.edit.setBytesPerLine(1);
    editor.edit.setData(QByteArray(size, '\0'));
    editor.edit.setCursorPosition(size - 1);
    editor.type("a");
    QCOMPARE(editor.edit.data().indexOf('\xA0'), size - 1);
}

void TestHexTyping::deletingWithACharacterDeletesWhatItEntered_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("overwriting") << true << false << QByteArray("abcde\0gh", 8);
    QTest::newRow("overwriting a selection") << true << true << QByteArray("ab\0\0\0fgh", 8);
    QTest::newRow("inserting") << false << false << QByteArray("abcdefgh");
    QTest::newRow("inserting for a selection") << false << true << QByteArray("abfgh");
}

void TestHexTyping::deletingWithACharacterDeletesWhatItEntered()
{
    QFETCH(bool, overwrite);
    QFETCH(bool, selected);
    HexEditor editor("abcdefgh");
    editor.edit.setOverwriteMode(overwrite);
    editor.click(editor.characterAt(5));
    if (selected)
        editor.select(2, 5);
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, QString(QChar(0x7F)));
    QApplication::sendEvent(editor.view, &event);
    QTEST(editor.edit.data(), "result");
}

void TestHexTyping::cursorBehindTheLastByteOverwritesNothing()
{
    HexEditor editor("ab");
    editor.edit.setOverwriteMode(false);
    editor.press(QKeySequence::MoveToEndOfDocument);
    editor.press(Qt::Key_Insert);
    QCOMPARE(editor.view->cursorPos(), 4);
    editor.type("7");
    QCOMPARE(editor.edit.data(), QByteArray("ab"));
    QCOMPARE(editor.view->cursorPos(), 3);
}

QTEST_MAIN(TestHexTyping)
#include "tst_hextyping.moc"
