#pragma once

#include "kestrune_export.h"

#include <QString>

/// The library itself.
class KESTRUNE_EXPORT Kestrune
{
public:
    Kestrune();

    static const QString version;
};
