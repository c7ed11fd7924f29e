// The embedded bus between two processes: how many frames a second it carries without losing one, and how long a frame
// takes from one process's write() to the other's newCanMessage().
//
// Beside it, measured in the same way, stand bare loopback TCP connections that carry the same bytes. They get them in the
// same pieces, one frame a call: straight to the other process, and through a thread that only copies what it reads,
// which is the way through a hub without the hub's work. A third gathers whole blocks first: no more is to be had, and
// a frame that waits for its block to fill pays for it.
//
//     bench_tcpbus [seconds a measurement]
//
// The program starts itself anew as the receiving process.

#include "tcpbusadapter.h"
#include "wireformat.h"

#include <QCoreApplication>
#include <QProcess>
#include <QtEndian>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {
constexpr quint32 endId = 0x7FF;
constexpr quint32 ackId = 0x7FE;
constexpr quint64 framesAnAck = 1000;
// As much as may be on its way. The hub would rather disconnect a reader than hold up the sender.
constexpr quint64 window = 50 * framesAnAck;
constexpr int runs = 3;
constexpr qint64 latencyPeriod = 1000000; // ns
constexpr int warmUpFrames = 200;
constexpr int patience = 60000; // ms

qint64 now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

void sleepUntil(qint64 deadline)
{
    const timespec time = {deadline / 1000000000, deadline % 1000000000};
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
}

CAN::CanMessage makeFrame(quint32 id, quint64 value, bool fd = false)
{
    CAN::CanMessage message;
    message.id = id;
    message.fd = message.brs = fd;
    message.length = fd ? 64 : 8;
    qToBigEndian(value, message.data);
    return message;
}

quint64 valueOf(const quint8 *data)
{
    return qFromBigEndian<quint64>(data);
}

std::unique_ptr<TcpBusAdapter> openAdapter(quint16 port)
{
    auto adapter = std::make_unique<TcpBusAdapter>(AbstractCanAdapter::CanAdapterDemo, QString());
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, QString::number(port));
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionUseCanFd, true);
    QObject::connect(
        adapter.get(), &AbstractCanAdapter::interfaceError, adapter.get(),
        [&adapter = *adapter] {
            std::fprintf(stderr, "%s\n", qPrintable(adapter.errorText()));
            std::_Exit(1);
        },
        Qt::DirectConnection);
    if (adapter->open() != AbstractCanAdapter::OpenOk) {
        std::fprintf(stderr, "%s\n", qPrintable(adapter->errorText()));
        std::_Exit(1);
    }
    return adapter;
}

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

