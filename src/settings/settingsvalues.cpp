#include "settingsdatabase.h"

#include "variantbytes.h"

#include <QDebug>
#include <QSqlError>
#include <QSqlQuery>

namespace {
/// The variant in a column, or the raw column where the bytes hold none.
QVariant fromColumn(const QVariant &column)
{
    const QVariant value = readVariant(column.toByteArray());
    return value.isValid() ? value : column;
}

/// Items stand in statements as plain text, so one with an apostrophe could end the text and go on as SQL.
QSqlError itemError(const QString &item)
{
    if (!item.contains(QLatin1Char('\'')))
        return {};
    return {QString(), QStringLiteral("An item must not contain an apostrophe: %1").arg(item),
            QSqlError::StatementError};
}

struct Lookup
{
    QSqlQuery query;
    QSqlError error;
    bool done; ///< the statement ran; on a closed store it fails without an error
};

/// Runs `statement`, with the item for %1, up to its first row.
Lookup lookUp(const QSqlDatabase &database, const QString &statement, const QString &item)
{
    Lookup result = {QSqlQuery(database), itemError(item), false};
    if (result.error.isValid())
        return result;
    result.done = result.query.exec(statement.arg(item));
    result.error = result.query.lastError();
    return result;
}
} // namespace

bool SettingsDatabase::createMiscTable()
{
    QSqlQuery query(database);
    const bool created = query.exec(
        QStringLiteral("create table if not exists MiscSettings (item text unique, value text)"));
    if (!created)
        qDebug() << Q_FUNC_INFO << query.lastQuery() << query.lastError();
    return created;
}

bool SettingsDatabase::createGenericSettingsTable()
{
    QSqlQuery query(database);
    const bool created = query.exec(
        QStringLiteral("create table if not exists GenericSettings (item text unique, value blob)"));
    if (!created)
        qDebug() << Q_FUNC_INFO << query.lastQuery() << query.lastError();
    return created;
}

bool SettingsDatabase::setValue(QString item, QVariant value)
{
    const QVariant::Type type = value.type();
    if (type == QVariant::String || type == QVariant::Date)
        return setMiscValue(item, value);
    return setGenericSetting(item, value);
}

bool SettingsDatabase::setMiscValue(QString item, QVariant value)
{
    const QString text = value.toString().replace(QLatin1Char('\''), QLatin1String("''"));
    // One substitution after the other, as the texts in existing files were written: a "%2" in an item is
    // replaced as well.
    const QString statement =
        QStringLiteral("insert or replace into MiscSettings values('%1', '%2')").arg(item).arg(text);
    QSqlQuery query(database);
    const QSqlError refusal = itemError(item);
    const bool written = !refusal.isValid() && query.exec(statement);
    if (!written)
        qDebug() << Q_FUNC_INFO << statement << (refusal.isValid() ? refusal : query.lastError());
    return written;
}

bool SettingsDatabase::setGenericSetting(QString item, QVariant value)
{
    QSqlQuery query(database);
    query.prepare(QStringLiteral("insert or replace into GenericSettings (item, value) values(:item,:value)"));
    query.bindValue(QStringLiteral(":item"), item);
    query.bindValue(QStringLiteral(":value"), writeVariant(value));
    const bool written = query.exec();
    if (!written)
        qDebug() << Q_FUNC_INFO << query.lastQuery() << query.executedQuery() << query.lastError();
    return written;
}

QVariant SettingsDatabase::value(QString item, QVariant defaultValue) const
{
    Lookup generic = lookUp(database, QStringLiteral("select value from GenericSettings where item = '%1'"), item);
    if (!generic.done)
        qDebug() << Q_FUNC_INFO << generic.error;
    else if (generic.query.next())
        return fromColumn(generic.query.value(0));

    Lookup misc = lookUp(database, QStringLiteral("select value from MiscSettings where item = '%1'"), item);
    if (!misc.done)
        qDebug() << Q_FUNC_INFO << misc.error;
    else if (misc.query.next())
        return misc.query.value(0);
    return defaultValue;
}

bool SettingsDatabase::existMiscSettingsValue(QString item) const
{
    Lookup found = lookUp(database, QStringLiteral("select item from MiscSettings where item = '%1'"), item);
    if (!found.done)
        qDebug() << Q_FUNC_INFO << found.error;
    return found.done && found.query.next();
}

QString SettingsDatabase::getMiscSettingsValue(QString item) const
{
    Lookup found = lookUp(database, QStringLiteral("select value from MiscSettings where item = '%1'"), item);
    if (!found.done)
        qDebug() << Q_FUNC_INFO << found.error;
    return found.done && found.query.next() ? found.query.value(0).toString() : QString();
}

QHash<QString, QVariant> SettingsDatabase::getAllSettings()
{
    QHash<QString, QVariant> settings;
    QSqlQuery query(database);
    if (!query.exec(QStringLiteral("select * from GenericSettings")))
        qDebug() << Q_FUNC_INFO << query.lastError();
    while (query.next())
        settings.insert(query.value(0).toString(), fromColumn(query.value(1)));

    if (!query.exec(QStringLiteral("select * from MiscSettings")))
        qDebug() << Q_FUNC_INFO << query.lastError();
    while (query.next()) {
        const QString item = query.value(0).toString();
        if (!settings.contains(item))
            settings.insert(item, query.value(1));
    }
    return settings;
}
