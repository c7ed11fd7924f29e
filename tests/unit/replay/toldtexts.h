#pragma once

#include <QSignalSpy>
#include <QStringList>

#include <algorithm>

/// Whether a text tells how far a replay is. One comes every 300 ms: when, and how many, is up to the machine.
inline bool isProgress(const QString &text)
{
    return text.startsWith(QLatin1String("CAN replay active - ")) && text.contains(QLatin1String(" % completed. "));
}

/// The texts that a replay is sure to tell, in their order.
inline QStringList withoutProgress(QStringList texts)
{
    texts.erase(std::remove_if(texts.begin(), texts.end(), isProgress), texts.end());
    return texts;
}

/// What a signal with a text has told.
inline QStringList textsOf(const QSignalSpy &spy)
{
    QStringList texts;
    for (const QList<QVariant> &arguments : spy)
        texts << arguments[0].toString();
    return texts;
}
