#include "cansocket.h"

#include <linux/can.h>
#include <linux/can/error.h>
#include <linux/can/raw.h>
#include <linux/net_tstamp.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <cerrno>

namespace {
template <typename Value>
bool setOption(const FileDescriptor &socket, int level, int name, Value value)
{
    return ::setsockopt(socket.get(), level, name, &value, sizeof value) == 0;
}

constexpr int timesWanted = SOF_TIMESTAMPING_RX_SOFTWARE | SOF_TIMESTAMPING_SOFTWARE | SOF_TIMESTAMPING_RX_HARDWARE
    | SOF_TIMESTAMPING_RAW_HARDWARE;

/// What a connection cannot do without; the rest is had where the system gives it.
bool configure(const FileDescriptor &socket, bool ownFrames, int receiveBuffer)
{
    // The system's limit holds for everyone but the administrator; what it allows is still given then.
    if (!setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, receiveBuffer))
        setOption(socket, SOL_SOCKET, SO_RCVBUF, receiveBuffer);
    setOption(socket, SOL_SOCKET, SO_RXQ_OVFL, 1);
    setOption(socket, SOL_SOCKET, SO_TIMESTAMPING, timesWanted);
    return setOption(socket, SOL_CAN_RAW, CAN_RAW_FD_FRAMES, 1)
        && setOption(socket, SOL_CAN_RAW, CAN_RAW_ERR_FILTER, can_err_mask_t(CAN_ERR_MASK))
        && setOption(socket, SOL_CAN_RAW, CAN_RAW_RECV_OWN_MSGS, int(ownFrames));
}

bool bindTo(const FileDescriptor &socket, int link)
{
    sockaddr_can address = {};
    address.can_family = AF_CAN;
    address.can_ifindex = link;
    return ::bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

/// A link that is down can be bound to: the socket then has an error pending.
int pendingError(const FileDescriptor &socket)
{
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(socket.get(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}
} // namespace

CanSocket openCanSocket(int link, bool ownFrames, int receiveBuffer)
{
    FileDescriptor socket(::socket(PF_CAN, SOCK_RAW | SOCK_CLOEXEC, CAN_RAW));
    if (!socket.isValid() || !configure(socket, ownFrames, receiveBuffer) || !bindTo(socket, link))
        return {{}, errno};
    const int error = pendingError(socket);
    if (error != 0)
        return {{}, error};
    return {std::move(socket), 0};
}

quint32 droppedFrames(const FileDescriptor &socket, quint32 otherwise)
{
    quint32 values[SK_MEMINFO_VARS] = {};
    socklen_t size = sizeof values;
    const bool told = ::getsockopt(socket.get(), SOL_SOCKET, SO_MEMINFO, values, &size) == 0
        && size > SK_MEMINFO_DROPS * sizeof *values;
    return told ? values[SK_MEMINFO_DROPS] : otherwise;
}
