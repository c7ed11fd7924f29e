#pragma once

#include <QSet>
#include <QString>

/// Identifiers that a user lists in one line, or a sentence that says what to change.
struct IdentifierList
{
    QSet<quint32> identifiers; ///< good only if `error` is empty
    QString error;

    bool isValid() const { return error.isEmpty(); }
};

/// Hexadecimal identifiers and ranges of them between commas or spaces: "701, 181-18F". Pure; any text may come in.
/// Takes up to 65536 identifiers.
IdentifierList parseIdentifierList(const QString &text);
