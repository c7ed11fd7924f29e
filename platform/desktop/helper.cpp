#include "helper.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

std::array<quint8, 4> Helper::getCurrentAppVersion()
{
    constexpr int numbers = 3;
    const QString version = QCoreApplication::applicationVersion().trimmed();
    const QStringList parts = version.section(QLatin1Char('-'), 0, 0).split(QLatin1Char('.'));
    std::array<quint8, 4> bytes = {};
    for (int i = 0; i < std::min(parts.size(), numbers); ++i)
        bytes[size_t(i)] = static_cast<quint8>(parts[i].toULongLong());
    bytes[numbers] = version.section(QLatin1Char('-'), 1).isEmpty() ? 0 : 1;
    return bytes;
}
