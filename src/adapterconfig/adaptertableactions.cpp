#include "adaptertableactions.h"

#include "canmultiinterfacemodel.h"

#include <QAction>
#include <QCoreApplication>
#include <QTableView>

namespace {
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(CanMultiInterfaceDialog)
};

/// As CheckboxDelegate does it for a click.
void check(const QTableView &table, int column, bool canUncheck)
{
    const QModelIndex cell = table.currentIndex().siblingAtColumn(column);
    QAbstractItemModel *model = table.model();
    if (!cell.isValid() || !model->flags(cell).testFlag(Qt::ItemIsUserCheckable))
        return;
    const bool isSet = cell.data(Qt::CheckStateRole).toBool();
    if (!isSet || canUncheck)
        model->setData(cell, !isSet, Qt::CheckStateRole);
}

/// @param canUncheck false for a column of which one cell is always checked
void addAction(QTableView *table, int column, const QString &name, const QString &text, const QKeySequence &shortcut,
               bool canUncheck)
{
    auto *action = new QAction(text, table);
    action->setObjectName(name);
    action->setData(column);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetShortcut);
    table->addAction(action);
    QObject::connect(action, &QAction::triggered, table, [=] { check(*table, column, canUncheck); });
}
} // namespace

void addAdapterTableActions(QTableView *table)
{
    table->setContextMenuPolicy(Qt::ActionsContextMenu);
    addAction(table, CanMultiInterfaceModel::ColumnActive, QStringLiteral("actionActive"),
              Texts::tr("Set active or not"), Qt::Key_Space, true);
    addAction(table, CanMultiInterfaceModel::ColumnPrimary, QStringLiteral("actionPrimary"), Texts::tr("Make primary"),
              Qt::CTRL + Qt::Key_Space, false);
}

void offerActionsOfShownColumns(const QTableView &table)
{
    const QList<QAction *> actions = table.actions();
    for (QAction *action : actions)
        action->setVisible(!table.isColumnHidden(action->data().toInt()));
}
