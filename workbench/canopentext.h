#pragma once

#include <QString>

namespace CAN {
struct CanMessage;
}

/// What a frame means in a CANopen network that uses the predefined identifiers. Pure functions.
namespace CanOpenText {

/// A short reading of the frame, such as "Heartbeat, node 5: operational". Empty for a frame that has none: 29-bit
/// identifiers, remote frames but those of node guarding, error frames, and identifiers outside the predefined ones.
QString meaning(const CAN::CanMessage &message);

/// The state that a heartbeat reports, in words; a hexadecimal number for one that is not defined.
QString nodeState(quint8 state);

} // namespace CanOpenText
