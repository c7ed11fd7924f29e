#include "adaptercontracttest.h"
#include "bushub.h"
#include "rawpeer.h"
#include "tcpbusadapter.h"

#include <QtTest>

#include <future>

class TestTcpBusAdapter : public AdapterContractTest
{
    Q_OBJECT

private:
    using AdapterPtr = std::unique_ptr<TcpBusAdapter>;

    static AdapterPtr makeDemo(const QString &port)
    {
        auto adapter = std::make_unique<TcpBusAdapter>(Adapter::CanAdapterDemo, QStringLiteral("Demo 1"));
        adapter->setCanAdapterOption(Adapter::OptionPort, port);
        return adapter;
    }
    static AdapterPtr makeDemo(quint16 port) { return makeDemo(QString::number(port)); }
    static AdapterPtr makeGateway(const QString &address, quint16 port)
    {
        auto adapter = std::make_unique<TcpBusAdapter>(Adapter::CanAdapterFixedNetwork20,
                                                       QStringLiteral("TCP gateway"));
        adapter->setCanAdapterOption(Adapter::OptionIpAddress, address);
        adapter->setCanAdapterOption(Adapter::OptionPort, QString::number(port));
        return adapter;
    }
    static std::unique_ptr<BusHub> makeHub()
    {
        int error = 0;
        return BusHub::create(0, {}, error);
    }

    /// A demo adapter beside a gateway client: both kinds, on one bus.
    Pair makePair() override
    {
        const quint16 port = freePort();
        BusHub::serveUntilExit(port);
        return {makeDemo(port), makeGateway(QStringLiteral("127.0.0.1"), port)};
    }

private slots:
    void firstDemoAdapterCarriesTheBus();
    void busOutlivesTheAdapterThatFoundedIt();
    void unusablePortIsAnInvalidDevice_data();
    void unusablePortIsAnInvalidDevice();
    void usablePortsOpen_data();
    void usablePortsOpen();
    void emptyPortIsTheDefaultPort();
    void foreignServerKeepsThePort();
    void unusableAddressIsAnInvalidDevice_data();
    void unusableAddressIsAnInvalidDevice();
    void gatewayThatIsNotThereIsNotReplacedByUs();
    void gatewayFailureSaysWhatToDo_data();
    void gatewayFailureSaysWhatToDo();
    void connectTimeoutHasBounds();
    void failedOpenLeavesAClosedAdapter();
    void openAdapterStaysOpen();
    void framesBeforeRunningAreNotForUs();
    void stoppedAdapterNeitherSendsNorReceives();
    void classicAdapterDoesNotSeeCanFd();
    void errorReportsAreNotHandedOn();
    void nothingIsNoFrame();
    void settingsCountFromTheNextStartOn();
    void lostPeerIsAnInterfaceErrorOnce_data();
    void lostPeerIsAnInterfaceErrorOnce();
    void foreignBytesEndTheConnectionWithTheirReason();
    void lossBeforeRunningIsNotForgotten();
    void theNextToConnectCarriesTheBus();
    void closingFromAReceivingSlotTakesPlaceLater();
    void adapterReopenedBeforeALateCloseStaysOpen();
    void echoesAreBounded();
    void optionsHaveDefaults_data();
    void optionsHaveDefaults();
    void limitsAllowTheUsualBitrates_data();
    void limitsAllowTheUsualBitrates();
    void anyBitrateIsAccepted();
};

