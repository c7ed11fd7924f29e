#include "bitratelists.h"
#include "interfaceform.h"

#include <QStyle>

// The list of devices: what is there, what is missing, and what comes and goes.
class TestCanInterfaceDevices : public QObject
{
    Q_OBJECT

private slots:
    void devicesStandInTheOrderOfTheirTexts();
    void withoutDevicesTheListSaysSo();
    void withoutDevicesNoCapabilityIsOffered();
    void errorTextHasAWarning_data();
    void errorTextHasAWarning();
    void newTypeSelectsItsFirstDevice();
    void selectedDeviceStaysWhenTheListIsFilledAnew();
    void emptyNameChangesNothing();
    void missingDeviceIsShownAsNotConnected();
    void missingDeviceHasTheFeaturesOfTheAdapter();
    void missingDeviceHasNoFeaturesWithoutAnAdapter();
    void missingDeviceGoesWithTheNextOne();
    void missingDeviceIsSelectedOnce();
    void missingDeviceStaysWhenTheListIsFilledAnew();
    void selectedAbsenceOfDevicesStaysWhenTheListIsFilledAnew();
    void timingOfAMissingDeviceIsNotEdited();
    void timingOfAMissingDeviceIsNotEditedOnceItIsSelected();
    void timingOfAnAdapterWithoutItsDeviceIsNotEdited();
    void timingOfADeviceThatGoesIsNotEdited();
    void timingOfAListedDeviceIsEdited();
    void listedBitrateIsNotEdited();
    void toolTipStaysWhenTheNextDeviceHasNone();
    void deviceNumberIsTheToolTipOfOneType_data();
    void deviceNumberIsTheToolTipOfOneType();
    void selectedDeviceEnablesTheList();
    void vendorRefreshesItsType_data();
    void vendorRefreshesItsType();
    void unknownVendorRefreshesNothing();
    void noticeRefreshesTheShownType();
    void noticeOfAnotherTypeIsIgnored();
    void noticeFromAnotherThreadIsTaken();
    void deviceThatGoesIsMissing();
    void deviceThatComesBackIsConnected();
    void toolTipFollowsTheDeviceOfTheAdapter_data();
    void toolTipFollowsTheDeviceOfTheAdapter();
    void firstDeviceTakesThePlaceOfNone();
    void noticeKeepsWhatTheUserIsAboutToChange();

private:
    static constexpr int markerRole = Qt::UserRole + 1;

    static bool hasWarning(const QComboBox *list, int index)
    {
        const QIcon warning = list->style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, list);
        return list->itemIcon(index).pixmap(16).toImage() == warning.pixmap(16).toImage()
            && !list->itemIcon(index).isNull();
    }
    static void tellOfDevices(unsigned int type)
    {
        emit CanAdapterFactory::notifier()->devicesChanged(static_cast<AbstractCanAdapter::CanAdapterType>(type));
    }
};

namespace {
using Adapter = AbstractCanAdapter;

const QString first = QStringLiteral("First");
const QString second = QStringLiteral("Second");
const QString gone = QStringLiteral("Gone|serial 7");
const QString noDevice = QStringLiteral("No device found");
const QString notConnected = QStringLiteral("Device is not connected");
} // namespace

void TestCanInterfaceDevices::devicesStandInTheOrderOfTheirTexts()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->deviceMap = {
        {QStringLiteral("b"), 1}, {QStringLiteral("A"), 2}, {QStringLiteral("a"), 3}};
    form.selectType(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")).join(QLatin1Char(' ')), QStringLiteral("A a b"));
    QCOMPARE(form.list("cbCanDevice")->itemData(2), QVariant(1U));
    QCOMPARE(form.list("cbCanDevice")->iconSize(), QSize(12, 12));
}

void TestCanInterfaceDevices::withoutDevicesTheListSaysSo()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->deviceMap.clear();
    form.selectType(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList(noDevice));
    QCOMPARE(form.list("cbCanDevice")->currentData(), QVariant(0U));
    QVERIFY(hasWarning(form.list("cbCanDevice"), 0));
}

void TestCanInterfaceDevices::withoutDevicesNoCapabilityIsOffered()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->deviceMap.clear();
    form.selectType(3);
    form.selectType(2);
    for (const char *name : {"chLogErrorFrames", "cbListenOnly", "cbLowSpeed", "cbAutoBusOn"})
        QVERIFY2(!form.box(name)->isEnabled(), name);
    QVERIFY(!form.isShown("cbCanfdConfig"));
}

