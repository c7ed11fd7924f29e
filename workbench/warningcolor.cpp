#include "warningcolor.h"

#include "darkpalette.h"

QColor warningColor(const QPalette &palette)
{
    return isDark(palette) ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB7, 0x1C, 0x1C);
}
