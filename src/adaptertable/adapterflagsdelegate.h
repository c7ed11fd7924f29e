#pragma once

#include "canmultiinterfacemodel.h"

#include <QBrush>
#include <QStyledItemDelegate>

/// Draws CanMultiInterfaceModel::AdapterModelFlags as a row of small boxes, coloured where a flag is set and grey where
/// it is not, and explains the one under the pointer. GUI thread only.
class KESTRUNE_EXPORT AdapterFlagsDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    AdapterFlagsDelegate();
    ~AdapterFlagsDelegate() override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    /// Has room for five boxes: who wants to see all six gives the column a width of its own.
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

    /// What the box at that place of the viewport says; empty beside all of them. The plain font counts, without the
    /// gaps, so towards the right the answer may be that of a neighbour.
    QString getToolTip(const QStyleOptionViewItem &option, QPoint pos, const QModelIndex &index) const;
    /// A line for each flag that is set.
    QString getWhatsThis(const QModelIndex &index) const;

private:
    QList<QString> labels;
    QList<QBrush> brushes; ///< one for each label, and the last for a flag that is not set
};
