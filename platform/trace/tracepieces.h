#pragma once

#include "traceencoder.h"
#include "tracestore.h"

/// Goes along a trace and encodes it piece by piece, with the notes that come for a frame after it was encoded.
class TracePieces
{
public:
    enum Outcome { Good, Unreadable };

    /// @param next the first frame to encode
    TracePieces(const TraceStore &store, unsigned next);

    /// Encodes some of the frames before `end`, as many as make a piece; bytes() has them then.
    Outcome encodeNext(unsigned end);
    /// The first frame that is not encoded yet.
    unsigned next() const { return m_next; }
    /// The trace was cleared, without its rest or with it: goes on with the first frame of the new one.
    void restart();
    void encodeRestAndRestart(const TraceStore::Rest &rest);

    /// The blocks since the last clearBytes().
    const QByteArray &bytes() const { return m_encoder.bytes(); }
    void clearBytes() { m_encoder.clear(); }

private:
    void encode(const TraceStore::Rest &part);

    const TraceStore &m_store;
    TraceEncoder m_encoder;
    unsigned m_next;
    /// Whether the frame before the next one was encoded here, and how many of its notes.
    bool m_hasLast = false;
    int m_notesOfLast = 0;
};
