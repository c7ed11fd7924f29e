#include "settingsdatabase.h"

#include "settingshome.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

#include <memory>

namespace {
/// All rows of a statement on a database file that nobody else has open; the columns of a row joined by "=".
QStringList rowsOf(const QString &file, const QString &statement)
{
    QStringList rows;
    const QString connection = QStringLiteral("reader");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        database.setDatabaseName(file);
        database.open();
        QSqlQuery query(database);
        query.exec(statement);
        while (query.next())
            rows.append(query.value(0).toString() + QLatin1Char('=') + query.value(1).toString());
    }
    QSqlDatabase::removeDatabase(connection);
    return rows;
}

QString pragma(const QSqlDatabase &database, const char *name)
{
    QSqlQuery query(database);
    query.exec(QStringLiteral("PRAGMA %1").arg(QLatin1String(name)));
    return query.next() ? query.value(0).toString() : QString();
}

/// A settings file with one value in it, made by a store that is gone.
void makeSettingsFile(const QString &file, const QString &value)
{
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    QVERIFY(store.setValue(QStringLiteral("item"), value));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
    QVERIFY(store.saveDatabase());
    if (file != store.getSettingsFileBaseName())
        QVERIFY(QFile::rename(store.getSettingsFileBaseName(), file));
}

/// Opens the doors that its base class keeps to itself.
class OpenStore : public SettingsDatabase
{
public:
    using SettingsDatabase::createTempFile;
    using SettingsDatabase::SettingsDatabase;
};
} // namespace

class TestSettingsDatabase : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void firstStartLeavesNoFileBeforeTheFirstSave();
    void newFileTellsWhichToolMadeIt();
    void ownFileIsSavedToItselfAndNotToTheStandardOne();
    void fileNameIsThatOfTheWorkingCopy();
    void eachStoreHasAConnectionOfItsOwn();
    void settingsFileIsNamedAfterTheVersion_data();
    void settingsFileIsNamedAfterTheVersion();
    void valuesComeBackAfterASave();
    void valuesAreGoneWithoutASave();
    void existenceIsThatAtConstruction();
    void readOnlyFileOpensAndTakesValues();
    void missingFileDoesNotOpen();
    void foreignFileFailsAtItsFirstTable();
    void fileWithoutTablesGetsThem();
    void workingCopiesEndWithTheStore();
    void closingKeepsTheWorkingCopy();
    void openingAgainMakesAnotherWorkingCopy();
    void workingCopyTakesAFreeName();
    void workingCopyIsTunedForSpeed_data();
    void workingCopyIsTunedForSpeed();
    void resetEmptiesTheWorkingCopyOnly();
    void saveToALostFolderFailsAndSucceedsWhenItIsBack();
    void newDatabaseGoesToTheStandardFile();
    void failedOpeningKeepsTheFormerFile();
    void folderDeeperThanOneLevelIsNotMade();
    void saveWithoutAWorkingCopyLeavesTheFileAlone();
    void failedStoreLeavesTheCopyOfAnotherAlone();
    void closedStoreTakesAndGivesNothing();
    void closedStoreAnswersWithNothing();

private:
    std::unique_ptr<SettingsHome> m_home;
};

void TestSettingsDatabase::init()
{
    m_home = std::make_unique<SettingsHome>();
}

void TestSettingsDatabase::cleanup()
{
    m_home.reset();
}

void TestSettingsDatabase::firstStartLeavesNoFileBeforeTheFirstSave()
{
    SettingsDatabase store(nullptr);
    QVERIFY(!store.isOpen());
    QVERIFY(store.openDatabase({}));
    QVERIFY(store.isOpen());
    QVERIFY(!store.getStandardDatabaseExists());
    QVERIFY(!QFile::exists(m_home->standardFile()));

    // There is no old file to make room for.
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("bool SettingsDatabase::saveDatabase\\(\\) "
                                                           "Failed to remove \".*/Falcon 2.4.1\"")));
    QVERIFY(store.saveDatabase());
    QVERIFY(QFile::exists(m_home->standardFile()));
}

void TestSettingsDatabase::newFileTellsWhichToolMadeIt()
{
    {
        SettingsDatabase store(nullptr);
        QVERIFY(store.openDatabase({}));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
        QVERIFY(store.saveDatabase());
    }
    const QStringList records = rowsOf(m_home->standardFile(),
                                       QStringLiteral("select item, value from MiscSettings order by rowid"));
    QCOMPARE(records,
             (QStringList{QStringLiteral("CreateToolVersion=2.4.1"), QStringLiteral("CreateToolName=Falcon"),
                          QStringLiteral("DatabaseVersion=1")}));
}

