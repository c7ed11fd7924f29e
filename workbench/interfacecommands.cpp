#include "interfacecommands.h"

#include "bitratemenu.h"
#include "command.h"
#include "session.h"

#include <QAction>
#include <QMenu>

InterfaceCommands::InterfaceCommands(Session *session, QMenu *menu)
    : QObject(menu)
    , m_session(session)
    , m_overviewAction(addCommand(menu, QStringLiteral("actionInterfaces"), tr("&Interfaces..."),
                                  QKeySequence(Qt::CTRL + Qt::Key_I),
                                  tr("Add, describe and remove interfaces; while none is connected")))
{
    menu->addMenu(new BitrateMenu(session, menu));
    connect(m_overviewAction, &QAction::triggered, this, &InterfaceCommands::showOverview);
}

void InterfaceCommands::showOverview()
{
    if (m_session->editInterfaces())
        emit connectRequested();
}
