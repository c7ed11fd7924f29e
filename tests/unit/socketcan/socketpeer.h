#pragma once

#include "filedescriptor.h"

#include <linux/can.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

/// A socket that keeps the borders between frames, and the far end of it: what a raw CAN socket is on kernels that have
/// none.
class SocketPeer
{
public:
    SocketPeer()
    {
        int ends[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0) {
            m_near = FileDescriptor(ends[0]);
            m_far = FileDescriptor(ends[1]);
        }
    }

    /// For whom is tested; once.
    FileDescriptor takeNear() { return std::move(m_near); }

    bool send(quint32 id, std::size_t size = CAN_MTU)
    {
        canfd_frame frame = {};
        frame.can_id = id;
        return ::send(m_far.get(), &frame, size, MSG_NOSIGNAL) == ssize_t(size);
    }
    /// The identifier of the next frame; 0xFFFFFFFF if none comes in time.
    quint32 receive()
    {
        canfd_frame frame = {};
        pollfd readable = {m_far.get(), POLLIN, 0};
        constexpr int patience = 10000; // ms
        if (::poll(&readable, 1, patience) != 1 || ::recv(m_far.get(), &frame, sizeof frame, 0) <= 0)
            return 0xFFFFFFFF;
        return frame.can_id;
    }
    /// As a link that vanishes.
    void close() { m_far.reset(); }

private:
    FileDescriptor m_near;
    FileDescriptor m_far;
};
