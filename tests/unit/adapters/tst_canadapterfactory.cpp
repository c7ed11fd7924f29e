#include "fakefamily.h"

#include <QSignalSpy>
#include <QtTest>

using Adapter = AbstractCanAdapter;

namespace {
using TypeList = QList<QPair<QString, Adapter::CanAdapterType>>;

/// Says only what a family must say.
class SmallFamily : public CanAdapterFamily
{
public:
    Adapter::CanAdapterType type() const override { return Adapter::CanAdapterKvaser; }
    QString name() const override { return QStringLiteral("Small"); }
    Adapter *createAdapter(const QString &) const override { return nullptr; }
};
} // namespace

class TestCanAdapterFactory : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        for (const auto type : {Adapter::CanAdapterKvaser, Adapter::CanAdapterSystecXm3})
            CanAdapterFactory::unregisterFamily(type);
    }

    void builtInFamiliesComeFirst();
    void laterFamilyStandsBehindAndReplacesItsType();
    void familyAnswersForItsType();
    void smallFamilyHasSensibleAnswers();
    void unknownTypeHasNothing();
    void createdAdapterHasADisplayName_data();
    void createdAdapterHasADisplayName();
    void adapterThatNamesItselfKeepsItsName();
    void systemIsAskedThroughTheSocketCanFamily();
    void notifierReachesListeners();
};

void TestCanAdapterFactory::builtInFamiliesComeFirst()
{
    const TypeList types = CanAdapterFactory::getImplementedAdapters();
    QVERIFY(types.contains({QStringLiteral("Demo"), Adapter::CanAdapterDemo}));
    QVERIFY(types.contains({QStringLiteral("CAN over TCP"), Adapter::CanAdapterFixedNetwork20}));
}

void TestCanAdapterFactory::laterFamilyStandsBehindAndReplacesItsType()
{
    const TypeList before = CanAdapterFactory::getImplementedAdapters();
    FakeFamily::install(Adapter::CanAdapterKvaser, QStringLiteral("First"));
    const QPair<QString, Adapter::CanAdapterType> first(QStringLiteral("First"), Adapter::CanAdapterKvaser);
    QCOMPARE(CanAdapterFactory::getImplementedAdapters(), before + TypeList{first});
    FakeFamily::install(Adapter::CanAdapterKvaser, QStringLiteral("Second"));
    const QPair<QString, Adapter::CanAdapterType> second(QStringLiteral("Second"), Adapter::CanAdapterKvaser);
    QCOMPARE(CanAdapterFactory::getImplementedAdapters(), before + TypeList{second});
    CanAdapterFactory::unregisterFamily(Adapter::CanAdapterKvaser);
    QCOMPARE(CanAdapterFactory::getImplementedAdapters(), before);
}

void TestCanAdapterFactory::familyAnswersForItsType()
{
    constexpr Adapter::CanAdapterType type = Adapter::CanAdapterKvaser;
    const QString device = QStringLiteral("Leaf");
    FakeFamily *family = FakeFamily::install(type);
    family->deviceMap = {{device, Adapter::FeatureCanFd | Adapter::FeatureListenOnly}};
    family->classicBitrates = {{{}, 250}};
    family->fdArbitrationBitrates = {{{}, 500}};
    family->fdDataBitrates = {{{}, 2000}};
    family->baudrateChangeable = false;
    family->additionalConfig = true;
    family->classicBitTiming = true;
    family->fdBitTiming = true;
    family->fdDevices = family->lowSpeedDevices = family->autoBusOnDevices = {device};

    QCOMPARE(CanAdapterFactory::getAdvInterfaceList(type), family->deviceMap);
    QCOMPARE(CanAdapterFactory::getSupportedBitrates(type, false).value(0).bitrate, quint16(250));
    QCOMPARE(CanAdapterFactory::getSupportedBitrates(type, true).value(0).bitrate, quint16(500));
    QCOMPARE(CanAdapterFactory::getSupportedFDBitrates(type).value(0).bitrate, quint16(2000));
    QVERIFY(!CanAdapterFactory::isBaudrateChangeable(type));
    QVERIFY(CanAdapterFactory::isAdditionalConfigAvailable(type));
    QVERIFY(CanAdapterFactory::isCANClassicBaudrateSettingAvailable(type));
    QVERIFY(CanAdapterFactory::isCANFDBaudrateSettingAvailable(type));
    QVERIFY(CanAdapterFactory::isInterfaceFd(type, device));
    QVERIFY(CanAdapterFactory::isInterfaceLowSpeed(type, device));
    QVERIFY(CanAdapterFactory::canDisableAutoBusOn(type, device));
    QVERIFY(!CanAdapterFactory::isInterfaceFd(type, QStringLiteral("other")));
}