void TestTcpBusAdapter::firstDemoAdapterCarriesTheBus()
{
    const quint16 port = freePort();
    QVERIFY(!RawPeer(port).isConnected());
    const AdapterPtr adapter = makeDemo(port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    RawPeer peer(port);
    QVERIFY(peer.greet());
    QVERIFY(peer.send(encodedFrame(frame(0x123, "ab"))));
    QVERIFY(record.waitForFrames(1));
    QVERIFY(record.frames().first() == frame(0x123, "ab"));
    QCOMPARE(write(*adapter, frame(0x124)), Adapter::WriteOk);
    QCOMPARE(peer.receive(5), QByteArray::fromHex("0000012400"));
}

void TestTcpBusAdapter::busOutlivesTheAdapterThatFoundedIt()
{
    const quint16 port = freePort();
    AdapterPtr founder = makeDemo(port);
    QVERIFY(start(*founder));
    const AdapterPtr a = makeDemo(port);
    const AdapterPtr b = makeDemo(port);
    AdapterRecord atA(*a);
    AdapterRecord atB(*b);
    QVERIFY(start(*a) && start(*b));
    founder.reset();
    QCOMPARE(write(*a, frame(1)), Adapter::WriteOk);
    QVERIFY(atB.waitForFrames(1));
    QCOMPARE(atA.errors() + atB.errors(), 0);
}

void TestTcpBusAdapter::unusablePortIsAnInvalidDevice_data()
{
    QTest::addColumn<QString>("port");
    for (const char *port : {"0", "65536", "99999", "-1", "4567x", "can", "0x100", "1.5"})
        QTest::newRow(port) << QString::fromLatin1(port);
}

void TestTcpBusAdapter::unusablePortIsAnInvalidDevice()
{
    QFETCH(QString, port);
    const AdapterPtr demo = makeDemo(port);
    QCOMPARE(demo->open(), int(Adapter::OpenInvalidDevice));
    QCOMPARE(demo->errorText(),
             QStringLiteral("\"%1\" is no port. Enter a number from 1 to 65535 in the interface settings.").arg(port));
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.1"), 1);
    gateway->setCanAdapterOption(Adapter::OptionPort, port);
    QCOMPARE(gateway->open(), int(Adapter::OpenInvalidDevice));
}

void TestTcpBusAdapter::usablePortsOpen_data()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("plain") << QStringLiteral("%1");
    QTest::newRow("with blanks") << QStringLiteral(" %1 ");
}

void TestTcpBusAdapter::usablePortsOpen()
{
    QFETCH(QString, format);
    const AdapterPtr demo = makeDemo(format.arg(freePort()));
    QCOMPARE(demo->open(), int(Adapter::OpenOk));
}

void TestTcpBusAdapter::emptyPortIsTheDefaultPort()
{
    // An address of this computer at which nobody listens, so that the port is named in the refusal.
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.9"), 1);
    gateway->setCanAdapterOption(Adapter::OptionPort, QString());
    QCOMPARE(gateway->open(), int(Adapter::OpenBusy));
    QVERIFY(gateway->errorText().startsWith(QStringLiteral("No gateway listens at 127.0.0.9, port 45674.")));
}

void TestTcpBusAdapter::foreignServerKeepsThePort()
{
    RawServer server;
    std::thread other([&] {
        RawPeer peer = server.accept();
        peer.send("HTTP/1.1 400 Bad Request\r\n\r\n");
        peer.waitForEnd();
    });
    const AdapterPtr demo = makeDemo(server.port());
    const int result = demo->open();
    other.join();
    QCOMPARE(result, int(Adapter::OpenBusy));
    QCOMPARE(demo->errorText(),
             QStringLiteral("Port %1 is in use by another program. Choose another port in the "
                            "interface settings.")
                 .arg(server.port()));
}

void TestTcpBusAdapter::unusableAddressIsAnInvalidDevice_data()
{
    QTest::addColumn<QString>("address");
    for (const char *address :
         {"", "gateway.local", "192.168.0", "1.2.3.4.5", "256.1.1.1", "+1.1.1.1", "1..1.1", "a b"})
        QTest::newRow(address) << QString::fromLatin1(address);
}

void TestTcpBusAdapter::unusableAddressIsAnInvalidDevice()
{
    QFETCH(QString, address);
    const AdapterPtr gateway = makeGateway(address, 1);
    QCOMPARE(gateway->open(), int(Adapter::OpenInvalidDevice));
    QCOMPARE(
        gateway->errorText(),
        QStringLiteral("\"%1\" is no IP address. Enter one like 192.168.0.10 in the interface settings.").arg(address));
}

void TestTcpBusAdapter::gatewayThatIsNotThereIsNotReplacedByUs()
{
    const quint16 port = freePort();
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.1"), port);
    QCOMPARE(gateway->open(), int(Adapter::OpenBusy));
    QVERIFY(gateway->errorText().startsWith(QStringLiteral("No gateway listens at 127.0.0.1, port %1.").arg(port)));
    QVERIFY(!RawPeer(port).isConnected());
}

