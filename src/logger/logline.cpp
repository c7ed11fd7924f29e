#include "logline.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

namespace {
constexpr int decimal = 10;
constexpr int hexadecimal = 16;
// The longest line: stamps of 11 characters, an identifier of 8 and of 10, a length of 3, 191 for
// 64 bytes of data, a flag number of 2, and 13 around them, make 249.
constexpr std::size_t lineCapacity = 256;

/// Each byte as it stands in a line: two digits and a blank. One more character makes it a word of the machine, which is
/// copied at once, and the next byte overwrites it.
constexpr std::size_t byteTextSize = 3;
constexpr std::size_t copiedTextSize = 4;
struct ByteTexts
{
    constexpr ByteTexts()
    {
        constexpr char digits[] = "0123456789abcdef";
        for (unsigned byte = 0; byte < 256; ++byte) {
            texts[byte][0] = digits[byte >> 4U];
            texts[byte][1] = digits[byte & 0xFU];
            texts[byte][2] = ' ';
        }
    }

    char texts[256][copiedTextSize] = {};
};
constexpr ByteTexts byteTexts;

enum class Alignment { Left, Right };

/// A line in the making. Log lines are made by the ten thousand each second, beside the user interface: so each number
/// is written straight to where it belongs, and only the finished line is copied.
class Line
{
public:
    void add(char character) { *m_end++ = character; }

    void add(std::string_view text)
    {
        std::memcpy(m_end, text.data(), text.size());
        m_end += text.size();
    }

    template <typename Number>
    void add(Number number, int base)
    {
        m_end = std::to_chars(m_end, m_text + lineCapacity, number, base).ptr;
    }

    /// Widened by `fill` on the side that is not aligned. Zeros go between the sign and the digits, and count with it.
    template <typename Number>
    void add(Number number, int base, int width, char fill, Alignment alignment = Alignment::Right)
    {
        char *const begin = m_end;
        add(number, base);
        const std::ptrdiff_t missing = width - (m_end - begin);
        if (missing <= 0)
            return;
        char *const place = alignment == Alignment::Left ? m_end : begin + (fill == '0' && *begin == '-' ? 1 : 0);
        std::memmove(place + missing, place, static_cast<std::size_t>(m_end - place));
        std::fill_n(place, missing, fill);
        m_end += missing;
    }

    /// In hexadecimal, with a blank between bytes.
    void addBytes(const quint8 *bytes, int count)
    {
        if (count == 0)
            return;
        // In a local variable: characters may be anything, even the member, which would be read anew each time.
        char *end = m_end;
        for (int i = 0; i < count; ++i) {
            std::memcpy(end, byteTexts.texts[bytes[i]], copiedTextSize);
            end += byteTextSize;
        }
        m_end = end - 1;
    }

    QByteArray toByteArray() const { return {m_text, static_cast<int>(m_end - m_text)}; }

private:
    char m_text[lineCapacity];
    char *m_end = m_text;
};

unsigned flagNumber(const CAN::CanMessage &message)
{
    return (message.ext ? 1U : 0U) | (message.fd ? 2U : 0U) | (message.brs ? 4U : 0U) | (message.extraFlag ? 8U : 0U);
}
} // namespace

QByteArray logHeaderLine()
{
    return QByteArrayLiteral("# timestamp id (dlc): data\n");
}

QByteArray logMessageLine(const CAN::CanRxMessage &message)
{
    const CAN::CanMessage &frame = message.message;
    Line line;
    line.add(' ');
    line.add(message.timeStamp.seconds, decimal, 3, ' ');
    line.add('.');
    line.add(message.timeStamp.microseconds, decimal, 6, '0');
    line.add(" 0x");
    line.add(frame.id, hexadecimal, 3, '0');
    line.add('/');
    line.add(frame.id, decimal, 4, ' ', Alignment::Left);
    line.add(" (");
    line.add(unsigned{frame.length}, decimal);
    line.add("): ");
    if (frame.rtr)
        line.add("Remote Transmission Request");
    else
        line.addBytes(frame.data, std::min<int>(frame.length, CAN::maxDataLength));
    line.add(';');
    line.add(flagNumber(frame), decimal);
    line.add('\n');
    return line.toByteArray();
}

QByteArray logStopIdentifierLine(quint32 id)
{
    return QStringLiteral("# Stop CAN ID (0x%1) detected\n").arg(id, 3, hexadecimal, QLatin1Char('0')).toLatin1();
}

QByteArray logStopMessageLine()
{
    return QByteArrayLiteral("# Stop CAN Message detected\n");
}

QByteArray logConnectionLostLine()
{
    return QByteArrayLiteral("CAN connection lost\n");
}
