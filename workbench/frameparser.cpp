#include "frameparser.h"

#include "frametext.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>

namespace {
constexpr quint32 maxStandardIdentifier = 0x7FF;
constexpr quint32 maxExtendedIdentifier = 0x1FFFFFFF;

/// Room for the sentences that stand for the user.
struct FrameParser
{
    Q_DECLARE_TR_FUNCTIONS(FrameParser)
};

FrameParse failure(FrameParse::Field field, const QString &error)
{
    FrameParse parse;
    parse.field = field;
    parse.error = error;
    return parse;
}

/// The digits of an identifier without the decorations that people write around them.
QString bareIdentifier(const QString &text)
{
    QString digits = text.trimmed();
    if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        digits.remove(0, 2);
    else if (digits.endsWith(QLatin1Char('h'), Qt::CaseInsensitive)
             || digits.endsWith(QLatin1Char('x'), Qt::CaseInsensitive))
        digits.chop(1);
    return digits;
}

bool isHexDigit(QChar character)
{
    const QChar lower = character.toLower();
    return (character >= QLatin1Char('0') && character <= QLatin1Char('9'))
        || (lower >= QLatin1Char('a') && lower <= QLatin1Char('f'));
}

bool isHex(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), isHexDigit);
}

FrameParse parseIdentifier(const FrameInput &input)
{
    const QString digits = bareIdentifier(input.identifier);
    if (digits.isEmpty())
        return failure(FrameParse::IdentifierField, FrameParser::tr("Enter an identifier, for example 123."));
    if (!isHex(digits)) {
        return failure(FrameParse::IdentifierField,
                       FrameParser::tr("The identifier takes hexadecimal digits only: 0 to 9 and A to F."));
    }
    bool fits = false;
    const quint32 id = digits.toUInt(&fits, 16);
    if (!fits || id > maxExtendedIdentifier)
        return failure(FrameParse::IdentifierField, FrameParser::tr("The largest identifier is 1FFFFFFF."));
    if (id > maxStandardIdentifier && !input.extended) {
        return failure(FrameParse::IdentifierField,
                       FrameParser::tr("Identifiers above 7FF need 29 bits: switch on \"Extended\"."));
    }
    // So that an identifier copied from the trace does not quietly become another one.
    if (!input.extended && input.identifier.trimmed().endsWith(QLatin1Char('x'), Qt::CaseInsensitive)) {
        return failure(FrameParse::IdentifierField,
                       FrameParser::tr("The x marks an identifier of 29 bits: switch on \"Extended\"."));
    }
    FrameParse parse;
    parse.message.id = id;
    return parse;
}

FrameParse parseFlags(const FrameInput &input)
{
    if (input.remote && input.fd) {
        return failure(FrameParse::FlagsField,
                       FrameParser::tr("CAN FD has no remote frames: switch off \"Remote\" or \"CAN FD\"."));
    }
    if (input.bitRateSwitch && !input.fd) {
        return failure(FrameParse::FlagsField,
                       FrameParser::tr("Only CAN FD frames switch the bit rate: switch on \"CAN FD\"."));
    }
    return {};
}

bool isFrameLength(int length, bool fd)
{
    if (length <= CAN::maxClassicDataLength)
        return true;
    return fd && length <= CAN::maxDataLength && canFdDataLengths.contains(static_cast<quint8>(length));
}

QString lengthError(int length, bool fd)
{
    if (!fd && length > CAN::maxDataLength)
        return FrameParser::tr("These are %1 bytes; a frame holds at most 8.").arg(length);
    if (!fd) {
        return FrameParser::tr("These are %1 bytes; a classic frame holds at most 8. Switch on \"CAN FD\" for more.")
            .arg(length);
    }
    const auto next = std::find_if(canFdDataLengths.cbegin(), canFdDataLengths.cend(),
                                   [length](quint8 possible) { return possible > length; });
    if (next == canFdDataLengths.cend())
        return FrameParser::tr("These are %1 bytes; a CAN FD frame holds at most 64.").arg(length);
    return FrameParser::tr("CAN FD has no frames of %1 bytes: fill up to %2.").arg(length).arg(*next);
}

/// One word of digits as bytes: a single digit is a byte of its own, an odd number of several is a slip.
bool appendBytes(const QString &word, QByteArray &bytes)
{
    if (word.size() > 1 && word.size() % 2 != 0)
        return false;
    bytes += QByteArray::fromHex((word.size() == 1 ? QLatin1Char('0') + word : word).toLatin1());
    return true;
}

FrameParse parseData(const FrameInput &input)
{
    static const QRegularExpression separators(QStringLiteral("[\\s,;:.\\-]+"));
    const QStringList words = input.data.split(separators, Qt::SkipEmptyParts);
    if (input.remote && !words.isEmpty())
        return failure(FrameParse::DataField, FrameParser::tr("A remote frame carries no data: clear the field."));
    QByteArray bytes;
    for (const QString &word : words) {
        const bool prefixed = word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
        const QString digits = prefixed ? word.mid(2) : word;
        if (digits.isEmpty() || !isHex(digits)) {
            return failure(FrameParse::DataField,
                           FrameParser::tr("Data are bytes in hexadecimal, for example 01 A0 FF."));
        }
        if (!appendBytes(digits, bytes)) {
            return failure(FrameParse::DataField,
                           FrameParser::tr("\"%1\" has a digit too many or too few: a byte has two.").arg(word));
        }
    }
    if (!isFrameLength(bytes.size(), input.fd))
        return failure(FrameParse::DataField, lengthError(bytes.size(), input.fd));
    FrameParse parse;
    parse.message.length = static_cast<quint8>(bytes.size());
    std::copy(bytes.cbegin(), bytes.cend(), parse.message.data);
    return parse;
}
} // namespace

FrameParse parseFrame(const FrameInput &input)
{
    FrameParse identifier = parseIdentifier(input);
    if (!identifier.isValid())
        return identifier;
    FrameParse flags = parseFlags(input);
    if (!flags.isValid())
        return flags;
    FrameParse frame = parseData(input);
    if (!frame.isValid())
        return frame;
    frame.message.id = identifier.message.id;
    frame.message.ext = input.extended;
    frame.message.rtr = input.remote;
    frame.message.fd = input.fd;
    frame.message.brs = input.bitRateSwitch;
    return frame;
}

FrameInput inputFor(const CAN::CanMessage &message)
{
    FrameInput input;
    // The field has a box of its own for what the "x" says.
    input.identifier = FrameText::identifier(message).remove(QLatin1Char('x'));
    input.data = FrameText::data(message);
    input.extended = message.ext;
    input.remote = message.rtr;
    input.fd = message.fd;
    input.bitRateSwitch = message.brs;
    return input;
}
