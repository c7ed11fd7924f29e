#pragma once

#include "fakeadapter.h"

#include <vector>

/// The classic frame that frameText() writes as `text`: "602#40001000", or "00000602#40" with a 29-bit identifier, or
/// "602#R" for a remote one.
inline CAN::CanMessage frame(const QString &text)
{
    CAN::CanMessage message;
    const int separator = text.indexOf(QLatin1Char('#'));
    message.id = text.left(separator).toUInt(nullptr, 16);
    message.ext = separator == 8;
    const QString content = text.mid(separator + 1);
    message.rtr = content == QLatin1String("R");
    if (message.rtr)
        return message;
    const QByteArray bytes = QByteArray::fromHex(content.toLatin1());
    message.length = static_cast<quint8>(bytes.size());
    std::copy(bytes.cbegin(), bytes.cend(), message.data);
    return message;
}

inline QStringList frameTexts(const std::vector<CAN::CanMessage> &messages)
{
    QStringList texts;
    for (const CAN::CanMessage &message : messages)
        texts.append(frameText(message));
    return texts;
}
