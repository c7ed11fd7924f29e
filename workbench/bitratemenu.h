#pragma once

#include <QMenu>

class Session;

/// The bitrate that a new interface starts with, a value of the settings.
class BitrateMenu : public QMenu
{
    Q_OBJECT

public:
    /// @param session must outlive the menu
    BitrateMenu(Session *session, QWidget *parent);

private:
    void showCurrent();

    Session *m_session;
};
