#include "rtnetlink.h"

#include <linux/rtnetlink.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <netlink/route/link.h>
#include <netlink/socket.h>
#include <sys/socket.h>

namespace {
using Socket = std::unique_ptr<nl_sock, LinkNotices::Deleter>;

// The kernel answers within the call that asks. Whatever stands in its place must not hold up the user interface.
constexpr timeval patience = {1, 0};

Socket connectedSocket()
{
    Socket socket(nl_socket_alloc());
    if (socket == nullptr || nl_connect(socket.get(), NETLINK_ROUTE) < 0)
        return nullptr;
    ::setsockopt(nl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    nl_socket_disable_auto_ack(socket.get());
    return socket;
}

int takeNotice(nl_msg *message, void *list)
{
    if (const std::optional<LinkNotice> notice = parseLinkMessage(nlmsg_hdr(message)))
        static_cast<std::vector<LinkNotice> *>(list)->push_back(*notice);
    return NL_OK;
}

/// @return 0, or what libnl calls the failure
int receive(nl_sock *socket, std::vector<LinkNotice> &list)
{
    nl_socket_modify_cb(socket, NL_CB_VALID, NL_CB_CUSTOM, takeNotice, &list);
    return nl_recvmsgs_default(socket);
}

int requestLink(nl_sock *socket, const QString &name)
{
    nl_msg *request = nullptr;
    const int error = rtnl_link_build_get_request(0, name.toUtf8().constData(), &request);
    if (error < 0)
        return error;
    const int result = nl_send_auto(socket, request);
    nlmsg_free(request);
    return result;
}
} // namespace

std::vector<LinkProperties> readCanLinks()
{
    const Socket socket = connectedSocket();
    rtgenmsg anyFamily = {};
    std::vector<LinkNotice> answers;
    if (socket == nullptr || nl_send_simple(socket.get(), RTM_GETLINK, NLM_F_DUMP, &anyFamily, sizeof anyFamily) < 0
        || receive(socket.get(), answers) < 0)
        return {};
    std::vector<LinkProperties> links;
    links.reserve(answers.size());
    for (const LinkNotice &answer : answers)
        links.push_back(answer.link);
    return links;
}

std::optional<LinkProperties> readCanLink(const QString &name)
{
    // Without a name the kernel would be asked for no link at all.
    const Socket socket = name.isEmpty() ? nullptr : connectedSocket();
    std::vector<LinkNotice> answers;
    if (socket == nullptr || requestLink(socket.get(), name) < 0 || receive(socket.get(), answers) < 0
        || answers.empty())
        return std::nullopt;
    return answers.front().link;
}

void LinkNotices::Deleter::operator()(nl_sock *socket) const
{
    nl_socket_free(socket);
}

LinkNotices::LinkNotices()
    : m_socket(connectedSocket())
{
    if (!isValid())
        return;
    // Notices answer no request, and so carry no number that could be checked.
    nl_socket_disable_seq_check(m_socket.get());
    if (nl_socket_add_membership(m_socket.get(), RTNLGRP_LINK) < 0 || nl_socket_set_nonblocking(m_socket.get()) < 0)
        m_socket.reset();
}

LinkNotices::~LinkNotices() = default;

int LinkNotices::descriptor() const
{
    return nl_socket_get_fd(m_socket.get());
}

LinkNotices::Taken LinkNotices::take()
{
    Taken taken;
    const int error = receive(m_socket.get(), taken.list);
    taken.incomplete = error < 0 && error != -NLE_AGAIN;
    return taken;
}
