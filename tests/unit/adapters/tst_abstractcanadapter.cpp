#include "fakeadapter.h"

#include <QDataStream>
#include <QMetaEnum>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

using Adapter = AbstractCanAdapter;

namespace {
QByteArray streamed(const QVariant &value)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << value;
    return bytes;
}

/// One value of each kind that an option has.
void fill(FakeAdapter &adapter)
{
    adapter.setCanAdapterOption(Adapter::OptionUseCanFd, true);
    adapter.setCanAdapterOption(Adapter::OptionIpAddress, QStringLiteral("127.0.0.1"));
    adapter.setCanAdapterOption(Adapter::OptionConnectTimeout, 250);
    adapter.setCanAdapterOption(Adapter::OptionDeviceData, 0x90U);
    adapter.setCanAdapterOption(Adapter::OptionAdapterId, QVariant::fromValue<quint16>(7));
    adapter.setCanAdapterOption(Adapter::OptionActive, true);
    adapter.setCanAdapterOption(Adapter::OptionPrimary, true);
    adapter.setCanAdapterOption(Adapter::OptionLinkedAdapter, 3U);
    adapter.setCanAdapterOption(Adapter::OptionPeakAdvValues,
                                QVariant::fromValue(Adapter::PeakAdvValues{true, 80, 1, 2, 3, 4}));
    adapter.setCanAdapterOption(Adapter::OptionXm3AdvValues,
                                QVariant::fromValue(Adapter::SystecXM3AdvValues{1, 2, 3, 4, 5, 6, 7}));
    adapter.setCanAdapterOption(Adapter::OptionClassicBusParameter,
                                QVariant::fromValue(CAN::CANClassicBusParameter{500, 80.0, {1, 2, 3, 4, 0}, {}, true}));
    adapter.setCanAdapterOption(
        Adapter::OptionFdBusParameter,
        QVariant::fromValue(CAN::CANFDBusParameter{2000, QStringLiteral("fast"), 75.0, {1, 2, 3, 4, 0}, 5, true}));
    adapter.setCanAdapterOption(Adapter::OptionBitrate,
                                QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("500 kBit/s"), 500, 0.875)));
}

bool sameValues(const Adapter &a, const Adapter &b)
{
    for (unsigned int option = 0; option < Adapter::optionCount; ++option) {
        const auto number = static_cast<Adapter::AdapterOption>(option);
        if (a.getCanAdapterOption(number) != b.getCanAdapterOption(number))
            return false;
    }
    return true;
}

/// The signature and format version that the byte form starts with.
QByteArray head()
{
    return FakeAdapter().getValuesAsByteArray().left(6);
}

QByteArray entry(quint32 option, const QByteArray &payload)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << option << payload;
    return bytes;
}
} // namespace

/// Lets a test count as an adapter does.
class CountingAdapter : public FakeAdapter
{
public:
    using FakeAdapter::countLost;
    using FakeAdapter::countReceived;
    using FakeAdapter::countSent;
    using FakeAdapter::resetCounters;
};

class TestAbstractCanAdapter : public QObject
{
    Q_OBJECT

private slots:
    void numbersOfTypesStand();
    void numbersOfOptionsStand();
    void bitsOfTheFeatureWordStand();
    void usbVendorsBelongToTypes();
    void frameCountersStartAgainWithAConnection();
    void reasonOfAFailureIsKept();
    void writeIsASlot();
    void adapterKnowsTypeAndDevice();
    void optionGivesBackWhatWasStored();
    void optionBeyondTheLastIsIgnored();
    void listenOnlyOptionSetsTheMember();
    void activeStateIsTheOption();
    void adaptersCompareBySupportedOptions();
    void rolesDoNotCount();
    void adaptersOfOtherTypesDiffer();
    void bytesCarryAllSettings();
    void bytesOfAnotherTypeLeaveTypeAndDevice();
    void unknownOptionIsSteppedOver();
    void unknownValueTypeIsSteppedOver();
    void bytesCutAnywhereRestoreWhatIsWhole();
    void bytesTooLongRestoreAllTheSame();
    void foreignBytesRestoreNothing_data();
    void laterFormatIsReadAsFarAsItIsKnown();
    void foreignBytesRestoreNothing();
    void randomDamageNeverCrashes();
    void runningStateIsTold();
    void linkedAdapterMayVanish();
    void firstMemberIsTheListenOnlyState();
};

