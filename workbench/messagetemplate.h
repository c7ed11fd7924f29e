#pragma once

#include "canrawcomparemessage.h"
#include "frameparser.h"

/// Between the templates of the message builder, the fields of the transmit panel, and the user's eyes. Pure functions.
namespace MessageTemplate {

/// A template that only the frame itself matches.
CANRAW::CanRawCompareMessage fromFrame(const CAN::CanMessage &frame);

/// A template that every frame of the same identifier matches, whatever it carries.
CANRAW::CanRawCompareMessage forIdentifier(const CAN::CanMessage &frame);

/// A template that every frame matches, with room for all bytes a frame can have.
CANRAW::CanRawCompareMessage forEveryFrame();

/// What to send if the template is meant as a frame. What the template leaves open is clear; an open length reaches to
/// the last byte that is not 0; an identifier above 11 bits makes the frame an extended one, more than 8 bytes a CAN FD one.
/// An open identifier leaves the field empty.
FrameInput toInput(const CANRAW::CanRawCompareMessage &pattern);

/// For a list: identifier, kind, length and bytes, "XX" for a byte that is not compared.
QString text(const CANRAW::CanRawCompareMessage &pattern);

} // namespace MessageTemplate
