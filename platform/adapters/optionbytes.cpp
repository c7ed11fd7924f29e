#include "optionbytes.h"

#include "adaptercontract.h"

#include <QDataStream>

#include <algorithm>

namespace {
constexpr quint32 signature = 0x4B434144; // "KCAD"
// Rises when entries get a new meaning. What a later version writes is read as far as it is known.
constexpr quint16 formatVersion = 1;
constexpr QDataStream::Version streamVersion = QDataStream::Qt_5_6;

constexpr QMetaType::Type plainTypes[] = {
    QMetaType::Bool,      QMetaType::Int,    QMetaType::UInt,    QMetaType::LongLong,
    QMetaType::ULongLong, QMetaType::Long,   QMetaType::ULong,   QMetaType::Short,
    QMetaType::UShort,    QMetaType::Char,   QMetaType::SChar,   QMetaType::UChar,
    QMetaType::Float,     QMetaType::Double, QMetaType::QString, QMetaType::QByteArray,
};

bool isOptionRecord(int type)
{
    return type == qMetaTypeId<CAN::CANBitrateDesc>() || type == qMetaTypeId<CAN::CANClassicBusParameter>()
        || type == qMetaTypeId<CAN::CANFDBusParameter>() || type == qMetaTypeId<CanTimeStamp>()
        || type == qMetaTypeId<AbstractCanAdapter::SocketCANProps>()
        || type == qMetaTypeId<AbstractCanAdapter::PeakAdvValues>()
        || type == qMetaTypeId<AbstractCanAdapter::SystecXM3AdvValues>();
}

// Looks at the head that QVariant writes, before QVariant may act on it.
bool holdsAcceptedType(const QByteArray &payload)
{
    QDataStream stream(payload);
    stream.setVersion(streamVersion);
    quint32 type = 0;
    qint8 isNull = 0;
    stream >> type >> isNull;
    if (stream.status() != QDataStream::Ok)
        return false;
    if (type != QVariant::UserType)
        return std::find(std::begin(plainTypes), std::end(plainTypes), int(type)) != std::end(plainTypes);
    QByteArray typeName;
    stream >> typeName;
    return stream.status() == QDataStream::Ok && isOptionRecord(QMetaType::type(typeName.constData()));
}

QVariant readValue(const QByteArray &payload)
{
    if (!holdsAcceptedType(payload))
        return {};
    QDataStream stream(payload);
    stream.setVersion(streamVersion);
    QVariant value;
    stream >> value;
    return stream.status() == QDataStream::Ok && stream.atEnd() ? value : QVariant();
}
} // namespace

QByteArray writeOptionValues(const QMap<unsigned int, QVariant> &values)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    stream << signature << formatVersion;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        if (!value->isValid())
            continue;
        QByteArray payload;
        QDataStream payloadStream(&payload, QIODevice::WriteOnly);
        payloadStream.setVersion(streamVersion);
        payloadStream << *value;
        stream << quint32(value.key()) << payload;
    }
    return bytes;
}

OptionValues readOptionValues(const QByteArray &bytes)
{
    OptionValues result;
    QDataStream stream(bytes);
    stream.setVersion(streamVersion);
    quint32 foundSignature = 0;
    quint16 foundVersion = 0;
    stream >> foundSignature >> foundVersion;
    if (stream.status() != QDataStream::Ok || foundSignature != signature || foundVersion == 0)
        return result;

    result.complete = foundVersion == formatVersion;
    while (!stream.atEnd()) {
        quint32 option = 0;
        quint32 length = 0;
        stream >> option >> length;
        if (stream.status() != QDataStream::Ok || length > stream.device()->bytesAvailable()) {
            result.complete = false;
            break;
        }
        const QVariant value = readValue(stream.device()->read(length));
        if (value.isValid())
            result.values.insert(option, value);
        else
            result.complete = false;
    }
    return result;
}
