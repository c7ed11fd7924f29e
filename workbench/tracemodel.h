#pragma once

#include "canrecords.h"

#include <QAbstractTableModel>
#include <QPointer>
#include <QVector>

class DatachunkHandler;
class FrameMarks;

/// The frames of a trace in the order of their arrival, read from the store row by row as a view asks.
///
/// Nothing of the trace is kept but a few blocks around what was read last. The model grows at refresh() only.
class TraceModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        NumberColumn,
        TimeColumn,
        KindColumn,
        IdentifierColumn,
        LengthColumn,
        DataColumn,
        MeaningColumn,
        NoteColumn,
        ColumnCount
    };
    enum TimeMode {
        SinceStart,    ///< distance to the first frame
        SincePrevious, ///< distance to the frame before
        TimeOfDay,     ///< the stamp itself
    };
    Q_ENUM(TimeMode)

    explicit TraceModel(DatachunkHandler *store, QObject *parent = nullptr);

    /// Takes in the frames that came since the last call. A store that was cleared resets the model.
    void refresh();
    /// Forgets everything, also when the store holds as many frames again as before: for after DatachunkHandler::clear().
    void reset();

    void setTimeMode(TimeMode mode);
    TimeMode timeMode() const { return m_timeMode; }

    /// The marks that give rows their colour; must outlive the model.
    void setMarks(const FrameMarks *marks);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Block
    {
        int first = -1;
        QVector<CAN::CanRxMessage> frames;
    };

    const CAN::CanRxMessage *frameAt(int row) const;
    QString text(int row, int column) const;
    QString timeText(int row, const CAN::CanRxMessage &frame) const;
    QString notesText(int row) const;
    QString clipboardText(int row) const;
    qint64 sinceStart(const CAN::CanRxMessage &frame) const;

    QPointer<DatachunkHandler> m_store;
    const FrameMarks *m_marks = nullptr;
    int m_rows = 0;
    TimeMode m_timeMode = SinceStart;
    qint64 m_startMicroseconds = 0; // of the first frame, good while there are rows
    mutable Block m_blocks[2];
    mutable int m_lastBlock = 0;
};
