#include "hexeditor.h"

class TestHexClipboard : public QObject
{
    Q_OBJECT

private slots:
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
};

void TestHexClipboard::copyWritesDigits()
{
    HexEditor editor(QByteArray::fromHex("01abff04"));
    editor.select(1, 3);
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QStringLiteral("ab ff "));
    QCOMPARE(editor.hex(), QStringLiteral("01abff04"));
}

void TestHexClipboard::copyBreaksTheLineAfterSixteenBytes()
{
    HexEditor editor(countingBytes(20));
    editor.select(14, 18);
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QStringLiteral("0e 0f \n10 11 "));
}

void TestHexClipboard::copyWithoutSelectionEmptiesTheClipboard()
{
    setClipboard("12");
    HexEditor editor(countingBytes(4));
    editor.press(QKeySequence::Copy);
    QCOMPARE(clipboard(), QString());
}

void TestHexClipboard::cutTakesTheBytesAndLeavesTheCursorHalfWay()
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

void TestHexClipboard::cutZeroesInOverwriteMode()
{
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.select(1, 3);
    editor.press(QKeySequence::Cut);
    QCOMPARE(editor.hex(), QStringLiteral("01000004"));
}

void TestHexClipboard::pasteReplacesInOverwriteMode()
{
    setClipboard("AB cd");
    HexEditor editor(QByteArray::fromHex("01020304"));
    editor.edit.setCursorPosition(1);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("01abcd04"));
    QCOMPARE(editor.edit.cursorPosition(), 3);
}

void TestHexClipboard::pasteInsertsInInsertMode()
{
    setClipboard("abcd");
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setOverwriteMode(false);
    editor.edit.setCursorPosition(1);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("01abcd02"));
    QCOMPARE(editor.edit.cursorPosition(), 3);
}

void TestHexClipboard::pasteStopsAtTheLimit()
{
    setClipboard("0a0b0c0d");
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setMaximumByteCount(4);
    editor.edit.setOverwriteMode(false);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("0a0b0102"));
    QCOMPARE(editor.edit.cursorPosition(), 2);
}

void TestHexClipboard::pasteOfNoHexadecimalTakesTheDigitsInIt()
{
    setClipboard("xyz!\n\xE4");
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    setClipboard("0x1f, zebra");
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.hex(), QStringLiteral("01fe"));
}

void TestHexClipboard::pasteOfMuchEndsWithTheBytes()
{
    QApplication::clipboard()->setText(QString(10 * 1024 * 1024, QLatin1Char('a')));
    HexEditor editor(QByteArray(64, '\0'));
    editor.edit.setByteCountEnabled(8);
    editor.edit.setCursorPosition(4);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.edit.data(), QByteArray(4, '\0') + QByteArray(60, '\xAA'));
    QCOMPARE(editor.view->cursorPos(), 15);
}

void TestHexClipboard::pasteOfMuchFillsTheRoom()
{
    QApplication::clipboard()->setText(QString(10 * 1024 * 1024, QLatin1Char('a')));
    HexEditor editor(QByteArray(4, '\0'));
    editor.edit.setMaximumByteCount(64);
    editor.edit.setOverwriteMode(false);
    editor.press(QKeySequence::Paste);
    QCOMPARE(editor.edit.data(), QByteArray(60, '\xAA') + QByteArray(4, '\0'));
}

void TestHexClipboard::deleteTakesOneByte_data()
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

void TestHexClipboard::deleteTakesOneByte()
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

void TestHexClipboard::deleteTakesTheSelection_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("backwards");
    QTest::addColumn<QString>("result");

    QTest::newRow("overwriting, forwards") << true << false << QStringLiteral("01000004");
    QTest::newRow("inserting, forwards") << false << false << QStringLiteral("0104");
    QTest::newRow("overwriting, backwards") << true << true << QStringLiteral("01000004");
    QTest::newRow("inserting, backwards") << false << true << QStringLiteral("0104");
}

void TestHexClipboard::deleteTakesTheSelection()
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

void TestHexClipboard::backspaceAtTheStartDoesNothing()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.view->setCursorPos(1);
    editor.press(Qt::Key_Backspace);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    QCOMPARE(editor.view->cursorPos(), 1);
}

void TestHexClipboard::backspaceWithAModifierDoesNothing()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setCursorPosition(1);
    editor.press(Qt::Key_Backspace, Qt::ShiftModifier);
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
}

QTEST_MAIN(TestHexClipboard)
#include "tst_hexclipboard.moc"
