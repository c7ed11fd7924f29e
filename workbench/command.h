#pragma once

#include <QKeySequence>

class QAction;
class QMenu;

/// Adds a command to a menu. Its explanation shows in the status bar and, with the key behind it, as the tool tip.
/// @param name of the object, by which tests and the tour find it
QAction *addCommand(QMenu *menu, const QString &name, const QString &text, const QKeySequence &shortcut,
                    const QString &explanation);
