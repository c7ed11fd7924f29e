#pragma once

#include "kestrune_export.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QObject>
#include <QString>
#include <QTime>
#include <QVariant>

class QDataStream;

// The value records that cross every part of the system. The order and the width of their fields are part of
// the binary interface with adapter libraries: canrecords.cpp pins them down with static assertions.
//
// Records compare field by field, also inside a QVariant. All of them but CanBitTimingValues and
// CAN::CanMessage are meta-types under their full names.

/// Time of a frame or of a state change.
struct KESTRUNE_PLATFORM_EXPORT CanTimeStamp
{
    qint32 seconds = 0;
    qint32 microseconds = 0; ///< within the second, 0 to 999999 in a stamp that an adapter makes

    CanTimeStamp() = default;
    CanTimeStamp(qint32 wholeSeconds, qint32 microsecondsWithin);

    /// The stamp as a time of day, counted from midnight and wrapped at 24 hours; cut to milliseconds.
    /// A negative stamp, as a distance may be, gives midnight.
    QTime toQTime() const;

    /// `other` minus this stamp. Both fields of the result carry the sign of the distance; its seconds
    /// stay within 32 bits, the farthest representable distance standing in for anything beyond.
    CanTimeStamp timeDifference(CanTimeStamp other) const;
};

namespace CAN {
Q_NAMESPACE_EXPORT(KESTRUNE_PLATFORM_EXPORT)

/// Fault confinement state of a controller, as far as the adapter knows it.
enum CanState : quint32 {
    CanStateErrorActive = 0,
    CanStateErrorWarning = 1,
    CanStateErrorPassive = 2,
    CanStateBusOff = 3,
    CanStateStopped = 4,
    CanStateUnknown = 5,
};
Q_ENUM_NS(CanState)

/// Largest payload of any frame, in bytes.
constexpr int maxDataLength = 64;
/// Largest payload of a classic frame, in bytes.
constexpr int maxClassicDataLength = 8;

/// One classic CAN or CAN FD frame, without time.
struct KESTRUNE_PLATFORM_EXPORT CanMessage
{
    quint32 id = 0;                  ///< arbitration id, 11 or 29 bits
    quint8 length = 0;               ///< number of data bytes, 0 to 64
    quint8 data[maxDataLength] = {}; ///< only the first `length` bytes count
    bool rtr = false;                ///< remote transmission request: no data to show
    bool ext = false;                ///< 29-bit identifier
    bool fd = false;                 ///< CAN FD frame
    bool extraFlag = false;          ///< error state indicator of a CAN FD frame
    bool brs = false;                ///< bit rate switch of a CAN FD frame
    bool errorFrame = false;         ///< not a data frame but the controller's report of an error on the bus

    /// The payload from byte `start` on, `count` bytes of it or, with -1, all to the end of the payload.
    /// @param deepCopy false gives an array that refers to this record and must not outlive it
    QByteArray dataToByteArray(int start = 0, int count = -1, bool deepCopy = true) const;
};

/// A frame as it was received or recorded.
struct CanRxMessage
{
    CanTimeStamp timeStamp;
    CanMessage message;
};

/// One selectable bitrate.
struct KESTRUNE_PLATFORM_EXPORT CANBitrateDesc
{
    QString name;             ///< text for the bitrate list
    quint16 bitrate = 0;      ///< kBit/s
    double samplePoint = 0.0; ///< as a ratio, 0.875 for 87.5 %; 0 means none given

    CANBitrateDesc() = default;
    CANBitrateDesc(QString text, quint16 kiloBitsPerSecond, double samplePointRatio = 0.0);

    /// From an option value or list data, which may hold a whole record or a plain number of kBit/s.
    /// Anything else gives the default record.
    CANBitrateDesc(QVariant value); // NOLINT(google-explicit-constructor): option values read as records
};
} // namespace CAN

/// The register values of one bit timing.
struct CanBitTimingValues
{
    quint16 preScaler = 0;
    quint16 tSeg1 = 0; ///< time quanta of the propagation segment and phase segment 1 together
    quint16 tSeg2 = 0; ///< time quanta of phase segment 2
    quint16 sjw = 0;   ///< synchronisation jump width in time quanta
    quint8 timingFlag = 0;
};

