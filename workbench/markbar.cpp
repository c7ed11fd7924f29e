#include "markbar.h"

#include "framemarks.h"
#include "markcolor.h"
#include "messagetemplate.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QToolButton>

namespace {
constexpr int barMargin = 6;
constexpr int barSpacing = 2;
constexpr int shownCharacters = 36; // of a template: the whole text stands in the tool tip

QIcon colorSample(const QColor &color, const QColor &frame, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(color);
    QPainter painter(&pixmap);
    painter.setPen(frame);
    painter.drawRect(0, 0, size - 1, size - 1);
    return pixmap;
}
} // namespace

MarkBar::MarkBar(FrameMarks *marks, QWidget *parent)
    : QWidget(parent)
    , m_marks(marks)
    , m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(barMargin, barSpacing, barMargin, barSpacing);
    connect(marks, &FrameMarks::changed, this, &MarkBar::rebuild);
    rebuild();
}

void MarkBar::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        rebuild();
}

void MarkBar::rebuild()
{
    while (QLayoutItem *item = m_layout->takeAt(0)) {
        // A button may be in the middle of its menu.
        if (item->widget() != nullptr) {
            item->widget()->hide();
            item->widget()->deleteLater();
        }
        delete item;
    }
    m_layout->addWidget(new QLabel(tr("Marked:"), this));
    for (int index = 0; index < m_marks->count(); ++index) {
        const QString text = MessageTemplate::text(m_marks->at(index));
        auto *button = new QToolButton(this);
        button->setObjectName(QStringLiteral("btnMark%1").arg(index));
        button->setText(
            fontMetrics().elidedText(text, Qt::ElideRight, shownCharacters * fontMetrics().averageCharWidth()));
        button->setToolTip(tr("Marked frames: %1").arg(text.toHtmlEscaped()));
        button->setIcon(colorSample(markColor(palette(), m_marks->colorAt(index)), palette().color(QPalette::Mid),
                                    button->iconSize().height()));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setPopupMode(QToolButton::InstantPopup);
        auto *menu = new QMenu(button);
        connect(menu->addAction(tr("&Change...")), &QAction::triggered, this,
                [this, index] { emit editRequested(index); });
        connect(menu->addAction(tr("&Remove")), &QAction::triggered, m_marks,
                [this, index] { m_marks->remove(index); });
        button->setMenu(menu);
        m_layout->addWidget(button);
    }
    m_layout->addStretch();
    setVisible(m_marks->count() > 0);
}
