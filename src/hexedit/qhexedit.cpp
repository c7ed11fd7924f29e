#include "qhexedit.h"

#include "hexnumbers.h"
#include "qhexeditprivate.h"

#include <QScrollBar>

QHexEdit::QHexEdit(QWidget *parent)
    : QScrollArea(parent)
    , m_private(new QHexEditPrivate(this))
{
    setWidget(m_private);
    setWidgetResizable(true);

    connect(m_private, &QHexEditPrivate::currentAddressChanged, this, &QHexEdit::currentAddressChanged);
    connect(m_private, &QHexEditPrivate::currentSizeChanged, this, &QHexEdit::currentSizeChanged);
    connect(m_private, &QHexEditPrivate::dataChanged, this, &QHexEdit::dataChangedSlot);
    connect(m_private, &QHexEditPrivate::overwriteModeChanged, this, &QHexEdit::overwriteModeChanged);

    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_private);
}

int QHexEdit::indexOf(QByteArray const &ba, int from) const
{
    return m_private->indexOf(ba, from);
}

int QHexEdit::lastIndexOf(QByteArray const &ba, int from) const
{
    return m_private->lastIndexOf(ba, from);
}

void QHexEdit::insert(int position, QByteArray &ba)
{
    m_private->insert(position, ba);
}

void QHexEdit::insert(int position, char ch)
{
    m_private->insert(position, ch);
}

void QHexEdit::remove(int position, int length)
{
    m_private->remove(position, length);
}

void QHexEdit::replace(int position, int length, QByteArray const &after)
{
    m_private->replace(position, length, after);
}

QString QHexEdit::toReadableString()
{
    return m_private->toRedableString();
}

QString QHexEdit::selectionToReadableString()
{
    return m_private->selectionToReadableString();
}

void QHexEdit::setData(QByteArray const &data)
{
    m_private->setData(data);
}

QByteArray QHexEdit::data()
{
    return m_private->data();
}

void QHexEdit::setAddressOffset(int offset)
{
    m_private->setAddressOffset(offset);
}

int QHexEdit::addressOffset()
{
    return m_private->addressOffset();
}

void QHexEdit::setCursorPosition(int cursorPos)
{
    m_private->setCursorPos(HexEdit::nibble(cursorPos));
}

int QHexEdit::cursorPosition()
{
    return m_private->cursorPos() / 2;
}

void QHexEdit::setAddressAreaColor(QColor const &color)
{
    m_private->setAddressAreaColor(color);
}

QColor QHexEdit::addressAreaColor()
{
    return m_private->addressAreaColor();
}

void QHexEdit::setHighlightingColor(QColor const &color)
{
    m_private->setHighlightingColor(color);
}

QColor QHexEdit::highlightingColor()
{
    return m_private->highlightingColor();
}

void QHexEdit::setHighlightingPenColor(QColor const &color)
{
    m_private->setHighlightingPenColor(color);
}

QColor QHexEdit::highlightingPenColor()
{
    return m_private->highlightingPenColor();
}

void QHexEdit::setSelectionColor(QColor const &color)
{
    m_private->setSelectionColor(color);
}

QColor QHexEdit::selectionColor()
{
    return m_private->selectionColor();
}

void QHexEdit::setOverwriteMode(bool overwriteMode)
{
    m_private->setOverwriteMode(overwriteMode);
}

bool QHexEdit::overwriteMode()
{
    return m_private->overwriteMode();
}

void QHexEdit::setReadOnly(bool readOnly)
{
    m_private->setReadOnly(readOnly);
}

bool QHexEdit::isReadOnly()
{
    return m_private->isReadOnly();
}

void QHexEdit::setFont(QFont const &font)
{
    m_private->setFont(font);
}

const QFont &QHexEdit::font() const
{
    return m_private->font();
}

void QHexEdit::setBytesPerLine(int count)
{
    m_private->setBytesPerLine(count);
}

void QHexEdit::setConsideration(bool enabled)
{
    m_private->setConsideration(enabled);
}

void QHexEdit::setBytesHighlighted(bool highlighted)
{
    m_private->setBytesHighlighted(highlighted);
}

void QHexEdit::setMaximumByteCount(int count)
{
    m_private->setMaximumByteCount(count);
}

void QHexEdit::setByteCountEnabled(int count)
{
    m_private->setByteCountEnabled(count);
}

QBitArray QHexEdit::getConsiderBitArray()
{
    return m_private->getConsiderBitArray();
}

void QHexEdit::setConsiderBitArray(QBitArray bits)
{
    m_private->setConsiderBitArray(bits);
}

void QHexEdit::setScrollbarEnabled(Qt::Orientation orientation, bool enabled)
{
    // Lines must stay reachable in a narrow window, and so the horizontal bar cannot be turned off by its own name.
    switch (int(orientation)) {
    case Qt::Vertical:
        setVerticalScrollBarPolicy(enabled ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
        break;
    case Qt::Horizontal:
        setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        break;
    default:
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        break;
    }
}

void QHexEdit::setStyleSheetForScrollbar(Qt::Orientation orientation, QString styleSheet)
{
    if (orientation == Qt::Vertical)
        verticalScrollBar()->setStyleSheet(styleSheet);
    else if (orientation == Qt::Horizontal)
        horizontalScrollBar()->setStyleSheet(styleSheet);
}

void QHexEdit::redo()
{
    m_private->redo();
}

void QHexEdit::setAddressWidth(int addressWidth)
{
    m_private->setAddressWidth(addressWidth);
}

void QHexEdit::setAddressArea(bool addressArea)
{
    m_private->setAddressArea(addressArea);
}

void QHexEdit::setAsciiArea(bool asciiArea)
{
    m_private->setAsciiArea(asciiArea);
}

void QHexEdit::setHighlighting(bool mode)
{
    m_private->setHighlighting(mode);
}

void QHexEdit::undo()
{
    m_private->undo();
}

void QHexEdit::dataChangedSlot()
{
    emit dataCountChanged(data().size());
}
