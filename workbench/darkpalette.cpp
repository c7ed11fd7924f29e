#include "darkpalette.h"

#include <QPalette>

bool isDark(const QPalette &palette)
{
    constexpr int middle = 128;
    return palette.color(QPalette::Base).lightness() < middle;
}
