#pragma once

#include "identifierstatistics.h"

#include <QAbstractTableModel>
#include <QPointer>

class DatachunkHandler;
class FrameMarks;

/// One row for each identifier of a trace, in rising order, with count, cycle time and last frame.
///
/// Reads the new frames of the store at refresh(), a bounded number at a time.
class IdentifierModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        IdentifierColumn,
        KindColumn,
        CountColumn,
        PeriodColumn,
        LengthColumn,
        DataColumn,
        MeaningColumn,
        ColumnCount
    };

    /// More than a second of the fastest bus; reading them takes a few milliseconds.
    static constexpr unsigned int framesPerRefresh = 50'000;

    explicit IdentifierModel(DatachunkHandler *store, QObject *parent = nullptr);

    /// Reads on. False if the store held more than one refresh reads.
    bool refresh();
    /// Starts again at the first frame: for after DatachunkHandler::clear().
    void reset();

    /// Frames of identifiers that have no row, since there are too many of them.
    quint64 unlistedFrames() const { return m_statistics.unlistedFrames(); }

    /// The marks that give rows their colour; must outlive the model.
    void setMarks(const FrameMarks *marks);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct RowRange
    {
        int first = -1;
        int last = -1;
        void include(int row);
    };

    void insertNewRows(const QVector<IdentifierStatistics::Key> &keys);
    QString text(const IdentifierSummary &summary, int column) const;
    QString toolTip(const IdentifierSummary &summary, int column) const;

    QPointer<DatachunkHandler> m_store;
    const FrameMarks *m_marks = nullptr;
    IdentifierStatistics m_statistics;
    unsigned int m_framesRead = 0;
};
