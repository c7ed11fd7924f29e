#include "bitratemenu.h"

#include "session.h"

#include <QActionGroup>

namespace {
constexpr int bitrates[] = {10, 20, 50, 100, 125, 250, 500, 800, 1000}; // kBit/s, those of CANopen
constexpr int usualBitrate = 250;

QString bitrateItem()
{
    return QStringLiteral("defaultBitrate");
}
} // namespace

BitrateMenu::BitrateMenu(Session *session, QWidget *parent)
    : QMenu(tr("Default &bitrate"), parent)
    , m_session(session)
{
    setObjectName(QStringLiteral("menuDefaultBitrate"));
    setToolTip(tr("What a new interface starts with"));
    auto *group = new QActionGroup(this);
    for (const int bitrate : bitrates) {
        QAction *action = addAction(tr("%1 kBit/s").arg(bitrate));
        action->setCheckable(true);
        action->setData(bitrate);
        group->addAction(action);
    }
    connect(group, &QActionGroup::triggered, this, [this](const QAction *action) {
        m_session->settings()->setValue(bitrateItem(), action->data().toInt());
        m_session->saveSettings();
    });
    // Only then: the settings are opened after the menus were made.
    connect(this, &QMenu::aboutToShow, this, &BitrateMenu::showCurrent);
}

void BitrateMenu::showCurrent()
{
    const bool canBeKept = m_session->settings()->isOpen();
    const int current = canBeKept ? m_session->settings()->value(bitrateItem(), usualBitrate).toInt() : usualBitrate;
    const QList<QAction *> entries = actions();
    for (QAction *action : entries) {
        action->setChecked(action->data().toInt() == current);
        action->setEnabled(canBeKept);
    }
}
