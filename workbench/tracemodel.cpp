#include "tracemodel.h"

#include "canopentext.h"
#include "datachunkhandler.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "frametext.h"

#include <algorithm>
#include <limits>

namespace {
// A screen full of rows lies in one or two blocks.
constexpr int blockSize = 256;

const FrameColumn columns[TraceModel::ColumnCount] = {
    {QT_TRANSLATE_NOOP("TraceModel", "No."), QT_TRANSLATE_NOOP("TraceModel", "Number of the frame in the trace"),
     "00000000", Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("TraceModel", "Time"), "", "00:00:00.000000", Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("TraceModel", "Type"),
     QT_TRANSLATE_NOOP("TraceModel", "BRS: the data went at the higher bit rate. ESI: the sender is error passive."),
     "CAN FD BRS", Qt::AlignLeft, false},
    {QT_TRANSLATE_NOOP("TraceModel", "ID"),
     QT_TRANSLATE_NOOP("TraceModel", "Identifier in hexadecimal. An x behind it marks one of 29 bits."), "00000000x",
     Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("TraceModel", "Length"), QT_TRANSLATE_NOOP("TraceModel", "Number of data bytes"), "Length",
     Qt::AlignRight, true},
    {QT_TRANSLATE_NOOP("TraceModel", "Data"), QT_TRANSLATE_NOOP("TraceModel", "Data bytes in hexadecimal"),
     "00 00 00 00 00 00 00 00 00", Qt::AlignLeft, true},
    {QT_TRANSLATE_NOOP("TraceModel", "CANopen"),
     QT_TRANSLATE_NOOP("TraceModel", "What the frame means if the network speaks CANopen"),
     "Heartbeat, node 100: operational", Qt::AlignLeft, false},
    {QT_TRANSLATE_NOOP("TraceModel", "Note"),
     QT_TRANSLATE_NOOP("TraceModel", "Where the connection began and ended, and other remarks"), "Disconnected",
     Qt::AlignLeft, false},
};

const char *const timeTitles[] = {
    QT_TRANSLATE_NOOP("TraceModel", "Time (ms)"),
    QT_TRANSLATE_NOOP("TraceModel", "Distance (ms)"),
    QT_TRANSLATE_NOOP("TraceModel", "Time of day"),
};

const char *const timeToolTips[] = {
    QT_TRANSLATE_NOOP("TraceModel", "Milliseconds since the first frame of the trace"),
    QT_TRANSLATE_NOOP("TraceModel", "Milliseconds since the frame before"),
    QT_TRANSLATE_NOOP("TraceModel", "Time stamp of the interface"),
};
} // namespace

TraceModel::TraceModel(DatachunkHandler *store, QObject *parent)
    : QAbstractTableModel(parent)
    , m_store(store)
{
}

void TraceModel::refresh()
{
    const unsigned int stored = m_store ? m_store->getMessageCount() : 0;
    const int rows = static_cast<int>(std::min<unsigned int>(stored, std::numeric_limits<int>::max()));
    if (rows < m_rows)
        reset();
    if (rows == m_rows)
        return;
    if (m_rows == 0) {
        CAN::CanRxMessage first;
        m_store->getMessageAtIndex(first, 0);
        m_startMicroseconds = FrameText::microseconds(first.timeStamp);
    }
    beginInsertRows({}, m_rows, rows - 1);
    m_rows = rows;
    endInsertRows();
}

void TraceModel::reset()
{
    beginResetModel();
    m_rows = 0;
    std::fill(std::begin(m_blocks), std::end(m_blocks), Block());
    endResetModel();
}

void TraceModel::setTimeMode(TimeMode mode)
{
    if (mode == m_timeMode)
        return;
    m_timeMode = mode;
    if (m_rows > 0)
        emit dataChanged(index(0, TimeColumn), index(m_rows - 1, TimeColumn));
    emit headerDataChanged(Qt::Horizontal, TimeColumn, TimeColumn);
}

void TraceModel::setMarks(const FrameMarks *marks)
{
    m_marks = marks;
    connect(marks, &FrameMarks::changed, this, [this] {
        if (rowCount() > 0)
            emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1), {FrameRoles::MarkRole});
    });
}

int TraceModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int TraceModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TraceModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row(), index.column());
    case Qt::ToolTipRole:
        return index.column() == NoteColumn ? notesText(index.row()) : QString();
    case FrameRoles::ErrorRole: {
        const CAN::CanRxMessage *frame = frameAt(index.row());
        return frame != nullptr && frame->message.errorFrame;
    }
    case FrameRoles::MarkRole: {
        const CAN::CanRxMessage *frame = frameAt(index.row());
        return frame != nullptr && m_marks != nullptr ? m_marks->colorFor(*frame) : -1;
    }
    case FrameRoles::FrameRole: {
        const CAN::CanRxMessage *frame = frameAt(index.row());
        return frame != nullptr ? QVariant::fromValue(*frame) : QVariant();
    }
    case FrameRoles::ClipboardRole:
        return clipboardText(index.row());
    default:
        return columns[index.column()].cell(role);
    }
}

QVariant TraceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    const bool isTime = section == TimeColumn;
    switch (role) {
    case Qt::DisplayRole:
        return tr(isTime ? timeTitles[m_timeMode] : columns[section].title);
    case Qt::ToolTipRole:
        return tr(isTime ? timeToolTips[m_timeMode] : columns[section].toolTip);
    default:
        return columns[section].header(role);
    }
}

const CAN::CanRxMessage *TraceModel::frameAt(int row) const
{
    const int first = row - row % blockSize;
    for (int block : {m_lastBlock, 1 - m_lastBlock}) {
        const Block &known = m_blocks[block];
        if (known.first == first && row - first < known.frames.size()) {
            m_lastBlock = block;
            return &known.frames[row - first];
        }
    }
    if (!m_store)
        return nullptr;
    // Takes the place of the block that was not used last, but for the last block of the trace, which grows.
    const int place = m_blocks[m_lastBlock].first == first ? m_lastBlock : 1 - m_lastBlock;
    m_lastBlock = place;
    m_blocks[place] = {first, m_store->getMessages(static_cast<unsigned int>(first), blockSize)};
    const QVector<CAN::CanRxMessage> &frames = m_blocks[place].frames;
    // The store may have been cleared behind the model's back.
    return row - first < frames.size() ? &frames[row - first] : nullptr;
}

QString TraceModel::text(int row, int column) const
{
    const CAN::CanRxMessage *frame = frameAt(row);
    if (frame == nullptr)
        return {};
    switch (column) {
    case NumberColumn:
        return QString::number(row + 1LL);
    case TimeColumn:
        return timeText(row, *frame);
    case KindColumn:
        return FrameText::kind(frame->message);
    case IdentifierColumn:
        return frame->message.errorFrame ? QString() : FrameText::identifier(frame->message);
    case LengthColumn:
        return QString::number(frame->message.length);
    case DataColumn:
        return FrameText::data(frame->message);
    case MeaningColumn:
        return CanOpenText::meaning(frame->message);
    case NoteColumn:
        return notesText(row).replace(QLatin1Char('\n'), QLatin1String(", "));
    default:
        return {};
    }
}

QString TraceModel::timeText(int row, const CAN::CanRxMessage &frame) const
{
    if (m_timeMode == TimeOfDay)
        return FrameText::timeOfDay(frame.timeStamp);
    if (m_timeMode == SinceStart)
        return FrameText::milliseconds(sinceStart(frame));
    const qint64 now = FrameText::microseconds(frame.timeStamp);
    const CAN::CanRxMessage *previous = row > 0 ? frameAt(row - 1) : nullptr;
    return previous == nullptr ? QString()
                               : FrameText::milliseconds(now - FrameText::microseconds(previous->timeStamp));
}

QString TraceModel::notesText(int row) const
{
    if (!m_store)
        return {};
    QStringList notes = m_store->messageNotes(static_cast<unsigned int>(row));
    std::transform(notes.cbegin(), notes.cend(), notes.begin(), FrameText::note);
    return notes.join(QLatin1Char('\n'));
}

QString TraceModel::clipboardText(int row) const
{
    const CAN::CanRxMessage *frame = frameAt(row);
    return frame == nullptr ? QString()
                            : FrameText::line(static_cast<quint64>(row) + 1, sinceStart(*frame), frame->message);
}

qint64 TraceModel::sinceStart(const CAN::CanRxMessage &frame) const
{
    return FrameText::microseconds(frame.timeStamp) - m_startMicroseconds;
}
