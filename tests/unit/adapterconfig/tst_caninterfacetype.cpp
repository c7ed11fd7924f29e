#include "bitratelists.h"
#include "interfaceform.h"

#include <QLayout>

// What the form shows for each type of adapter.
class TestCanInterfaceType : public QObject
{
    Q_OBJECT

private slots:
    void typeHasItsPage_data();
    void typeHasItsPage();
    void typeOpensItsPage_data();
    void typeOpensItsPage();
    void pageOfATypeWithoutSettingsStaysHidden();
    void clickOpensAndClosesThePage();
    void openPageStaysOpenForTheNextType();
    void factorySaysWhetherTheBitrateIsChangeable_data();
    void factorySaysWhetherTheBitrateIsChangeable();
    void bitrateListSaysThatAFileSetsTheBitrate();
    void listenOnlyIsNotOffered_data();
    void listenOnlyIsNotOffered();
    void selectedDeviceOffersListenOnlyAfterAll_data();
    void selectedDeviceOffersListenOnlyAfterAll();
    void registerRowIsShown_data();
    void registerRowIsShown();
    void terminatorIsForOneType_data();
    void terminatorIsForOneType();
    void closingThePageUnchecksTheTerminator();
    void internExternTakesThePlaceOfSingleWire_data();
    void internExternTakesThePlaceOfSingleWire();
    void addressTellsTheDevice();
    void networkPageHasTimeouts_data();
    void networkPageHasTimeouts();
    void addressIsCheckedWhenItsPageShows_data();
    void addressIsCheckedWhenItsPageShows();
    void portRowStandsOnThePageInFront_data();
    void portRowStandsOnThePageInFront();
    void portIsNotCheckedBeforeItChanges_data();
    void portIsNotCheckedBeforeItChanges();
    void portSaysItsDefault_data();
    void portSaysItsDefault();
    void userTimingIsClosedForANewAdapter();
    void userTimingShowsWithoutFurtherSettings();
    void userTimingOfTheCurrentAdapterIsOpen_data();
    void userTimingOfTheCurrentAdapterIsOpen();
    void userTimingTakesThePlaceOfTheBitrateList();
    void extendedRegisterEntryIsForOneType_data();
    void extendedRegisterEntryIsForOneType();
    void extendedRegisterEntryCostsADataBitrate();
    void userBitratesFollowTheFactory_data();
    void userBitratesFollowTheFactory();
    void areaIsAsTallAsThePageInFront();
    void unknownTypeShowsNothing();
};

namespace {
using Adapter = AbstractCanAdapter;

void addTypes(const char *column)
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<bool>(column);
}

void addEachType(const char *column, const QList<unsigned int> &yes)
{
    addTypes(column);
    for (unsigned int type = 1; type <= InterfaceForm::highestType; ++type)
        QTest::newRow(qPrintable(QStringLiteral("type %1").arg(type))) << type << yes.contains(type);
}
} // namespace

void TestCanInterfaceType::typeHasItsPage_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<QString>("page");
    const QMap<unsigned int, QString> pages = {{6, QStringLiteral("page_5")},  {8, QStringLiteral("page_2")},
                                               {13, QStringLiteral("page_3")}, {15, QStringLiteral("page_3")},
                                               {16, QStringLiteral("page_4")}, {20, QStringLiteral("page_2")},
                                               {21, QStringLiteral("page_6")}};
    for (unsigned int type = 1; type <= InterfaceForm::highestType; ++type)
        QTest::newRow(qPrintable(QStringLiteral("type %1").arg(type)))
            << type << pages.value(type, QStringLiteral("page"));
}

void TestCanInterfaceType::typeHasItsPage()
{
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    QTEST(form.page(), "page");
    QVERIFY(form.isShown("cbAdvancedConfig"));
    QCOMPARE(form.box("cbAdvancedConfig")->text(),
             type == 16 ? QStringLiteral("User defined bitrate settings") : QStringLiteral("Show advanced config"));
}

