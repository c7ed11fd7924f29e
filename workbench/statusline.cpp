#include "statusline.h"

#include "frametext.h"
#include "warningcolor.h"

#include <QLabel>
#include <QStatusBar>

namespace {
QLabel *addLabel(QStatusBar *bar, const QString &objectName)
{
    auto *label = new QLabel(bar);
    label->setObjectName(objectName);
    label->setMargin(2);
    bar->addPermanentWidget(label);
    return label;
}

void setText(QLabel *label, const QString &text, const QString &toolTip)
{
    label->setText(text);
    label->setToolTip(toolTip);
    label->setAccessibleName(text);
}
} // namespace

StatusLine::StatusLine(QStatusBar *bar)
    : QObject(bar)
    , m_state(addLabel(bar, QStringLiteral("lblState")))
    , m_received(addLabel(bar, QStringLiteral("lblReceived")))
    , m_sent(addLabel(bar, QStringLiteral("lblSent")))
    , m_lost(addLabel(bar, QStringLiteral("lblLost")))
    , m_rate(addLabel(bar, QStringLiteral("lblRate")))
{
    show({});
}

void StatusLine::show(const Content &content)
{
    const QString stalls = tr("Longest time that the window did not react: %1 ms in the last minute, %2 ms since the "
                              "connection was made.")
                               .arg(content.stallInLastMinute)
                               .arg(content.longestStall);
    const QString perInterface = breakdown(content.interfaces);
    const QString details = perInterface.isEmpty() ? stalls : perInterface + QLatin1Char('\n') + stalls;
    const InterfaceStatus sum = sumOf(content.interfaces);
    const quint64 lost = sum.lost + content.notStored;

    setText(m_state, connectionText(content.interfaces), details);
    setText(m_received, tr("Received %1").arg(FrameText::count(sum.received)), details);
    setText(m_sent, tr("Sent %1").arg(FrameText::count(sum.sent)), details);
    setText(m_lost, tr("Lost %1").arg(FrameText::count(lost)), details);
    setText(m_rate, tr("%1 frames/s").arg(FrameText::count(content.framesPerSecond)),
            tr("Frames a second that go into the trace") + QLatin1Char('\n') + stalls);

    setWarning(m_state, hasTrouble(content.interfaces));
    setWarning(m_lost, lost > 0);
}

/// A label that warns is bold too: not everybody sees the colour.
void StatusLine::setWarning(QLabel *label, bool warns)
{
    QPalette colours = m_received->palette();
    if (warns)
        colours.setColor(QPalette::WindowText, warningColor(colours));
    label->setPalette(colours);
    QFont font = m_received->font();
    font.setBold(warns);
    label->setFont(font);
}
