#include "statussummary.h"

#include "frametext.h"

#include <QCoreApplication>
#include <QStringList>

namespace {
constexpr qint64 windowMilliseconds = 1000;

/// Room for the sentences that stand for the user.
struct StatusSummary
{
    Q_DECLARE_TR_FUNCTIONS(StatusSummary)
};
} // namespace

InterfaceCounts sumOf(const QVector<InterfaceCounts> &interfaces)
{
    InterfaceCounts sum;
    for (const InterfaceCounts &counts : interfaces) {
        sum.received += counts.received;
        sum.sent += counts.sent;
        sum.lost += counts.lost;
    }
    return sum;
}

QString breakdown(const QVector<InterfaceCounts> &interfaces)
{
    QStringList lines;
    for (const InterfaceCounts &counts : interfaces) {
        lines.append(StatusSummary::tr("%1: received %2, sent %3, lost %4")
                         .arg(counts.name, FrameText::count(counts.received), FrameText::count(counts.sent),
                              FrameText::count(counts.lost)));
    }
    return lines.join(QLatin1Char('\n'));
}

void RateMeter::report(qint64 now, quint64 number)
{
    if (!m_samples.isEmpty() && number < m_samples.last().number)
        clear();
    m_samples.append({now, number});
    // One sample of at least the window's age stays, to count from.
    while (m_samples.size() > 2 && now - m_samples[1].time >= windowMilliseconds)
        m_samples.removeFirst();
}

quint64 RateMeter::perSecond() const
{
    if (m_samples.size() < 2)
        return 0;
    const Sample &first = m_samples.first();
    const Sample &last = m_samples.last();
    const qint64 span = last.time - first.time;
    return span <= 0 ? 0 : (last.number - first.number) * 1000 / static_cast<quint64>(span);
}

void RateMeter::clear()
{
    m_samples.clear();
}
