#pragma once

#include "canadapterfamily.h"

#include <vector>

/// The families that come with the platform library, in display order.
std::vector<std::unique_ptr<CanAdapterFamily>> makeBuiltInFamilies();
