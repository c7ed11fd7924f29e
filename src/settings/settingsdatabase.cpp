#include "settingsdatabase.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QThread>

#include <cstdlib>

quint16 SettingsDatabase::msDatabaseCounter = 0;
const QString SettingsDatabase::tempFileFormat = QStringLiteral("tempsettings_%1_%2");

namespace {
// The page caches, in pages of 4 KiB. A file that comes with data gets more.
constexpr int newFileCachePages = 16384;
constexpr int openedFileCachePages = 64000;
} // namespace

SettingsDatabase::SettingsDatabase(QObject *parent)
    : QObject(parent)
{
    ++msDatabaseCounter;
    database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"),
                                         QStringLiteral("settingsDb%1").arg(msDatabaseCounter));
    if (database.lastError().type() != QSqlError::NoError) {
        qDebug() << Q_FUNC_INFO << "Db drivers: " << QSqlDatabase::drivers();
        qDebug() << Q_FUNC_INFO << "Db last error: " << database.lastError().text();
    }
    // Keeps the names of working copies apart between threads; createTempFile() settles the rest.
    srand(static_cast<unsigned int>(reinterpret_cast<quintptr>(QThread::currentThreadId())));
    settingsFile = getSettingsFileBaseName();
    if (!standardDatabaseExists() && !copyOldVersionSettings() && oldDatabaseExists()
        && !QFile::copy(getOldSettingsFileBaseName(), settingsFile))
        qDebug() << Q_FUNC_INFO << "Failed to copy settings from" << getOldSettingsFileBaseName() << "to"
                 << settingsFile;
    standardDbExists = standardDatabaseExists();
}

SettingsDatabase::~SettingsDatabase()
{
    database.close();
    for (const QString &path : qAsConst(tempFiles))
        QFile::remove(path);
}

bool SettingsDatabase::openDatabase(QString file)
{
    if (!file.isEmpty())
        return openDatabaseFromFile(file);
    if (!standardDatabaseExists())
        return createNewDataBase();
    return openDatabaseFromFile(getSettingsFileBaseName());
}

bool SettingsDatabase::openDatabaseFromFile(QString file)
{
    const QString path = createTempFile();
    tempFiles.append(path);
    if (!QFile(file).copy(path)) {
        forgetUnmadeCopy();
        return false;
    }
    // A read-only source gives a read-only copy, which would not take any value.
    QFile copy(path);
    copy.setPermissions(copy.permissions() | QFile::WriteOwner | QFile::WriteUser);

    database.setDatabaseName(QDir::toNativeSeparators(path));
    settingsFile = file;
    if (!database.open())
        return false;
    executePragmas(openedFileCachePages);
    // Adds what an older file lacks. Both are tried, whatever comes of the first.
    const bool miscTableReady = createMiscTable();
    const bool genericTableReady = createGenericSettingsTable();
    return miscTableReady && genericTableReady;
}

bool SettingsDatabase::createNewDataBase()
{
    const QString path = createTempFile();
    settingsFile = getSettingsFileBaseName();
    tempFiles.append(path);
    database.setDatabaseName(path);
    if (!database.open()) {
        forgetUnmadeCopy();
        return false;
    }
    executePragmas(newFileCachePages);
    const bool tablesReady = createMiscTable() && createGenericSettingsTable();
    // Which tool made the file; for people who look into it.
    setMiscValue(QStringLiteral("CreateToolVersion"), QCoreApplication::applicationVersion());
    setMiscValue(QStringLiteral("CreateToolName"), QCoreApplication::applicationName());
    setMiscValue(QStringLiteral("DatabaseVersion"), QStringLiteral("1"));
    return tablesReady;
}

bool SettingsDatabase::saveDatabase()
{
    // Without a working copy there is nothing to save, and the file on disk is all that the user has.
    if (!QFile::exists(database.databaseName())) {
        qDebug() << Q_FUNC_INFO << "Failed to copy" << database.databaseName() << "to" << settingsFile;
        return false;
    }
    // The first save of a new database finds nothing to remove; QFile::copy() does not overwrite.
    if (!QFile::remove(settingsFile))
        qDebug() << Q_FUNC_INFO << "Failed to remove" << settingsFile;
    const bool copied = QFile::copy(database.databaseName(), settingsFile);
    if (!copied)
        qDebug() << Q_FUNC_INFO << "Failed to copy" << database.databaseName() << "to" << settingsFile;
    return copied;
}

void SettingsDatabase::reset()
{
    QSqlQuery query(database);
    query.exec(QStringLiteral("drop table MiscSettings"));
    query.exec(QStringLiteral("drop table GenericSettings"));
    createMiscTable();
    createGenericSettingsTable();
}

void SettingsDatabase::close()
{
    database.close();
}

bool SettingsDatabase::isOpen()
{
    return database.isOpen();
}

bool SettingsDatabase::standardDatabaseExists()
{
    return QFile::exists(getSettingsFileBaseName());
}

bool SettingsDatabase::getStandardDatabaseExists() const
{
    return standardDbExists;
}

QString SettingsDatabase::getSettingsFileBaseName()
{
    QString name = QCoreApplication::instance()->property("AppNameWithVersion").toString();
    if (name.isEmpty())
        name = QCoreApplication::applicationName();
    return settingsFolder() + QLatin1Char('/') + name;
}

QSqlDatabase SettingsDatabase::getDatabase()
{
    return database;
}

QString SettingsDatabase::getFilename()
{
    return database.databaseName();
}

QString SettingsDatabase::getLastError()
{
    return database.lastError().text();
}

QString SettingsDatabase::settingsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
}

QString SettingsDatabase::createTempFile()
{
    const QString folder = settingsFolder();
    QDir().mkdir(folder);
    QString path;
    do {
        const QString first = tempFileFormat.arg(rand());
        path = folder + QLatin1Char('/') + first.arg(rand());
    } while (QFile::exists(path));
    return path;
}

void SettingsDatabase::forgetUnmadeCopy()
{
    // The free name may become that of another store's copy, which must outlive this object.
    if (!QFile::exists(tempFiles.last()))
        tempFiles.removeLast();
}

void SettingsDatabase::executePragmas(int cachePages)
{
    // The working copy is scratch: saveDatabase() is what protects the settings, so all safety is traded for speed.
    const QString pragmas[] = {
        QStringLiteral("PRAGMA page_size = 4096"),         QStringLiteral("PRAGMA cache_size = %1").arg(cachePages),
        QStringLiteral("PRAGMA temp_store = MEMORY"),      QStringLiteral("PRAGMA journal_mode = OFF"),
        QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"), QStringLiteral("PRAGMA synchronous = OFF"),
    };
    QSqlQuery query(database);
    for (const QString &pragma : pragmas)
        query.exec(pragma);
}
