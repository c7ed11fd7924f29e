#pragma once

#include <QtEndian>

/// Reads numbers in the byte order of a file.
class ByteOrder
{
public:
    enum Order { Little, Big };

    constexpr ByteOrder(Order order = Little) // NOLINT(google-explicit-constructor): an order is all it is
        : m_big(order == Big)
    {
    }

    quint16 u16(const uchar *bytes) const { return read<quint16>(bytes); }
    quint32 u32(const uchar *bytes) const { return read<quint32>(bytes); }
    quint64 u64(const uchar *bytes) const { return read<quint64>(bytes); }

private:
    template <typename Number>
    Number read(const uchar *bytes) const
    {
        return m_big ? qFromBigEndian<Number>(bytes) : qFromLittleEndian<Number>(bytes);
    }

    bool m_big;
};
