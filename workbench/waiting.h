#pragma once

#include <functional>

/// Lets the event loop run until the condition holds, and looks a hundred times a second.
/// @return false if it did not hold within the time
bool waitUntil(const std::function<bool()> &condition, int milliseconds);

/// Lets the event loop run for that long.
void waitFor(int milliseconds);
