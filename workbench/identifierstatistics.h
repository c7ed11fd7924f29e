#pragma once

#include "canrecords.h"

#include <QVector>

/// What the view by identifiers shows of one identifier.
struct IdentifierSummary
{
    CAN::CanRxMessage last;
    quint64 count = 0;
    qint64 period = -1; ///< distance of the last two frames in microseconds; -1 after the first frame
    qint64 minPeriod = -1;
    qint64 maxPeriod = -1;
    qint64 firstMicroseconds = 0; ///< time stamp of the first frame

    void add(const CAN::CanRxMessage &frame);
    /// In microseconds; -1 while there is no distance.
    qint64 averagePeriod() const;
};

/// The frames of a trace summed up by identifier, in rising order: those of 11 bits, those of 29 bits, and one row for
/// all error frames. A row never goes away but by clear().
///
/// New rows and new frames come in two steps, so that a model can announce the rows: newKeys() of a slice of frames,
/// insert() for them, then add() for each frame. Memory is bounded: beyond `maxIdentifiers` frames of further
/// identifiers are counted, not listed.
class IdentifierStatistics
{
public:
    using Key = quint64;

    static constexpr int maxIdentifiers = 65536;

    static Key keyOf(const CAN::CanMessage &message);

    int rowCount() const { return m_keys.size(); }
    const IdentifierSummary &at(int row) const { return m_summaries[m_slots[row]]; }

    /// The keys of the slice that have no row yet, in rising order, as many as there is room for.
    QVector<Key> newKeys(const QVector<CAN::CanRxMessage> &slice) const;
    /// The row that a new key gets.
    int rowFor(Key key) const;
    /// Gives new keys, in rising order, their rows.
    void insert(const QVector<Key> &keys);
    /// The row that took the frame; -1 if its key has none.
    int add(const CAN::CanRxMessage &frame);

    quint64 unlistedFrames() const { return m_unlistedFrames; }

    void clear();

private:
    bool contains(Key key) const;

    QVector<Key> m_keys;
    QVector<int> m_slots; // by row: which summary is the row's, so that a new row moves no summaries
    QVector<IdentifierSummary> m_summaries;
    quint64 m_unlistedFrames = 0;
};
