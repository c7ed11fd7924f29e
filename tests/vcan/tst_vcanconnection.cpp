#include "connectionbench.h"
#include "slcanpair.h"
#include "vcanbench.h"

using Adapter = AbstractCanAdapter;

/// Links of the system within a connection of several adapters.
class TestVcanConnection : public QObject
{
    Q_OBJECT

private slots:
    void adaptersOfSeveralKindsConnectTogether();
    void systemWinsOverTheSavedSettings_data();
    void systemWinsOverTheSavedSettings();
    void linkThatGoesDownEndsTheConnection();
};

void TestVcanConnection::adaptersOfSeveralKindsConnectTogether()
{
    ConnectionBench bench;
    Adapter *first = bench.add(Adapter::CanAdapterSocketCan, "vcan0");
    Adapter *second = bench.add(Adapter::CanAdapterSocketCan, "vcan1");
    Adapter *demo = bench.add(Adapter::CanAdapterDemo, "Demo 1");
    Adapter *missing = bench.add(Adapter::CanAdapterSocketCan, "vcan8");
    bool usesCanFd = false;
    bench.handler.connectAdapters(false, usesCanFd);
    QVERIFY(first->getRunning() && second->getRunning() && demo->getRunning());
    QVERIFY(!missing->getRunning());
    QCOMPARE(bench.adapters.getConnectedAdapters().size(), 3);
    QCOMPARE(bench.boxes.texts(),
             QStringList{QStringLiteral("Invalid device error.|There is no valid device found or "
                                        "an error with the selected device occured.")});
    QVERIFY(usesCanFd); // as the system says of the two links
    QVERIFY(Vcan::run("cansend vcan1 123#"));
    QTRY_COMPARE(bench.trace->getMessageCount(), 1u);
}

void TestVcanConnection::systemWinsOverTheSavedSettings_data()
{
    QTest::addColumn<QByteArray>("link");
    QTest::addColumn<bool>("canFd");
    QTest::addColumn<int>("bitrate");
    QTest::newRow("virtual link") << QByteArray("vcan0") << true << 0;
    QTest::newRow("serial line") << QByteArray("slcan0") << false << 500;
}

void TestVcanConnection::systemWinsOverTheSavedSettings()
{
    QFETCH(QByteArray, link);
    QFETCH(bool, canFd);
    QFETCH(int, bitrate);
    const SlcanPair lines;
    QVERIFY(lines.isReady());
    ConnectionBench bench;
    Adapter *adapter = bench.add(Adapter::CanAdapterSocketCan, link.constData());
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, !canFd);
    adapter->setCanAdapterOption(Adapter::OptionBitrate,
                                 QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("saved"), 125, 0.8)));
    bool usesCanFd = false;
    bench.handler.connectAdapters(false, usesCanFd);
    QVERIFY(adapter->getRunning());
    QVERIFY(bench.boxes.texts().isEmpty());
    QCOMPARE(usesCanFd, canFd);
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionUseCanFd), QVariant(canFd));
    const CAN::CANBitrateDesc inUse(adapter->getCanAdapterOption(Adapter::OptionBitrate));
    QCOMPARE(int(inUse.bitrate), bitrate);
    QCOMPARE(inUse.name, QStringLiteral("saved"));
    QCOMPARE(inUse.samplePoint, 0.8);
}

void TestVcanConnection::linkThatGoesDownEndsTheConnection()
{
    ConnectionBench bench;
    bench.add(Adapter::CanAdapterSocketCan, "vcan0");
    bench.add(Adapter::CanAdapterSocketCan, "vcan1");
    bool usesCanFd = false;
    bench.handler.connectAdapters(true, usesCanFd);
    QCOMPARE(bench.adapters.getConnectedAdapters().size(), 2);
    QVERIFY(Vcan::run("ip link set vcan1 down"));
    QTRY_COMPARE(bench.boxes.texts(),
                 QStringList{QStringLiteral("CAN interface has been closed.|The interface \"SocketCAN - vcan1\" has "
                                            "been disconnected or another interface error occured.")});
    QVERIFY(bench.adapters.getConnectedAdapters().isEmpty());
    QVERIFY(Vcan::run("ip link set vcan1 up"));
    bench.handler.connectAdapters(true, usesCanFd);
    QCOMPARE(bench.adapters.getConnectedAdapters().size(), 2);
}

QTEST_MAIN(TestVcanConnection)
#include "tst_vcanconnection.moc"
