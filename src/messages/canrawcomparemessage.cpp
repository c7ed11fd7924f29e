#include "canrawcomparemessage.h"

#include <QDataStream>
#include <QStringList>

#include <cstddef>
#include <limits>

namespace CANRAW {

// Applications are built against this layout. Records with Qt's containers are no standard layout for the letter of
// the language, but are for every compiler that builds this library.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(CanRawCompareMessage, valid) == 0 && offsetof(CanRawCompareMessage, id) == 4);
static_assert(offsetof(OptionalNumber<quint32>, value) == 0 && offsetof(OptionalNumber<quint32>, isSet) == 4);
static_assert(offsetof(CanRawCompareMessage, length) == 12);
static_assert(offsetof(OptionalNumber<quint8>, value) == 0 && offsetof(OptionalNumber<quint8>, isSet) == 1);
static_assert(offsetof(CanRawCompareMessage, length) < offsetof(CanRawCompareMessage, data));
static_assert(offsetof(CanRawCompareMessage, data) < offsetof(CanRawCompareMessage, consideration));
static_assert(offsetof(CanRawCompareMessage, consideration) < offsetof(CanRawCompareMessage, rtr));
static_assert(offsetof(CanRawCompareMessage, ext) == offsetof(CanRawCompareMessage, rtr) + 4);
static_assert(offsetof(CanRawCompareMessage, fd) == offsetof(CanRawCompareMessage, rtr) + 8);
static_assert(offsetof(CanRawCompareMessage, brs) == offsetof(CanRawCompareMessage, rtr) + 12);
static_assert(offsetof(CanRawCompareMessage, extraInt1) == offsetof(CanRawCompareMessage, rtr) + 16);
static_assert(offsetof(CanRawCompareMessage, extraReal5) < offsetof(CanRawCompareMessage, extraIds));
#pragma GCC diagnostic pop

namespace {
constexpr int defaultConsiderationBits = 64; // one for each byte of the largest frame
constexpr qint8 unsetLength = -1;

/// What `stream` would read next, with nothing taken from it; 0 where there are no four bytes.
quint32 peekCount(QDataStream &stream)
{
    const QByteArray bytes = stream.device()->peek(sizeof(quint32));
    QDataStream ahead(bytes);
    quint32 count = 0;
    ahead >> count;
    return count;
}

/// Whether `length` bytes follow the count. If not, the stream ends here, as after any read that finds too little.
bool hasBytesBehindCount(QDataStream &stream, quint64 length)
{
    const qint64 available = stream.device()->bytesAvailable();
    if (available < qint64(sizeof(quint32)) || length <= quint64(available) - sizeof(quint32))
        return true;
    stream.device()->skip(available);
    stream.setStatus(QDataStream::ReadPastEnd);
    return false;
}

// What the bytes claim is held against what is there, before Qt makes room for it.

/// Qt would make room for the first megabyte of a claim before it finds that a few bytes are all there is.
QByteArray readData(QDataStream &stream)
{
    constexpr quint32 nullMark = 0xFFFFFFFF;
    QByteArray data;
    const quint32 count = peekCount(stream);
    if (hasBytesBehindCount(stream, count == nullMark ? 0 : count))
        stream >> data;
    return data;
}

/// Qt would make room for the first eight megabytes. From 0xFFFFFFF9 bits on, its number of bytes overflows to 0, and
/// it would give an array of negative size and read on as if all were well.
QBitArray readBits(QDataStream &stream)
{
    QBitArray bits;
    const quint64 count = peekCount(stream);
    const bool isCountable = count <= quint64(std::numeric_limits<int>::max());
    if (hasBytesBehindCount(stream, isCountable ? (count + 7) / 8 : std::numeric_limits<quint64>::max()))
        stream >> bits;
    return bits;
}

/// Qt would make room for the whole claim at once.
QList<unsigned int> readIds(QDataStream &stream)
{
    QList<unsigned int> ids;
    if (hasBytesBehindCount(stream, quint64(peekCount(stream)) * sizeof(quint32)))
        stream >> ids;
    return ids;
}

OptionalNumber<quint8> lengthFromStored(qint8 stored)
{
    if (stored < 0)
        return {};
    return {static_cast<quint8>(stored), true};
}

QString signedHexDigits(char byte)
{
    return QString::number(int(static_cast<signed char>(byte)), 16);
}
} // namespace

CanRawCompareMessage::CanRawCompareMessage(bool considerAll)
    : valid(considerAll)
    , id{0, considerAll}
    , length{0, true}
    , consideration(defaultConsiderationBits)
    , rtr(considerAll ? Qt::Unchecked : Qt::PartiallyChecked)
    , ext(rtr)
    , fd(rtr)
    , brs(rtr)
{
}

QByteArray CanRawCompareMessage::toByteArray() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << valid << static_cast<qint32>(id.value) << id.isSet
           << (length.isSet ? static_cast<qint8>(length.value) : unsetLength) << data << consideration;
    stream << rtr << ext << fd << brs;
    stream << extraInt1 << extraReal1 << extraInt2 << extraReal2 << extraInt3 << extraReal3 << extraReal4 << extraReal5
           << extraIds;
    return bytes;
}

CanRawCompareMessage CanRawCompareMessage::fromByteArray(QByteArray bytes)
{
    CanRawCompareMessage message(false);
    QDataStream stream(bytes);
    qint8 storedLength = 0;
    stream >> message.valid >> message.id.value >> message.id.isSet >> storedLength;
    message.length = lengthFromStored(storedLength);
    message.data = readData(stream);
    message.consideration = readBits(stream);
    if (message.consideration.size() < message.data.size())
        message.consideration.resize(message.data.size());
    stream >> message.rtr >> message.ext >> message.fd >> message.brs;
    stream >> message.extraInt1 >> message.extraReal1 >> message.extraInt2 >> message.extraReal2 >> message.extraInt3
        >> message.extraReal3 >> message.extraReal4 >> message.extraReal5;
    message.extraIds = readIds(stream);
    return message;
}

QString CanRawCompareMessage::toString()
{
    QStringList items = {QStringLiteral("0x%1").arg(id.value, 0, 16)};
    items += length.isSet ? QString::number(length.value) : QStringLiteral("-1");
    const int shownBytes = length.isSet ? length.value : 0;
    for (int i = 0; i < shownBytes; ++i)
        items += signedHexDigits(i < data.size() ? data.at(i) : '\0');
    return items.join(QLatin1Char(' '));
}

} // namespace CANRAW
