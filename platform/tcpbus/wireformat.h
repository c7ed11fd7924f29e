#pragma once

#include "canrecords.h"

#include <cstddef>
#include <memory>

// CAN over TCP, as bytes. On connecting, both sides send the greeting. Frames follow one another without padding:
//
//   identifier  4 bytes, big-endian, with the marks below
//   length      1 byte, data bytes of the frame, with 0x80 added for CAN FD
//   flags       1 byte, CAN FD only: 1 bit rate switch, 2 error state indicator; other bits mean nothing to us
//   data        `length` bytes; absent in remote frames, whose length is only announced
//
// Nothing here knows of sockets or threads.

namespace WireFormat {
constexpr char greeting[] = "CANNELLONIv1";
constexpr std::size_t greetingSize = sizeof(greeting) - 1;
constexpr std::size_t largestFrameSize = 4 + 1 + 1 + CAN::maxDataLength;

constexpr quint32 extendedMark = 0x80000000;
constexpr quint32 remoteMark = 0x40000000;
constexpr quint32 errorMark = 0x20000000;
constexpr quint8 fdMark = 0x80;
constexpr quint8 bitRateSwitchFlag = 1;
constexpr quint8 errorStateFlag = 2;

/// Why bytes are no traffic of a bus.
enum class Fault {
    None,
    Greeting,
    Identifier,
    ClassicLength,
    FdLength,
    FdRemote,
    FdError,
    RemoteError,
};

/// One sentence that says what is wrong, in English; empty for Fault::None.
const char *faultSentence(Fault fault);
/// The same for the user.
QString faultText(Fault fault);

/// Length and identifier lie within what the frame's kind allows, and its marks do not exclude one another. The flags of
/// CAN FD are ignored in a classic frame: recordings set them there.
bool isValidFrame(const CAN::CanMessage &message);

/// Writes one frame to `buffer`, which has room for largestFrameSize bytes.
/// @return the number of bytes written; 0 for a frame that is not valid
std::size_t encodeFrame(const CAN::CanMessage &message, quint8 *buffer);

/// The number of whole frames at the beginning of valid bytes.
quint64 countWholeFrames(const quint8 *bytes, std::size_t size);
} // namespace WireFormat

/// Takes a stream apart that begins with the greeting. Holds one block of bytes, however much comes in:
///
///     const ssize_t received = recv(socket, decoder.room(), decoder.roomSize(), 0);
///     decoder.advance(received);
///     while (decoder.next(message) == StreamDecoder::Status::Frame)
///         ...
///
/// Bytes that no bus sends end the stream for good: what came before them is still handed out, then the status is
/// Foreign and fault() says why.
class StreamDecoder
{
public:
    enum class Status { NeedsMore, Frame, Foreign };

    struct Bytes
    {
        const quint8 *begin = nullptr;
        std::size_t size = 0;
    };

    static constexpr std::size_t blockSize = 64 * 1024;

    StreamDecoder();

    /// Where the next bytes go. Never without room if next() or takeFrames() ran since the last advance().
    quint8 *room();
    std::size_t roomSize() const;
    void advance(std::size_t received);

    /// The next frame, if there is a whole one. `message` is changed only with Status::Frame.
    Status next(CAN::CanMessage &message);
    /// All whole frames that came in, checked, as they came in. Good until room() is called.
    Bytes takeFrames();

    /// Takes the greeting out, if it is there; true from then on. The functions above do so by themselves.
    bool takeGreeting();
    WireFormat::Fault fault() const { return m_fault; }
    /// Bytes of the stream that are not handed out yet.
    std::size_t pending() const { return m_end - m_begin; }

private:
    std::size_t sizeOfNext();

    std::unique_ptr<quint8[]> m_block;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_greeted = false;
    WireFormat::Fault m_fault = WireFormat::Fault::None;
};
