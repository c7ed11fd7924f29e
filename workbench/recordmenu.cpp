#include "recordmenu.h"

#include "interfacename.h"
#include "session.h"

RecordMenu::RecordMenu(Session *session, QWidget *parent)
    : QMenu(tr("&Record from"), parent)
    , m_session(session)
{
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, &RecordMenu::fill);
}

void RecordMenu::fill()
{
    clear();
    const auto *adapters = m_session->adapters()->getAdapterMap();
    for (auto entry = adapters->cbegin(); entry != adapters->cend(); ++entry) {
        QAction *action = addAction(interfaceName(*entry.value()));
        action->setCheckable(true);
        action->setChecked(m_session->isTraced(entry.key()));
        action->setToolTip(tr("Interfaces on the same bus see the same frames. Record from one of them, or every frame "
                              "shows twice."));
        connect(action, &QAction::toggled, m_session, [this, identifier = entry.key()](bool traced) {
            m_session->setTraced(identifier, traced);
            m_session->saveSettings();
        });
    }
    if (adapters->isEmpty())
        addAction(tr("No CAN interface yet"))->setEnabled(false);
}
