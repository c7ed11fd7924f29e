#pragma once

#include <QLabel>
#include <QList>

#include <algorithm>

/// Gives labels one width, so that fields that stand in layouts of their own still begin at one line. To be repeated
/// when the font changes.
inline void alignLabels(const QList<QLabel *> &labels)
{
    int width = 0;
    for (const QLabel *label : labels)
        width = std::max(width, label->sizeHint().width());
    for (QLabel *label : labels)
        label->setMinimumWidth(width);
}
