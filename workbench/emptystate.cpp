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
    , m_button(new QToolButton(this))
{
    m_title->setObjectName(QStringLiteral("lblEmptyTitle"));
    m_text->setObjectName(QStringLiteral("lblEmptyText"));
    m_button->setObjectName(QStringLiteral("btnEmptyAction"));
    for (QLabel *label : {m_title, m_text}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    m_button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_button->setFocusPolicy(Qt::StrongFocus);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);

    auto *layout = new QVBoxLayout(this);
    layout->addStretch();
    layout->addWidget(m_title);
    layout->addWidget(m_text);
    layout->addSpacing(fontMetrics().height());
    layout->addWidget(m_button, 0, Qt::AlignHCenter);
    layout->addStretch();
    enlargeTitle();
}

void EmptyState::show(const QString &title, const QString &text, QAction *action)
{
    m_title->setText(title);
    m_text->setText(text);
    m_button->setDefaultAction(action);
    m_button->setVisible(action != nullptr);
    if (action == nullptr)
        return;
    const QString shortcut = action->shortcut().toString(QKeySequence::NativeText);
    const QString name = QString(action->text()).remove(QLatin1Char('&'));
    m_button->setText(shortcut.isEmpty() ? name : tr("%1 (%2)", "action and its key").arg(name, shortcut));
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
