#include "bushub.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <system_error>

Q_LOGGING_CATEGORY(lcTcpBus, "kestrune.tcpbus")

namespace {
using Clock = std::chrono::steady_clock;

constexpr int eventsAtOnce = 64;
constexpr int noticesKept = 100;
constexpr int listenQueue = 64;
// How long the listener rests when the process has no file descriptors left.
constexpr std::chrono::milliseconds listenPause(100);
// The kernel's part of what waits for a slow reader. Left alone, it grows to several times our own bound.
constexpr int kernelSendBuffer = 256 * 1024;
constexpr std::size_t backlogWorthKeeping = 256 * 1024;

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

sockaddr *plain(sockaddr_in &address)
{
    return reinterpret_cast<sockaddr *>(&address);
}

FileDescriptor listenOn(quint16 port, int &error)
{
    FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    sockaddr_in address = loopback(port);
    // Connections of a hub that is gone rest in the kernel for a minute; they must not keep the next hub from the port.
    if (listener.isValid() && ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0
        && ::bind(listener.get(), plain(address), sizeof address) == 0 && ::listen(listener.get(), listenQueue) == 0)
        return listener;
    error = errno;
    return FileDescriptor();
}

quint16 portOf(const FileDescriptor &socket)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(socket.get(), plain(address), &size);
    return ntohs(address.sin_port);
}

/// The hubs that this process serves. Destroyed at its end, before the category that their threads log to.
class HubRegistry
{
public:
    static HubRegistry &instance()
    {
        lcTcpBus();
        static HubRegistry registry;
        return registry;
    }

    int serve(quint16 port)
    {
        const std::lock_guard lock(m_mutex);
        if (m_hubs.count(port) != 0)
            return 0;
        int error = 0;
        if (std::unique_ptr<BusHub> hub = BusHub::create(port, BusHub::Limits(), error))
            m_hubs.emplace(port, std::move(hub));
        return error;
    }

private:
    std::mutex m_mutex;
    std::map<quint16, std::unique_ptr<BusHub>> m_hubs;
};
} // namespace

struct BusHub::Connection
{
    FileDescriptor socket;
    QString name; ///< for the log
    Clock::time_point greetingDue;
    StreamDecoder decoder;
    std::vector<quint8> backlog; ///< what waits for the reader, from `backlogSent` on
    std::size_t backlogSent = 0;
    bool member = false; ///< it has said its greeting
    bool ended = false;

    std::size_t waiting() const { return backlog.size() - backlogSent; }
};

std::unique_ptr<BusHub> BusHub::create(quint16 port, const Limits &limits, int &error)
{
    error = 0;
    FileDescriptor listener = listenOn(port, error);
    if (!listener.isValid())
        return nullptr;
    const quint16 ownPort = portOf(listener);
    std::unique_ptr<BusHub> hub(new BusHub(std::move(listener), ownPort, limits));
    return hub->start(error) ? std::move(hub) : nullptr;
}

BusHub::BusHub(FileDescriptor listener, quint16 port, const Limits &limits)
    : m_port(port)
    , m_limits(limits)
    , m_listener(std::move(listener))
{
}

BusHub::~BusHub()
{
    if (!m_thread.joinable())
        return;
    ::eventfd_write(m_stop.get(), 1);
    m_thread.join();
}

int BusHub::serveUntilExit(quint16 port)
{
    return HubRegistry::instance().serve(port);
}

QStringList BusHub::notices() const
{
    const std::lock_guard lock(m_noticesMutex);
    return m_notices;
}

bool BusHub::start(int &error)
{
    m_epoll = FileDescriptor(::epoll_create1(EPOLL_CLOEXEC));
    m_stop = FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    epoll_event stop = {};
    stop.events = EPOLLIN;
    stop.data.ptr = &m_stop;
    if (!m_epoll.isValid() || !m_stop.isValid()
        || ::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, m_stop.get(), &stop) != 0) {
        error = errno;
        return false;
    }
    resumeListening();
    try {
        m_thread = std::thread(&BusHub::run, this);
    } catch (const std::system_error &failure) {
        error = failure.code().value();
        return false;
    }
    return true;
}

