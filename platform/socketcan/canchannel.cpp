#include "canchannel.h"

#include "cansocket.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <mutex>
#include <system_error>

namespace {
// Enough that a flood costs few calls of the system, and small enough to stay in the cache.
constexpr int batchSize = 128;
// Frames that come closer than this, in ns, come in masses.
constexpr qint64 massDistance = 500000;
constexpr qint64 flowDistance = std::chrono::nanoseconds(CanChannel::flowTime).count();
// The queue of a link that is full says nothing when it has room again.
constexpr std::chrono::microseconds fullQueuePause(500);
constexpr short ends = POLLHUP | POLLNVAL;

bool isTransient(int error)
{
    return error == EAGAIN || error == EINTR || error == ENOBUFS || error == ENOMEM;
}

bool meansLinkIsGone(int error)
{
    return error == ENETDOWN || error == ENXIO || error == ENODEV || error == EPIPE || error == ECONNRESET
        || error == ECONNREFUSED || error == ENOTCONN;
}

timespec toTimespec(std::chrono::nanoseconds time)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return {static_cast<time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
}
} // namespace

struct CanChannel::Batch
{
    Batch()
    {
        for (int i = 0; i < batchSize; ++i) {
            blocks[i] = {&frames[i], sizeof frames[i]};
            headers[i].msg_hdr.msg_iov = &blocks[i];
            headers[i].msg_hdr.msg_iovlen = 1;
            headers[i].msg_hdr.msg_control = controls[i];
            headers[i].msg_hdr.msg_controllen = sizeof controls[i];
        }
    }

    canfd_frame frames[batchSize] = {};
    iovec blocks[batchSize] = {};
    mmsghdr headers[batchSize] = {};
    alignas(cmsghdr) char controls[batchSize][ReceptionInfo::controlSize] = {};
};

CanChannel::CanChannel(CanChannelListener &listener)
    : m_listener(listener)
{
}

CanChannel::~CanChannel()
{
    stop();
}

bool CanChannel::start(FileDescriptor socket)
{
    stop();
    m_socket = std::move(socket);
    m_wake = FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    m_timer = FileDescriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!m_wake.isValid() || !m_timer.isValid())
        return false;
    m_stopping = false;
    m_stalled = false;
    m_failure = 0;
    m_pace = Pace::Alone;
    m_lastStamp = 0;
    m_dropped = 0;
    const timeval limit = {0, std::chrono::microseconds(flowTime).count()};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    tick(true);
    m_linked = true;
    try {
        m_receiver = std::thread(&CanChannel::receiveLoop, this);
    } catch (const std::system_error &) {
        m_linked = false;
        return false;
    }
    return true;
}

void CanChannel::stop()
{
    if (!m_receiver.joinable())
        return;
    m_stopping = true;
    m_linked = false;
    ::eventfd_write(m_wake.get(), 1);
    m_receiver.join();
    const std::lock_guard lock(m_useMutex);
    m_socket.reset();
    m_wake.reset();
    m_timer.reset();
}

CanChannel::SendResult CanChannel::send(const canfd_frame &frame, std::size_t size)
{
    // Asked before the lock too, so that a crowd of senders cannot keep stop() from its own.
    if (!m_linked)
        return SendResult::NotLinked;
    const std::shared_lock lock(m_useMutex);
    int error = 0;
    SendResult result = sendOnce(frame, size, error);
    if (result == SendResult::Lost && !m_stalled) {
        const Clock::time_point deadline = Clock::now() + sendTimeout;
        while (result == SendResult::Lost && waitForRoom(error, deadline))
            result = sendOnce(frame, size, error);
    }
    if (result == SendResult::NotLinked)
        fail(error);
    else if (result != SendResult::Refused)
        m_stalled = result == SendResult::Lost && m_linked;
    return result;
}

