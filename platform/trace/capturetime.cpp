#include "capturetime.h"

#include <algorithm>
#include <limits>

namespace {
constexpr qint64 second = 1000000;
constexpr unsigned microsecondDigits = 6;
constexpr quint8 binaryFlag = 0x80;
/// Times beyond the range of a stamp in either direction, that can be added without a thought about overflow.
constexpr qint64 farthest = std::numeric_limits<qint64>::max() / 4;

struct Parts
{
    quint64 seconds;
    quint64 microseconds;
};

quint64 powerOfTen(unsigned exponent)
{
    quint64 power = 1;
    for (unsigned i = 0; i < exponent; ++i)
        power *= 10;
    return power;
}

Parts decimalParts(quint64 ticks, unsigned digits)
{
    constexpr unsigned mostDigits = 19; // a power of ten beyond that is more than all ticks
    const quint64 seconds = digits > mostDigits ? 0 : ticks / powerOfTen(digits);
    const quint64 rest = digits > mostDigits ? ticks : ticks % powerOfTen(digits);
    if (digits <= microsecondDigits)
        return {seconds, rest * powerOfTen(microsecondDigits - digits)};
    const unsigned tooFine = digits - microsecondDigits;
    return {seconds, tooFine > mostDigits ? 0 : rest / powerOfTen(tooFine)};
}

Parts binaryParts(quint64 ticks, unsigned bits)
{
    constexpr unsigned mostBits = 64;
    constexpr unsigned precise = 40; // what is finer does not count, and with these bits the product below fits
    const quint64 seconds = bits < mostBits ? ticks >> bits : 0;
    quint64 rest = bits < mostBits ? ticks & ((quint64(1) << bits) - 1) : ticks;
    if (bits > precise) {
        rest = bits - precise < mostBits ? rest >> (bits - precise) : 0;
        bits = precise;
    }
    return {seconds, rest * second >> bits};
}

/// Programs that rewrite captures give times before the epoch as negative numbers, where the format knows none. In
/// nanoseconds, real ones do not reach the top bit before 2262; of finer clocks nobody knows.
bool isNegative(quint64 ticks, quint8 resolution)
{
    constexpr quint8 nanosecondDigits = 9;
    return ticks > quint64(std::numeric_limits<qint64>::max()) && resolution <= nanosecondDigits;
}

CanTimeStamp nearestStamp(qint64 seconds, qint64 microseconds)
{
    using Range = std::numeric_limits<qint32>;
    if (seconds < Range::min())
        return {Range::min(), 0};
    if (seconds > Range::max())
        return {Range::max(), second - 1};
    return {static_cast<qint32>(seconds), static_cast<qint32>(microseconds)};
}
} // namespace

CanTimeStamp normalised(CanTimeStamp stamp)
{
    if (stamp.microseconds >= 0 && stamp.microseconds < second)
        return stamp;
    qint64 carry = stamp.microseconds / second;
    qint64 microseconds = stamp.microseconds % second;
    if (microseconds < 0) {
        microseconds += second;
        --carry;
    }
    return nearestStamp(stamp.seconds + carry, microseconds);
}

CaptureClock::CaptureClock(quint8 resolution, qint64 offset)
    : m_resolution(resolution)
    , m_offset(std::clamp(offset, -farthest, farthest))
{
}

CanTimeStamp CaptureClock::stamp(quint64 ticks) const
{
    const bool negative = isNegative(ticks, m_resolution);
    const quint64 distance = negative ? 0 - ticks : ticks;
    const unsigned exponent = m_resolution & ~binaryFlag;
    const Parts parts = (m_resolution & binaryFlag) != 0 ? binaryParts(distance, exponent)
                                                         : decimalParts(distance, exponent);
    const qint64 seconds = static_cast<qint64>(std::min<quint64>(parts.seconds, farthest));
    const qint64 microseconds = static_cast<qint64>(parts.microseconds);
    if (!negative)
        return nearestStamp(m_offset + seconds, microseconds);
    if (microseconds == 0)
        return nearestStamp(m_offset - seconds, 0);
    return nearestStamp(m_offset - seconds - 1, second - microseconds);
}
