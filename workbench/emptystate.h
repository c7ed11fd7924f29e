#pragma once

#include <QWidget>

class QAction;
class QLabel;
class QToolButton;

/// What stands in the place of content that is not there yet: why, and what to do next.
class EmptyState : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyState(QWidget *parent = nullptr);

    /// @param action offered as a button; null for none. Its shortcut stands on the button.
    void show(const QString &title, const QString &text, QAction *action);
    QString title() const;
    QString text() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void enlargeTitle();

    QLabel *m_title;
    QLabel *m_text;
    QToolButton *m_button;
};