void TestSettingsDatabase::ownFileIsSavedToItselfAndNotToTheStandardOne()
{
    QTemporaryDir elsewhere;
    const QString file = elsewhere.filePath(QStringLiteral("mine"));
    makeSettingsFile(file, QStringLiteral("before"));
    {
        SettingsDatabase store(nullptr);
        QVERIFY(store.openDatabase(file));
        QVERIFY(store.setValue(QStringLiteral("item"), QStringLiteral("after")));
        QVERIFY(store.saveDatabase());
    }
    QVERIFY(!QFile::exists(m_home->standardFile()));
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase(file));
    QCOMPARE(store.value(QStringLiteral("item"), {}).toString(), QStringLiteral("after"));
}

void TestSettingsDatabase::fileNameIsThatOfTheWorkingCopy()
{
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    const QRegularExpression name(
        QStringLiteral("^%1/tempsettings_[0-9]+_[0-9]+$").arg(QRegularExpression::escape(m_home->folder())));
    QVERIFY2(name.match(store.getFilename()).hasMatch(), qPrintable(store.getFilename()));
}

void TestSettingsDatabase::eachStoreHasAConnectionOfItsOwn()
{
    const quint16 before = SettingsDatabase::msDatabaseCounter;
    SettingsDatabase first(nullptr);
    SettingsDatabase second(nullptr);
    QCOMPARE(first.getDatabase().connectionName(), QStringLiteral("settingsDb%1").arg(before + 1));
    QCOMPARE(second.getDatabase().connectionName(), QStringLiteral("settingsDb%1").arg(before + 2));
    QCOMPARE(SettingsDatabase::msDatabaseCounter, quint16(before + 2));

    QVERIFY(first.openDatabase({}));
    QVERIFY(second.openDatabase({}));
    QVERIFY(first.setValue(QStringLiteral("item"), QStringLiteral("of the first")));
    QCOMPARE(second.value(QStringLiteral("item"), QStringLiteral("none")).toString(), QStringLiteral("none"));
}

void TestSettingsDatabase::settingsFileIsNamedAfterTheVersion_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<QString>("name");
    QTest::newRow("name with version") << QVariant(QStringLiteral("Falcon 3")) << QStringLiteral("Falcon 3");
    QTest::newRow("empty property") << QVariant(QString()) << QStringLiteral("Falcon");
    QTest::newRow("no property") << QVariant() << QStringLiteral("Falcon");
}

void TestSettingsDatabase::settingsFileIsNamedAfterTheVersion()
{
    QFETCH(QVariant, property);
    QFETCH(QString, name);
    QCoreApplication::instance()->setProperty(SettingsHome::nameProperty, property);
    SettingsDatabase store(nullptr);
    QCOMPARE(store.getSettingsFileBaseName(), m_home->path(name));
    QCOMPARE(store.getOldSettingsFileBaseName(), m_home->path(QStringLiteral("zrnsettings")));
}

void TestSettingsDatabase::valuesComeBackAfterASave()
{
    m_home->makeFolder();
    makeSettingsFile(m_home->standardFile(), QStringLiteral("kept"));
    SettingsDatabase store(nullptr);
    QVERIFY(store.getStandardDatabaseExists());
    QVERIFY(store.openDatabase({}));
    QCOMPARE(store.value(QStringLiteral("item"), {}).toString(), QStringLiteral("kept"));
}

void TestSettingsDatabase::valuesAreGoneWithoutASave()
{
    m_home->makeFolder();
    makeSettingsFile(m_home->standardFile(), QStringLiteral("saved"));
    {
        SettingsDatabase store(nullptr);
        QVERIFY(store.openDatabase({}));
        QVERIFY(store.setValue(QStringLiteral("item"), QStringLiteral("forgotten")));
        QCOMPARE(store.value(QStringLiteral("item"), {}).toString(), QStringLiteral("forgotten"));
    }
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    QCOMPARE(store.value(QStringLiteral("item"), {}).toString(), QStringLiteral("saved"));
}

void TestSettingsDatabase::existenceIsThatAtConstruction()
{
    SettingsDatabase store(nullptr);
    QVERIFY(!store.standardDatabaseExists());
    QVERIFY(store.openDatabase({}));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
    QVERIFY(store.saveDatabase());
    QVERIFY(store.standardDatabaseExists());
    QVERIFY(!store.getStandardDatabaseExists());
    QVERIFY(SettingsDatabase(nullptr).getStandardDatabaseExists());
}

void TestSettingsDatabase::readOnlyFileOpensAndTakesValues()
{
    m_home->makeFolder();
    makeSettingsFile(m_home->standardFile(), QStringLiteral("before"));
    QVERIFY(QFile::setPermissions(m_home->standardFile(), QFile::ReadOwner | QFile::ReadGroup));

    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    const QFile::Permissions rights = QFile::permissions(store.getFilename());
    QVERIFY(rights.testFlag(QFile::WriteOwner));
    QVERIFY2(rights.testFlag(QFile::ReadGroup), "the other rights of the file go over to the copy");
    QVERIFY(store.setValue(QStringLiteral("item"), QStringLiteral("after")));
    QCOMPARE(store.value(QStringLiteral("item"), {}).toString(), QStringLiteral("after"));
}

