#include "canrecords.h"

#include <QDataStream>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

// Other adapter libraries are built against these layouts.
static_assert(sizeof(CanTimeStamp) == 8 && offsetof(CanTimeStamp, microseconds) == 4);
static_assert(offsetof(CAN::CanMessage, id) == 0 && sizeof(CAN::CanMessage::id) == 4);
static_assert(offsetof(CAN::CanMessage, length) == 4 && sizeof(CAN::CanMessage::length) == 1);
static_assert(offsetof(CAN::CanMessage, data) == 5 && sizeof(CAN::CanMessage::data) == 64);
static_assert(offsetof(CAN::CanMessage, rtr) == 69 && offsetof(CAN::CanMessage, ext) == 70);
static_assert(offsetof(CAN::CanMessage, fd) == 71 && offsetof(CAN::CanMessage, extraFlag) == 72);
static_assert(offsetof(CAN::CanMessage, brs) == 73 && offsetof(CAN::CanMessage, errorFrame) == 74);
static_assert(sizeof(bool) == 1 && sizeof(CAN::CanMessage) == 76);
static_assert(offsetof(CAN::CanRxMessage, timeStamp) == 0 && offsetof(CAN::CanRxMessage, message) == 8);
static_assert(sizeof(CAN::CanRxMessage) == 84);
static_assert(sizeof(CAN::CanState) == 4);
static_assert(sizeof(CAN::CANBitrateDesc::bitrate) == 2 && sizeof(CAN::CANBitrateDesc::samplePoint) == 8);
static_assert(offsetof(CanBitTimingValues, preScaler) == 0 && offsetof(CanBitTimingValues, tSeg1) == 2);
static_assert(offsetof(CanBitTimingValues, tSeg2) == 4 && offsetof(CanBitTimingValues, sjw) == 6);
static_assert(offsetof(CanBitTimingValues, timingFlag) == 8 && sizeof(CanBitTimingValues) == 10);
static_assert(offsetof(CAN::CANBitTimingThresholds, clockFrequency) == 0);
static_assert(offsetof(CAN::CANBitTimingThresholds, preScalerMin) == 2);
static_assert(offsetof(CAN::CANBitTimingThresholds, preScalerMax) == 4);
static_assert(offsetof(CAN::CANBitTimingThresholds, tSeg1Min) == 6);
static_assert(offsetof(CAN::CANBitTimingThresholds, tSeg1Max) == 8);
static_assert(offsetof(CAN::CANBitTimingThresholds, tSeg2Min) == 10);
static_assert(offsetof(CAN::CANBitTimingThresholds, tSeg2Max) == 12);
static_assert(offsetof(CAN::CANBitTimingThresholds, sjwMax) == 14);
static_assert(offsetof(CAN::CANBitTimingThresholds, valid) == 16);
static_assert(sizeof(CAN::CANBitTimingThresholds::valid) == 1 && sizeof(CAN::CANBitTimingThresholds) == 18);
static_assert(sizeof(CAN::CANClassicBusParameter::bitrate) == 4 && sizeof(CAN::CANFDBusParameter::bitrate) == 4);
static_assert(sizeof(CAN::CANClassicBusParameter::samplePoint) == 8
              && sizeof(CAN::CANFDBusParameter::samplePoint) == 8);
static_assert(sizeof(CAN::CANFDBusParameter::tdco) == 1);

// Records with a string are no standard layout for the letter of the language, but are for every compiler that
// builds this library; the offsets are what matters.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(CAN::CANBitrateDesc, name) < offsetof(CAN::CANBitrateDesc, bitrate));
static_assert(offsetof(CAN::CANBitrateDesc, bitrate) < offsetof(CAN::CANBitrateDesc, samplePoint));
static_assert(offsetof(CAN::CANClassicBusParameter, bitrate) == 0);
static_assert(offsetof(CAN::CANClassicBusParameter, samplePoint) == 8);
static_assert(offsetof(CAN::CANClassicBusParameter, timing) == 16);
static_assert(offsetof(CAN::CANClassicBusParameter, timing) < offsetof(CAN::CANClassicBusParameter, name));
static_assert(offsetof(CAN::CANClassicBusParameter, name) < offsetof(CAN::CANClassicBusParameter, userDefined));
static_assert(offsetof(CAN::CANFDBusParameter, bitrate) == 0);
static_assert(offsetof(CAN::CANFDBusParameter, name) < offsetof(CAN::CANFDBusParameter, samplePoint));
static_assert(offsetof(CAN::CANFDBusParameter, samplePoint) < offsetof(CAN::CANFDBusParameter, timing));
static_assert(offsetof(CAN::CANFDBusParameter, timing) < offsetof(CAN::CANFDBusParameter, tdco));
static_assert(offsetof(CAN::CANFDBusParameter, tdco) < offsetof(CAN::CANFDBusParameter, userDefined));
#pragma GCC diagnostic pop

