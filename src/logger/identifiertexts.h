#pragma once

#include "identifierset.h"

#include <QList>
#include <QString>

// Identifiers as people type them: "0x181" is hexadecimal, a leading 0 makes a number octal, any other is decimal.
// Blanks around a number do not count.

/// The identifiers in a list with commas, in its order. What is no number is left out.
QList<quint32> listedIdentifiers(const QString &text);

/// The identifiers that a filter lets through: single ones and ranges as "0x100-0x10F", separated by commas, semicolons
/// or line feeds. What is no number is left out, but an end of a range counts as 0 then. A range that begins
/// behind its end holds nothing.
IdentifierSet filteredIdentifiers(const QString &text);
