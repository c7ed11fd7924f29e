#include "traceencoder.h"

#include "capturetime.h"
#include "pcapngformat.h"
#include "socketcanpacket.h"

#include <QtEndian>

#include <cstring>
#include <limits>

namespace {
constexpr quint32 presentInterface = 0;
constexpr quint32 pastInterface = 1;
/// The first second that a stamp can hold.
constexpr qint64 pastOffset = std::numeric_limits<qint32>::min();
constexpr char microseconds = 6;
constexpr int usualPieceBytes = 1 << 18;

QByteArray noteBytes(const QString &note)
{
    QByteArray bytes = note.toUtf8();
    if (bytes.size() <= Pcapng::maxOptionBytes)
        return bytes;
    int end = Pcapng::maxOptionBytes;
    while ((uchar(bytes[end]) & 0xC0) == 0x80) // within a character
        --end;
    bytes.truncate(end);
    return bytes;
}
} // namespace

TraceEncoder::TraceEncoder()
{
    // Kept from piece to piece.
    m_bytes.reserve(usualPieceBytes);
    const int section = beginBlock(Pcapng::SectionBlock);
    addNumber(Pcapng::byteOrderMagic);
    addNumber(quint16(1));
    addNumber(quint16(0));
    // How long the section is, nobody knows before its end.
    addNumber(std::numeric_limits<quint32>::max());
    addNumber(std::numeric_limits<quint32>::max());
    addOption(Pcapng::SectionApplication, Pcapng::application);
    addOption(Pcapng::EndOfOptions, {});
    endBlock(section);
    addInterface(0);
}

void TraceEncoder::addFrame(const CAN::CanRxMessage &frame, const QStringList &notes)
{
    const CanTimeStamp stamp = normalised(frame.timeStamp);
    const bool past = stamp.seconds < 0;
    if (past && !m_hasPast) {
        addInterface(pastOffset);
        m_hasPast = true;
    }
    uchar packet[Pcapng::padded(SocketCanPacket::maxBytes)] = {};
    const quint32 size = SocketCanPacket::encode(frame.message, packet);
    const qint64 seconds = stamp.seconds - (past ? pastOffset : 0);

    const int block = beginBlock(Pcapng::EnhancedPacketBlock);
    addTime(past ? pastInterface : presentInterface, quint64(seconds) * 1000000 + quint64(stamp.microseconds));
    addNumber(size);
    addNumber(size);
    m_bytes.append(reinterpret_cast<const char *>(packet), static_cast<int>(Pcapng::padded(size)));
    if (!notes.isEmpty())
        addNotes(notes, block);
    endBlock(block);
}

void TraceEncoder::addLateNotes(const QStringList &notes)
{
    const int block = beginBlock(Pcapng::StatisticsBlock);
    addTime(presentInterface, 0);
    addNotes(notes, block);
    endBlock(block);
}

void TraceEncoder::addInterface(qint64 offset)
{
    const int block = beginBlock(Pcapng::InterfaceBlock);
    addNumber(quint16(Pcapng::linkTypeSocketCan));
    addNumber(quint16(0));
    addNumber(quint32(0)); // packets of any length
    addOption(Pcapng::InterfaceResolution, QByteArray(1, microseconds));
    if (offset != 0) {
        const qint64 value = qToLittleEndian(offset);
        addOption(Pcapng::InterfaceOffset, QByteArray(reinterpret_cast<const char *>(&value), sizeof value));
    }
    addOption(Pcapng::EndOfOptions, {});
    endBlock(block);
}

void TraceEncoder::addTime(quint32 interface, quint64 ticks)
{
    addNumber(interface);
    addNumber(quint32(ticks >> 32));
    addNumber(quint32(ticks));
}

void TraceEncoder::addNotes(const QStringList &notes, int block)
{
    constexpr quint32 optionHead = 4;
    constexpr quint32 tail = 2 * optionHead; // the end of the options and the block's length
    for (const QString &note : notes) {
        const QByteArray bytes = noteBytes(note);
        const auto longer = static_cast<quint32>(m_bytes.size() - block) + optionHead
            + Pcapng::padded(static_cast<quint32>(bytes.size())) + tail;
        if (longer > Pcapng::maxBlockBytes)
            break;
        addOption(Pcapng::Comment, bytes);
    }
    addOption(Pcapng::EndOfOptions, {});
}

void TraceEncoder::addOption(quint16 code, const QByteArray &value)
{
    const auto size = static_cast<quint32>(value.size());
    addNumber(code);
    addNumber(quint16(size));
    m_bytes.append(value);
    m_bytes.append(static_cast<int>(Pcapng::padded(size) - size), '\0');
}

void TraceEncoder::addNumber(quint16 number)
{
    const quint16 value = qToLittleEndian(number);
    m_bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void TraceEncoder::addNumber(quint32 number)
{
    const quint32 value = qToLittleEndian(number);
    m_bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

int TraceEncoder::beginBlock(quint32 type)
{
    const int begin = m_bytes.size();
    addNumber(type);
    addNumber(quint32(0));
    return begin;
}

void TraceEncoder::endBlock(int begin)
{
    const auto length = static_cast<quint32>(m_bytes.size() - begin) + sizeof(quint32);
    qToLittleEndian(static_cast<quint32>(length), m_bytes.data() + begin + sizeof(quint32));
    addNumber(static_cast<quint32>(length));
}

int wholeBlocks(const QByteArray &blocks, int size)
{
    int end = 0;
    while (end + static_cast<int>(Pcapng::blockFrame) <= size) {
        const auto length = qFromLittleEndian<quint32>(blocks.constData() + end + sizeof(quint32));
        if (length > static_cast<quint32>(size - end))
            break;
        end += static_cast<int>(length);
    }
    return end;
}
