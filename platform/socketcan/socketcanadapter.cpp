#include "socketcanadapter.h"

#include "bitrateentry.h"
#include "cansocket.h"
#include "kernelframe.h"
#include "rtnetlink.h"

#include <cerrno>
#include <cstring>

Q_LOGGING_CATEGORY(lcSocketCan, "kestrune.socketcan")

namespace {
constexpr quint16 defaultBitrate = 500;
constexpr quint16 defaultFdBitrate = 2000;
constexpr qint64 stateAge = 1000000000; // ns; a state that is not at its best is asked for again after so long
} // namespace

SocketCanAdapter::SocketCanAdapter(const QString &device, QObject *parent)
    : ThreadedAdapter(CanAdapterSocketCan, device, parent)
    , m_channel(*this)
{
    setCanAdapterOption(OptionDeviceData, 0u);
    for (const AdapterOption flag :
         {OptionAutoBusOn, OptionLogErrorFrames, OptionContinuousSystemTime, OptionSystemTimestamp})
        setCanAdapterOption(flag, false);
    setCanAdapterOption(OptionBitrate, QVariant::fromValue(bitrateEntry(defaultBitrate)));
    setCanAdapterOption(OptionFdBitrate, QVariant::fromValue(bitrateEntry(defaultFdBitrate)));
}

SocketCanAdapter::~SocketCanAdapter()
{
    m_channel.stop();
    setRunningState(false);
}

int SocketCanAdapter::openLink()
{
    const QString name = linkName();
    const std::optional<LinkProperties> link = readCanLink(name);
    CanSocket socket = link ? openCanSocket(link->index, getCanAdapterOption(OptionForcedEcho).toBool())
                            : CanSocket{{}, ENODEV};
    if (!link || socket.error == ENODEV) {
        return refuse(OpenInvalidDevice,
                      tr("There is no CAN interface \"%1\". Connect the device, or choose another one in the "
                         "interface settings.")
                          .arg(name));
    }
    if (socket.error == 0 && link->isUp)
        return openOn(std::move(socket.descriptor), *link);
    if (!link->isUp || socket.error == ENETDOWN) {
        return refuse(OpenBusy,
                      tr("%1 is switched off. Switch it on with \"ip link set %1 up\", then connect again.").arg(name));
    }
    return refuse(OpenBusy,
                  tr("%1 cannot be used: %2. Check that the system's CAN modules are loaded, then connect again.")
                      .arg(name, QString::fromLocal8Bit(std::strerror(socket.error))));
}

int SocketCanAdapter::openOn(FileDescriptor socket, const LinkProperties &link)
{
    m_name = link.name;
    const int result = adoptSettings(link);
    readReceiveSettings();
    m_hasController = link.hasController;
    m_state = CAN::CanStateUnknown;
    m_busOff = false;
    m_stateAskedAt = 0;
    m_saidLoss = false;
    return m_channel.start(std::move(socket)) ? result : refuseForLackOfResources();
}

void SocketCanAdapter::setBitrate(quint16 bitrate)
{
    m_wantedBitrate = bitrate;
}

void SocketCanAdapter::setFdBitrate(quint16 bitrate)
{
    m_wantedFdBitrate = bitrate;
}

QList<AbstractCanAdapter::AdapterOption> SocketCanAdapter::getSupportedOptions()
{
    return {
        OptionUseCanFd,    OptionAdapterType,    OptionAdapterName,          OptionDeviceName,      OptionDeviceData,
        OptionAutoBusOn,   OptionLogErrorFrames, OptionContinuousSystemTime, OptionSystemTimestamp, OptionListenOnly,
        OptionDescription, OptionLinkedAdapter,  OptionClassicBusParameter,  OptionFdBusParameter,  OptionFdBitrate,
        OptionBitrate,     OptionForcedEcho};
}

CAN::CANBitTimingThresholds SocketCanAdapter::getThresholds(bool dataPhase)
{
    const std::optional<LinkProperties> link = readCanLink(linkName());
    return link ? link->thresholds(dataPhase) : CAN::CANBitTimingThresholds();
}

AbstractCanAdapter::WriteResult SocketCanAdapter::send(const CAN::CanMessage &message)
{
    canfd_frame frame;
    const std::size_t size = toKernelFrame(message, frame);
    if (size == 0)
        return WriteInvalidFrame;
    // The system takes frames for a controller that is off the bus, and drops them.
    if (m_busOff)
        return WriteLost;
    switch (m_channel.send(frame, size)) {
    case CanChannel::SendResult::Sent:
        return WriteOk;
    case CanChannel::SendResult::NotLinked:
        return WriteNotOpen;
    case CanChannel::SendResult::Refused:
        return WriteInvalidFrame;
    case CanChannel::SendResult::Lost:
        break;
    }
    return WriteLost;
}

