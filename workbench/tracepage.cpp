#include "tracepage.h"

#include "emptystate.h"
#include "frameview.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

TracePage::TracePage(QAbstractItemModel *model, bool follows, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_view(new FrameView(this))
    , m_emptyState(new EmptyState(this))
    , m_pages(new QStackedWidget(this))
    , m_followAction(new QAction(tr("&Follow newest frames"), this))
{
    m_view->setModel(model);
    m_view->setFollowAllowed(follows);
    m_view->setFrameShape(QFrame::NoFrame);
    m_pages->addWidget(m_emptyState);
    m_pages->addWidget(m_view);

    addCopyAction();
    m_followAction->setCheckable(true);
    m_followAction->setChecked(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_pages, 1);
    if (follows)
        layout->addWidget(makeFollowBar());

    connect(model, &QAbstractItemModel::rowsInserted, this, &TracePage::updatePage);
    connect(model, &QAbstractItemModel::modelReset, this, &TracePage::updatePage);
    updatePage();
}

void TracePage::addCopyAction()
{
    auto *action = new QAction(tr("&Copy selected frames"), this);
    action->setShortcut(QKeySequence(QKeySequence::Copy));
    // Elsewhere the same keys copy what is selected there.
    action->setShortcutContext(Qt::WidgetShortcut);
    connect(action, &QAction::triggered, m_view, &FrameView::copySelection);
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_view->addAction(action);
}

QWidget *TracePage::makeFollowBar()
{
    const QKeySequence shortcut(Qt::CTRL + Qt::Key_E);
    const QString keys = shortcut.toString(QKeySequence::NativeText);
    m_followAction->setShortcut(shortcut);
    m_followAction->setToolTip(tr("Keep the newest frames in sight (%1)").arg(keys));
    m_view->addAction(m_followAction);

    auto *bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("followBar"));
    auto *hint = new QLabel(tr("The view stands still. New frames go on to the end of the trace."), bar);
    auto *button = new QToolButton(bar);
    button->setObjectName(QStringLiteral("btnFollow"));
    button->setText(tr("Follow newest frames (%1)").arg(keys));
    button->setToolTip(m_followAction->toolTip());
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(6, 2, 6, 2);
    layout->addWidget(hint, 1);
    layout->addWidget(button);
    bar->hide();
    connect(button, &QToolButton::clicked, m_view, [this] { m_view->setFollowing(true); });
    connect(m_followAction, &QAction::toggled, m_view, &FrameView::setFollowing);
    connect(m_view, &FrameView::followingChanged, this, [this, bar](bool following) {
        m_followAction->setChecked(following);
        bar->setVisible(!following);
    });
    return bar;
}

bool TracePage::showsEmptyState() const
{
    return m_pages->currentWidget() == m_emptyState;
}

void TracePage::updatePage()
{
    m_pages->setCurrentWidget(m_model->rowCount() > 0 ? static_cast<QWidget *>(m_view) : m_emptyState);
}
