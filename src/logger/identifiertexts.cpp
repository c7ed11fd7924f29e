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

void appendRange(int first, int last, QVector<IdentifierSet::Range> &ranges)
{
    // As identifiers, the negative numbers lie behind the others.
    if (first < 0 && last >= 0) {
        ranges.append({quint32(first), quint32(-1)});
        ranges.append({0, quint32(last)});
    } else if (first <= last) {
        ranges.append({quint32(first), quint32(last)});
    }
}

void appendFilterPart(const QString &part, QVector<IdentifierSet::Range> &ranges)
{
    if (part.contains(QLatin1Char('-'))) {
        const QStringList ends = part.split(QLatin1Char('-'));
        appendRange(number(ends.first()).value_or(0), number(ends.last()).value_or(0), ranges);
    } else if (const std::optional<int> id = number(part)) {
        appendRange(*id, *id, ranges);
    }
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
    for (const QString &part : parts)
        appendFilterPart(part, ranges);
    return IdentifierSet(ranges);
}
