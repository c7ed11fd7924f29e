#include "deadlines.h"

#include <algorithm>

namespace {
qint64 bounded(qint64 period)
{
    return std::clamp(period, Deadlines::shortestPeriod, Deadlines::longestPeriod);
}
} // namespace

void Deadlines::start(quint32 handle, qint64 period, qint64 now)
{
    m_cycles.insert({handle, {bounded(period), now, std::nullopt}});
    m_order.insert({now, handle});
}

void Deadlines::changePeriod(quint32 handle, qint64 period, qint64 now)
{
    const auto found = m_cycles.find(handle);
    if (found == m_cycles.end() || found->second.period == bounded(period))
        return;
    Cycle &cycle = found->second;
    cycle.period = bounded(period);
    if (cycle.served)
        move(handle, cycle, std::max(*cycle.served + cycle.period, now));
}

void Deadlines::remove(quint32 handle)
{
    const auto found = m_cycles.find(handle);
    if (found == m_cycles.end())
        return;
    m_order.erase({found->second.due, handle});
    m_cycles.erase(found);
}

void Deadlines::clear()
{
    m_cycles.clear();
    m_order.clear();
}

void Deadlines::restart(qint64 now)
{
    for (auto &[handle, cycle] : m_cycles) {
        cycle.served.reset();
        move(handle, cycle, now);
    }
}

qint64 Deadlines::next() const
{
    return m_order.empty() ? never : m_order.begin()->first;
}

quint32 Deadlines::take(qint64 now)
{
    if (next() > now)
        return 0;
    const quint32 handle = m_order.begin()->second;
    Cycle &cycle = m_cycles.at(handle);
    const qint64 passed = (now - cycle.due) / cycle.period;
    cycle.served = cycle.due + passed * cycle.period;
    move(handle, cycle, *cycle.served + cycle.period);
    return handle;
}

void Deadlines::move(quint32 handle, Cycle &cycle, qint64 due)
{
    m_order.erase({cycle.due, handle});
    cycle.due = due;
    m_order.insert({due, handle});
}
