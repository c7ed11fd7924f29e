#pragma once

#include "canrecords.h"

#include <algorithm>

/// A data frame with the bytes of `hex`.
inline CAN::CanMessage dataFrame(quint32 id, const char *hex = "", bool extended = false)
{
    CAN::CanMessage message;
    const QByteArray bytes = QByteArray::fromHex(hex);
    message.id = id;
    message.ext = extended;
    message.length = static_cast<quint8>(bytes.size());
    std::copy(bytes.cbegin(), bytes.cend(), message.data);
    return message;
}

/// The frame as received so many microseconds after midnight.
inline CAN::CanRxMessage at(qint64 microseconds, const CAN::CanMessage &message)
{
    return {CanTimeStamp(static_cast<qint32>(microseconds / 1000000), static_cast<qint32>(microseconds % 1000000)),
            message};
}
