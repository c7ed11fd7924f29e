#include "fontfit.h"

#include <QGridLayout>
#include <QLabel>

#include <algorithm>

void alignLabels(const QList<QLabel *> &labels)
{
    // Not by the labels' size hints, which still have the width that was given for the former font.
    int width = 0;
    for (const QLabel *label : labels)
        width = std::max(width, label->fontMetrics().size(Qt::TextSingleLine, label->text()).width());
    for (QLabel *label : labels)
        label->setMinimumWidth(width);
}

int widthInColumns(const QGridLayout &grid, const QList<QWidget *> &widgets, int columns)
{
    int widest = 0;
    for (const QWidget *widget : widgets)
        widest = std::max(widest, widget->sizeHint().width());
    const QMargins around = grid.contentsMargins() + grid.parentWidget()->contentsMargins();
    return columns * widest + (columns - 1) * grid.horizontalSpacing() + around.left() + around.right();
}

void arrangeInColumns(QGridLayout &grid, const QList<QWidget *> &widgets, int columns)
{
    for (QWidget *widget : widgets)
        grid.removeWidget(widget);
    for (int i = 0; i < widgets.size(); ++i)
        grid.addWidget(widgets[i], i / columns, i % columns);
}
