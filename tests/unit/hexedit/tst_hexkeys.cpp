#include "hexeditor.h"

#include <QDialog>
#include <QPushButton>
#include <QVBoxLayout>

Q_DECLARE_METATYPE(QKeySequence::StandardKey)

namespace {
/// A dialog on the screen in which an editor has the focus and a button is the default.
struct DialogAround
{
    DialogAround()
    {
        auto *layout = new QVBoxLayout(&dialog);
        layout->addWidget(edit);
        layout->addWidget(button);
        button->setDefault(true);
        edit->setData("abcd");
        dialog.show();
        dialog.activateWindow();
        edit->setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QVERIFY(edit->widget()->hasFocus());
    }

    QDialog dialog;
    QHexEdit *edit = new QHexEdit(&dialog);
    QPushButton *button = new QPushButton(&dialog);
};
} // namespace

class TestHexKeys : public QObject
{
    Q_OBJECT

private slots:
    void keyMovesTheCursor_data();
    void keyMovesTheCursor();
    void insertModeMovesBehindTheLastByte();
    void movingEndsTheSelection();
    void endOfLineIsRightForPowersOfTwoOnly();
    void keySelects_data();
    void keySelects();
    void selectionShrinksOnTheWayBack();
    void selectAllLeavesTheCursor();
    void pageIsOneLineLessThanTheWindow();
    void cursorStaysInSight();
    void undoAndRedoHaveKeys();
    void readOnlyTakesNoEdits();
    void readOnlyMovesSelectsAndCopies();
    void insertKeyFlipsTheMode_data();
    void insertKeyFlipsTheMode();
    void keysWithoutAnyBytesDoNoHarm();
    void keyIsTakenIfItActs_data();
    void keyIsTakenIfItActs();
    void escapeRejectsTheDialogAround();
    void returnPressesTheDefaultButtonAround();
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

void TestHexKeys::insertModeMovesBehindTheLastByte()
{
    HexEditor editor(countingBytes(100));
    editor.edit.setOverwriteMode(false);
    editor.press(QKeySequence::MoveToEndOfDocument);
    QCOMPARE(editor.view->cursorPos(), 200);
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

void TestHexKeys::keyIsTakenIfItActs_data()
{
    QTest::addColumn<int>("keys");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("writable");
    QTest::addColumn<bool>("readOnly");

    QTest::newRow("digit") << int(Qt::Key_A) << QStringLiteral("a") << true << false;
    QTest::newRow("no digit") << int(Qt::Key_G) << QStringLiteral("g") << false << false;
    QTest::newRow("escape") << int(Qt::Key_Escape) << QStringLiteral("\x1B") << false << false;
    QTest::newRow("return") << int(Qt::Key_Return) << QStringLiteral("\r") << false << false;
    QTest::newRow("function key") << int(Qt::Key_F5) << QString() << false << false;
    QTest::newRow("move") << int(Qt::Key_Right) << QString() << true << true;
    QTest::newRow("select") << int(Qt::SHIFT + Qt::Key_Right) << QString() << true << true;
    QTest::newRow("select all") << int(Qt::CTRL + Qt::Key_A) << QStringLiteral("\x01") << true << true;
    QTest::newRow("cut") << int(Qt::CTRL + Qt::Key_X) << QStringLiteral("\x18") << true << false;
    QTest::newRow("copy") << int(Qt::CTRL + Qt::Key_C) << QStringLiteral("\x03") << true << true;
    QTest::newRow("paste") << int(Qt::CTRL + Qt::Key_V) << QStringLiteral("\x16") << true << false;
    QTest::newRow("delete") << int(Qt::Key_Delete) << QString() << true << false;
    QTest::newRow("backspace") << int(Qt::Key_Backspace) << QString() << true << false;
    QTest::newRow("undo") << int(Qt::CTRL + Qt::Key_Z) << QStringLiteral("\x1A") << true << false;
    QTest::newRow("redo") << int(Qt::CTRL + Qt::SHIFT + Qt::Key_Z) << QStringLiteral("\x1A") << true << false;
    QTest::newRow("insert") << int(Qt::Key_Insert) << QString() << true << true;
}

void TestHexKeys::keyIsTakenIfItActs()
{
    QFETCH(int, keys);
    QFETCH(QString, text);
    HexEditor editor(countingBytes(4));
    const auto isTaken = [&] {
        QKeyEvent event(QEvent::KeyPress, keys & ~int(Qt::KeyboardModifierMask),
                        Qt::KeyboardModifiers(keys & int(Qt::KeyboardModifierMask)), text);
        QApplication::sendEvent(editor.view, &event);
        return event.isAccepted();
    };
    QTEST(isTaken(), "writable");
    editor.edit.setReadOnly(true);
    QTEST(isTaken(), "readOnly");
}

void TestHexKeys::escapeRejectsTheDialogAround()
{
    DialogAround around;
    QSignalSpy rejected(&around.dialog, &QDialog::rejected);
    QTest::keyClick(around.edit->widget(), Qt::Key_Escape);
    QCOMPARE(rejected.count(), 1);
}

void TestHexKeys::returnPressesTheDefaultButtonAround()
{
    DialogAround around;
    QSignalSpy clicked(around.button, &QPushButton::clicked);
    QTest::keyClick(around.edit->widget(), Qt::Key_Return);
    QCOMPARE(clicked.count(), 1);
}

QTEST_MAIN(TestHexKeys)
#include "tst_hexkeys.moc"
