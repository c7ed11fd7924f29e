#pragma once

#include "adaptercontract.h"

#include <linux/can/netlink.h>

#include <optional>

struct nlmsghdr;

/// What the system says of one CAN link.
struct LinkProperties
{
    int index = 0;
    QString name;
    bool isUp = false;
    quint32 mtu = 0;
    bool hasController = false; ///< virtual links have none, and so nothing of what follows
    can_bittiming timing = {};
    can_bittiming dataTiming = {};
    std::optional<can_bittiming_const> limits;
    std::optional<can_bittiming_const> dataLimits;
    quint32 clock = 0;                   ///< Hz; 0 if unknown
    quint32 modes = 0;                   ///< CAN_CTRLMODE_ bits that are set
    std::optional<quint32> allowedModes; ///< bits that the driver could set; older kernels do not tell
    quint32 restartMs = 0;               ///< 0 if the link stays off after bus off
    std::optional<quint32> state;        ///< a can_state

    bool isFd() const;
    bool couldBeFd() const;

    /// The name, and what kind of controller it is where there is one: "can0|mcp251xfd".
    QString deviceText() const;
    /// DeviceFeature bits.
    unsigned int features() const;
    AbstractCanAdapter::SocketCANProps props() const;
    CAN::CANBitTimingThresholds thresholds(bool dataPhase) const;
    std::optional<CAN::CanState> controllerState() const;
};

/// The name of the link in a device text.
QString linkNameOf(const QString &deviceText);

/// What became of a link, as a message of rtnetlink tells.
struct LinkNotice
{
    bool isGone = false;
    LinkProperties link; ///< of a link that is gone only its index and its name are sure
};

/// Nothing if the message is damaged or does not tell of a CAN link.
std::optional<LinkNotice> parseLinkMessage(nlmsghdr *message);
