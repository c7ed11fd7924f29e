#include "linkproperties.h"

#include <linux/can.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

/// Leaves `value` as it is where the attribute is missing or too short.
template <typename Value>
void take(const nlattr *attribute, Value &value)
{
    if (attribute != nullptr && nla_len(attribute) >= int(sizeof value))
        std::memcpy(&value, nla_data(attribute), sizeof value);
}

template <typename Value>
void take(const nlattr *attribute, std::optional<Value> &value)
{
    if (attribute != nullptr && nla_len(attribute) >= int(sizeof *value))
        take(attribute, value.emplace());
}

QString textOf(const nlattr *attribute)
{
    if (attribute == nullptr)
        return {};
    const auto *text = static_cast<const char *>(nla_data(attribute));
    return QString::fromUtf8(text, int(::strnlen(text, std::size_t(nla_len(attribute)))));
}

void takeAllowedModes(nlattr *nest, LinkProperties &link)
{
    nlattr *attributes[IFLA_CAN_CTRLMODE_MAX + 1] = {};
    if (nest != nullptr && nla_parse_nested(attributes, IFLA_CAN_CTRLMODE_MAX, nest, nullptr) == 0)
        take(attributes[IFLA_CAN_CTRLMODE_SUPPORTED], link.allowedModes);
}

void takeController(nlattr *nest, LinkProperties &link)
{
    nlattr *attributes[IFLA_CAN_MAX + 1] = {};
    if (nest == nullptr || nla_parse_nested(attributes, IFLA_CAN_MAX, nest, nullptr) != 0)
        return;
    // A state is what every controller has.
    link.hasController = attributes[IFLA_CAN_STATE] != nullptr;
    take(attributes[IFLA_CAN_BITTIMING], link.timing);
    take(attributes[IFLA_CAN_DATA_BITTIMING], link.dataTiming);
    take(attributes[IFLA_CAN_BITTIMING_CONST], link.limits);
    take(attributes[IFLA_CAN_DATA_BITTIMING_CONST], link.dataLimits);
    take(attributes[IFLA_CAN_RESTART_MS], link.restartMs);
    take(attributes[IFLA_CAN_STATE], link.state);
    can_clock clock = {};
    take(attributes[IFLA_CAN_CLOCK], clock);
    link.clock = clock.freq;
    can_ctrlmode modes = {};
    take(attributes[IFLA_CAN_CTRLMODE], modes);
    link.modes = modes.flags;
    takeAllowedModes(attributes[IFLA_CAN_CTRLMODE_EXT], link);
}

void takeKind(nlattr *nest, LinkProperties &link)
{
    nlattr *attributes[IFLA_INFO_MAX + 1] = {};
    if (nest == nullptr || nla_parse_nested(attributes, IFLA_INFO_MAX, nest, nullptr) != 0)
        return;
    // Whoever drives the controller, its kind is "can"; other kinds lay out their data in another way.
    if (textOf(attributes[IFLA_INFO_KIND]) == QLatin1String("can"))
        takeController(attributes[IFLA_INFO_DATA], link);
}

template <typename Number>
Number limited(quint32 value)
{
    return static_cast<Number>(std::min<quint32>(value, std::numeric_limits<Number>::max()));
}

/// kBit/s. 0 is left to those who know none.
quint16 kiloBits(quint32 bitsPerSecond)
{
    if (bitsPerSecond == 0)
        return 0;
    return limited<quint16>(std::max(1u, quint32(std::lround(bitsPerSecond / 1000.0))));
}

struct StateName
{
    quint32 kernelState;
    CAN::CanState state;
};

constexpr StateName states[] = {
    {CAN_STATE_ERROR_ACTIVE, CAN::CanStateErrorActive},
    {CAN_STATE_ERROR_WARNING, CAN::CanStateErrorWarning},
    {CAN_STATE_ERROR_PASSIVE, CAN::CanStateErrorPassive},
    {CAN_STATE_BUS_OFF, CAN::CanStateBusOff},
    {CAN_STATE_STOPPED, CAN::CanStateStopped},
    {CAN_STATE_SLEEPING, CAN::CanStateStopped},
};
} // namespace