FileDescriptor connectTo(quint16 port)
{
    FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address = loopback(port);
    if (::connect(socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        std::_Exit(1);
    return socket;
}

class Listener
{
public:
    Listener()
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof address;
        ::bind(m_socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address);
        ::listen(m_socket.get(), 4);
        ::getsockname(m_socket.get(), reinterpret_cast<sockaddr *>(&address), &size);
        m_port = ntohs(address.sin_port);
    }
    quint16 port() const { return m_port; }
    FileDescriptor accept() const
    {
        FileDescriptor socket(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
        const int on = 1;
        ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        return socket;
    }

private:
    FileDescriptor m_socket;
    quint16 m_port = 0;
};

bool sendAll(const FileDescriptor &socket, const quint8 *bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t sent = ::send(socket.get(), bytes, size, MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

// ---- the receiving process ----

class Peer
{
public:
    /// Counts a frame, or takes its latency. Gives true with every so many frames.
    bool take(const CAN::CanMessage &message)
    {
        if (m_latencies.capacity() == 0 && valueOf(message.data) != m_frames) {
            std::fprintf(stderr, "Frame %llu is missing or out of order.\n", static_cast<unsigned long long>(m_frames));
            std::_Exit(1);
        }
        ++m_frames;
        if (m_frames > warmUpFrames && m_latencies.size() < m_latencies.capacity())
            m_latencies.push_back(now() - qint64(valueOf(message.data)));
        return m_frames % framesAnAck == 0;
    }
    quint64 frames() const { return m_frames; }
    void measureLatency(std::size_t frames) { m_latencies.reserve(frames); }

    /// Frames, and the median, 99th percentile and maximum of the latencies in nanoseconds.
    void report()
    {
        std::sort(m_latencies.begin(), m_latencies.end());
        const auto at = [this](double part) -> qint64 {
            return m_latencies.empty() ? 0 : m_latencies[std::size_t(part * double(m_latencies.size() - 1))];
        };
        std::printf("%llu %lld %lld %lld\n", static_cast<unsigned long long>(m_frames), static_cast<long long>(at(0.5)),
                    static_cast<long long>(at(0.99)), static_cast<long long>(at(1)));
        std::fflush(stdout);
    }

private:
    quint64 m_frames = 0;
    std::vector<qint64> m_latencies;
};

void waitForInputEnd()
{
    while (std::getchar() != EOF) {
    }
}

int runBusPeer(Peer &peer, quint16 port)
{
    const auto adapter = openAdapter(port);
    QObject::connect(
        adapter.get(), &AbstractCanAdapter::newCanMessage, adapter.get(),
        [&](CAN::CanRxMessage *received) {
            if (received->message.id == endId) {
                peer.report();
            } else if (peer.take(received->message)) {
                CAN::CanMessage ack = makeFrame(ackId, peer.frames());
                adapter->write(&ack);
            }
        },
        Qt::DirectConnection);
    adapter->setRunning(true);
    std::puts("ready");
    std::fflush(stdout);
    waitForInputEnd();
    adapter->close();
    return 0;
}

int runTcpPeer(Peer &peer, quint16 port)
{
    const FileDescriptor socket = connectTo(port);
    std::puts("ready");
    std::fflush(stdout);
    StreamDecoder decoder;
    for (;;) {
        const ssize_t received = ::recv(socket.get(), decoder.room(), decoder.roomSize(), 0);
        if (received <= 0)
            break;
        decoder.advance(static_cast<std::size_t>(received));
        CAN::CanMessage message;
        while (decoder.next(message) == StreamDecoder::Status::Frame)
            peer.take(message);
    }
    peer.report();
    waitForInputEnd();
    return 0;
}

int runPeer(const QStringList &arguments)
{
    Peer peer;
    peer.measureLatency(arguments.value(3).toULongLong());
    const quint16 port = arguments.value(2).toUShort();
    return arguments.value(1) == QLatin1String("bus-peer") ? runBusPeer(peer, port) : runTcpPeer(peer, port);
}

// ---- the sending process ----

struct Result
{
    quint64 sent = 0;
    quint64 received = 0;
    quint64 lost = 0;
    double seconds = 0;
    qint64 median = 0;
    qint64 p99 = 0;
    qint64 worst = 0;

    double rate() const { return double(received) / seconds; }
};

class PeerProcess
{
public:
    PeerProcess(const char *kind, quint16 port, quint64 latencies)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(),
                        {QString::fromLatin1(kind), QString::number(port), QString::number(latencies)});
    }
    ~PeerProcess()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished(patience);
    }
    QByteArray line()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(patience)) {
                std::fprintf(stderr, "The receiving process says nothing.\n");
                std::_Exit(1);
            }
        }
        return m_process.readLine();
    }
    void takeReport(Result &result)
    {
        const QList<QByteArray> numbers = line().trimmed().split(' ');
        result.received = numbers.value(0).toULongLong();
        result.median = numbers.value(1).toLongLong();
        result.p99 = numbers.value(2).toLongLong();
        result.worst = numbers.value(3).toLongLong();
    }

private:
    QProcess m_process;
};

/// Something that carries frames to the peer.
class Road
{
public:
    virtual ~Road() = default;
    virtual void send(const CAN::CanMessage &message) = 0;
    /// Waits until everything has arrived, and fetches what the peer found.
    virtual void finish(Result &result) = 0;
};

