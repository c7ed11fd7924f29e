#include "rawpeer.h"
#include "tcpbusfamilies.h"

#include <QtTest>

using Adapter = AbstractCanAdapter;

namespace {
QList<int> rates(const QList<CAN::CANBitrateDesc> &list)
{
    QList<int> numbers;
    for (const CAN::CANBitrateDesc &entry : list)
        numbers.append(entry.bitrate);
    return numbers;
}
} // namespace

class TestTcpBusFamilies : public QObject
{
    Q_OBJECT

private slots:
    void factoryKnowsBothFamilies();
    void demoHasFourDevices();
    void gatewayHasOneEntry();
    void bitratesAreThoseOfTheField();
    void factoryGivesAdaptersTheirNames();
    void adaptersOfTheFactoryMeet();
    void equalSettingsMakeEqualAdapters();
};

void TestTcpBusFamilies::factoryKnowsBothFamilies()
{
    const auto adapters = CanAdapterFactory::getImplementedAdapters();
    QVERIFY(adapters.contains({QStringLiteral("Demo"), Adapter::CanAdapterDemo}));
    QVERIFY(adapters.contains({QStringLiteral("CAN over TCP"), Adapter::CanAdapterFixedNetwork20}));
    for (const auto type : {Adapter::CanAdapterDemo, Adapter::CanAdapterFixedNetwork20}) {
        QVERIFY(CanAdapterFactory::isAdditionalConfigAvailable(type));
        QVERIFY(CanAdapterFactory::isInterfaceFd(type, QString()));
        QVERIFY(!CanAdapterFactory::isInterfaceLowSpeed(type, QString()));
    }
    QVERIFY(CanAdapterFactory::isCANClassicBaudrateSettingAvailable(Adapter::CanAdapterDemo));
    QVERIFY(CanAdapterFactory::isCANFDBaudrateSettingAvailable(Adapter::CanAdapterDemo));
    QVERIFY(!CanAdapterFactory::isBaudrateChangeable(Adapter::CanAdapterFixedNetwork20));
}

void TestTcpBusFamilies::demoHasFourDevices()
{
    const unsigned int features = Adapter::FeatureCanFd | Adapter::FeatureListenOnly;
    const QMap<QString, unsigned int> expected = {{QStringLiteral("Demo 1"), features},
                                                  {QStringLiteral("Demo 2"), features},
                                                  {QStringLiteral("Demo 3"), features},
                                                  {QStringLiteral("Demo 4"), features}};
    QCOMPARE(makeDemoFamily()->devices(), expected);
}

void TestTcpBusFamilies::gatewayHasOneEntry()
{
    const QMap<QString, unsigned int> expected = {
        {QStringLiteral("TCP gateway"), Adapter::FeatureCanFd | Adapter::FeatureListenOnly}};
    QCOMPARE(makeTcpFamily()->devices(), expected);
}

void TestTcpBusFamilies::bitratesAreThoseOfTheField()
{
    const auto family = makeDemoFamily();
    QCOMPARE(rates(family->bitrates(false)), (QList<int>{10, 20, 50, 125, 250, 500, 800, 1000}));
    QCOMPARE(rates(family->bitrates(true)), (QList<int>{250, 500, 1000}));
    QCOMPARE(rates(family->fdBitrates()), (QList<int>{1000, 2000, 4000, 5000, 8000}));
    QCOMPARE(family->bitrates(false).first().name, QStringLiteral("10 kBit/s"));
    const auto classic = family->bitrates(false);
    for (const CAN::CANBitrateDesc &entry : classic)
        QCOMPARE(entry.samplePoint, 0.875);
    const auto data = family->fdBitrates();
    for (const CAN::CANBitrateDesc &entry : data)
        QVERIFY(entry.samplePoint >= 0.75 && entry.samplePoint <= 0.8);
}

void TestTcpBusFamilies::factoryGivesAdaptersTheirNames()
{
    const std::unique_ptr<Adapter> demo(
        CanAdapterFactory::createCanAdapter(Adapter::CanAdapterDemo, QStringLiteral("Demo 2")));
    QCOMPARE(demo->getCanAdapterOption(Adapter::OptionAdapterName).toString(), QStringLiteral("Demo - Demo 2"));
    QCOMPARE(demo->getCanAdapterOption(Adapter::OptionDeviceName).toString(), QStringLiteral("Demo 2"));
    const std::unique_ptr<Adapter> gateway(
        CanAdapterFactory::createCanAdapter(Adapter::CanAdapterFixedNetwork20, QString()));
    QCOMPARE(gateway->getCanAdapterOption(Adapter::OptionAdapterName).toString(), QStringLiteral("CAN over TCP"));
}

void TestTcpBusFamilies::adaptersOfTheFactoryMeet()
{
    const QString port = QString::number(freePort());
    std::vector<std::unique_ptr<Adapter>> adapters;
    for (const auto type : {Adapter::CanAdapterDemo, Adapter::CanAdapterFixedNetwork20}) {
        adapters.emplace_back(CanAdapterFactory::createCanAdapter(type, QString()));
        adapters.back()->setCanAdapterOption(Adapter::OptionPort, port);
        QCOMPARE(adapters.back()->open(), int(Adapter::OpenOk));
        adapters.back()->setRunning(true);
    }
    CAN::CanMessage message;
    QCOMPARE(adapters.front()->write(&message), Adapter::WriteOk);
    QTRY_COMPARE_WITH_TIMEOUT(adapters.back()->framesReceived(), quint64(1), patience);
    QCOMPARE(adapters.back()->write(&message), Adapter::WriteOk);
    QTRY_COMPARE_WITH_TIMEOUT(adapters.front()->framesReceived(), quint64(1), patience);
}

void TestTcpBusFamilies::equalSettingsMakeEqualAdapters()
{
    const auto family = makeDemoFamily();
    const std::unique_ptr<Adapter> a(family->createAdapter(QStringLiteral("Demo 1")));
    const std::unique_ptr<Adapter> b(family->createAdapter(QStringLiteral("Demo 1")));
    QVERIFY(*a == *b);
    b->setCanAdapterOption(Adapter::OptionPort, QStringLiteral("45675"));
    QVERIFY(*a != *b);
}

QTEST_GUILESS_MAIN(TestTcpBusFamilies)
#include "tst_tcpbusfamilies.moc"
