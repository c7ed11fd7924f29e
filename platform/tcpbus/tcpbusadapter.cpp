#include "tcpbusadapter.h"

#include "bushub.h"
#include "tcpbusfamilies.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
using Clock = std::chrono::steady_clock;

const QLatin1String loopbackAddress("127.0.0.1");

constexpr std::chrono::milliseconds embeddedBusTimeout(2000);
// Between two attempts while the port changes hands, which takes another process microseconds.
constexpr std::chrono::milliseconds attemptPause(10);
// The form hides the time-out of network adapters, and its hidden field says 1 ms. open() holds up the user interface.
constexpr int shortestConnectTimeout = 1000;
constexpr int longestConnectTimeout = 10000;
constexpr int defaultConnectTimeout = 3000;
constexpr int defaultBitrate = 500;
constexpr int defaultFdBitrate = 2000;
constexpr std::size_t echoLimit = 16 * 1024;

CAN::CANBitrateDesc entryOf(const QList<CAN::CANBitrateDesc> &list, int bitrate)
{
    const auto entry = std::find_if(list.begin(), list.end(),
                                    [bitrate](const auto &e) { return e.bitrate == bitrate; });
    return entry == list.end() ? CAN::CANBitrateDesc() : *entry;
}

CanTimeStamp stampOf(std::chrono::system_clock::time_point time)
{
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
    return {static_cast<qint32>(sinceEpoch / 1000000), static_cast<qint32>(sinceEpoch % 1000000)};
}
} // namespace

TcpBusAdapter::TcpBusAdapter(CanAdapterType type, const QString &device, QObject *parent)
    : AbstractCanAdapter(type, device, parent)
    , m_embedded(type == CanAdapterDemo)
    , m_client(*this)
{
    setCanAdapterOption(OptionUseCanFd, false);
    setCanAdapterOption(OptionDeviceData, tcpBusFeatures);
    setCanAdapterOption(OptionPort, QString::number(defaultPort));
    setCanAdapterOption(OptionListenOnly, false);
    setCanAdapterOption(OptionDescription, QString());
    setCanAdapterOption(OptionLinkedAdapter, 0u);
    setCanAdapterOption(OptionClassicBusParameter, QVariant::fromValue(CAN::CANClassicBusParameter()));
    setCanAdapterOption(OptionFdBusParameter, QVariant::fromValue(CAN::CANFDBusParameter()));
    setCanAdapterOption(OptionBitrate, QVariant::fromValue(entryOf(tcpBusBitrates(false), defaultBitrate)));
    setCanAdapterOption(OptionFdBitrate, QVariant::fromValue(entryOf(tcpBusFdBitrates(), defaultFdBitrate)));
    setCanAdapterOption(OptionForcedEcho, false);
    if (!m_embedded) {
        setCanAdapterOption(OptionIpAddress, QString(loopbackAddress));
        setCanAdapterOption(OptionConnectTimeout, defaultConnectTimeout);
    }
}

TcpBusAdapter::~TcpBusAdapter()
{
    m_client.stop();
    setRunningState(false);
}

int TcpBusAdapter::open()
{
    if (m_client.isLinked() && !m_closesLater)
        return OpenOk;
    close();
    resetCounters();
    setErrorText({});
    if (!readPort()) {
        return refuse(OpenInvalidDevice,
                      tr("\"%1\" is no port. Enter a number from 1 to 65535 in the interface settings.")
                          .arg(getCanAdapterOption(OptionPort).toString()));
    }
    readSettings();
    return m_embedded ? openEmbeddedBus() : openGateway();
}

void TcpBusAdapter::close()
{
    m_running = false;
    if (m_client.isReceiveThread()) {
        m_closesLater = true;
        // Whoever opens the adapter before that has closed it too, and must not lose the new link.
        const auto closeIfWanted = [this] {
            if (m_closesLater)
                close();
        };
        QMetaObject::invokeMethod(this, closeIfWanted, Qt::QueuedConnection);
        return;
    }
    m_closesLater = false;
    // Before the link goes: who sends by the clock must not count what comes now as lost.
    setRunningState(false);
    m_client.stop();
    const std::lock_guard lock(m_echoMutex);
    m_echoes.clear();
}

void TcpBusAdapter::setBitrate(quint16)
{
    // Nothing on this bus has a bitrate.
}

void TcpBusAdapter::setFdBitrate(quint16)
{
    // As above.
}

int TcpBusAdapter::getDeviceNumber()
{
    return 0;
}

