// What the mouse does: the left button positions and selects, the right one paints the considered bits.

#include "qhexeditprivate.h"

#include <QMouseEvent>

void QHexEditPrivate::mousePressEvent(QMouseEvent *event)
{
    m_blink = false;
    update();
    const int position = cursorPos(event->localPos().toPoint());
    if (event->button() == Qt::RightButton) {
        m_considerDragging = true;
        const int byte = position / 2;
        if (byte >= 0 && byte < m_considerBits.size())
            m_considerDragClears = m_considerBits.testBit(byte);
    }
    resetSelection(position);
    setCursorPos(position);
}

void QHexEditPrivate::mouseMoveEvent(QMouseEvent *event)
{
    m_blink = false;
    update();
    const int position = cursorPos(event->localPos().toPoint());
    if (position >= 0) {
        setCursorPos(position);
        setSelection(position);
    }
    // Outside the areas that is byte 0.
    if (m_considerDragging)
        setConsiderPos(position / 2);
}

void QHexEditPrivate::mouseReleaseEvent(QMouseEvent *event)
{
    const int byte = cursorPos(event->localPos().toPoint()) / 2;
    if (event->button() == Qt::RightButton) {
        m_considerDragging = false;
        if (m_considerPos != byte)
            toggleByteHighlight(byte);
        m_considerPos = -1;
    }
    update();
}
