#pragma once

#include <QWidget>

#include <array>

class QAction;
class QLabel;
class QToolButton;

/// What stands in the place of content that is not there yet: why, and what to do next.
class EmptyState : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyState(QWidget *parent = nullptr);

    /// @param actions offered as buttons, with their shortcuts on them; at most as many as there are buttons
    void show(const QString &title, const QString &text, const QList<QAction *> &actions);
    QString title() const;
    QString text() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void enlargeTitle();
    static void offer(QToolButton *button, QAction *action);

    QLabel *m_title;
    QLabel *m_text;
    std::array<QToolButton *, 2> m_buttons;
};
