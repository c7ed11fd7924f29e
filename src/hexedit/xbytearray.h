#pragma once

#include "kestrune_export.h"

#include <QByteArray>
#include <QChar>
#include <QString>

/// The bytes of an editor, each with a flag that tells whether it changed since they were loaded.
///
/// Positions are byte indexes from 0. An operation on a position outside the bytes changes nothing, but that inserting
/// also works right behind the last one; a count of bytes that passes their end means those up to the end. The number of bytes shown may be smaller than the number
/// held: size() tells the former, the length of data() the latter, and the hidden bytes come back when more are shown.
class KESTRUNE_EXPORT XByteArray
{
public:
    /// How many bytes an editor shows and may grow to when nothing else is said.
    static constexpr int mostBytes = 16777215;

    XByteArray() = default;

    /// All bytes, also the hidden ones. Whoever writes through the reference keeps the length.
    QByteArray &data();
    /// Takes the bytes, all of them unchanged.
    void setData(QByteArray data);

    /// Number of bytes shown.
    int size();
    /// How many bytes the editor may grow to.
    int maxSize() const;
    /// Existing bytes are not cut.
    void setMaximumSize(int size);
    int bytesEnabled() const;
    /// Number of bytes to show. Missing ones are added as unchanged zeros, up to mostBytes; more than that only data
    /// brings along.
    void setBytesEnabled(int count);

    int addressOffset();
    void setAddressOffset(int offset);
    int addressWidth();
    /// @param width least number of digits of an address, 0 to 6; others are ignored
    void setAddressWidth(int width);
    /// Number of digits that the address behind the last byte takes.
    int realAddressNumbers();

    bool dataChanged(int position);
    /// The flags of a range, 0 or 1 each.
    QByteArray dataChanged(int position, int length);
    void setDataChanged(int position, bool changed);
    void setDataChanged(int position, QByteArray const &changed);

    // Bytes that come in by these are changed ones.

    void insert(int position, char byte);
    void insert(int position, QByteArray const &bytes);
    void remove(int position, int length);
    void replace(int position, char byte);
    void replace(int position, QByteArray const &bytes);
    /// Puts the first `length` of the bytes in place of as many; fewer bytes than that shorten the data.
    void replace(int position, int length, QByteArray const &bytes);

    /// The byte as text: a dot for what is no printable ASCII.
    QChar asciiChar(int position);
    /// A dump of the lines from one position to below another (negative: to the end), 16 bytes each.
    QString toRedableString(int start, int end);

private:
    bool contains(int position) const;

    QByteArray m_data;
    QByteArray m_changedFlags; // as long as m_data
    int m_bytesEnabled = mostBytes;
    int m_maximumSize = mostBytes;
    int m_addressWidth = 4;
    int m_addressOffset = 0;
    int m_realAddressNumbers = 0;
    // No size ever equals it, so that the digits are counted anew each time: width and offset count, too.
    int m_previousSize = -99;
};