void TestAbstractCanAdapter::numbersOfTypesStand()
{
    // By number: saved settings hold the numbers.
    const QByteArrayList names = {
        "None",           "SocketCan",          "PcanBasic",      "Sontheim",     "Can4Linux",    "EmsCpc",
        "Demo",           "SystecUsb",          "SystecEthernet", "Kvaser",       "VectorVxl",    "JanzTec",
        "GridConnectUsb", "SerialInternExtern", "MqPedelecUsb",   "VelmorSerial", "PcanAdvanced", "IxxatVci3",
        "UsbVendor18",    "NoBtrRow19",         "FixedNetwork20", "SystecXm3",
    };
    const QMetaEnum types = QMetaEnum::fromType<Adapter::CanAdapterType>();
    QCOMPARE(types.keyCount(), names.size());
    for (int number = 0; number < names.size(); ++number)
        QCOMPARE(QByteArray(types.valueToKey(number)), "CanAdapter" + names[number]);
}

void TestAbstractCanAdapter::numbersOfOptionsStand()
{
    const QByteArrayList names = {
        "UseCanFd",
        "AdapterType",
        "AdapterName",
        "DeviceName",
        "DeviceData",
        "IpAddress",
        "Port",
        "Reserved7",
        "HardwareFlowControl",
        "SerialBaudrate",
        "Parity",
        "DataBits",
        "StopBits",
        "InternExtern",
        "ReconnectTimeout",
        "ConnectTimeout",
        "DisconnectTimeout",
        "IpProtocol",
        "Reserved18",
        "Reserved19",
        "Reserved20",
        "PeakAdvValues",
        "ResetDevice",
        "SingleWire",
        "LowSpeed",
        "Reserved25",
        "AutoBusOn",
        "LogErrorFrames",
        "ContinuousSystemTime",
        "SystemTimestamp",
        "AdapterId",
        "Reserved31",
        "Reserved32",
        "ListenOnly",
        "Active",
        "Primary",
        "BtrExt",
        "Description",
        "UsdoNodeId",
        "Xm3AdvValues",
        "LinkedAdapter",
        "ClassicBusParameter",
        "FdBusParameter",
        "FdBitrate",
        "Bitrate",
        "ForcedEcho",
    };
    const QMetaEnum options = QMetaEnum::fromType<Adapter::AdapterOption>();
    QCOMPARE(options.keyCount(), names.size());
    QCOMPARE(int(Adapter::optionCount), names.size());
    for (int number = 0; number < names.size(); ++number)
        QCOMPARE(QByteArray(options.valueToKey(number)), "Option" + names[number]);
}

void TestAbstractCanAdapter::bitsOfTheFeatureWordStand()
{
    QCOMPARE(uint(Adapter::FeatureListenOnly), 0x10U);
    QCOMPARE(uint(Adapter::FeatureLowSpeedSelectable), 0x40U);
    QCOMPARE(uint(Adapter::FeatureCanFd), 0x80U);
    QCOMPARE(uint(Adapter::FeatureErrorFrames), 0x100U);
    QCOMPARE(uint(Adapter::FeatureAutoBusOnChangeable), 0x200U);
    QCOMPARE(uint(Adapter::FeatureLowSpeedOnly), 0x400U);
    QCOMPARE(uint(Adapter::FeatureAutoBusOnDefault), 0x800U);
    QCOMPARE(uint(Adapter::FeatureAutoBusOnForced), 0x1000U);
    QCOMPARE(uint(Adapter::FeaturesUnknown), 0x80000000U);
}

