#pragma once

#include "canrecords.h"

#include <cstddef>

/// A frame as the bytes of one packet of the link type for SocketCAN: identifier and flags with the most significant
/// byte first, the length, the flags of CAN FD, two unused bytes, the payload.
namespace SocketCanPacket {
constexpr unsigned headerBytes = 8;
constexpr unsigned maxBytes = headerBytes + CAN::maxDataLength;

/// Writes the packet and returns its size. The identifier keeps 29 bits, the payload 64 bytes. The payload of a remote
/// request is written too: by SocketCAN its bytes are there, as zeros.
unsigned encode(const CAN::CanMessage &message, uchar *packet);

/// Reads a packet into `message`, which must be as constructed. False, with `message` as before, for what is no frame:
/// cut short, more than 64 bytes, or CAN XL.
/// A frame of more than 8 bytes, or in the size of the system's record for CAN FD, is a CAN FD frame even without the
/// flag, which old systems did not set. A remote request may come without its payload.
bool decode(const uchar *packet, std::size_t size, CAN::CanMessage &message);
} // namespace SocketCanPacket
