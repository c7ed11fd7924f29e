#include "hexgeometry.h"

#include "hexnumbers.h"
#include "xbytearray.h"

#include <QWidget>

#include <limits>

namespace HexEdit {
namespace {
constexpr int addressGap = 10;
constexpr int asciiGap = 16;

/// Cut to half of what an int holds, so that whoever gets it can add to it. Not to what a widget can be: which byte is
/// under the cursor is told by its pixels, also beyond that.
int toPixel(qint64 value)
{
    constexpr qint64 most = std::numeric_limits<int>::max() / 2;
    return int(qBound(-most, value, most));
}
} // namespace

void Geometry::setBytesPerLine(int count)
{
    if (count < 1 || count > XByteArray::mostBytes)
        return;
    bytesPerLine = count;
    hexCharsInLine = count * 3 - 1;
}

void Geometry::setAreas(int addressDigits)
{
    xPosHex = addressDigits > 0 ? toPixel(qint64(addressDigits) * charWidth + addressGap) : 0;
    xPosAscii = toPixel(xPosHex + qint64(hexCharsInLine) * charWidth + asciiGap);
}

QSize Geometry::minimumSize(int bytes, bool asciiArea) const
{
    const qint64 width = asciiArea ? qint64(bytesPerLine) * charWidth + xPosAscii
                                   : qint64(hexCharsInLine) * charWidth + xPosHex;
    const qint64 height = (qint64(bytes) / bytesPerLine + 1) * charHeight + 5;
    constexpr qint64 most = QWIDGETSIZE_MAX;
    return QSize(int(qMin(width, most)), int(qMin(height, most)));
}

QPoint Geometry::cell(int position, bool ascii) const
{
    const int index = position / 2;
    const qint64 x = left(index, ascii) + (ascii ? 0 : qint64(position % 2) * charWidth);
    return QPoint(toPixel(x), toPixel(qint64(index / bytesPerLine) * charHeight + 4));
}

Hit Geometry::hit(QPoint point, bool asciiArea) const
{
    const qint64 line = (qint64(point.y()) - 3) / charHeight;
    const qint64 width = qint64(hexCharsInLine) * charWidth;
    if (point.x() >= xPosHex && point.x() < xPosHex + width) {
        const int column = (point.x() - xPosHex) / charWidth;
        const int inLine = 2 * (column / 3) + (column % 3 == 0 ? 0 : 1);
        return {toInt(inLine + line * nibblesPerLine()), Hit::Area::Hex};
    }
    // As wide as the hexadecimal area, which reaches past the characters: a point beside them belongs to a later line.
    if (asciiArea && point.x() >= xPosAscii && point.x() < xPosAscii + width) {
        const int column = (point.x() - xPosAscii) / charWidth;
        return {toInt((column + line * bytesPerLine) * 2), Hit::Area::Ascii};
    }
    return {};
}

int Geometry::byteAt(QPoint cell, bool ascii) const
{
    const int column = (cell.x() - (ascii ? xPosAscii : xPosHex)) / charWidth;
    const int inLine = ascii ? column : (column / 3 * 2 + column % 3) / 2;
    return toInt(inLine + qint64(cell.y() / charHeight) * bytesPerLine);
}

Range Geometry::bytesIn(const QRect &rect, int size) const
{
    // A margin of as many lines as a line is high: constant, and ample for any overhang of a glyph.
    const qint64 first = (qint64(rect.top()) / charHeight - charHeight) * bytesPerLine;
    const qint64 last = (qint64(rect.bottom()) / charHeight + charHeight) * bytesPerLine;
    return {toInt(qMax<qint64>(0, first)), toInt(qMin<qint64>(last, size))};
}

Range Geometry::columnsIn(const QRect &rect, bool ascii) const
{
    const qint64 start = ascii ? xPosAscii : xPosHex;
    const qint64 step = ascii ? charWidth : qint64(3) * charWidth;
    const qint64 first = (rect.left() - qint64(4) * charWidth - start) / step;
    const qint64 last = (rect.right() + qint64(charWidth) - start) / step + 1;
    return {toInt(qMax<qint64>(0, first)), toInt(qMin<qint64>(last, bytesPerLine))};
}

int Geometry::left(int index, bool ascii) const
{
    const qint64 column = index % bytesPerLine;
    return toPixel(ascii ? column * charWidth + xPosAscii : column * 3 * charWidth + xPosHex);
}

int Geometry::baseline(int index) const
{
    return toPixel(qint64(index / bytesPerLine) * charHeight + charHeight);
}
} // namespace HexEdit
