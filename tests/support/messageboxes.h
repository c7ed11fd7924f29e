#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>

#include <functional>

/// Watches the application for message boxes while it lives, notes what each says, and answers it with a click on Ok.
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
    };

    MessageBoxes() { qApp->installEventFilter(this); }

    QList<Box> shown;
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
                          box->parentWidget()});
            QMetaObject::invokeMethod(
                this, [this, box = QPointer<QMessageBox>(box)] { answer(box); }, Qt::QueuedConnection);
        }
        return QObject::eventFilter(object, event);
    }

private:
    void answer(const QPointer<QMessageBox> &box)
    {
        if (whileShown)
            whileShown();
        if (box && box->button(QMessageBox::Ok) != nullptr)
            box->button(QMessageBox::Ok)->click();
    }
};
