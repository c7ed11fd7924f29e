#pragma once

#include <QStyledItemDelegate>

/// Draws the cells of a view of frames: digits in a fixed-width font of the view's size, errors in a warning colour
/// that suits the palette. The tool tip of a text that does not fit shows all of it.
///
/// It draws plain text and nothing else, for it draws thousands of cells a second.
class FrameDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The system's fixed-width font in the size of `font`.
    static QFont fixedWidthFont(const QFont &font);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    const QFont &fontFor(const QFont &base, const QModelIndex &index) const;

    // Looking for a font takes longer than drawing with it.
    mutable QFont m_base;
    mutable QFont m_fixed = fixedWidthFont(m_base);
};
