#include "stallmeter.h"

namespace {
constexpr int tickMilliseconds = 20;
}

void StallHistory::report(qint64 now, qint64 delay)
{
    const qint64 number = now / 1000;
    Second &second = m_seconds[static_cast<std::size_t>(number % seconds)];
    if (second.number != number)
        second = {number, 0};
    second.longest = qMax(second.longest, delay);
    m_longest = qMax(m_longest, delay);
}

qint64 StallHistory::longestInLastMinute(qint64 now) const
{
    qint64 longest = 0;
    for (const Second &second : m_seconds) {
        if (second.number > now / 1000 - seconds)
            longest = qMax(longest, second.longest);
    }
    return longest;
}

void StallHistory::clear()
{
    *this = StallHistory();
}

StallMeter::StallMeter(QObject *parent)
    : QObject(parent)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &StallMeter::tick);
    restart();
    m_timer.start(tickMilliseconds);
}

qint64 StallMeter::longestInLastMinute() const
{
    return m_history.longestInLastMinute(m_clock.elapsed());
}

void StallMeter::restart()
{
    m_history.clear();
    m_clock.start();
    m_lastTick = 0;
}

void StallMeter::tick()
{
    const qint64 now = m_clock.elapsed();
    m_history.report(now, qMax<qint64>(0, now - m_lastTick - tickMilliseconds));
    m_lastTick = now;
}
