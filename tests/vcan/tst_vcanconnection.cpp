#include "applicationinterfacehandler.h"

#include "messageboxes.h"
#include "vcanbench.h"

using Adapter = AbstractCanAdapter;

/// Links of the system within a connection of several adapters.
class TestVcanConnection : public QObject
{
    Q_OBJECT

private slots:
    void adaptersOfSeveralKindsConnectTogether();
    void systemsBitrateWinsOverTheSavedOne();
    void linkThatGoesDownEndsTheConnection();
};

namespace {
/// A handler with what an application hands to it.
struct Bench
{
    SettingsDatabase settings{nullptr};
    QPointer<DatachunkHandler> trace{new DatachunkHandler(qApp)};
    MultiCanAdapterHandler adapters;
    QPointer<Adapter> primary;
    QPointer<CanScheduler> scheduler;
    MessageBoxes boxes;
    ApplicationInterfaceHandler handler{&settings, trace, &adapters, primary, scheduler, nullptr};

    ~Bench()
    {
        handler.disconnectFromAdapter();
        delete trace;
    }

    Adapter *add(Adapter::CanAdapterType type, const char *device)
    {
        Adapter *adapter = CanAdapterFactory::createCanAdapter(type, QString::fromLatin1(device));
        adapters.addNewCanAdapter(adapter, adapters.getAdapterCount() == 0, true, false);
        return adapter;
    }
};
} // namespace

void TestVcanConnection::adaptersOfSeveralKindsConnectTogether()
{
    Bench bench;
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

void TestVcanConnection::systemsBitrateWinsOverTheSavedOne()
{
    Bench bench;
    Adapter *adapter = bench.add(Adapter::CanAdapterSocketCan, "vcan0");
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, false);
    adapter->setCanAdapterOption(Adapter::OptionBitrate,
                                 QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("saved"), 125, 0.8)));
    bool usesCanFd = false;
    bench.handler.connectAdapters(false, usesCanFd);
    QVERIFY(usesCanFd);
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionUseCanFd), QVariant(true));
    const CAN::CANBitrateDesc bitrate(adapter->getCanAdapterOption(Adapter::OptionBitrate));
    QCOMPARE(bitrate.bitrate, quint16(0));
    QCOMPARE(bitrate.name, QStringLiteral("saved"));
}

void TestVcanConnection::linkThatGoesDownEndsTheConnection()
{
    Bench bench;
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
