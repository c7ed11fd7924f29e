#pragma once

#include <QtGlobal>

#include <optional>

/// Makes the waits of a replay come true over the whole recording, and not only one by one.
///
/// A sleep ends late, by 50 microseconds or so, and sending takes time as well; with a frame each millisecond that
/// adds up to minutes within the hour. So each wait counts from the moment at which the one before should have ended,
/// and whatever time has passed since then, by oversleeping, sending or anything else, is taken out of the next sleep.
///
/// More than 100 milliseconds are not made up for, not even in part: after a write that was blocked or a process that
/// was stopped, a bus that was just in trouble would get a flood of frames without gaps.
class ReplayClock
{
public:
    /// How long to sleep now, in microseconds, so that a wait of `wait` microseconds comes true.
    /// @param now nanoseconds on a clock that never jumps
    quint64 sleepFor(quint64 wait, qint64 now);

    /// The next wait counts from its own beginning: that it comes late is forgotten.
    void restart();

    /// The waits to come belong to this speed. Another one than before restarts the clock.
    void setSpeed(double speed);

private:
    std::optional<qint64> m_due; // nanoseconds
    double m_speed = 1.0;
};
