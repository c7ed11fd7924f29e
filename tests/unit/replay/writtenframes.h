#pragma once

#include "fakeadapter.h"

/// The identifiers of the frames that an adapter was asked to write, in their order: "001 002".
inline QString writtenFrames(const FakeAdapter &adapter)
{
    QStringList ids;
    const QStringList lines = adapter.calls();
    for (const QString &line : lines)
        ids << line.section(QLatin1Char(' '), 1).section(QLatin1Char('#'), 0, 0);
    return ids.join(QLatin1Char(' '));
}