void TestAbstractCanAdapter::usbVendorsBelongToTypes()
{
    const QMap<unsigned int, Adapter::CanAdapterType> expected = {
        {4822, Adapter::CanAdapterEmsCpc},       {2168, Adapter::CanAdapterSystecUsb},
        {1027, Adapter::CanAdapterJanzTec},      {3069, Adapter::CanAdapterKvaser},
        {3186, Adapter::CanAdapterPcanAdvanced}, {2264, Adapter::CanAdapterIxxatVci3},
        {2740, Adapter::CanAdapterUsbVendor18},
    };
    QCOMPARE(usbVendorAdapterTypes, expected);
}

void TestAbstractCanAdapter::frameCountersStartAgainWithAConnection()
{
    CountingAdapter adapter;
    adapter.countReceived();
    adapter.countReceived(3);
    adapter.countSent(2);
    adapter.countLost(5);
    QCOMPARE(adapter.framesReceived(), 4ULL);
    QCOMPARE(adapter.framesSent(), 2ULL);
    QCOMPARE(adapter.framesLost(), 5ULL);
    adapter.resetCounters();
    QCOMPARE(adapter.framesReceived() + adapter.framesSent() + adapter.framesLost(), 0ULL);
}

void TestAbstractCanAdapter::reasonOfAFailureIsKept()
{
    FakeAdapter adapter;
    QVERIFY(adapter.errorText().isEmpty());
    FakeAdapter::onReceiveThread([&adapter] { adapter.fail(QStringLiteral("The cable is gone.")); });
    QCOMPARE(adapter.errorText(), QStringLiteral("The cable is gone."));
}

void TestAbstractCanAdapter::writeIsASlot()
{
    QVERIFY(Adapter::staticMetaObject.indexOfSlot("write(CAN::CanMessage*)") >= 0);
}

void TestAbstractCanAdapter::adapterKnowsTypeAndDevice()
{
    const FakeAdapter adapter(Adapter::CanAdapterKvaser, QStringLiteral("Leaf|1"));
    QCOMPARE(adapter.getCanAdapterOption(Adapter::OptionAdapterType).toUInt(), uint(Adapter::CanAdapterKvaser));
    QCOMPARE(adapter.getCanAdapterOption(Adapter::OptionDeviceName).toString(), QStringLiteral("Leaf|1"));
}

void TestAbstractCanAdapter::optionGivesBackWhatWasStored()
{
    FakeAdapter adapter;
    QVERIFY(!adapter.getCanAdapterOption(Adapter::OptionDescription).isValid());
    adapter.setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("left motor"));
    QCOMPARE(adapter.getCanAdapterOption(Adapter::OptionDescription).toString(), QStringLiteral("left motor"));
}

void TestAbstractCanAdapter::optionBeyondTheLastIsIgnored()
{
    FakeAdapter adapter;
    const auto beyond = static_cast<Adapter::AdapterOption>(Adapter::optionCount);
    adapter.setCanAdapterOption(beyond, 1);
    QVERIFY(!adapter.getCanAdapterOption(beyond).isValid());
}

void TestAbstractCanAdapter::listenOnlyOptionSetsTheMember()
{
    FakeAdapter adapter;
    adapter.setCanAdapterOption(Adapter::OptionListenOnly, true);
    QVERIFY(adapter.listenOnly);
    adapter.setCanAdapterOption(Adapter::OptionListenOnly, false);
    QVERIFY(!adapter.listenOnly);
}

void TestAbstractCanAdapter::activeStateIsTheOption()
{
    FakeAdapter adapter;
    QVERIFY(!adapter.isActiveAdapter());
    adapter.setCanAdapterOption(Adapter::OptionActive, true);
    QVERIFY(adapter.isActiveAdapter());
}

void TestAbstractCanAdapter::adaptersCompareBySupportedOptions()
{
    FakeAdapter a;
    FakeAdapter b;
    QVERIFY(a == b);
    fill(a);
    QVERIFY(a != b);
    fill(b);
    QVERIFY(a == b);
    // Supported, and a record of which one field differs.
    b.setCanAdapterOption(Adapter::OptionBitrate, QVariant::fromValue(CAN::CANBitrateDesc({}, 500, 0.875)));
    QVERIFY(a != b);
    fill(b);
    // No option of this adapter.
    QVERIFY(!b.supportedOptions.contains(Adapter::OptionUsdoNodeId));
    b.setCanAdapterOption(Adapter::OptionUsdoNodeId, 5);
    QVERIFY(a == b);
}

