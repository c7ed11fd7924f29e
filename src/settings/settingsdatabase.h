#pragma once

#include "kestrune_export.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QSqlDatabase>
#include <QVariant>

class AbstractCanAdapter;
class MultiCanAdapterHandler;

/// The settings of an application, one SQLite file per version.
///
/// The file itself is never worked on: opening copies it to a private working copy, which takes all reads and writes at
/// full speed and without protection against a crash, and only saveDatabase() puts the state back in place of the
/// file. Ending without a save leaves the file as it was.
///
/// All functions are called from the thread that made the object. The trap: the destructor saves nothing.
class KESTRUNE_EXPORT SettingsDatabase : public QObject
{
    Q_OBJECT

public:
    /// Numbers the connections: Qt keeps them by name, and they are never removed.
    static quint16 msDatabaseCounter;

    explicit SettingsDatabase(QObject *parent);
    /// Deletes all working copies that this object made.
    ~SettingsDatabase() override;

    /// Opens the given file or, for an empty string, the standard one, which is made if it does not exist.
    bool openDatabase(QString file);
    /// A later saveDatabase() goes to `file`.
    bool openDatabaseFromFile(QString file);
    /// A fresh database, which exists as a working copy only until the first saveDatabase().
    bool createNewDataBase();
    /// Writes the state over the settings file. The old file goes first: a failure leaves none behind, while the
    /// working copy still holds everything and another call may succeed.
    bool saveDatabase();
    /// Empties both value tables of the working copy.
    void reset();
    void close();
    bool isOpen();

    /// The standard settings file exists now.
    bool standardDatabaseExists();
    /// It existed when this object was made.
    bool getStandardDatabaseExists() const;
    /// Full path of the standard settings file, which carries the application's version in its name.
    QString getSettingsFileBaseName();

    /// A copy of the connection, for the application's own tables in the file.
    QSqlDatabase getDatabase();
    /// The working copy, not the settings file.
    QString getFilename();
    QString getLastError();

    // Named values. Texts and dates stand in the file as readable text, and so a date comes back as a string;
    // everything else keeps its type. An item with an apostrophe in it is refused wherever it would go into a
    // statement as text.

    bool setValue(QString item, QVariant value);
    /// An item that was stored as a text and as another type has the value of the other type.
    QVariant value(QString item, QVariant defaultValue) const;
    bool setMiscValue(QString item, QVariant value);
    bool setGenericSetting(QString item, QVariant value);
    bool existMiscSettingsValue(QString item) const;
    /// A null string if there is no such text.
    QString getMiscSettingsValue(QString item) const;
    QHash<QString, QVariant> getAllSettings();

    // The configured adapters.

    /// Rewrites the whole list, in the working copy.
    bool saveAdapters(QMap<quint16, QPointer<AbstractCanAdapter>> *adapters);
    /// Adds the saved adapters to the collection. The result is false in every case.
    bool restoreAdapters(MultiCanAdapterHandler *adapterHandler);
    /// Deletes the rows of one adapter in one table of the application's, by its column "interface".
    void removeIdFromInterfaceSettings(quint16 identifier, QString table);

    // Settings of other versions.

    /// Where the earliest versions kept their settings.
    QString getOldSettingsFileBaseName();
    bool oldDatabaseExists();
    /// Copies the settings of the newest other version to the standard file; true if there were any.
    bool copyOldVersionSettings();

public slots:
    /// Cleans all tables whose name contains "InterfaceSettings" of the adapter's rows.
    void handleRemovedAdapter(unsigned short identifier);

protected:
    /// A path for a working copy that no file has yet.
    QString createTempFile();
    bool createMiscTable();
    bool createGenericSettingsTable();

private:
    static QString settingsFolder();
    void forgetUnmadeCopy();
    void executePragmas(int cachePages);

    static const QString tempFileFormat;

    bool standardDbExists = false;
    QSqlDatabase database;
    QList<QString> tempFiles;
    QString settingsFile;
};
