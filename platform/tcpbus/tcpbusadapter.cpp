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
    : ThreadedAdapter(type, device, parent)
    , m_embedded(type == CanAdapterDemo)
    , m_client(*this)
{
    setCanAdapterOption(OptionDeviceData, tcpBusFeatures);
    setCanAdapterOption(OptionPort, QString::number(defaultPort));
    setCanAdapterOption(OptionBitrate, QVariant::fromValue(entryOf(tcpBusBitrates(false), defaultBitrate)));
    setCanAdapterOption(OptionFdBitrate, QVariant::fromValue(entryOf(tcpBusFdBitrates(), defaultFdBitrate)));
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

int TcpBusAdapter::openLink()
{
    if (!readPort()) {
        return refuse(OpenInvalidDevice,
                      tr("\"%1\" is no port. Enter a number from 1 to 65535 in the interface settings.")
                          .arg(getCanAdapterOption(OptionPort).toString()));
    }
    return m_embedded ? openEmbeddedBus() : openGateway();
}

void TcpBusAdapter::endLink()
{
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

AbstractCanAdapter::WriteResult TcpBusAdapter::send(const CAN::CanMessage &message)
{
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
        if (isRunning())
            handOn(message, now);
    }
}

void TcpBusAdapter::frameArrived(const CAN::CanMessage &message, std::chrono::system_clock::time_point arrival)
{
    if (!isRunning() || message.errorFrame || (message.fd && !usesCanFd()))
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
        tellLoss(WireFormat::faultText(fault));
    else if (m_embedded)
        tellLoss(tr("The connection to the bus at port %1 has ended: the program that carried the bus was closed, or "
                    "this one was too slow to follow. Connect again.")
                     .arg(m_port));
    else
        tellLoss(tr("%1, port %2, has closed the connection or does not answer any more. Check the device and the "
                    "cable, then connect again.")
                     .arg(m_host, QString::number(m_port)));
}

void TcpBusAdapter::framesUnsent(quint64 frames)
{
    countLost(frames);
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
    return m_client.start(std::move(link)) ? int(OpenOk) : refuseForLackOfResources();
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

void TcpBusAdapter::readSendSettings()
{
    ThreadedAdapter::readSendSettings();
    m_echo = getCanAdapterOption(OptionForcedEcho).toBool();
}
