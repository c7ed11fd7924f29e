#include "tracepieces.h"

#include <algorithm>

namespace {
constexpr unsigned pieceFrames = TraceStore::chunkFrames;
}

TracePieces::TracePieces(const TraceStore &store, unsigned next)
    : m_store(store)
    , m_next(next)
{
}

TracePieces::Outcome TracePieces::encodeNext(unsigned end)
{
    encodeLateNotes();
    if (m_next >= end)
        return Good;
    const QVector<CAN::CanRxMessage> frames = m_store.readRange(m_next, std::min(end - m_next, pieceFrames));
    if (frames.isEmpty())
        return Unreadable;
    const auto count = static_cast<unsigned>(frames.size());
    const std::vector<TraceStore::PlacedNotes> notes = m_store.notesOfRange(m_next, count);
    auto nextNotes = notes.begin();
    m_notesOfLast = 0;
    for (unsigned i = 0; i < count; ++i) {
        const CAN::CanRxMessage &frame = frames.at(static_cast<int>(i));
        if (nextNotes == notes.end() || nextNotes->place != i) {
            m_encoder.addFrame(frame);
            continue;
        }
        m_encoder.addFrame(frame, nextNotes->notes);
        if (i + 1 == count)
            m_notesOfLast = nextNotes->notes.size();
        ++nextNotes;
    }
    m_next += count;
    m_hasLast = true;
    return Good;
}

void TracePieces::restart()
{
    m_next = 0;
    m_hasLast = false;
    m_notesOfLast = 0;
}

void TracePieces::encodeLateNotes()
{
    if (!m_hasLast)
        return;
    // Only the last frame of a trace gets notes, so those before it have all of theirs.
    const QStringList notes = m_store.notes(m_next - 1);
    if (notes.size() == m_notesOfLast)
        return;
    m_encoder.addLateNotes(notes.mid(m_notesOfLast));
    m_notesOfLast = notes.size();
}
