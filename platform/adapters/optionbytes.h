#pragma once

#include <QByteArray>
#include <QMap>
#include <QVariant>

// The byte form of an adapter's settings: a signature, a format version, then one entry an option, of its number
// and the length-prefixed QDataStream form of its value. The length lets a reader step over what it does not know.

struct OptionValues
{
    QMap<unsigned int, QVariant> values;
    bool complete = false; ///< false if bytes were missing, damaged, of an unknown format or left over
};

/// Invalid values are left out.
QByteArray writeOptionValues(const QMap<unsigned int, QVariant> &values);

/// Reads what can be read. Only numbers, strings, byte arrays and the records of the options are accepted as values:
/// other types would let a damaged length field decide how much memory is taken.
OptionValues readOptionValues(const QByteArray &bytes);
