#include "settingsdatabase.h"

#include "settingshome.h"

#include <QRegularExpression>
#include <QtTest>

#include <memory>

namespace {
void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}
} // namespace

class TestSettingsMigration : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void newestEligibleSettingsAreTaken_data();
    void newestEligibleSettingsAreTaken();
    void blanksOfTheApplicationNameAreLeftOut();
    void existingSettingsAreLeftAlone();
    void earliestFormatIsTheLastResort();
    void earliestFormatYieldsToAVersion();
    void failedCopyFallsBackToTheEarliestFormat();
    void nextVersionTakesTheSettingsOver();

private:
    std::unique_ptr<SettingsHome> m_home;
};

void TestSettingsMigration::init()
{
    m_home = std::make_unique<SettingsHome>();
    m_home->makeFolder();
}

void TestSettingsMigration::cleanup()
{
    m_home.reset();
}

void TestSettingsMigration::newestEligibleSettingsAreTaken_data()
{
    QTest::addColumn<QString>("running");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("chosen");
    const QString release = QStringLiteral("2.4.1");
    const QString development = QStringLiteral("2.4.1-dev");
    const auto files = [](std::initializer_list<const char *> names) {
        QStringList list;
        for (const char *name : names)
            list.append(QLatin1String(name));
        return list;
    };
    const auto row = [&](const char *title, const QString &running, const QStringList &names, const char *chosen) {
        QTest::newRow(title) << running << names << QString::fromLatin1(chosen);
    };
    row("nothing there", release, {}, "");
    row("parts compare as numbers", release, files({"Falcon 1.2.3", "Falcon 1.10.0"}), "Falcon 1.10.0");
    row("major before minor", release, files({"Falcon 1.9.9", "Falcon 2.0.0"}), "Falcon 2.0.0");
    row("minor before patch", release, files({"Falcon 1.1.9", "Falcon 1.2.0"}), "Falcon 1.2.0");
    row("a release takes a newer one", release, files({"Falcon 2.4.0", "Falcon 3.0.0"}), "Falcon 3.0.0");
    row("a development version keeps to older ones", development, files({"Falcon 2.4.0", "Falcon 3.0.0"}),
        "Falcon 2.4.0");
    row("a development version refuses its own number", development, files({"Falcon-2.4.1"}), "");
    row("a release takes its own number", release, files({"Falcon-2.4.1"}), "Falcon-2.4.1");
    row("first of two numbers counts", release, files({"1.0.0 Falcon 2.0.0", "Falcon 1.5.0"}), "Falcon 1.5.0");
    row("two parts are too few", release, files({"Falcon 2.5"}), "");
    row("more than three parts", release, files({"Falcon 1.2.3.9", "Falcon 1.2.3.8.7"}), "Falcon 1.2.3*");
    row("backup copies count", release, files({"Falcon 2.0.0.bak"}), "Falcon 2.0.0.bak");
    row("working copies do not", release, files({"tempsettings_1.2.3_4"}), "");
    row("other applications do not", release, files({"Osprey 1.2.3"}), "");
    row("case counts", release, files({"falcon 1.2.3"}), "");
    row("name anywhere", release, files({"My Falcon's 1.2.3"}), "My Falcon's 1.2.3");
    row("version 0.0.0 cannot win", release, files({"Falcon 0.0.0"}), "");
    row("version 0.0.1 can", release, files({"Falcon 0.0.1"}), "Falcon 0.0.1");
    row("only 8 bits of a part count", release, files({"Falcon 256.0.1", "Falcon 1.0.0"}), "Falcon 1.0.0");
    row("65535 is a number", release, files({"Falcon 0.0.65535"}), "Falcon 0.0.65535");
    row("65536 is none", release, files({"Falcon 0.0.65536"}), "");
    row("no version at all", release, files({"Falcon"}), "");
}

