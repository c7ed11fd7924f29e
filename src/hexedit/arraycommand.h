#pragma once

#include "kestrune_export.h"

#include <QByteArray>
#include <QUndoCommand>

class XByteArray;

/// Inserts, removes or replaces several bytes, and takes that back together with their change flags. Always a step of
/// its own.
class KESTRUNE_EXPORT ArrayCommand : public QUndoCommand
{
public:
    enum Cmd { insert, remove, replace };

    /// @param xData outlives the command
    /// @param newData is of no account for `remove`
    /// @param length number of bytes that are removed or replaced; of no account for `insert`
    ArrayCommand(XByteArray *xData, Cmd cmd, int position, QByteArray newData, int length,
                 QUndoCommand *parent = nullptr);

    void undo() override;
    void redo() override;

private:
    void remember();
    void putBack();

    Cmd m_cmd;
    XByteArray *m_xData;
    int m_position;
    int m_length;
    QByteArray m_wasChanged;
    QByteArray m_newData;
    QByteArray m_oldData;
};
