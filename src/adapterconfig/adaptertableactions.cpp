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
    if (!cell.isValid() || table.isColumnHidden(column) || !model->flags(cell).testFlag(Qt::ItemIsUserCheckable))
        return;
    const bool isSet = cell.data(Qt::CheckStateRole).toBool();
    if (!isSet || canUncheck)
        model->setData(cell, !isSet, Qt::CheckStateRole);
}

QAction *addAction(QTableView *table, const QString &name, const QString &text, const QKeySequence &shortcut)
{
    auto *action = new QAction(text, table);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetShortcut);
    table->addAction(action);
    return action;
}
} // namespace

void addAdapterTableActions(QTableView *table)
{
    table->setContextMenuPolicy(Qt::ActionsContextMenu);
    const QAction *active = addAction(table, QStringLiteral("actionActive"), Texts::tr("Set active or not"),
                                      Qt::Key_Space);
    const QAction *primary = addAction(table, QStringLiteral("actionPrimary"), Texts::tr("Make primary"),
                                       Qt::CTRL + Qt::Key_Space);
    QObject::connect(active, &QAction::triggered, table,
                     [table] { check(*table, CanMultiInterfaceModel::ColumnActive, true); });
    QObject::connect(primary, &QAction::triggered, table,
                     [table] { check(*table, CanMultiInterfaceModel::ColumnPrimary, false); });
}
