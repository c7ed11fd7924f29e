#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace HexEdit {
/// What lies at a point.
struct Hit
{
    enum class Area { None, Hex, Ascii };

    int position = -1; ///< nibble; also negative in the areas, above the first line
    Area area = Area::None;
};

/// Bytes or columns, `last` not among them.
struct Range
{
    int first = 0;
    int last = 0;
};

/// Where an editor draws its bytes: addresses, two digits for each byte, characters. All in pixels and characters of
/// one size; what no widget can be large enough for is cut to what can still be added to.
struct Geometry
{
    /// Numbers below 1 are ignored, and those of more bytes than an editor shows.
    void setBytesPerLine(int count);
    /// Sets the areas side by side.
    /// @param addressDigits 0 for no address area
    void setAreas(int addressDigits);

    int nibblesPerLine() const { return 2 * bytesPerLine; }
    /// @return within what a widget can be
    QSize minimumSize(int bytes, bool asciiArea) const;
    /// Top left of a nibble's cell.
    QPoint cell(int position, bool ascii) const;
    Hit hit(QPoint point, bool asciiArea) const;
    /// The byte of a cell, by its top left.
    int byteAt(QPoint cell, bool ascii) const;
    /// The bytes of the lines to paint for a rectangle, of `size` that there are.
    Range bytesIn(const QRect &rect, int size) const;
    /// The columns to paint for a rectangle: those of which the digits or the character, the gap behind them or what
    /// may hang over reach into it.
    Range columnsIn(const QRect &rect, bool ascii) const;
    /// Left edge of a byte's digits or of its character.
    int left(int index, bool ascii) const;
    /// Baseline of a byte's line.
    int baseline(int index) const;

    int charWidth = 1;
    int charHeight = 1;
    static constexpr int xPosAddress = 0;
    int xPosHex = 0;
    int xPosAscii = 0;
    int bytesPerLine = 16;
    int hexCharsInLine = 47;
};
} // namespace HexEdit
