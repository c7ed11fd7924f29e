#pragma once

#include "canrecords.h"

#include <QCoreApplication>
#include <QString>

/// How frames and times read on the screen. Pure functions; the translation context is "FrameText".
namespace FrameText {

/// The identifier in hexadecimal digits, three for 11 bits and eight with an "x" behind for 29 bits.
QString identifier(quint32 id, bool extended);
QString identifier(const CAN::CanMessage &message);

/// "CAN", "CAN FD", "CAN FD BRS", "CAN FD BRS ESI", "CAN remote" or "Error".
QString kind(const CAN::CanMessage &message);

/// The payload as upper-case bytes with spaces between; empty for a remote frame.
QString data(const CAN::CanMessage &message);

/// A distance as milliseconds with three digits behind the point, whatever the locale, so that columns of
/// them line up and can be copied into other programs.
QString milliseconds(qint64 microseconds);

/// A stamp as hours, minutes, seconds and microseconds of a day.
QString timeOfDay(const CanTimeStamp &stamp);

/// The stamp in microseconds.
qint64 microseconds(const CanTimeStamp &stamp);

/// A note of the trace in words: "Connect:Demo 1:500" gives "Connected to Demo 1 at 500 kBit/s". A note of an unknown
/// form comes back as it is.
QString note(const QString &note);

/// A rate or number as the user's locale groups it.
QString count(quint64 number);

/// One frame as one line of tab-separated text, for the clipboard.
QString line(quint64 number, qint64 microsecondsSinceStart, const CAN::CanMessage &message);

} // namespace FrameText
