#include "hexgeometry.h"

#include <QWidget>

#include <limits>

namespace {
constexpr int mostBytesPerLine = 16777215;
constexpr int addressGap = 10;
constexpr int asciiGap = 16;

int toInt(qint64 value)
{
    return int(qBound<qint64>(std::numeric_limits<int>::min(), value, std::numeric_limits<int>::max()));
}
} // namespace

void HexGeometry::setBytesPerLine(int count)
{
    if (count < 1 || count > mostBytesPerLine)
        return;
    bytesPerLine = count;
    hexCharsInLine = count * 3 - 1;
}

void HexGeometry::setAreas(int addressDigits)
{
    xPosHex = addressDigits > 0 ? addressDigits * charWidth + addressGap : 0;
    xPosAscii = toInt(xPosHex + qint64(hexCharsInLine) * charWidth + asciiGap);
}

QSize HexGeometry::minimumSize(int bytes, bool asciiArea) const
{
    const qint64 width = asciiArea ? qint64(bytesPerLine) * charWidth + xPosAscii
                                   : qint64(hexCharsInLine) * charWidth + xPosHex;
    const qint64 height = (qint64(bytes) / bytesPerLine + 1) * charHeight + 5;
    constexpr qint64 most = QWIDGETSIZE_MAX;
    return QSize(int(qMin(width, most)), int(qMin(height, most)));
}

QPoint HexGeometry::cell(int position, bool ascii) const
{
    const int index = position / 2;
    const qint64 x = left(index, ascii) + (ascii ? 0 : qint64(position % 2) * charWidth);
    return QPoint(toInt(x), toInt(qint64(index / bytesPerLine) * charHeight + 4));
}

HexHit HexGeometry::hit(QPoint point, bool asciiArea) const
{
    const qint64 line = (qint64(point.y()) - 3) / charHeight;
    const qint64 width = qint64(hexCharsInLine) * charWidth;
    if (point.x() >= xPosHex && point.x() < xPosHex + width) {
        const int column = (point.x() - xPosHex) / charWidth;
        const int inLine = 2 * (column / 3) + (column % 3 == 0 ? 0 : 1);
        return {toInt(inLine + line * nibblesPerLine()), HexHit::Area::Hex};
    }
    // As wide as the hexadecimal area, which reaches past the characters: a point beside them belongs to a later line.
    if (asciiArea && point.x() >= xPosAscii && point.x() < xPosAscii + width) {
        const int column = (point.x() - xPosAscii) / charWidth;
        return {toInt((column + line * bytesPerLine) * 2), HexHit::Area::Ascii};
    }
    return {};
}

int HexGeometry::byteAt(QPoint cell, bool ascii) const
{
    const int column = (cell.x() - (ascii ? xPosAscii : xPosHex)) / charWidth;
    const int inLine = ascii ? column : (column / 3 * 2 + column % 3) / 2;
    return toInt(inLine + qint64(cell.y() / charHeight) * bytesPerLine);
}

ByteRange HexGeometry::bytesIn(const QRect &rect, int size) const
{
    // A margin of as many lines as a line is high: constant, and ample for any overhang of a glyph.
    const qint64 first = (qint64(rect.top()) / charHeight - charHeight) * bytesPerLine;
    const qint64 last = (qint64(rect.bottom()) / charHeight + charHeight) * bytesPerLine;
    return {toInt(qMax<qint64>(0, first)), toInt(qMin<qint64>(last, size))};
}

int HexGeometry::left(int index, bool ascii) const
{
    const qint64 column = index % bytesPerLine;
    return toInt(ascii ? column * charWidth + xPosAscii : column * 3 * charWidth + xPosHex);
}

int HexGeometry::baseline(int index) const
{
    return toInt(qint64(index / bytesPerLine) * charHeight + charHeight);
}

bool HexGeometry::isAcross(const QRect &rect, int left) const
{
    return left - charWidth <= rect.right() && qint64(left) + 4 * charWidth >= rect.left();
}