const QMap<quint8, QString> canErrorNames = {
    {1, QStringLiteral("Stuff error")},          {2, QStringLiteral("Form error")},
    {3, QStringLiteral("Acknowledgment error")}, {4, QStringLiteral("Bit error")},
    {5, QStringLiteral("Fast data bit error")},  {6, QStringLiteral("CRC error")},
    {7, QStringLiteral("Data length error")},    {8, QStringLiteral("unspecified error")},
};

const QList<quint8> canFdDataLengths = {12, 16, 20, 24, 32, 48, 64};

namespace {
constexpr qint64 microsecondsPerSecond = 1000000;

template <typename T>
void registerNumber()
{
    QMetaType::registerConverter<CAN::CANBitrateDesc, T>(
        [](const CAN::CANBitrateDesc &description) { return static_cast<T>(description.bitrate); });
}

// At load, so that no thread ever sees a record whose comparison or streaming is not known yet.
void registerRecords()
{
    QMetaType::registerEqualsComparator<CanTimeStamp>();
    QMetaType::registerEqualsComparator<CAN::CanState>();
    QMetaType::registerEqualsComparator<CAN::CanRxMessage>();
    QMetaType::registerEqualsComparator<CAN::CANBitrateDesc>();
    QMetaType::registerEqualsComparator<CAN::CANClassicBusParameter>();
    QMetaType::registerEqualsComparator<CAN::CANFDBusParameter>();

    qRegisterMetaTypeStreamOperators<CanTimeStamp>();
    qRegisterMetaTypeStreamOperators<CAN::CanRxMessage>();
    qRegisterMetaTypeStreamOperators<CAN::CANBitrateDesc>();
    qRegisterMetaTypeStreamOperators<CAN::CANClassicBusParameter>();
    qRegisterMetaTypeStreamOperators<CAN::CANFDBusParameter>();

    // Code that reads list data as numbers meets whole records there.
    registerNumber<int>();
    registerNumber<uint>();
    registerNumber<qlonglong>();
    registerNumber<qulonglong>();
    registerNumber<long>();
    registerNumber<ulong>();
    registerNumber<short>();
    registerNumber<ushort>();
    registerNumber<float>();
    registerNumber<double>();
}
Q_CONSTRUCTOR_FUNCTION(registerRecords)
} // namespace

CanTimeStamp::CanTimeStamp(qint32 wholeSeconds, qint32 microsecondsWithin)
    : seconds(wholeSeconds)
    , microseconds(microsecondsWithin)
{
}

QTime CanTimeStamp::toQTime() const
{
    constexpr qint64 millisecondsPerDay = 24 * 60 * 60 * 1000;
    const qint64 milliseconds = (seconds * microsecondsPerSecond + microseconds) / 1000;
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(std::max<qint64>(milliseconds, 0) % millisecondsPerDay));
}

CanTimeStamp CanTimeStamp::timeDifference(CanTimeStamp other) const
{
    constexpr qint64 farthest = std::numeric_limits<qint32>::max() * microsecondsPerSecond + 999999;
    const qint64 distance = (qint64(other.seconds) - seconds) * microsecondsPerSecond + other.microseconds
        - microseconds;
    const qint64 bounded = std::clamp(distance, -farthest, farthest);
    return {static_cast<qint32>(bounded / microsecondsPerSecond), static_cast<qint32>(bounded % microsecondsPerSecond)};
}

bool operator==(const CanTimeStamp &a, const CanTimeStamp &b)
{
    return a.seconds == b.seconds && a.microseconds == b.microseconds;
}

QDataStream &operator<<(QDataStream &stream, const CanTimeStamp &value)
{
    return stream << value.seconds << value.microseconds;
}

QDataStream &operator>>(QDataStream &stream, CanTimeStamp &value)
{
    return stream >> value.seconds >> value.microseconds;
}

bool operator==(const CanBitTimingValues &a, const CanBitTimingValues &b)
{
    return a.preScaler == b.preScaler && a.tSeg1 == b.tSeg1 && a.tSeg2 == b.tSeg2 && a.sjw == b.sjw
        && a.timingFlag == b.timingFlag;
}

QDataStream &operator<<(QDataStream &stream, const CanBitTimingValues &value)
{
    return stream << value.preScaler << value.tSeg1 << value.tSeg2 << value.sjw << value.timingFlag;
}

QDataStream &operator>>(QDataStream &stream, CanBitTimingValues &value)
{
    return stream >> value.preScaler >> value.tSeg1 >> value.tSeg2 >> value.sjw >> value.timingFlag;
}