void TestSettingsMigration::newestEligibleSettingsAreTaken()
{
    QFETCH(QString, running);
    QFETCH(QStringList, files);
    QFETCH(QString, chosen);
    QCoreApplication::setApplicationVersion(running);
    for (const QString &file : qAsConst(files))
        writeFile(m_home->path(file), file.toUtf8());

    SettingsDatabase store(nullptr);
    QCOMPARE(store.getStandardDatabaseExists(), !chosen.isEmpty());
    if (chosen.isEmpty())
        return;
    // Where two names carry the same version, the folder's own order decides, which nobody promises.
    const QString taken = QString::fromUtf8(contentOf(m_home->standardFile()));
    const QRegularExpression pattern(QRegularExpression::wildcardToRegularExpression(chosen));
    QVERIFY2(pattern.match(taken).hasMatch(), qPrintable(taken));
    for (const QString &file : qAsConst(files))
        QVERIFY2(contentOf(m_home->path(file)) == file.toUtf8(), "the older file stays as it is");
}

void TestSettingsMigration::blanksOfTheApplicationNameAreLeftOut()
{
    QCoreApplication::setApplicationName(QStringLiteral("Grey Falcon"));
    m_home->makeFolder();
    writeFile(m_home->path(QStringLiteral("Grey Falcon 1.2.3")), "with a blank");
    writeFile(m_home->path(QStringLiteral("GreyFalcon 1.0.0")), "without");
    SettingsDatabase store(nullptr);
    QCOMPARE(contentOf(store.getSettingsFileBaseName()), QByteArray("without"));
}

void TestSettingsMigration::existingSettingsAreLeftAlone()
{
    writeFile(m_home->standardFile(), "own");
    writeFile(m_home->path(QStringLiteral("Falcon 9.0.0")), "newer");
    SettingsDatabase store(nullptr);
    QCOMPARE(contentOf(m_home->standardFile()), QByteArray("own"));
}

void TestSettingsMigration::earliestFormatIsTheLastResort()
{
    writeFile(m_home->path(QStringLiteral("zrnsettings")), "earliest");
    SettingsDatabase store(nullptr);
    QVERIFY(store.oldDatabaseExists());
    QVERIFY(store.getStandardDatabaseExists());
    QCOMPARE(contentOf(m_home->standardFile()), QByteArray("earliest"));
}

void TestSettingsMigration::earliestFormatYieldsToAVersion()
{
    writeFile(m_home->path(QStringLiteral("zrnsettings")), "earliest");
    writeFile(m_home->path(QStringLiteral("Falcon 1.0.0")), "version");
    SettingsDatabase store(nullptr);
    QCOMPARE(contentOf(m_home->standardFile()), QByteArray("version"));
}

void TestSettingsMigration::failedCopyFallsBackToTheEarliestFormat()
{
    // A folder that looks like settings cannot be copied.
    QVERIFY(QDir().mkdir(m_home->path(QStringLiteral("Falcon 1.0.0"))));
    writeFile(m_home->path(QStringLiteral("zrnsettings")), "earliest");
    QTest::ignoreMessage(
        QtDebugMsg,
        QRegularExpression(QStringLiteral("^bool SettingsDatabase::copyOldVersionSettings\\(\\) Failed to "
                                          "copy old version settings from \".*/Falcon 1.0.0\" "
                                          "\".*/Falcon 2.4.1\"")));
    SettingsDatabase store(nullptr);
    QCOMPARE(contentOf(m_home->standardFile()), QByteArray("earliest"));
}

void TestSettingsMigration::nextVersionTakesTheSettingsOver()
{
    {
        SettingsDatabase store(nullptr);
        QVERIFY(store.openDatabase({}));
        QVERIFY(store.setValue(QStringLiteral("item"), 5));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
        QVERIFY(store.saveDatabase());
    }
    QCoreApplication::setApplicationVersion(QStringLiteral("2.5.0"));
    QCoreApplication::instance()->setProperty(SettingsHome::nameProperty, QStringLiteral("Falcon 2.5.0"));
    SettingsDatabase store(nullptr);
    QVERIFY(store.getStandardDatabaseExists());
    QVERIFY(store.openDatabase({}));
    QCOMPARE(store.value(QStringLiteral("item"), {}), QVariant(5));
}

QTEST_GUILESS_MAIN(TestSettingsMigration)
#include "tst_settingsmigration.moc"
