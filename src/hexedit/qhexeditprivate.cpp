#include "qhexeditprivate.h"

#include "hexgeometry.h"

#include <QFontMetrics>
#include <QScrollArea>

namespace {
constexpr int blinkInterval = 500; // ms
} // namespace

QHexEditPrivate::QHexEditPrivate(QScrollArea *parent)
    : QWidget(parent)
    , m_scrollArea(parent)
    , m_geometry(std::make_unique<HexEdit::Geometry>())
    , m_considerBits(XByteArray::mostBytes)
    , m_addressAreaColor(0xD4, 0xD4, 0xD4)
    , m_considerColor(0xFD, 0x9E, 0x3F)
    , m_highlightingColor(0xFF, 0xFF, 0x99)
    , m_selectionColor(0x6D, 0x9E, 0xFF)
{
    connect(&m_cursorTimer, &QTimer::timeout, this, &QHexEditPrivate::updateCursor);
    connect(this, &QHexEditPrivate::dataChanged, this, &QHexEditPrivate::adjust);

    QHexEditPrivate::setFont(QFont(QStringLiteral("Courier"), 10));
    setCursorPos(0);
    resetSelection(0);
    setFocusPolicy(Qt::StrongFocus);
    m_cursorTimer.start(blinkInterval);
}

QHexEditPrivate::~QHexEditPrivate() = default;

QString QHexEditPrivate::toRedableString()
{
    return m_xData.toRedableString(0, m_xData.size());
}

QString QHexEditPrivate::selectionToReadableString()
{
    return m_xData.toRedableString(m_selectionBegin, m_selectionEnd);
}

void QHexEditPrivate::setBytesPerLine(int count)
{
    m_geometry->setBytesPerLine(count);
}

void QHexEditPrivate::setAddressArea(bool addressArea)
{
    m_addressArea = addressArea;
    adjust();
    setCursorPos(m_cursorPosition);
}

void QHexEditPrivate::setAddressWidth(int addressWidth)
{
    m_xData.setAddressWidth(addressWidth);
    adjust();
    setCursorPos(m_cursorPosition);
}

void QHexEditPrivate::setAddressOffset(int offset)
{
    m_xData.setAddressOffset(offset);
    adjust();
}

int QHexEditPrivate::addressOffset()
{
    return m_xData.addressOffset();
}

void QHexEditPrivate::setAsciiArea(bool asciiArea)
{
    m_asciiArea = asciiArea;
    adjust();
}

void QHexEditPrivate::setHighlighting(bool mode)
{
    m_highlighting = mode;
    update();
}

void QHexEditPrivate::setFont(QFont const &font)
{
    QWidget::setFont(font);
    adjust();
}

void QHexEditPrivate::setAddressAreaColor(QColor const &color)
{
    m_addressAreaColor = color;
    update();
}

QColor QHexEditPrivate::addressAreaColor()
{
    return m_addressAreaColor;
}

void QHexEditPrivate::setHighlightingColor(QColor const &color)
{
    m_highlightingColor = color;
    update();
}

QColor QHexEditPrivate::highlightingColor()
{
    return m_highlightingColor;
}

void QHexEditPrivate::setHighlightingPenColor(QColor const &color)
{
    m_highlightingPenColor = color;
    update();
}

QColor QHexEditPrivate::highlightingPenColor()
{
    return m_highlightingPenColor;
}

void QHexEditPrivate::setSelectionColor(QColor const &color)
{
    m_selectionColor = color;
    update();
}

QColor QHexEditPrivate::selectionColor()
{
    return m_selectionColor;
}

void QHexEditPrivate::setOverwriteMode(bool overwriteMode)
{
    if (overwriteMode == m_overwriteMode)
        return;
    m_overwriteMode = overwriteMode;
    emit overwriteModeChanged(overwriteMode);
}

bool QHexEditPrivate::overwriteMode()
{
    return m_overwriteMode;
}

void QHexEditPrivate::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

bool QHexEditPrivate::isReadOnly()
{
    return m_readOnly;
}

void QHexEditPrivate::adjust()
{
    const QFontMetrics metrics = fontMetrics();
    m_geometry->charWidth = qMax(1, metrics.horizontalAdvance(QLatin1Char('9')));
    m_geometry->charHeight = qMax(1, metrics.height());
    m_geometry->setAreas(m_addressArea ? m_xData.realAddressNumbers() : 0);
    setMinimumSize(m_geometry->minimumSize(m_xData.size(), m_asciiArea));

    // The scroll area takes up a new minimum size only with a resize.
    const QSize before = size();
    resize(before + QSize(1, 1));
    resize(before);
    update();
}
