#pragma once

class QPalette;

/// Whether lists have a dark ground, so that what is drawn on it must be light.
bool isDark(const QPalette &palette);
