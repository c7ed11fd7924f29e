#include "identifierstatistics.h"

#include "frametext.h"

#include <algorithm>

namespace {
constexpr IdentifierStatistics::Key extendedKeys = 1ULL << 32;
constexpr IdentifierStatistics::Key errorKey = 1ULL << 33;
} // namespace

void IdentifierSummary::add(const CAN::CanRxMessage &frame)
{
    const qint64 now = FrameText::microseconds(frame.timeStamp);
    if (count == 0) {
        firstMicroseconds = now;
    } else {
        // Stamps of several adapters may run apart; a distance is never negative.
        period = qMax<qint64>(0, now - FrameText::microseconds(last.timeStamp));
        minPeriod = minPeriod < 0 ? period : qMin(minPeriod, period);
        maxPeriod = qMax(maxPeriod, period);
    }
    last = frame;
    ++count;
}

qint64 IdentifierSummary::averagePeriod() const
{
    if (count < 2)
        return -1;
    const qint64 span = FrameText::microseconds(last.timeStamp) - firstMicroseconds;
    return qMax<qint64>(0, span / static_cast<qint64>(count - 1));
}

IdentifierStatistics::Key IdentifierStatistics::keyOf(const CAN::CanMessage &message)
{
    if (message.errorFrame)
        return errorKey;
    return message.ext ? extendedKeys | message.id : message.id;
}

bool IdentifierStatistics::contains(Key key) const
{
    return std::binary_search(m_keys.cbegin(), m_keys.cend(), key);
}

QVector<IdentifierStatistics::Key> IdentifierStatistics::newKeys(const QVector<CAN::CanRxMessage> &slice) const
{
    QVector<Key> keys;
    for (const CAN::CanRxMessage &frame : slice) {
        const Key key = keyOf(frame.message);
        if (!contains(key))
            keys.append(key);
    }
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    keys.resize(qMin(keys.size(), maxIdentifiers - rowCount()));
    return keys;
}

int IdentifierStatistics::rowFor(Key key) const
{
    return static_cast<int>(std::lower_bound(m_keys.cbegin(), m_keys.cend(), key) - m_keys.cbegin());
}

void IdentifierStatistics::insert(const QVector<Key> &keys)
{
    const int oldCount = m_keys.size();
    m_keys.resize(oldCount + keys.size());
    m_slots.resize(oldCount + keys.size());
    // Merged from the back, so that each old row moves once.
    int from = oldCount - 1;
    int to = m_keys.size() - 1;
    for (int newKey = keys.size() - 1; newKey >= 0; --to) {
        if (from >= 0 && m_keys[from] > keys[newKey]) {
            m_keys[to] = m_keys[from];
            m_slots[to] = m_slots[from];
            --from;
        } else {
            m_keys[to] = keys[newKey];
            m_slots[to] = m_summaries.size() + newKey;
            --newKey;
        }
    }
    m_summaries.resize(m_summaries.size() + keys.size());
}

int IdentifierStatistics::add(const CAN::CanRxMessage &frame)
{
    const Key key = keyOf(frame.message);
    const int row = rowFor(key);
    if (row == m_keys.size() || m_keys[row] != key) {
        ++m_unlistedFrames;
        return -1;
    }
    m_summaries[m_slots[row]].add(frame);
    return row;
}

void IdentifierStatistics::clear()
{
    *this = IdentifierStatistics();
}
