#include "applicationinterfacehandler.h"

#include "canmultiinterfacedialog.h"
#include "fakefamily.h"
#include "messageboxes.h"
#include "settingshome.h"

#include <QComboBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableView>
#include <QTimer>
#include <QtTest>

#include <memory>

using Adapter = AbstractCanAdapter;

namespace {
/// An application's settings command, and a user who does something in the window that it shows.
class Bench
{
public:
    Bench()
        : handler(settings.get(), store, collection.get(), primary, scheduler, nullptr)
    {
        FakeFamily *family = FakeFamily::install(Adapter::CanAdapterDemo, QStringLiteral("Demo"));
        family->classicBitrates = {{QStringLiteral("125 kBit/s"), 125, 0.0},
                                   {QStringLiteral("250 kBit/s"), 250, 0.0},
                                   {QStringLiteral("500 kBit/s"), 500, 0.0}};
    }

    void command(const std::function<void(CanMultiInterfaceDialog &)> &user, bool hideActiveColumn = false,
                 bool showConnectButton = true)
    {
        QTimer::singleShot(0, &handler, [&] {
            auto *dialog = qobject_cast<CanMultiInterfaceDialog *>(QApplication::activeModalWidget());
            if (dialog == nullptr)
                return;
            ++shown;
            user(*dialog);
            isLeftOpen = dialog->isVisible();
            dialog->hide(); // or the command would not end
        });
        handler.showCanMultiInterfaceSettings(hideActiveColumn, showConnectButton);
    }

    static void press(const CanMultiInterfaceDialog &dialog, const char *button)
    {
        dialog.findChild<QPushButton *>(QLatin1String(button))->click();
    }

    /// What the next start of the application finds.
    static int savedAdapters()
    {
        SettingsDatabase reopened(nullptr);
        MultiCanAdapterHandler restored;
        reopened.openDatabase(QString());
        reopened.restoreAdapters(&restored);
        return restored.getAdapterCount();
    }

    SettingsHome home;
    std::unique_ptr<SettingsDatabase> settings = std::make_unique<SettingsDatabase>(nullptr);
    std::unique_ptr<MultiCanAdapterHandler> collection = std::make_unique<MultiCanAdapterHandler>();
    QPointer<DatachunkHandler> store;
    QPointer<AbstractCanAdapter> primary;
    QPointer<CanScheduler> scheduler;
    ApplicationInterfaceHandler handler;
    MessageBoxes boxes;
    int shown = 0;
    bool isLeftOpen = false;
};
} // namespace

class TestInterfaceSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void adaptersStartWithTheDefaultBitrate_data();
    void adaptersStartWithTheDefaultBitrate();
    void theApplicationSaysWhatTheWindowOffers_data();
    void theApplicationSaysWhatTheWindowOffers();
    void adaptersAreSavedHoweverTheWindowCloses_data();
    void adaptersAreSavedHoweverTheWindowCloses();
    void theUserMayAskForAConnection();
    void theRequestForAConnectionLastsUntilTheNextTime();
    void aFailedSaveIsLoggedAndNoMore();
    void withoutACollectionOrSettingsNothingShows_data();
    void withoutACollectionOrSettingsNothingShows();

private:
    std::unique_ptr<Bench> m_bench;
};

void TestInterfaceSettings::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Harrier"));
}

void TestInterfaceSettings::init()
{
    m_bench = std::make_unique<Bench>();
    m_bench->home.makeFolder();
    m_bench->handler.openSettingsDatabase();
}

void TestInterfaceSettings::cleanup()
{
    m_bench.reset();
}

void TestInterfaceSettings::adaptersStartWithTheDefaultBitrate_data()
{
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<QString>("bitrate");

    QTest::newRow("never set") << QVariant() << QStringLiteral("250 kBit/s");
    QTest::newRow("set") << QVariant(500) << QStringLiteral("500 kBit/s");
    QTest::newRow("its low 16 bits count") << QVariant(65536 + 125) << QStringLiteral("125 kBit/s");
}

void TestInterfaceSettings::adaptersStartWithTheDefaultBitrate()
{
    QFETCH(QVariant, setting);
    QFETCH(QString, bitrate);
    if (setting.isValid())
        m_bench->settings->setValue(QStringLiteral("defaultBitrate"), setting);
    QString shown;
    m_bench->command([&](CanMultiInterfaceDialog &dialog) {
        auto *types = dialog.findChild<QComboBox *>(QStringLiteral("cbCanInterfaceType"));
        types->setCurrentIndex(types->findData(uint(Adapter::CanAdapterDemo)));
        shown = dialog.findChild<QComboBox *>(QStringLiteral("cbBitrate"))->currentText();
    });
    QCOMPARE(shown, bitrate);
}

