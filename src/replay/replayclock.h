#pragma once

#include <QtGlobal>

#include <optional>

/// Makes the waits of a replay come true over the whole recording, and not only one by one.
///
/// A sleep ends late, by 50 microseconds or so, and sending takes time as well; with a frame each millisecond that
/// adds up to minutes within the hour. So each wait counts from the moment at which the one before should have ended, and
/// what was overslept is taken out of the next sleep.
class ReplayClock
{
public:
    /// How long to sleep now, in microseconds, so that a wait of `wait` microseconds comes true.
    /// @param now nanoseconds on a clock that never jumps
    quint64 sleepFor(quint64 wait, qint64 now);

    /// The next wait counts from its own beginning: what was overslept is forgotten.
    void restart();

    /// The waits to come belong to this speed. Another one than before restarts the clock.
    void setSpeed(double speed);

private:
    std::optional<qint64> m_due; // nanoseconds
    double m_speed = 1.0;
};