void TestSettingsDatabase::missingFileDoesNotOpen()
{
    SettingsDatabase store(nullptr);
    QVERIFY(!store.openDatabase(m_home->path(QStringLiteral("nowhere"))));
    QVERIFY(!store.isOpen());
}

void TestSettingsDatabase::foreignFileFailsAtItsFirstTable()
{
    m_home->makeFolder();
    QFile file(m_home->standardFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("This is a letter and no database. ").repeated(100));
    file.close();

    SettingsDatabase store(nullptr);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("createMiscTable")));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("createGenericSettingsTable")));
    QVERIFY(!store.openDatabase({}));
    QVERIFY2(QFile(file.fileName()).size() == 3400, "the letter stays as it is");
}

void TestSettingsDatabase::fileWithoutTablesGetsThem()
{
    m_home->makeFolder();
    QVERIFY(QFile(m_home->standardFile()).open(QIODevice::WriteOnly));
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    const QStringList tables = store.getDatabase().tables();
    QVERIFY(tables.contains(QStringLiteral("MiscSettings")));
    QVERIFY(tables.contains(QStringLiteral("GenericSettings")));
}

void TestSettingsDatabase::workingCopiesEndWithTheStore()
{
    auto store = std::make_unique<SettingsDatabase>(nullptr);
    QVERIFY(store->openDatabase({}));
    QCOMPARE(m_home->workingCopies().size(), 1);
    store.reset();
    QCOMPARE(m_home->workingCopies(), QStringList());
}

void TestSettingsDatabase::closingKeepsTheWorkingCopy()
{
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    store.close();
    QVERIFY(!store.isOpen());
    QCOMPARE(m_home->workingCopies().size(), 1);
}

void TestSettingsDatabase::openingAgainMakesAnotherWorkingCopy()
{
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    const QString first = store.getFilename();
    QVERIFY(store.openDatabase({}));
    QVERIFY(store.getFilename() != first);
    QCOMPARE(m_home->workingCopies().size(), 2);
}

void TestSettingsDatabase::workingCopyTakesAFreeName()
{
    OpenStore store(nullptr);
    // The same seed gives the same names, so the second one finds the first in its way.
    srand(1);
    const QString first = store.createTempFile();
    QVERIFY(!QFile::exists(first));
    QVERIFY(QFile(first).open(QIODevice::WriteOnly));
    srand(1);
    const QString second = store.createTempFile();
    QVERIFY(second != first);
    QVERIFY(!QFile::exists(second));
}

void TestSettingsDatabase::workingCopyIsTunedForSpeed_data()
{
    QTest::addColumn<bool>("fileExists");
    QTest::addColumn<QString>("cacheSize");
    QTest::newRow("new") << false << QStringLiteral("16384");
    QTest::newRow("opened") << true << QStringLiteral("64000");
}

void TestSettingsDatabase::workingCopyIsTunedForSpeed()
{
    QFETCH(bool, fileExists);
    QFETCH(QString, cacheSize);
    if (fileExists) {
        m_home->makeFolder();
        makeSettingsFile(m_home->standardFile(), QStringLiteral("value"));
    }
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    const QSqlDatabase database = store.getDatabase();
    QCOMPARE(pragma(database, "page_size"), QStringLiteral("4096"));
    QCOMPARE(pragma(database, "cache_size"), cacheSize);
    QCOMPARE(pragma(database, "temp_store"), QStringLiteral("2"));
    QCOMPARE(pragma(database, "journal_mode"), QStringLiteral("off"));
    QCOMPARE(pragma(database, "locking_mode"), QStringLiteral("exclusive"));
    QCOMPARE(pragma(database, "synchronous"), QStringLiteral("0"));
}

void TestSettingsDatabase::resetEmptiesTheWorkingCopyOnly()
{
    m_home->makeFolder();
    makeSettingsFile(m_home->standardFile(), QStringLiteral("saved"));
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    store.reset();
    QVERIFY(store.getAllSettings().isEmpty());
    QVERIFY2(!store.existMiscSettingsValue(QStringLiteral("DatabaseVersion")), "nothing writes the records again");
    QVERIFY(store.setValue(QStringLiteral("item"), 1));

    SettingsDatabase other(nullptr);
    QVERIFY(other.openDatabase({}));
    QCOMPARE(other.value(QStringLiteral("item"), {}).toString(), QStringLiteral("saved"));
}

