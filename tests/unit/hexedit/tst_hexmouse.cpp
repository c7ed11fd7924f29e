#include "hexeditor.h"

namespace {
void press(HexEditor &editor, Qt::MouseButton button, QPoint point)
{
    QTest::mousePress(editor.view, button, {}, point);
}

/// QTest moves without a button, and a widget hears of that only if it tracks the mouse.
void drag(HexEditor &editor, Qt::MouseButton button, QPoint point)
{
    QMouseEvent event(QEvent::MouseMove, point, Qt::NoButton, button, Qt::NoModifier);
    QApplication::sendEvent(editor.view, &event);
}

void release(HexEditor &editor, Qt::MouseButton button, QPoint point)
{
    QTest::mouseRelease(editor.view, button, {}, point);
}

QVector<int> bytes(std::initializer_list<int> indexes)
{
    return indexes;
}
} // namespace

class TestHexMouse : public QObject
{
    Q_OBJECT

private slots:
    void clickPutsTheCursorOnTheDigit_data();
    void clickPutsTheCursorOnTheDigit();
    void clickOutsideTheAreasMovesToTheStart();
    void clickInOneAreaTypesThere();
    void dragSelects();
    void dragBackSelectsToTheLeft();
    void dragOutsideTheAreasKeepsTheSelection();
    void rightClickFlipsTheByte();
    void rightDragPaintsTheBytesItCrosses();
    void rightDragFromASetByteClears();
    void rightDragToTheNextByteLeavesTheFirst();
    void rightDragWithinOneByteSetsIt();
    void rightDragOverOneByteAgainDoesNotFlipIt();
    void nextRightClickFlipsTheSameByteAgain();
    void leftDragConsidersNothing();
    void leavingTheAreasHandlesTheFirstByte();
    void releaseOutsideFlipsTheFirstByte();
    void gesturesWorkWithoutConsideration();
    void bytesBeyondTheDataCanBeMarked();
    void gesturesWithoutBitsDoNoHarm();
    void positionIsRoundedToPixels();
};

void TestHexMouse::clickPutsTheCursorOnTheDigit_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<bool>("low");

    QTest::newRow("high digit") << 0 << false;
    QTest::newRow("low digit") << 0 << true;
    QTest::newRow("end of a line") << 15 << true;
    QTest::newRow("next line") << 16 << false;
}

void TestHexMouse::clickPutsTheCursorOnTheDigit()
{
    QFETCH(int, byte);
    QFETCH(bool, low);
    HexEditor editor(countingBytes(64));
    editor.view->setCursorPos(50);
    editor.select(3, 9);
    editor.click(editor.digitAt(byte, low));
    QCOMPARE(editor.view->cursorPos(), 2 * byte + (low ? 1 : 0));
    QCOMPARE(editor.selection(), bytes({byte, byte}));
}

void TestHexMouse::clickOutsideTheAreasMovesToTheStart()
{
    HexEditor editor(countingBytes(64));
    editor.edit.setCursorPosition(20);
    editor.click(editor.beside());
    QCOMPARE(editor.view->cursorPos(), 0);
    QCOMPARE(editor.selection(), bytes({0, 0}));
}

void TestHexMouse::clickInOneAreaTypesThere()
{
    HexEditor editor(QByteArray(2, '\0'));
    editor.click(editor.characterAt(0));
    editor.type("a");
    editor.click(editor.digitAt(1));
    editor.type("a");
    QCOMPARE(editor.hex(), QStringLiteral("61a0"));
}

void TestHexMouse::dragSelects()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::LeftButton, editor.digitAt(2));
    drag(editor, Qt::LeftButton, editor.digitAt(20));
    release(editor, Qt::LeftButton, editor.digitAt(20));
    QCOMPARE(editor.selection(), bytes({2, 20}));
    QCOMPARE(editor.edit.cursorPosition(), 20);
}

void TestHexMouse::dragBackSelectsToTheLeft()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::LeftButton, editor.characterAt(20));
    drag(editor, Qt::LeftButton, editor.characterAt(2));
    QCOMPARE(editor.selection(), bytes({2, 20}));
}

void TestHexMouse::dragOutsideTheAreasKeepsTheSelection()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::LeftButton, editor.digitAt(2));
    drag(editor, Qt::LeftButton, editor.digitAt(4));
    drag(editor, Qt::LeftButton, editor.beside());
    drag(editor, Qt::LeftButton, editor.digitAt(0) - QPoint(0, 500));
    QCOMPARE(editor.selection(), bytes({2, 4}));
    QCOMPARE(editor.edit.cursorPosition(), 4);
}

void TestHexMouse::rightClickFlipsTheByte()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(3));
    QCOMPARE(editor.considered(), bytes({}));
    release(editor, Qt::RightButton, editor.digitAt(3));
    QCOMPARE(editor.considered(), bytes({3}));
    QTest::mouseClick(editor.view, Qt::RightButton, {}, editor.characterAt(3));
    QCOMPARE(editor.considered(), bytes({}));
}

