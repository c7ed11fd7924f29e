#pragma once

#include "kestrune_export.h"
#include "xbytearray.h"

#include <QBitArray>
#include <QColor>
#include <QTimer>
#include <QUndoStack>
#include <QWidget>

#include <memory>

class QPainter;
class QScrollArea;

namespace HexEdit {
struct Geometry;
}

/// The inside of a QHexEdit: keeps the bytes and their history, draws them, and takes keys and mouse.
///
/// Cursor and selection are set by nibble position, two for a byte: byte index times 2, plus 1 on the low digit. Bytes
/// are told by index. An edit outside the bytes or beyond a limit does nothing; any other sends dataChanged() and is one
/// step of the history, or joins the last one if both are about the same single byte (CharCommand). All functions are
/// called from the GUI thread.
class KESTRUNE_EXPORT QHexEditPrivate : public QWidget
{
    Q_OBJECT

public:
    /// @param parent the area that shows this widget
    explicit QHexEditPrivate(QScrollArea *parent);
    ~QHexEditPrivate() override;

    // Search, which selects what it finds.

    int indexOf(QByteArray const &ba, int from);
    int lastIndexOf(QByteArray const &ba, int from);

    // Editing; QHexEdit tells the rules.

    void insert(int index, QByteArray &ba);
    void insert(int index, char ch);
    void remove(int index, int length);
    void replace(int index, char ch);
    void replace(int index, QByteArray const &ba);
    void replace(int index, int length, QByteArray const &after);
    void undo();
    void redo();

    void setData(QByteArray const &data);
    QByteArray data();
    QString toRedableString();
    QString selectionToReadableString();

    // Which bytes are considered.

    /// Paints the bit of one byte on the way of a drag; the byte last painted is passed over.
    void setConsiderPos(int index);
    void setConsideredByte(int index);
    void unsetConsideredByte(int index);
    void toggleByteHighlight(int index);
    void setBytesHighlighted(bool highlighted);
    void setConsideration(bool enabled);
    void setConsiderBitArray(QBitArray bits);
    QBitArray getConsiderBitArray();
    void setMaximumByteCount(int count);
    void setByteCountEnabled(int count);

    // Cursor and selection.

    void setCursorPos(int position);
    int cursorPos();
    /// The nibble at a point of the widget, -1 outside the areas; the cursor changes to the area that was hit.
    int cursorPos(QPoint point);
    /// Selects from where the selection began to the byte of the position, which is not part of it.
    void setSelection(int position);
    void resetSelection();
    void resetSelection(int position);
    int getSelectionBegin();
    int getSelectionEnd();
    void ensureVisible();

    // Looks.

    void setBytesPerLine(int count);
    void setAddressArea(bool addressArea);
    void setAddressWidth(int addressWidth);
    void setAddressOffset(int offset);
    int addressOffset();
    void setAsciiArea(bool asciiArea);
    void setHighlighting(bool mode);
    virtual void setFont(QFont const &font);
    void setAddressAreaColor(QColor const &color);
    QColor addressAreaColor();
    void setHighlightingColor(QColor const &color);
    QColor highlightingColor();
    void setHighlightingPenColor(QColor const &color);
    QColor highlightingPenColor();
    void setSelectionColor(QColor const &color);
    QColor selectionColor();

    void setOverwriteMode(bool overwriteMode);
    bool overwriteMode();
    void setReadOnly(bool readOnly);
    bool isReadOnly();

signals:
    void currentAddressChanged(int address);
    void currentSizeChanged(int size);
    void dataChanged();
    void overwriteModeChanged(bool state);

public slots:
    /// One beat of the blinking.
    void updateCursor();
    /// Lays the areas out for the bytes and the font, and redraws.
    void adjust();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    /// The colours of a byte.
    struct Look;

    bool holds(int index);
    bool isFull();
    void pushReplace(int index, int length, QByteArray const &after);
    void push(QUndoCommand *command);

    bool isConsidered(int index) const;

    int endPosition();
    int byteUnderCursor() const;

    // True if something acted on the event.
    bool moveCursor(QKeyEvent *event);
    bool edit(QKeyEvent *event, int posBa);

    bool accepts(char key) const;
    void enterCharacter(char key, int &posBa);
    void cut();
    void paste();
    void deleteForwards(int posBa);
    void deleteBackwards(int posBa);
    bool removeSelection();
    QString selectionAsText();

    void paintBackground(QPainter &painter, const QRect &rect);
    void paintAddresses(QPainter &painter, const QRect &rect);
    void paintHexArea(QPainter &painter, const QRect &rect);
    void paintAsciiArea(QPainter &painter, const QRect &rect);
    void paintCursor(QPainter &painter);
    Look hexLook(int index);
    Look asciiLook(int index) const;
    Look selectedLook() const;
    Look plainLook() const;
    bool isSelected(int index) const;

    QScrollArea *m_scrollArea;
    XByteArray m_xData;
    QUndoStack m_undoStack;
    std::unique_ptr<HexEdit::Geometry> m_geometry;
    QTimer m_cursorTimer;

    int m_cursorPosition = 0;
    int m_cursorX = 0; // top left of the cursor's cell
    int m_cursorY = 0;
    int m_selectionBegin = 0;
    int m_selectionEnd = 0;
    int m_selectionInit = 0;
    int m_lastEmittedSize = 0;
    int m_considerPos = -1; // byte last handled in a drag

    QBitArray m_considerBits;
    bool m_blink = false;
    bool m_addressArea = true;
    bool m_asciiArea = true;
    bool m_asciiCursor = false;
    bool m_highlighting = true;
    bool m_considerationEnabled = true;
    bool m_overwriteMode = true;
    bool m_readOnly = false;
    bool m_considerDragging = false;
    bool m_considerDragClears = false;

    QColor m_addressAreaColor;
    QColor m_considerColor;
    QColor m_highlightingColor;
    QColor m_highlightingPenColor;
    QColor m_selectionColor;
};