class BusRoad : public Road
{
public:
    explicit BusRoad(quint64 latencies)
        : m_port(Listener().port())
        , m_adapter(openAdapter(m_port))
        , m_peer("bus-peer", m_port, latencies)
    {
        QObject::connect(
            m_adapter.get(), &AbstractCanAdapter::newCanMessage, m_adapter.get(),
            [this](CAN::CanRxMessage *received) {
                if (received->message.id != ackId)
                    return;
                const std::lock_guard lock(m_mutex);
                m_acknowledged = valueOf(received->message.data);
                m_changed.notify_one();
            },
            Qt::DirectConnection);
        m_adapter->setRunning(true);
        m_peer.line();
    }
    ~BusRoad() override { m_adapter->close(); }

    void send(const CAN::CanMessage &message) override
    {
        if (m_sent % framesAnAck == 0) {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_sent - m_acknowledged < window; });
        }
        write(message);
        ++m_sent;
    }
    void finish(Result &result) override
    {
        write(makeFrame(endId, 0));
        m_peer.takeReport(result);
        if (m_adapter->framesLost() != 0)
            std::fprintf(stderr, "%llu frames lost\n", static_cast<unsigned long long>(m_adapter->framesLost()));
    }

private:
    void write(CAN::CanMessage message) { m_adapter->write(&message); }

    quint16 m_port;
    std::unique_ptr<TcpBusAdapter> m_adapter;
    PeerProcess m_peer;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    quint64 m_acknowledged = 0;
    quint64 m_sent = 0;
};

class TcpRoad : public Road
{
public:
    TcpRoad(quint64 latencies, bool relayed, std::size_t pieceSize)
        : m_pieceSize(pieceSize)
        , m_peer("tcp-peer", m_listener.port(), latencies)
        , m_socket(m_listener.accept())
    {
        m_peer.line();
        sendAll(m_socket, reinterpret_cast<const quint8 *>(WireFormat::greeting), WireFormat::greetingSize);
        if (!relayed)
            return;
        const Listener entry;
        FileDescriptor sender = connectTo(entry.port());
        m_relay = std::thread(&TcpRoad::relay, entry.accept(), std::move(m_socket));
        m_socket = std::move(sender);
    }

    void send(const CAN::CanMessage &message) override
    {
        quint8 bytes[WireFormat::largestFrameSize];
        const std::size_t size = WireFormat::encodeFrame(message, bytes);
        m_piece.insert(m_piece.end(), bytes, bytes + size);
        if (m_piece.size() >= m_pieceSize)
            sendPiece();
    }
    void finish(Result &result) override
    {
        sendPiece();
        m_socket.reset();
        if (m_relay.joinable())
            m_relay.join();
        m_peer.takeReport(result);
    }

private:
    void sendPiece()
    {
        sendAll(m_socket, m_piece.data(), m_piece.size());
        m_piece.clear();
    }

    static void relay(FileDescriptor from, FileDescriptor to)
    {
        std::vector<quint8> block(StreamDecoder::blockSize);
        for (;;) {
            const ssize_t received = ::recv(from.get(), block.data(), block.size(), 0);
            if (received <= 0 || !sendAll(to, block.data(), static_cast<std::size_t>(received)))
                return;
        }
    }

    std::size_t m_pieceSize;
    std::vector<quint8> m_piece;
    Listener m_listener;
    PeerProcess m_peer;
    FileDescriptor m_socket;
    std::thread m_relay;
};

enum class RoadKind { Bus, Tcp, RelayedTcp, RelayedBlocks };

std::unique_ptr<Road> makeRoad(RoadKind kind, quint64 latencies)
{
    if (kind == RoadKind::Bus)
        return std::make_unique<BusRoad>(latencies);
    const std::size_t pieceSize = kind == RoadKind::RelayedBlocks ? StreamDecoder::blockSize : 1;
    return std::make_unique<TcpRoad>(latencies, kind != RoadKind::Tcp, pieceSize);
}

Result measureRate(RoadKind kind, bool fd, double seconds)
{
    constexpr quint64 framesAClockLook = 64;
    Result result;
    const auto road = makeRoad(kind, 0);
    const qint64 start = now();
    const qint64 end = start + qint64(seconds * 1e9);
    while (result.sent % framesAClockLook != 0 || now() < end)
        road->send(makeFrame(0x123, result.sent++, fd));
    road->finish(result);
    result.seconds = double(now() - start) / 1e9;
    return result;
}