void TestCanInterfaceType::typeOpensItsPage_data()
{
    addEachType("opens", {6, 8, 13, 15, 20, 21});
}

void TestCanInterfaceType::typeOpensItsPage()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, opens);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    QCOMPARE(form.box("cbAdvancedConfig")->isChecked(), opens);
    QCOMPARE(form.isShown("stackedWidget"), opens);
}

void TestCanInterfaceType::pageOfATypeWithoutSettingsStaysHidden()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->additionalConfig = false;
    form.selectType(8);
    form.selectType(2);
    QVERIFY(!form.isShown("stackedWidget"));
    QVERIFY(!form.isShown("cbAdvancedConfig"));
    QCOMPARE(form.list("cbBitrate")->toolTip(), QString());
}

void TestCanInterfaceType::clickOpensAndClosesThePage()
{
    const InterfaceForm form;
    form.selectType(2);
    form.box("cbAdvancedConfig")->click();
    QVERIFY(form.isShown("stackedWidget"));
    form.box("cbAdvancedConfig")->click();
    QVERIFY(!form.isShown("stackedWidget"));
}

void TestCanInterfaceType::openPageStaysOpenForTheNextType()
{
    const InterfaceForm form;
    form.selectType(2);
    form.box("cbAdvancedConfig")->click();
    form.selectType(3);
    QVERIFY(form.isShown("stackedWidget"));
    QVERIFY(form.box("cbAdvancedConfig")->isChecked());
}

void TestCanInterfaceType::factorySaysWhetherTheBitrateIsChangeable_data()
{
    addTypes("changeable");
    for (const unsigned int type : {2U, 6U, 8U, 20U}) {
        QTest::newRow(qPrintable(QStringLiteral("changeable, type %1").arg(type))) << type << true;
        QTest::newRow(qPrintable(QStringLiteral("fixed, type %1").arg(type))) << type << false;
    }
}

void TestCanInterfaceType::factorySaysWhetherTheBitrateIsChangeable()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, changeable);
    const InterfaceForm form;
    InterfaceForm::family(type)->baudrateChangeable = changeable;
    form.selectTypeAnew(type);
    QCOMPARE(form.list("cbBitrate")->isEnabled(), changeable);
    form.box("cbAdvancedConfig")->click();
    QCOMPARE(form.list("cbBitrate")->isEnabled(), changeable);
}

void TestCanInterfaceType::bitrateListSaysThatAFileSetsTheBitrate()
{
    const InterfaceForm form;
    form.selectType(8);
    QCOMPARE(form.list("cbBitrate")->toolTip(),
             QStringLiteral("The bitrate have to be set via the configuration file."));
    form.selectType(9);
    QCOMPARE(form.list("cbBitrate")->toolTip(), QString());
}

void TestCanInterfaceType::listenOnlyIsNotOffered_data()
{
    addEachType("refused", {6, 8, 11, 20});
}

void TestCanInterfaceType::listenOnlyIsNotOffered()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, refused);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    QCOMPARE(form.box("cbListenOnly")->isEnabled(), !refused);
}

void TestCanInterfaceType::selectedDeviceOffersListenOnlyAfterAll_data()
{
    QTest::addColumn<unsigned int>("type");
    for (const unsigned int type : {6U, 8U, 11U, 20U})
        QTest::newRow(qPrintable(QStringLiteral("type %1").arg(type))) << type;
}

void TestCanInterfaceType::selectedDeviceOffersListenOnlyAfterAll()
{
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    InterfaceForm::family(type)->deviceMap[QStringLiteral("Second")] = InterfaceForm::mostFeatures;
    form.selectTypeAnew(type);
    form->setDeviceName(QStringLiteral("Second"));
    QVERIFY(form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceType::registerRowIsShown_data()
{
    addEachType("hidden", {9, 17, 19});
}

void TestCanInterfaceType::registerRowIsShown()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, hidden);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    QCOMPARE(form.isShown("edtBtr"), !hidden);
    QCOMPARE(form.isShown("lblBtr"), !hidden);
}

