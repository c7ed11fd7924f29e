#include "hexgeometry.h"

#include <QWidget>
#include <QtTest>

#include <limits>

Q_DECLARE_METATYPE(HexEdit::Hit::Area)

namespace {
constexpr int largest = std::numeric_limits<int>::max();

/// Characters of 10 by 20 pixels and addresses of four digits: bytes from x = 50, characters from x = 536.
HexEdit::Geometry geometry()
{
    HexEdit::Geometry result;
    result.charWidth = 10;
    result.charHeight = 20;
    result.setAreas(4);
    return result;
}
} // namespace

class TestHexGeometry : public QObject
{
    Q_OBJECT

private slots:
    void areasLieSideBySide();
    void areasMoveUpWithoutAddresses();
    void sizeHoldsAllLines_data();
    void sizeHoldsAllLines();
    void widthHoldsTheLastArea();
    void sizeIsWhatAWidgetCanBe();
    void numberOfBytesInALineIsPositive();
    void pointHitsANibble_data();
    void pointHitsANibble();
    void noCharacterIsHitWithoutTheirArea();
    void cellAndHitFitTogether();
    void cellTellsItsByte();
    void paintedBytesAreThoseOfTheRectangleAndTheMargin_data();
    void paintedBytesAreThoseOfTheRectangleAndTheMargin();
    void paintedColumnsAreThoseOfTheRectangle_data();
    void paintedColumnsAreThoseOfTheRectangle();
    void paintedColumnsAreFewInALongLine();
    void extremeNumbersAreCut();
    void extremePixelsCanBeAddedTo();
};

void TestHexGeometry::areasLieSideBySide()
{
    const HexEdit::Geometry areas = geometry();
    QCOMPARE(areas.xPosAddress, 0);
    QCOMPARE(areas.xPosHex, 4 * 10 + 10);
    QCOMPARE(areas.xPosAscii, 50 + 47 * 10 + 16);
}

void TestHexGeometry::areasMoveUpWithoutAddresses()
{
    HexEdit::Geometry areas = geometry();
    areas.setAreas(0);
    QCOMPARE(areas.xPosHex, 0);
    QCOMPARE(areas.xPosAscii, 47 * 10 + 16);
}

void TestHexGeometry::sizeHoldsAllLines_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("height");

    QTest::newRow("nothing") << 0 << 1 * 20 + 5;
    QTest::newRow("not quite a line") << 15 << 1 * 20 + 5;
    QTest::newRow("a line, and one to go on") << 16 << 2 * 20 + 5;
}

void TestHexGeometry::sizeHoldsAllLines()
{
    QFETCH(int, bytes);
    QTEST(geometry().minimumSize(bytes, true).height(), "height");
}

void TestHexGeometry::widthHoldsTheLastArea()
{
    QCOMPARE(geometry().minimumSize(0, true).width(), 536 + 16 * 10);
    QCOMPARE(geometry().minimumSize(0, false).width(), 50 + 47 * 10);
}

void TestHexGeometry::sizeIsWhatAWidgetCanBe()
{
    HexEdit::Geometry areas = geometry();
    areas.setBytesPerLine(16777215);
    areas.setAreas(4);
    QCOMPARE(areas.minimumSize(1, true).width(), QWIDGETSIZE_MAX);
    areas.setBytesPerLine(1);
    QCOMPARE(areas.minimumSize(16777215, true).height(), QWIDGETSIZE_MAX);
}

void TestHexGeometry::numberOfBytesInALineIsPositive()
{
    HexEdit::Geometry areas = geometry();
    areas.setBytesPerLine(8);
    for (const int count : {0, -1, largest})
        areas.setBytesPerLine(count);
    QCOMPARE(areas.bytesPerLine, 8);
    QCOMPARE(areas.hexCharsInLine, 23);
}

void TestHexGeometry::pointHitsANibble_data()
{
    using Area = HexEdit::Hit::Area;
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("position");
    QTest::addColumn<Area>("area");

    QTest::newRow("last pixel of the address") << QPoint(49, 10) << -1 << Area::None;
    QTest::newRow("first pixel of the first digit") << QPoint(50, 10) << 0 << Area::Hex;
    QTest::newRow("last pixel of the first digit") << QPoint(59, 10) << 0 << Area::Hex;
    QTest::newRow("first pixel of the second digit") << QPoint(60, 10) << 1 << Area::Hex;
    QTest::newRow("gap belongs to the low digit") << QPoint(79, 10) << 1 << Area::Hex;
    QTest::newRow("second byte") << QPoint(80, 10) << 2 << Area::Hex;
    QTest::newRow("last digit of the line") << QPoint(519, 10) << 31 << Area::Hex;
    QTest::newRow("behind the last digit") << QPoint(520, 10) << -1 << Area::None;
    QTest::newRow("top of the widget") << QPoint(50, 0) << 0 << Area::Hex;
    QTest::newRow("last pixel of the first line") << QPoint(50, 22) << 0 << Area::Hex;
    QTest::newRow("first pixel of the second line") << QPoint(50, 23) << 32 << Area::Hex;
    QTest::newRow("above the widget") << QPoint(50, -17) << -32 << Area::Hex;
    QTest::newRow("before the first character") << QPoint(535, 10) << -1 << Area::None;
    QTest::newRow("first character") << QPoint(536, 10) << 0 << Area::Ascii;
    QTest::newRow("second character") << QPoint(546, 10) << 2 << Area::Ascii;
    QTest::newRow("character of the second line") << QPoint(536, 23) << 32 << Area::Ascii;
    QTest::newRow("beside the characters") << QPoint(536 + 160, 10) << 32 << Area::Ascii;
    QTest::newRow("as wide as the digits") << QPoint(536 + 469, 10) << 92 << Area::Ascii;
    QTest::newRow("behind that") << QPoint(536 + 470, 10) << -1 << Area::None;
}

