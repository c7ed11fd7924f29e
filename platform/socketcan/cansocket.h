#pragma once

#include "filedescriptor.h"

#include <QtGlobal>

/// A raw socket on one link, ready to receive all that can be seen there.
struct CanSocket
{
    FileDescriptor descriptor;
    int error = 0; ///< the system's error number if there is no descriptor
};

constexpr int wantedReceiveBuffer = 8 * 1024 * 1024; // bytes; more than 2 s of a full bus at 1 Mbit/s

/// With CAN FD frames, error frames, times of the kernel and of the controller, and the count of frames that found
/// the receive buffer full.
/// @param link index of the link; never changed by this
/// @param ownFrames frames that are sent through the socket come back by it
CanSocket openCanSocket(int link, bool ownFrames, int receiveBuffer = wantedReceiveBuffer);

/// Frames that found the receive buffer full since the socket was made, up to this moment; the counter wraps.
/// Of a socket that cannot tell: `otherwise`.
quint32 droppedFrames(const FileDescriptor &socket, quint32 otherwise);
