#pragma once

#include "canrecords.h"

#include <QByteArray>
#include <QStringList>

/// Turns frames and notes into the blocks of a trace file, one behind the other, as they come: what was written stays
/// as it is, so that a file which ends anywhere is good up to its last whole block.
///
/// The first interface of the file counts from the epoch, as every tool expects. A second one, with an offset, appears
/// before the first frame that is older than that.
class TraceEncoder
{
public:
    /// Begins with what stands at the start of every file.
    TraceEncoder();

    /// A note of more than 65535 bytes is cut, and notes that would make the block longer than readers take are left
    /// out.
    void addFrame(const CAN::CanRxMessage &frame, const QStringList &notes = {});
    /// Notes that came for the last frame when its block was already written.
    void addLateNotes(const QStringList &notes);

    /// The blocks since the last clear(); always whole ones.
    const QByteArray &bytes() const { return m_bytes; }
    void clear() { m_bytes.resize(0); }

private:
    void addInterface(qint64 offset);
    void addTime(quint32 interface, quint64 ticks);
    void addNotes(const QStringList &notes, int block);
    void addOption(quint16 code, const QByteArray &value);
    void addNumber(quint16 number);
    void addNumber(quint32 number);
    int beginBlock(quint32 type);
    void endBlock(int begin);

    QByteArray m_bytes;
    bool m_hasPast = false;
};

/// The size of the blocks that lie whole within the first `size` bytes of `blocks`.
int wholeBlocks(const QByteArray &blocks, int size);
