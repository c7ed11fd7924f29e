#include "hextext.h"

#include <QLatin1String>

namespace {
const QLatin1String digits("0123456789abcdef");

QChar highDigit(char byte)
{
    return digits[uchar(byte) >> 4U];
}

QChar lowDigit(char byte)
{
    return digits[uchar(byte) & 0xFU];
}

int digitValue(char digit)
{
    return digit <= '9' ? digit - '0' : digit - 'a' + 10;
}
} // namespace

QChar printable(char byte)
{
    return QLatin1Char(byte >= 0x20 && byte <= 0x7E ? byte : '.');
}

QString hexDigits(char byte)
{
    const QChar both[] = {highDigit(byte), lowDigit(byte)};
    return QString(both, 2);
}

char withDigit(char byte, bool highDigit, char digit)
{
    const int value = digitValue(digit);
    return char(highDigit ? (value << 4) | (byte & 0x0F) : (byte & 0xF0) | value);
}

QString addressText(int offset, int position, int width)
{
    return QStringLiteral("%1").arg(quint32(offset) + quint32(position), width, 16, QLatin1Char('0'));
}

QString dumpLine(const QString &address, const QByteArray &bytes)
{
    constexpr int hexField = 3 * dumpBytesPerLine;
    constexpr int textField = dumpBytesPerLine + 1;
    QString hex;
    QString text;
    hex.reserve(hexField);
    text.reserve(textField);
    for (const char byte : bytes) {
        hex += QLatin1Char(' ');
        hex += highDigit(byte);
        hex += lowDigit(byte);
        text += printable(byte);
    }
    return address + QLatin1Char(' ') + hex.leftJustified(hexField) + QLatin1String("  ")
        + text.leftJustified(textField) + QLatin1Char('\n');
}

QString clipboardText(const QByteArray &bytes, int firstIndex)
{
    QString text;
    text.reserve(3 * bytes.size() + bytes.size() / 16 + 1);
    int index = firstIndex;
    for (const char byte : bytes) {
        text += highDigit(byte);
        text += lowDigit(byte);
        text += QLatin1Char(' ');
        if (index++ % 16 == 15)
            text += QLatin1Char('\n');
    }
    return text;
}