void TestTcpBusAdapter::gatewayFailureSaysWhatToDo_data()
{
    QTest::addColumn<QByteArray>("says");
    QTest::addColumn<QString>("errorText");
    QTest::newRow("another protocol") << QByteArray("220 ready\r\n")
                                      << QStringLiteral("127.0.0.1, port %1, does not speak CAN over TCP. Choose the "
                                                        "gateway's port in the interface settings.");
    QTest::newRow("nothing") << QByteArray()
                             << QStringLiteral("127.0.0.1, port %1, closed the connection at once. If another program "
                                               "uses the gateway, disconnect it there first.");
}

void TestTcpBusAdapter::gatewayFailureSaysWhatToDo()
{
    QFETCH(QByteArray, says);
    QFETCH(QString, errorText);
    RawServer server;
    std::thread other([&] {
        RawPeer peer = server.accept();
        peer.send(says);
        peer.receive(12);
    });
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.1"), server.port());
    const int result = gateway->open();
    other.join();
    QCOMPARE(result, int(Adapter::OpenBusy));
    QCOMPARE(gateway->errorText(), errorText.arg(server.port()));
}

void TestTcpBusAdapter::connectTimeoutHasBounds()
{
    const RawServer silent;
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.1"), silent.port());
    gateway->setCanAdapterOption(Adapter::OptionConnectTimeout, 1);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(gateway->open(), int(Adapter::OpenBusy));
    QVERIFY(timer.elapsed() >= 1000);
}

void TestTcpBusAdapter::failedOpenLeavesAClosedAdapter()
{
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.1"), freePort());
    AdapterRecord record(*gateway);
    QCOMPARE(gateway->open(), int(Adapter::OpenBusy));
    gateway->setRunning(true);
    QVERIFY(!gateway->getRunning());
    QCOMPARE(write(*gateway, frame(1)), Adapter::WriteNotOpen);
    const auto hub = makeHub();
    gateway->setCanAdapterOption(Adapter::OptionPort, QString::number(hub->port()));
    QVERIFY(start(*gateway));
    QVERIFY(gateway->errorText().isEmpty());
    QCOMPARE(record.errors(), 0);
}

void TestTcpBusAdapter::openAdapterStaysOpen()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    QVERIFY(start(*adapter));
    QTRY_COMPARE(hub->memberCount(), std::size_t(1));
    QCOMPARE(adapter->open(), int(Adapter::OpenOk));
    QVERIFY(adapter->getRunning());
    QCOMPARE(hub->memberCount(), std::size_t(1));
}

void TestTcpBusAdapter::framesBeforeRunningAreNotForUs()
{
    const auto hub = makeHub();
    const AdapterPtr early = makeDemo(hub->port());
    const AdapterPtr probe = makeDemo(hub->port());
    AdapterRecord atEarly(*early);
    AdapterRecord atProbe(*probe);
    QCOMPARE(early->open(), int(Adapter::OpenOk));
    QVERIFY(start(*probe));
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    QCOMPARE(write(*early, frame(1)), Adapter::WriteNotOpen);
    QVERIFY(!early->getRunning());

    RawPeer peer(hub->port());
    QVERIFY(peer.greet());
    QVERIFY(peer.send(encodedFrame(frame(1))));
    QVERIFY(atProbe.waitForFrames(1));
    early->close();
    QVERIFY(start(*early));
    QTRY_COMPARE(hub->memberCount(), std::size_t(3));
    QVERIFY(peer.send(encodedFrame(frame(2))));
    QVERIFY(atEarly.waitForFrames(1));
    QCOMPARE(atEarly.frames().first().id, 2u);
    QCOMPARE(early->framesReceived(), quint64(1));
}

