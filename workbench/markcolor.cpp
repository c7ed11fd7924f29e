#include "markcolor.h"

#include "darkpalette.h"
#include "framemarks.h"

#include <QPalette>

namespace {
// Neighbours in the order in which they are given out lie far apart on the colour circle.
constexpr QRgb onLight[FrameMarks::maxMarks] = {0xFFFFE9A8, 0xFFBFE3FF, 0xFFCDEFC4, 0xFFF3CDEB,
                                                0xFFFFD3B8, 0xFFC9F1EE, 0xFFD9D4F7, 0xFFE6E0CE};
constexpr QRgb onDark[FrameMarks::maxMarks] = {0xFF5C4B00, 0xFF0B4266, 0xFF1F4D1A, 0xFF572150,
                                               0xFF662F0C, 0xFF0F4B48, 0xFF3A3266, 0xFF4B4530};
} // namespace

QColor markColor(const QPalette &palette, int color)
{
    return QColor::fromRgb(isDark(palette) ? onDark[color] : onLight[color]);
}
