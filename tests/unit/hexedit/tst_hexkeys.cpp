#include "hexeditor.h"

#include <QClipboard>
#include <QScrollBar>

Q_DECLARE_METATYPE(QKeySequence::StandardKey)

namespace {
QString clipboard()
{
    return QApplication::clipboard()->text();
}

void setClipboard(const char *text)
{
    QApplication::clipboard()->setText(QLatin1String(text));
}
} // namespace

class TestHexKeys : public QObject
{
    Q_OBJECT

private slots:
    void keyMovesTheCursor_data();
    void keyMovesTheCursor();
    void movingEndsTheSelection();
    void endOfLineIsRightForPowersOfTwoOnly();
    void keySelects_data();
    void keySelects();
    void selectionShrinksOnTheWayBack();
    void selectAllLeavesTheCursor();
    void pageIsOneLineLessThanTheWindow();
    void cursorStaysInSight();

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

    void copyWritesDigits();
    void copyBreaksTheLineAfterSixteenBytes();
    void copyWithoutSelectionEmptiesTheClipboard();
    void cutTakesTheBytesAndLeavesTheCursorHalfWay();
    void cutZeroesInOverwriteMode();
    void pasteReplacesInOverwriteMode();
    void pasteInsertsInInsertMode();
    void pasteStopsAtTheLimit();
    void pasteOfNoHexadecimalTakesTheDigitsInIt();
    void pasteOfMuchEndsWithTheBytes();
    void pasteOfMuchFillsTheRoom();
    void deleteTakesOneByte_data();
    void deleteTakesOneByte();
    void deleteTakesTheSelection_data();
    void deleteTakesTheSelection();
    void backspaceAtTheStartDoesNothing();
    void backspaceWithAModifierDoesNothing();
    void undoAndRedoHaveKeys();

    void readOnlyTakesNoEdits();
    void readOnlyMovesSelectsAndCopies();
    void insertKeyFlipsTheMode_data();
    void insertKeyFlipsTheMode();
    void keysWithoutAnyBytesDoNoHarm();
};

void TestHexKeys::keyMovesTheCursor_data()
{
    using K = QKeySequence;
    QTest::addColumn<K::StandardKey>("key");
    QTest::addColumn<bool>("ascii");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");

    QTest::newRow("next digit") << K::MoveToNextChar << false << 50 << 51;
    QTest::newRow("next character") << K::MoveToNextChar << true << 50 << 52;
    QTest::newRow("next digit at the end") << K::MoveToNextChar << false << 199 << 199;
    QTest::newRow("previous digit") << K::MoveToPreviousChar << false << 50 << 49;
    QTest::newRow("previous character") << K::MoveToPreviousChar << true << 50 << 48;
    QTest::newRow("previous digit at the start") << K::MoveToPreviousChar << false << 0 << 0;
    QTest::newRow("end of line") << K::MoveToEndOfLine << false << 50 << 63;
    QTest::newRow("start of line") << K::MoveToStartOfLine << false << 50 << 32;
    QTest::newRow("previous line") << K::MoveToPreviousLine << false << 50 << 18;
    QTest::newRow("previous line on the first") << K::MoveToPreviousLine << false << 18 << 0;
    QTest::newRow("next line") << K::MoveToNextLine << false << 50 << 82;
    QTest::newRow("next line on the last") << K::MoveToNextLine << false << 198 << 199;
    QTest::newRow("end") << K::MoveToEndOfDocument << false << 50 << 199;
    QTest::newRow("start") << K::MoveToStartOfDocument << false << 50 << 0;
}

void TestHexKeys::keyMovesTheCursor()
{
    QFETCH(QKeySequence::StandardKey, key);
    QFETCH(bool, ascii);
    QFETCH(int, from);
    HexEditor editor(countingBytes(100));
    editor.click(ascii ? editor.characterAt(0) : editor.digitAt(0));
    editor.view->setCursorPos(from);
    editor.press(key);
    QTEST(editor.view->cursorPos(), "to");
}

void TestHexKeys::movingEndsTheSelection()
{
    HexEditor editor(countingBytes(100));
    editor.select(2, 9);
    editor.view->setCursorPos(20);
    editor.press(QKeySequence::MoveToNextLine);
    QCOMPARE(editor.selection(), QVector<int>({26, 26}));
}