void BusHub::run()
{
    epoll_event events[eventsAtOnce];
    for (;;) {
        const int count = ::epoll_wait(m_epoll.get(), events, eventsAtOnce, waitTime());
        for (int i = 0; i < count; ++i) {
            if (events[i].data.ptr == &m_stop)
                return;
            if (events[i].data.ptr == &m_listener) {
                acceptAll();
                continue;
            }
            Connection &connection = *static_cast<Connection *>(events[i].data.ptr);
            if ((events[i].events & EPOLLOUT) != 0)
                sendBacklog(connection);
            if ((events[i].events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0)
                receive(connection);
        }
        endOverdue();
        // Not before: an event that was fetched above may still name a connection that ended meanwhile.
        removeEnded();
        if (!m_listening)
            resumeListening();
    }
}

/// In milliseconds, until something is to be done even though no event comes; -1 for never.
int BusHub::waitTime() const
{
    auto wait = m_listening ? std::chrono::milliseconds::max() : listenPause;
    for (const auto &connection : m_connections) {
        if (connection->member)
            continue;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(connection->greetingDue - Clock::now());
        wait = std::min(wait, std::max(left, std::chrono::milliseconds::zero()));
    }
    return wait == std::chrono::milliseconds::max() ? -1 : static_cast<int>(wait.count());
}

void BusHub::acceptAll()
{
    for (;;) {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        FileDescriptor socket(::accept4(m_listener.get(), plain(address), &size, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (socket.isValid()) {
            admit(std::move(socket), QStringLiteral("127.0.0.1:%1").arg(ntohs(address.sin_port)));
            continue;
        }
        // Those that still wait would otherwise wake us without end.
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
            pauseListening();
        if (errno != EINTR && errno != ECONNABORTED)
            return;
    }
}

void BusHub::admit(FileDescriptor socket, const QString &name)
{
    auto connection = std::make_unique<Connection>();
    connection->socket = std::move(socket);
    connection->name = name;
    connection->greetingDue = Clock::now() + m_limits.greetingTime;
    const auto alive = std::count_if(m_connections.begin(), m_connections.end(),
                                     [](const auto &other) { return !other->ended; });
    if (static_cast<std::size_t>(alive) >= m_limits.connections) {
        end(*connection,
            QStringLiteral("The bus already has %1 connections, which is as many as it takes.").arg(alive));
        return;
    }

    const int on = 1;
    const int handle = connection->socket.get();
    ::setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ::setsockopt(handle, SOL_SOCKET, SO_SNDBUF, &kernelSendBuffer, sizeof kernelSendBuffer);
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.ptr = connection.get();
    if (::send(handle, WireFormat::greeting, WireFormat::greetingSize, MSG_NOSIGNAL) == WireFormat::greetingSize
        && ::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, handle, &event) == 0)
        m_connections.push_back(std::move(connection));
}

void BusHub::pauseListening()
{
    ::epoll_ctl(m_epoll.get(), EPOLL_CTL_DEL, m_listener.get(), nullptr);
    m_listening = false;
}

void BusHub::resumeListening()
{
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.ptr = &m_listener;
    m_listening = ::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, m_listener.get(), &event) == 0;
}

void BusHub::receive(Connection &connection)
{
    if (connection.ended)
        return;
    StreamDecoder &decoder = connection.decoder;
    const ssize_t received = ::recv(connection.socket.get(), decoder.room(), decoder.roomSize(), 0);
    if (received > 0) {
        decoder.advance(static_cast<std::size_t>(received));
        takeBytes(connection);
        return;
    }
    if (received < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    // A program that was killed may leave half a frame behind. One that looked in and said nothing did no harm.
    end(connection,
        decoder.pending() == 0 ? QString() : QStringLiteral("The connection broke off in the middle of a frame."));
}

void BusHub::takeBytes(Connection &connection)
{
    StreamDecoder &decoder = connection.decoder;
    const StreamDecoder::Bytes frames = decoder.takeFrames();
    if (!connection.member && decoder.takeGreeting()) {
        connection.member = true;
        ++m_memberCount;
    }
    if (frames.size > 0)
        forward(connection, frames);
    if (decoder.fault() != WireFormat::Fault::None)
        end(connection, QLatin1String(WireFormat::faultSentence(decoder.fault())));
}

/// Whoever has connected gets the traffic, right behind the hub's greeting: a client that has heard that is on the bus,
/// and misses nothing while its own greeting is on the way.
void BusHub::forward(const Connection &sender, StreamDecoder::Bytes bytes)
{
    for (const auto &connection : m_connections) {
        if (connection.get() != &sender && !connection->ended)
            send(*connection, bytes);
    }
}

void BusHub::send(Connection &connection, StreamDecoder::Bytes bytes)
{
    if (connection.waiting() == 0) {
        const ssize_t sent = ::send(connection.socket.get(), bytes.begin, bytes.size, MSG_NOSIGNAL);
        // Other errors show when reading.
        if (sent < 0 && errno != EAGAIN && errno != EINTR)
            return;
        const std::size_t taken = sent < 0 ? 0 : static_cast<std::size_t>(sent);
        bytes.begin += taken;
        bytes.size -= taken;
        if (bytes.size == 0)
            return;
        watch(connection, true);
    }
    if (connection.waiting() + bytes.size > m_limits.backlog) {
        end(connection,
            QStringLiteral("This reader fell more than %1 bytes behind the traffic of the bus.").arg(m_limits.backlog));
        return;
    }
    connection.backlog.insert(connection.backlog.end(), bytes.begin, bytes.begin + bytes.size);
}

void BusHub::sendBacklog(Connection &connection)
{
    if (connection.ended)
        return;
    std::vector<quint8> &backlog = connection.backlog;
    const ssize_t sent = ::send(connection.socket.get(), backlog.data() + connection.backlogSent, connection.waiting(),
                                MSG_NOSIGNAL);
    if (sent < 0)
        return;
    connection.backlogSent += static_cast<std::size_t>(sent);
    if (connection.waiting() == 0) {
        connection.backlogSent = 0;
        backlog.clear();
        if (backlog.capacity() > backlogWorthKeeping)
            backlog.shrink_to_fit();
        watch(connection, false);
    } else if (connection.backlogSent > backlog.size() / 2) {
        backlog.erase(backlog.begin(), backlog.begin() + static_cast<std::ptrdiff_t>(connection.backlogSent));
        connection.backlogSent = 0;
    }
}

void BusHub::watch(Connection &connection, bool writable)
{
    epoll_event event = {};
    event.events = EPOLLIN | (writable ? EPOLLOUT : 0u);
    event.data.ptr = &connection;
    ::epoll_ctl(m_epoll.get(), EPOLL_CTL_MOD, connection.socket.get(), &event);
}

/// @param reason empty if nothing is wrong
void BusHub::end(Connection &connection, const QString &reason)
{
    connection.ended = true;
    connection.socket.reset();
    if (connection.member)
        --m_memberCount;
    if (reason.isEmpty())
        return;
    const QString notice = QStringLiteral("Port %1: the connection of %2 was closed. %3")
                               .arg(QString::number(m_port), connection.name, reason);
    qCWarning(lcTcpBus).noquote() << notice;
    const std::lock_guard lock(m_noticesMutex);
    m_notices.append(notice);
    while (m_notices.size() > noticesKept)
        m_notices.removeFirst();
}

void BusHub::endOverdue()
{
    const Clock::time_point now = Clock::now();
    for (const auto &connection : m_connections) {
        if (!connection->ended && !connection->member && connection->greetingDue <= now)
            end(*connection, QStringLiteral("It said no greeting in time."));
    }
}

void BusHub::removeEnded()
{
    m_connections.erase(std::remove_if(m_connections.begin(), m_connections.end(),
                                       [](const auto &connection) { return connection->ended; }),
                        m_connections.end());
}
