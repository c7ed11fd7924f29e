#pragma once

#include <QList>

class QGridLayout;
class QLabel;
class QWidget;

// What depends on the font, to be repeated when that changes.

/// Gives labels one width, so that fields that stand in layouts of their own still begin at one line.
void alignLabels(const QList<QLabel *> &labels);

/// The width that the parent of the grid needs for widgets in so many columns.
int widthInColumns(const QGridLayout &grid, const QList<QWidget *> &widgets, int columns);
/// Arranges widgets in rows, in their order.
void arrangeInColumns(QGridLayout &grid, const QList<QWidget *> &widgets, int columns);