void TestHexKeys::endOfLineIsRightForPowersOfTwoOnly()
{
    HexEditor editor;
    editor.edit.setBytesPerLine(10);
    editor.edit.setData(countingBytes(100));
    editor.view->setCursorPos(4);
    editor.press(QKeySequence::MoveToEndOfLine);
    QCOMPARE(editor.view->cursorPos(), 4 | 19);
}

void TestHexKeys::keySelects_data()
{
    using K = QKeySequence;
    QTest::addColumn<K::StandardKey>("key");
    QTest::addColumn<bool>("ascii");
    QTest::addColumn<QVector<int>>("selection");
    QTest::addColumn<int>("cursor");

    QTest::newRow("next digit") << K::SelectNextChar << false << QVector<int>({25, 25}) << 51;
    QTest::newRow("next character") << K::SelectNextChar << true << QVector<int>({25, 26}) << 52;
    QTest::newRow("previous digit") << K::SelectPreviousChar << false << QVector<int>({24, 25}) << 49;
    QTest::newRow("previous character") << K::SelectPreviousChar << true << QVector<int>({24, 25}) << 48;
    QTest::newRow("end of line") << K::SelectEndOfLine << false << QVector<int>({25, 32}) << 64;
    QTest::newRow("start of line") << K::SelectStartOfLine << false << QVector<int>({16, 25}) << 32;
    QTest::newRow("previous line") << K::SelectPreviousLine << false << QVector<int>({9, 25}) << 18;
    QTest::newRow("next line") << K::SelectNextLine << false << QVector<int>({25, 41}) << 82;
    QTest::newRow("end") << K::SelectEndOfDocument << false << QVector<int>({25, 100}) << 199;
    QTest::newRow("start") << K::SelectStartOfDocument << false << QVector<int>({0, 25}) << 0;
}

void TestHexKeys::keySelects()
{
    QFETCH(QKeySequence::StandardKey, key);
    QFETCH(bool, ascii);
    HexEditor editor(countingBytes(100));
    editor.click(ascii ? editor.characterAt(25) : editor.digitAt(25));
    editor.press(key);
    QTEST(editor.selection(), "selection");
    QTEST(editor.view->cursorPos(), "cursor");
}

void TestHexKeys::selectionShrinksOnTheWayBack()
{
    HexEditor editor(countingBytes(100));
    editor.click(editor.digitAt(20));
    editor.press(QKeySequence::SelectNextLine);
    editor.press(QKeySequence::SelectNextLine);
    editor.press(QKeySequence::SelectPreviousLine);
    QCOMPARE(editor.selection(), QVector<int>({20, 36}));
}

void TestHexKeys::selectAllLeavesTheCursor()
{
    HexEditor editor(countingBytes(100));
    editor.view->setCursorPos(50);
    editor.press(QKeySequence::SelectAll);
    QCOMPARE(editor.selection(), QVector<int>({0, 100}));
    QCOMPARE(editor.view->cursorPos(), 50);
}

void TestHexKeys::pageIsOneLineLessThanTheWindow()
{
    HexEditor editor(QByteArray(10000, '\0'));
    const int page = 32 * (editor.edit.viewport()->height() / editor.charHeight() - 1);
    editor.press(QKeySequence::MoveToNextPage);
    QCOMPARE(editor.view->cursorPos(), page);
    editor.press(QKeySequence::SelectNextPage);
    QCOMPARE(editor.selection(), QVector<int>({page / 2, page}));
    editor.press(QKeySequence::SelectPreviousPage);
    QCOMPARE(editor.selection(), QVector<int>({page / 2, page / 2}));
    editor.press(QKeySequence::MoveToPreviousPage);
    QCOMPARE(editor.view->cursorPos(), 0);
}

void TestHexKeys::cursorStaysInSight()
{
    HexEditor editor(QByteArray(10000, '\0'));
    editor.press(QKeySequence::MoveToEndOfDocument);
    QVERIFY(editor.view->visibleRegion().contains(editor.digitAt(9999)));
    editor.press(QKeySequence::MoveToStartOfDocument);
    QVERIFY(editor.view->visibleRegion().contains(editor.digitAt(0)));
}