void TestCanInterfaceDevices::errorTextHasAWarning_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("warning");
    QTest::newRow("device") << "Leaf" << false;
    QTest::newRow("error") << "could not open the driver" << true;
    QTest::newRow("in any case") << "Driver COULD Not be loaded" << true;
    QTest::newRow("half of it") << "could be" << false;
}

void TestCanInterfaceDevices::errorTextHasAWarning()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    InterfaceForm::family(2)->deviceMap = {{text, 0}};
    form.selectType(2);
    QTEST(hasWarning(form.list("cbCanDevice"), 0), "warning");
}

void TestCanInterfaceDevices::newTypeSelectsItsFirstDevice()
{
    const InterfaceForm form;
    form.selectType(2);
    form.selectDevice(second);
    form.selectType(3);
    QCOMPARE(form.list("cbCanDevice")->currentText(), first);
}

void TestCanInterfaceDevices::selectedDeviceStaysWhenTheListIsFilledAnew()
{
    const InterfaceForm form;
    form.selectType(2);
    form.selectDevice(second);
    InterfaceForm::family(2)->deviceMap.insert(QStringLiteral("Additional"), 0);
    form.selectTypeAnew(2);
    QCOMPARE(form.list("cbCanDevice")->count(), 3);
    QCOMPARE(form.list("cbCanDevice")->currentText(), second);
}

void TestCanInterfaceDevices::emptyNameChangesNothing()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    form->setDeviceName(QString());
    QCOMPARE(form.list("cbCanDevice")->currentText(), gone);
}

void TestCanInterfaceDevices::missingDeviceIsShownAsNotConnected()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    const QComboBox *devices = form.list("cbCanDevice");
    QCOMPARE(devices->currentText(), gone);
    QCOMPARE(devices->currentData(Qt::ToolTipRole).toString(), notConnected);
    QCOMPARE(devices->currentData(markerRole), QVariant(85));
    QVERIFY(hasWarning(devices, devices->currentIndex()));
    QCOMPARE(devices->toolTip(), notConnected);
}

void TestCanInterfaceDevices::missingDeviceHasTheFeaturesOfTheAdapter()
{
    const InterfaceForm form;
    FakeAdapter adapter;
    adapter.setCanAdapterOption(Adapter::OptionDeviceData, unsigned(Adapter::FeatureErrorFrames));
    form->setCurrentAdapter(&adapter);
    form.selectType(2);
    form->setDeviceName(gone);
    QCOMPARE(form.list("cbCanDevice")->currentData(), QVariant(unsigned(Adapter::FeatureErrorFrames)));
    QVERIFY(form.box("chLogErrorFrames")->isEnabled());
    QVERIFY(!form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceDevices::missingDeviceHasNoFeaturesWithoutAnAdapter()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    QCOMPARE(form.list("cbCanDevice")->currentData(), QVariant(0U));
}

void TestCanInterfaceDevices::missingDeviceGoesWithTheNextOne()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    form->setDeviceName(second);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList({first, second}));
    QCOMPARE(form.list("cbCanDevice")->currentText(), second);
    form->setDeviceName(gone);
    form->setDeviceName(first);
    QCOMPARE(form.list("cbCanDevice")->currentText(), first);
    QVERIFY(form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceDevices::missingDeviceIsSelectedOnce()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    form->setDeviceName(gone);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList({first, second, gone}));
}

void TestCanInterfaceDevices::missingDeviceStaysWhenTheListIsFilledAnew()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    form.selectTypeAnew(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList({first, second, gone}));
    QCOMPARE(form.list("cbCanDevice")->currentText(), gone);
}

void TestCanInterfaceDevices::selectedAbsenceOfDevicesStaysWhenTheListIsFilledAnew()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->deviceMap.clear();
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.insert(first, InterfaceForm::mostFeatures);
    form.selectTypeAnew(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList({first, noDevice}));
    QCOMPARE(form.list("cbCanDevice")->currentText(), noDevice);
    QCOMPARE(form.list("cbCanDevice")->currentData(Qt::ToolTipRole).toString(), notConnected);
}

