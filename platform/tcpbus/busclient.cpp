#include "busclient.h"

#include <QStringList>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <system_error>

namespace {
using Clock = std::chrono::steady_clock;

// What waits for the sender thread. A link at walking pace still takes it several times within a second.
constexpr std::size_t pendingLimit = 64 * 1024;
constexpr int kernelSendBuffer = 256 * 1024;
// Frames that follow one another faster than the system sends them gain by leaving together.
constexpr std::chrono::microseconds quickSuccession(20);
// How long stop() waits for frames that are on their way out, and then for the other side's end.
constexpr std::chrono::milliseconds flushTime(300);
constexpr std::chrono::milliseconds drainTime(200);
constexpr std::chrono::milliseconds writableCheck(20);

int millisecondsUntil(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<long long>(left.count(), 0));
}

/// True if one of `events` came in time, or an error that the next operation will show.
bool waitFor(const FileDescriptor &socket, short events, Clock::time_point deadline)
{
    for (;;) {
        pollfd poll = {socket.get(), events, 0};
        const int result = ::poll(&poll, 1, millisecondsUntil(deadline));
        if (result >= 0 || errno != EINTR)
            return result > 0;
    }
}

struct Address
{
    sockaddr_storage storage = {};
    socklen_t size = 0;

    sockaddr *plain() { return reinterpret_cast<sockaddr *>(&storage); }
};

/// Four decimal numbers. The system's own functions would take leading zeros for octal.
bool parseIpv4(const QString &text, quint32 &number)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    number = 0;
    for (const QString &part : parts) {
        bool isNumber = false;
        const uint value = part.toUInt(&isNumber);
        if (!isNumber || value > 255 || !part.at(0).isDigit())
            return false;
        number = number << 8 | value;
    }
    return parts.size() == 4;
}

bool parseAddress(const QString &ipAddress, quint16 port, Address &address)
{
    quint32 ipv4 = 0;
    if (parseIpv4(ipAddress, ipv4)) {
        auto *internet = reinterpret_cast<sockaddr_in *>(&address.storage);
        internet->sin_family = AF_INET;
        internet->sin_port = htons(port);
        internet->sin_addr.s_addr = htonl(ipv4);
        address.size = sizeof *internet;
        return true;
    }
    auto *internet6 = reinterpret_cast<sockaddr_in6 *>(&address.storage);
    internet6->sin6_family = AF_INET6;
    internet6->sin6_port = htons(port);
    address.size = sizeof *internet6;
    return ::inet_pton(AF_INET6, ipAddress.toLatin1().constData(), &internet6->sin6_addr) == 1;
}

/// Connecting to a free port of the range that the system draws its own ports from may, rarely, draw just that port:
/// then the socket is connected to itself.
bool isConnectedToItself(const FileDescriptor &socket)
{
    Address own;
    Address peer;
    own.size = peer.size = sizeof own.storage;
    return ::getsockname(socket.get(), own.plain(), &own.size) == 0
        && ::getpeername(socket.get(), peer.plain(), &peer.size) == 0 && own.size == peer.size
        && std::memcmp(&own.storage, &peer.storage, own.size) == 0;
}

