#include "settingsdatabase.h"

#include "childprocess.h"
#include "settingshome.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QtTest>

#include <memory>

namespace {
constexpr const char *item = "item";

QString itemName()
{
    return QLatin1String(item);
}

/// What goes wrong in a child is told by text, since QtTest counts in the parent only.
#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition))                                                                                              \
            return QStringLiteral("line %1: %2").arg(__LINE__).arg(QLatin1String(#condition));                         \
    } while (false)

void ignoreLines(const char *pattern)
{
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QLatin1String(pattern)));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

/// Takes what is left of a disk.
void fill(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return;
    const QByteArray block(4096, 'x');
    while (file.write(block) == block.size()) {
    }
}

bool saveValue(const QVariant &value)
{
    SettingsDatabase store(nullptr);
    return store.openDatabase({}) && store.setValue(itemName(), value) && store.saveDatabase();
}

QVariant savedValue(const QString &file = {})
{
    SettingsDatabase store(nullptr);
    return store.openDatabase(file) ? store.value(itemName(), {}) : QVariant(QStringLiteral("cannot be opened"));
}
} // namespace

class TestSettingsFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void damagedFileNeverCrashesAndStaysAsItIs_data();
    void damagedFileNeverCrashesAndStaysAsItIs();
    void folderInPlaceOfTheFileDoesNotOpen();
    void unreadableFileDoesNotOpen();
    void readOnlyFolderOfTheStoreDoesNotOpen();
    void readOnlyFolderOfTheFileRefusesTheSave();
    void readOnlyFileIsReplacedWhereItsFolderAllowsIt();
    void fullDiskAtOpeningLosesNothing();
    void fullDiskAtSavingIsMadeGoodByASecondSave();
    void killedProcessLeavesTheLastSave();
    void lastOfTwoProcessesWins();

private:
    std::unique_ptr<SettingsHome> m_home;
};

void TestSettingsFaults::init()
{
    m_home = std::make_unique<SettingsHome>();
    m_home->makeFolder();
}

void TestSettingsFaults::cleanup()
{
    m_home.reset();
}

void TestSettingsFaults::damagedFileNeverCrashesAndStaysAsItIs_data()
{
    QTest::addColumn<int>("keptPercent");
    QTest::addColumn<int>("damagedByte");
    for (int percent = 0; percent <= 100; percent += 5)
        QTest::addRow("cut at %d %%", percent) << percent << -1;
    for (const int byte : {0, 16, 18, 20, 28, 44, 56, 100, 101, 103, 105, 4096, 4097, 4099, 8192, 8195})
        QTest::addRow("byte %d damaged", byte) << 100 << byte;
}

