#pragma once

#include "canadapterfamily.h"

/// Type 1, "SocketCAN": the CAN links of this computer. While it lives, CanAdapterFactory::notifier() tells of links
/// that come and go.
std::unique_ptr<CanAdapterFamily> makeSocketCanFamily();
