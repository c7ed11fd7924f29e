#include "icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace {
constexpr qreal grid = 16.0; // the pictures are drawn on a square of so many units

/// Two halves of a plug with a line to each side: joined, or apart.
QPainterPath plug(bool joined)
{
    const qreal gap = joined ? 0.0 : 1.5;
    QPainterPath path;
    path.moveTo(1, 8);
    path.lineTo(4 - gap / 2, 8);
    path.addRoundedRect(QRectF(4 - gap / 2, 4.5, 3.5, 7), 1, 1);
    path.addRoundedRect(QRectF(8.5 + gap / 2, 4.5, 3.5, 7), 1, 1);
    path.moveTo(12 + gap / 2, 8);
    path.lineTo(15, 8);
    if (joined) {
        path.moveTo(7.5, 6.5);
        path.lineTo(8.5, 6.5);
        path.moveTo(7.5, 9.5);
        path.lineTo(8.5, 9.5);
    }
    return path;
}

/// A sheet of lines, crossed out.
QPainterPath crossedLines()
{
    QPainterPath path;
    for (const qreal y : {3.5, 6.5, 9.5, 12.5}) {
        path.moveTo(1.5, y);
        path.lineTo(y < 8 ? 13.5 : 7.5, y);
    }
    path.moveTo(9.5, 9);
    path.lineTo(14.5, 14);
    path.moveTo(14.5, 9);
    path.lineTo(9.5, 14);
    return path;
}

/// An arrow down to a line.
QPainterPath arrowToEnd()
{
    QPainterPath path;
    path.moveTo(8, 2);
    path.lineTo(8, 11);
    path.moveTo(4, 7.5);
    path.lineTo(8, 11.5);
    path.lineTo(12, 7.5);
    path.moveTo(3, 14);
    path.lineTo(13, 14);
    return path;
}

/// Three sliders, each at a place of its own.
QPainterPath sliders()
{
    constexpr QPointF knobs[] = {{10.5, 3.5}, {5.0, 8.0}, {9.0, 12.5}};
    constexpr qreal radius = 1.7;
    QPainterPath path;
    for (const QPointF &knob : knobs) {
        path.moveTo(1.5, knob.y());
        path.lineTo(knob.x() - radius, knob.y());
        path.addEllipse(knob, radius, radius);
        path.moveTo(knob.x() + radius, knob.y());
        path.lineTo(14.5, knob.y());
    }
    return path;
}

QPainterPath outline(Icons::Picture picture)
{
    switch (picture) {
    case Icons::Connect:
        return plug(true);
    case Icons::Disconnect:
        return plug(false);
    case Icons::Clear:
        return crossedLines();
    case Icons::Follow:
        return arrowToEnd();
    case Icons::Settings:
        return sliders();
    }
    return {};
}

class Engine : public QIconEngine
{
public:
    explicit Engine(Icons::Picture picture)
        : m_picture(picture)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        Q_UNUSED(state)
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / grid, rect.height() / grid);
        painter->setPen(QPen(QGuiApplication::palette().color(group, QPalette::ButtonText), 1.3, Qt::SolidLine,
                             Qt::RoundCap, Qt::RoundJoin));
        painter->drawPath(outline(m_picture));
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new Engine(m_picture); }

private:
    Icons::Picture m_picture;
};
} // namespace

namespace Icons {

QIcon icon(Picture picture)
{
    return QIcon(new Engine(picture));
}

} // namespace Icons
