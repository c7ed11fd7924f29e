#include "messagetemplate.h"

#include "frametext.h"

#include <QCoreApplication>

#include <algorithm>

namespace {
constexpr quint32 maxStandardIdentifier = 0x7FF;
constexpr int maxClassicBytes = 8;
constexpr int maxBytes = 64;

struct Template
{
    Q_DECLARE_TR_FUNCTIONS(MessageTemplate)
};

qint32 flag(bool set)
{
    return set ? Qt::Checked : Qt::Unchecked;
}

bool isExtended(const CANRAW::CanRawCompareMessage &pattern)
{
    return pattern.ext == Qt::Checked || pattern.id.value > maxStandardIdentifier;
}

int lengthOf(const CANRAW::CanRawCompareMessage &pattern)
{
    if (pattern.length.isSet)
        return std::min<int>(pattern.length.value, maxBytes);
    const auto last = std::find_if(pattern.data.crbegin(), pattern.data.crend(), [](char byte) { return byte != 0; });
    return std::min<int>(static_cast<int>(std::distance(last, pattern.data.crend())), maxBytes);
}

QByteArray bytesOf(const CANRAW::CanRawCompareMessage &pattern)
{
    const int length = lengthOf(pattern);
    return pattern.data.left(length).append(QByteArray(std::max(0, length - pattern.data.size()), '\0'));
}

QString kindText(const CANRAW::CanRawCompareMessage &pattern)
{
    const struct
    {
        qint32 state;
        QString name;
    } flags[] = {
        {pattern.fd, QStringLiteral("CAN FD")},
        {pattern.brs, QStringLiteral("BRS")},
        {pattern.rtr, Template::tr("remote")},
    };
    QStringList names;
    for (const auto &flag : flags) {
        if (flag.state == Qt::Checked)
            names.append(flag.name);
    }
    return names.join(QLatin1Char(' '));
}

/// The bytes as far as the last one that counts.
QString bytesText(const CANRAW::CanRawCompareMessage &pattern)
{
    const int end = std::min(pattern.consideration.size(), pattern.length.isSet ? int(pattern.length.value) : maxBytes);
    QStringList bytes;
    int counted = 0;
    for (int i = 0; i < end && i < maxBytes; ++i) {
        const bool considered = pattern.consideration.testBit(i);
        const auto byte = static_cast<quint8>(i < pattern.data.size() ? pattern.data[i] : 0);
        bytes.append(considered ? QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper()
                                : QStringLiteral("XX"));
        if (considered)
            counted = i + 1;
    }
    return bytes.mid(0, counted).join(QLatin1Char(' '));
}
} // namespace

namespace MessageTemplate {

CANRAW::CanRawCompareMessage fromFrame(const CAN::CanMessage &frame)
{
    CANRAW::CanRawCompareMessage pattern;
    pattern.id = {frame.id, true};
    pattern.length = {frame.length, true};
    pattern.data = frame.dataToByteArray();
    pattern.consideration = QBitArray(pattern.data.size(), true);
    pattern.rtr = flag(frame.rtr);
    pattern.ext = flag(frame.ext);
    pattern.fd = flag(frame.fd);
    pattern.brs = flag(frame.brs);
    return pattern;
}

CANRAW::CanRawCompareMessage forEveryFrame()
{
    CANRAW::CanRawCompareMessage pattern(false);
    pattern.valid = true;
    pattern.length = {0, false};
    pattern.data = QByteArray(maxBytes, '\0');
    return pattern;
}

CANRAW::CanRawCompareMessage forIdentifier(const CAN::CanMessage &frame)
{
    CANRAW::CanRawCompareMessage pattern = forEveryFrame();
    pattern.id = {frame.id, true};
    pattern.ext = flag(frame.ext);
    // To start from, if the user wants to compare bytes too.
    pattern.data.replace(0, frame.dataToByteArray().size(), frame.dataToByteArray());
    return pattern;
}

FrameInput toInput(const CANRAW::CanRawCompareMessage &pattern)
{
    FrameInput input;
    input.extended = isExtended(pattern);
    if (pattern.id.isSet)
        input.identifier = FrameText::identifier(pattern.id.value, input.extended).remove(QLatin1Char('x'));
    input.data = QString::fromLatin1(bytesOf(pattern).toHex(' ')).toUpper();
    input.remote = pattern.rtr == Qt::Checked;
    input.fd = pattern.fd == Qt::Checked || lengthOf(pattern) > maxClassicBytes;
    input.bitRateSwitch = pattern.brs == Qt::Checked;
    return input;
}

QString text(const CANRAW::CanRawCompareMessage &pattern)
{
    QStringList parts;
    parts.append(pattern.id.isSet ? FrameText::identifier(pattern.id.value, isExtended(pattern))
                                  : Template::tr("any identifier"));
    parts.append(kindText(pattern));
    if (pattern.length.isSet)
        parts.append(pattern.length.value == 1 ? Template::tr("1 byte")
                                               : Template::tr("%1 bytes").arg(pattern.length.value));
    parts.append(bytesText(pattern));
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace MessageTemplate
