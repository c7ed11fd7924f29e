#include "replayclock.h"

#include <algorithm>

namespace {
constexpr qint64 nanosecondsPerMicrosecond = 1000;
// A year: no sum of deadlines and waits comes near an overflow.
constexpr quint64 longestWait = 365ULL * 24 * 3600 * 1000000;
// Far more than a sleep or a write takes too long while all is well; less than a bus minds to have made up for.
constexpr qint64 longestDebt = 100 * 1000 * nanosecondsPerMicrosecond;
} // namespace

quint64 ReplayClock::sleepFor(quint64 wait, qint64 now)
{
    const qint64 bounded = static_cast<qint64>(std::min(wait, longestWait));
    if (m_due && now - *m_due > longestDebt)
        restart();
    m_due = m_due.value_or(now) + bounded * nanosecondsPerMicrosecond;
    return static_cast<quint64>(std::max<qint64>(*m_due - now, 0) / nanosecondsPerMicrosecond);
}

void ReplayClock::restart()
{
    m_due.reset();
}

void ReplayClock::setSpeed(double speed)
{
    if (speed != m_speed)
        restart();
    m_speed = speed;
}