void TestSettingsFaults::damagedFileNeverCrashesAndStaysAsItIs()
{
    QFETCH(int, keptPercent);
    QFETCH(int, damagedByte);
    const QString failure = ChildProcess::run([&]() -> QString {
        CHECK(saveValue(5));
        QByteArray content = contentOf(m_home->standardFile());
        content.truncate(content.size() * keptPercent / 100);
        if (damagedByte >= 0)
            content[damagedByte] = static_cast<char>(content[damagedByte] ^ 0xA5);
        CHECK(writeFile(m_home->standardFile(), content));
        {
            SettingsDatabase store(nullptr);
            store.openDatabase({});
            store.value(itemName(), {});
            store.setValue(itemName(), QStringLiteral("text"));
            store.getAllSettings();
        }
        CHECK(contentOf(m_home->standardFile()) == content);
        CHECK(m_home->workingCopies().isEmpty());
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::folderInPlaceOfTheFileDoesNotOpen()
{
    QVERIFY(QDir().mkdir(m_home->standardFile()));
    SettingsDatabase store(nullptr);
    QVERIFY(!store.openDatabase({}));
    QVERIFY(QFileInfo(m_home->standardFile()).isDir());
}

void TestSettingsFaults::unreadableFileDoesNotOpen()
{
    QTemporaryDir elsewhere;
    QVERIFY(elsewhere.isValid());
    const QString file = elsewhere.filePath(QStringLiteral("mine"));
    QVERIFY(writeFile(file, "secret"));
    QVERIFY(QFile::setPermissions(file, QFile::Permissions()));
    QVERIFY(QFile::setPermissions(elsewhere.path(), QFile::Permissions(0x7777)));
    const QString failure = ChildProcess::runWithoutRights([&]() -> QString {
        const QTemporaryDir ownHome;
        qputenv("XDG_DATA_HOME", QFile::encodeName(ownHome.path()));
        SettingsDatabase store(nullptr);
        CHECK(!store.openDatabase(file));
        CHECK(!store.isOpen());
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::readOnlyFolderOfTheStoreDoesNotOpen()
{
    const QString failure = ChildProcess::runWithoutRights([&]() -> QString {
        QTemporaryDir ownHome;
        qputenv("XDG_DATA_HOME", QFile::encodeName(ownHome.path()));
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
        CHECK(saveValue(5));
        CHECK(QFile::setPermissions(folder, QFile::Permissions(0x5555)));
        SettingsDatabase store(nullptr);
        CHECK(!store.openDatabase({}));
        CHECK(QFile::setPermissions(folder, QFile::Permissions(0x7777)));
        CHECK(savedValue() == QVariant(5));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::readOnlyFolderOfTheFileRefusesTheSave()
{
    const QString failure = ChildProcess::runWithoutRights([&]() -> QString {
        const QTemporaryDir ownHome;
        QTemporaryDir elsewhere;
        qputenv("XDG_DATA_HOME", QFile::encodeName(ownHome.path()));
        CHECK(saveValue(5));
        const QString file = elsewhere.filePath(QStringLiteral("mine"));
        CHECK(QFile::copy(SettingsDatabase(nullptr).getSettingsFileBaseName(), file));
        CHECK(QFile::setPermissions(elsewhere.path(), QFile::Permissions(0x5555)));
        SettingsDatabase store(nullptr);
        CHECK(store.openDatabase(file));
        CHECK(store.setValue(itemName(), 6));
        CHECK(!store.saveDatabase());
        CHECK(savedValue(file) == QVariant(5));
        CHECK(QFile::setPermissions(elsewhere.path(), QFile::Permissions(0x7777)));
        CHECK(store.saveDatabase());
        CHECK(savedValue(file) == QVariant(6));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::readOnlyFileIsReplacedWhereItsFolderAllowsIt()
{
    const QString failure = ChildProcess::runWithoutRights([&]() -> QString {
        const QTemporaryDir ownHome;
        qputenv("XDG_DATA_HOME", QFile::encodeName(ownHome.path()));
        CHECK(saveValue(5));
        SettingsDatabase store(nullptr);
        CHECK(QFile::setPermissions(store.getSettingsFileBaseName(), QFile::ReadOwner));
        CHECK(store.openDatabase({}));
        CHECK(store.setValue(itemName(), 6));
        CHECK(store.saveDatabase());
        CHECK(savedValue() == QVariant(6));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::fullDiskAtOpeningLosesNothing()
{
    QTemporaryDir disk;
    const QString failure = ChildProcess::runOnSmallDisk(disk.path(), "512k", [&]() -> QString {
        qputenv("XDG_DATA_HOME", QFile::encodeName(disk.path()));
        CHECK(saveValue(5));
        const QString ballast = disk.filePath(QStringLiteral("ballast"));
        fill(ballast);
        {
            SettingsDatabase store(nullptr);
            CHECK(!store.openDatabase({}));
        }
        CHECK(QFile::remove(ballast));
        CHECK(savedValue() == QVariant(5));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::fullDiskAtSavingIsMadeGoodByASecondSave()
{
    QTemporaryDir disk;
    const QString failure = ChildProcess::runOnSmallDisk(disk.path(), "512k", [&]() -> QString {
        qputenv("XDG_DATA_HOME", QFile::encodeName(disk.path()));
        CHECK(saveValue(5));
        const QString ballast = disk.filePath(QStringLiteral("ballast"));
        {
            SettingsDatabase store(nullptr);
            CHECK(store.openDatabase({}));
            // More than the old file gives free when it goes.
            CHECK(store.setValue(itemName(), QByteArray(150 * 1024, 'v')));
            fill(ballast);
            CHECK(!store.saveDatabase());
            CHECK(!store.saveDatabase());
            CHECK(QFile::remove(ballast));
            CHECK(store.saveDatabase());
        }
        CHECK(savedValue() == QVariant(QByteArray(150 * 1024, 'v')));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestSettingsFaults::killedProcessLeavesTheLastSave()
{
    const QString end = ChildProcess::run([]() -> QString {
        SettingsDatabase store(nullptr);
        CHECK(store.openDatabase({}));
        CHECK(store.setValue(itemName(), 1));
        CHECK(store.saveDatabase());
        CHECK(store.setValue(itemName(), 2));
        CHECK(store.saveDatabase());
        CHECK(store.setValue(itemName(), 3));
        raise(SIGKILL);
        return {};
    });
    QCOMPARE(end, QStringLiteral("ended by signal %1").arg(SIGKILL));
    QCOMPARE(savedValue(), QVariant(2));
    QVERIFY2(m_home->workingCopies().size() == 1, "what the dead process worked on stays behind, and harms nobody");
}

void TestSettingsFaults::lastOfTwoProcessesWins()
{
    ignoreLines("Failed to remove");
    QVERIFY(saveValue(1));
    SettingsDatabase store(nullptr);
    QVERIFY(store.openDatabase({}));
    QVERIFY(store.setValue(itemName(), 2));
    const QString failure = ChildProcess::run([]() -> QString {
        CHECK(savedValue() == QVariant(1));
        CHECK(saveValue(3));
        return {};
    });
    QCOMPARE(failure, QString());
    QCOMPARE(savedValue(), QVariant(3));
    QCOMPARE(store.value(itemName(), {}), QVariant(2));
    QVERIFY(store.saveDatabase());
    QCOMPARE(savedValue(), QVariant(2));
}

QTEST_GUILESS_MAIN(TestSettingsFaults)
#include "tst_settingsfaults.moc"