void TestCanInterfaceType::terminatorIsForOneType_data()
{
    addEachType("shown", {11});
}

void TestCanInterfaceType::terminatorIsForOneType()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, shown);
    const InterfaceForm form;
    form.selectType(11);
    form.selectTypeAnew(type);
    QCOMPARE(form.isShown("cbTerminator"), shown);
    QCOMPARE(form.box("cbTerminator")->isEnabled(), shown);
}

void TestCanInterfaceType::closingThePageUnchecksTheTerminator()
{
    const InterfaceForm form;
    form.selectType(11);
    form.box("cbAdvancedConfig")->click();
    form.box("cbTerminator")->setChecked(true);
    form.box("cbAdvancedConfig")->click();
    QVERIFY(!form.box("cbTerminator")->isChecked());
}

void TestCanInterfaceType::internExternTakesThePlaceOfSingleWire_data()
{
    addEachType("choice", {13});
}

void TestCanInterfaceType::internExternTakesThePlaceOfSingleWire()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, choice);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    QCOMPARE(form.isShown("cb_internExtern"), choice);
    QCOMPARE(form.isShown("placeHolderLabel"), !choice);
    QCOMPARE(form.isShown("cb_velmorSingleWire"), !choice);
}

void TestCanInterfaceType::addressTellsTheDevice()
{
    const InterfaceForm form;
    form.selectType(20);
    QVERIFY(!form.list("cbCanDevice")->isEnabled());
    form.selectType(21);
    QVERIFY(form.list("cbCanDevice")->isEnabled());
}

void TestCanInterfaceType::networkPageHasTimeouts_data()
{
    QTest::addColumn<QList<unsigned int>>("types");
    QTest::addColumn<bool>("shown");
    QTest::newRow("gateway with timeouts") << QList<unsigned int>{20, 8} << true;
    QTest::newRow("gateway without") << QList<unsigned int>{8, 20} << false;
    QTest::newRow("shown again for the port page") << QList<unsigned int>{20, 6} << true;
    QTest::newRow("left alone by other types") << QList<unsigned int>{20, 2} << false;
}

void TestCanInterfaceType::networkPageHasTimeouts()
{
    QFETCH(QList<unsigned int>, types);
    const InterfaceForm form;
    for (const unsigned int type : types)
        form.selectType(type);
    QTEST(form.isShown("advFrame"), "shown");
}

void TestCanInterfaceType::addressIsCheckedWhenItsPageShows_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::newRow("gateway with timeouts") << 8U;
    QTest::newRow("gateway without") << 20U;
}

void TestCanInterfaceType::addressIsCheckedWhenItsPageShows()
{
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    form.edit("le_ipAddress")->setText(QStringLiteral("10.0.0.7"));
    form.selectType(type);
    QCOMPARE(form.label("validIPAddress")->text(), QString());
}

void TestCanInterfaceType::portRowStandsOnThePageInFront_data()
{
    QTest::addColumn<QList<unsigned int>>("types");
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("home");
    QTest::addColumn<int>("position");
    const QString portPage = QStringLiteral("page_5");
    const QString networkPage = QStringLiteral("page_2");
    const QString portHome = QStringLiteral("verticalLayout_7");
    const QString networkHome = QStringLiteral("verticalLayout_10");
    QTest::newRow("at first") << QList<unsigned int>{2} << networkPage << networkHome << 1;
    QTest::newRow("port page") << QList<unsigned int>{6} << portPage << portHome << 0;
    QTest::newRow("carried back") << QList<unsigned int>{6, 8} << networkPage << networkHome << 1;
    QTest::newRow("carried back for a gateway without timeouts")
        << QList<unsigned int>{6, 20} << networkPage << networkHome << 1;
    QTest::newRow("to and fro") << QList<unsigned int>{6, 8, 6, 8, 6} << portPage << portHome << 0;
    QTest::newRow("left alone by other types") << QList<unsigned int>{6, 2} << portPage << portHome << 0;
}

