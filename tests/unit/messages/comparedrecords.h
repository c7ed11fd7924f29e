#pragma once

#include "canrawcomparemessage.h"

#include <QtTest>

/// Every field, so that a record can be compared whole and shows itself where a comparison fails.
inline QString allFields(const CANRAW::CanRawCompareMessage &message)
{
    QString bits;
    for (int i = 0; i < message.consideration.size(); ++i)
        bits += QLatin1Char(message.consideration.testBit(i) ? '1' : '0');
    QStringList ids;
    for (const unsigned int id : message.extraIds)
        ids += QString::number(id, 16);
    const auto number = [](double value) { return QString::number(value, 'g', 17); };
    return QStringList{
        QStringLiteral("valid %1").arg(message.valid),
        QStringLiteral("id 0x%1 set %2").arg(message.id.value, 0, 16).arg(message.id.isSet),
        QStringLiteral("length %1 set %2").arg(message.length.value).arg(message.length.isSet),
        QStringLiteral("data %1%2")
            .arg(QLatin1String(message.data.toHex()), QLatin1String(message.data.isNull() ? "null" : "")),
        QStringLiteral("consideration %1").arg(bits),
        QStringLiteral("rtr %1 ext %2 fd %3 brs %4").arg(message.rtr).arg(message.ext).arg(message.fd).arg(message.brs),
        QStringLiteral("extra %1 %2 %3 %4 %5 %6 %7 %8")
            .arg(message.extraInt1)
            .arg(number(message.extraReal1))
            .arg(message.extraInt2)
            .arg(number(message.extraReal2))
            .arg(message.extraInt3)
            .arg(number(message.extraReal3), number(message.extraReal4), number(message.extraReal5)),
        QStringLiteral("ids %1").arg(ids.join(QLatin1Char(' '))),
    }
        .join(QLatin1String("\n"));
}

/// Bits as a text of 0 and 1, the first bit first.
inline QBitArray bitsOf(const char *text)
{
    QBitArray bits(static_cast<int>(qstrlen(text)));
    for (int i = 0; i < bits.size(); ++i)
        bits.setBit(i, text[i] == '1');
    return bits;
}

inline QBitArray setBits(int count)
{
    return QBitArray(count, true);
}
