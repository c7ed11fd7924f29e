#include "pcapngreader.h"

#include "pcapngformat.h"
#include "socketcanpacket.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr quint32 blockHeadBytes = 8;
constexpr quint32 trailerBytes = 4;
constexpr quint32 minSectionBytes = 28;
constexpr quint32 interfaceHeadBytes = 8;
constexpr quint32 packetHeadBytes = 20;
constexpr quint32 simpleHeadBytes = 4;
constexpr quint32 statisticsHeadBytes = 12;
constexpr quint32 optionHeadBytes = 4;
constexpr quint16 knownVersion = 1;
/// Packets of interfaces beyond are passed over: so many are no capture but an attempt on our memory.
constexpr std::size_t maxInterfaces = 65536;
constexpr quint32 skippedAtOnce = 1U << 20;

bool isLength(quint32 length)
{
    return length >= Pcapng::blockFrame && length % 4 == 0;
}

bool isKnown(quint32 type)
{
    switch (type) {
    case Pcapng::InterfaceBlock:
    case Pcapng::ObsoletePacketBlock:
    case Pcapng::SimplePacketBlock:
    case Pcapng::StatisticsBlock:
    case Pcapng::EnhancedPacketBlock:
        return true;
    default:
        return false;
    }
}
} // namespace

std::unique_ptr<CaptureReader> PcapngReader::make(CaptureInput &input)
{
    std::unique_ptr<PcapngReader> reader(new PcapngReader(input));
    if (reader->readSection() != NoPacket)
        return nullptr;
    return reader;
}

PcapngReader::PcapngReader(CaptureInput &input)
    : m_input(input)
{
}

CaptureReader::Step PcapngReader::next(CAN::CanRxMessage &frame, QStringList &notes)
{
    if (m_unknownLength != 0)
        return skipUnknown();
    if (m_input.atEnd())
        return End;
    const uchar *head = m_input.peek(blockHeadBytes);
    if (head == nullptr)
        return CutOff;
    const quint32 type = m_order.u32(head);
    if (type == Pcapng::SectionBlock)
        return readSection();
    const quint32 length = m_order.u32(head + 4);
    if (!isLength(length))
        return Damaged;
    if (!isKnown(type)) {
        m_unknownLength = length;
        m_unknownLeft = length - trailerBytes;
        return skipUnknown();
    }
    if (length > Pcapng::maxBlockBytes)
        return Damaged;
    const uchar *block = m_input.peek(length);
    if (block == nullptr)
        return CutOff;
    if (m_order.u32(block + length - trailerBytes) != length)
        return Damaged;
    const Step step = readBody(type, {block + blockHeadBytes, length - Pcapng::blockFrame}, frame, notes);
    m_input.skip(length);
    return step;
}

/// Goes on, and forgets what belonged to the section before, only if the header is whole and of the version we know.
CaptureReader::Step PcapngReader::readSection()
{
    const uchar *head = m_input.peek(minSectionBytes);
    if (head == nullptr)
        return CutOff;
    const bool big = ByteOrder(ByteOrder::Big).u32(head + blockHeadBytes) == Pcapng::byteOrderMagic;
    const ByteOrder order = big ? ByteOrder::Big : ByteOrder::Little;
    const quint32 length = order.u32(head + 4);
    if (order.u32(head + blockHeadBytes) != Pcapng::byteOrderMagic || !isLength(length) || length < minSectionBytes
        || length > Pcapng::maxBlockBytes || order.u16(head + blockHeadBytes + 4) != knownVersion)
        return Damaged;
    const uchar *block = m_input.peek(length);
    if (block == nullptr)
        return CutOff;
    if (order.u32(block + length - trailerBytes) != length)
        return Damaged;
    m_order = order;
    m_interfaces.clear();
    m_own = false;
    const quint32 fixedBytes = minSectionBytes - trailerBytes;
    eachOption({block + fixedBytes, length - minSectionBytes}, [this](quint16 code, Body value) {
        const quint32 size = sizeof Pcapng::application - 1;
        if (code == Pcapng::SectionApplication)
            m_own = value.size == size && std::memcmp(value.bytes, Pcapng::application, size) == 0;
    });
    m_input.skip(length);
    return NoPacket;
}

/// By steps, so that whoever reads can give up in the middle of gigabytes.
CaptureReader::Step PcapngReader::skipUnknown()
{
    const quint32 step = std::min(m_unknownLeft, skippedAtOnce);
    if (!m_input.skip(step))
        return CutOff;
    m_unknownLeft -= step;
    if (m_unknownLeft > 0)
        return NoPacket;
    const uchar *trailer = m_input.peek(trailerBytes);
    if (trailer == nullptr)
        return CutOff;
    if (m_order.u32(trailer) != m_unknownLength)
        return Damaged;
    m_unknownLength = 0;
    m_input.skip(trailerBytes);
    return NoPacket;
}

