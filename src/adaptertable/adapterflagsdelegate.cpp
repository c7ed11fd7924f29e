#include "adapterflagsdelegate.h"

#include <QAbstractItemView>
#include <QDebug>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <QWhatsThis>

namespace {
using Flags = CanMultiInterfaceModel::AdapterModelFlags;

constexpr int gap = 4;
constexpr int padding = 6;
constexpr int hintedBoxes = 5;
constexpr int hintedMargin = 24;
constexpr int hintedHeight = 40;
constexpr QRgb unsetColor = qRgb(181, 181, 181);

struct Box
{
    const char *label;
    bool Flags::*flag;
    QRgb color;
    const char *whenSet;
    const char *whenNotSet;
};

// From left to right.
constexpr Box boxes[] = {
    {QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "FD"), &Flags::canFd, qRgb(250, 60, 20),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "CAN FD is activated."),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "CAN FD is not activated.")},
    {QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "LO"), &Flags::listenOnly, qRgb(50, 200, 50),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Listen only is activated."),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Listen only is not activated.")},
    {QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Auto"), &Flags::autoBusOn, qRgb(50, 133, 255),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Auto bus on is activated."),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Auto bus on is not activated.")},
    {QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "EF"), &Flags::errorFrames, qRgb(244, 200, 10),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Error frames are activated."),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Error frames are not activated.")},
    {QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "LS"), &Flags::lowSpeed, qRgb(255, 150, 55),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Low speed is activated."),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Low speed is not activated.")},
    {QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "LNK"), &Flags::linked, qRgb(225, 150, 225),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Adapter is linked with another adapter."),
     QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Adapter is not linked.")},
};
constexpr int boxCount = std::size(boxes);

struct Explanation
{
    bool Flags::*flag;
    const char *line;
};

// A text of lines, in an order that is not that of the boxes.
constexpr Explanation explanations[] = {
    {&Flags::autoBusOn, QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Auto bus on is set\n")},
    {&Flags::errorFrames, QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Error frames are activated\n")},
    {&Flags::canFd, QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "CAN FD is activated\n")},
    {&Flags::listenOnly, QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Listen only is activated\n")},
    {&Flags::lowSpeed, QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Low speed is activated\n")},
    {&Flags::linked, QT_TRANSLATE_NOOP("AdapterFlagsDelegate", "Adapter is linked\n")},
};

Flags flagsOf(const QModelIndex &index)
{
    return index.data(CanMultiInterfaceModel::flagsRole).value<Flags>();
}

QFont boxFont(QFont font)
{
    // A font that is sized in pixels has no point size.
    if (font.pointSize() > 1)
        font.setPointSize(font.pointSize() - 1);
    font.setWeight(QFont::Bold);
    return font;
}

/// Of every box: as the longest label needs it.
int boxWidth(const QFont &font)
{
    return QFontMetrics(font).horizontalAdvance(QStringLiteral("Auto")) + padding;
}

QRect boxRect(const QRect &cell, int number, int width)
{
    QRect rect = cell.adjusted(0, gap, 0, -gap);
    rect.setLeft(cell.left() + number * (width + gap) + gap);
    rect.setWidth(width);
    return rect;
}
} // namespace

AdapterFlagsDelegate::AdapterFlagsDelegate()
{
    for (const Box &box : boxes) {
        labels.append(tr(box.label));
        brushes.append(QBrush(QColor(box.color)));
    }
    brushes.append(QBrush(QColor(unsetColor)));
}

AdapterFlagsDelegate::~AdapterFlagsDelegate() = default;

void AdapterFlagsDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Flags flags = flagsOf(index);
    painter->save();
    const QFont font = boxFont(option.font);
    painter->setFont(font);
    painter->setRenderHints(QPainter::TextAntialiasing | QPainter::Antialiasing, false);
    painter->setPen(Qt::white);
    painter->setClipRect(option.rect);
    const int width = boxWidth(font);
    for (int i = 0; i < boxCount; ++i) {
        const QRect rect = boxRect(option.rect, i, width);
        painter->fillRect(rect, flags.*boxes[i].flag ? brushes.at(i) : brushes.last());
        painter->drawText(rect, Qt::AlignCenter, labels.at(i));
    }
    painter->restore();
}

QSize AdapterFlagsDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    const int width = boxWidth(boxFont(option.font)) * hintedBoxes + hintedMargin;
    qDebug() << Q_FUNC_INFO << width;
    return {width, hintedHeight};
}

bool AdapterFlagsDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                                     const QModelIndex &index)
{
    switch (event->type()) {
    case QEvent::ToolTip:
        QToolTip::showText(event->globalPos(), getToolTip(option, event->pos(), index), view);
        return true;
    case QEvent::WhatsThis:
        QWhatsThis::showText(event->globalPos(), getWhatsThis(index), view);
        return true;
    case QEvent::QueryWhatsThis:
        event->accept();
        return true;
    default:
        return false;
    }
}

QString AdapterFlagsDelegate::getToolTip(const QStyleOptionViewItem &option, QPoint pos, const QModelIndex &index) const
{
    const Flags flags = flagsOf(index);
    const int number = (pos.x() - option.rect.left()) / boxWidth(option.font);
    if (number < 0 || number >= boxCount)
        return {};
    const Box &box = boxes[number];
    return tr(flags.*box.flag ? box.whenSet : box.whenNotSet);
}

QString AdapterFlagsDelegate::getWhatsThis(const QModelIndex &index) const
{
    const Flags flags = flagsOf(index);
    QString lines;
    for (const Explanation &explanation : explanations) {
        if (flags.*explanation.flag)
            lines += tr(explanation.line);
    }
    lines = lines.trimmed();
    return lines.isEmpty() ? tr("No special flags activated.") : lines;
}
