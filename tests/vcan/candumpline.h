#pragma once

#include "plainlogtext.h"

/// A line as `candump -L` writes it: "(1000.001000) vcan0 123##5AABB".
struct CandumpLine
{
    CanTimeStamp time;
    QString frame; ///< "123##5AABB"

    static CandumpLine parse(const QString &line)
    {
        const QString time = line.section(QLatin1Char(' '), 0, 0).mid(1);
        return {{time.section(QLatin1Char('.'), 0, 0).toInt(), time.section(QLatin1Char('.'), 1, 1).left(6).toInt()},
                line.section(QLatin1Char(' '), 2)};
    }

    CAN::CanMessage message() const
    {
        CAN::CanMessage result;
        const QString id = frame.section(QLatin1Char('#'), 0, 0);
        QString data = frame.mid(id.size() + 1);
        result.id = id.toUInt(nullptr, 16);
        result.ext = id.size() > 3;
        result.fd = data.startsWith(QLatin1Char('#'));
        if (result.fd) {
            const uint flags = data.midRef(1, 1).toUInt(nullptr, 16);
            result.brs = (flags & 1) != 0;
            result.extraFlag = (flags & 2) != 0;
            data.remove(0, 2);
        }
        result.rtr = data.startsWith(QLatin1Char('R'));
        if (result.rtr) {
            result.length = static_cast<quint8>(data.midRef(1).toUInt());
            return result;
        }
        const QByteArray bytes = QByteArray::fromHex(data.toLatin1());
        result.length = static_cast<quint8>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), result.data);
        return result;
    }

    /// The same, as our log has it.
    QByteArray logLine() const { return PlainLogText::messageLine({time, message()}); }
};
