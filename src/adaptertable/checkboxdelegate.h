#pragma once

#include "kestrune_export.h"

#include <QStyle>
#include <QStyledItemDelegate>

/// Draws the check state of a cell as a check box or a radio button in its middle, and nothing else of the cell. A click
/// on it goes to the model's setData(). GUI thread only.
class KESTRUNE_EXPORT CheckboxDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// @param element QStyle::CE_CheckBox, or QStyle::CE_RadioButton, which a click can only set
    explicit CheckboxDelegate(QStyle::ControlElement element, QObject *parent = nullptr);
    ~CheckboxDelegate() override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

private:
    QStyle::ControlElement element;
};
