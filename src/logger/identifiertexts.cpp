#include "identifiertexts.h"

#include <QRegularExpression>
#include <QStringList>

#include <optional>

namespace {
constexpr int baseByPrefix = 0;

std::optional<int> number(const QString &text)
{
    bool ok = false;
    const int value = text.toInt(&ok, baseByPrefix);
    return ok ? std::optional(value) : std::nullopt;
}

std::optional<IdentifierSet::Range> filterRange(const QString &part)
{
    if (!part.contains(QLatin1Char('-'))) {
        const std::optional<int> id = number(part);
        return id ? std::optional(IdentifierSet::Range{quint32(*id), quint32(*id)}) : std::nullopt;
    }
    const QStringList ends = part.split(QLatin1Char('-'));
    return IdentifierSet::Range{quint32(number(ends.first()).value_or(0)), quint32(number(ends.last()).value_or(0))};
}
} // namespace

QList<quint32> listedIdentifiers(const QString &text)
{
    QList<quint32> ids;
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString &part : parts) {
        if (const std::optional<int> id = number(part))
            ids.append(static_cast<quint32>(*id));
    }
    return ids;
}

IdentifierSet filteredIdentifiers(const QString &text)
{
    static const QRegularExpression separator(QStringLiteral(R"(\;|\n|\,)"));
    QVector<IdentifierSet::Range> ranges;
    const QStringList parts = text.split(separator);
    for (const QString &part : parts) {
        if (const auto range = filterRange(part))
            ranges.append(*range);
    }
    return IdentifierSet(ranges);
}
