#pragma once

#include <QPointer>
#include <QWidget>

/// Where the user works in a form, to come back to after the form was filled anew under their hands.
class EditingPlace
{
public:
    /// Remembers the control of the form that has the focus, if there is one.
    explicit EditingPlace(const QWidget *form);

    /// Gives the focus back, and the cursor its place.
    void comeBack() const;

private:
    QPointer<QWidget> m_control;
    int m_cursor = 0;
};
