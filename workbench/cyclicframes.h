#pragma once

#include "canrecords.h"

#include <QAbstractTableModel>
#include <QPointer>

#include <vector>

class CanScheduler;

/// The frames that are sent again and again, one row each.
///
/// The list outlives a connection: without a scheduler nothing is sent, and what was being sent goes on with the next
/// one. What was stopped stays stopped.
class CyclicFrames : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { IdentifierColumn, KindColumn, DataColumn, PeriodColumn, StateColumn, ColumnCount };

    explicit CyclicFrames(QObject *parent = nullptr);

    /// Starts the frame, or gives new content and period to the row that has its identifier.
    /// @return the row
    int start(const CAN::CanMessage &message, qint64 periodMicroseconds);
    void setSending(int row, bool sending);
    bool isSending(int row) const;
    void stopAll();
    void remove(int row);
    /// How many are to be sent, whether there is a connection or not.
    int sendingCount() const;

    const CAN::CanMessage &message(int row) const { return entry(row).message; }
    qint64 periodMicroseconds(int row) const { return entry(row).period; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

public slots:
    /// Null when there is none any more; the old one may be gone by then.
    void setScheduler(CanScheduler *scheduler);

signals:
    void sendingChanged();

private:
    struct Entry
    {
        CAN::CanMessage message;
        qint64 period;
        bool sending;
        quint32 handle; // with the scheduler, 0 for none
    };

    const Entry &entry(int row) const { return m_entries[static_cast<std::size_t>(row)]; }
    Entry &entry(int row) { return m_entries[static_cast<std::size_t>(row)]; }
    int rowOf(const CAN::CanMessage &message) const;
    void schedule(Entry &entry);
    void unschedule(Entry &entry);
    void rowChanged(int row);
    QString text(const Entry &entry, int column) const;

    QPointer<CanScheduler> m_scheduler;
    std::vector<Entry> m_entries;
};
