#pragma once

#include "canrecords.h"

#include <QtEndian>

/// The numbers of CANopen that a node needs, by the names they have in the field.
namespace CanOpen {
constexpr quint8 broadcastNodeId = 0;

// Function codes: what a COB-ID of the predefined connection set is before the node-ID is added.
constexpr quint32 cobNmt = 0x000;
constexpr quint32 cobEmcy = 0x080;
constexpr quint32 cobTpdo1 = 0x180;
constexpr quint32 cobTpdo2 = 0x280;
constexpr quint32 cobTpdo3 = 0x380;
constexpr quint32 cobTpdo4 = 0x480;
constexpr quint32 cobSdoResponse = 0x580; ///< server to client
constexpr quint32 cobSdoRequest = 0x600;  ///< client to server
constexpr quint32 cobHeartbeat = 0x700;

/// As a heartbeat tells it.
enum class NmtState : quint8 { BootUp = 0x00, Stopped = 0x04, Operational = 0x05, PreOperational = 0x7F };

enum class NmtCommand : quint8 {
    Start = 0x01,
    Stop = 0x02,
    EnterPreOperational = 0x80,
    ResetNode = 0x81,
    ResetCommunication = 0x82,
};

// Communication objects.
constexpr quint16 objectDeviceType = 0x1000;
constexpr quint16 objectErrorRegister = 0x1001;
constexpr quint16 objectDeviceName = 0x1008;
constexpr quint16 objectHeartbeatTime = 0x1017; ///< ms, 0 for no heartbeat
constexpr quint16 objectIdentity = 0x1018;

enum class SdoAbort : quint32 {
    CommandSpecifier = 0x05040001,
    WriteOfReadOnly = 0x06010002,
    NoSuchObject = 0x06020000,
    LengthMismatch = 0x06070010,
    NoSuchSubindex = 0x06090011,
};

/// Puts a number behind what the payload already holds, little-endian like all that CANopen sends.
/// The caller keeps within the 64 bytes of a frame.
template <typename T>
void append(CAN::CanMessage &message, T value)
{
    Q_ASSERT(message.length + sizeof(T) <= CAN::maxDataLength);
    qToLittleEndian<T>(value, message.data + message.length);
    message.length = static_cast<quint8>(message.length + sizeof(T));
}

/// A plain CANopen frame: neither remote nor extended nor CAN FD, and no report of a bus error.
inline bool isClassicDataFrame(const CAN::CanMessage &message)
{
    return !message.rtr && !message.ext && !message.fd && !message.errorFrame;
}
} // namespace CanOpen
