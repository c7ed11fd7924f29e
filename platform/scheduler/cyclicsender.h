#pragma once

#include "deadlines.h"

#include "canrecords.h"

#include <QObject>

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

class AbstractCanAdapter;

/// The cyclic frames of a scheduler and the thread that writes them. All functions are safe from any thread but
/// finish(), which belongs to the owner.
///
/// The lock is not held during a write, so that a slow adapter does not hold up the one who adds a frame. Who takes
/// the adapter or a frame away waits for the write that is on its way with it.
class CyclicSender
{
public:
    CyclicSender() = default;
    /// finish() comes first.
    ~CyclicSender() = default;

    /// Ends the use of the adapter and the thread.
    void finish();

    /// The connection by which the adapter tells that it stops. Once somebody cuts it, the adapter is not
    /// touched any more: nothing would tell of its end.
    void setLifeline(const QMetaObject::Connection &lifeline);
    /// From now on frames go to the adapter, if it is running; all frames start anew. Nothing happens if they do already.
    void use(AbstractCanAdapter *adapter);
    /// No frame goes anywhere any more; returns when none is on its way.
    void drop();

    quint32 add(const CAN::CanMessage &message, qint64 period);
    bool change(quint32 handle, const CAN::CanMessage &message, qint64 period);
    bool remove(quint32 handle);
    void removeAll();
    int count() const;

private:
    using Lock = std::unique_lock<std::mutex>;

    void startThread();
    void run();
    void writeDue(Lock &lock, qint64 now);
    template <typename Condition>
    void waitForWriter(Lock &lock, Condition condition);
    bool isOwnThread() const;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;      // something changed for the thread
    std::condition_variable m_writeDone; // m_writing went back to 0
    std::thread m_thread;
    bool m_finishing = false;
    AbstractCanAdapter *m_adapter = nullptr; // set while frames may be written
    QMetaObject::Connection m_lifeline;
    Deadlines m_deadlines;
    std::map<quint32, CAN::CanMessage> m_messages;
    quint32 m_lastHandle = 0;
    quint32 m_writing = 0; // the frame that is on its way, 0 for none

    Q_DISABLE_COPY(CyclicSender)
};
