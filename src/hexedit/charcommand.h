#pragma once

#include "kestrune_export.h"

#include <QUndoCommand>

class XByteArray;

/// Inserts, removes or replaces one byte, and takes that back together with the byte's change flag.
///
/// What is done to one byte in succession becomes one step: replacing it again, or replacing what was just inserted.
class KESTRUNE_EXPORT CharCommand : public QUndoCommand
{
public:
    enum Cmd { insert, remove, replace };

    /// @param xData outlives the command
    /// @param newChar is of no account for `remove`
    CharCommand(XByteArray *xData, Cmd cmd, int position, char newChar, QUndoCommand *parent = nullptr);

    void undo() override;
    void redo() override;
    int id() const override;
    bool mergeWith(const QUndoCommand *other) override;

private:
    void remember();

    XByteArray *m_xData;
    int m_position;
    bool m_wasChanged = false;
    char m_newChar;
    char m_oldChar = 0;
    Cmd m_cmd;
    bool m_hasOld = false; // there was a byte to remove or replace
};