void SocketCanAdapter::frameArrived(const canfd_frame &frame, std::size_t size, const ReceptionInfo &info)
{
    CAN::CanRxMessage received;
    if (!isRunning() || !fromKernelFrame(frame, size, received.message))
        return;
    const qint64 time = info.systemTime != 0 ? info.systemTime : systemTimeNow();
    received.timeStamp = m_clock.stamp(time, info.hardwareTime);
    if (received.message.errorFrame) {
        if (const std::optional<CAN::CanState> state = controllerStateOf(frame))
            tellState(*state, received.timeStamp);
        if (!m_logErrors)
            return;
    } else if (m_hasController && m_state != CAN::CanStateErrorActive && time - m_stateAskedAt >= stateAge) {
        // Not every driver says when its controller has recovered.
        m_stateAskedAt = time;
        askState();
    }
    if (!info.own)
        countReceived();
    emit newCanMessage(&received);
}

void SocketCanAdapter::framesDropped(quint32 frames)
{
    countLost(frames);
    if (std::exchange(m_saidLoss, true))
        return;
    qCWarning(lcSocketCan, "%s: frames come in faster than they are worked off; %u are lost so far.",
              qPrintable(m_name), frames);
}

bool SocketCanAdapter::fellQuiet()
{
    if (!m_hasController)
        return false;
    return !isRunning() || askState();
}

void SocketCanAdapter::linkLost(int error)
{
    // A link that is taken away goes down first. The kernel answers when it is done with both.
    const bool isGone = error == ENODEV || error == ENXIO || (error == ENETDOWN && !readCanLink(m_name));
    if (isGone)
        tellLoss(tr("%1 is gone. Check the device and its cable, then connect again.").arg(m_name));
    else if (error == ENETDOWN)
        tellLoss(tr("%1 was switched off. Switch it on with \"ip link set %1 up\", then connect again.").arg(m_name));
    else
        tellLoss(tr("%1 does not work any more: %2. Connect again.")
                     .arg(m_name, QString::fromLocal8Bit(std::strerror(error))));
}

/// True if the state is one that will not stay.
bool SocketCanAdapter::askState()
{
    const std::optional<LinkProperties> link = readCanLink(m_name);
    const std::optional<CAN::CanState> state = link ? link->controllerState() : std::nullopt;
    if (!state)
        return false;
    tellState(*state, m_clock.stamp(systemTimeNow()));
    return *state != CAN::CanStateErrorActive;
}

void SocketCanAdapter::tellState(CAN::CanState state, CanTimeStamp stamp)
{
    m_busOff = m_hasController && state == CAN::CanStateBusOff;
    if (std::exchange(m_state, state) != state)
        emit newCanState(state, stamp);
}

QString SocketCanAdapter::linkName() const
{
    return linkNameOf(getCanAdapterOption(OptionDeviceName).toString());
}

/// Where others were asked for than the link has, the options take over the link's.
int SocketCanAdapter::adoptSettings(const LinkProperties &link)
{
    const SocketCANProps props = link.props();
    const auto differs = [](quint16 wanted, quint16 actual) { return wanted != 0 && actual != 0 && wanted != actual; };
    const bool wantsFd = getCanAdapterOption(OptionUseCanFd).toBool();
    if (!differs(m_wantedBitrate, props.bitrate) && !(wantsFd && differs(m_wantedFdBitrate, props.fdBitrate))
        && !(wantsFd && !props.canFd))
        return OpenOk;
    setCanAdapterOption(OptionUseCanFd, props.canFd);
    setCanAdapterOption(OptionFdBitrate, QVariant::fromValue(props));
    setCanAdapterOption(OptionBitrate, QVariant::fromValue(props));
    return OpenOtherSettings;
}

void SocketCanAdapter::readReceiveSettings()
{
    m_logErrors = getCanAdapterOption(OptionLogErrorFrames).toBool();
    const bool continuous = getCanAdapterOption(OptionContinuousSystemTime).toBool();
    const bool systemTime = getCanAdapterOption(OptionSystemTimestamp).toBool();
    m_clock.start(!systemTime      ? FrameClock::ControllerTime
                      : continuous ? FrameClock::ContinuousTime
                                   : FrameClock::TimeOfDay);
}
