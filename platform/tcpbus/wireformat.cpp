#include "wireformat.h"

#include <QCoreApplication>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {
constexpr std::size_t headSize = 5; // identifier and length
constexpr quint32 largestStandardId = 0x7FF;
constexpr quint32 largestExtendedId = 0x1FFFFFFF;

/// What the first bytes of a frame announce.
struct FrameHead
{
    quint32 id;
    quint8 length;
    bool extended;
    bool remote;
    bool error;
    bool fd;

    std::size_t dataSize() const { return remote ? 0 : length; }
    std::size_t size() const { return headSize + (fd ? 1 : 0) + dataSize(); }
};

FrameHead readHead(const quint8 *bytes)
{
    const quint32 id = qFromBigEndian<quint32>(bytes);
    const quint8 length = bytes[4];
    return {id & largestExtendedId,
            quint8(length & ~WireFormat::fdMark),
            (id & WireFormat::extendedMark) != 0,
            (id & WireFormat::remoteMark) != 0,
            (id & WireFormat::errorMark) != 0,
            (length & WireFormat::fdMark) != 0};
}

bool isFdLength(quint8 length)
{
    constexpr quint8 longLengths[] = {12, 16, 20, 24, 32, 48, 64};
    return length <= CAN::maxClassicDataLength
        || std::find(std::begin(longLengths), std::end(longLengths), length) != std::end(longLengths);
}

WireFormat::Fault check(const FrameHead &head)
{
    using WireFormat::Fault;
    if (head.fd && head.remote)
        return Fault::FdRemote;
    if (head.fd && head.error)
        return Fault::FdError;
    if (head.remote && head.error)
        return Fault::RemoteError;
    // In the report of an error the identifier tells the kind of the error, all 29 bits of it.
    if (head.id > (head.extended || head.error ? largestExtendedId : largestStandardId))
        return Fault::Identifier;
    if (head.fd)
        return isFdLength(head.length) ? Fault::None : Fault::FdLength;
    return head.length <= CAN::maxClassicDataLength ? Fault::None : Fault::ClassicLength;
}

FrameHead headOf(const CAN::CanMessage &message)
{
    return {message.id, message.length, message.ext, message.rtr, message.errorFrame, message.fd};
}

void decodeFrame(const quint8 *bytes, CAN::CanMessage &message)
{
    const FrameHead head = readHead(bytes);
    message = {};
    message.id = head.id;
    message.length = head.length;
    message.ext = head.extended;
    message.rtr = head.remote;
    message.errorFrame = head.error;
    message.fd = head.fd;
    bytes += headSize;
    if (head.fd) {
        message.brs = (*bytes & WireFormat::bitRateSwitchFlag) != 0;
        message.extraFlag = (*bytes & WireFormat::errorStateFlag) != 0;
        ++bytes;
    }
    std::memcpy(message.data, bytes, head.dataSize());
}
} // namespace

const char *WireFormat::faultSentence(Fault fault)
{
    constexpr const char *sentences[] = {
        "",
        QT_TRANSLATE_NOOP("WireFormat", "The other side does not speak CAN over TCP."),
        QT_TRANSLATE_NOOP("WireFormat",
                          "The other side sent a standard frame with an identifier of more than 11 bits."),
        QT_TRANSLATE_NOOP("WireFormat", "The other side sent a classic frame with more than 8 data bytes."),
        QT_TRANSLATE_NOOP("WireFormat", "The other side sent a CAN FD frame of a length that CAN FD does not have."),
        QT_TRANSLATE_NOOP("WireFormat", "The other side sent a remote frame that is marked as a CAN FD frame."),
        QT_TRANSLATE_NOOP("WireFormat", "The other side sent an error report that is marked as a CAN FD frame."),
        QT_TRANSLATE_NOOP("WireFormat", "The other side sent an error report that is marked as a remote frame."),
    };
    static_assert(std::size(sentences) == std::size_t(Fault::RemoteError) + 1);
    return sentences[std::size_t(fault)];
}

QString WireFormat::faultText(Fault fault)
{
    return fault == Fault::None ? QString() : QCoreApplication::translate("WireFormat", faultSentence(fault));
}

bool WireFormat::isValidFrame(const CAN::CanMessage &message)
{
    return check(headOf(message)) == Fault::None;
}

std::size_t WireFormat::encodeFrame(const CAN::CanMessage &message, quint8 *buffer)
{
    const FrameHead head = headOf(message);
    if (check(head) != Fault::None)
        return 0;
    const quint32 marks = (head.extended ? extendedMark : 0) | (head.remote ? remoteMark : 0)
        | (head.error ? errorMark : 0);
    qToBigEndian<quint32>(head.id | marks, buffer);
    buffer[4] = head.length | (head.fd ? fdMark : 0);
    quint8 *data = buffer + headSize;
    if (head.fd)
        *data++ = (message.brs ? bitRateSwitchFlag : 0) | (message.extraFlag ? errorStateFlag : 0);
    std::memcpy(data, message.data, head.dataSize());
    return head.size();
}

quint64 WireFormat::countWholeFrames(const quint8 *bytes, std::size_t size)
{
    quint64 frames = 0;
    while (size >= headSize && size >= readHead(bytes).size()) {
        const std::size_t frame = readHead(bytes).size();
        bytes += frame;
        size -= frame;
        ++frames;
    }
    return frames;
}

StreamDecoder::StreamDecoder()
    : m_block(std::make_unique<quint8[]>(blockSize))
{
}

quint8 *StreamDecoder::room()
{
    // Less than one frame is left over after the frames were taken out.
    if (m_begin > 0) {
        std::memmove(m_block.get(), m_block.get() + m_begin, pending());
        m_end = pending();
        m_begin = 0;
    }
    return m_block.get() + m_end;
}

std::size_t StreamDecoder::roomSize() const
{
    return blockSize - pending();
}

void StreamDecoder::advance(std::size_t received)
{
    m_end += std::min(received, blockSize - m_end);
}

StreamDecoder::Status StreamDecoder::next(CAN::CanMessage &message)
{
    const std::size_t size = sizeOfNext();
    if (size == 0)
        return m_fault == WireFormat::Fault::None ? Status::NeedsMore : Status::Foreign;
    decodeFrame(m_block.get() + m_begin, message);
    m_begin += size;
    return Status::Frame;
}

StreamDecoder::Bytes StreamDecoder::takeFrames()
{
    if (!takeGreeting())
        return {};
    Bytes bytes;
    bytes.begin = m_block.get() + m_begin;
    while (const std::size_t size = sizeOfNext()) {
        m_begin += size;
        bytes.size += size;
    }
    return bytes;
}

bool StreamDecoder::takeGreeting()
{
    if (m_greeted || m_fault != WireFormat::Fault::None)
        return m_greeted;
    const std::size_t compared = std::min(pending(), WireFormat::greetingSize);
    if (std::memcmp(m_block.get() + m_begin, WireFormat::greeting, compared) != 0)
        m_fault = WireFormat::Fault::Greeting;
    else if (compared == WireFormat::greetingSize) {
        m_greeted = true;
        m_begin += compared;
    }
    return m_greeted;
}

/// 0 if there is no whole frame, or never will be one.
std::size_t StreamDecoder::sizeOfNext()
{
    if (!takeGreeting() || m_fault != WireFormat::Fault::None || pending() < headSize)
        return 0;
    const FrameHead head = readHead(m_block.get() + m_begin);
    m_fault = check(head);
    return m_fault == WireFormat::Fault::None && pending() >= head.size() ? head.size() : 0;
}
