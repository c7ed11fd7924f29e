#include "emptystate.h"

#include <QAction>
#include <QEvent>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
constexpr double titleScale = 1.5;
} // namespace

EmptyState::EmptyState(QWidget *parent)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_text(new QLabel(this))
    , m_buttons{new QToolButton(this), new QToolButton(this)}
{
    m_title->setObjectName(QStringLiteral("lblEmptyTitle"));
    m_text->setObjectName(QStringLiteral("lblEmptyText"));
    m_buttons[0]->setObjectName(QStringLiteral("btnEmptyAction"));
    m_buttons[1]->setObjectName(QStringLiteral("btnEmptyOtherAction"));
    for (QLabel *label : {m_title, m_text}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);

    auto *layout = new QVBoxLayout(this);
    layout->addStretch();
    layout->addWidget(m_title);
    layout->addWidget(m_text);
    layout->addSpacing(fontMetrics().height());
    for (QToolButton *button : m_buttons) {
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setFocusPolicy(Qt::StrongFocus);
        layout->addWidget(button, 0, Qt::AlignHCenter);
    }
    layout->addStretch();
    enlargeTitle();
}

void EmptyState::show(const QString &title, const QString &text, const QList<QAction *> &actions)
{
    m_title->setText(title);
    m_text->setText(text);
    for (std::size_t i = 0; i < m_buttons.size(); ++i)
        offer(m_buttons[i], actions.value(static_cast<int>(i)));
}

void EmptyState::offer(QToolButton *button, QAction *action)
{
    button->setDefaultAction(action);
    button->setVisible(action != nullptr);
    if (action == nullptr)
        return;
    const QString shortcut = action->shortcut().toString(QKeySequence::NativeText);
    const QString name = QString(action->text()).remove(QLatin1Char('&'));
    button->setText(shortcut.isEmpty() ? name : tr("%1 (%2)", "action and its key").arg(name, shortcut));
}

QString EmptyState::title() const
{
    return m_title->text();
}

QString EmptyState::text() const
{
    return m_text->text();
}

void EmptyState::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        enlargeTitle();
}

void EmptyState::enlargeTitle()
{
    QFont large = font();
    if (large.pointSizeF() > 0)
        large.setPointSizeF(large.pointSizeF() * titleScale);
    else
        large.setPixelSize(qRound(large.pixelSize() * titleScale));
    m_title->setFont(large);
}
