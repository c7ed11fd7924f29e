#include "checkboxdelegate.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStyleOptionButton>

namespace {
constexpr int side = 16;

/// Styles draw the button's ground as that of a cell, and its outline darker than a window. On dark ground, where both
/// are the same, nothing would be seen of a button that is off.
void standOut(QPalette &palette)
{
    if (palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness())
        palette.setColor(QPalette::Base, palette.color(QPalette::Button));
}

QRect buttonRect(const QRect &cell)
{
    return {cell.left() + cell.width() / 2 - side / 2, cell.top() + cell.height() / 2 - side / 2, side, side};
}
} // namespace

CheckboxDelegate::CheckboxDelegate(QStyle::ControlElement element, QObject *parent)
    : QStyledItemDelegate(parent)
    , element(element)
{
}

CheckboxDelegate::~CheckboxDelegate() = default;

void CheckboxDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    // Of its own and not the cell's: neither selection nor focus nor the enabled state shows on the button.
    QStyleOptionButton button;
    button.rect = buttonRect(option.rect);
    standOut(button.palette);
    button.state |= index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? QStyle::State_On : QStyle::State_Off;
    QApplication::style()->drawControl(element, &button, painter);
}

bool CheckboxDelegate::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                   const QModelIndex &index)
{
    if (event->type() != QEvent::MouseButtonRelease || model == nullptr || !index.isValid())
        return false;
    if (!model->flags(index).testFlag(Qt::ItemIsUserCheckable))
        return false;
    if (!buttonRect(option.rect).contains(static_cast<QMouseEvent *>(event)->pos()))
        return false;
    const bool isSet = index.data(Qt::CheckStateRole).toBool();
    // Which radio button is set ends by setting another one.
    if (element == QStyle::CE_RadioButton && isSet)
        return true;
    model->setData(index, !isSet, Qt::CheckStateRole);
    return true;
}
