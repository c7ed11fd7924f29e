#pragma once

#include "canopenmessagebuilderdialog.h"
#include "loggerform.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimer>

/// A user who composes a message in the dialog that the button opens.
inline void compose(LoggerForm &form, const char *button, const CANRAW::CanRawCompareMessage &message)
{
    auto *dialog = form.find<CANopenMessageBuilderDialog>("CANopenMessageBuilderDialog");
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, dialog, [&] {
        if (!dialog->isVisible())
            return;
        dialog->setMessage(message);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    });
    user.start(10);
    form.click(button);
}

/// Asks for an identifier and for flags that are clear, and leaves length and data open.
inline CANRAW::CanRawCompareMessage anyDataOf(quint32 id)
{
    CANRAW::CanRawCompareMessage message;
    message.id = {id, true};
    message.length.isSet = false;
    return message;
}
