#include "kernelframe.h"

#include <linux/can/error.h>

#include <cstring>

namespace {
bool isFdLength(quint8 length)
{
    return length <= CAN::maxClassicDataLength || canFdDataLengths.contains(length);
}

bool isSendable(const CAN::CanMessage &message)
{
    // Only a controller reports errors; CAN FD has no remote frames.
    if (message.errorFrame || message.id > (message.ext ? CAN_EFF_MASK : CAN_SFF_MASK))
        return false;
    return message.fd ? !message.rtr && isFdLength(message.length) : message.length <= CAN::maxClassicDataLength;
}

struct StateBits
{
    quint8 bits;
    CAN::CanState state;
};

// The worse direction decides, so the worst comes first.
constexpr StateBits controllerStates[] = {
    {CAN_ERR_CRTL_RX_PASSIVE | CAN_ERR_CRTL_TX_PASSIVE, CAN::CanStateErrorPassive},
    {CAN_ERR_CRTL_RX_WARNING | CAN_ERR_CRTL_TX_WARNING, CAN::CanStateErrorWarning},
    {CAN_ERR_CRTL_ACTIVE, CAN::CanStateErrorActive},
};
} // namespace

bool fromKernelFrame(const canfd_frame &frame, std::size_t size, CAN::CanMessage &message)
{
    const bool fd = size == CANFD_MTU;
    if ((!fd && size != CAN_MTU) || frame.len > (fd ? CAN::maxDataLength : CAN::maxClassicDataLength))
        return false;
    message.errorFrame = (frame.can_id & CAN_ERR_FLAG) != 0;
    message.ext = (frame.can_id & CAN_EFF_FLAG) != 0;
    message.rtr = (frame.can_id & CAN_RTR_FLAG) != 0;
    // The classes of an error take the bits of an extended identifier.
    message.id = frame.can_id & (message.ext || message.errorFrame ? CAN_EFF_MASK : CAN_SFF_MASK);
    message.length = frame.len;
    message.fd = fd;
    message.brs = fd && (frame.flags & CANFD_BRS) != 0;
    message.extraFlag = fd && (frame.flags & CANFD_ESI) != 0;
    std::memcpy(message.data, frame.data, frame.len);
    return true;
}

std::size_t toKernelFrame(const CAN::CanMessage &message, canfd_frame &frame)
{
    if (!isSendable(message))
        return 0;
    frame = {};
    frame.can_id = message.id | (message.ext ? CAN_EFF_FLAG : 0) | (message.rtr ? CAN_RTR_FLAG : 0);
    frame.len = message.length;
    if (message.fd)
        frame.flags = (message.brs ? CANFD_BRS : 0) | (message.extraFlag ? CANFD_ESI : 0);
    if (!message.rtr)
        std::memcpy(frame.data, message.data, message.length);
    return message.fd ? CANFD_MTU : CAN_MTU;
}

std::optional<CAN::CanState> controllerStateOf(const canfd_frame &errorFrame)
{
    if ((errorFrame.can_id & CAN_ERR_BUSOFF) != 0)
        return CAN::CanStateBusOff;
    if ((errorFrame.can_id & CAN_ERR_CRTL) != 0) {
        for (const StateBits &entry : controllerStates) {
            if ((errorFrame.data[1] & entry.bits) != 0)
                return entry.state;
        }
    }
    if ((errorFrame.can_id & CAN_ERR_RESTARTED) != 0)
        return CAN::CanStateErrorActive;
    return std::nullopt;
}
