#include "command.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>

QAction *addCommand(QMenu *menu, const QString &name, const QString &text, const QKeySequence &shortcut,
                    const QString &explanation)
{
    QAction *action = menu->addAction(text);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    action->setStatusTip(explanation);
    const QString keys = shortcut.toString(QKeySequence::NativeText);
    action->setToolTip(
        keys.isEmpty()
            ? explanation
            : QCoreApplication::translate("Command", "%1 (%2)", "explanation and key").arg(explanation, keys));
    return action;
}
