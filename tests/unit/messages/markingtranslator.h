#pragma once

#include <QCoreApplication>
#include <QTranslator>

/// A language for as long as it lives, in which every text stands between brackets.
class MarkingTranslator : public QTranslator
{
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }

    static QString marked(const char *text) { return QStringLiteral("<%1>").arg(QLatin1String(text)); }

    bool isEmpty() const override { return false; }
    QString translate(const char *, const char *text, const char *, int) const override { return marked(text); }
};
