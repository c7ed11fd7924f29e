#pragma once

#include <QColor>

class QPalette;

/// A red for text on the palette's base colour, readable on light and on dark ones.
QColor warningColor(const QPalette &palette);
