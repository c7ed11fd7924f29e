#include "fontfit.h"

#include <QGridLayout>
#include <QLabel>

#include <algorithm>

void alignLabels(const QList<QLabel *> &labels)
{
    int width = 0;
    for (const QLabel *label : labels)
        width = std::max(width, label->sizeHint().width());
    for (QLabel *label : labels)
        label->setMinimumWidth(width);
}

void arrangeInColumns(QGridLayout &grid, const QList<QWidget *> &widgets, int columns)
{
    for (QWidget *widget : widgets)
        grid.removeWidget(widget);
    for (int i = 0; i < widgets.size(); ++i)
        grid.addWidget(widgets[i], i / columns, i % columns);
}
