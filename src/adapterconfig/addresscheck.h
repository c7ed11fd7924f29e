#pragma once

class QRegularExpression;
class QString;

/// What may be typed as an IP address: up to four octets of up to three digits.
QRegularExpression ipAddressPattern();
/// What may be typed as a port: up to five digits.
QRegularExpression portPattern();

/// Whether the text has four parts, the last of which is begun. The pattern has kept out what else could be wrong.
bool looksLikeIpAddress(const QString &text);
