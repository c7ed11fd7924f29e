#pragma once

#include "qhexedit.h"
#include "qhexeditprivate.h"

#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QKeyEvent>
#include <QtTest>

/// Bytes 0, 1, 2 and so on.
inline QByteArray countingBytes(int count)
{
    QByteArray bytes(count, '\0');
    for (int i = 0; i < count; ++i)
        bytes[i] = char(i);
    return bytes;
}

inline QString clipboard()
{
    return QApplication::clipboard()->text();
}

inline void setClipboard(const char *text)
{
    QApplication::clipboard()->setText(QLatin1String(text));
}

/// An editor on the screen with the focus, and what a user does to it.
class HexEditor
{
public:
    explicit HexEditor(const QByteArray &data = {})
    {
        edit.setData(data);
        edit.resize(800, 300);
        edit.show();
        edit.activateWindow();
        edit.setFocus();
        ready = QTest::qWaitForWindowActive(&edit) && view->hasFocus();
    }

    int charWidth() const { return view->fontMetrics().horizontalAdvance(QLatin1Char('9')); }
    int charHeight() const { return view->fontMetrics().height(); }
    int xPosHex() const { return 4 * charWidth() + 10; }
    int xPosAscii() const { return xPosHex() + (16 * 3 - 1) * charWidth() + 16; }

    /// The middle of a digit, with addresses of four digits and 16 bytes in a line.
    QPoint digitAt(int index, bool low = false) const
    {
        return QPoint(xPosHex() + (index % 16 * 3 + (low ? 1 : 0)) * charWidth() + charWidth() / 2,
                      index / 16 * charHeight() + 3 + charHeight() / 2);
    }
    QPoint characterAt(int index) const
    {
        return QPoint(xPosAscii() + index % 16 * charWidth() + charWidth() / 2, digitAt(index).y());
    }
    /// Outside both areas.
    QPoint beside() const { return QPoint(xPosHex() - 2, 5); }

    void click(QPoint point) { QTest::mouseClick(view, Qt::LeftButton, {}, point); }
    void type(const char *keys) { QTest::keyClicks(view, QLatin1String(keys)); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { send(key, modifiers, QString()); }
    /// By the keys of this platform, with a text as a platform gives it to letters with Ctrl.
    void press(QKeySequence::StandardKey standardKey)
    {
        const int keys = QKeySequence::keyBindings(standardKey).value(0)[0];
        const auto modifiers = Qt::KeyboardModifiers(keys & int(Qt::KeyboardModifierMask));
        const int key = keys & ~int(Qt::KeyboardModifierMask);
        const bool isLetter = key >= Qt::Key_A && key <= Qt::Key_Z;
        send(Qt::Key(key), modifiers, isLetter ? QString(QChar(key - Qt::Key_A + 1)) : QString());
    }
    void select(int begin, int end)
    {
        view->resetSelection(2 * begin);
        view->setSelection(2 * end);
    }

    QString hex() { return QString::fromLatin1(edit.data().toHex()); }
    QVector<int> considered()
    {
        QVector<int> result;
        const QBitArray bits = edit.getConsiderBitArray();
        for (int i = 0; i < bits.size() && i < 1000; ++i) {
            if (bits.testBit(i))
                result.append(i);
        }
        return result;
    }
    QVector<int> selection() { return {view->getSelectionBegin(), view->getSelectionEnd()}; }

    QHexEdit edit;
    QHexEditPrivate *view = static_cast<QHexEditPrivate *>(edit.widget());
    bool ready = false;

private:
    void send(Qt::Key key, Qt::KeyboardModifiers modifiers, const QString &text)
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(view, &event);
    }
};
