#pragma once

#include <QtGlobal>

#include <limits>

namespace HexEdit {
/// The nearest number that an int holds.
inline int toInt(qint64 value)
{
    return int(qBound<qint64>(std::numeric_limits<int>::min(), value, std::numeric_limits<int>::max()));
}

/// The position of a byte's first digit.
inline int nibble(qint64 index)
{
    return toInt(2 * index);
}
} // namespace HexEdit
