#include "arraycommand.h"

#include "xbytearray.h"

#include <utility>

ArrayCommand::ArrayCommand(XByteArray *xData, Cmd cmd, int position, QByteArray newData, int length,
                           QUndoCommand *parent)
    : QUndoCommand(parent)
    , m_cmd(cmd)
    , m_xData(xData)
    , m_position(position)
    , m_length(length)
    , m_newData(std::move(newData))
{
}

void ArrayCommand::undo()
{
    switch (m_cmd) {
    case insert:
        m_xData->remove(m_position, m_newData.size());
        return;
    case remove:
        m_xData->insert(m_position, m_oldData);
        break;
    case replace:
        putBack();
        break;
    }
    m_xData->setDataChanged(m_position, m_wasChanged);
}

void ArrayCommand::redo()
{
    switch (m_cmd) {
    case insert:
        m_xData->insert(m_position, m_newData);
        break;
    case remove:
        remember();
        m_xData->remove(m_position, m_length);
        break;
    case replace:
        remember();
        m_xData->replace(m_position, m_length, m_newData);
        break;
    }
}

void ArrayCommand::remember()
{
    // Flags there are for what lies within the bytes; mid() would give a meaning of its own to negative numbers.
    m_wasChanged = m_xData->dataChanged(m_position, m_length);
    m_oldData = m_wasChanged.isEmpty() ? QByteArray() : m_xData->data().mid(m_position, m_wasChanged.size());
}

void ArrayCommand::putBack()
{
    const int put = qMin(m_newData.size(), m_oldData.size());
    m_xData->replace(m_position, m_oldData.left(put));
    // What the replacing took away beside what it put.
    m_xData->insert(m_position + put, m_oldData.mid(put));
}