void TestAbstractCanAdapter::rolesDoNotCount()
{
    FakeAdapter a;
    FakeAdapter b;
    b.setCanAdapterOption(Adapter::OptionAdapterId, QVariant::fromValue<quint16>(9));
    b.setCanAdapterOption(Adapter::OptionActive, true);
    b.setCanAdapterOption(Adapter::OptionPrimary, true);
    QVERIFY(a == b);
}

void TestAbstractCanAdapter::adaptersOfOtherTypesDiffer()
{
    const FakeAdapter a(Adapter::CanAdapterDemo, QStringLiteral("1"));
    const FakeAdapter b(Adapter::CanAdapterKvaser, QStringLiteral("1"));
    QVERIFY(a != b);
}

void TestAbstractCanAdapter::bytesCarryAllSettings()
{
    FakeAdapter saved;
    fill(saved);
    FakeAdapter restored;
    QVERIFY(restored.restoreValues(saved.getValuesAsByteArray()));
    QVERIFY(sameValues(saved, restored));
    QCOMPARE(restored.getValuesAsByteArray(), saved.getValuesAsByteArray());
}

void TestAbstractCanAdapter::bytesOfAnotherTypeLeaveTypeAndDevice()
{
    const FakeAdapter saved(Adapter::CanAdapterKvaser, QStringLiteral("Leaf"));
    FakeAdapter restored(Adapter::CanAdapterDemo, QStringLiteral("Demo 1"));
    restored.restoreValues(saved.getValuesAsByteArray());
    QCOMPARE(restored.getCanAdapterOption(Adapter::OptionAdapterType).toUInt(), uint(Adapter::CanAdapterDemo));
    QCOMPARE(restored.getCanAdapterOption(Adapter::OptionDeviceName).toString(), QStringLiteral("Demo 1"));
}

void TestAbstractCanAdapter::unknownOptionIsSteppedOver()
{
    FakeAdapter saved;
    fill(saved);
    const QByteArray value = streamed(QVariant(5));
    QByteArray bytes = saved.getValuesAsByteArray();
    bytes.insert(head().size(), entry(1000, value));
    FakeAdapter restored;
    QVERIFY(!restored.restoreValues(bytes));
    QVERIFY(sameValues(saved, restored));
}

void TestAbstractCanAdapter::unknownValueTypeIsSteppedOver()
{
    FakeAdapter saved;
    fill(saved);
    const QByteArray value = streamed(QVariant(QVariantList{1, 2}));
    QByteArray bytes = saved.getValuesAsByteArray();
    bytes.insert(head().size(), entry(Adapter::OptionUsdoNodeId, value));
    FakeAdapter restored;
    QVERIFY(!restored.restoreValues(bytes));
    QVERIFY(sameValues(saved, restored));
}

void TestAbstractCanAdapter::bytesCutAnywhereRestoreWhatIsWhole()
{
    FakeAdapter saved;
    fill(saved);
    const QByteArray bytes = saved.getValuesAsByteArray();
    int before = FakeAdapter().getValuesAsByteArray().size();
    int entriesRestored = 0;
    for (int length = 0; length <= bytes.size(); ++length) {
        FakeAdapter restored;
        restored.restoreValues(bytes.left(length));
        // An entry comes back whole as soon as its last byte is there.
        const int now = restored.getValuesAsByteArray().size();
        QVERIFY(now >= before);
        entriesRestored += now > before ? 1 : 0;
        before = now;
        for (unsigned int option = 0; option < Adapter::optionCount; ++option) {
            const auto number = static_cast<Adapter::AdapterOption>(option);
            const QVariant value = restored.getCanAdapterOption(number);
            QVERIFY(!value.isValid() || value == saved.getCanAdapterOption(number));
        }
    }
    QVERIFY2(entriesRestored >= 10, qPrintable(QString::number(entriesRestored)));
}