void TestSettingsDatabase::saveToALostFolderFailsAndSucceedsWhenItIsBack()
{
    QTemporaryDir elsewhere;
    const QString folder = elsewhere.filePath(QStringLiteral("folder"));
    QVERIFY(QDir().mkdir(folder));
    const QString file = folder + QStringLiteral("/mine");
    makeSettingsFile(file, QStringLiteral("before"));

    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase(file));
    QVERIFY(store.setValue(QStringLiteral("item"), QStringLiteral("after")));
    QVERIFY(QDir(folder).removeRecursively());
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove \".*/folder/mine\"")));
    QTest::ignoreMessage(
        QtDebugMsg, QRegularExpression(QStringLiteral("Failed to copy \".*/tempsettings_.*\" to \".*/folder/mine\"")));
    QVERIFY(!store.saveDatabase());

    QVERIFY(QDir().mkdir(folder));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
    QVERIFY(store.saveDatabase());
    SettingsDatabase other(nullptr);
    QVERIFY(other.openDatabase(file));
    QCOMPARE(other.value(QStringLiteral("item"), {}).toString(), QStringLiteral("after"));
}

void TestSettingsDatabase::newDatabaseGoesToTheStandardFile()
{
    QTemporaryDir elsewhere;
    const QString file = elsewhere.filePath(QStringLiteral("mine"));
    makeSettingsFile(file, QStringLiteral("before"));
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase(file));
    QVERIFY(store.createNewDataBase());
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove \".*/Falcon 2.4.1\"")));
    QVERIFY(store.saveDatabase());
    QVERIFY(QFile::exists(m_home->standardFile()));
}

void TestSettingsDatabase::failedOpeningKeepsTheFormerFile()
{
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    QVERIFY(store.setValue(QStringLiteral("item"), 5));
    QVERIFY(!store.openDatabase(m_home->path(QStringLiteral("nowhere"))));
    QVERIFY(store.isOpen());
    QCOMPARE(store.value(QStringLiteral("item"), {}), QVariant(5));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove \".*/Falcon 2.4.1\"")));
    QVERIFY(store.saveDatabase());
}

void TestSettingsDatabase::folderDeeperThanOneLevelIsNotMade()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Raptors"));
    SettingsDatabase store(nullptr);
    const bool opened = store.openDatabase({});
    QCoreApplication::setOrganizationName({});
    QVERIFY(!opened);
}

void TestSettingsDatabase::saveWithoutAWorkingCopyLeavesTheFileAlone()
{
    m_home->makeFolder();
    makeSettingsFile(m_home->standardFile(), QStringLiteral("kept"));
    {
        SettingsDatabase store(nullptr);
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression(QStringLiteral("^bool SettingsDatabase::saveDatabase\\(\\) "
                                                               "Failed to copy \"\" to \".*/Falcon 2.4.1\"")));
        QVERIFY(!store.saveDatabase());
    }
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    QCOMPARE(store.value(QStringLiteral("item"), {}).toString(), QStringLiteral("kept"));
}

void TestSettingsDatabase::failedStoreLeavesTheCopyOfAnotherAlone()
{
    // Stores of one thread draw the same names, so the second gets the one that the first did not use.
    auto failed = std::make_unique<SettingsDatabase>(nullptr);
    QVERIFY(!failed->openDatabase(m_home->path(QStringLiteral("nowhere"))));
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    failed.reset();
    QVERIFY(QFile::exists(store.getFilename()));
}

void TestSettingsDatabase::closedStoreTakesAndGivesNothing()
{
    SettingsDatabase store(nullptr);
    for (int statement = 0; statement < 4; ++statement)
        QTest::ignoreMessage(QtWarningMsg, "QSqlQuery::exec: database not open");
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^bool SettingsDatabase::setMiscValue\\(")));
    QVERIFY(!store.setValue(QStringLiteral("item"), QStringLiteral("text")));
    const QRegularExpression read(QStringLiteral("^QVariant SettingsDatabase::value\\("));
    QTest::ignoreMessage(QtDebugMsg, read);
    QTest::ignoreMessage(QtDebugMsg, read);
    QCOMPARE(store.value(QStringLiteral("item"), 42), QVariant(42));
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("^bool SettingsDatabase::existMiscSettingsValue\\(")));
    QVERIFY(!store.existMiscSettingsValue(QStringLiteral("item")));
}

void TestSettingsDatabase::closedStoreAnswersWithNothing()
{
    SettingsDatabase store(nullptr);
    QCOMPARE(store.getFilename(), QString());
    QCOMPARE(store.getLastError().trimmed(), QString());
    QVERIFY(!store.isOpen());
}

QTEST_GUILESS_MAIN(TestSettingsDatabase)
#include "tst_settingsdatabase.moc"
