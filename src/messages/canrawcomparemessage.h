#pragma once

#include "kestrune_export.h"

#include <QBitArray>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

/// Messages as people compose them, beside the frames that travel on a bus.
namespace CANRAW {

/// A number beside the mark whether it counts. One that does not count stays readable: stored templates keep it.
template <typename T>
struct OptionalNumber
{
    T value = 0;
    bool isSet = false;
};

/// A CAN message as a template for received traffic: identifier, length, flags and each data byte may be left open.
///
/// A frame matches a valid template if its flags are as asked for, if it has the identifier and the length where these
/// are set, and if it has each considered byte, with the value expected. The bytes looked at are as many as there are
/// consideration bits, and no more than the length where that is set. Both counts are taken as signed numbers of
/// 8 bits; with a result of 0 or less, no byte is looked at.
///
/// The order of the fields and the byte form are part of what applications have stored; neither changes.
struct KESTRUNE_EXPORT CanRawCompareMessage
{
    bool valid;                    ///< the record holds a message; without it nothing matches
    OptionalNumber<quint32> id;    ///< unset: any identifier
    OptionalNumber<quint8> length; ///< data bytes that the frame must have, 0 to 64; unset: any length
    QByteArray data;               ///< expected bytes; one that is missing here counts as 0
    QBitArray consideration;       ///< bit i set: byte i must match

    // Of the frame's flags: Qt::Unchecked, the flag must be clear; Qt::Checked, it must be set;
    // Qt::PartiallyChecked, it does not matter. Stored numbers beyond these ask for a clear flag.
    qint32 rtr;
    qint32 ext;
    qint32 fd;
    qint32 brs;

    // Room that applications have in the byte form. Carried and stored, and without a meaning here.
    qint32 extraInt1 = 0;
    double extraReal1 = 0;
    qint32 extraInt2 = 0;
    double extraReal2 = 0;
    qint32 extraInt3 = 0;
    double extraReal3 = 0;
    double extraReal4 = 0;
    double extraReal5 = 0;
    QList<unsigned int> extraIds;

    /// @param considerAll true gives a valid template that asks for identifier 0 and all flags clear; false gives an
    /// invalid one, open in identifier and flags. Both ask for length 0, with 64 clear consideration bits.
    explicit CanRawCompareMessage(bool considerAll = true);

    /// As stored in settings: a big-endian QDataStream of the fields. A length of 128 or more is written as unset.
    QByteArray toByteArray() const;
    /// Reads what toByteArray() wrote. Never fails: what is missing at the end reads as zeros and empty arrays, so
    /// that no bytes at all give a record which matches nothing. Takes a small multiple of the memory of the bytes,
    /// whatever counts they claim. Has at least as many consideration bits as data bytes, the added ones clear.
    static CanRawCompareMessage fromByteArray(QByteArray bytes);

    /// Identifier, length and data for people: "0x181 2 1 5". An unset identifier reads "0x0", an unset length "-1".
    /// Bytes from 0x80 on show their sign, as sixteen hexadecimal digits.
    QString toString();
};

} // namespace CANRAW
