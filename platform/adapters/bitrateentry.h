#pragma once

#include "canrecords.h"

/// The list entry for a bitrate in kBit/s; the default record for 0.
/// @param samplePoint as a ratio, 0 if none is given
inline CAN::CANBitrateDesc bitrateEntry(quint16 bitrate, double samplePoint = 0.0)
{
    if (bitrate == 0)
        return {};
    return {QStringLiteral("%1 kBit/s").arg(bitrate), bitrate, samplePoint};
}
