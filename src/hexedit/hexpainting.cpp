// What the editor looks like. Painting costs by the lines and columns of the event's rectangle, not by the bytes held.

#include "hexgeometry.h"
#include "hextext.h"
#include "qhexeditprivate.h"

#include <QPaintEvent>
#include <QPainter>

struct QHexEditPrivate::Look
{
    QColor background; ///< invalid for none
    QColor text;

    void applyTo(QPainter &painter) const
    {
        painter.setPen(text);
        painter.setBackgroundMode(background.isValid() ? Qt::OpaqueMode : Qt::TransparentMode);
        if (background.isValid())
            painter.setBackground(background);
    }
};

namespace {
/// Calls `paint` with the index of each byte to paint for a rectangle, of `size` that there are.
template <typename Paint>
void forBytesIn(const HexEdit::Geometry &geometry, const QRect &rect, bool ascii, int size, Paint paint)
{
    const HexEdit::Range bytes = geometry.bytesIn(rect, size);
    const HexEdit::Range columns = geometry.columnsIn(rect, ascii);
    for (qint64 line = bytes.first; line < bytes.last; line += geometry.bytesPerLine) {
        const qint64 last = qMin<qint64>(line + columns.last, bytes.last);
        for (qint64 index = line + columns.first; index < last; ++index)
            paint(int(index));
    }
}
} // namespace

void QHexEditPrivate::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(this);
        paintBackground(painter, event->rect());
        painter.setPen(palette().color(QPalette::WindowText));
        if (m_addressArea)
            paintAddresses(painter, event->rect());
        paintHexArea(painter, event->rect());
        if (m_asciiArea)
            paintAsciiArea(painter, event->rect());
        paintCursor(painter);
    }
    if (m_lastEmittedSize != m_xData.size()) {
        m_lastEmittedSize = m_xData.size();
        emit currentSizeChanged(m_lastEmittedSize);
    }
}

void QHexEditPrivate::paintBackground(QPainter &painter, const QRect &rect)
{
    painter.fillRect(rect, palette().color(QPalette::Base));
    const int x = HexEdit::Geometry::xPosAddress;
    if (m_addressArea)
        painter.fillRect(QRect(x, rect.top(), m_geometry->xPosHex - 8, height()), m_addressAreaColor);
    else
        painter.fillRect(QRect(x, rect.top(), 10, height()), Qt::white);

    if (m_asciiArea) {
        const int line = m_geometry->xPosAscii - 8;
        painter.setPen(Qt::gray);
        painter.drawLine(line, rect.top(), line, height());
    }
}

void QHexEditPrivate::paintAddresses(QPainter &painter, const QRect &rect)
{
    const HexEdit::Range bytes = m_geometry->bytesIn(rect, m_xData.size());
    const int digits = m_xData.realAddressNumbers();
    for (qint64 index = bytes.first; index < bytes.last; index += m_geometry->bytesPerLine) {
        painter.drawText(HexEdit::Geometry::xPosAddress, m_geometry->baseline(int(index)),
                         addressText(m_xData.addressOffset(), int(index), digits));
    }
}

void QHexEditPrivate::paintHexArea(QPainter &painter, const QRect &rect)
{
    const QByteArray &data = m_xData.data();
    forBytesIn(*m_geometry, rect, false, m_xData.size(), [&](int index) {
        const int x = m_geometry->left(index, false);
        const int y = m_geometry->baseline(index);
        const Look look = hexLook(index);
        look.applyTo(painter);
        painter.drawText(x, y, hexDigits(data.at(index)));
        // The gap belongs to the byte in selections and changes, which run on, but not in the bits; a blank without
        // background is nothing to draw.
        if (look.background.isValid() && !m_considerationEnabled)
            painter.drawText(x + 2 * m_geometry->charWidth, y, QStringLiteral(" "));
    });
}

void QHexEditPrivate::paintAsciiArea(QPainter &painter, const QRect &rect)
{
    forBytesIn(*m_geometry, rect, true, m_xData.size(), [&](int index) {
        asciiLook(index).applyTo(painter);
        painter.drawText(m_geometry->left(index, true), m_geometry->baseline(index), m_xData.asciiChar(index));
    });
}

void QHexEditPrivate::paintCursor(QPainter &painter)
{
    if (!m_blink || m_readOnly || !hasFocus())
        return;
    const int charHeight = m_geometry->charHeight;
    const QRect bar = m_overwriteMode ? QRect(m_cursorX, m_cursorY + charHeight - 2, m_geometry->charWidth, 2)
                                      : QRect(m_cursorX, m_cursorY, 2, charHeight);
    painter.fillRect(bar, palette().color(QPalette::WindowText));
}

QHexEditPrivate::Look QHexEditPrivate::hexLook(int index)
{
    if (m_considerationEnabled && isConsidered(index))
        return {m_considerColor, QColor(0, 0, 0)};
    if (m_considerationEnabled)
        return {QColor(), QColor(0x96, 0x96, 0x96)};
    if (isSelected(index))
        return selectedLook();
    if (m_highlighting && m_xData.dataChanged(index))
        return {m_highlightingColor, m_highlightingPenColor};
    return plainLook();
}

QHexEditPrivate::Look QHexEditPrivate::asciiLook(int index) const
{
    return isSelected(index) ? selectedLook() : plainLook();
}

QHexEditPrivate::Look QHexEditPrivate::selectedLook() const
{
    return {m_selectionColor, Qt::white};
}

QHexEditPrivate::Look QHexEditPrivate::plainLook() const
{
    return {QColor(), palette().color(QPalette::WindowText)};
}

bool QHexEditPrivate::isSelected(int index) const
{
    return index >= m_selectionBegin && index < m_selectionEnd;
}
