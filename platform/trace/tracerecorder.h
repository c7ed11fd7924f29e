#pragma once

#include "tracepieces.h"

#include <atomic>
#include <functional>
#include <thread>

/// Writes the frames of a trace into a file while they come, on a thread of its own: who appends never waits for the
/// disk on its account. What waits to be written waits in the trace.
///
/// All functions are safe from any thread but the recorder's own, from which `failed` is called.
class TraceRecorder
{
public:
    /// Why a recording has ended by itself.
    struct Failure
    {
        enum Kind { WriteFailed, TraceUnreadable };
        Kind kind;
        int error = 0; ///< the system's number, where it gave one
        QString fileName;
    };

    /// @param store must outlive the recorder
    TraceRecorder(TraceStore &store, std::function<void(const Failure &)> failed);
    ~TraceRecorder();

    /// Begins with the next frame that is appended. What stood in the file is gone. Ends another recording first.
    /// 0, or the system's error number.
    int start(const QString &fileName);
    /// Returns when all frames that were there at the call are in the file.
    void stop();
    bool isRunning() const { return m_running; }

    /// Clears the store when all of its frames are in the file; the recording goes on with those that follow.
    void clearStore();

private:
    using Lock = std::unique_lock<std::mutex>;

    int open(const QString &fileName);
    void run();
    void catchUp();
    bool write();
    void fail(Failure::Kind kind, int error);
    void close();
    void end();

    TraceStore &m_store;
    const std::function<void(const Failure &)> m_failed;

    /// One start or stop at a time.
    std::mutex m_control;
    std::thread m_thread;
    std::atomic<std::thread::id> m_threadId;
    std::atomic<bool> m_running = false;

    /// For all below.
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping = false;
    QString m_fileName;
    int m_descriptor = -1;
    /// Size of the whole blocks in the file.
    qint64 m_fileBytes = 0;
    std::optional<TracePieces> m_pieces;
    std::optional<Failure> m_failure;

    Q_DISABLE_COPY(TraceRecorder)
};
