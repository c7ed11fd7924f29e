#pragma once

#include <QPointer>
#include <QWidget>

/// Where the user works in a window, to come back to after something was done there that they did not ask for.
class EditingPlace
{
public:
    /// Remembers the control of the window that has the focus, or gets it with the window.
    explicit EditingPlace(const QWidget &window);

    /// Gives the focus back, and the cursor its place.
    void comeBack() const;

private:
    QPointer<QWidget> m_control;
    int m_cursor = 0;
};
