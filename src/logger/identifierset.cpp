#include "identifierset.h"

#include <algorithm>

namespace {
using Range = IdentifierSet::Range;

/// Whether `next`, which does not begin before `range`, goes on where that ends, or earlier.
bool isContinuedBy(const Range &range, const Range &next)
{
    return quint64(next.first) <= quint64(range.last) + 1;
}
} // namespace

IdentifierSet::IdentifierSet(QVector<Range> ranges)
{
    std::sort(ranges.begin(), ranges.end(), [](const Range &a, const Range &b) { return a.first < b.first; });
    for (const Range &range : qAsConst(ranges)) {
        if (range.first > range.last)
            continue;
        if (!m_ranges.isEmpty() && isContinuedBy(m_ranges.last(), range))
            m_ranges.last().last = std::max(m_ranges.last().last, range.last);
        else
            m_ranges.append(range);
    }
}

bool IdentifierSet::contains(quint32 id) const
{
    const auto behind = std::upper_bound(m_ranges.begin(), m_ranges.end(), id,
                                         [](quint32 wanted, const Range &range) { return wanted < range.first; });
    return behind != m_ranges.begin() && id <= std::prev(behind)->last;
}

bool IdentifierSet::isEmpty() const
{
    return m_ranges.isEmpty();
}

quint64 IdentifierSet::size() const
{
    quint64 count = 0;
    for (const Range &range : m_ranges)
        count += quint64(range.last) - range.first + 1;
    return count;
}