void TestCanAdapterFactory::smallFamilyHasSensibleAnswers()
{
    CanAdapterFactory::registerFamily(std::make_unique<SmallFamily>());
    constexpr Adapter::CanAdapterType type = Adapter::CanAdapterKvaser;
    QVERIFY(CanAdapterFactory::getAdvInterfaceList(type).isEmpty());
    QVERIFY(CanAdapterFactory::getSupportedBitrates(type, true).isEmpty());
    QVERIFY(CanAdapterFactory::getSupportedFDBitrates(type).isEmpty());
    QVERIFY(CanAdapterFactory::isBaudrateChangeable(type));
    QVERIFY(!CanAdapterFactory::isAdditionalConfigAvailable(type));
    QVERIFY(!CanAdapterFactory::isCANClassicBaudrateSettingAvailable(type));
    QVERIFY(!CanAdapterFactory::isCANFDBaudrateSettingAvailable(type));
    QVERIFY(!CanAdapterFactory::isInterfaceFd(type, {}));
    QVERIFY(!CanAdapterFactory::isInterfaceLowSpeed(type, {}));
    QVERIFY(!CanAdapterFactory::canDisableAutoBusOn(type, {}));
}

void TestCanAdapterFactory::unknownTypeHasNothing()
{
    const auto unknown = static_cast<Adapter::CanAdapterType>(4711);
    QVERIFY(CanAdapterFactory::createCanAdapter(unknown, QStringLiteral("x")) == nullptr);
    QVERIFY(CanAdapterFactory::getAdvInterfaceList(unknown).isEmpty());
    QVERIFY(CanAdapterFactory::isBaudrateChangeable(unknown));
}

void TestCanAdapterFactory::createdAdapterHasADisplayName_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("Leaf") << QStringLiteral("Kind - Leaf");
    QTest::newRow("up to the first bar") << QStringLiteral("Leaf|2|x") << QStringLiteral("Kind - Leaf");
    QTest::newRow("no device") << QString() << QStringLiteral("Kind");
}

void TestCanAdapterFactory::createdAdapterHasADisplayName()
{
    QFETCH(QString, device);
    FakeFamily::install(Adapter::CanAdapterKvaser, QStringLiteral("Kind"));
    const std::unique_ptr<Adapter> adapter(CanAdapterFactory::createCanAdapter(Adapter::CanAdapterKvaser, device));
    QTEST(adapter->getCanAdapterOption(Adapter::OptionAdapterName).toString(), "name");
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString(), device);
}

void TestCanAdapterFactory::adapterThatNamesItselfKeepsItsName()
{
    FakeFamily *family = FakeFamily::install(Adapter::CanAdapterKvaser);
    family->create = [](const QString &device) {
        auto *adapter = new FakeAdapter(Adapter::CanAdapterKvaser, device);
        adapter->setCanAdapterOption(Adapter::OptionAdapterName, QStringLiteral("Own"));
        return adapter;
    };
    const std::unique_ptr<Adapter> adapter(
        CanAdapterFactory::createCanAdapter(Adapter::CanAdapterKvaser, QStringLiteral("x")));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionAdapterName).toString(), QStringLiteral("Own"));
}

void TestCanAdapterFactory::systemIsAskedThroughTheSocketCanFamily()
{
    const QString device = QStringLiteral("can7");
    FakeFamily *family = FakeFamily::install(Adapter::CanAdapterSocketCan);
    family->props.insert(device, {true, 125, 4000, 100});
    const Adapter::SocketCANProps expected = {true, 125, 4000, 100};
    QVERIFY(CanAdapterFactory::getSocketCanProps(device) == expected);
    QCOMPARE(CanAdapterFactory::getSocketCanProps(QStringLiteral("can8")).bitrate, quint16(0));
    CanAdapterFactory::unregisterFamily(Adapter::CanAdapterSocketCan);
    QCOMPARE(CanAdapterFactory::getSocketCanProps(device).bitrate, quint16(0));
}

void TestCanAdapterFactory::notifierReachesListeners()
{
    QSignalSpy spy(CanAdapterFactory::notifier(), &CanAdapterNotifier::devicesChanged);
    emit CanAdapterFactory::notifier()->devicesChanged(Adapter::CanAdapterSocketCan);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy[0][0].value<Adapter::CanAdapterType>(), Adapter::CanAdapterSocketCan);
}

QTEST_GUILESS_MAIN(TestCanAdapterFactory)
#include "tst_canadapterfactory.moc"
