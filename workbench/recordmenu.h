#pragma once

#include <QMenu>

class Session;

/// Which interfaces the trace records from: made anew each time it opens, since interfaces come and go.
class RecordMenu : public QMenu
{
    Q_OBJECT

public:
    /// @param session must outlive the menu
    RecordMenu(Session *session, QWidget *parent);

private:
    void fill();

    Session *m_session;
};