void TestCanInterfaceDevices::timingOfAMissingDeviceIsNotEdited()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    form.list("cbBitrate")->setCurrentText(QStringLiteral("User bitrate"));
    QVERIFY(form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
    form->setDeviceName(gone);
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

void TestCanInterfaceDevices::timingOfAMissingDeviceIsNotEditedOnceItIsSelected()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    form->setDeviceName(gone);
    form.list("cbBitrate")->setCurrentText(QStringLiteral("User bitrate"));
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

void TestCanInterfaceDevices::timingOfAnAdapterWithoutItsDeviceIsNotEdited()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    FakeAdapter adapter(Adapter::CanAdapterPcanBasic, gone);
    CAN::CANClassicBusParameter timing;
    timing.name = QStringLiteral("odd");
    timing.userDefined = true;
    adapter.setCanAdapterOption(Adapter::OptionClassicBusParameter, QVariant::fromValue(timing));
    adapter.setCanAdapterOption(Adapter::OptionBitrate, BitrateLists::UserBitrateMarker);
    form->setCurrentAdapter(&adapter);
    form->updateValues();
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("User bitrate - odd"));
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
    form->show();
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("User bitrate - odd"));
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

void TestCanInterfaceDevices::timingOfADeviceThatGoesIsNotEdited()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    FakeAdapter adapter(Adapter::CanAdapterPcanBasic, first);
    adapter.setCanAdapterOption(Adapter::OptionDeviceData, InterfaceForm::mostFeatures);
    form->setCurrentAdapter(&adapter);
    form->updateValues();
    form.list("cbBitrate")->setCurrentText(QStringLiteral("User bitrate"));
    InterfaceForm::family(2)->deviceMap.remove(first);
    tellOfDevices(2);
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
    InterfaceForm::family(2)->deviceMap.insert(first, InterfaceForm::mostFeatures);
    tellOfDevices(2);
    QVERIFY(form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

void TestCanInterfaceDevices::timingOfAListedDeviceIsEdited()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    form->setDeviceName(gone);
    form.list("cbBitrate")->setCurrentText(QStringLiteral("User bitrate"));
    form->setDeviceName(second);
    QVERIFY(form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

void TestCanInterfaceDevices::listedBitrateIsNotEdited()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(first);
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

void TestCanInterfaceDevices::toolTipStaysWhenTheNextDeviceHasNone()
{
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(gone);
    form.selectDevice(first);
    QCOMPARE(form.list("cbCanDevice")->toolTip(), notConnected);
}

void TestCanInterfaceDevices::deviceNumberIsTheToolTipOfOneType_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("toolTip");
    QTest::newRow("its type") << 17U << 0xBEEF << "beef";
    QTest::newRow("with the highest bit") << 17U << -1 << "ffffffff";
    QTest::newRow("another type") << 16U << 0xBEEF << "";
}

void TestCanInterfaceDevices::deviceNumberIsTheToolTipOfOneType()
{
    QFETCH(unsigned int, type);
    QFETCH(int, number);
    const InterfaceForm form;
    InterfaceForm::family(type)->create = [type, number](const QString &device) {
        auto *adapter = new FakeAdapter(static_cast<Adapter::CanAdapterType>(type), device);
        adapter->deviceNumber = number;
        return adapter;
    };
    form.selectType(type);
    form.selectDevice(second);
    QTEST(form.list("cbCanDevice")->toolTip(), "toolTip");
}

void TestCanInterfaceDevices::selectedDeviceEnablesTheList()
{
    const InterfaceForm form;
    form.selectType(20);
    form->setDeviceName(second);
    QVERIFY(form.list("cbCanDevice")->isEnabled());
}

void TestCanInterfaceDevices::vendorRefreshesItsType_data()
{
    QTest::addColumn<unsigned int>("vendor");
    QTest::addColumn<unsigned int>("type");
    const QMap<unsigned int, unsigned int> types = {{4822, 5},  {2168, 7},  {1027, 11}, {3069, 9},
                                                    {3186, 16}, {2264, 17}, {2740, 18}};
    for (auto entry = types.cbegin(); entry != types.cend(); ++entry)
        QTest::newRow(qPrintable(QString::number(entry.key()))) << entry.key() << *entry;
}

void TestCanInterfaceDevices::vendorRefreshesItsType()
{
    QFETCH(unsigned int, vendor);
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    form.selectTypeAnew(type);
    InterfaceForm::family(type)->deviceMap.insert(QStringLiteral("Third"), 0);
    form->updateDeviceList(vendor);
    QCOMPARE(form.list("cbCanDevice")->count(), 3);
}

void TestCanInterfaceDevices::unknownVendorRefreshesNothing()
{
    const InterfaceForm form;
    form.selectType(5);
    InterfaceForm::family(5)->deviceMap.insert(QStringLiteral("Third"), 0);
    form->updateDeviceList(4823);
    form->updateDeviceList(2168);
    QCOMPARE(form.list("cbCanDevice")->count(), 2);
}

void TestCanInterfaceDevices::noticeRefreshesTheShownType()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.insert(QStringLiteral("Third"), 0);
    tellOfDevices(2);
    QCOMPARE(form.list("cbCanDevice")->count(), 3);
    QCOMPARE(form.list("cbCanDevice")->currentText(), first);
}

