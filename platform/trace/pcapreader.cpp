#include "pcapreader.h"

#include "capturetime.h"
#include "pcapngformat.h"
#include "socketcanpacket.h"

namespace {
constexpr quint32 microsecondMagic = 0xA1B2C3D4;
constexpr quint32 nanosecondMagic = 0xA1B23C4D;
constexpr quint32 fileHeaderBytes = 24;
constexpr quint32 linkTypeAt = 20;
/// The upper bits of the field tell of checksums behind the packets.
constexpr quint32 linkTypeMask = 0x0FFFFFFF;
constexpr quint32 packetHeaderBytes = 16;
constexpr quint32 nanosecondsInMicrosecond = 1000;
} // namespace

std::unique_ptr<CaptureReader> PcapReader::make(CaptureInput &input)
{
    const uchar *header = input.peek(fileHeaderBytes);
    if (header == nullptr)
        return nullptr;
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const quint32 magic = order.u32(header);
        if (magic != microsecondMagic && magic != nanosecondMagic)
            continue;
        const bool can = (order.u32(header + linkTypeAt) & linkTypeMask) == Pcapng::linkTypeSocketCan;
        input.skip(fileHeaderBytes);
        return std::unique_ptr<CaptureReader>(new PcapReader(input, order, magic == nanosecondMagic, can));
    }
    return nullptr;
}

PcapReader::PcapReader(CaptureInput &input, ByteOrder order, bool nanoseconds, bool can)
    : m_input(input)
    , m_order(order)
    , m_nanoseconds(nanoseconds)
    , m_can(can)
{
}

CaptureReader::Step PcapReader::next(CAN::CanRxMessage &frame, QStringList &)
{
    if (m_input.atEnd())
        return End;
    const uchar *header = m_input.peek(packetHeaderBytes);
    if (header == nullptr)
        return CutOff;
    const quint32 size = m_order.u32(header + 8);
    if (size > Pcapng::maxBlockBytes)
        return Damaged;
    const uchar *record = m_input.peek(packetHeaderBytes + size);
    if (record == nullptr)
        return CutOff;
    m_input.skip(packetHeaderBytes + size);
    frame.message = CAN::CanMessage();
    if (!m_can || !SocketCanPacket::decode(record + packetHeaderBytes, size, frame.message))
        return OtherPacket;
    // Tools write the seconds of times before 1970 with their sign; those after 2038 no stamp could hold anyway.
    const auto seconds = static_cast<qint32>(m_order.u32(record));
    const quint32 fraction = m_order.u32(record + 4) / (m_nanoseconds ? nanosecondsInMicrosecond : 1);
    constexpr quint32 most = std::numeric_limits<qint32>::max();
    frame.timeStamp = normalised(CanTimeStamp(seconds, static_cast<qint32>(std::min(fraction, most))));
    return Frame;
}
