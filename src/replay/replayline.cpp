#include "replayline.h"

#include <algorithm>

namespace {
constexpr unsigned decimal = 10;
constexpr unsigned hexadecimal = 16;

/// The parts of a text between blanks, without empty ones, in one pass and without a copy.
class Words
{
public:
    explicit Words(QStringView text)
        : m_next(text.begin())
        , m_end(text.end())
    {
    }

    /// Empty when there is none left.
    QStringView next()
    {
        m_next = std::find_if(m_next, m_end, [](QChar c) { return c != QLatin1Char(' '); });
        const auto begin = m_next;
        m_next = std::find(m_next, m_end, QLatin1Char(' '));
        return {begin, m_next};
    }

private:
    QStringView::const_iterator m_next;
    QStringView::const_iterator m_end;
};

/// The parts of a line between semicolons, empty ones not counted.
struct Fields
{
    explicit Fields(QStringView line)
    {
        while (!line.isEmpty()) {
            const QStringView field = line.left(std::find(line.begin(), line.end(), QLatin1Char(';')) - line.begin());
            if (!field.isEmpty()) {
                ++count;
                last = field;
                if (count == 1)
                    first = field;
            }
            line = line.mid(std::min(field.size() + 1, line.size()));
        }
    }

    int count = 0;
    QStringView first;
    QStringView last;
};

/// What each character of ASCII is worth as a digit of any base up to 16; more than a digit for what is none.
struct DigitValues
{
    constexpr DigitValues()
    {
        for (quint8 &value : values)
            value = none;
        for (quint8 digit = 0; digit < decimal; ++digit)
            values['0' + digit] = digit;
        for (quint8 digit = decimal; digit < hexadecimal; ++digit) {
            values['a' + digit - decimal] = digit;
            values['A' + digit - decimal] = digit;
        }
    }

