#pragma once

#include "canrawcomparemessage.h"

#include <cstring>

/// Reads the byte form one field at a time and byte by byte, with no care for speed: what the real reader is held
/// against where the bytes are damaged.
class RecordReader
{
public:
    explicit RecordReader(const QByteArray &bytes)
        : m_rest(bytes)
    {
    }

    CANRAW::CanRawCompareMessage read()
    {
        CANRAW::CanRawCompareMessage message(false);
        message.valid = number(1) != 0;
        message.id.value = static_cast<quint32>(number(4));
        message.id.isSet = number(1) != 0;
        const quint64 length = number(1);
        message.length.isSet = length < 128;
        message.length.value = message.length.isSet ? static_cast<quint8>(length) : 0;
        message.data = array();
        message.consideration = bits();
        while (message.consideration.size() < message.data.size())
            message.consideration.resize(message.consideration.size() + 1);
        for (qint32 *field : {&message.rtr, &message.ext, &message.fd, &message.brs, &message.extraInt1})
            *field = integer();
        message.extraReal1 = real();
        message.extraInt2 = integer();
        message.extraReal2 = real();
        message.extraInt3 = integer();
        for (double *field : {&message.extraReal3, &message.extraReal4, &message.extraReal5})
            *field = real();
        message.extraIds = ids();
        return message;
    }

private:
    /// Too few bytes are lost, and read as 0.
    QByteArray take(quint64 length)
    {
        const bool enough = length <= quint64(m_rest.size());
        const QByteArray taken = enough ? m_rest.left(int(length)) : QByteArray();
        m_rest.remove(0, enough ? int(length) : m_rest.size());
        return taken;
    }

    quint64 number(int width)
    {
        quint64 value = 0;
        for (const char byte : take(quint64(width)))
            value = value << 8 | static_cast<quint8>(byte);
        return value;
    }

    qint32 integer() { return static_cast<qint32>(number(4)); }

    double real()
    {
        const quint64 pattern = number(8);
        double value = 0;
        std::memcpy(&value, &pattern, sizeof value);
        return value;
    }

    QByteArray array()
    {
        const quint64 count = number(4);
        if (count == 0xFFFFFFFF)
            return {};
        return count == 0 ? QByteArray("") : take(count);
    }

    QBitArray bits()
    {
        const quint64 count = number(4);
        const QByteArray bytes = take((count + 7) / 8);
        QBitArray result(bytes.isEmpty() ? 0 : int(count));
        for (int i = 0; i < bytes.size() * 8; ++i) {
            const bool bit = bytes.at(i / 8) & 1 << i % 8;
            if (i < result.size())
                result.setBit(i, bit);
            else if (bit) // no writer sets what lies behind the last bit: the whole array counts as damaged
                return {};
        }
        return result;
    }

    QList<unsigned int> ids()
    {
        QList<unsigned int> result;
        const quint64 count = number(4);
        for (quint64 i = 0; i < count; ++i) {
            if (m_rest.size() < 4)
                return {};
            result.append(static_cast<unsigned int>(number(4)));
        }
        return result;
    }

    QByteArray m_rest;
};
