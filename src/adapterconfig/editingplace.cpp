#include "editingplace.h"

#include <QLineEdit>

EditingPlace::EditingPlace(const QWidget &window)
    : m_control(window.focusWidget())
{
    if (const auto *edit = qobject_cast<QLineEdit *>(m_control))
        m_cursor = edit->cursorPosition();
}

void EditingPlace::comeBack() const
{
    if (!m_control)
        return;
    m_control->setFocus(Qt::OtherFocusReason);
    if (auto *edit = qobject_cast<QLineEdit *>(m_control))
        edit->setCursorPosition(m_cursor);
}
