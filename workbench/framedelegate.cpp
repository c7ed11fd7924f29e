#include "framedelegate.h"

#include "framecolumn.h"
#include "warningcolor.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace {
int textMargin(const QStyleOptionViewItem &option)
{
    const QStyle *style = option.widget != nullptr ? option.widget->style() : QApplication::style();
    return style->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
}

QPalette::ColorGroup colorGroup(QStyle::State state)
{
    if (!state.testFlag(QStyle::State_Enabled))
        return QPalette::Disabled;
    return state.testFlag(QStyle::State_Active) ? QPalette::Normal : QPalette::Inactive;
}

QColor textColor(const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (option.state.testFlag(QStyle::State_Selected))
        return option.palette.color(colorGroup(option.state), QPalette::HighlightedText);
    if (index.data(FrameRoles::ErrorRole).toBool())
        return warningColor(option.palette);
    return option.palette.color(colorGroup(option.state), QPalette::Text);
}

void drawFocus(QPainter *painter, const QStyleOptionViewItem &option, QStyle *style)
{
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(option);
    focus.state |= QStyle::State_KeyboardFocusChange;
    focus.backgroundColor = option.palette.color(QPalette::Base);
    style->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, option.widget);
}
} // namespace

QFont FrameDelegate::fixedWidthFont(const QFont &font)
{
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Some platforms have no idea of a fixed-width font and name their usual one.
    if (!QFontInfo(fixed).fixedPitch()) {
        fixed.setFamily(QStringLiteral("monospace"));
        fixed.setStyleHint(QFont::Monospace);
    }
    if (font.pointSizeF() > 0)
        fixed.setPointSizeF(font.pointSizeF());
    else
        fixed.setPixelSize(font.pixelSize());
    return fixed;
}

void FrameDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyle *style = option.widget != nullptr ? option.widget->style() : QApplication::style();
    if (option.state & (QStyle::State_Selected | QStyle::State_MouseOver))
        style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);
    if (option.state.testFlag(QStyle::State_HasFocus))
        drawFocus(painter, option, style);
    const QString text = index.data().toString();
    if (text.isEmpty())
        return;
    const QFont &font = fontFor(option.font, index);
    const int margin = textMargin(option);
    const QRect area = option.rect.adjusted(margin, 0, -margin, 0);
    painter->setFont(font);
    painter->setPen(textColor(option, index));
    painter->drawText(area, index.data(Qt::TextAlignmentRole).toInt() | Qt::TextSingleLine,
                      QFontMetrics(font).elidedText(text, Qt::ElideRight, area.width()));
}

bool FrameDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                              const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.data(Qt::ToolTipRole).toString().isEmpty())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const QString text = index.data().toString();
    const int width = QFontMetrics(fontFor(option.font, index)).horizontalAdvance(text) + 2 * textMargin(option);
    QToolTip::showText(event->globalPos(), width <= option.rect.width() ? QString() : text, view);
    return true;
}

void FrameDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->font = fontFor(option->font, index);
    option->fontMetrics = QFontMetrics(option->font);
}

const QFont &FrameDelegate::fontFor(const QFont &base, const QModelIndex &index) const
{
    if (base != m_base) {
        m_base = base;
        m_fixed = fixedWidthFont(base);
    }
    return index.data(FrameRoles::FixedWidthRole).toBool() ? m_fixed : m_base;
}
