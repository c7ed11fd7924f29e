#pragma once

#include "byteorder.h"

#include <QByteArray>
#include <QtEndian>

/// Puts captures together, byte by byte, as other programs write them.
class CaptureBuilder
{
public:
    explicit CaptureBuilder(ByteOrder::Order order = ByteOrder::Little)
        : m_order(order)
    {
    }

    static constexpr quint16 can = 227;
    static constexpr quint16 ethernet = 1;

    template <typename Number>
    QByteArray number(Number value) const
    {
        QByteArray bytes(sizeof value, '\0');
        m_order == ByteOrder::Big ? qToBigEndian(value, bytes.data()) : qToLittleEndian(value, bytes.data());
        return bytes;
    }
    QByteArray u16(quint16 value) const { return number(value); }
    QByteArray u32(quint32 value) const { return number(value); }
    QByteArray u64(quint64 value) const { return number(value); }

    static QByteArray padded(QByteArray bytes) { return bytes.append((4 - bytes.size() % 4) % 4, '\0'); }

    QByteArray block(quint32 type, const QByteArray &body) const
    {
        const auto length = static_cast<quint32>(body.size()) + 12;
        return u32(type) + u32(length) + body + u32(length);
    }
    QByteArray option(quint16 code, const QByteArray &value) const
    {
        return u16(code) + u16(static_cast<quint16>(value.size())) + padded(value);
    }
    QByteArray comment(const QByteArray &text) const { return option(1, text); }

    QByteArray section(const QByteArray &options = {}, quint16 version = 1) const
    {
        return block(0x0A0D0D0A, u32(0x1A2B3C4D) + u16(version) + u16(0) + u64(~quint64(0)) + options);
    }
    QByteArray interface(quint16 linkType = can, const QByteArray &options = {}, quint32 snapLength = 0) const
    {
        return block(1, u16(linkType) + u16(0) + u32(snapLength) + options);
    }
    QByteArray packet(quint64 ticks, const QByteArray &bytes, const QByteArray &options = {},
                      quint32 interface = 0) const
    {
        return block(6, u32(interface) + time(ticks) + sizes(bytes) + padded(bytes) + options);
    }
    QByteArray obsoletePacket(quint64 ticks, const QByteArray &bytes, const QByteArray &options = {}) const
    {
        return block(2, u16(0) + u16(5) + time(ticks) + sizes(bytes) + padded(bytes) + options);
    }
    QByteArray simplePacket(const QByteArray &bytes, quint32 originalSize) const
    {
        return block(3, u32(originalSize) + padded(bytes));
    }
    QByteArray statistics(const QByteArray &options) const { return block(5, u32(0) + time(0) + options); }

    QByteArray pcap(quint32 magic, quint32 linkType = can) const
    {
        return u32(magic) + u16(2) + u16(4) + u64(0) + u32(262144) + u32(linkType);
    }
    QByteArray pcapPacket(quint32 seconds, quint32 fraction, const QByteArray &bytes) const
    {
        return u32(seconds) + u32(fraction) + sizes(bytes) + bytes;
    }

    /// A classic frame of the identifier with one byte of data.
    static QByteArray frame(quint32 id) { return CaptureBuilder(ByteOrder::Big).u32(id) + QByteArray("\1\0\0\0x", 5); }

private:
    QByteArray time(quint64 ticks) const { return u32(quint32(ticks >> 32)) + u32(quint32(ticks)); }
    QByteArray sizes(const QByteArray &bytes) const
    {
        return u32(static_cast<quint32>(bytes.size())) + u32(static_cast<quint32>(bytes.size()));
    }

    ByteOrder::Order m_order;
};