    static constexpr quint8 none = 0xFF;
    quint8 values[128] = {};
};
constexpr DigitValues digitValues;

unsigned digitOf(QChar character)
{
    const ushort code = character.unicode();
    return code < std::size(digitValues.values) ? digitValues.values[code] : DigitValues::none;
}

/// Reads what nearly all numbers of a recording are: a few digits of a known base, too few to overflow. False for
/// all others, which are left to QString with its signs, blanks and prefixes.
bool readPlainNumber(QStringView text, unsigned base, quint32 &number)
{
    constexpr int safeDigits = 8;
    if (text.isEmpty() || text.size() > safeDigits)
        return false;
    quint32 value = 0;
    for (const QChar character : text) {
        const unsigned digit = digitOf(character);
        if (digit >= base)
            return false;
        value = value * base + digit;
    }
    number = value;
    return true;
}

qint32 signedNumber(QStringView text)
{
    quint32 number = 0;
    return readPlainNumber(text, decimal, number) ? static_cast<qint32>(number) : text.toString().toInt();
}

quint32 unsignedNumber(QStringView text, unsigned base)
{
    quint32 number = 0;
    return readPlainNumber(text, base, number) ? number : text.toString().toUInt(nullptr, static_cast<int>(base));
}

quint32 hexadecimalNumber(QStringView text)
{
    const bool prefixed = text.size() > 2 && text[0] == QLatin1Char('0') && text[1] == QLatin1Char('x');
    quint32 number = 0;
    return readPlainNumber(prefixed ? text.mid(2) : text, hexadecimal, number)
        ? number
        : text.toString().toUInt(nullptr, hexadecimal);
}

quint8 byteOf(QStringView text)
{
    return static_cast<quint8>(unsignedNumber(text, hexadecimal));
}

/// From behind the bracket that opens to the first one that closes.
quint8 bracketedLength(QStringView text)
{
    const auto end = std::find(text.begin(), text.end(), QLatin1Char(')'));
    const QStringView number = text.left(end - text.begin()).mid(std::min<qsizetype>(1, end - text.begin()));
    // A zero at the front may mean another base than ten.
    const bool startsBase = number.size() > 1 && number[0] == QLatin1Char('0');
    quint32 length = 0;
    if (startsBase || !readPlainNumber(number, decimal, length))
        length = number.toString().toUInt(nullptr, 0);
    return static_cast<quint8>(length);
}

QStringView beforeSlash(QStringView text)
{
    return text.left(std::find(text.begin(), text.end(), QLatin1Char('/')) - text.begin());
}

/// False unless there is exactly one point.
bool readTime(QStringView text, CanTimeStamp &stamp)
{
    const auto point = std::find(text.begin(), text.end(), QLatin1Char('.'));
    if (point == text.end() || std::find(point + 1, text.end(), QLatin1Char('.')) != text.end())
        return false;
    stamp.seconds = signedNumber({text.begin(), point});
    stamp.microseconds = signedNumber({point + 1, text.end()});
    return true;
}

/// Data as far as the length goes, unless somewhere among them stands that the frame is a remote one.
void readLogData(Words words, CAN::CanMessage &frame)
{
    const int wanted = std::min<int>(frame.length, CAN::maxDataLength);
    int count = 0;
    for (QStringView word = words.next(); !word.isEmpty(); word = words.next()) {
        if (word == QLatin1String("Remote")) {
            frame.rtr = true;
            std::fill(std::begin(frame.data), std::end(frame.data), quint8(0));
            return;
        }
        if (count < wanted)
            frame.data[count++] = byteOf(word);
    }
}

void setFlags(quint32 flags, CAN::CanMessage &frame)
{
    frame.ext = (flags & 1U) != 0;
    frame.fd = (flags & 2U) != 0;
    frame.brs = (flags & 4U) != 0;
    frame.extraFlag = (flags & 8U) != 0;
}

/// False if the line is not one of a log.
bool readLogLine(QStringView line, ReplayLine &result)
{
    const Fields fields(line);
    Words words(fields.count == 2 ? fields.first : line);
    const QStringView time = words.next();
    const QStringView identifier = words.next();
    const QStringView length = words.next();
    if (!length.endsWith(QLatin1String("):")))
        return false;
    if (!readTime(time, result.message.timeStamp)) {
        result.kind = ReplayLine::BrokenTime;
        return true;
    }
    result.kind = ReplayLine::Frame;
    CAN::CanMessage &frame = result.message.message;
    frame.length = bracketedLength(length);
    frame.id = hexadecimalNumber(beforeSlash(identifier));
    readLogData(words, frame);
    setFlags(unsignedNumber(fields.last, decimal), frame);
    return true;
}

/// The first five parts between tabs; false if there are fewer.
bool takeColumns(QStringView line, QStringView (&columns)[5])
{
    for (QStringView &column : columns) {
        if (line.isNull())
            return false;
        const auto tab = std::find(line.begin(), line.end(), QLatin1Char('\t'));
        column = {line.begin(), tab};
        line = tab == line.end() ? QStringView() : QStringView(tab + 1, line.end());
    }
    return true;
}

void readTabLine(QStringView line, ReplayLine &result)
{
    QStringView columns[5];
    if (!takeColumns(line, columns))
        return;
    result.tabbed = true;
    result.tabData = columns[4];
    if (!readTime(columns[0], result.message.timeStamp)) {
        result.kind = ReplayLine::BrokenTime;
        return;
    }
    result.kind = ReplayLine::Frame;
    CAN::CanMessage &frame = result.message.message;
    frame.id = unsignedNumber(beforeSlash(columns[1]), decimal);
    int count = 0;
    Words words(columns[4]);
    for (QStringView word = words.next(); !word.isEmpty(); word = words.next(), ++count) {
        if (count < CAN::maxDataLength)
            frame.data[count] = byteOf(word);
    }
    frame.length = static_cast<quint8>(count);
}
} // namespace

ReplayLine parseReplayLine(QStringView line)
{
    ReplayLine result;
    if (!readLogLine(line, result))
        readTabLine(line, result);
    return result;
}