void TestHexKeys::digitChangesItsHalfOfTheByte()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("a");
    QCOMPARE(editor.hex(), QStringLiteral("a102"));
    editor.type("b9");
    QCOMPARE(editor.hex(), QStringLiteral("ab92"));
    QCOMPARE(editor.view->cursorPos(), 3);
}

void TestHexKeys::upperCaseLetterIsNoDigit()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("A");
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    QCOMPARE(editor.view->cursorPos(), 0);
}

void TestHexKeys::onlyDigitsAreTaken()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("/:`gzG ");
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    editor.type("09af");
    QCOMPARE(editor.hex(), QStringLiteral("09af"));
}

void TestHexKeys::charactersAreTakenInTheirArea()
{
    HexEditor editor(QByteArray(4, '\0'));
    editor.click(editor.characterAt(1));
    editor.type("Ag ");
    QCOMPARE(editor.edit.data(), QByteArray("\0Ag ", 4));
}

void TestHexKeys::controlCharactersAreNotTaken()
{
    HexEditor editor(QByteArray(2, 'x'));
    editor.click(editor.characterAt(0));
    for (const QString &text : {QStringLiteral("\x1F"), QStringLiteral("\u20AC")}) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, text);
        QApplication::sendEvent(editor.view, &event);
    }
    QCOMPARE(editor.edit.data(), QByteArray("xx"));
}

void TestHexKeys::typingInsertsAByteWithItsFirstDigit()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setOverwriteMode(false);
    editor.edit.setCursorPosition(1);
    editor.type("a");
    QCOMPARE(editor.hex(), QStringLiteral("01a002"));
    editor.type("b");
    QCOMPARE(editor.hex(), QStringLiteral("01ab02"));
}

void TestHexKeys::typingInsertsACharacter()
{
    HexEditor editor("xy");
    editor.edit.setOverwriteMode(false);
    editor.click(editor.characterAt(1));
    editor.type("ab");
    QCOMPARE(editor.edit.data(), QByteArray("xaby"));
}

void TestHexKeys::typingAppendsBehindTheLastByte()
{
    HexEditor editor;
    editor.edit.setOverwriteMode(false);
    editor.type("abcd");
    QCOMPARE(editor.hex(), QStringLiteral("abcd"));
}

void TestHexKeys::typingIntoNothingWhenOverwritingDoesNothing()
{
    HexEditor editor;
    editor.type("ab");
    QCOMPARE(editor.hex(), QString());
    QCOMPARE(editor.view->cursorPos(), 0);
}

void TestHexKeys::typingWithoutRoomOverwrites()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setMaximumByteCount(2);
    editor.edit.setOverwriteMode(false);
    editor.type("ab");
    QCOMPARE(editor.hex(), QStringLiteral("ab02"));
}

void TestHexKeys::typingConsidersTheByte()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setCursorPosition(5);
    editor.type("a");
    QCOMPARE(editor.considered(), QVector<int>({5}));
}

void TestHexKeys::typingConsidersNothingWithoutConsideration()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setConsideration(false);
    editor.type("a");
    QCOMPARE(editor.considered(), QVector<int>());
}

void TestHexKeys::typingConsidersWithinTheBitsOnly()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setConsiderBitArray(QBitArray(3));
    editor.edit.setCursorPosition(2);
    editor.type("abcd");
    QCOMPARE(editor.considered(), QVector<int>({2}));
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 3);
}

void TestHexKeys::typingReplacesTheSelection_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<QString>("result");

    QTest::newRow("overwriting") << true << QStringLiteral("01a00004");
    QTest::newRow("inserting") << false << QStringLiteral("01a004");
}

void TestHexKeys::typingReplacesTheSelection()
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

void TestHexKeys::typingReachesNoHiddenByte()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setCursorPosition(6);
    editor.edit.setByteCountEnabled(4);
    editor.type("ab");
    QCOMPARE(editor.edit.data().mid(4), countingBytes(8).mid(4));
}

void TestHexKeys::copyWritesDigits()
{
    HexEditor editor(QByteArray::fromHex("01abff04"));
    editor.select(1, 3);
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QStringLiteral("ab ff "));
    QCOMPARE(editor.hex(), QStringLiteral("01abff04"));
}

