#pragma once

#include "rhythm.h"

#include "canrecords.h"

#include <optional>
#include <vector>

/// A uniform stream of classic frames for measurements: 8 bytes, which hold a number that rises by one from frame to
/// frame, little-endian; identifiers 0x400 to 0x43F in turn. Pure logic, that neither waits nor looks at a clock.
class LoadGenerator
{
public:
    /// Frames a second; far beyond what any bus carries.
    static constexpr int highestRate = 1000000;
    /// Frames that advanceTo() gives at once; a larger rest is due immediately.
    static constexpr int largestBatch = 256;

    int rate() const { return m_rate; }
    /// @param framesPerSecond bounded to 0, which ends the stream, and highestRate; the numbering goes on
    void setRate(int framesPerSecond, qint64 now);

    /// When advanceTo() has something worth waking up for: a batch of about a millisecond, or a single frame.
    qint64 nextDue() const;
    /// The frames that are due. Of a backlog, a tenth of a second is made up for; the rest is skipped, though not
    /// in the numbering.
    std::vector<CAN::CanMessage> advanceTo(qint64 now);

    /// The number in a frame of such a stream; nothing for any other frame.
    static std::optional<quint64> number(const CAN::CanMessage &message);

private:
    /// When a frame is due, counted from 1 at the origin.
    qint64 dueOf(qint64 frame) const;

    int m_rate = 0;
    qint64 m_origin = 0;      ///< µs, from which the frames are counted
    qint64 m_sinceOrigin = 0; ///< frames given
    quint64 m_nextNumber = 0;
};
