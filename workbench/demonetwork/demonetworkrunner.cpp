#include "demonetworkrunner.h"

#include "demonetwork.h"
#include "loadgenerator.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <system_error>

namespace {
using Clock = std::chrono::steady_clock;

// Requests that wait for the nodes. A client sends its next after the answer to its last, so that only a flood of
// foreign frames comes near.
constexpr std::size_t mostRequests = 1024;
constexpr quint16 bitrate = 500;    // kBit/s
constexpr quint16 fdBitrate = 2000; // kBit/s

constexpr quint32 noiseSeed = 301;

// All nodes may be silenced, and have no next deadline then.
constexpr qint64 longestWait = 60 * 1000000; // µs

std::unique_ptr<AbstractCanAdapter> makeAdapter()
{
    return std::unique_ptr<AbstractCanAdapter>(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QStringLiteral("Demo 4")));
}
} // namespace

DemoNetworkRunner::DemoNetworkRunner(QObject *parent)
    : DemoNetworkRunner(makeAdapter(), parent)
{
}

DemoNetworkRunner::DemoNetworkRunner(std::unique_ptr<AbstractCanAdapter> adapter, QObject *parent)
    : QObject(parent)
    , m_adapter(std::move(adapter))
{
}

DemoNetworkRunner::~DemoNetworkRunner()
{
    stop();
}

bool DemoNetworkRunner::start(const QString &port)
{
    stop();
    m_errorText.clear();
    if (!m_adapter) {
        m_errorText = tr("The simulated network has no adapter: this program knows no adapters of the type \"Demo\".");
        return false;
    }
    m_sent = m_extraSent = m_lost = m_dropped = 0;
    m_stopRequested = false;
    m_joined = true;
    if (!open(port)) {
        m_errorText = m_adapter->errorText();
        if (m_errorText.isEmpty())
            m_errorText = tr("The simulated network could not join the bus at port \"%1\".").arg(port);
        stop();
        return false;
    }
    m_adapter->setRunning(true);
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        m_errorText = tr("The system gives no thread to the network. Close other programs and try again.");
        m_adapter->close();
        return false;
    }
    return true;
}

bool DemoNetworkRunner::open(const QString &port)
{
    const quint64 session = ++m_session;
    connect(
        m_adapter.get(), &AbstractCanAdapter::newCanMessage, this,
        [this](CAN::CanRxMessage *received) { enqueue(received->message); }, Qt::DirectConnection);
    connect(
        m_adapter.get(), &AbstractCanAdapter::interfaceError, this,
        [this, session] {
            requestStop();
            QMetaObject::invokeMethod(
                this, [this, session] { loseBus(session); }, Qt::QueuedConnection);
        },
        Qt::DirectConnection);

    m_adapter->setCanAdapterOption(AbstractCanAdapter::OptionUseCanFd, true);
    m_adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, port);
    m_adapter->setBitrate(bitrate);
    m_adapter->setFdBitrate(fdBitrate);
    const int result = m_adapter->open();
    return result == AbstractCanAdapter::OpenOk || result == AbstractCanAdapter::OpenOtherSettings;
}

void DemoNetworkRunner::stop()
{
    if (!m_joined)
        return;
    m_joined = false;
    ++m_session;
    requestStop();
    if (m_thread.joinable()) // it is not, if the bus could not be joined
        m_thread.join();
    m_adapter->close();
    disconnect(m_adapter.get(), nullptr, this, nullptr);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.clear();
}

bool DemoNetworkRunner::isRunning() const
{
    return m_joined;
}

QString DemoNetworkRunner::errorText() const
{
    return m_errorText;
}

void DemoNetworkRunner::setExtraLoad(int framesPerSecond)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_extraLoad = std::clamp(framesPerSecond, 0, LoadGenerator::highestRate);
    }
    m_wake.notify_one();
}

quint64 DemoNetworkRunner::framesSent() const
{
    return m_sent;
}

quint64 DemoNetworkRunner::extraFramesSent() const
{
    return m_extraSent;
}

quint64 DemoNetworkRunner::framesLost() const
{
    return m_lost;
}

quint64 DemoNetworkRunner::requestsDropped() const
{
    return m_dropped;
}

void DemoNetworkRunner::run()
{
    const Clock::time_point powerOn = Clock::now();
    const auto now = [powerOn] {
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - powerOn).count();
    };
    DemoNetwork network(noiseSeed);
    LoadGenerator load;
    std::deque<CAN::CanMessage> requests;

    while (!m_stopRequested) {
        m_sent += send(network.advanceTo(now()));
        handleRequests(network, requests);
        requests.clear();
        load.setRate(m_extraLoad, now());
        const quint64 extraSent = send(load.advanceTo(now()));
        m_sent += extraSent;
        m_extraSent += extraSent;

        std::unique_lock<std::mutex> lock(m_mutex);
        const qint64 next = std::min({network.nextDue(), load.nextDue(), now() + longestWait});
        m_wake.wait_until(lock, powerOn + std::chrono::microseconds(next), [this, &load] {
            return m_stopRequested || !m_requests.empty() || m_extraLoad != load.rate();
        });
        requests.swap(m_requests);
    }
}

quint64 DemoNetworkRunner::send(std::vector<CAN::CanMessage> frames)
{
    quint64 sent = 0;
    for (CAN::CanMessage &frame : frames) {
        if (m_stopRequested)
            break;
        if (m_adapter->write(&frame) == AbstractCanAdapter::WriteOk)
            ++sent;
        else
            ++m_lost;
    }
    return sent;
}

void DemoNetworkRunner::handleRequests(DemoNetwork &network, const std::deque<CAN::CanMessage> &requests)
{
    for (const CAN::CanMessage &request : requests)
        m_sent += send(network.handle(request));
}

void DemoNetworkRunner::requestStop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopRequested = true;
    }
    m_wake.notify_one();
}

void DemoNetworkRunner::enqueue(const CAN::CanMessage &message)
{
    if (!DemoNetwork::concerns(message))
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_requests.size() >= mostRequests) {
            ++m_dropped;
            return;
        }
        m_requests.push_back(message);
    }
    m_wake.notify_one();
}

void DemoNetworkRunner::loseBus(quint64 session)
{
    if (session != m_session)
        return;
    QString reason = m_adapter->errorText();
    stop();
    if (reason.isEmpty())
        reason = tr("The simulated network lost the bus. Start it again to rejoin.");
    m_errorText = reason;
    emit stopped(reason);
}