void TestCanInterfaceType::portRowStandsOnThePageInFront()
{
    QFETCH(QList<unsigned int>, types);
    QFETCH(QString, home);
    const InterfaceForm form;
    for (const unsigned int type : types)
        form.selectType(type);
    QTEST(form.edit("le_port")->parentWidget()->objectName(), "page");
    QTEST(form.label("validPort")->parentWidget()->objectName(), "page");
    auto *row = form->findChild<QLayout *>(QStringLiteral("horizontalLayout_6"));
    QTEST(form->findChild<QLayout *>(home)->indexOf(row), "position");
}

void TestCanInterfaceType::portIsNotCheckedBeforeItChanges_data()
{
    QTest::addColumn<unsigned int>("type");
    for (const unsigned int type : {6U, 8U, 20U})
        QTest::newRow(qPrintable(QStringLiteral("type %1").arg(type))) << type;
}

void TestCanInterfaceType::portIsNotCheckedBeforeItChanges()
{
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    form.selectType(type);
    QCOMPARE(form.label("validPort")->text(), QStringLiteral("Port does not seem to be valid."));
    form.edit("le_port")->setText(QStringLiteral("45675"));
    QCOMPARE(form.label("validPort")->text(), QString());
}

void TestCanInterfaceType::portSaysItsDefault_data()
{
    addEachType("says", {6});
}

void TestCanInterfaceType::portSaysItsDefault()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, says);
    const InterfaceForm form;
    form.selectType(6);
    form.selectTypeAnew(type);
    QCOMPARE(form.edit("le_port")->placeholderText(), says ? QStringLiteral("Default 45674") : QString());
}

void TestCanInterfaceType::userTimingIsClosedForANewAdapter()
{
    const InterfaceForm form;
    form.selectType(8);
    form.selectType(16);
    QVERIFY(!form.box("cbAdvancedConfig")->isChecked());
    QVERIFY(!form.isShown("stackedWidget"));
    QVERIFY(form.list("cbBitrate")->isEnabled());
}

void TestCanInterfaceType::userTimingShowsWithoutFurtherSettings()
{
    const InterfaceForm form;
    InterfaceForm::family(16)->additionalConfig = false;
    FakeAdapter adapter(Adapter::CanAdapterPcanAdvanced);
    Adapter::PeakAdvValues timing;
    timing.useAdvanced = true;
    adapter.setCanAdapterOption(Adapter::OptionPeakAdvValues, QVariant::fromValue(timing));
    form->setCurrentAdapter(&adapter);
    form.selectType(16);
    QCOMPARE(form.box("cbAdvancedConfig")->text(), QStringLiteral("User defined bitrate settings"));
    QVERIFY(!form.isShown("cbAdvancedConfig"));
    QVERIFY(form.isShown("stackedWidget"));
}

void TestCanInterfaceType::userTimingOfTheCurrentAdapterIsOpen_data()
{
    QTest::addColumn<unsigned int>("adapterType");
    QTest::addColumn<bool>("inUse");
    QTest::addColumn<bool>("open");
    QTest::newRow("in use") << 16U << true << true;
    QTest::newRow("not in use") << 16U << false << false;
    QTest::newRow("of another type") << 2U << true << false;
}

