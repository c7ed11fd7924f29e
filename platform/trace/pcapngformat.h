#pragma once

#include <QtGlobal>

/// The numbers of the pcapng format, as far as traces use them.
namespace Pcapng {
enum BlockType : quint32 {
    InterfaceBlock = 1,
    ObsoletePacketBlock = 2,
    SimplePacketBlock = 3,
    StatisticsBlock = 5,
    EnhancedPacketBlock = 6,
    SectionBlock = 0x0A0D0D0A,
};

enum Option : quint16 {
    EndOfOptions = 0,
    Comment = 1,
    SectionApplication = 4,
    InterfaceResolution = 9,
    InterfaceOffset = 14,
};

constexpr quint32 byteOrderMagic = 0x1A2B3C4D;
/// Type and length before the body, the length again behind it.
constexpr quint32 blockFrame = 12;
/// The longest option.
constexpr int maxOptionBytes = 0xFFFF;
/// Longer blocks are neither written nor believed: no frame needs them, and a damaged length must not cost memory.
constexpr quint32 maxBlockBytes = 16U << 20;

constexpr quint32 padded(quint32 size)
{
    return (size + 3) & ~3U;
}

/// The link type of SocketCAN frames, in pcapng and in pcap.
constexpr quint32 linkTypeSocketCan = 227;

/// What names this program in the files that it writes. Only there, a comment on statistics is a late note.
constexpr char application[] = "Kestrune";
} // namespace Pcapng