void TestHexGeometry::pointHitsANibble()
{
    QFETCH(QPoint, point);
    const HexEdit::Hit hit = geometry().hit(point, true);
    QTEST(hit.position, "position");
    QTEST(hit.area, "area");
}

void TestHexGeometry::noCharacterIsHitWithoutTheirArea()
{
    QCOMPARE(geometry().hit(QPoint(540, 10), false).position, -1);
}

void TestHexGeometry::cellAndHitFitTogether()
{
    const HexEdit::Geometry areas = geometry();
    for (int position = 0; position < 100; ++position) {
        QCOMPARE(areas.hit(areas.cell(position, false), true).position, position);
        QCOMPARE(areas.hit(areas.cell(position, true), true).position, position / 2 * 2);
    }
}

void TestHexGeometry::cellTellsItsByte()
{
    const HexEdit::Geometry areas = geometry();
    for (int position = 0; position < 100; ++position) {
        QCOMPARE(areas.byteAt(areas.cell(position, false), false), position / 2);
        QCOMPARE(areas.byteAt(areas.cell(position, true), true), position / 2);
    }
}

void TestHexGeometry::paintedBytesAreThoseOfTheRectangleAndTheMargin_data()
{
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");

    QTest::newRow("beginning") << QRect(0, 0, 10, 40) << 100000 << 0 << (1 + 20) * 16;
    QTest::newRow("middle") << QRect(0, 2000, 10, 40) << 100000 << (100 - 20) * 16 << (101 + 20) * 16;
    QTest::newRow("end") << QRect(0, 2000, 10, 40) << 1601 << (100 - 20) * 16 << 1601;
    QTest::newRow("nothing there") << QRect(0, 0, 10, 40) << 0 << 0 << 0;
}

void TestHexGeometry::paintedBytesAreThoseOfTheRectangleAndTheMargin()
{
    QFETCH(QRect, rect);
    QFETCH(int, size);
    const HexEdit::Range bytes = geometry().bytesIn(rect, size);
    QTEST(bytes.first, "first");
    QTEST(bytes.last, "last");
}

void TestHexGeometry::paintedColumnsAreThoseOfTheRectangle_data()
{
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<bool>("ascii");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");

    // Digits reach from 10 before them to 40 behind their left edge.
    QTest::newRow("digits in the middle") << QRect(200, 0, 20, 20) << false << 3 << 6;
    QTest::newRow("digits, a pixel less at the left") << QRect(210, 0, 10, 20) << false << 4 << 6;
    QTest::newRow("digits, a pixel more at the right") << QRect(200, 0, 21, 20) << false << 3 << 7;
    QTest::newRow("characters in the middle") << QRect(600, 0, 20, 20) << true << 2 << 10;
    QTest::newRow("whole line of digits") << QRect(0, 0, 1000, 20) << false << 0 << 16;
    QTest::newRow("whole line of characters") << QRect(0, 0, 1000, 20) << true << 0 << 16;
}

void TestHexGeometry::paintedColumnsAreThoseOfTheRectangle()
{
    QFETCH(QRect, rect);
    QFETCH(bool, ascii);
    const HexEdit::Range columns = geometry().columnsIn(rect, ascii);
    QTEST(columns.first, "first");
    QTEST(columns.last, "last");
}

void TestHexGeometry::paintedColumnsAreFewInALongLine()
{
    HexEdit::Geometry areas = geometry();
    areas.setBytesPerLine(1 << 20);
    areas.setAreas(4);
    const int middle = areas.left(1 << 19, false);
    const HexEdit::Range columns = areas.columnsIn(QRect(middle, 0, 300, 20), false);
    QVERIFY(columns.first <= 1 << 19);
    QVERIFY(columns.last >= (1 << 19) + 10);
    QVERIFY(columns.last - columns.first < 20);
}

void TestHexGeometry::extremeNumbersAreCut()
{
    HexEdit::Geometry areas = geometry();
    areas.setBytesPerLine(16777215);
    areas.setAreas(4);
    QCOMPARE(areas.left(16777214, true), areas.xPosAscii + 16777214 * 10);
    QCOMPARE(areas.hit(QPoint(50, largest), true).position, largest);
    QCOMPARE(areas.byteAt(QPoint(50, largest), false), largest);
    QCOMPARE(areas.bytesIn(QRect(0, largest - 10, 10, 10), 5).last, 5);
}

void TestHexGeometry::extremePixelsCanBeAddedTo()
{
    HexEdit::Geometry areas = geometry();
    areas.setBytesPerLine(1);
    QCOMPARE(areas.cell(largest, false).y(), largest / 2);
    QCOMPARE(areas.baseline(largest), largest / 2);
    areas.charWidth = 1000;
    areas.setBytesPerLine(16777215);
    areas.setAreas(4);
    QCOMPARE(areas.xPosAscii, largest / 2);
    QCOMPARE(areas.cell(largest, true).x(), largest / 2);
    QCOMPARE(areas.left(16777214, false), largest / 2);
}

QTEST_APPLESS_MAIN(TestHexGeometry)
#include "tst_hexgeometry.moc"