void TcpBusAdapter::setRunning(bool running)
{
    // A link that was lost before this call stays lost; one that is lost from here on is noticed later, and last.
    const bool runs = running && m_client.isLinked();
    if (runs)
        readSettings();
    setRunningState(runs);
    // Frames come from here on, when all who listen for the state have had their turn.
    m_running = runs && m_client.isLinked();
}

QList<AbstractCanAdapter::AdapterOption> TcpBusAdapter::getSupportedOptions()
{
    QList<AdapterOption> options = {OptionUseCanFd, OptionAdapterType, OptionAdapterName, OptionDeviceName,
                                    OptionDeviceData};
    if (!m_embedded)
        options << OptionIpAddress;
    options << OptionPort;
    if (!m_embedded)
        options << OptionConnectTimeout;
    return options << OptionListenOnly << OptionDescription << OptionLinkedAdapter << OptionClassicBusParameter
                   << OptionFdBusParameter << OptionFdBitrate << OptionBitrate << OptionForcedEcho;
}

/// Those of a usual CAN FD controller at 80 MHz, so that timings made here can be used on hardware.
CAN::CANBitTimingThresholds TcpBusAdapter::getThresholds(bool dataPhase)
{
    CAN::CANBitTimingThresholds limits;
    limits.clockFrequency = 80;
    limits.preScalerMin = 1;
    limits.preScalerMax = dataPhase ? 32 : 255;
    limits.tSeg1Min = dataPhase ? 1 : 2;
    limits.tSeg1Max = dataPhase ? 32 : 256;
    limits.tSeg2Min = dataPhase ? 1 : 2;
    limits.tSeg2Max = dataPhase ? 16 : 128;
    limits.sjwMax = dataPhase ? 16 : 128;
    limits.valid = true;
    return limits;
}

AbstractCanAdapter::WriteResult TcpBusAdapter::write(CAN::CanMessage *message)
{
    const WriteResult result = message == nullptr ? WriteInvalidFrame : send(*message);
    if (result == WriteOk)
        countSent();
    else
        countLost();
    return result;
}

AbstractCanAdapter::WriteResult TcpBusAdapter::send(const CAN::CanMessage &message)
{
    if (!m_running)
        return WriteNotOpen;
    if (m_silent)
        return WriteListenOnly;
    // Only a controller reports errors; a node cannot send them.
    if (message.errorFrame || (message.fd && !m_canFd))
        return WriteInvalidFrame;
    switch (m_client.send(message)) {
    case BusClient::SendResult::Sent:
        break;
    case BusClient::SendResult::NotLinked:
        return WriteNotOpen;
    case BusClient::SendResult::Invalid:
        return WriteInvalidFrame;
    case BusClient::SendResult::Lost:
        return WriteLost;
    }
    if (m_echo)
        echo(message);
    return WriteOk;
}

void TcpBusAdapter::echo(const CAN::CanMessage &message)
{
    {
        const std::lock_guard lock(m_echoMutex);
        if (m_echoes.size() >= echoLimit) {
            countLost();
            return;
        }
        m_echoes.push_back(message);
        if (m_echoes.size() > 1)
            return; // the receive thread is on its way
    }
    m_client.wake();
}

void TcpBusAdapter::awoken()
{
    std::vector<CAN::CanMessage> echoes;
    {
        const std::lock_guard lock(m_echoMutex);
        echoes.swap(m_echoes);
    }
    const auto now = std::chrono::system_clock::now();
    for (const CAN::CanMessage &message : echoes) {
        if (m_running)
            handOn(message, now);
    }
}

void TcpBusAdapter::frameArrived(const CAN::CanMessage &message, std::chrono::system_clock::time_point arrival)
{
    if (!m_running || message.errorFrame || (message.fd && !m_canFd))
        return;
    countReceived();
    handOn(message, arrival);
}

void TcpBusAdapter::handOn(const CAN::CanMessage &message, std::chrono::system_clock::time_point stamp)
{
    CAN::CanRxMessage received = {stampOf(stamp), message};
    emit newCanMessage(&received);
}

void TcpBusAdapter::linkLost(WireFormat::Fault fault)
{
    if (fault != WireFormat::Fault::None)
        setErrorText(WireFormat::faultText(fault));
    else if (m_embedded)
        setErrorText(
            tr("The connection to the bus at port %1 has ended: the program that carried the bus was closed, or "
               "this one was too slow to follow. Connect again.")
                .arg(m_port));
    else
        setErrorText(tr("%1, port %2, has closed the connection or does not answer any more. Check the device and the "
                        "cable, then connect again.")
                         .arg(m_host, QString::number(m_port)));
    // The adapter's state belongs to its own thread. By name, for no argument has to travel.
    QMetaObject::invokeMethod(this, "noticeLoss", Qt::QueuedConnection);
    emit interfaceError();
}

