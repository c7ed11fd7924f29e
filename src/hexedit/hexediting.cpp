// What changes the bytes: each operation checks its limits and makes one command.

#include "arraycommand.h"
#include "charcommand.h"
#include "qhexeditprivate.h"

void QHexEditPrivate::insert(int index, QByteArray &ba)
{
    if (ba.isEmpty())
        return;
    if (m_overwriteMode) {
        if (holds(index))
            pushReplace(index, ba.size(), ba);
        return;
    }

    const int room = isFull() ? 0 : m_xData.maxSize() - m_xData.size();
    if (ba.size() > room)
        ba.resize(room);
    if (!ba.isEmpty() && (holds(index) || index == m_xData.data().size()))
        push(new ArrayCommand(&m_xData, ArrayCommand::insert, index, ba, ba.size()));
}

void QHexEditPrivate::insert(int index, char ch)
{
    if (!isFull() && (holds(index) || index == m_xData.data().size()))
        push(new CharCommand(&m_xData, CharCommand::insert, index, ch));
}

void QHexEditPrivate::remove(int index, int length)
{
    if (length <= 0 || !holds(index))
        return;
    if (length == 1) {
        push(new CharCommand(&m_xData, m_overwriteMode ? CharCommand::replace : CharCommand::remove, index, '\0'));
        return;
    }
    const int removed = qMin(length, m_xData.data().size() - index);
    if (m_overwriteMode)
        push(new ArrayCommand(&m_xData, ArrayCommand::replace, index, QByteArray(removed, '\0'), removed));
    else
        push(new ArrayCommand(&m_xData, ArrayCommand::remove, index, QByteArray(), removed));
}

void QHexEditPrivate::replace(int index, char ch)
{
    if (index >= m_xData.maxSize() || !holds(index))
        return;
    push(new CharCommand(&m_xData, CharCommand::replace, index, ch));
    resetSelection();
}

void QHexEditPrivate::replace(int index, QByteArray const &ba)
{
    replace(index, ba.size(), ba);
}

void QHexEditPrivate::replace(int index, int length, QByteArray const &after)
{
    if (isFull() || length <= 0 || !holds(index))
        return;
    pushReplace(index, length, after);
    resetSelection();
}

void QHexEditPrivate::undo()
{
    m_undoStack.undo();
    emit dataChanged();
    setCursorPos(m_cursorPosition);
    update();
}

void QHexEditPrivate::redo()
{
    m_undoStack.redo();
    emit dataChanged();
    setCursorPos(m_cursorPosition);
    update();
}

void QHexEditPrivate::setData(QByteArray const &data)
{
    m_xData.setData(data);
    m_undoStack.clear();
    adjust();
    setCursorPos(0);
    emit dataChanged();
}

QByteArray QHexEditPrivate::data()
{
    return m_xData.data();
}

bool QHexEditPrivate::holds(int index)
{
    return index >= 0 && index < m_xData.data().size();
}

bool QHexEditPrivate::isFull()
{
    return m_xData.size() >= m_xData.maxSize();
}

void QHexEditPrivate::pushReplace(int index, int length, QByteArray const &after)
{
    // No more than there is to replace is kept in the history, however long the array.
    const int replaced = qMin(length, m_xData.data().size() - index);
    push(new ArrayCommand(&m_xData, ArrayCommand::replace, index, after.left(replaced), replaced));
}

void QHexEditPrivate::push(QUndoCommand *command)
{
    m_undoStack.push(command);
    emit dataChanged();
}