void TestHexKeys::copyBreaksTheLineAfterSixteenBytes()
{
    HexEditor editor(countingBytes(20));
    editor.select(14, 18);
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QStringLiteral("0e 0f \n10 11 "));
}

void TestHexKeys::copyWithoutSelectionEmptiesTheClipboard()
{
    setClipboard("12");
    HexEditor editor(countingBytes(4));
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QString());
}

void TestHexKeys::cutTakesTheBytesAndLeavesTheCursorHalfWay()
{
    HexEditor editor(countingBytes(20));
    editor.edit.setOverwriteMode(false);
    editor.select(8, 12);
    editor.press(QKeySequence::Cut);
    QCOMPARE(clipboard(), QStringLiteral("08 09 0a 0b "));
    QCOMPARE(editor.edit.data(), countingBytes(8) + countingBytes(20).mid(12));
    QCOMPARE(editor.edit.cursorPosition(), 4);
    QCOMPARE(editor.selection(), QVector<int>({4, 4}));
}

void TestHexKeys::cutZeroesInOverwriteMode()
{
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.select(1, 3);
    editor.press(QKeySequence::Cut);
    QCOMPARE(editor.hex(), QStringLiteral("01000004"));
}

void TestHexKeys::pasteReplacesInOverwriteMode()
{
    setClipboard("AB cd");
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.setCursorPosition(1);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("01abcd04"));
    QCOMPARE(editor.edit.cursorPosition(), 3);
}

void TestHexKeys::pasteInsertsInInsertMode()
{
    setClipboard("abcd");
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setOverwriteMode(false);
    editor.edit.setCursorPosition(1);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("01abcd02"));
    QCOMPARE(editor.edit.cursorPosition(), 3);
}

void TestHexKeys::pasteStopsAtTheLimit()
{
    setClipboard("0a0b0c0d");
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setMaximumByteCount(4);
    editor.edit.setOverwriteMode(false);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("0a0b0102"));
    QCOMPARE(editor.edit.cursorPosition(), 2);
}

void TestHexKeys::pasteOfNoHexadecimalTakesTheDigitsInIt()
{
    setClipboard("xyz!\n\xE4");
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    setClipboard("0x1f, zebra");
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("01fe"));
}

void TestHexKeys::pasteOfMuchEndsWithTheBytes()
{
    QApplication::clipboard()->setText(QString(10 * 1024 * 1024, QLatin1Char('a')));
    HexEditor editor(QByteArray(64, '\0'));
    editor.edit.setByteCountEnabled(8);
    editor.edit.setCursorPosition(4);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.edit.data(), QByteArray(4, '\0') + QByteArray(60, '\xAA'));
    QCOMPARE(editor.view->cursorPos(), 15);
}

void TestHexKeys::pasteOfMuchFillsTheRoom()
{
    QApplication::clipboard()->setText(QString(10 * 1024 * 1024, QLatin1Char('a')));
    HexEditor editor(QByteArray(4, '\0'));
    editor.edit.setMaximumByteCount(64);
    editor.edit.setOverwriteMode(false);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.edit.data(), QByteArray(60, '\xAA') + QByteArray(4, '\0'));
}

void TestHexKeys::deleteTakesOneByte_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("backwards");
    QTest::addColumn<QString>("result");
    QTest::addColumn<int>("cursor");

    QTest::newRow("overwriting, forwards") << true << false << QStringLiteral("01020004") << 4;
    QTest::newRow("inserting, forwards") << false << false << QStringLiteral("010204") << 4;
    QTest::newRow("overwriting, backwards") << true << true << QStringLiteral("01000304") << 2;
    QTest::newRow("inserting, backwards") << false << true << QStringLiteral("010304") << 2;
}

void TestHexKeys::deleteTakesOneByte()
{
    QFETCH(bool, overwrite);
    QFETCH(bool, backwards);
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.setOverwriteMode(overwrite);
    editor.edit.setCursorPosition(2);
    if (backwards)
        editor.press(Qt::Key_Backspace);
    else
        editor.press(QKeySequence::Delete);
    QTEST(editor.hex(), "result");
    QTEST(editor.view->cursorPos(), "cursor");
}

