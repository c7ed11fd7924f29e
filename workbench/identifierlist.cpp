#include "identifierlist.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {
constexpr quint32 maxIdentifier = 0x1FFFFFFF;
constexpr quint32 maxIdentifiers = 65536;

struct Parser
{
    Q_DECLARE_TR_FUNCTIONS(IdentifierList)
};

IdentifierList failure(const QString &error)
{
    return {{}, error};
}
} // namespace

IdentifierList parseIdentifierList(const QString &text)
{
    static const QRegularExpression separators(QStringLiteral("[\\s,;]+"));
    static const QRegularExpression entry(
        QStringLiteral("^(?:0[xX])?([0-9a-fA-F]{1,8})(?:-(?:0[xX])?([0-9a-fA-F]{1,8}))?$"));
    // Spaces around the dash of a range belong to it.
    static const QRegularExpression dashes(QStringLiteral("\\s*-\\s*"));
    IdentifierList list;
    const QStringList words = QString(text).replace(dashes, QStringLiteral("-")).split(separators, Qt::SkipEmptyParts);
    for (const QString &word : words) {
        const QRegularExpressionMatch match = entry.match(word);
        if (!match.hasMatch())
            return failure(
                Parser::tr("\"%1\" is no identifier. Write them in hexadecimal, for example 701, 181-18F.").arg(word));
        const quint32 first = match.captured(1).toUInt(nullptr, 16);
        const quint32 last = match.captured(2).isEmpty() ? first : match.captured(2).toUInt(nullptr, 16);
        if (first > maxIdentifier || last > maxIdentifier)
            return failure(Parser::tr("\"%1\" is too large: identifiers end at 1FFFFFFF.").arg(word));
        if (last < first)
            return failure(Parser::tr("\"%1\" runs backwards: write the smaller identifier first.").arg(word));
        if (last - first >= maxIdentifiers
            || static_cast<quint32>(list.identifiers.size()) + (last - first) >= maxIdentifiers)
            return failure(Parser::tr("The list takes up to %1 identifiers.").arg(maxIdentifiers));
        for (quint32 identifier = first; identifier <= last; ++identifier)
            list.identifiers.insert(identifier);
    }
    return list;
}
