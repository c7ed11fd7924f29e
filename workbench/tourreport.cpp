#include "tourreport.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <array>

namespace {
/// Room for the sentences that stand for the user.
struct Report
{
    Q_DECLARE_TR_FUNCTIONS(Report)
};

using Line = std::array<QString, 4>;
} // namespace

void TourReport::compare(const QString &name, const QString &expected, const QString &seen)
{
    add(name, expected, seen, expected == seen);
}

void TourReport::compare(const QString &name, quint64 expected, quint64 seen)
{
    compare(name, QString::number(expected), QString::number(seen));
}

void TourReport::add(const QString &name, const QString &expected, const QString &seen, bool passed)
{
    m_checks.append({name, expected, seen, passed});
}

bool TourReport::allPassed() const
{
    return failureCount() == 0;
}

int TourReport::failureCount() const
{
    return static_cast<int>(
        std::count_if(m_checks.cbegin(), m_checks.cend(), [](const Check &check) { return !check.passed; }));
}

QString TourReport::table() const
{
    QVector<Line> lines = {{Report::tr("Check"), Report::tr("Expected"), Report::tr("Seen"), Report::tr("Result")}};
    for (const Check &check : m_checks) {
        lines.append({check.name, check.expected, check.seen, check.passed ? Report::tr("ok") : Report::tr("FAILED")});
    }
    std::array<int, 4> widths = {};
    for (const Line &line : qAsConst(lines)) {
        for (std::size_t column = 0; column < line.size(); ++column)
            widths[column] = qMax(widths[column], line[column].size());
    }
    QString text;
    for (const Line &line : qAsConst(lines)) {
        QStringList cells;
        for (std::size_t column = 0; column < line.size(); ++column)
            cells.append(line[column].leftJustified(widths[column]));
        QString joined = cells.join(QLatin1String("  "));
        while (joined.endsWith(QLatin1Char(' ')))
            joined.chop(1);
        text += joined + QLatin1Char('\n');
    }
    return text
        + (allPassed() ? Report::tr("All %1 checks passed.").arg(count())
                       : Report::tr("%1 of %2 checks failed.").arg(failureCount()).arg(count()))
        + QLatin1Char('\n');
}