void TestInterfaceSettings::theApplicationSaysWhatTheWindowOffers_data()
{
    QTest::addColumn<bool>("hideActiveColumn");
    QTest::addColumn<bool>("showConnectButton");

    QTest::newRow("all") << false << true;
    QTest::newRow("no column \"Active\"") << true << true;
    QTest::newRow("no connection") << false << false;
}

void TestInterfaceSettings::theApplicationSaysWhatTheWindowOffers()
{
    QFETCH(bool, hideActiveColumn);
    QFETCH(bool, showConnectButton);
    bool isHidden = false;
    bool isOffered = false;
    m_bench->command(
        [&](CanMultiInterfaceDialog &dialog) {
            isHidden = dialog.findChild<QTableView *>(QStringLiteral("tableView"))->isColumnHidden(3);
            isOffered = dialog.findChild<QPushButton *>(QStringLiteral("btnUpdateCloseConnect"))->isVisible();
        },
        hideActiveColumn, showConnectButton);
    QCOMPARE(isHidden, hideActiveColumn);
    QCOMPARE(isOffered, showConnectButton);
}

void TestInterfaceSettings::adaptersAreSavedHoweverTheWindowCloses_data()
{
    QTest::addColumn<QString>("way");

    QTest::newRow("button") << QStringLiteral("button");
    QTest::newRow("escape key") << QStringLiteral("escape");
    QTest::newRow("window") << QStringLiteral("window");
    QTest::newRow("to connect") << QStringLiteral("connect");
}

void TestInterfaceSettings::adaptersAreSavedHoweverTheWindowCloses()
{
    QFETCH(QString, way);
    m_bench->command([&](CanMultiInterfaceDialog &dialog) {
        auto *types = dialog.findChild<QComboBox *>(QStringLiteral("cbCanInterfaceType"));
        types->setCurrentIndex(types->findData(uint(Adapter::CanAdapterDemo)));
        Bench::press(dialog, "btnAddInterface");
        if (way == QLatin1String("button"))
            Bench::press(dialog, "btnClose");
        else if (way == QLatin1String("escape"))
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else if (way == QLatin1String("window"))
            dialog.close();
        else
            Bench::press(dialog, "btnUpdateCloseConnect");
    });
    QCOMPARE(m_bench->shown, 1);
    QVERIFY(!m_bench->isLeftOpen);
    QCOMPARE(Bench::savedAdapters(), 1);
}

void TestInterfaceSettings::theUserMayAskForAConnection()
{
    m_bench->command([](CanMultiInterfaceDialog &dialog) { Bench::press(dialog, "btnUpdateCloseConnect"); });
    QVERIFY(m_bench->handler.getDirectConnect());
}

void TestInterfaceSettings::theRequestForAConnectionLastsUntilTheNextTime()
{
    m_bench->command([](CanMultiInterfaceDialog &dialog) { Bench::press(dialog, "btnUpdateCloseConnect"); });
    m_bench->command([](CanMultiInterfaceDialog &dialog) { Bench::press(dialog, "btnClose"); });
    QCOMPARE(m_bench->shown, 2);
    QVERIFY(!m_bench->handler.getDirectConnect());
}

void TestInterfaceSettings::aFailedSaveIsLoggedAndNoMore()
{
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("showCanMultiInterfaceSettings.* saveDatabase failed — "
                                                           "settings may not be persisted$")));
    m_bench->command([this](CanMultiInterfaceDialog &dialog) {
        // A folder in the place of the file.
        QFile::remove(m_bench->home.standardFile());
        QDir().mkpath(m_bench->home.standardFile() + QStringLiteral("/taken"));
        Bench::press(dialog, "btnClose");
    });
    QVERIFY(m_bench->boxes.shown.isEmpty());
}

void TestInterfaceSettings::withoutACollectionOrSettingsNothingShows_data()
{
    QTest::addColumn<bool>("hasCollection");
    QTest::addColumn<bool>("hasSettings");

    QTest::newRow("no collection") << false << true;
    QTest::newRow("no settings") << true << false;
}

void TestInterfaceSettings::withoutACollectionOrSettingsNothingShows()
{
    QFETCH(bool, hasCollection);
    QFETCH(bool, hasSettings);
    if (!hasCollection)
        m_bench->collection.reset();
    if (!hasSettings)
        m_bench->settings.reset();
    m_bench->command([](CanMultiInterfaceDialog &) {});
    QCoreApplication::processEvents();
    QCOMPARE(m_bench->shown, 0);
}

QTEST_MAIN(TestInterfaceSettings)
#include "tst_interfacesettings.moc"
