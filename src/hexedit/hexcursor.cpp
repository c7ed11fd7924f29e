// Cursor, selection, and the search, which moves both.

#include "hexgeometry.h"
#include "hexnumbers.h"
#include "qhexeditprivate.h"

#include <QScrollArea>

int QHexEditPrivate::indexOf(QByteArray const &ba, int from)
{
    const QByteArray &data = m_xData.data();
    const int found = data.indexOf(ba, qMax(0, qMin(from, data.size() - 1)));
    if (found < 0)
        return found;
    const int end = HexEdit::nibble(qint64(found) + ba.size());
    setCursorPos(end);
    resetSelection(HexEdit::nibble(found));
    setSelection(end);
    ensureVisible();
    return found;
}

int QHexEditPrivate::lastIndexOf(QByteArray const &ba, int from)
{
    const QByteArray &data = m_xData.data();
    // The search for a single byte would find the zero behind the bytes, too.
    const qint64 start = qMin<qint64>(qMax<qint64>(0, qint64(from) - ba.size()), data.size() - 1);
    const int found = start < 0 ? -1 : data.lastIndexOf(ba, int(start));
    if (found < 0)
        return found;
    setCursorPos(HexEdit::nibble(found));
    resetSelection(HexEdit::nibble(found));
    setSelection(HexEdit::nibble(qint64(found) + ba.size()));
    ensureVisible();
    return found;
}

void QHexEditPrivate::setCursorPos(int position)
{
    m_blink = false;
    update();

    // Overwriting needs a digit to stand on; inserting can go on behind the last byte.
    const int last = m_overwriteMode ? endPosition() - 1 : endPosition();
    m_cursorPosition = qMax(0, qMin(position, last));
    const QPoint cell = m_geometry->cell(m_cursorPosition, m_asciiCursor);
    m_cursorX = cell.x();
    m_cursorY = cell.y();

    m_blink = true;
    update();
    emit currentAddressChanged(m_cursorPosition / 2);
}

int QHexEditPrivate::cursorPos()
{
    return m_cursorPosition;
}

int QHexEditPrivate::cursorPos(QPoint point)
{
    const HexEdit::Hit hit = m_geometry->hit(point, m_asciiArea);
    if (hit.area != HexEdit::Hit::Area::None)
        m_asciiCursor = hit.area == HexEdit::Hit::Area::Ascii;
    return hit.position;
}

void QHexEditPrivate::setSelection(int position)
{
    const int byte = qBound(0, position, endPosition()) / 2;
    m_selectionBegin = qMin(m_selectionInit, byte);
    m_selectionEnd = qMax(m_selectionInit, byte);
}

void QHexEditPrivate::resetSelection()
{
    m_selectionBegin = m_selectionInit;
    m_selectionEnd = m_selectionInit;
}

void QHexEditPrivate::resetSelection(int position)
{
    m_selectionInit = qMax(0, position) / 2;
    resetSelection();
}

int QHexEditPrivate::getSelectionBegin()
{
    return m_selectionBegin;
}

int QHexEditPrivate::getSelectionEnd()
{
    return m_selectionEnd;
}

void QHexEditPrivate::ensureVisible()
{
    const int half = m_geometry->charHeight / 2;
    m_scrollArea->ensureVisible(m_cursorX, m_cursorY + half, 3, half + 2);
}

void QHexEditPrivate::updateCursor()
{
    m_blink = !m_blink;
    update(m_cursorX, m_cursorY, m_geometry->charWidth, m_geometry->charHeight);
}

int QHexEditPrivate::endPosition()
{
    return HexEdit::nibble(m_xData.size());
}

int QHexEditPrivate::byteUnderCursor() const
{
    return m_geometry->byteAt(QPoint(m_cursorX, m_cursorY), m_asciiCursor);
}
