#pragma once

#include <QByteArray>
#include <QChar>
#include <QString>

// The texts of an editor: what its bytes look like on the screen, in a dump and on the clipboard.

constexpr int dumpBytesPerLine = 16;

/// The character of a byte, a dot for what is no printable ASCII.
QChar printable(char byte);

/// Two lower-case digits.
QString hexDigits(char byte);

/// The byte with one of its digits replaced.
/// @param digit '0' to '9' or 'a' to 'f'
char withDigit(char byte, bool highDigit, char digit);

/// The address of a byte, which wraps at 32 bits.
/// @param width least number of digits
QString addressText(int offset, int position, int width);

/// One line of a dump: equally long for any number of bytes.
/// @param bytes up to dumpBytesPerLine
QString dumpLine(const QString &address, const QByteArray &bytes);

/// The bytes as they go to the clipboard: a line ends where the index of its last byte in the editor ends in f.
/// @param firstIndex of the bytes in the editor
QString clipboardText(const QByteArray &bytes, int firstIndex);
