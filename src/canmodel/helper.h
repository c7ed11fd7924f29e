#pragma once

#include "kestrune_export.h"

#include <array>

/// Facts about the running application.
class KESTRUNE_PLATFORM_EXPORT Helper
{
public:
    /// Major, minor and patch of QCoreApplication::applicationVersion, and a fourth byte that is 0 for a plain version
    /// and 1 for one with a suffix, as "1.2.3-dev". Parts that are missing or no number count as 0; each keeps its low
    /// 8 bits.
    static std::array<quint8, 4> getCurrentAppVersion();
};
