#include "variantbytes.h"

#include <QBuffer>
#include <QDataStream>

namespace {
constexpr QDataStream::Version streamVersion = QDataStream::Qt_5_6;

// Qt reads a list in a list in a list by calling itself; settings of people do not go that deep.
constexpr int deepestList = 64;

// Type number and null mark, in front of each value.
constexpr qint64 headLength = 5;

struct Head
{
    quint32 type = QMetaType::UnknownType;
    qint8 isNull = 0;
    quint32 count = 0; ///< the number behind the head, which is the count of elements if the type is a container
};

Head peekHead(QIODevice *device)
{
    const QByteArray bytes = device->peek(headLength + qint64(sizeof(quint32)));
    QDataStream stream(bytes);
    Head head;
    stream >> head.type >> head.isNull >> head.count;
    return head;
}

/// The fewest bytes that an element of such a container takes; 0 for what is no container of Qt's.
qint64 leastElementLength(quint32 type)
{
    switch (type) {
    case QMetaType::QVariantList:
        return headLength;
    case QMetaType::QStringList:
    case QMetaType::QByteArrayList:
        return sizeof(quint32);
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return sizeof(quint32) + headLength;
    case QMetaType::QPolygon:
        return 2 * sizeof(qint32);
    case QMetaType::QPolygonF:
        return 2 * sizeof(double);
    default:
        return 0;
    }
}

QVariant readOne(QDataStream &stream, int depth);

// As Qt has it, a container that ends too early reads as an empty one.

QVariant readList(QDataStream &stream, quint32 count, int depth)
{
    QVariantList list;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        list.append(readOne(stream, depth + 1));
    return stream.status() == QDataStream::Ok ? list : QVariantList();
}

template <typename Container>
QVariant readKeyed(QDataStream &stream, quint32 count, int depth)
{
    Container values;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QString key;
        stream >> key;
        values.insert(key, readOne(stream, depth + 1));
    }
    return stream.status() == QDataStream::Ok ? values : Container();
}

/// Qt's own reading, but for the containers: Qt makes room for as many elements as the bytes say there are, before
/// it reads the first, and dies of a number that no memory holds.
QVariant readOne(QDataStream &stream, int depth)
{
    QIODevice *device = stream.device();
    const Head head = peekHead(device);
    const qint64 elementLength = leastElementLength(head.type);
    const bool isContainer = elementLength > 0;
    if (depth > deepestList || (isContainer && head.count > device->bytesAvailable() / elementLength)) {
        stream.setStatus(QDataStream::ReadCorruptData);
        return {};
    }
    const bool holdsVariants = head.type == QMetaType::QVariantList || head.type == QMetaType::QVariantMap
        || head.type == QMetaType::QVariantHash;
    if (!holdsVariants) {
        QVariant value;
        stream >> value;
        return value;
    }
    device->skip(headLength + qint64(sizeof(quint32)));
    if (head.type == QMetaType::QVariantList)
        return readList(stream, head.count, depth);
    if (head.type == QMetaType::QVariantMap)
        return readKeyed<QVariantMap>(stream, head.count, depth);
    return readKeyed<QVariantHash>(stream, head.count, depth);
}
} // namespace

QByteArray writeVariant(const QVariant &value)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    stream << value;
    return bytes;
}

QVariant readVariant(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(streamVersion);
    const QVariant value = readOne(stream, 0);
    return stream.status() == QDataStream::ReadCorruptData ? QVariant() : value;
}
