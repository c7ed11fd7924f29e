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
    TraceStore::Rest piece;
    if (m_hasLast)
        piece.notesBefore = m_store.notes(m_next - 1);
    if (m_next < end) {
        piece.frames = m_store.readRange(m_next, std::min(end - m_next, pieceFrames));
        if (piece.frames.isEmpty())
            return Unreadable;
        piece.notes = m_store.notesOfRange(m_next, static_cast<unsigned>(piece.frames.size()));
    }
    encode(piece);
    return Good;
}

void TracePieces::restart()
{
    m_next = 0;
    m_hasLast = false;
    m_notesOfLast = 0;
}

void TracePieces::encodeRestAndRestart(const TraceStore::Rest &rest)
{
    encode(rest);
    restart();
}

void TracePieces::encode(const TraceStore::Rest &part)
{
    // Only the last frame of a trace gets notes, so those before it have all of theirs.
    if (m_hasLast && part.notesBefore.size() > m_notesOfLast) {
        m_encoder.addLateNotes(part.notesBefore.mid(m_notesOfLast));
        m_notesOfLast = part.notesBefore.size();
    }
    const auto count = static_cast<unsigned>(part.frames.size());
    auto notes = part.notes.begin();
    for (unsigned i = 0; i < count; ++i) {
        const bool noted = notes != part.notes.end() && notes->place == i;
        const CAN::CanRxMessage &frame = part.frames[static_cast<int>(i)];
        noted ? m_encoder.addFrame(frame, notes->notes) : m_encoder.addFrame(frame);
        m_notesOfLast = noted ? notes->notes.size() : 0;
        if (noted)
            ++notes;
    }
    m_next += count;
    m_hasLast = m_hasLast || count > 0;
}
