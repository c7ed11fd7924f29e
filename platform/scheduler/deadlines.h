#pragma once

#include <QtGlobal>

#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

/// When which cyclic frame is due. All times are microseconds of one clock that never goes back; this class never
/// looks at a clock itself.
///
/// The deadlines of a frame are its start, start + period, start + 2 * period and so on, however late any of them is
/// served: lateness does not add up. Of several deadlines that passed unserved only the last one counts.
class Deadlines
{
public:
    static constexpr qint64 never = std::numeric_limits<qint64>::max();
    static constexpr qint64 shortestPeriod = 100;
    /// More than thirty years; leaves room to add it to any time without an overflow.
    static constexpr qint64 longestPeriod = 1000000000000000;

    /// The first deadline is `now`. Handles are not 0, and new.
    void start(quint32 handle, qint64 period, qint64 now);
    /// An unchanged period changes nothing. Otherwise the next deadline lies one new period behind the one last
    /// served, but not in the past, and the new rhythm counts from there.
    void changePeriod(quint32 handle, qint64 period, qint64 now);
    void remove(quint32 handle);
    void clear();
    /// Every frame starts anew at `now`.
    void restart(qint64 now);

    /// The earliest deadline, `never` if there is none.
    qint64 next() const;
    /// The frame whose deadline is the earliest, if that is not after `now`, and moves that frame on to its first
    /// deadline after `now`; 0 if nothing is due. Of equal deadlines the smaller handle comes first.
    quint32 take(qint64 now);

private:
    struct Cycle
    {
        qint64 period;
        qint64 due;
        std::optional<qint64> served;
    };

    void move(quint32 handle, Cycle &cycle, qint64 due);

    std::map<quint32, Cycle> m_cycles;
    std::set<std::pair<qint64, quint32>> m_order;
};