/// Lost: not now. `error` is then EAGAIN if the socket is full, and ENOBUFS if the link's queue is.
CanChannel::SendResult CanChannel::sendOnce(const canfd_frame &frame, std::size_t size, int &error) const
{
    if (!m_linked)
        return SendResult::NotLinked;
    if (::send(m_socket.get(), &frame, size, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0)
        return SendResult::Sent;
    error = errno;
    if (isTransient(error))
        return SendResult::Lost;
    return meansLinkIsGone(error) ? SendResult::NotLinked : SendResult::Refused;
}

/// False if time is up or the link has ended.
bool CanChannel::waitForRoom(int error, Clock::time_point deadline) const
{
    using std::chrono::nanoseconds;
    const nanoseconds left = deadline - Clock::now();
    if (left <= nanoseconds::zero())
        return false;
    const bool socketTells = error == EAGAIN;
    const timespec time = toTimespec(socketTells ? left : std::min<nanoseconds>(left, fullQueuePause));
    pollfd polls[] = {{m_wake.get(), POLLIN, 0}, {m_socket.get(), POLLOUT, 0}};
    ::ppoll(polls, socketTells ? 2 : 1, &time, nullptr);
    return polls[0].revents == 0;
}

/// The receive thread is the one that tells.
void CanChannel::fail(int error)
{
    int none = 0;
    if (error != 0 && m_linked && m_failure.compare_exchange_strong(none, error))
        ::eventfd_write(m_wake.get(), 1);
}

void CanChannel::receiveLoop()
{
    m_receiverId = std::this_thread::get_id();
    const auto batch = std::make_unique<Batch>();
    int error = 0;
    while (error == 0 && !m_stopping)
        error = receiveNext(*batch);
    noticeDrops(droppedFrames(m_socket, m_dropped));
    if (!m_stopping.load()) {
        m_linked = false;
        ::eventfd_write(m_wake.get(), 1);
        m_listener.linkLost(error);
    }
    m_receiverId = std::thread::id();
}

/// @return what ended the link, or 0
int CanChannel::receiveNext(Batch &batch)
{
    int error = m_failure;
    if (m_pace == Pace::Alone)
        error = waitForFrames();
    else if (m_pace == Pace::InMasses)
        error = gatherFrames();
    return error != 0 ? error : receiveBatch(batch);
}

/// @return what ended the link, or 0
int CanChannel::gatherFrames()
{
    pollfd wake = {m_wake.get(), POLLIN, 0};
    const timespec time = toTimespec(gatherTime);
    return ::ppoll(&wake, 1, &time, nullptr) > 0 ? m_failure.load() : 0;
}

/// @return what ended the link, or 0
int CanChannel::waitForFrames()
{
    pollfd polls[] = {{m_socket.get(), POLLIN, 0}, {m_wake.get(), POLLIN, 0}, {m_timer.get(), POLLIN, 0}};
    if (::poll(polls, std::size(polls), -1) < 0)
        return 0;
    if (polls[1].revents != 0)
        return m_failure;
    if (polls[2].revents != 0)
        noticeTick();
    // What came before the end is still read.
    return (polls[0].revents & ends) != 0 && (polls[0].revents & POLLIN) == 0 ? ENODEV : 0;
}

/// @return what ended the link, or 0
int CanChannel::receiveBatch(Batch &batch)
{
    const int wait = m_pace == Pace::Flowing ? MSG_WAITFORONE : MSG_DONTWAIT;
    const int count = ::recvmmsg(m_socket.get(), batch.headers, batchSize, wait, nullptr);
    if (count < 0) {
        m_pace = m_pace == Pace::InMasses ? Pace::Flowing : Pace::Alone;
        return isTransient(errno) ? 0 : errno;
    }
    m_cameSinceTick = true;
    if (!m_ticks)
        tick(true);
    const bool ended = !handOn(batch, count);
    for (int i = 0; i < count; ++i)
        batch.headers[i].msg_hdr.msg_controllen = sizeof batch.controls[i];
    return ended ? ENODEV : 0;
}

/// False if the end of the link is among what came.
bool CanChannel::handOn(const Batch &batch, int count)
{
    for (int i = 0; i < count && !m_stopping; ++i) {
        const mmsghdr &header = batch.headers[i];
        // A frame is never empty; sockets that know their end say it so, again and again.
        if (header.msg_len == 0)
            return false;
        const ReceptionInfo info = readReceptionInfo(header.msg_hdr);
        if (info.dropped)
            noticeDrops(*info.dropped);
        m_listener.frameArrived(batch.frames[i], header.msg_len, info);
        if (i == count - 1)
            noticeRate(count, info.systemTime);
    }
    return true;
}

/// @param stamp of the last of the frames that were read together; 0 if it has none
void CanChannel::noticeRate(int count, qint64 stamp)
{
    const qint64 passed = stamp - std::exchange(m_lastStamp, stamp);
    if (stamp != 0 && passed >= 0 && passed < count * massDistance)
        m_pace = Pace::InMasses;
    else
        m_pace = passed < flowDistance ? Pace::Flowing : Pace::Alone;
}

void CanChannel::noticeDrops(quint32 total)
{
    // Frames that waited in the queue tell a count of the time before, the counter itself being asked in between.
    const auto more = static_cast<qint32>(total - m_dropped);
    if (more <= 0)
        return;
    m_dropped = total;
    m_listener.framesDropped(static_cast<quint32>(more));
}

/// Ticks go on from the first frame to the first time of quiet, rather than being put off by every frame: that is
/// done without a call of the system.
void CanChannel::noticeTick()
{
    quint64 ticks = 0;
    if (::read(m_timer.get(), &ticks, sizeof ticks) != sizeof ticks || std::exchange(m_cameSinceTick, false))
        return;
    noticeDrops(droppedFrames(m_socket, m_dropped));
    if (!m_listener.fellQuiet())
        tick(false);
}

void CanChannel::tick(bool on)
{
    m_ticks = on;
    m_cameSinceTick = false;
    const timespec time = toTimespec(on ? quietTime : quietTime.zero());
    const itimerspec period = {time, time};
    ::timerfd_settime(m_timer.get(), 0, &period, nullptr);
}