void TestTcpBusAdapter::stoppedAdapterNeitherSendsNorReceives()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    RawPeer peer(hub->port());
    QVERIFY(peer.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    adapter->setRunning(false);
    QVERIFY(!adapter->getRunning());
    QCOMPARE(write(*adapter, frame(1)), Adapter::WriteNotOpen);
    adapter->setRunning(true);
    QVERIFY(peer.send(encodedFrame(frame(2))));
    QVERIFY(record.waitForFrames(1));
}

void TestTcpBusAdapter::classicAdapterDoesNotSeeCanFd()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    RawPeer peer(hub->port());
    QVERIFY(peer.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    QVERIFY(peer.send(encodedFrame(fdFrame(1)) + encodedFrame(frame(2))));
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(record.frames().first().id, 2u);
    QCOMPARE(adapter->framesReceived(), quint64(1));
    QCOMPARE(adapter->framesLost(), quint64(0));
}

void TestTcpBusAdapter::errorReportsAreNotHandedOn()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    RawPeer peer(hub->port());
    QVERIFY(peer.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    CAN::CanMessage report = frame(4, QByteArray(8, '\1'));
    report.errorFrame = true;
    QVERIFY(peer.send(encodedFrame(report) + encodedFrame(frame(2))));
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(record.frames().first().id, 2u);
    QCOMPARE(adapter->framesReceived(), quint64(1));
}

void TestTcpBusAdapter::nothingIsNoFrame()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    QVERIFY(start(*adapter));
    QCOMPARE(adapter->write(nullptr), Adapter::WriteInvalidFrame);
    QCOMPARE(adapter->framesLost(), quint64(1));
}

void TestTcpBusAdapter::settingsCountFromTheNextStartOn()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    QVERIFY(start(*adapter));
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    QCOMPARE(write(*adapter, fdFrame(1)), Adapter::WriteInvalidFrame);
    adapter->setRunning(true);
    QCOMPARE(write(*adapter, fdFrame(1)), Adapter::WriteOk);
}

void TestTcpBusAdapter::lostPeerIsAnInterfaceErrorOnce_data()
{
    QTest::addColumn<bool>("demo");
    QTest::newRow("embedded bus") << true;
    QTest::newRow("gateway") << false;
}

void TestTcpBusAdapter::lostPeerIsAnInterfaceErrorOnce()
{
    QFETCH(bool, demo);
    auto hub = makeHub();
    const AdapterPtr adapter = demo ? makeDemo(hub->port()) : makeGateway(QStringLiteral("127.0.0.1"), hub->port());
    AdapterRecord record(*adapter);
    QSignalSpy running(adapter.get(), &Adapter::runningChanged);
    QVERIFY(start(*adapter));
    QTRY_COMPARE(hub->memberCount(), std::size_t(1));

    hub.reset();
    QTRY_COMPARE_WITH_TIMEOUT(record.errors(), 1, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!adapter->getRunning(), patience);
    QCOMPARE(running, (QList<QVariantList>{{true}, {false}}));
    QVERIFY(
        adapter->errorText().contains(demo ? QStringLiteral("Connect again.") : QStringLiteral("then connect again.")));
    QCOMPARE(write(*adapter, frame(1)), Adapter::WriteNotOpen);
    adapter->close();
    QCoreApplication::processEvents();
    QCOMPARE(record.errors(), 1);
    QCOMPARE(running.size(), 2);
}

void TestTcpBusAdapter::foreignBytesEndTheConnectionWithTheirReason()
{
    RawServer server;
    RawPeer peer;
    std::thread other([&] {
        peer = server.accept();
        peer.greet();
    });
    const AdapterPtr gateway = makeGateway(QStringLiteral("127.0.0.1"), server.port());
    AdapterRecord record(*gateway);
    const bool started = start(*gateway);
    other.join();
    QVERIFY(started);
    QVERIFY(peer.send(QByteArray::fromHex("00000123 0F")));
    QTRY_COMPARE_WITH_TIMEOUT(record.errors(), 1, patience);
    QCOMPARE(gateway->errorText(), QStringLiteral("The other side sent a classic frame with more than 8 data bytes."));
}

