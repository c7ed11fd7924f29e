#include "addresscheck.h"

#include <QRegularExpression>
#include <QStringList>

QRegularExpression ipAddressPattern()
{
    const QString octet = QStringLiteral("(?:[0-1]?[0-9]?[0-9]|2[0-4][0-9]|25[0-5])");
    const QString dot = QStringLiteral("\\.");
    return QRegularExpression(QLatin1Char('^') + QStringList({octet, octet, octet, octet}).join(dot)
                              + QLatin1Char('$'));
}

QRegularExpression portPattern()
{
    return QRegularExpression(QStringLiteral("^\\d{1,5}$"));
}

bool looksLikeIpAddress(const QString &text)
{
    constexpr int lastPart = 3;
    const QStringList parts = text.split(QLatin1Char('.'), Qt::KeepEmptyParts);
    return parts.size() > lastPart && !parts[lastPart].isEmpty();
}
