#pragma once

#include "kestrune_export.h"

#include <QBitArray>
#include <QByteArray>
#include <QColor>
#include <QFont>
#include <QScrollArea>

class QHexEditPrivate;

/// A hexadecimal editor for short, bounded data, such as the bytes of a CAN message.
///
/// Two limits bound the bytes: setByteCountEnabled() tells how many are shown and edited, setMaximumByteCount() to how
/// many they may grow. A byte can be considered, as it must be to count in a comparison: that is a bit of its position,
/// which neither loading nor editing moves. The user paints the bits with the right mouse button, and typing sets them.
///
/// Positions are byte indexes from 0; what would exceed a limit or lies outside the bytes changes nothing and sends no
/// signal. All functions are called from the GUI thread.
///
/// The trap: edits are told by dataCountChanged(), never by dataChanged().
class KESTRUNE_EXPORT QHexEdit : public QScrollArea
{
    Q_OBJECT
    Q_PROPERTY(QByteArray data READ data WRITE setData)
    Q_PROPERTY(int addressOffset READ addressOffset WRITE setAddressOffset)
    Q_PROPERTY(QColor addressAreaColor READ addressAreaColor WRITE setAddressAreaColor)
    Q_PROPERTY(int cursorPosition READ cursorPosition WRITE setCursorPosition)
    Q_PROPERTY(QColor highlightingColor READ highlightingColor WRITE setHighlightingColor)
    Q_PROPERTY(QColor selectionColor READ selectionColor WRITE setSelectionColor)
    Q_PROPERTY(bool overwriteMode READ overwriteMode WRITE setOverwriteMode)
    Q_PROPERTY(bool readOnly READ isReadOnly WRITE setReadOnly)
    Q_PROPERTY(QFont font READ font WRITE setFont)

public:
    explicit QHexEdit(QWidget *parent = nullptr);

    /// Selects the first occurrence at or behind `from` and puts the cursor behind it. Searches the hidden bytes, too.
    /// @return its position, negative if there is none
    int indexOf(QByteArray const &ba, int from) const;
    /// Selects the last occurrence that ends before `from` and puts the cursor on it.
    /// @return its position, negative if there is none
    int lastIndexOf(QByteArray const &ba, int from) const;

    // Each edit makes an undo step, but that overwriting a single byte, by typing or by removing it in overwrite mode,
    // joins the step before if that inserted or overwrote nothing but the same byte.

    /// In overwrite mode the bytes replace what is there, as far as it goes; else they are inserted.
    /// @param ba is cut to what there was room for in insert mode
    void insert(int position, QByteArray &ba);
    /// Inserts, also in overwrite mode.
    void insert(int position, char ch);
    /// In overwrite mode the bytes become zeros and the length stays.
    void remove(int position, int length);
    /// Refused when the bytes have grown to the limit, unlike typing.
    void replace(int position, int length, QByteArray const &after);

    QString toReadableString();
    /// The lines on which the selection lies, counted from its beginning.
    QString selectionToReadableString();

    /// Loads the bytes and forgets all undo steps. Limits and considered bits stay.
    void setData(QByteArray const &data);
    /// All bytes, also those beyond the enabled count.
    QByteArray data();

    void setAddressOffset(int offset);
    int addressOffset();
    void setCursorPosition(int cursorPos);
    int cursorPosition();

    void setAddressAreaColor(QColor const &color);
    QColor addressAreaColor();
    /// Background of a changed byte.
    void setHighlightingColor(QColor const &color);
    QColor highlightingColor();
    /// Text of a changed byte.
    void setHighlightingPenColor(QColor const &color);
    QColor highlightingPenColor();
    void setSelectionColor(QColor const &color);
    QColor selectionColor();

    void setOverwriteMode(bool overwriteMode);
    bool overwriteMode();
    void setReadOnly(bool readOnly);
    bool isReadOnly();

    /// The font of the bytes; one whose characters are equally wide.
    void setFont(QFont const &font);
    const QFont &font() const;

    /// Takes effect with the next layout: call it before setData(). Numbers below 1 are ignored.
    void setBytesPerLine(int count);

    /// Whether considered bytes are shown, which hides selection and changes in the hexadecimal area, and whether
    /// typing considers a byte. Does not redraw.
    void setConsideration(bool enabled);
    /// Considers all bytes or none.
    void setBytesHighlighted(bool highlighted);
    /// How many bytes there may be; those that there are stay. A bit of consideration is kept for each of so many
    /// positions, up to 16777215 of them; those beyond are forgotten.
    void setMaximumByteCount(int count);
    /// Missing bytes are added as zeros. Bytes beyond the count are hidden, not lost.
    void setByteCountEnabled(int count);
    QBitArray getConsiderBitArray();
    /// Does not redraw.
    void setConsiderBitArray(QBitArray bits);

    /// Lets the vertical bar appear as needed or never. The horizontal one appears as needed whatever is said.
    void setScrollbarEnabled(Qt::Orientation orientation, bool enabled);
    void setStyleSheetForScrollbar(Qt::Orientation orientation, QString styleSheet);

signals:
    /// After every edit and load: the number of bytes held, including those beyond the enabled count.
    void dataCountChanged(int);
    /// The byte on which the cursor stands.
    void currentAddressChanged(int address);
    /// The number of bytes shown, as soon as another number was painted.
    void currentSizeChanged(int size);
    /// Never sent.
    void dataChanged();
    void overwriteModeChanged(bool state);

public slots:
    void redo();
    /// @param addressWidth least number of digits, 0 to 6; others are ignored
    void setAddressWidth(int addressWidth);
    void setAddressArea(bool addressArea);
    void setAsciiArea(bool asciiArea);
    /// Whether changed bytes show.
    void setHighlighting(bool mode);
    void undo();

private slots:
    void dataChangedSlot();

private:
    QHexEditPrivate *m_private; // belongs to the scroll area
};
