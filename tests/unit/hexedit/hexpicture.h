#pragma once

#include "hexeditor.h"

#include <QPaintEvent>

/// The picture of an editor whose colours are known, and how often a colour occurs somewhere in it.
class Picture
{
public:
    explicit Picture(HexEditor &editor)
        : m_editor(editor)
        , m_image(editor.view->grab(QRect(0, 0, 780, 280)).toImage())
    {
    }

    int pixels(const QColor &color, const QRect &rect) const
    {
        int count = 0;
        const QRect inside = rect.intersected(m_image.rect());
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x)
                count += m_image.pixelColor(x, y) == color ? 1 : 0;
        }
        return count;
    }
    bool has(const QColor &color, const QRect &rect) const { return pixels(color, rect) > 0; }
    bool isFilled(const QColor &color, const QRect &rect) const
    {
        return pixels(color, rect) == rect.width() * rect.height();
    }

    /// The two digits of a byte, the gap behind them, and its character.
    QRect digits(int index) const { return cell(m_editor.digitAt(index), 2); }
    /// Without its outermost columns, which the backgrounds beside it may touch.
    QRect gap(int index) const
    {
        return cell(m_editor.digitAt(index) + QPoint(2 * m_editor.charWidth(), 0), 1).adjusted(1, 0, -1, 0);
    }
    QRect character(int index) const { return cell(m_editor.characterAt(index), 1); }
    QRect addresses() const { return QRect(0, 0, m_editor.xPosHex() - 8, m_image.height()); }
    QRect characters() const
    {
        const int left = m_editor.xPosAscii() - 10;
        return QRect(left, 0, m_image.width() - left, m_image.height());
    }

    const QImage &image() const { return m_image; }

private:
    QRect cell(QPoint middle, int characters) const
    {
        // Without the outermost pixel lines, over which the neighbours' glyphs may hang.
        return QRect(middle.x() - m_editor.charWidth() / 2, middle.y() - m_editor.charHeight() / 2 + 4,
                     characters * m_editor.charWidth(), m_editor.charHeight() - 4);
    }

    HexEditor &m_editor;
    QImage m_image;
};

/// What an editor painted since this was made.
class PaintWatcher : public QObject
{
public:
    explicit PaintWatcher(HexEditor &editor) { editor.view->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    QRegion painted() const { return m_painted; }

private:
    QRegion m_painted;
};
