#pragma once

#include "canrawmessageeditor.h"
#include "qhexedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QtTest>

/// A user at an editor of message templates.
class MessageEditorForm
{
public:
    bool show()
    {
        editor.show();
        return QTest::qWaitForWindowExposed(&editor);
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = editor.findChild<Widget *>(QString::fromLatin1(name));
        if (!widget)
            qFatal("the form has no %s", name);
        return widget;
    }

    QHexEdit *hexEdit() const { return editor.findChild<QHexEdit *>(); }
    QComboBox *lengthBox() const { return find<QComboBox>("cbLength"); }

    /// On the box itself: the widget may be wider than what reacts.
    static void click(QCheckBox *box) { QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, box->height() / 2)); }

    /// Into the bytes, from where the cursor is.
    void typeBytes(const char *digits) const
    {
        hexEdit()->setFocus();
        QTest::keyClicks(hexEdit()->focusProxy(), QString::fromLatin1(digits));
    }

    void chooseLength(const QString &text) const
    {
        const int steps = offeredLengths().indexOf(text) - lengthBox()->currentIndex();
        for (int i = 0; i < qAbs(steps); ++i)
            QTest::keyClick(lengthBox(), steps > 0 ? Qt::Key_Down : Qt::Key_Up);
    }

    QStringList offeredLengths() const
    {
        QStringList texts;
        for (int i = 0; i < lengthBox()->count(); ++i)
            texts += lengthBox()->itemText(i);
        return texts;
    }

    int bytesInView() const
    {
        // All bytes are zeros in the tests that ask, and an address is followed by a blank like a byte.
        int count = 0;
        for (const QString &line : hexEdit()->toReadableString().split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            count += line.mid(line.indexOf(QLatin1Char(' '))).count(QLatin1String(" 00"));
        return count;
    }

    CanRawMessageEditor editor;
};

/// The choices of the length, by the kind of the frame.
namespace OfferedLengths {
inline QStringList lengths(const char *joined)
{
    return QStringLiteral("- -|%1").arg(QLatin1String(joined)).split(QLatin1Char('|'));
}

inline QStringList classic()
{
    return lengths("0|1|2|3|4|5|6|7|8");
}

inline QStringList fd()
{
    return lengths("0|1|2|3|4|5|6|7|8|12|16|20|24|32|48|64");
}
} // namespace OfferedLengths