/// 0, or the system's error number.
int connectSocket(const FileDescriptor &socket, Address address, Clock::time_point deadline)
{
    if (::connect(socket.get(), address.plain(), address.size) != 0) {
        if (errno != EINPROGRESS && errno != EINTR)
            return errno;
        if (!waitFor(socket, POLLOUT, deadline))
            return ETIMEDOUT;
        int error = 0;
        socklen_t size = sizeof error;
        if (::getsockopt(socket.get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0)
            return error != 0 ? error : errno;
    }
    return isConnectedToItself(socket) ? ECONNREFUSED : 0;
}

/// A peer that lost its power or its cable says nothing: the system has to ask and to give up.
void tune(const FileDescriptor &socket)
{
    struct Option
    {
        int level;
        int name;
        int value;
    };
    constexpr Option options[] = {
        {IPPROTO_TCP, TCP_NODELAY, 1},          {SOL_SOCKET, SO_SNDBUF, kernelSendBuffer},
        {SOL_SOCKET, SO_KEEPALIVE, 1},          {IPPROTO_TCP, TCP_KEEPIDLE, 5},
        {IPPROTO_TCP, TCP_KEEPINTVL, 2},        {IPPROTO_TCP, TCP_KEEPCNT, 3},
        {IPPROTO_TCP, TCP_USER_TIMEOUT, 30000},
    };
    for (const Option &option : options)
        ::setsockopt(socket.get(), option.level, option.name, &option.value, sizeof option.value);
}

ConnectResult::Outcome exchangeGreetings(BusLink &link, Clock::time_point deadline)
{
    // A fresh socket has room for it.
    if (::send(link.socket.get(), WireFormat::greeting, WireFormat::greetingSize, MSG_NOSIGNAL)
        != WireFormat::greetingSize)
        return ConnectResult::ClosedAtOnce;
    while (!link.decoder.takeGreeting()) {
        if (link.decoder.fault() != WireFormat::Fault::None || !waitFor(link.socket, POLLIN, deadline))
            return ConnectResult::Foreign;
        const ssize_t received = ::recv(link.socket.get(), link.decoder.room(), link.decoder.roomSize(), 0);
        if (received < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (received <= 0)
            return link.decoder.pending() == 0 ? ConnectResult::ClosedAtOnce : ConnectResult::Foreign;
        link.decoder.advance(static_cast<std::size_t>(received));
    }
    return ConnectResult::Connected;
}
} // namespace

ConnectResult connectToBus(const QString &ipAddress, quint16 port, Clock::time_point deadline)
{
    Address address;
    if (!parseAddress(ipAddress, port, address))
        return {ConnectResult::InvalidAddress, {}};
    ConnectResult result = {ConnectResult::Unreachable, {}};
    result.link.socket = FileDescriptor(
        ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!result.link.socket.isValid())
        return result;
    tune(result.link.socket);
    const int error = connectSocket(result.link.socket, address, deadline);
    if (error == ECONNREFUSED)
        result.outcome = ConnectResult::Refused;
    else if (error == 0)
        result.outcome = exchangeGreetings(result.link, deadline);
    return result;
}

BusClient::BusClient(BusListener &listener)
    : m_listener(listener)
{
}

BusClient::~BusClient()
{
    stop();
}

bool BusClient::start(BusLink link)
{
    stop();
    m_socket = std::move(link.socket);
    m_decoder = std::make_unique<StreamDecoder>(std::move(link.decoder));
    m_wake = FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_wake.isValid())
        return false;
    m_stopping = false;
    m_giveUpAt = Clock::time_point::max();
    {
        const std::lock_guard lock(m_sendMutex);
        m_pending.clear();
        m_pending.reserve(pendingLimit);
        m_linked = true;
    }
    try {
        m_receiver = std::thread(&BusClient::receiveLoop, this);
        m_sender = std::thread(&BusClient::sendLoop, this);
    } catch (const std::system_error &) {
        stop();
        m_linked = false;
        return false;
    }
    return true;
}

void BusClient::stop()
{
    if (!m_receiver.joinable())
        return;
    {
        const std::lock_guard lock(m_sendMutex);
        m_stopping = true;
        m_linked = false;
        m_giveUpAt = Clock::now() + flushTime;
    }
    m_work.notify_all();
    m_room.notify_all();
    if (m_sender.joinable())
        m_sender.join();

    // Closing a socket with unread bytes would throw away what the other side has not fetched yet. So the end is said
    // first, and then read for.
    ::shutdown(m_socket.get(), SHUT_WR);
    m_giveUpAt = Clock::now() + drainTime;
    ::eventfd_write(m_wake.get(), 1);
    m_receiver.join();

    const std::lock_guard lock(m_sendMutex);
    m_socket.reset();
    m_wake.reset();
    m_decoder.reset();
}

BusClient::SendResult BusClient::send(const CAN::CanMessage &message)
{
    quint8 bytes[WireFormat::largestFrameSize];
    const std::size_t size = WireFormat::encodeFrame(message, bytes);
    return size == 0 ? SendResult::Invalid : sendEncoded(bytes, size);
}

void BusClient::wake()
{
    const std::lock_guard lock(m_sendMutex);
    if (m_linked)
        ::eventfd_write(m_wake.get(), 1);
}

BusClient::SendResult BusClient::sendEncoded(const quint8 *bytes, std::size_t size)
{
    std::unique_lock lock(m_sendMutex);
    if (!m_linked)
        return SendResult::NotLinked;
    if (mayLeaveAtOnce()) {
        if (!sendAtOnce(bytes, size))
            return SendResult::Lost;
        if (size == 0)
            return SendResult::Sent;
    } else if (!waitForRoom(lock, size)) {
        return SendResult::Lost;
    }
    const bool senderSleeps = m_pending.empty() && !m_flushing;
    m_pending.insert(m_pending.end(), bytes, bytes + size);
    lock.unlock();
    if (senderSleeps)
        m_work.notify_one();
    return SendResult::Sent;
}

bool BusClient::mayLeaveAtOnce() const
{
    return m_pending.empty() && !m_flushing && Clock::now() - m_lastSend > quickSuccession;
}

