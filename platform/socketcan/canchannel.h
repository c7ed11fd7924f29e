#pragma once

#include "filedescriptor.h"
#include "receptioninfo.h"

#include <linux/can.h>

#include <atomic>
#include <memory>
#include <shared_mutex>
#include <thread>

/// What a CanChannel reports, all of it from its receive thread.
class CanChannelListener
{
public:
    /// @param size bytes of `frame` that came
    virtual void frameArrived(const canfd_frame &frame, std::size_t size, const ReceptionInfo &info) = 0;
    /// So many frames more found the receive buffer full.
    virtual void framesDropped(quint32 frames) = 0;
    /// No frame came for CanChannel::quietTime or up to twice as long, for the first time since the last one or since
    /// the start. True asks for another such call when as much time has passed again.
    virtual bool fellQuiet() = 0;
    /// The link ended, though nobody called CanChannel::stop(); once a link, as the last call.
    /// @param error the system's number
    virtual void linkLost(int error) = 0;

protected:
    ~CanChannelListener() = default;
};

/// Receives from a raw socket on a thread of its own, and sends on the callers' threads.
///
/// Most of what a frame costs is the way into the kernel and back. So there is one for each frame that follows another
/// soon: the thread then waits within the kernel's function that fetches it. When more than some 2,000 a second come in,
/// they gather for gatherTime, and are fetched together. All other frames are handed on at once.
///
/// start() and stop() belong to one thread, which is not the receive thread; the rest may be called from any.
class CanChannel
{
public:
    enum class SendResult { Sent, NotLinked, Refused, Lost };

    static constexpr std::chrono::milliseconds sendTimeout = std::chrono::seconds(1);
    static constexpr std::chrono::milliseconds quietTime{250};
    static constexpr std::chrono::milliseconds gatherTime{1};
    /// How long the thread stays deaf to stop() at the most.
    static constexpr std::chrono::milliseconds flowTime{20};

    /// @param listener outlives the channel
    explicit CanChannel(CanChannelListener &listener);
    ~CanChannel();

    /// @param socket gives and takes one frame a call, and waits for it unless told otherwise
    /// @return false if the system has no threads or descriptors left for it
    bool start(FileDescriptor socket);
    /// Ends the link. Waits for the listener's function that is just running, and for senders, who give up. Harmless
    /// without a link.
    void stop();
    /// True between start() and the link's end.
    bool isLinked() const { return m_linked; }
    /// True within the listener's functions.
    bool isReceiveThread() const { return m_receiverId.load() == std::this_thread::get_id(); }

    /// Waits for room for sendTimeout at most. A link that took nothing for so long counts as stalled: until it takes
    /// something, further frames are lost without a wait.
    SendResult send(const canfd_frame &frame, std::size_t size);

private:
    using Clock = std::chrono::steady_clock;
    struct Batch;
    /// How frames have come in lately.
    enum class Pace { Alone, Flowing, InMasses };

    SendResult sendOnce(const canfd_frame &frame, std::size_t size, int &error) const;
    bool waitForRoom(int error, Clock::time_point deadline) const;
    void fail(int error);
    void receiveLoop();
    int receiveNext(Batch &batch);
    int gatherFrames();
    int waitForFrames();
    int receiveBatch(Batch &batch);
    bool handOn(const Batch &batch, int count);
    void noticeRate(int count, qint64 stamp);
    void noticeDrops(quint32 total);
    void noticeTick();
    void tick(bool on);

    CanChannelListener &m_listener;
    FileDescriptor m_socket;
    FileDescriptor m_wake; // once written to, whoever polls gives up
    FileDescriptor m_timer;
    mutable std::shared_mutex m_useMutex; // shared: the descriptors are in use by a sender
    std::thread m_receiver;
    std::atomic<std::thread::id> m_receiverId{std::thread::id()};
    std::atomic<bool> m_linked{false};
    std::atomic<bool> m_stopping{false};
    std::atomic<bool> m_stalled{false};
    std::atomic<int> m_failure{0}; // the system's number, met in sending
    // Of the receive thread.
    bool m_ticks = false;
    bool m_cameSinceTick = false;
    Pace m_pace = Pace::Alone;
    qint64 m_lastStamp = 0; // ns since 1970
    quint32 m_dropped = 0;
};
