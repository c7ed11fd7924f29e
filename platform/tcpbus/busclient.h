#pragma once

#include "filedescriptor.h"
#include "wireformat.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// A connection on which both sides have said their greeting.
struct BusLink
{
    FileDescriptor socket;
    StreamDecoder decoder;
};

struct ConnectResult
{
    enum Outcome {
        Connected,
        InvalidAddress, ///< not the text of an IP address
        Refused,        ///< nobody listens there
        Unreachable,    ///< nobody answers, or no way leads there
        ClosedAtOnce,   ///< whoever listens there closed the connection before it said anything
        Foreign,        ///< whoever listens there does not speak CAN over TCP
    };

    Outcome outcome;
    BusLink link; ///< with Connected
};

/// Connects and exchanges greetings. Blocks until `deadline` at the latest.
ConnectResult connectToBus(const QString &ipAddress, quint16 port, std::chrono::steady_clock::time_point deadline);

/// What a BusClient reports, from its own threads.
class BusListener
{
public:
    /// A frame came in; on the receive thread.
    virtual void frameArrived(const CAN::CanMessage &message, std::chrono::system_clock::time_point arrival) = 0;
    /// Somebody called BusClient::wake(); on the receive thread.
    virtual void awoken() = 0;
    /// The link ended, though nobody called BusClient::stop(); once a link, on the receive thread, after its last
    /// frame. `fault` says whether the other side broke the rules.
    virtual void linkLost(WireFormat::Fault fault) = 0;
    /// So many frames that send() had taken could not leave any more; on the sender thread.
    virtual void framesUnsent(quint64 frames) = 0;

protected:
    ~BusListener() = default;
};

/// Sends and receives over one link, with a thread for each direction.
///
/// A frame leaves at once, on the caller's thread, as long as frames come one by one. When they come in quick succession
/// they gather while the sender thread is busy, and leave together: one call of the system carries hundreds of them.
///
/// start() and stop() belong to one thread, which is none of the client's own; the rest may be called from any.
class BusClient
{
public:
    enum class SendResult { Sent, NotLinked, Invalid, Lost };

    static constexpr std::chrono::milliseconds sendTimeout = std::chrono::seconds(1);

    /// @param listener outlives the client
    explicit BusClient(BusListener &listener);
    ~BusClient();

    /// False if the system has no threads or descriptors left for it.
    bool start(BusLink link);
    /// Sends what is on its way, within bounds, then ends the link. The listener hears nothing of frames or of a loss
    /// once this is called, and nothing at all after it returned. Harmless without a link.
    void stop();
    /// True between start() and the link's end.
    bool isLinked() const { return m_linked; }

    /// Waits for room for sendTimeout at most. A link that has taken nothing for so long counts as stalled: until it takes
    /// something, further frames are lost without a wait.
    SendResult send(const CAN::CanMessage &message);
    /// Has the listener's awoken() called.
    void wake();
    /// True within the listener's functions that are called on the receive thread.
    bool isReceiveThread() const { return m_receiverId.load() == std::this_thread::get_id(); }

private:
    using Clock = std::chrono::steady_clock;

    SendResult sendEncoded(const quint8 *bytes, std::size_t size);
    bool mayLeaveAtOnce() const;
    bool sendAtOnce(const quint8 *&bytes, std::size_t &size);
    bool waitForRoom(std::unique_lock<std::mutex> &lock, std::size_t size);
    void sendLoop();
    std::size_t flush(const std::vector<quint8> &bytes);
    void receiveLoop();
    bool receiveSome();
    void handOnFrames();
    void drain();
    void lose();

    BusListener &m_listener;
    FileDescriptor m_socket;
    FileDescriptor m_wake;
    std::unique_ptr<StreamDecoder> m_decoder;
    std::thread m_receiver;
    std::atomic<std::thread::id> m_receiverId{std::thread::id()};
    std::thread m_sender;
    std::atomic<bool> m_linked{false};
    std::atomic<bool> m_stopping{false};
    std::atomic<Clock::time_point> m_giveUpAt{Clock::time_point::max()};

    std::mutex m_sendMutex;
    std::condition_variable m_work;
    std::condition_variable m_room;
    std::vector<quint8> m_pending;
    bool m_flushing = false;
    Clock::time_point m_lastSend;
    std::atomic<Clock::time_point> m_lastProgress{Clock::time_point()};
};
