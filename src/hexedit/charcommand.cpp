#include "charcommand.h"

#include "xbytearray.h"

CharCommand::CharCommand(XByteArray *xData, Cmd cmd, int position, char newChar, QUndoCommand *parent)
    : QUndoCommand(parent)
    , m_xData(xData)
    , m_position(position)
    , m_newChar(newChar)
    , m_cmd(cmd)
{
}

void CharCommand::undo()
{
    if (m_cmd == insert) {
        m_xData->remove(m_position, 1);
        return;
    }
    if (!m_hasOld)
        return;
    if (m_cmd == remove)
        m_xData->insert(m_position, m_oldChar);
    else
        m_xData->replace(m_position, m_oldChar);
    m_xData->setDataChanged(m_position, m_wasChanged);
}

void CharCommand::redo()
{
    switch (m_cmd) {
    case insert:
        m_xData->insert(m_position, m_newChar);
        break;
    case remove:
        remember();
        m_xData->remove(m_position, 1);
        break;
    case replace:
        remember();
        m_xData->replace(m_position, m_newChar);
        break;
    }
}

int CharCommand::id() const
{
    return 1234;
}

bool CharCommand::mergeWith(const QUndoCommand *other)
{
    if (other->id() != id())
        return false;
    const auto *next = static_cast<const CharCommand *>(other);
    if (m_cmd == remove || next->m_cmd != replace || next->m_position != m_position)
        return false;
    m_newChar = next->m_newChar;
    return true;
}

void CharCommand::remember()
{
    const QByteArray &data = m_xData->data();
    m_hasOld = m_position >= 0 && m_position < data.size();
    if (m_hasOld)
        m_oldChar = data.at(m_position);
    m_wasChanged = m_xData->dataChanged(m_position);
}
