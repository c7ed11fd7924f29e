#pragma once

#include <QtGlobal>

#include <limits>

/// Deadlines at equal distances. One that passed unnoticed is skipped, so that a machine that wakes up does not send
/// in one burst what it missed. All times in µs.
class Rhythm
{
public:
    static constexpr qint64 never = std::numeric_limits<qint64>::max();

    /// The first deadline is one period after `now`; a period of 0 stops the rhythm.
    void start(qint64 now, qint64 period)
    {
        m_period = period;
        m_due = period > 0 ? now + period : never;
    }
    void stop() { m_due = never; }

    qint64 due() const { return m_due; }

    /// True if a deadline was reached; the next one lies behind `now`, still a multiple of periods away.
    bool take(qint64 now)
    {
        if (now < m_due)
            return false;
        m_due += ((now - m_due) / m_period + 1) * m_period;
        return true;
    }

private:
    qint64 m_period = 0;
    qint64 m_due = never;
};