CaptureReader::Step PcapngReader::readBody(quint32 type, Body body, CAN::CanRxMessage &frame, QStringList &notes)
{
    if (type == Pcapng::InterfaceBlock)
        return readInterface(body);
    if (type == Pcapng::SimplePacketBlock)
        return readSimplePacket(body, frame);
    if (type == Pcapng::StatisticsBlock)
        return readStatistics(body, notes);
    if (body.size < packetHeadBytes)
        return Damaged;
    const bool enhanced = type == Pcapng::EnhancedPacketBlock;
    return readPacket(enhanced ? m_order.u32(body.bytes) : m_order.u16(body.bytes), body, frame, notes);
}

CaptureReader::Step PcapngReader::readInterface(Body body)
{
    if (body.size < interfaceHeadBytes)
        return Damaged;
    const bool can = m_order.u16(body.bytes) == Pcapng::linkTypeSocketCan;
    (can ? m_hasCan : m_hasOther) = true;
    if (m_interfaces.size() == maxInterfaces)
        return NoPacket;
    quint8 resolution = 6;
    qint64 offset = 0;
    const Body options = {body.bytes + interfaceHeadBytes, body.size - interfaceHeadBytes};
    eachOption(options, [&](quint16 code, Body value) {
        if (code == Pcapng::InterfaceResolution && value.size == sizeof resolution)
            resolution = *value.bytes;
        if (code == Pcapng::InterfaceOffset && value.size == sizeof offset)
            offset = static_cast<qint64>(m_order.u64(value.bytes));
    });
    m_interfaces.push_back({can, m_order.u32(body.bytes + 4), CaptureClock(resolution, offset)});
    return NoPacket;
}

CaptureReader::Step PcapngReader::readSimplePacket(Body body, CAN::CanRxMessage &frame)
{
    if (body.size < simpleHeadBytes)
        return Damaged;
    const Interface *interface = canInterface(0);
    if (interface == nullptr)
        return OtherPacket;
    quint32 size = std::min(m_order.u32(body.bytes), body.size - simpleHeadBytes);
    if (interface->snapLength != 0)
        size = std::min(size, interface->snapLength);
    frame.message = CAN::CanMessage();
    frame.timeStamp = m_lastStamp;
    return SocketCanPacket::decode(body.bytes + simpleHeadBytes, size, frame.message) ? Frame : OtherPacket;
}

/// The enhanced and the obsolete packet differ in nothing but where the interface stands.
CaptureReader::Step PcapngReader::readPacket(quint32 interface, Body body, CAN::CanRxMessage &frame, QStringList &notes)
{
    const quint32 captured = m_order.u32(body.bytes + 12);
    if (captured > body.size - packetHeadBytes)
        return Damaged;
    const Interface *from = canInterface(interface);
    if (from == nullptr)
        return OtherPacket;
    frame.message = CAN::CanMessage();
    if (!SocketCanPacket::decode(body.bytes + packetHeadBytes, captured, frame.message))
        return OtherPacket;
    const quint64 ticks = quint64(m_order.u32(body.bytes + 4)) << 32 | m_order.u32(body.bytes + 8);
    frame.timeStamp = m_lastStamp = from->clock.stamp(ticks);
    const quint32 options = packetHeadBytes + Pcapng::padded(captured);
    if (options < body.size)
        takeComments({body.bytes + options, body.size - options}, notes);
    return Frame;
}

CaptureReader::Step PcapngReader::readStatistics(Body body, QStringList &notes) const
{
    if (!m_own || body.size < statisticsHeadBytes)
        return NoPacket;
    takeComments({body.bytes + statisticsHeadBytes, body.size - statisticsHeadBytes}, notes);
    return notes.isEmpty() ? NoPacket : LateNotes;
}

/// Null if there is none of that number, or it is none for CAN.
const PcapngReader::Interface *PcapngReader::canInterface(quint32 number) const
{
    return number < m_interfaces.size() && m_interfaces[number].can ? &m_interfaces[number] : nullptr;
}

/// Calls take(code, value) for each, up to their end or to what is none.
template <typename Take>
void PcapngReader::eachOption(Body options, Take take) const
{
    while (options.size >= optionHeadBytes) {
        const quint16 code = m_order.u16(options.bytes);
        const quint32 size = m_order.u16(options.bytes + 2);
        const quint32 step = optionHeadBytes + Pcapng::padded(size);
        if (code == Pcapng::EndOfOptions || step > options.size)
            return;
        take(code, Body{options.bytes + optionHeadBytes, size});
        options = {options.bytes + step, options.size - step};
    }
}

void PcapngReader::takeComments(Body options, QStringList &notes) const
{
    eachOption(options, [&notes](quint16 code, Body value) {
        if (code == Pcapng::Comment)
            notes.append(QString::fromUtf8(reinterpret_cast<const char *>(value.bytes), static_cast<int>(value.size)));
    });
}