void TestTcpBusAdapter::lossBeforeRunningIsNotForgotten()
{
    auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    AdapterRecord record(*adapter);
    QCOMPARE(adapter->open(), int(Adapter::OpenOk));
    hub.reset();
    QTRY_COMPARE_WITH_TIMEOUT(record.errors(), 1, patience);
    adapter->setRunning(true);
    QVERIFY(!adapter->getRunning());
    QCOMPARE(record.errors(), 1);
}

void TestTcpBusAdapter::theNextToConnectCarriesTheBus()
{
    auto hub = makeHub();
    const quint16 port = hub->port();
    const AdapterPtr a = makeDemo(port);
    const AdapterPtr b = makeDemo(port);
    AdapterRecord atA(*a);
    AdapterRecord atB(*b);
    QVERIFY(start(*a) && start(*b));
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    hub.reset();
    QTRY_COMPARE_WITH_TIMEOUT(atA.errors() + atB.errors(), 2, patience);

    // One closes first, the other opens again just so.
    a->close();
    QVERIFY(start(*a) && start(*b));
    QVERIFY(a->errorText().isEmpty() && b->errorText().isEmpty());
    QCOMPARE(write(*a, frame(1)), Adapter::WriteOk);
    QVERIFY(atB.waitForFrames(1));
    QCoreApplication::processEvents();
    QVERIFY(a->getRunning() && b->getRunning());
}

void TestTcpBusAdapter::closingFromAReceivingSlotTakesPlaceLater()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QObject::connect(
        pair.second.get(), &Adapter::newCanMessage, pair.second.get(), [&] { pair.second->close(); },
        Qt::DirectConnection);
    QVERIFY(start(pair));
    for (quint32 number = 0; number < 100; ++number)
        QCOMPARE(write(*pair.first, numbered(1, number)), Adapter::WriteOk);
    QVERIFY(record.waitForFrames(1));
    QTRY_VERIFY_WITH_TIMEOUT(!pair.second->getRunning(), patience);
    QCOMPARE(record.received().size(), std::size_t(1));
    QCOMPARE(record.errors(), 0);
}

void TestTcpBusAdapter::adapterReopenedBeforeALateCloseStaysOpen()
{
    Pair pair = makePair();
    QCOMPARE(pair.first->open(), int(Adapter::OpenOk));
    QCOMPARE(pair.second->open(), int(Adapter::OpenOk));
    pair.first->setRunning(true);
    pair.second->setRunning(true);
    std::promise<void> closed;
    connect(
        pair.first.get(), &Adapter::newCanMessage, pair.first.get(),
        [&pair, &closed] {
            pair.first->disconnect();
            pair.first->close();
            closed.set_value();
        },
        Qt::DirectConnection);
    CAN::CanMessage message;
    message.id = 0x123;
    QCOMPARE(pair.second->write(&message), Adapter::WriteOk);
    QCOMPARE(closed.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);

    // No event loop has run since: the closing still waits.
    QCOMPARE(pair.first->open(), int(Adapter::OpenOk));
    pair.first->setRunning(true);
    QCoreApplication::processEvents();
    QVERIFY(pair.first->getRunning());
    QCOMPARE(pair.first->write(&message), Adapter::WriteOk);
}

void TestTcpBusAdapter::echoesAreBounded()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    adapter->setCanAdapterOption(Adapter::OptionForcedEcho, true);
    std::mutex gate;
    std::atomic<bool> held{false};
    QObject::connect(
        adapter.get(), &Adapter::newCanMessage, adapter.get(),
        [&] {
            held = true;
            const std::lock_guard wait(gate);
        },
        Qt::DirectConnection);
    QVERIFY(start(*adapter));
    std::unique_lock closed(gate);
    QCOMPARE(write(*adapter, frame(0)), Adapter::WriteOk);
    QTRY_VERIFY_WITH_TIMEOUT(held.load(), patience);
    for (quint32 number = 0; number < 20000; ++number)
        QCOMPARE(write(*adapter, numbered(1, number)), Adapter::WriteOk);
    QCOMPARE(adapter->framesLost(), quint64(20000 - 16384));
    QCOMPARE(adapter->framesSent(), quint64(20001));
    closed.unlock();
    adapter->close();
}

void TestTcpBusAdapter::optionsHaveDefaults_data()
{
    QTest::addColumn<bool>("demo");
    QTest::newRow("demo") << true;
    QTest::newRow("gateway") << false;
}

