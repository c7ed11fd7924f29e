#include "socketcanpacket.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {
constexpr quint32 idMask = 0x1FFFFFFF;
constexpr quint32 extendedFlag = 0x80000000;
constexpr quint32 remoteFlag = 0x40000000;
constexpr quint32 errorFlag = 0x20000000;

constexpr uchar bitRateSwitch = 0x01;
constexpr uchar errorStateIndicator = 0x02;
constexpr uchar fdFormat = 0x04;

constexpr int lengthAt = 4;
constexpr int fdFlagsAt = 5;
} // namespace

unsigned SocketCanPacket::encode(const CAN::CanMessage &message, uchar *packet)
{
    const quint8 length = std::min<quint8>(message.length, CAN::maxDataLength);
    const quint32 id = (message.id & idMask) | (message.ext ? extendedFlag : 0) | (message.rtr ? remoteFlag : 0)
        | (message.errorFrame ? errorFlag : 0);
    qToBigEndian(id, packet);
    packet[lengthAt] = length;
    packet[fdFlagsAt] = static_cast<uchar>((message.brs ? bitRateSwitch : 0)
                                           | (message.extraFlag ? errorStateIndicator : 0)
                                           | (message.fd ? fdFormat : 0));
    packet[6] = 0;
    packet[7] = 0;
    std::memcpy(packet + headerBytes, message.data, length);
    return headerBytes + length;
}

bool SocketCanPacket::decode(const uchar *packet, std::size_t size, CAN::CanMessage &message)
{
    if (size < headerBytes)
        return false;
    const quint32 id = qFromBigEndian<quint32>(packet);
    const quint8 length = packet[lengthAt];
    const bool rtr = (id & remoteFlag) != 0;
    const bool complete = size >= std::size_t(headerBytes) + length;
    if (length > CAN::maxDataLength || !(complete || rtr))
        return false;
    message.id = id & idMask;
    message.ext = (id & extendedFlag) != 0;
    message.rtr = rtr;
    message.errorFrame = (id & errorFlag) != 0;
    message.length = length;
    message.brs = (packet[fdFlagsAt] & bitRateSwitch) != 0;
    message.extraFlag = (packet[fdFlagsAt] & errorStateIndicator) != 0;
    message.fd = (packet[fdFlagsAt] & fdFormat) != 0 || length > CAN::maxClassicDataLength || size == maxBytes;
    if (complete)
        std::memcpy(message.data, packet + headerBytes, length);
    return true;
}
