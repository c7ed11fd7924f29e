#include "boxwatcher.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPointer>

BoxWatcher::BoxWatcher(QObject *parent)
    : QObject(parent)
{
    qApp->installEventFilter(this);
}

bool BoxWatcher::eventFilter(QObject *object, QEvent *event)
{
    auto *box = event->type() == QEvent::Show ? qobject_cast<QMessageBox *>(object) : nullptr;
    if (box != nullptr) {
        m_texts.append(QStringLiteral("%1 %2").arg(box->text(), box->informativeText()).simplified());
        // Not from within its own show.
        QMetaObject::invokeMethod(box, &QMessageBox::reject, Qt::QueuedConnection);
    }
    return QObject::eventFilter(object, event);
}
