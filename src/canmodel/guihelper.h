#pragma once

#include "kestrune_export.h"

#include <QFlags>
#include <QMessageBox>
#include <QString>
#include <QVariant>

class QSettings;
class QWidget;

/// Message boxes, and what a window looks like from one start to the next. GUI thread only.
///
/// A null `settings` means the application's default QSettings.
class KESTRUNE_PLATFORM_EXPORT GuiHelper
{
public:
    /// Shows a modal box and waits for its end; gives the button that ended it.
    /// @param parent may be null
    static int showMessageBox(QWidget *parent, QString title, QString text, QString informativeText,
                              QFlags<QMessageBox::StandardButton> buttons, QMessageBox::Icon icon);

    /// Stores geometry and state of a window and, by object name, the values of the line edits, plain text edits, spin
    /// boxes, combo boxes, date and time edits, check boxes and checkable group boxes in it. Left out is what has
    /// the property "ExcludeSaving" set to true, and what stands in `exceptions`.
    /// @param group name under which the window is stored
    /// @param exceptions object names, separated by commas
    static void saveSettings(QWidget *window, QString group, QString exceptions, QSettings *settings = nullptr);
    /// Takes back what saveSettings() stored. What was not stored stays as it is.
    static void restoreSettings(QWidget *window, QString group, QString exceptions, QSettings *settings = nullptr);

    /// Stores one value beside those of the window.
    /// @param subgroup a further level below `group`; empty for none
    static void saveSetting(QString group, QString key, QVariant value, QString subgroup,
                            QSettings *settings = nullptr);
    /// An invalid variant if there is no such value.
    static QVariant restoreSetting(QString group, QString key, QString subgroup, QSettings *settings = nullptr);
};
