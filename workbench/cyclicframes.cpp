#include "cyclicframes.h"

#include "canscheduler.h"
#include "framecolumn.h"
#include "frametext.h"

#include <algorithm>

namespace {
const FrameColumn columns[CyclicFrames::ColumnCount] = {
    {QT_TRANSLATE_NOOP("CyclicFrames", "ID"), "", "00000000x", Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("CyclicFrames", "Type"), "", "CAN FD BRS", Qt::AlignLeft, false},
    {QT_TRANSLATE_NOOP("CyclicFrames", "Data"), "", "00 00 00 00 00 00 00 00", Qt::AlignLeft, true},
    {QT_TRANSLATE_NOOP("CyclicFrames", "Cycle (ms)"), "", "00000.000", Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("CyclicFrames", "State"), "", "Waits for the connection", Qt::AlignLeft, false},
};
} // namespace

CyclicFrames::CyclicFrames(QObject *parent)
    : QAbstractTableModel(parent)
{
}

int CyclicFrames::start(const CAN::CanMessage &message, qint64 periodMicroseconds)
{
    int row = rowOf(message);
    if (row < 0) {
        row = rowCount();
        beginInsertRows({}, row, row);
        m_entries.push_back({message, periodMicroseconds, true, 0});
        endInsertRows();
    } else {
        Entry &changed = entry(row);
        changed.message = message;
        changed.period = periodMicroseconds;
        changed.sending = true;
    }
    schedule(entry(row));
    rowChanged(row);
    return row;
}

void CyclicFrames::setSending(int row, bool sending)
{
    Entry &changed = entry(row);
    if (changed.sending == sending)
        return;
    changed.sending = sending;
    if (sending)
        schedule(changed);
    else
        unschedule(changed);
    rowChanged(row);
}

bool CyclicFrames::isSending(int row) const
{
    return entry(row).sending;
}

void CyclicFrames::stopAll()
{
    for (int row = 0; row < rowCount(); ++row)
        setSending(row, false);
}

void CyclicFrames::remove(int row)
{
    unschedule(entry(row));
    beginRemoveRows({}, row, row);
    m_entries.erase(m_entries.begin() + row);
    endRemoveRows();
    emit sendingChanged();
}

int CyclicFrames::sendingCount() const
{
    return static_cast<int>(
        std::count_if(m_entries.cbegin(), m_entries.cend(), [](const Entry &entry) { return entry.sending; }));
}

int CyclicFrames::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

int CyclicFrames::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant CyclicFrames::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    if (role == Qt::DisplayRole)
        return text(entry(index.row()), index.column());
    return columns[index.column()].cell(role);
}

QVariant CyclicFrames::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    return role == Qt::DisplayRole ? QVariant(tr(columns[section].title)) : columns[section].header(role);
}

void CyclicFrames::setScheduler(CanScheduler *scheduler)
{
    if (scheduler == m_scheduler && scheduler != nullptr)
        return;
    // Handles die with their scheduler.
    for (Entry &entry : m_entries)
        entry.handle = 0;
    m_scheduler = scheduler;
    for (Entry &entry : m_entries) {
        if (entry.sending)
            schedule(entry);
    }
    if (!m_entries.empty())
        emit dataChanged(index(0, StateColumn), index(rowCount() - 1, StateColumn));
    emit sendingChanged();
}

int CyclicFrames::rowOf(const CAN::CanMessage &message) const
{
    const auto found = std::find_if(m_entries.cbegin(), m_entries.cend(), [&message](const Entry &entry) {
        return entry.message.id == message.id && entry.message.ext == message.ext;
    });
    return found == m_entries.cend() ? -1 : static_cast<int>(found - m_entries.cbegin());
}

void CyclicFrames::schedule(Entry &entry)
{
    if (!m_scheduler)
        return;
    if (entry.handle == 0)
        entry.handle = m_scheduler->addCyclicMessage(entry.message, entry.period);
    else
        m_scheduler->changeCyclicMessage(entry.handle, entry.message, entry.period);
}

void CyclicFrames::unschedule(Entry &entry)
{
    if (m_scheduler && entry.handle != 0)
        m_scheduler->removeCyclicMessage(entry.handle);
    entry.handle = 0;
}

void CyclicFrames::rowChanged(int row)
{
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    emit sendingChanged();
}

QString CyclicFrames::text(const Entry &entry, int column) const
{
    switch (column) {
    case IdentifierColumn:
        return FrameText::identifier(entry.message);
    case KindColumn:
        return FrameText::kind(entry.message);
    case DataColumn:
        return FrameText::data(entry.message);
    case PeriodColumn:
        return FrameText::milliseconds(entry.period);
    case StateColumn:
        if (!entry.sending)
            return tr("Stopped");
        return m_scheduler ? tr("Sending") : tr("Waits for the connection");
    default:
        return {};
    }
}
