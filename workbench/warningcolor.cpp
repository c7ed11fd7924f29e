#include "warningcolor.h"

#include <QPalette>

QColor warningColor(const QPalette &palette)
{
    constexpr int middle = 128;
    const bool dark = palette.color(QPalette::Base).lightness() < middle;
    return dark ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB7, 0x1C, 0x1C);
}