void TestHexKeys::deleteTakesTheSelection_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("backwards");
    QTest::addColumn<QString>("result");

    QTest::newRow("overwriting, forwards") << true << false << QStringLiteral("01000004");
    QTest::newRow("inserting, forwards") << false << false << QStringLiteral("0104");
    QTest::newRow("overwriting, backwards") << true << true << QStringLiteral("01000004");
    QTest::newRow("inserting, backwards") << false << true << QStringLiteral("0104");
}

void TestHexKeys::deleteTakesTheSelection()
{
    QFETCH(bool, overwrite);
    QFETCH(bool, backwards);
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.setOverwriteMode(overwrite);
    editor.select(1, 3);
    if (backwards)
        editor.press(Qt::Key_Backspace);
    else
        editor.press(QKeySequence::Delete);
    QTEST(editor.hex(), "result");
    QCOMPARE(editor.edit.cursorPosition(), 1);
    QCOMPARE(editor.selection(), QVector<int>({1, 1}));
}

void TestHexKeys::backspaceAtTheStartDoesNothing()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.view->setCursorPos(1);
    editor.press(Qt::Key_Backspace);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    QCOMPARE(editor.view->cursorPos(), 1);
}

void TestHexKeys::backspaceWithAModifierDoesNothing()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setCursorPosition(1);
    editor.press(Qt::Key_Backspace, Qt::ShiftModifier);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
}

void TestHexKeys::undoAndRedoHaveKeys()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("ab");
    editor.press(QKeySequence::Undo);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    editor.press(QKeySequence::Redo);
    QCOMPARE(editor.hex(), QStringLiteral("ab02"));
}

void TestHexKeys::readOnlyTakesNoEdits()
{
    setClipboard("ff");
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.replace(0, 1, "\x0F");
    editor.edit.setReadOnly(true);
    editor.select(1, 3);
    editor.type("a");
    editor.press(QKeySequence::Paste);
    editor.press(QKeySequence::Cut);
    editor.press(QKeySequence::Delete);
    editor.press(Qt::Key_Backspace);
    editor.press(QKeySequence::Undo);
    QCOMPARE(editor.hex(), QStringLiteral("0f020304"));
    QCOMPARE(editor.considered(), QVector<int>());
    QCOMPARE(clipboard(), QStringLiteral("ff"));
}

void TestHexKeys::readOnlyMovesSelectsAndCopies()
{
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.setReadOnly(true);
    editor.press(QKeySequence::MoveToNextChar);
    QCOMPARE(editor.view->cursorPos(), 1);
    editor.press(QKeySequence::SelectAll);
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QStringLiteral("01 02 03 04 "));
}

void TestHexKeys::insertKeyFlipsTheMode_data()
{
    QTest::addColumn<bool>("readOnly");

    QTest::newRow("writable") << false;
    QTest::newRow("read only") << true;
}

void TestHexKeys::insertKeyFlipsTheMode()
{
    QFETCH(bool, readOnly);
    HexEditor editor(countingBytes(4));
    editor.edit.setReadOnly(readOnly);
    QSignalSpy modes(&editor.edit, &QHexEdit::overwriteModeChanged);
    editor.press(Qt::Key_Insert);
    editor.press(Qt::Key_Insert, Qt::AltModifier);
    QCOMPARE(modes, QList<QVariantList>({{false}}));
    QVERIFY(!editor.edit.overwriteMode());
}

void TestHexKeys::keysWithoutAnyBytesDoNoHarm()
{
    HexEditor editor;
    for (int key = QKeySequence::HelpContents; key <= QKeySequence::Cancel; ++key) {
        for (const QKeySequence &keys : QKeySequence::keyBindings(QKeySequence::StandardKey(key)))
            editor.press(Qt::Key(keys[0] & ~int(Qt::KeyboardModifierMask)),
                         Qt::KeyboardModifiers(keys[0] & int(Qt::KeyboardModifierMask)));
    }
    QCOMPARE(editor.edit.data(), QByteArray());
    QCOMPARE(editor.view->cursorPos(), 0);
}

QTEST_MAIN(TestHexKeys)
#include "tst_hexkeys.moc"
