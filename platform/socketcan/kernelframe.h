#pragma once

#include "canrecords.h"

#include <linux/can.h>

#include <cstddef>
#include <optional>

// Frames as the kernel passes them, and ours. A classic frame lies in the front part of a canfd_frame: the size tells.

/// @param size bytes of `frame` that the kernel has filled
/// @return false if that is no whole frame; `message` is then as it was
bool fromKernelFrame(const canfd_frame &frame, std::size_t size, CAN::CanMessage &message);

/// @return the size to send, or 0 if no controller could send this message
std::size_t toKernelFrame(const CAN::CanMessage &message, canfd_frame &frame);

/// What an error frame says about the controller's state; nothing if it tells of a single error only.
std::optional<CAN::CanState> controllerStateOf(const canfd_frame &errorFrame);
