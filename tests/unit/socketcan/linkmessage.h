#pragma once

#include "linkproperties.h"

#include <QFile>
#include <linux/can.h>
#include <linux/can/netlink.h>
#include <linux/if_arp.h>
#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>

#include <memory>

/// A message of rtnetlink, as it came from a kernel.
inline QByteArray recordedMessage(const char *name)
{
    QFile file(QStringLiteral(DATA_FOLDER "/%1.hex").arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? QByteArray::fromHex(file.readAll()) : QByteArray();
}

inline std::optional<LinkNotice> parse(QByteArray bytes)
{
    return parseLinkMessage(reinterpret_cast<nlmsghdr *>(bytes.data()));
}

/// A message as a kernel lays it out for a link with a controller, piece by piece.
class LinkMessage
{
public:
    explicit LinkMessage(const char *name = "can0", quint32 mtu = CAN_MTU, const char *kind = "can")
        : m_message(nlmsg_alloc_simple(RTM_NEWLINK, 0), nlmsg_free)
    {
        ifinfomsg header = {};
        header.ifi_type = ARPHRD_CAN;
        header.ifi_index = 4;
        header.ifi_flags = IFF_UP;
        nlmsg_append(m_message.get(), &header, sizeof header, NLMSG_ALIGNTO);
        nla_put_string(m_message.get(), IFLA_IFNAME, name);
        nla_put_u32(m_message.get(), IFLA_MTU, mtu);
        m_info = nla_nest_start(m_message.get(), IFLA_LINKINFO);
        nla_put_string(m_message.get(), IFLA_INFO_KIND, kind);
        m_data = nla_nest_start(m_message.get(), IFLA_INFO_DATA);
    }

    template <typename Value>
    LinkMessage &with(int attribute, const Value &value)
    {
        nla_put(m_message.get(), attribute, sizeof value, &value);
        return *this;
    }
    LinkMessage &withBitrate(quint32 bitsPerSecond, int attribute = IFLA_CAN_BITTIMING)
    {
        can_bittiming timing = {};
        timing.bitrate = bitsPerSecond;
        return with(attribute, timing);
    }
    LinkMessage &withModes(quint32 flags) { return with(IFLA_CAN_CTRLMODE, can_ctrlmode{flags, flags}); }
    LinkMessage &withAllowedModes(quint32 flags)
    {
        nlattr *nest = nla_nest_start(m_message.get(), IFLA_CAN_CTRLMODE_EXT);
        with(IFLA_CAN_CTRLMODE_SUPPORTED, flags);
        nla_nest_end(m_message.get(), nest);
        return *this;
    }
    LinkMessage &withState(quint32 state) { return with(IFLA_CAN_STATE, state); }

    QByteArray bytes()
    {
        nla_nest_end(m_message.get(), m_data);
        nla_nest_end(m_message.get(), m_info);
        const nlmsghdr *header = nlmsg_hdr(m_message.get());
        return {reinterpret_cast<const char *>(header), int(header->nlmsg_len)};
    }
    LinkProperties link() { return parse(bytes()).value_or(LinkNotice()).link; }

private:
    std::shared_ptr<nl_msg> m_message;
    nlattr *m_info;
    nlattr *m_data;
};
