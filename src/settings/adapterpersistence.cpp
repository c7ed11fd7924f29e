#include "settingsdatabase.h"

#include "multicanadapterhandler.h"

#include <QDebug>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QVector>

namespace {
/// One row of the table.
struct SavedAdapter
{
    quint16 type;
    QString device;
    QByteArray settings;
};
} // namespace

bool SettingsDatabase::saveAdapters(QMap<quint16, QPointer<AbstractCanAdapter>> *adapters)
{
    QSqlQuery query(database);
    query.exec(QStringLiteral("drop table CanAdapters"));
    bool ok = query.exec(
        QStringLiteral("create table CanAdapters (type integer, devicename text, adaptersettings blob)"));
    if (!ok)
        qDebug() << Q_FUNC_INFO << database.lastError().text();

    for (const QPointer<AbstractCanAdapter> &adapter : qAsConst(*adapters)) {
        if (!adapter)
            continue;
        const QByteArray bytes = adapter->getValuesAsByteArray();
        const uint type = adapter->getCanAdapterOption(AbstractCanAdapter::OptionAdapterType).toUInt();
        const QString device = adapter->getCanAdapterOption(AbstractCanAdapter::OptionDeviceName).toString();
        query.prepare(QStringLiteral(
            "INSERT INTO CanAdapters (type, devicename, adaptersettings) VALUES (:type, :devicename, :data)"));
        query.bindValue(QStringLiteral(":type"), static_cast<quint16>(type));
        query.bindValue(QStringLiteral(":devicename"), device);
        query.bindValue(QStringLiteral(":data"), bytes);
        ok = ok && query.exec();
    }
    if (!ok)
        qDebug() << Q_FUNC_INFO << database.lastError().text();
    return ok;
}

bool SettingsDatabase::restoreAdapters(MultiCanAdapterHandler *adapterHandler)
{
    QSqlQuery query(database);
    if (!query.exec(QStringLiteral("select * from CanAdapters"))) {
        qDebug() << Q_FUNC_INFO << query.lastError();
        return false;
    }
    QVector<SavedAdapter> saved;
    while (query.next()) {
        saved.append(
            {static_cast<quint16>(query.value(0).toUInt()), query.value(1).toString(), query.value(2).toByteArray()});
    }
    // An open statement locks the table against a listener that saves the adapters as they come.
    query.finish();
    for (const SavedAdapter &adapter : qAsConst(saved)) {
        if (!adapter.settings.isEmpty()) {
            adapterHandler->addAdapterFromByteArray(static_cast<AbstractCanAdapter::CanAdapterType>(adapter.type),
                                                    adapter.device, adapter.settings);
        }
    }
    // The answer of a store that never refuses to go on: no caller may take it for a failure.
    return false;
}

void SettingsDatabase::handleRemovedAdapter(unsigned short identifier)
{
    QSqlQuery query(database);
    if (!query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name")))
        qDebug() << Q_FUNC_INFO << query.lastError();
    while (query.next()) {
        const QString table = query.value(QStringLiteral("name")).toString();
        if (table.contains(QLatin1String("InterfaceSettings")))
            removeIdFromInterfaceSettings(identifier, table);
    }
}

void SettingsDatabase::removeIdFromInterfaceSettings(quint16 identifier, QString table)
{
    // The name is the application's and may hold blanks or a whole statement: quoted, it stays a name. Qt's own
    // quoting takes a point in it for a separator and would reach into another table.
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    if (!plainName.match(table).hasMatch())
        table = QLatin1Char('"') + table.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
    QSqlQuery query(database);
    if (!query.exec(QStringLiteral("delete FROM %1 WHERE interface=%2").arg(table, QString::number(identifier))))
        qDebug() << Q_FUNC_INFO << query.lastQuery() << query.lastError().text();
}
