#include "hexeditor.h"

#include <limits>

class TestHexConsideration : public QObject
{
    Q_OBJECT

private slots:
    void noByteIsConsideredAtFirst();
    void oneByteIsSetClearedAndFlipped();
    void indexOutsideTheBitsChangesNothing_data();
    void indexOutsideTheBitsChangesNothing();
    void allBitsAreSetAndCleared();
    void maximumSetsTheNumberOfBits();
    void enabledCountOnlyAddsBits();
    void negativeMaximumLeavesNoBits();
    void hugeCountAddsNoMoreBitsThanAtFirst();
    void hugeCountDropsNoBits();
    void dragPaintsAByteOnce();
    void bitsStayWithTheirPositions();
    void bitsAreTakenAndGivenWhole();
};

void TestHexConsideration::noByteIsConsideredAtFirst()
{
    QHexEdit edit;
    QCOMPARE(edit.getConsiderBitArray(), QBitArray(16777215));
}

void TestHexConsideration::oneByteIsSetClearedAndFlipped()
{
    HexEditor editor(countingBytes(8));
    editor.view->setConsideredByte(2);
    editor.view->toggleByteHighlight(4);
    QCOMPARE(editor.considered(), QVector<int>({2, 4}));
    editor.view->unsetConsideredByte(2);
    editor.view->toggleByteHighlight(4);
    QCOMPARE(editor.considered(), QVector<int>());
}

void TestHexConsideration::indexOutsideTheBitsChangesNothing_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("before the first") << -1;
    QTest::newRow("behind the last") << 8;
    QTest::newRow("far before") << std::numeric_limits<int>::min();
    QTest::newRow("far behind") << std::numeric_limits<int>::max();
}

void TestHexConsideration::indexOutsideTheBitsChangesNothing()
{
    QFETCH(int, index);
    HexEditor editor(countingBytes(8));
    const QBitArray bits(8, true);
    editor.edit.setConsiderBitArray(bits);
    editor.view->setConsideredByte(index);
    editor.view->unsetConsideredByte(index);
    editor.view->toggleByteHighlight(index);
    editor.view->setConsiderPos(index);
    QCOMPARE(editor.edit.getConsiderBitArray(), bits);
}

void TestHexConsideration::allBitsAreSetAndCleared()
{
    HexEditor editor(countingBytes(8));
    editor.edit.setMaximumByteCount(10);
    editor.edit.setBytesHighlighted(true);
    QCOMPARE(editor.edit.getConsiderBitArray(), QBitArray(10, true));
    editor.edit.setBytesHighlighted(false);
    QCOMPARE(editor.edit.getConsiderBitArray(), QBitArray(10, false));
}

void TestHexConsideration::maximumSetsTheNumberOfBits()
{
    HexEditor editor;
    editor.edit.setMaximumByteCount(4);
    editor.edit.setBytesHighlighted(true);
    editor.edit.setMaximumByteCount(6);
    QCOMPARE(editor.considered(), QVector<int>({0, 1, 2, 3}));
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 6);
    editor.edit.setMaximumByteCount(2);
    editor.edit.setMaximumByteCount(6);
    QCOMPARE(editor.considered(), QVector<int>({0, 1}));
}

void TestHexConsideration::enabledCountOnlyAddsBits()
{
    HexEditor editor;
    editor.edit.setMaximumByteCount(4);
    editor.edit.setBytesHighlighted(true);
    editor.edit.setByteCountEnabled(2);
    QCOMPARE(editor.edit.getConsiderBitArray(), QBitArray(4, true));
    editor.edit.setByteCountEnabled(5);
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 5);
    QCOMPARE(editor.considered(), QVector<int>({0, 1, 2, 3}));
}

void TestHexConsideration::negativeMaximumLeavesNoBits()
{
    HexEditor editor;
    editor.edit.setMaximumByteCount(-5);
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 0);
}

void TestHexConsideration::dragPaintsAByteOnce()
{
    HexEditor editor(countingBytes(8));
    editor.view->setConsiderPos(3);
    editor.view->unsetConsideredByte(3);
    editor.view->setConsiderPos(3);
    QCOMPARE(editor.considered(), QVector<int>());
    editor.view->setConsiderPos(4);
    editor.view->setConsiderPos(3);
    QCOMPARE(editor.considered(), QVector<int>({3, 4}));
}

void TestHexConsideration::bitsStayWithTheirPositions()
{
    HexEditor editor(countingBytes(8));
    editor.view->setConsideredByte(2);
    editor.edit.setOverwriteMode(false);
    editor.edit.insert(0, 'x');
    editor.edit.remove(1, 3);
    editor.edit.undo();
    editor.edit.setData("abc");
    QCOMPARE(editor.considered(), QVector<int>({2}));
}

void TestHexConsideration::bitsAreTakenAndGivenWhole()
{
    HexEditor editor;
    QBitArray bits(3);
    bits.setBit(1);
    editor.edit.setConsiderBitArray(bits);
    QCOMPARE(editor.edit.getConsiderBitArray(), bits);
}

void TestHexConsideration::hugeCountAddsNoMoreBitsThanAtFirst()
{
    HexEditor editor;
    editor.edit.setMaximumByteCount(std::numeric_limits<int>::max());
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 16777215);
    editor.edit.setMaximumByteCount(4);
    editor.edit.setByteCountEnabled(std::numeric_limits<int>::max());
    QCOMPARE(editor.edit.getConsiderBitArray().size(), 16777215);
}

void TestHexConsideration::hugeCountDropsNoBits()
{
    HexEditor editor;
    const QBitArray bits(16777215 + 10, true);
    editor.edit.setConsiderBitArray(bits);
    editor.edit.setByteCountEnabled(std::numeric_limits<int>::max());
    QCOMPARE(editor.edit.getConsiderBitArray(), bits);
}

QTEST_MAIN(TestHexConsideration)
#include "tst_hexconsideration.moc"