void TestTcpBusAdapter::optionsHaveDefaults()
{
    QFETCH(bool, demo);
    const TcpBusAdapter fresh(demo ? Adapter::CanAdapterDemo : Adapter::CanAdapterFixedNetwork20, QStringLiteral("x"));
    TcpBusAdapter adapter(demo ? Adapter::CanAdapterDemo : Adapter::CanAdapterFixedNetwork20, QStringLiteral("x"));
    for (const Adapter::AdapterOption option : adapter.getSupportedOptions()) {
        // The name is the factory's to give.
        QCOMPARE(adapter.getCanAdapterOption(option).isValid(), option != Adapter::OptionAdapterName);
    }
    QVERIFY(adapter == fresh);
    QCOMPARE(adapter.getCanAdapterOption(Adapter::OptionPort), QVariant(QStringLiteral("45674")));
    QCOMPARE(adapter.getCanAdapterOption(Adapter::OptionDeviceData), QVariant(0x90u));
    QCOMPARE(CAN::CANBitrateDesc(adapter.getCanAdapterOption(Adapter::OptionBitrate)).bitrate, quint16(500));
    QCOMPARE(CAN::CANBitrateDesc(adapter.getCanAdapterOption(Adapter::OptionFdBitrate)).bitrate, quint16(2000));
    QCOMPARE(adapter.getSupportedOptions().contains(Adapter::OptionIpAddress), !demo);
    QCOMPARE(adapter.getSupportedOptions().contains(Adapter::OptionConnectTimeout), !demo);
}

void TestTcpBusAdapter::limitsAllowTheUsualBitrates_data()
{
    QTest::addColumn<bool>("dataPhase");
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<double>("samplePoint");
    for (const int bitrate : {10, 20, 50, 125, 250, 500, 800, 1000})
        QTest::newRow(qPrintable(QStringLiteral("%1 kBit/s").arg(bitrate))) << false << bitrate << 87.5;
    for (const int bitrate : {1000, 2000, 4000, 8000})
        QTest::newRow(qPrintable(QStringLiteral("data phase, %1 kBit/s").arg(bitrate))) << true << bitrate << 80.0;
    QTest::newRow("data phase, 5000 kBit/s") << true << 5000 << 75.0;
}

void TestTcpBusAdapter::limitsAllowTheUsualBitrates()
{
    QFETCH(bool, dataPhase);
    QFETCH(int, bitrate);
    QFETCH(double, samplePoint);
    TcpBusAdapter adapter(Adapter::CanAdapterDemo, QString());
    const CAN::CANBitTimingThresholds limits = adapter.getThresholds(dataPhase);
    QVERIFY(limits.valid);
    bool found = false;
    const CanBitTimingValues timing = Adapter::getTimingParameters(
        static_cast<quint8>(limits.clockFrequency), static_cast<quint16>(bitrate), samplePoint, found, true, limits);
    QVERIFY(found);
    const CAN::CANBitrateDesc reached = Adapter::getBitrateFromTimings(
        limits.clockFrequency, static_cast<quint8>(timing.preScaler), timing.tSeg1, timing.tSeg2);
    QCOMPARE(int(reached.bitrate), bitrate);
    // 800 kBit/s are 100 clock periods, which have no half.
    QVERIFY(qAbs(reached.samplePoint * 100 - samplePoint) <= (bitrate == 800 ? 0.5 : 1e-9));
}

void TestTcpBusAdapter::anyBitrateIsAccepted()
{
    const auto hub = makeHub();
    const AdapterPtr adapter = makeDemo(hub->port());
    for (const quint16 bitrate : {quint16(0), quint16(33), quint16(65535)}) {
        adapter->setBitrate(bitrate);
        adapter->setFdBitrate(bitrate);
        QCOMPARE(adapter->open(), int(Adapter::OpenOk));
        adapter->close();
    }
    QCOMPARE(adapter->getDeviceNumber(), 0);
}

QTEST_GUILESS_MAIN(TestTcpBusAdapter)
#include "tst_tcpbusadapter.moc"