void TestCanInterfaceDevices::noticeOfAnotherTypeIsIgnored()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.insert(QStringLiteral("Third"), 0);
    tellOfDevices(3);
    QCOMPARE(form.list("cbCanDevice")->count(), 2);
}

void TestCanInterfaceDevices::noticeFromAnotherThreadIsTaken()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.insert(QStringLiteral("Third"), 0);
    FakeAdapter::onReceiveThread([] { tellOfDevices(2); });
    QTRY_COMPARE(form.list("cbCanDevice")->count(), 3);
}

void TestCanInterfaceDevices::deviceThatGoesIsMissing()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.remove(first);
    tellOfDevices(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList({second, first}));
    QCOMPARE(form.list("cbCanDevice")->currentText(), first);
    QCOMPARE(form.list("cbCanDevice")->toolTip(), notConnected);
    QVERIFY(!form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceDevices::deviceThatComesBackIsConnected()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.remove(first);
    tellOfDevices(2);
    InterfaceForm::family(2)->deviceMap.insert(first, InterfaceForm::mostFeatures);
    tellOfDevices(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList({first, second}));
    QCOMPARE(form.list("cbCanDevice")->currentText(), first);
    QVERIFY(form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceDevices::toolTipFollowsTheDeviceOfTheAdapter_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<QString>("connected");
    QTest::newRow("link") << 1U << "";
    QTest::newRow("plain type") << 2U << "";
    QTest::newRow("type with device numbers") << 17U << "beef";
}

void TestCanInterfaceDevices::toolTipFollowsTheDeviceOfTheAdapter()
{
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    const auto make = [type](const QString &device) {
        auto *adapter = new FakeAdapter(static_cast<Adapter::CanAdapterType>(type), device);
        adapter->deviceNumber = 0xBEEF;
        return adapter;
    };
    InterfaceForm::family(type)->create = make;
    const std::unique_ptr<FakeAdapter> adapter(make(first));
    adapter->setCanAdapterOption(Adapter::OptionDeviceData, InterfaceForm::mostFeatures);
    form->setCurrentAdapter(adapter.get());
    form->updateValues();
    InterfaceForm::family(type)->deviceMap.remove(first);
    tellOfDevices(type);
    QCOMPARE(form.list("cbCanDevice")->toolTip(), notConnected);
    InterfaceForm::family(type)->deviceMap.insert(first, InterfaceForm::mostFeatures);
    tellOfDevices(type);
    QTEST(form.list("cbCanDevice")->toolTip(), "connected");
}

void TestCanInterfaceDevices::firstDeviceTakesThePlaceOfNone()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->deviceMap.clear();
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.insert(first, InterfaceForm::mostFeatures);
    tellOfDevices(2);
    QCOMPARE(InterfaceForm::texts(form.list("cbCanDevice")), QStringList(first));
    QVERIFY(form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceDevices::noticeKeepsWhatTheUserIsAboutToChange()
{
    const InterfaceForm form;
    form.selectType(2);
    form.fdGroup()->setChecked(true);
    form.list("cbBitrate")->setCurrentIndex(0);
    InterfaceForm::family(2)->deviceMap.insert(QStringLiteral("Third"), 0);
    tellOfDevices(2);
    QVERIFY(form.fdGroup()->isChecked());
    QCOMPARE(form.list("cbBitrate")->currentIndex(), 0);
    QVERIFY(!form.find<QPushButton>("btnEdtClassicBitrate")->isEnabled());
}

QTEST_MAIN(TestCanInterfaceDevices)
#include "tst_caninterfacedevices.moc"
