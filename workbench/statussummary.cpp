#include "statussummary.h"

#include "frametext.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

namespace {
constexpr qint64 windowMilliseconds = 1000;

/// Room for the sentences that stand for the user.
struct StatusSummary
{
    Q_DECLARE_TR_FUNCTIONS(StatusSummary)
};

/// As the field says it; empty where there is nothing to say.
QString controllerText(CAN::CanState state)
{
    switch (state) {
    case CAN::CanStateErrorActive:
        return StatusSummary::tr("error active");
    case CAN::CanStateErrorWarning:
        return StatusSummary::tr("error warning");
    case CAN::CanStateErrorPassive:
        return StatusSummary::tr("error passive");
    case CAN::CanStateBusOff:
        return StatusSummary::tr("bus off");
    case CAN::CanStateStopped:
        return StatusSummary::tr("stopped");
    case CAN::CanStateUnknown:
        break;
    }
    return {};
}

bool isWell(CAN::CanState state)
{
    return state == CAN::CanStateErrorActive || state == CAN::CanStateUnknown;
}

QString linkText(const InterfaceStatus &status)
{
    if (!status.trouble.isEmpty())
        return status.trouble;
    if (!status.connected)
        return StatusSummary::tr("not connected");
    const QString controller = controllerText(status.controller);
    return controller.isEmpty() ? StatusSummary::tr("connected")
                                : StatusSummary::tr("connected, controller %1").arg(controller);
}
} // namespace

InterfaceStatus sumOf(const QVector<InterfaceStatus> &interfaces)
{
    InterfaceStatus sum;
    for (const InterfaceStatus &status : interfaces) {
        sum.received += status.received;
        sum.sent += status.sent;
        sum.lost += status.lost;
    }
    return sum;
}

QString connectionText(const QVector<InterfaceStatus> &interfaces)
{
    QStringList connected;
    QStringList failed;
    for (const InterfaceStatus &status : interfaces) {
        if (!status.connected && !status.trouble.isEmpty())
            failed.append(status.name);
        else if (status.connected && isWell(status.controller))
            connected.append(status.name);
        else if (status.connected)
            connected.append(StatusSummary::tr("%1 (%2)", "interface and state of its controller")
                                 .arg(status.name, controllerText(status.controller)));
    }
    QStringList parts;
    if (!connected.isEmpty())
        parts.append(StatusSummary::tr("Connected: %1").arg(connected.join(QLatin1String(", "))));
    if (!failed.isEmpty())
        parts.append(StatusSummary::tr("Failed: %1").arg(failed.join(QLatin1String(", "))));
    return parts.isEmpty() ? StatusSummary::tr("Not connected") : parts.join(QLatin1String("; "));
}

bool hasTrouble(const QVector<InterfaceStatus> &interfaces)
{
    return std::any_of(interfaces.cbegin(), interfaces.cend(), [](const InterfaceStatus &status) {
        return status.connected ? !isWell(status.controller) : !status.trouble.isEmpty();
    });
}

QString breakdown(const QVector<InterfaceStatus> &interfaces)
{
    QStringList lines;
    for (const InterfaceStatus &status : interfaces) {
        lines.append(StatusSummary::tr("%1: %2; received %3, sent %4, lost %5")
                         .arg(status.name, linkText(status), FrameText::count(status.received),
                              FrameText::count(status.sent), FrameText::count(status.lost)));
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
