#include "hintlabel.h"

#include "warningcolor.h"

#include <QEvent>
#include <QScopedValueRollback>

HintLabel::HintLabel(const QString &objectName, QWidget *parent)
    : QLabel(parent)
{
    setObjectName(objectName);
    setWordWrap(true);
}

void HintLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    // Its own change of the palette comes by here too.
    if (event->type() == QEvent::PaletteChange && !m_takesColour)
        takeColour();
}

void HintLabel::show(const QString &text, bool isError)
{
    m_isError = isError;
    takeColour();
    setText(text);
    setAccessibleName(text);
}

void HintLabel::takeColour()
{
    const QScopedValueRollback<bool> taking(m_takesColour, true);
    QPalette colours; // what it does not say comes from the parent
    if (m_isError)
        colours.setColor(QPalette::WindowText, warningColor(palette()));
    setPalette(colours);
}
