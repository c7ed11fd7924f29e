#pragma once

#include "canrecords.h"

// The lines of a log file: Latin-1 text, each line ended by a single line feed on every system.

/// The first line of every log file.
QByteArray logHeaderLine();

/// One frame: time, identifier in hexadecimal and decimal, length, data, and behind ";" a number that adds 1 for an
/// extended identifier, 2 for CAN FD, 4 for a bit rate switch and 8 for the extra flag.
///
/// Any record makes a line. The length stands there as it is; of a payload no more than 64 bytes do.
QByteArray logMessageLine(const CAN::CanRxMessage &message);

// What a log says of itself. A replay passes these lines over.

/// Logging ended with a frame of this identifier, which stands in the line above.
QByteArray logStopIdentifierLine(quint32 id);
/// Logging ended with the frame in the line above.
QByteArray logStopMessageLine();
QByteArray logConnectionLostLine();
