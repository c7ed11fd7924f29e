#pragma once

#include "canrecords.h"

#include <QString>
#include <QStringList>

/// The lines of a log written and read the plain way, by QString's own means: what the hand-written code has to agree
/// with, and to be faster than.
namespace PlainLogText {

inline QByteArray messageLine(const CAN::CanRxMessage &record)
{
    const CAN::CanMessage &frame = record.message;
    QString line = QStringLiteral(" %1.%2 0x%3/%4 (%5): ")
                       .arg(record.timeStamp.seconds, 3)
                       .arg(record.timeStamp.microseconds, 6, 10, QLatin1Char('0'))
                       .arg(frame.id, 3, 16, QLatin1Char('0'))
                       .arg(frame.id, -4)
                       .arg(frame.length);
    if (frame.rtr)
        line += QStringLiteral("Remote Transmission Request");
    else
        line += QString::fromLatin1(frame.dataToByteArray(0, -1, true).toHex(' '));
    const int flags = int(frame.ext) + 2 * int(frame.fd) + 4 * int(frame.brs) + 8 * int(frame.extraFlag);
    line += QLatin1Char(';') + QString::number(flags) + QLatin1Char('\n');
    return line.toLatin1();
}
} // namespace PlainLogText