namespace CAN {
/// User-defined timing of a classic bus, or of the arbitration phase.
struct CANClassicBusParameter
{
    quint32 bitrate = 0;      ///< kBit/s
    double samplePoint = 0.0; ///< per cent, unlike CANBitrateDesc
    CanBitTimingValues timing;
    QString name;
    bool userDefined = false; ///< this record, and not a list entry, sets the bitrate
};

/// User-defined timing of the CAN FD data phase. The order of fields differs from the classic record.
struct CANFDBusParameter
{
    quint32 bitrate = 0; ///< kBit/s
    QString name;
    double samplePoint = 0.0; ///< per cent
    CanBitTimingValues timing;
    quint8 tdco = 0; ///< transceiver delay compensation offset
    bool userDefined = false;
};

/// What the timing registers of one controller allow.
struct KESTRUNE_PLATFORM_EXPORT CANBitTimingThresholds
{
    quint16 clockFrequency = 0; ///< MHz
    qint16 preScalerMin = 0;
    qint16 preScalerMax = 0;
    qint16 tSeg1Min = 0;
    qint16 tSeg1Max = 0;
    qint16 tSeg2Min = 0;
    qint16 tSeg2Max = 0;
    qint16 sjwMax = 0;
    bool valid = false; ///< the record holds real limits

    /// One line for people, with all fields in decimal.
    QString toString() const;
};
} // namespace CAN

/// What an error code in the log of a controller means.
KESTRUNE_PLATFORM_EXPORT extern const QMap<quint8, QString> canErrorNames;

/// The payload sizes above 8 bytes that CAN FD knows, in rising order.
KESTRUNE_PLATFORM_EXPORT extern const QList<quint8> canFdDataLengths;

KESTRUNE_PLATFORM_EXPORT bool operator==(const CanTimeStamp &a, const CanTimeStamp &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const CanBitTimingValues &a, const CanBitTimingValues &b);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const CanTimeStamp &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, CanTimeStamp &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const CanBitTimingValues &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, CanBitTimingValues &value);

inline bool operator!=(const CanTimeStamp &a, const CanTimeStamp &b)
{
    return !(a == b);
}
inline bool operator!=(const CanBitTimingValues &a, const CanBitTimingValues &b)
{
    return !(a == b);
}

namespace CAN {
/// Two frames are equal if all their fields are; of the payload only the bytes within `length` count.
KESTRUNE_PLATFORM_EXPORT bool operator==(const CanMessage &a, const CanMessage &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const CanRxMessage &a, const CanRxMessage &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const CANBitrateDesc &a, const CANBitrateDesc &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const CANClassicBusParameter &a, const CANClassicBusParameter &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const CANFDBusParameter &a, const CANFDBusParameter &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const CANBitTimingThresholds &a, const CANBitTimingThresholds &b);

inline bool operator!=(const CanMessage &a, const CanMessage &b)
{
    return !(a == b);
}
inline bool operator!=(const CanRxMessage &a, const CanRxMessage &b)
{
    return !(a == b);
}
inline bool operator!=(const CANBitrateDesc &a, const CANBitrateDesc &b)
{
    return !(a == b);
}
inline bool operator!=(const CANClassicBusParameter &a, const CANClassicBusParameter &b)
{
    return !(a == b);
}
inline bool operator!=(const CANFDBusParameter &a, const CANFDBusParameter &b)
{
    return !(a == b);
}
inline bool operator!=(const CANBitTimingThresholds &a, const CANBitTimingThresholds &b)
{
    return !(a == b);
}

// The records of the options travel as bytes too; a short stream leaves the rest of a record at its defaults.
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const CanRxMessage &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, CanRxMessage &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const CANBitrateDesc &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, CANBitrateDesc &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const CANClassicBusParameter &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, CANClassicBusParameter &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const CANFDBusParameter &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, CANFDBusParameter &value);
} // namespace CAN

Q_DECLARE_METATYPE(CanTimeStamp)
Q_DECLARE_METATYPE(CAN::CanRxMessage)
Q_DECLARE_METATYPE(CAN::CANBitrateDesc)
Q_DECLARE_METATYPE(CAN::CANClassicBusParameter)
Q_DECLARE_METATYPE(CAN::CANFDBusParameter)
