// What the private working copy of the settings gains: the same work on the copy, and on the plain file as SQLite
// comes, where each small write waits for the disk.

#include "settingsdatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {
constexpr int items = 10000;

QString item(int number)
{
    return QStringLiteral("item%1").arg(number);
}

/// The store's own way: without a message for the file that the first save does not find.
void quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

/// A settings file with all items, opened through the store.
struct Store
{
    Store()
    {
        store.openDatabase(QString());
        for (int i = 0; i < items; ++i)
            store.setValue(item(i), i);
    }

    SettingsDatabase store{nullptr};
};

/// The same table in a file that is worked on directly, with SQLite's own defaults.
class PlainFile
{
public:
    PlainFile()
        : m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("plain")))
    {
        m_database.setDatabaseName(m_directory.filePath(QStringLiteral("plain")));
        m_database.open();
        QSqlQuery(m_database)
            .exec(QStringLiteral("create table if not exists MiscSettings (item text unique, value text)"));
    }

    ~PlainFile()
    {
        m_database.close();
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("plain"));
    }

    void setValue(const QString &name, const QString &value)
    {
        QSqlQuery(m_database)
            .exec(QStringLiteral("insert or replace into MiscSettings values('%1', '%2')").arg(name, value));
    }

    QString value(const QString &name)
    {
        QSqlQuery query(m_database);
        query.exec(QStringLiteral("select value from MiscSettings where item = '%1'").arg(name));
        return query.next() ? query.value(0).toString() : QString();
    }

private:
    QTemporaryDir m_directory{QDir::currentPath() + QStringLiteral("/plain-XXXXXX")};
    QSqlDatabase m_database;
};

void writeOneToTheStore(benchmark::State &state)
{
    Store settings;
    int next = 0;
    for (auto _ : state)
        settings.store.setValue(item(next++ % items), QStringLiteral("value"));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(writeOneToTheStore);

void writeOneToThePlainFile(benchmark::State &state)
{
    PlainFile file;
    int next = 0;
    for (auto _ : state)
        file.setValue(item(next++ % items), QStringLiteral("value"));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(writeOneToThePlainFile)->UseRealTime();

void readOneFromTheStore(benchmark::State &state)
{
    Store settings;
    int next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(settings.store.value(item(next++ % items), QVariant()));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readOneFromTheStore);

void readOneFromThePlainFile(benchmark::State &state)
{
    PlainFile file;
    for (int i = 0; i < 100; ++i)
        file.setValue(item(i), QStringLiteral("value"));
    int next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(file.value(item(next++ % 100)));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readOneFromThePlainFile);

void openTheStore(benchmark::State &state)
{
    Store saved;
    saved.store.saveDatabase();
    for (auto _ : state) {
        SettingsDatabase store(nullptr);
        if (!store.openDatabase(QString()))
            state.SkipWithError("the settings do not open");
    }
}
BENCHMARK(openTheStore)->UseRealTime()->Unit(benchmark::kMillisecond);

void saveTheStore(benchmark::State &state)
{
    Store settings;
    for (auto _ : state) {
        if (!settings.store.saveDatabase())
            state.SkipWithError("the settings are not saved");
    }
}
BENCHMARK(saveTheStore)->UseRealTime()->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    // On the disk that the build is on: a temporary folder may be memory, where no write waits.
    const QTemporaryDir home(QDir::currentPath() + QStringLiteral("/home-XXXXXX"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path()));
    qInstallMessageHandler(quiet);
    benchmark::AddCustomContext("goal", "a single write at least 20 times as fast as to the plain file");
    benchmark::AddCustomContext("items", "10,000");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
