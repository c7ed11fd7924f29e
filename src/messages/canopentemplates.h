#pragma once

#include "canrawcomparemessage.h"
#include "canopenchoices.h"

/// Templates of CANopen messages, in classic frames with all flags clear.
namespace CanOpenTemplates {

/// @param commandIndex of CanOpenChoices::nmtCommandSpecifier(); the byte is 0 beyond them
CANRAW::CanRawCompareMessage nmt(int commandIndex, int nodeId);

/// @param length of the frame, all bytes of it open; -1 gives a length of 255, which no frame has. Without bytes the
/// data is null.
CANRAW::CanRawCompareMessage pdo(int cobId, int length);

/// The command byte must be 0, and the object must be the given one.
CANRAW::CanRawCompareMessage sdo(int nodeId, int typeIndex, const CanOpenChoices::ObjectAddress &object);

CANRAW::CanRawCompareMessage heartbeat(int nodeId, int stateIndex);

/// The identifier is 0, and the class stands in the first byte.
CANRAW::CanRawCompareMessage emergency(quint8 errorClass);

} // namespace CanOpenTemplates