namespace CAN {
QByteArray CanMessage::dataToByteArray(int start, int count, bool deepCopy) const
{
    const int held = std::min<int>(length, maxDataLength);
    if (start < 0 || start >= held || count < -1)
        return {};
    const int taken = count == -1 ? held - start : std::min(count, held - start);
    const char *first = reinterpret_cast<const char *>(data) + start;
    return deepCopy ? QByteArray(first, taken) : QByteArray::fromRawData(first, taken);
}

bool operator==(const CanMessage &a, const CanMessage &b)
{
    return a.id == b.id && a.length == b.length && a.rtr == b.rtr && a.ext == b.ext && a.fd == b.fd
        && a.extraFlag == b.extraFlag && a.brs == b.brs && a.errorFrame == b.errorFrame
        && std::memcmp(a.data, b.data, std::min<std::size_t>(a.length, maxDataLength)) == 0;
}

bool operator==(const CanRxMessage &a, const CanRxMessage &b)
{
    return a.timeStamp == b.timeStamp && a.message == b.message;
}

QDataStream &operator<<(QDataStream &stream, const CanRxMessage &value)
{
    const CanMessage &message = value.message;
    stream << value.timeStamp << message.id << message.length;
    stream.writeRawData(reinterpret_cast<const char *>(message.data), maxDataLength);
    return stream << message.rtr << message.ext << message.fd << message.extraFlag << message.brs << message.errorFrame;
}

QDataStream &operator>>(QDataStream &stream, CanRxMessage &value)
{
    CanMessage &message = value.message;
    stream >> value.timeStamp >> message.id >> message.length;
    message.length = std::min<quint8>(message.length, maxDataLength);
    stream.readRawData(reinterpret_cast<char *>(message.data), maxDataLength);
    return stream >> message.rtr >> message.ext >> message.fd >> message.extraFlag >> message.brs >> message.errorFrame;
}

CANBitrateDesc::CANBitrateDesc(QString text, quint16 kiloBitsPerSecond, double samplePointRatio)
    : name(std::move(text))
    , bitrate(kiloBitsPerSecond)
    , samplePoint(samplePointRatio)
{
}

CANBitrateDesc::CANBitrateDesc(QVariant value)
{
    if (value.canConvert<CANBitrateDesc>()) {
        *this = value.value<CANBitrateDesc>();
        return;
    }
    if (!value.canConvert<ushort>())
        return;
    const uint number = value.toUInt();
    if (number != 0)
        bitrate = static_cast<quint16>(number);
}

bool operator==(const CANBitrateDesc &a, const CANBitrateDesc &b)
{
    return a.name == b.name && a.bitrate == b.bitrate && a.samplePoint == b.samplePoint;
}

QDataStream &operator<<(QDataStream &stream, const CANBitrateDesc &value)
{
    return stream << value.name << value.bitrate << value.samplePoint;
}

QDataStream &operator>>(QDataStream &stream, CANBitrateDesc &value)
{
    return stream >> value.name >> value.bitrate >> value.samplePoint;
}

bool operator==(const CANClassicBusParameter &a, const CANClassicBusParameter &b)
{
    return a.bitrate == b.bitrate && a.samplePoint == b.samplePoint && a.timing == b.timing && a.name == b.name
        && a.userDefined == b.userDefined;
}

QDataStream &operator<<(QDataStream &stream, const CANClassicBusParameter &value)
{
    return stream << value.bitrate << value.samplePoint << value.timing << value.name << value.userDefined;
}

QDataStream &operator>>(QDataStream &stream, CANClassicBusParameter &value)
{
    return stream >> value.bitrate >> value.samplePoint >> value.timing >> value.name >> value.userDefined;
}

bool operator==(const CANFDBusParameter &a, const CANFDBusParameter &b)
{
    return a.bitrate == b.bitrate && a.name == b.name && a.samplePoint == b.samplePoint && a.timing == b.timing
        && a.tdco == b.tdco && a.userDefined == b.userDefined;
}

QDataStream &operator<<(QDataStream &stream, const CANFDBusParameter &value)
{
    return stream << value.bitrate << value.name << value.samplePoint << value.timing << value.tdco
                  << value.userDefined;
}

QDataStream &operator>>(QDataStream &stream, CANFDBusParameter &value)
{
    return stream >> value.bitrate >> value.name >> value.samplePoint >> value.timing >> value.tdco
        >> value.userDefined;
}

bool operator==(const CANBitTimingThresholds &a, const CANBitTimingThresholds &b)
{
    return a.clockFrequency == b.clockFrequency && a.preScalerMin == b.preScalerMin && a.preScalerMax == b.preScalerMax
        && a.tSeg1Min == b.tSeg1Min && a.tSeg1Max == b.tSeg1Max && a.tSeg2Min == b.tSeg2Min && a.tSeg2Max == b.tSeg2Max
        && a.sjwMax == b.sjwMax && a.valid == b.valid;
}

QString CANBitTimingThresholds::toString() const
{
    return QStringLiteral(
               "CANBitTimings(F: %1, Prescaler: %2 - %3, tSeg1: %4 - %5, tSeg2: %6 - %7, sjw: %8, Valid: %9)")
        .arg(clockFrequency)
        .arg(preScalerMin)
        .arg(preScalerMax)
        .arg(tSeg1Min)
        .arg(tSeg1Max)
        .arg(tSeg2Min)
        .arg(tSeg2Max)
        .arg(sjwMax)
        .arg(int(valid));
}
} // namespace CAN
