#pragma once

#include "capturereader.h"
#include "tracestore.h"

#include <QElapsedTimer>

#include <atomic>
#include <functional>

class QIODevice;

/// Brings the frames and notes of a capture into a store.
class TraceImport
{
public:
    enum Outcome {
        Complete,
        CutOff,  ///< the end of the file is missing; all whole blocks before are there
        Damaged, ///< something in the file makes no sense; all before it is there
        NoCapture,
        NotCan, ///< a capture of something else
        ReadFailed,
        StorageFailed,
        Cancelled,
    };

    struct Result
    {
        Outcome outcome = Complete;
        unsigned frames = 0;
        /// Packets on interfaces for CAN or for others that are no frames, and so were left out.
        quint64 otherPackets = 0;
        bool notesLeftOut = false;
        /// Where in the file it ended.
        quint64 position = 0;

        /// A file that is good up to some place is worth having.
        bool isGood() const { return outcome == Complete || outcome == CutOff || (outcome == Damaged && frames > 0); }
    };

    /// What the import tells while it runs, in its own thread.
    struct Listener
    {
        /// Now the first frame follows, or none will: the time to clear the store. Not called for what is refused.
        std::function<void()> begins;
        /// In per cent: 0, 100, and in between not before the interval has passed.
        std::function<void(double)> progressed;
        qint64 progressInterval = 100; ///< ms
        /// As TraceStore::append() tells it.
        std::function<void(const TraceStore::Failure &)> storageFailed;
    };

    /// @param cancelled may be set at any time, from any thread
    TraceImport(TraceStore &store, const std::atomic<bool> &cancelled, Listener listener);

    Result run(QIODevice &device);

private:
    Outcome readAll(CaptureReader &reader, CaptureInput &input);
    bool isTimeToCheck(const CaptureInput &input, unsigned steps);
    void take(const CAN::CanRxMessage &frame, QStringList &notes);
    void takeLate(QStringList &notes);
    bool hasRoomFor(const QStringList &notes);
    void flush();
    void begin();
    bool storageFailed() const;
    void tellProgress(const CaptureInput &input);

    TraceStore &m_store;
    const std::atomic<bool> &m_cancelled;
    const Listener m_listener;
    Result m_result;
    bool m_began = false;
    quint64 m_nextCheck = 0;
    QElapsedTimer m_sinceProgress;
    /// Frames and notes that wait for the store.
    std::vector<CAN::CanRxMessage> m_frames;
    std::vector<TraceStore::PlacedNotes> m_notes;
    quint64 m_noteBytes = 0;
};