void TestCanInterfaceType::userTimingOfTheCurrentAdapterIsOpen()
{
    QFETCH(unsigned int, adapterType);
    QFETCH(bool, inUse);
    QFETCH(bool, open);
    const InterfaceForm form;
    FakeAdapter adapter(static_cast<Adapter::CanAdapterType>(adapterType));
    Adapter::PeakAdvValues timing;
    timing.useAdvanced = inUse;
    adapter.setCanAdapterOption(Adapter::OptionPeakAdvValues, QVariant::fromValue(timing));
    form->setCurrentAdapter(&adapter);
    form.selectType(16);
    QCOMPARE(form.box("cbAdvancedConfig")->isChecked(), open);
    QCOMPARE(form.isShown("stackedWidget"), open);
    QCOMPARE(form.list("cbBitrate")->isEnabled(), !open);
}

void TestCanInterfaceType::userTimingTakesThePlaceOfTheBitrateList()
{
    const InterfaceForm form;
    form.selectType(16);
    form.box("cbAdvancedConfig")->click();
    QVERIFY(!form.list("cbBitrate")->isEnabled());
    form.box("cbAdvancedConfig")->click();
    QVERIFY(form.list("cbBitrate")->isEnabled());
}

void TestCanInterfaceType::extendedRegisterEntryIsForOneType_data()
{
    addEachType("offered", {7});
}

void TestCanInterfaceType::extendedRegisterEntryIsForOneType()
{
    QFETCH(unsigned int, type);
    QFETCH(bool, offered);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    QCOMPARE(form.list("cbBitrate")->findData(BitrateLists::BtrExtMarker) >= 0, offered);
}

void TestCanInterfaceType::extendedRegisterEntryCostsADataBitrate()
{
    const InterfaceForm form;
    QList<CAN::CANBitrateDesc> bitrates = InterfaceForm::dataBitrates();
    bitrates << CAN::CANBitrateDesc{QStringLiteral("4000 kBit/s"), 4000, 0.8}
             << CAN::CANBitrateDesc{QStringLiteral("5000 kBit/s"), 5000, 0.8};
    InterfaceForm::family(7)->fdDataBitrates = bitrates;
    form.selectType(7);
    QCOMPARE(form.list("cbBitrate")->findData(BitrateLists::BtrExtMarker), 2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanFdDataBitrate")).join(QLatin1Char('|')),
             QStringLiteral("1000 kBit/s (0.75)|2000 kBit/s (0.8)|5000 kBit/s (0.8)"));
}

void TestCanInterfaceType::userBitratesFollowTheFactory_data()
{
    QTest::addColumn<bool>("classic");
    QTest::addColumn<bool>("data");
    QTest::newRow("none") << false << false;
    QTest::newRow("classic") << true << false;
    QTest::newRow("data") << false << true;
    QTest::newRow("both") << true << true;
}

void TestCanInterfaceType::userBitratesFollowTheFactory()
{
    QFETCH(bool, classic);
    QFETCH(bool, data);
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = classic;
    InterfaceForm::family(2)->fdBitTiming = data;
    form.selectType(2);
    QCOMPARE(form.list("cbBitrate")->findData(BitrateLists::UserBitrateMarker) >= 0, classic);
    QCOMPARE(form.list("cbCanFdDataBitrate")->findData(BitrateLists::UserBitrateMarker) >= 0, data);
}

void TestCanInterfaceType::areaIsAsTallAsThePageInFront()
{
    const InterfaceForm form;
    form->show();
    form.selectType(8);
    const int tall = form.pages()->sizeHint().height();
    form.selectType(6);
    QVERIFY(form.pages()->sizeHint().height() < tall);
    form.selectType(8);
    QCOMPARE(form.pages()->sizeHint().height(), tall);
}

void TestCanInterfaceType::unknownTypeShowsNothing()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionAdapterType, 4711U);
    QCOMPARE(form.list("cbCanInterfaceType")->currentIndex(), -1);
    QCOMPARE(form.list("cbCanInterfaceType")->currentText(), QString());
    QCOMPARE(form.list("cbBitrate")->count(), 0);
    QVERIFY(form->createAdapterFromSettings().isNull());
}

QTEST_MAIN(TestCanInterfaceType)
#include "tst_caninterfacetype.moc"
