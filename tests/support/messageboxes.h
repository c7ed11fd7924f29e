#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>

#include <functional>

/// Watches the application for message boxes while it lives, notes what each says, and answers it with a click: on the
/// button that the test wants, or on Ok.
class MessageBoxes : public QObject
{
public:
    struct Box
    {
        QString title;
        QString text;
        QString informativeText;
        QMessageBox::StandardButtons buttons;
        QMessageBox::Icon icon;
        QPointer<QWidget> parent;
        QStringList buttonTexts; ///< sorted: the style has its own order on the screen
        Qt::WindowFlags windowFlags;
        bool isModal;
    };

    MessageBoxes() { qApp->installEventFilter(this); }

    QList<Box> shown;
    /// The texts of the buttons to click, one a box; Ok from then on.
    QStringList answers;
    /// Called when a box is up, before it is answered.
    std::function<void()> whileShown;

    /// The texts of all boxes, each with its informative text behind a bar.
    QStringList texts() const
    {
        QStringList lines;
        for (const Box &box : shown)
            lines.append(box.text + QLatin1Char('|') + box.informativeText);
        return lines;
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *box = event->type() == QEvent::Show ? qobject_cast<QMessageBox *>(object) : nullptr;
        if (box != nullptr) {
            shown.append({box->windowTitle(), box->text(), box->informativeText(), box->standardButtons(), box->icon(),
                          box->parentWidget(), buttonTexts(*box), box->windowFlags(), box->isModal()});
            QMetaObject::invokeMethod(
                this, [this, box = QPointer<QMessageBox>(box)] { answer(box); }, Qt::QueuedConnection);
        }
        return QObject::eventFilter(object, event);
    }

private:
    static QStringList buttonTexts(const QMessageBox &box)
    {
        QStringList texts;
        for (const QAbstractButton *button : box.buttons())
            texts.append(button->text());
        texts.sort();
        return texts;
    }

    static QAbstractButton *buttonOf(const QMessageBox &box, const QString &text)
    {
        for (QAbstractButton *button : box.buttons()) {
            if (button->text() == text)
                return button;
        }
        return box.button(QMessageBox::Ok);
    }

    void answer(const QPointer<QMessageBox> &box)
    {
        if (whileShown)
            whileShown();
        if (!box || !box->isVisible())
            return;
        QAbstractButton *button = buttonOf(*box, answers.isEmpty() ? QString() : answers.takeFirst());
        if (button != nullptr)
            button->click();
        else
            box->reject(); // a question that the test did not expect: it fails, and does not wait for ever
    }
};
