// What keys do. Several tests can act on one event, in the order in which they stand here.

#include "hexgeometry.h"
#include "hexnumbers.h"
#include "hextext.h"
#include "qhexeditprivate.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QScrollArea>

namespace {
/// Where the cursor stands and how far it goes, in nibbles.
struct Reach
{
    qint64 cursor;
    qint64 end;
    qint64 character;
    qint64 line;
    qint64 page;

    qint64 startOfLine() const { return cursor - cursor % line; }
};

enum class Movement { Move, Select, SelectAll };

struct Step
{
    QKeySequence::StandardKey key;
    Movement movement;
    qint64 (*target)(const Reach &);
};

constexpr Step steps[] = {
    {QKeySequence::MoveToNextChar, Movement::Move, [](const Reach &r) { return r.cursor + r.character; }},
    {QKeySequence::MoveToPreviousChar, Movement::Move, [](const Reach &r) { return r.cursor - r.character; }},
    // Right for lines of a power of two only.
    {QKeySequence::MoveToEndOfLine, Movement::Move, [](const Reach &r) { return r.cursor | (r.line - 1); }},
    {QKeySequence::MoveToStartOfLine, Movement::Move, [](const Reach &r) { return r.startOfLine(); }},
    {QKeySequence::MoveToPreviousLine, Movement::Move, [](const Reach &r) { return r.cursor - r.line; }},
    {QKeySequence::MoveToNextLine, Movement::Move, [](const Reach &r) { return r.cursor + r.line; }},
    {QKeySequence::MoveToNextPage, Movement::Move, [](const Reach &r) { return r.cursor + r.page; }},
    {QKeySequence::MoveToPreviousPage, Movement::Move, [](const Reach &r) { return r.cursor - r.page; }},
    {QKeySequence::MoveToEndOfDocument, Movement::Move, [](const Reach &r) { return r.end; }},
    {QKeySequence::MoveToStartOfDocument, Movement::Move, [](const Reach &) { return qint64(0); }},
    {QKeySequence::SelectAll, Movement::SelectAll, [](const Reach &r) { return r.end + 1; }},
    {QKeySequence::SelectNextChar, Movement::Select, [](const Reach &r) { return r.cursor + r.character; }},
    {QKeySequence::SelectPreviousChar, Movement::Select, [](const Reach &r) { return r.cursor - r.character; }},
    {QKeySequence::SelectEndOfLine, Movement::Select, [](const Reach &r) { return r.startOfLine() + r.line; }},
    {QKeySequence::SelectStartOfLine, Movement::Select, [](const Reach &r) { return r.startOfLine(); }},
    {QKeySequence::SelectPreviousLine, Movement::Select, [](const Reach &r) { return r.cursor - r.line; }},
    {QKeySequence::SelectNextLine, Movement::Select, [](const Reach &r) { return r.cursor + r.line; }},
    {QKeySequence::SelectNextPage, Movement::Select, [](const Reach &r) { return r.cursor + r.page; }},
    {QKeySequence::SelectPreviousPage, Movement::Select, [](const Reach &r) { return r.cursor - r.page; }},
    {QKeySequence::SelectEndOfDocument, Movement::Select, [](const Reach &r) { return r.end; }},
    {QKeySequence::SelectStartOfDocument, Movement::Select, [](const Reach &) { return qint64(0); }},
};

/// Whether any of the tests that an event passes through took it.
class Acted
{
public:
    bool operator()(bool acted)
    {
        m_any = m_any || acted;
        return acted;
    }
    bool any() const { return m_any; }

private:
    bool m_any = false;
};

bool isPlain(const QKeyEvent &event, Qt::Key key)
{
    return event.key() == key && event.modifiers() == Qt::NoModifier;
}
} // namespace

void QHexEditPrivate::keyPressEvent(QKeyEvent *event)
{
    const int posBa = byteUnderCursor();
    Acted acted;
    acted(moveCursor(event));
    if (!m_readOnly)
        acted(edit(event, posBa));
    if (acted(event->matches(QKeySequence::Copy)))
        QApplication::clipboard()->setText(selectionAsText());
    if (acted(isPlain(*event, Qt::Key_Insert))) {
        setCursorPos(m_cursorPosition);
        setOverwriteMode(!m_overwriteMode);
    }
    // The others belong to the window around: Escape and Return close a dialog.
    event->setAccepted(acted.any());
    ensureVisible();
    update();
}