/// Leaves what the system did not take in `bytes` and `size`. False if the link is broken.
bool BusClient::sendAtOnce(const quint8 *&bytes, std::size_t &size)
{
    const ssize_t sent = ::send(m_socket.get(), bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent < 0 && errno != EAGAIN && errno != EINTR)
        return false;
    m_lastSend = Clock::now();
    m_lastProgress = m_lastSend;
    const std::size_t taken = sent < 0 ? 0 : static_cast<std::size_t>(sent);
    bytes += taken;
    size -= taken;
    return true;
}

bool BusClient::waitForRoom(std::unique_lock<std::mutex> &lock, std::size_t size)
{
    const auto hasRoom = [&] { return m_pending.size() + size <= pendingLimit; };
    if (hasRoom())
        return true;
    if (Clock::now() - m_lastProgress.load() > sendTimeout)
        return false;
    m_room.wait_for(lock, sendTimeout, [&] { return !m_linked || hasRoom(); });
    return m_linked && hasRoom();
}

void BusClient::sendLoop()
{
    std::vector<quint8> outgoing;
    outgoing.reserve(pendingLimit);
    quint64 unsent = 0;
    std::unique_lock lock(m_sendMutex);
    for (;;) {
        m_work.wait(lock, [this] { return !m_pending.empty() || !m_linked; });
        if (m_pending.empty())
            break;
        outgoing.clear();
        outgoing.swap(m_pending);
        m_flushing = true;
        m_lastProgress = Clock::now();
        lock.unlock();
        m_room.notify_all();
        const std::size_t sent = flush(outgoing);
        if (sent < outgoing.size())
            unsent += WireFormat::countWholeFrames(outgoing.data(), outgoing.size())
                - WireFormat::countWholeFrames(outgoing.data(), sent);
        lock.lock();
        m_flushing = false;
        m_lastSend = Clock::now();
    }
    lock.unlock();
    if (unsent > 0)
        m_listener.framesUnsent(unsent);
}

/// @return how many of the bytes left
std::size_t BusClient::flush(const std::vector<quint8> &bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t taken = ::send(m_socket.get(), bytes.data() + sent, bytes.size() - sent,
                                     MSG_DONTWAIT | MSG_NOSIGNAL);
        if (taken > 0) {
            sent += static_cast<std::size_t>(taken);
            m_lastProgress = Clock::now();
            continue;
        }
        if (taken < 0 && errno != EAGAIN && errno != EINTR)
            break;
        if (Clock::now() >= m_giveUpAt.load())
            break;
        waitFor(m_socket, POLLOUT, Clock::now() + writableCheck);
    }
    return sent;
}

void BusClient::receiveLoop()
{
    m_receiverId = std::this_thread::get_id();
    handOnFrames(); // what came right behind the greeting
    while (!m_stopping && m_decoder->fault() == WireFormat::Fault::None && receiveSome()) {
    }
    if (m_stopping)
        drain();
    else
        lose();
    m_receiverId = std::thread::id();
}

/// False if the link ended.
bool BusClient::receiveSome()
{
    pollfd polls[] = {{m_socket.get(), POLLIN, 0}, {m_wake.get(), POLLIN, 0}};
    if (::poll(polls, std::size(polls), -1) < 0)
        return errno == EINTR;
    if (polls[1].revents != 0) {
        eventfd_t count = 0;
        ::eventfd_read(m_wake.get(), &count);
        if (!m_stopping)
            m_listener.awoken();
    }
    if (polls[0].revents == 0)
        return true;
    const ssize_t received = ::recv(m_socket.get(), m_decoder->room(), m_decoder->roomSize(), MSG_DONTWAIT);
    if (received <= 0)
        return received < 0 && (errno == EAGAIN || errno == EINTR);
    m_decoder->advance(static_cast<std::size_t>(received));
    handOnFrames();
    return true;
}

void BusClient::handOnFrames()
{
    const auto arrival = std::chrono::system_clock::now();
    CAN::CanMessage message;
    while (!m_stopping && m_decoder->next(message) == StreamDecoder::Status::Frame)
        m_listener.frameArrived(message, arrival);
}

/// Reads on without looking until the other side has ended too.
void BusClient::drain()
{
    quint8 ignored[4096];
    while (Clock::now() < m_giveUpAt.load()) {
        if (!waitFor(m_socket, POLLIN, Clock::now() + writableCheck))
            continue;
        const ssize_t received = ::recv(m_socket.get(), ignored, sizeof ignored, MSG_DONTWAIT);
        if (received == 0 || (received < 0 && errno != EAGAIN && errno != EINTR))
            return;
    }
}

void BusClient::lose()
{
    {
        const std::lock_guard lock(m_sendMutex);
        m_linked = false;
    }
    // Sends and waits of other threads fail from here on, and at once.
    ::shutdown(m_socket.get(), SHUT_RDWR);
    m_work.notify_all();
    m_room.notify_all();
    if (!m_stopping)
        m_listener.linkLost(m_decoder->fault());
}
