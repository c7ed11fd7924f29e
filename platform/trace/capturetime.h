#pragma once

#include "canrecords.h"

/// A stamp with microseconds between 0 and 999999, the same time as before. Seconds beyond 32 bits become the first or
/// the last time that a stamp can hold.
CanTimeStamp normalised(CanTimeStamp stamp);

/// How the clock of a captured interface counts.
class CaptureClock
{
public:
    /// Microseconds since the epoch.
    CaptureClock() = default;
    /// @param resolution the byte of the format: 10 to the minus that, or, with the top bit, 2 to the minus the rest
    /// @param offset seconds to add
    CaptureClock(quint8 resolution, qint64 offset);

    /// What is finer than a microsecond is cut; what a stamp cannot hold becomes the nearest that it can. With the top
    /// bit, ticks of nanoseconds or coarser are negative numbers.
    CanTimeStamp stamp(quint64 ticks) const;

private:
    quint8 m_resolution = 6;
    qint64 m_offset = 0;
};