bool LinkProperties::isFd() const
{
    return (modes & CAN_CTRLMODE_FD) != 0 || mtu >= CANFD_MTU;
}

bool LinkProperties::couldBeFd() const
{
    return isFd() || dataLimits.has_value() || (allowedModes.value_or(0) & CAN_CTRLMODE_FD) != 0;
}

QString LinkProperties::deviceText() const
{
    if (!limits)
        return name;
    const QString controller = QString::fromUtf8(limits->name, int(::strnlen(limits->name, sizeof limits->name)));
    return controller.isEmpty() ? name : name + QLatin1Char('|') + controller;
}

unsigned int LinkProperties::features() const
{
    // The kernel hands on the error frames of any link.
    unsigned int word = AbstractCanAdapter::FeatureErrorFrames;
    if (couldBeFd())
        word |= AbstractCanAdapter::FeatureCanFd;
    // Without a controller there is nothing that would acknowledge a frame.
    if (!hasController || (allowedModes.value_or(CAN_CTRLMODE_LISTENONLY) & CAN_CTRLMODE_LISTENONLY) != 0)
        word |= AbstractCanAdapter::FeatureListenOnly;
    if (restartMs != 0)
        word |= AbstractCanAdapter::FeatureAutoBusOnDefault;
    return word;
}

AbstractCanAdapter::SocketCANProps LinkProperties::props() const
{
    AbstractCanAdapter::SocketCANProps answer;
    answer.canFd = isFd();
    answer.bitrate = kiloBits(timing.bitrate);
    answer.fdBitrate = answer.canFd ? kiloBits(dataTiming.bitrate) : 0;
    answer.restartMs = limited<quint16>(restartMs);
    return answer;
}

CAN::CANBitTimingThresholds LinkProperties::thresholds(bool dataPhase) const
{
    constexpr quint32 hertzAMegahertz = 1000000;
    const std::optional<can_bittiming_const> &given = dataPhase ? dataLimits : limits;
    if (!given)
        return {};
    CAN::CANBitTimingThresholds answer;
    answer.clockFrequency = limited<quint16>(clock / hertzAMegahertz);
    answer.preScalerMin = limited<qint16>(given->brp_min);
    answer.preScalerMax = limited<qint16>(given->brp_max);
    answer.tSeg1Min = limited<qint16>(given->tseg1_min);
    answer.tSeg1Max = limited<qint16>(given->tseg1_max);
    answer.tSeg2Min = limited<qint16>(given->tseg2_min);
    answer.tSeg2Max = limited<qint16>(given->tseg2_max);
    answer.sjwMax = limited<qint16>(given->sjw_max);
    answer.valid = answer.clockFrequency != 0;
    return answer;
}

std::optional<CAN::CanState> LinkProperties::controllerState() const
{
    const auto *known = std::find_if(std::begin(states), std::end(states),
                                     [this](const StateName &entry) { return entry.kernelState == state; });
    return known == std::end(states) ? std::nullopt : std::make_optional(known->state);
}

QString linkNameOf(const QString &deviceText)
{
    return deviceText.section(QLatin1Char('|'), 0, 0).trimmed();
}

std::optional<LinkNotice> parseLinkMessage(nlmsghdr *message)
{
    nlattr *attributes[IFLA_MAX + 1] = {};
    const bool tellsOfLink = message->nlmsg_type == RTM_NEWLINK || message->nlmsg_type == RTM_DELLINK;
    if (!tellsOfLink || nlmsg_parse(message, sizeof(ifinfomsg), attributes, IFLA_MAX, nullptr) != 0)
        return std::nullopt;
    const auto *header = static_cast<const ifinfomsg *>(nlmsg_data(message));
    if (header->ifi_type != ARPHRD_CAN)
        return std::nullopt;
    LinkNotice notice;
    notice.isGone = message->nlmsg_type == RTM_DELLINK;
    notice.link.index = header->ifi_index;
    notice.link.isUp = (header->ifi_flags & IFF_UP) != 0;
    notice.link.name = textOf(attributes[IFLA_IFNAME]);
    take(attributes[IFLA_MTU], notice.link.mtu);
    takeKind(attributes[IFLA_LINKINFO], notice.link);
    return notice.link.name.isEmpty() ? std::nullopt : std::make_optional(notice);
}
