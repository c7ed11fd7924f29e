#pragma once

#include <QMenu>

/// What the user may want to know of the program: its keys, its version.
class HelpMenu : public QMenu
{
    Q_OBJECT

public:
    /// @param window whose keys are listed, and on which the boxes stand
    explicit HelpMenu(QWidget *window);

private:
    void showKeys();
    void showAbout();

    QWidget *m_window;
};