void TestHexMouse::rightDragPaintsTheBytesItCrosses()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(3));
    for (const int byte : {3, 4, 5})
        drag(editor, Qt::RightButton, editor.digitAt(byte));
    release(editor, Qt::RightButton, editor.digitAt(5));
    QCOMPARE(editor.considered(), bytes({3, 4, 5}));
}

void TestHexMouse::rightDragFromASetByteClears()
{
    HexEditor editor(countingBytes(64));
    for (const int byte : {3, 5, 8})
        editor.view->setConsideredByte(byte);
    press(editor, Qt::RightButton, editor.digitAt(3));
    for (const int byte : {3, 4, 5})
        drag(editor, Qt::RightButton, editor.digitAt(byte));
    release(editor, Qt::RightButton, editor.digitAt(5));
    QCOMPARE(editor.considered(), bytes({8}));
}

void TestHexMouse::rightDragToTheNextByteLeavesTheFirst()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(3));
    drag(editor, Qt::RightButton, editor.digitAt(4));
    release(editor, Qt::RightButton, editor.digitAt(4));
    QCOMPARE(editor.considered(), bytes({4}));
}

void TestHexMouse::rightDragWithinOneByteSetsIt()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(3));
    drag(editor, Qt::RightButton, editor.digitAt(3, true));
    release(editor, Qt::RightButton, editor.digitAt(3, true));
    QCOMPARE(editor.considered(), bytes({3}));
}

void TestHexMouse::rightDragOverOneByteAgainDoesNotFlipIt()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(3));
    for (const int byte : {4, 5, 4})
        drag(editor, Qt::RightButton, editor.digitAt(byte));
    release(editor, Qt::RightButton, editor.digitAt(4));
    QCOMPARE(editor.considered(), bytes({4, 5}));
}

void TestHexMouse::nextRightClickFlipsTheSameByteAgain()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(3));
    drag(editor, Qt::RightButton, editor.digitAt(3, true));
    release(editor, Qt::RightButton, editor.digitAt(3));
    QTest::mouseClick(editor.view, Qt::RightButton, {}, editor.digitAt(3));
    QCOMPARE(editor.considered(), bytes({}));
}

void TestHexMouse::leftDragConsidersNothing()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::LeftButton, editor.digitAt(3));
    drag(editor, Qt::LeftButton, editor.digitAt(5));
    release(editor, Qt::LeftButton, editor.digitAt(6));
    QCOMPARE(editor.considered(), bytes({}));
}

void TestHexMouse::leavingTheAreasHandlesTheFirstByte()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(0));
    drag(editor, Qt::RightButton, editor.beside());
    QCOMPARE(editor.considered(), bytes({0}));
    release(editor, Qt::RightButton, editor.beside());
    QCOMPARE(editor.considered(), bytes({0}));
}

void TestHexMouse::releaseOutsideFlipsTheFirstByte()
{
    HexEditor editor(countingBytes(64));
    press(editor, Qt::RightButton, editor.digitAt(9));
    release(editor, Qt::RightButton, editor.beside());
    QCOMPARE(editor.considered(), bytes({0}));
}

void TestHexMouse::gesturesWorkWithoutConsideration()
{
    HexEditor editor(countingBytes(64));
    editor.edit.setConsideration(false);
    QTest::mouseClick(editor.view, Qt::RightButton, {}, editor.digitAt(3));
    QCOMPARE(editor.considered(), bytes({3}));
}

void TestHexMouse::bytesBeyondTheDataCanBeMarked()
{
    HexEditor editor(countingBytes(4));
    QTest::mouseClick(editor.view, Qt::RightButton, {}, editor.digitAt(9));
    QCOMPARE(editor.considered(), bytes({9}));
}

void TestHexMouse::gesturesWithoutBitsDoNoHarm()
{
    HexEditor editor(countingBytes(4));
    editor.edit.setConsiderBitArray(QBitArray());
    press(editor, Qt::RightButton, editor.digitAt(0));
    drag(editor, Qt::RightButton, editor.digitAt(0) - QPoint(0, 500));
    drag(editor, Qt::RightButton, editor.digitAt(2));
    release(editor, Qt::RightButton, editor.digitAt(0) - QPoint(0, 500));
    QCOMPARE(editor.edit.getConsiderBitArray(), QBitArray());
}

void TestHexMouse::positionIsRoundedToPixels()
{
    HexEditor editor(countingBytes(4));
    const QPointF almost(editor.xPosHex() + 3 * editor.charWidth() - 0.4, 10);
    QMouseEvent event(QEvent::MouseButtonPress, almost, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(editor.view, &event);
    QCOMPARE(editor.view->cursorPos(), 2);
}

QTEST_MAIN(TestHexMouse)
#include "tst_hexmouse.moc"