void TestAbstractCanAdapter::bytesTooLongRestoreAllTheSame()
{
    FakeAdapter saved;
    fill(saved);
    FakeAdapter restored;
    QVERIFY(!restored.restoreValues(saved.getValuesAsByteArray() + "tail"));
    QVERIFY(sameValues(saved, restored));
}

void TestAbstractCanAdapter::foreignBytesRestoreNothing_data()
{
    QByteArray longString;
    QDataStream longStringStream(&longString, QIODevice::WriteOnly);
    longStringStream << quint32(QMetaType::QString) << qint8(0) << quint32(0xFFFFFFF0);
    QByteArray unknownRecord;
    QDataStream unknownRecordStream(&unknownRecord, QIODevice::WriteOnly);
    unknownRecordStream << quint32(QVariant::UserType) << qint8(0) << "Unknown::Record";

    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("no settings at all");
    QTest::newRow("no format") << QByteArray(head().left(4) + QByteArray("\x00\x00", 2));
    QTest::newRow("value longer than the rest")
        << QByteArray(head() + QByteArray::fromHex("00000025") + QByteArray::fromHex("fffffff0") + "ab");
    QTest::newRow("string that claims 4 GiB") << QByteArray(head() + entry(Adapter::OptionDescription, longString));
    QTest::newRow("record of an unknown type") << QByteArray(head() + entry(Adapter::OptionBitrate, unknownRecord));
}

void TestAbstractCanAdapter::laterFormatIsReadAsFarAsItIsKnown()
{
    FakeAdapter saved;
    fill(saved);
    QByteArray bytes = saved.getValuesAsByteArray();
    bytes[5] = 2; // the low byte of the format's number
    FakeAdapter restored;
    QVERIFY(!restored.restoreValues(bytes));
    QVERIFY(sameValues(saved, restored));
}

void TestAbstractCanAdapter::foreignBytesRestoreNothing()
{
    QFETCH(QByteArray, bytes);
    FakeAdapter restored;
    QVERIFY(!restored.restoreValues(bytes));
    QVERIFY(sameValues(restored, FakeAdapter()));
}

void TestAbstractCanAdapter::randomDamageNeverCrashes()
{
    FakeAdapter saved;
    fill(saved);
    const QByteArray bytes = saved.getValuesAsByteArray();
    QRandomGenerator random(20260101);
    for (int round = 0; round < 20000; ++round) {
        QByteArray damaged = bytes;
        for (int hit = random.bounded(1, 6); hit > 0; --hit)
            damaged[random.bounded(damaged.size())] = static_cast<char>(random.bounded(256));
        FakeAdapter restored;
        restored.restoreValues(damaged);
        QCOMPARE(restored.getCanAdapterOption(Adapter::OptionDeviceName),
                 saved.getCanAdapterOption(Adapter::OptionDeviceName));
    }
}

void TestAbstractCanAdapter::runningStateIsTold()
{
    FakeAdapter adapter;
    QSignalSpy spy(&adapter, &Adapter::runningChanged);
    adapter.setRunning(true);
    adapter.setRunning(true);
    QVERIFY(adapter.getRunning());
    adapter.close();
    QVERIFY(!adapter.getRunning());
    QCOMPARE(spy, (QList<QVariantList>{{true}, {false}}));
}

void TestAbstractCanAdapter::linkedAdapterMayVanish()
{
    FakeAdapter adapter;
    {
        FakeAdapter partner;
        adapter.setLinkedAdapter(&partner);
        QCOMPARE(adapter.linkedAdapter(), &partner);
    }
    QVERIFY(adapter.linkedAdapter().isNull());
}

void TestAbstractCanAdapter::firstMemberIsTheListenOnlyState()
{
    FakeAdapter adapter;
    const auto *object = reinterpret_cast<const char *>(static_cast<Adapter *>(&adapter));
    QCOMPARE(reinterpret_cast<const char *>(&adapter.listenOnly) - object, qptrdiff(sizeof(QObject)));
}

QTEST_GUILESS_MAIN(TestAbstractCanAdapter)
#include "tst_abstractcanadapter.moc"