Result measureLatency(RoadKind kind, double seconds)
{
    Result result;
    const quint64 frames = warmUpFrames + quint64(seconds * 1e9) / latencyPeriod;
    const auto road = makeRoad(kind, frames - warmUpFrames);
    const qint64 start = now();
    for (; result.sent < frames; ++result.sent) {
        sleepUntil(start + qint64(result.sent) * latencyPeriod);
        road->send(makeFrame(0x123, quint64(now())));
    }
    road->finish(result);
    return result;
}

/// The run in the middle, with the losses of all.
template <typename Measure, typename Value>
Result middleRun(Measure measure, Value value)
{
    std::vector<Result> results;
    quint64 lost = 0;
    for (int run = 0; run < runs; ++run) {
        results.push_back(measure());
        lost += results.back().sent - results.back().received;
    }
    std::sort(results.begin(), results.end(), [&](const Result &a, const Result &b) { return value(a) < value(b); });
    results[runs / 2].lost = lost;
    return results[runs / 2];
}

quint64 printRate(const char *name, RoadKind kind, bool fd, double seconds)
{
    const Result result = middleRun([&] { return measureRate(kind, fd, seconds); },
                                    [](const Result &run) { return run.rate(); });
    std::printf("  %-58s %10.0f %8llu\n", name, result.rate(), static_cast<unsigned long long>(result.lost));
    std::fflush(stdout);
    return result.lost;
}

quint64 printLatency(const char *name, RoadKind kind, double seconds)
{
    const Result result = middleRun([&] { return measureLatency(kind, seconds); },
                                    [](const Result &run) { return double(run.median); });
    std::printf("  %-58s %8.1f %8.1f %8.1f %8llu\n", name, double(result.median) / 1e3, double(result.p99) / 1e3,
                double(result.worst) / 1e3, static_cast<unsigned long long>(result.lost));
    std::fflush(stdout);
    return result.lost;
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1).endsWith(QLatin1String("-peer")))
        return runPeer(arguments);
    const double seconds = arguments.size() > 1 ? std::max(arguments.at(1).toDouble(), 0.1) : 3.0;

    std::printf("Embedded bus between two processes, the hub in the sender's; the middle one of %d runs of %.1f s.\n\n",
                runs, seconds);
    std::printf("  %-58s %10s %8s\n", "sustained rate", "frames/s", "lost");
    quint64 lost = printRate("bus, classic CAN, 8 bytes", RoadKind::Bus, false, seconds);
    lost += printRate("bus, CAN FD, 64 bytes", RoadKind::Bus, true, seconds);
    printRate("baseline, 8 bytes: bare TCP, straight", RoadKind::Tcp, false, seconds);
    printRate("baseline, 8 bytes: bare TCP, through a copying thread", RoadKind::RelayedTcp, false, seconds);
    printRate("baseline, 8 bytes: the same in blocks of 64 KiB", RoadKind::RelayedBlocks, false, seconds);
    printRate("baseline, 64 bytes: bare TCP, through a copying thread", RoadKind::RelayedTcp, true, seconds);
    printRate("baseline, 64 bytes: the same in blocks of 64 KiB", RoadKind::RelayedBlocks, true, seconds);
    std::printf("  %-58s %10s\n", "limit: classic CAN at 1 Mbit/s carries at most about", "21000");
    std::printf("  %-58s %10s\n\n", "limit: CAN FD at 8 Mbit/s carries at most about", "30000");

    std::printf("  %-58s %8s %8s %8s %8s\n", "one-way latency at 1,000 frames/s, in microseconds", "median", "p99",
                "worst", "lost");
    lost += printLatency("bus, classic CAN, 8 bytes", RoadKind::Bus, seconds);
    printLatency("baseline: bare TCP, straight", RoadKind::Tcp, seconds);
    printLatency("baseline: bare TCP, through a copying thread", RoadKind::RelayedTcp, seconds);
    std::printf("  %-58s %8s\n", "limit: an 8-byte frame at 1 Mbit/s is on the wire for about", "111");
    return lost == 0 ? 0 : 1;
}
