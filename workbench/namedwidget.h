#pragma once

#include <QWidget>

/// The widget itself, with a name for tests and settings and a word for the user.
template <typename Widget>
Widget *named(Widget *widget, const QString &objectName, const QString &toolTip)
{
    widget->setObjectName(objectName);
    widget->setToolTip(toolTip);
    return widget;
}
