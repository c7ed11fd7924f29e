#pragma once

#include "canrecords.h"

#include <QString>

/// What stands in the fields of the transmit panel.
struct FrameInput
{
    QString identifier; ///< hexadecimal, "0x" in front or "h" or "x" behind allowed
    QString data;       ///< hexadecimal bytes, with or without spaces, commas and the like between them
    bool extended = false;
    bool remote = false;
    bool fd = false;
    bool bitRateSwitch = false;
};

/// The frame that the fields describe, or a sentence that says what to change.
struct FrameParse
{
    enum Field { NoField, IdentifierField, DataField, FlagsField };

    CAN::CanMessage message; ///< good only if `error` is empty
    QString error;
    Field field = NoField; ///< where the error sits

    bool isValid() const { return error.isEmpty(); }
};

/// Pure; any text may come in.
FrameParse parseFrame(const FrameInput &input);

/// What to put into the fields to get the frame.
FrameInput inputFor(const CAN::CanMessage &message);
