#include "replaygap.h"

#include <QCoreApplication>

#include <limits>

namespace {
constexpr qint64 second = 1000000;
// Shorter waits are too short to be worth skipping.
constexpr qint64 longestKept = 99;
constexpr qint64 longestSilent = 7 * second;
constexpr qint64 longestUnannounced = 10 * second;
constexpr qint64 longestWaited = 3600 * second;
constexpr quint64 reducedToSecond = 1 * second;
constexpr quint64 reducedToMinute = 60 * second;

QString text(const char *source)
{
    return QCoreApplication::translate("ReplayWorker", source);
}

QString activeText()
{
    return text(QT_TRANSLATE_NOOP("ReplayWorker", "CAN replay active"));
}

/// A gap of more than ten seconds, which the user is told about.
GapPlan planLongGap(qint64 delay, bool ignoreGaps)
{
    const qint64 seconds = delay / second;
    if (ignoreGaps) {
        const char *const reduced = QT_TRANSLATE_NOOP("ReplayWorker", " %1 s gap to next message reduced to 1s");
        return {{text(reduced).arg(seconds)}, reducedToSecond, {}};
    }
    const char *const waiting = QT_TRANSLATE_NOOP("ReplayWorker", " %1 s gap to next message, don't worry");
    GapPlan plan = {{text(waiting).arg(seconds)}, static_cast<quint64>(delay), activeText()};
    if (delay > longestWaited) {
        plan.textsBefore << text(QT_TRANSLATE_NOOP("ReplayWorker", " gap exceeding 1h to next message reduced to 60s"));
        plan.wait = reducedToMinute;
    }
    return plan;
}
} // namespace

qint64 scaledGap(CanTimeStamp previous, CanTimeStamp next, double speed)
{
    const CanTimeStamp gap = previous.timeDifference(next);
    // The sum wraps at 32 bits, where a gap of more than 35 minutes becomes another one or none: that is how
    // recordings with such gaps have always played.
    const auto sum = static_cast<qint32>(static_cast<quint32>(gap.microseconds)
                                         + static_cast<quint32>(gap.seconds) * static_cast<quint32>(second));
    constexpr double limit = 9223372036854775808.0; // 2^63
    const double scaled = sum / speed;
    const bool inRange = scaled >= -limit && scaled < limit;
    return inRange ? static_cast<qint64>(scaled) : std::numeric_limits<qint64>::min();
}

GapPlan planGap(CanTimeStamp previous, CanTimeStamp next, const GapRules &rules)
{
    if (rules.singleStep)
        return {{}, 0, {}};
    const qint64 delay = scaledGap(previous, next, rules.speed);
    if (delay < 0)
        return {};
    const auto wait = static_cast<quint64>(delay);
    if (delay <= longestKept)
        return {{}, wait, {}};
    if (rules.fastForward)
        return {};
    if (delay <= longestSilent)
        return {{}, wait, {}};
    if (delay <= longestUnannounced)
        return {{}, wait, activeText()};
    return planLongGap(delay, rules.ignoreGaps);
}