void TcpBusAdapter::framesUnsent(quint64 frames)
{
    countLost(frames);
}

void TcpBusAdapter::noticeLoss()
{
    // The adapter may be open again by now.
    if (m_client.isLinked())
        return;
    m_running = false;
    setRunningState(false);
}

int TcpBusAdapter::openEmbeddedBus()
{
    const Clock::time_point deadline = Clock::now() + embeddedBusTimeout;
    do {
        ConnectResult result = connectToBus(loopbackAddress, m_port, deadline);
        if (result.outcome == ConnectResult::Connected)
            return joinedWith(std::move(result.link));
        if (result.outcome == ConnectResult::Foreign)
            return refuseBusyPort();
        if (result.outcome == ConnectResult::Unreachable)
            return refuse(OpenBusy, tr("This computer refuses connections to itself. Check its firewall."));
        // Nobody is there, or somebody is just leaving: take the place, unless another process is faster.
        const int error = result.outcome == ConnectResult::Refused ? BusHub::serveUntilExit(m_port) : EADDRINUSE;
        if (error == EADDRINUSE)
            std::this_thread::sleep_for(attemptPause);
        else if (error != 0)
            return refuse(OpenBusy,
                          tr("Port %1 cannot be used: %2. Choose another port in the interface settings.")
                              .arg(QString::number(m_port), QString::fromLocal8Bit(std::strerror(error))));
    } while (Clock::now() < deadline);
    return refuseBusyPort();
}

int TcpBusAdapter::openGateway()
{
    m_host = getCanAdapterOption(OptionIpAddress).toString().trimmed();
    const int wanted = getCanAdapterOption(OptionConnectTimeout).toInt();
    const int timeout = std::clamp(wanted, shortestConnectTimeout, longestConnectTimeout);
    ConnectResult result = connectToBus(m_host, m_port, Clock::now() + std::chrono::milliseconds(timeout));
    const QString port = QString::number(m_port);
    switch (result.outcome) {
    case ConnectResult::Connected:
        return joinedWith(std::move(result.link));
    case ConnectResult::InvalidAddress:
        return refuse(
            OpenInvalidDevice,
            tr("\"%1\" is no IP address. Enter one like 192.168.0.10 in the interface settings.").arg(m_host));
    case ConnectResult::Refused:
        return refuse(
            OpenBusy,
            tr("No gateway listens at %1, port %2. Switch it on, or correct address and port in the interface "
               "settings.")
                .arg(m_host, port));
    case ConnectResult::Unreachable:
        return refuse(OpenBusy,
                      tr("%1 does not answer. Check that the gateway is switched on and connected, and its address in "
                         "the interface settings.")
                          .arg(m_host));
    case ConnectResult::ClosedAtOnce:
        return refuse(OpenBusy,
                      tr("%1, port %2, closed the connection at once. If another program uses the gateway, disconnect "
                         "it there first.")
                          .arg(m_host, port));
    case ConnectResult::Foreign:
        return refuse(OpenBusy,
                      tr("%1, port %2, does not speak CAN over TCP. Choose the gateway's port in the interface "
                         "settings.")
                          .arg(m_host, port));
    }
    return OpenBusy;
}

int TcpBusAdapter::joinedWith(BusLink link)
{
    if (m_client.start(std::move(link)))
        return OpenOk;
    return refuse(OpenBusy, tr("The system has no resources left for another connection."));
}

int TcpBusAdapter::refuse(OpenResult result, const QString &text)
{
    setErrorText(text);
    return result;
}

int TcpBusAdapter::refuseBusyPort()
{
    return refuse(
        OpenBusy,
        tr("Port %1 is in use by another program. Choose another port in the interface settings.").arg(m_port));
}

bool TcpBusAdapter::readPort()
{
    const QString text = getCanAdapterOption(OptionPort).toString().trimmed();
    bool isNumber = true;
    m_port = text.isEmpty() ? defaultPort : text.toUShort(&isNumber);
    return isNumber && m_port != 0;
}

void TcpBusAdapter::readSettings()
{
    m_canFd = getCanAdapterOption(OptionUseCanFd).toBool();
    m_silent = listenOnly || getCanAdapterOption(OptionListenOnly).toBool();
    m_echo = getCanAdapterOption(OptionForcedEcho).toBool();
}