bool QHexEditPrivate::moveCursor(QKeyEvent *event)
{
    Acted acted;
    const qint64 line = m_geometry->nibblesPerLine();
    const qint64 linesInPage = m_scrollArea->viewport()->height() / m_geometry->charHeight - 1;
    for (const Step &step : steps) {
        if (!acted(event->matches(step.key)))
            continue;
        const int character = m_asciiCursor ? 2 : 1;
        const int position = HexEdit::toInt(
            step.target({m_cursorPosition, endPosition(), character, line, line * linesInPage}));
        switch (step.movement) {
        case Movement::Move:
            setCursorPos(position);
            resetSelection(m_cursorPosition);
            break;
        case Movement::Select:
            setCursorPos(position);
            setSelection(position);
            break;
        case Movement::SelectAll:
            resetSelection(0);
            setSelection(position);
            break;
        }
    }
    return acted.any();
}

bool QHexEditPrivate::edit(QKeyEvent *event, int posBa)
{
    Acted acted;
    const QString text = event->text();
    if (acted(!text.isEmpty() && accepts(text.at(0).toLatin1())))
        enterCharacter(text.at(0).toLatin1(), posBa);
    if (acted(event->matches(QKeySequence::Cut)))
        cut();
    if (acted(event->matches(QKeySequence::Paste)))
        paste();
    if (acted(event->matches(QKeySequence::Delete)))
        deleteForwards(posBa);
    if (acted(isPlain(*event, Qt::Key_Backspace)))
        deleteBackwards(posBa);
    if (acted(event->matches(QKeySequence::Undo)))
        undo();
    if (acted(event->matches(QKeySequence::Redo)))
        redo();
    return acted.any();
}

bool QHexEditPrivate::accepts(char key) const
{
    return (key >= '0' && key <= '9') || (key >= 'a' && key <= 'f') || (m_asciiCursor && uchar(key) >= 32);
}

/// @param posBa becomes the byte that was entered: Delete carries a character on some platforms, and acts on it, too
void QHexEditPrivate::enterCharacter(char key, int &posBa)
{
    if (removeSelection())
        posBa = m_selectionBegin;
    if (m_considerationEnabled)
        setConsideredByte(posBa);

    // A new byte begins with its first digit.
    if (!m_overwriteMode && (m_asciiCursor || m_cursorPosition % 2 == 0))
        insert(posBa, '\0');
    if (m_xData.size() < 1)
        return;

    char byte = key;
    if (m_asciiCursor)
        ++m_cursorPosition;
    else
        byte = withDigit(holds(posBa) ? m_xData.data().at(posBa) : '\0', m_cursorPosition % 2 == 0, key);
    replace(posBa, byte);
    setCursorPos(m_cursorPosition + 1);
    resetSelection(m_cursorPosition);
}

void QHexEditPrivate::cut()
{
    const QString text = selectionAsText();
    remove(m_selectionBegin, m_selectionEnd - m_selectionBegin);
    QApplication::clipboard()->setText(text);
    // The byte's index as a nibble: cutting leaves the cursor half-way, and deleting does not.
    setCursorPos(m_selectionBegin);
    resetSelection(m_selectionBegin);
}

void QHexEditPrivate::paste()
{
    QByteArray bytes = QByteArray::fromHex(QApplication::clipboard()->text().toLatin1());
    insert(m_cursorPosition / 2, bytes);
    setCursorPos(HexEdit::toInt(m_cursorPosition + qint64(2) * bytes.size()));
    resetSelection(m_selectionBegin);
}

void QHexEditPrivate::deleteForwards(int posBa)
{
    if (removeSelection())
        return;
    if (m_overwriteMode)
        replace(posBa, '\0');
    else
        remove(posBa, 1);
}

void QHexEditPrivate::deleteBackwards(int posBa)
{
    if (removeSelection() || posBa <= 0)
        return;
    if (m_overwriteMode)
        replace(posBa - 1, '\0');
    else
        remove(posBa - 1, 1);
    setCursorPos(m_cursorPosition - 2);
}

/// Puts cursor and selection where the selection began; false if there was none.
bool QHexEditPrivate::removeSelection()
{
    if (m_selectionBegin == m_selectionEnd)
        return false;
    const int begin = 2 * m_selectionBegin;
    remove(m_selectionBegin, m_selectionEnd - m_selectionBegin);
    setCursorPos(begin);
    resetSelection(begin);
    return true;
}

QString QHexEditPrivate::selectionAsText()
{
    return clipboardText(m_xData.data().mid(m_selectionBegin, m_selectionEnd - m_selectionBegin), m_selectionBegin);
}
