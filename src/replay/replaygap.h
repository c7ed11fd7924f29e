#pragma once

#include "canrecords.h"

#include <QStringList>

#include <optional>

/// How the user wants a recording played, as it counts for one gap.
struct GapRules
{
    double speed = 1.0;      ///< divisor of the gap: 2.0 plays twice as fast
    bool singleStep = false; ///< the gap is skipped, since somebody asked for just this frame
    bool fastForward = false;
    bool ignoreGaps = false;
};

/// What happens between two frames, in this order.
struct GapPlan
{
    QStringList textsBefore;
    std::optional<quint64> wait; ///< microseconds; none differs from 0 in that nothing sleeps at all
    QString textAfter;           ///< null for none
};

/// From one frame to the next in microseconds at that speed, cut to whole ones. A gap that is no number or outside of
/// the result's range, as at a speed of 0, counts as negative.
qint64 scaledGap(CanTimeStamp previous, CanTimeStamp next, double speed);

GapPlan planGap(CanTimeStamp previous, CanTimeStamp next, const GapRules &rules);
