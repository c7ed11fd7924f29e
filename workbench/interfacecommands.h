#pragma once

#include <QObject>

class QAction;
class QMenu;
class Session;

/// The commands by which the user says which interfaces there are, and how they start.
class InterfaceCommands : public QObject
{
    Q_OBJECT

public:
    /// Adds the commands to the menu, which becomes the parent.
    /// @param session must outlive the commands
    InterfaceCommands(Session *session, QMenu *menu);

    /// Opens the overview of the interfaces. To be disabled while any is connected: who changes one ends its connection.
    QAction *overviewAction() const { return m_overviewAction; }

signals:
    /// The user closed the overview in order to connect.
    void connectRequested();

private:
    void showOverview();

    Session *m_session;
    QAction *m_overviewAction;
};
