#pragma once

#include <QtGlobal>

// Both libraries are built with hidden visibility; these two words mark what leaves them. Nothing of
// ours is exported differently for building and for using, so one definition serves both sides.
#define KESTRUNE_EXPORT Q_DECL_EXPORT
#define KESTRUNE_PLATFORM_EXPORT Q_DECL_EXPORT
