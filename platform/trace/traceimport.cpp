#include "traceimport.h"

#include <algorithm>

namespace {
constexpr unsigned framesAtOnce = TraceStore::chunkFrames;
/// Whoever cancels waits no longer than for this many bytes.
constexpr quint64 bytesAtOnce = 1U << 20;
/// Notes stay in memory, with so many bytes each beside the text. A file that is made of them must not fill it.
constexpr quint64 noteOverhead = 96;
constexpr quint64 maxNoteBytes = 64U << 20;

constexpr double allOfIt = 100.0;
} // namespace

TraceImport::TraceImport(TraceStore &store, const std::atomic<bool> &cancelled, Listener listener)
    : m_store(store)
    , m_cancelled(cancelled)
    , m_listener(std::move(listener))
{
    m_frames.reserve(framesAtOnce);
}

TraceImport::Result TraceImport::run(QIODevice &device)
{
    CaptureInput input(device);
    const std::unique_ptr<CaptureReader> reader = CaptureReader::make(input);
    if (!reader) {
        m_result.outcome = input.failed() ? ReadFailed : NoCapture;
        return m_result;
    }
    m_sinceProgress.start();
    m_listener.progressed(0.0);
    m_result.outcome = readAll(*reader, input);
    m_result.position = input.position();
    if (!m_result.isGood())
        return m_result;
    if (!m_began)
        begin();
    m_listener.progressed(allOfIt);
    return m_result;
}

TraceImport::Outcome TraceImport::readAll(CaptureReader &reader, CaptureInput &input)
{
    if (reader.isForeign())
        return NotCan;
    CAN::CanRxMessage frame;
    QStringList notes;
    CaptureReader::Step step = CaptureReader::NoPacket;
    for (unsigned steps = 1; step < CaptureReader::End; ++steps) {
        step = reader.next(frame, notes);
        if (step == CaptureReader::Frame)
            take(frame, notes);
        else if (step == CaptureReader::LateNotes)
            takeLate(notes);
        else if (step == CaptureReader::OtherPacket)
            ++m_result.otherPackets;
        if (!isTimeToCheck(input, steps))
            continue;
        if (m_cancelled)
            break;
        flush();
        if (storageFailed())
            return StorageFailed;
        tellProgress(input);
    }
    flush();
    if (storageFailed())
        return StorageFailed;
    if (m_cancelled)
        return Cancelled;
    if (input.failed())
        return ReadFailed;
    if (reader.isForeign())
        return NotCan;
    return step == CaptureReader::End ? Complete : step == CaptureReader::CutOff ? CutOff : Damaged;
}

bool TraceImport::isTimeToCheck(const CaptureInput &input, unsigned steps)
{
    if (steps % framesAtOnce != 0 && input.position() < m_nextCheck)
        return false;
    m_nextCheck = input.position() + bytesAtOnce;
    return true;
}

void TraceImport::take(const CAN::CanRxMessage &frame, QStringList &notes)
{
    if (!notes.isEmpty()) {
        if (hasRoomFor(notes))
            m_notes.push_back({static_cast<unsigned>(m_frames.size()), notes});
        notes.clear();
    }
    m_frames.push_back(frame);
}

void TraceImport::takeLate(QStringList &notes)
{
    // Without a frame before them, they are no late notes.
    const bool hasFrame = m_result.frames > 0 || !m_frames.empty();
    if (hasFrame && hasRoomFor(notes)) {
        flush();
        for (const QString &note : qAsConst(notes))
            m_store.addNoteToLast(note);
    }
    notes.clear();
}

bool TraceImport::hasRoomFor(const QStringList &notes)
{
    quint64 bytes = 0;
    for (const QString &note : notes)
        bytes += static_cast<quint64>(note.size()) * sizeof(QChar) + noteOverhead;
    const bool room = m_noteBytes + bytes <= maxNoteBytes;
    if (room)
        m_noteBytes += bytes;
    else
        m_result.notesLeftOut = true;
    return room;
}

void TraceImport::flush()
{
    if (m_frames.empty())
        return;
    if (!m_began)
        begin();
    const auto count = static_cast<unsigned>(m_frames.size());
    const std::optional<TraceStore::Failure> failure = m_store.append(m_frames.data(), count, m_notes);
    m_result.frames += count;
    m_frames.clear();
    m_notes.clear();
    if (failure)
        m_listener.storageFailed(*failure);
}

void TraceImport::begin()
{
    m_began = true;
    m_listener.begins();
}

bool TraceImport::storageFailed() const
{
    // Before the beginning, the store still holds another trace.
    return m_began && m_store.failure().has_value();
}

void TraceImport::tellProgress(const CaptureInput &input)
{
    if (m_sinceProgress.elapsed() < m_listener.progressInterval)
        return;
    m_sinceProgress.start();
    const double size = std::max<double>(static_cast<double>(input.size()), 1.0);
    m_listener.progressed(std::min(static_cast<double>(input.position()) / size, 1.0) * allOfIt);
}
