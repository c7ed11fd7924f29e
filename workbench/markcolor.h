#pragma once

#include <QColor>

class QPalette;

/// The ground of a marked row: light on light palettes and dark on dark ones, so that the palette's text stays readable.
/// @param color 0 to FrameMarks::maxMarks - 1
QColor markColor(const QPalette &palette, int color);
