#include "editingplace.h"

#include <QApplication>
#include <QLineEdit>

EditingPlace::EditingPlace(const QWidget *form)
{
    QWidget *focus = QApplication::focusWidget();
    if (focus == nullptr || !form->isAncestorOf(focus))
        return;
    m_control = focus;
    if (const auto *edit = qobject_cast<QLineEdit *>(focus))
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
