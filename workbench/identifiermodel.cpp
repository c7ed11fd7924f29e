#include "identifiermodel.h"

#include "canopentext.h"
#include "datachunkhandler.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "frametext.h"

namespace {
constexpr unsigned int sliceSize = 5'000;

// Announcing rows one by one costs each view some work; this many at once mean that everything is new anyway.
constexpr int manyNewRows = 256;

const FrameColumn columns[IdentifierModel::ColumnCount] = {
    {QT_TRANSLATE_NOOP("IdentifierModel", "ID"),
     QT_TRANSLATE_NOOP("IdentifierModel", "Identifier in hexadecimal. An x behind it marks one of 29 bits."),
     "00000000x", Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("IdentifierModel", "Type"),
     QT_TRANSLATE_NOOP("IdentifierModel",
                       "BRS: the data went at the higher bit rate. ESI: the sender is error passive."),
     "CAN FD BRS", Qt::AlignLeft, false},
    {QT_TRANSLATE_NOOP("IdentifierModel", "Count"),
     QT_TRANSLATE_NOOP("IdentifierModel", "Number of frames with this identifier in the trace"), "000000000",
     Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("IdentifierModel", "Cycle (ms)"),
     QT_TRANSLATE_NOOP("IdentifierModel", "Milliseconds between the last two frames"), "0000000.000", Qt::AlignRight,
     true},
    {QT_TRANSLATE_NOOP("IdentifierModel", "Length"),
     QT_TRANSLATE_NOOP("IdentifierModel", "Number of data bytes of the last frame"), "Length", Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("IdentifierModel", "Last data"),
     QT_TRANSLATE_NOOP("IdentifierModel", "Data bytes of the last frame in hexadecimal"),
     "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", Qt::AlignLeft, true},
    {QT_TRANSLATE_NOOP("IdentifierModel", "CANopen"),
     QT_TRANSLATE_NOOP("IdentifierModel", "What the last frame means if the network speaks CANopen"),
     "Heartbeat, node 100: operational", Qt::AlignLeft, false},
};
} // namespace

void IdentifierModel::RowRange::include(int row)
{
    if (row < 0)
        return;
    first = first < 0 ? row : qMin(first, row);
    last = qMax(last, row);
}

IdentifierModel::IdentifierModel(DatachunkHandler *store, QObject *parent)
    : QAbstractTableModel(parent)
    , m_store(store)
{
}

bool IdentifierModel::refresh()
{
    const unsigned int stored = m_store ? m_store->getMessageCount() : 0;
    if (stored < m_framesRead)
        reset();
    const unsigned int end = m_framesRead + qMin(stored - m_framesRead, framesPerRefresh);
    RowRange changed;
    while (m_framesRead < end) {
        const QVector<CAN::CanRxMessage> slice = m_store->getMessages(m_framesRead,
                                                                      qMin(sliceSize, end - m_framesRead));
        if (slice.isEmpty()) {
            // A frame that the disk does not give back is left out; a trace that was cleared has no more.
            if (m_store->getMessageCount() <= m_framesRead)
                break;
            ++m_framesRead;
            continue;
        }
        const QVector<IdentifierStatistics::Key> keys = m_statistics.newKeys(slice);
        // Rows in between move those that changed before.
        if (!keys.isEmpty())
            changed = {0, m_statistics.rowCount() + keys.size() - 1};
        insertNewRows(keys);
        for (const CAN::CanRxMessage &frame : slice)
            changed.include(m_statistics.add(frame));
        m_framesRead += static_cast<unsigned int>(slice.size());
    }
    if (changed.first >= 0)
        emit dataChanged(index(changed.first, 0), index(changed.last, ColumnCount - 1));
    return end == stored;
}

void IdentifierModel::insertNewRows(const QVector<IdentifierStatistics::Key> &keys)
{
    if (keys.size() >= manyNewRows) {
        beginResetModel();
        m_statistics.insert(keys);
        endResetModel();
        return;
    }
    for (int at = 0; at < keys.size();) {
        const int row = m_statistics.rowFor(keys[at]);
        int end = at + 1;
        while (end < keys.size() && m_statistics.rowFor(keys[end]) == row)
            ++end;
        beginInsertRows({}, row, row + end - at - 1);
        m_statistics.insert(keys.mid(at, end - at));
        endInsertRows();
        at = end;
    }
}

void IdentifierModel::reset()
{
    beginResetModel();
    m_statistics.clear();
    m_framesRead = 0;
    endResetModel();
}

void IdentifierModel::setMarks(const FrameMarks *marks)
{
    m_marks = marks;
    connect(marks, &FrameMarks::changed, this, [this] {
        if (rowCount() > 0)
            emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1), {FrameRoles::MarkRole});
    });
}

int IdentifierModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_statistics.rowCount();
}

int IdentifierModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant IdentifierModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const IdentifierSummary &summary = m_statistics.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(summary, index.column());
    case Qt::ToolTipRole:
        return toolTip(summary, index.column());
    case FrameRoles::ErrorRole:
        return summary.last.message.errorFrame;
    case FrameRoles::MarkRole:
        return m_marks != nullptr ? m_marks->colorFor(summary.last) : -1;
    case FrameRoles::FrameRole:
        return QVariant::fromValue(summary.last);
    case FrameRoles::ClipboardRole: {
        QStringList cells;
        for (int column = 0; column < ColumnCount; ++column)
            cells.append(text(summary, column));
        return cells.join(QLatin1Char('\t'));
    }
    default:
        return columns[index.column()].cell(role);
    }
}

QVariant IdentifierModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return tr(columns[section].title);
    case Qt::ToolTipRole:
        return tr(columns[section].toolTip);
    default:
        return columns[section].header(role);
    }
}

QString IdentifierModel::text(const IdentifierSummary &summary, int column) const
{
    const CAN::CanMessage &message = summary.last.message;
    switch (column) {
    case IdentifierColumn:
        return message.errorFrame ? QString() : FrameText::identifier(message);
    case KindColumn:
        return FrameText::kind(message);
    case CountColumn:
        return QString::number(summary.count);
    case PeriodColumn:
        return summary.period < 0 ? QString() : FrameText::milliseconds(summary.period);
    case LengthColumn:
        return QString::number(message.length);
    case DataColumn:
        return FrameText::data(message);
    case MeaningColumn:
        return CanOpenText::meaning(message);
    default:
        return {};
    }
}

QString IdentifierModel::toolTip(const IdentifierSummary &summary, int column) const
{
    if (column != PeriodColumn || summary.period < 0)
        return {};
    return tr("Shortest %1 ms\nAverage %2 ms\nLongest %3 ms")
        .arg(FrameText::milliseconds(summary.minPeriod), FrameText::milliseconds(summary.averagePeriod()),
             FrameText::milliseconds(summary.maxPeriod));
}
