#include "adaptercontracttest.h"
#include "injectedadapter.h"

#include <QtTest>

#include <linux/can/error.h>
#include <linux/can/netlink.h>

using Adapter = AbstractCanAdapter;

namespace {
CAN::CanMessage message(quint32 id)
{
    CAN::CanMessage made;
    made.id = id;
    return made;
}

Adapter::WriteResult write(Adapter &adapter, CAN::CanMessage message)
{
    return adapter.write(&message);
}

quint16 bitrate(const Adapter &adapter, Adapter::AdapterOption option)
{
    return CAN::CANBitrateDesc(adapter.getCanAdapterOption(option)).bitrate;
}
} // namespace

/// What needs no kernel with CAN; the rest of the contract is tested where there is one.
class TestSocketCanAdapter : public QObject
{
    Q_OBJECT

private slots:
    void linkThatIsNotThereIsAnInvalidDevice();
    void framesTravelBothWays();
    void framesBeforeRunningAreNotForUs();
    void nothingIsNoFrame();
    void lostLinkIsAnInterfaceErrorOnce();
    void lossBeforeRunningIsNotForgotten();
    void closingFromAReceivingSlotTakesPlaceLater();
    void adapterReopenedBeforeALateCloseStaysOpen();
    void adapterEndsWhileFramesArrive();
    void errorFrameMovesTheState();
    void frameForAControllerThatIsOffTheBusIsLost();
    void virtualLinkIsNeverOffTheBus();
    void otherSettingsAreToldAndTakenOver_data();
    void otherSettingsAreToldAndTakenOver();
    void settingsThatTheLinkCannotTellOfAreNoOthers();
    void optionsHaveDefaults_data();
    void optionsHaveDefaults();
    void wholeStateOfALinkIsStoredAsOneBitrate_data();
    void wholeStateOfALinkIsStoredAsOneBitrate();
    void whatTheSystemDictatesMakesNoDifference_data();
    void whatTheSystemDictatesMakesNoDifference();
    void whatTheUserChoosesMakesADifference();
    void limitsOfALinkThatIsNotThereAreNone();
};

void TestSocketCanAdapter::linkThatIsNotThereIsAnInvalidDevice()
{
    SocketCanAdapter adapter(QStringLiteral("nolink0"));
    QCOMPARE(adapter.open(), int(Adapter::OpenInvalidDevice));
    QVERIFY(adapter.errorText().contains(QStringLiteral("\"nolink0\"")));
    QVERIFY(!adapter.getRunning());
    adapter.setRunning(true);
    QVERIFY(!adapter.getRunning());
    QCOMPARE(write(adapter, message(1)), Adapter::WriteNotOpen);
}

void TestSocketCanAdapter::framesTravelBothWays()
{
    InjectedAdapter adapter;
    AdapterRecord record(adapter);
    QVERIFY(adapter.start());
    QVERIFY(adapter.peer->send(0x123));
    QVERIFY(record.waitForFrames(1));
    QVERIFY(record.frames().first() == message(0x123));
    QVERIFY(record.received().front().timeStamp.seconds > 0);
    QCOMPARE(write(adapter, message(0x124)), Adapter::WriteOk);
    QCOMPARE(adapter.peer->receive(), 0x124u);
    QCOMPARE(adapter.framesReceived(), quint64(1));
    QCOMPARE(adapter.framesSent(), quint64(1));
}

void TestSocketCanAdapter::framesBeforeRunningAreNotForUs()
{
    InjectedAdapter adapter;
    AdapterRecord record(adapter);
    QCOMPARE(adapter.open(), int(Adapter::OpenOk));
    QCOMPARE(write(adapter, message(1)), Adapter::WriteNotOpen);
    adapter.setRunning(true);
    QVERIFY(adapter.peer->send(2));
    QVERIFY(record.waitForFrames(1));
    adapter.setRunning(false);
    QVERIFY(!adapter.getRunning());
    QCOMPARE(write(adapter, message(1)), Adapter::WriteNotOpen);
}

void TestSocketCanAdapter::nothingIsNoFrame()
{
    InjectedAdapter adapter;
    QVERIFY(adapter.start());
    QCOMPARE(adapter.write(nullptr), Adapter::WriteInvalidFrame);
    QCOMPARE(adapter.framesLost(), quint64(1));
}

void TestSocketCanAdapter::lostLinkIsAnInterfaceErrorOnce()
{
    InjectedAdapter adapter;
    AdapterRecord record(adapter);
    for (int round = 1; round <= 3; ++round) {
        QVERIFY(adapter.start());
        adapter.peer->close();
        QTRY_COMPARE(record.errors(), round);
        QTRY_VERIFY(!adapter.getRunning());
        QVERIFY(!adapter.errorText().isEmpty());
        QCOMPARE(write(adapter, message(1)), Adapter::WriteNotOpen);
        adapter.close();
    }
    QCOMPARE(record.errors(), 3);
}

void TestSocketCanAdapter::lossBeforeRunningIsNotForgotten()
{
    InjectedAdapter adapter;
    AdapterRecord record(adapter);
    QCOMPARE(adapter.open(), int(Adapter::OpenOk));
    adapter.peer->close();
    QTRY_COMPARE(record.errors(), 1);
    adapter.setRunning(true);
    QVERIFY(!adapter.getRunning());
}

void TestSocketCanAdapter::closingFromAReceivingSlotTakesPlaceLater()
{
    InjectedAdapter adapter;
    std::atomic<int> frames{0};
    QObject context;
    QObject::connect(
        &adapter, &Adapter::newCanMessage, &context,
        [&] {
            ++frames;
            adapter.close();
        },
        Qt::DirectConnection);
    QVERIFY(adapter.start());
    QVERIFY(adapter.peer->send(1) && adapter.peer->send(2));
    QTRY_VERIFY(!adapter.getRunning());
    QCOMPARE(frames.load(), 1);
}

void TestSocketCanAdapter::adapterReopenedBeforeALateCloseStaysOpen()
{
    InjectedAdapter adapter;
    std::atomic<bool> closed{false};
    QObject context;
    QObject::connect(
        &adapter, &Adapter::newCanMessage, &context,
        [&] {
            adapter.close();
            closed = true;
        },
        Qt::DirectConnection);
    QVERIFY(adapter.start());
    QVERIFY(adapter.peer->send(1));
    while (!closed)
        std::this_thread::yield();
    context.disconnect(&adapter);
    QVERIFY(adapter.start());
    QCoreApplication::processEvents();
    QVERIFY(adapter.getRunning());
    QCOMPARE(write(adapter, message(1)), Adapter::WriteOk);
    adapter.close();
}

void TestSocketCanAdapter::adapterEndsWhileFramesArrive()
{
    for (int round = 0; round < 20; ++round) {
        auto adapter = std::make_unique<InjectedAdapter>();
        std::atomic<int> frames{0};
        QObject context;
        QObject::connect(
            adapter.get(), &Adapter::newCanMessage, &context, [&] { ++frames; }, Qt::DirectConnection);
        QVERIFY(adapter->start());
        SocketPeer &peer = *adapter->peer;
        for (quint32 id = 0; id < 50; ++id)
            QVERIFY(peer.send(id));
        adapter.reset();
        const int atTheEnd = frames;
        QCoreApplication::processEvents();
        QCOMPARE(frames.load(), atTheEnd);
    }
}

void TestSocketCanAdapter::errorFrameMovesTheState()
{
    InjectedAdapter adapter;
    QList<CAN::CanState> states;
    std::mutex mutex;
    QObject context;
    QObject::connect(
        &adapter, &Adapter::newCanState, &context,
        [&](CAN::CanState state) {
            const std::lock_guard lock(mutex);
            states.append(state);
        },
        Qt::DirectConnection);
    AdapterRecord record(adapter);
    QVERIFY(adapter.start());
    for (const quint32 id :
         {CAN_ERR_FLAG | CAN_ERR_BUSOFF, CAN_ERR_FLAG | CAN_ERR_BUSOFF, CAN_ERR_FLAG | CAN_ERR_RESTARTED, 0x123u})
        QVERIFY(adapter.peer->send(id));
    QVERIFY(record.waitForFrames(1));
    const std::lock_guard lock(mutex);
    QCOMPARE(states, (QList<CAN::CanState>{CAN::CanStateBusOff, CAN::CanStateErrorActive}));
    QCOMPARE(record.frames().size(), 1);
    QCOMPARE(adapter.framesReceived(), quint64(1));
}

void TestSocketCanAdapter::frameForAControllerThatIsOffTheBusIsLost()
{
    InjectedAdapter adapter;
    adapter.link.hasController = true;
    adapter.setCanAdapterOption(Adapter::OptionLogErrorFrames, true);
    AdapterRecord record(adapter);
    QVERIFY(adapter.start());
    QVERIFY(adapter.peer->send(CAN_ERR_FLAG | CAN_ERR_BUSOFF));
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(write(adapter, message(1)), Adapter::WriteLost);
    QCOMPARE(adapter.framesLost(), quint64(1));
    QVERIFY(adapter.peer->send(CAN_ERR_FLAG | CAN_ERR_RESTARTED));
    QVERIFY(record.waitForFrames(2));
    QCOMPARE(write(adapter, message(1)), Adapter::WriteOk);
}

void TestSocketCanAdapter::virtualLinkIsNeverOffTheBus()
{
    InjectedAdapter adapter;
    adapter.setCanAdapterOption(Adapter::OptionLogErrorFrames, true);
    AdapterRecord record(adapter);
    QVERIFY(adapter.start());
    QVERIFY(adapter.peer->send(CAN_ERR_FLAG | CAN_ERR_BUSOFF));
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(write(adapter, message(1)), Adapter::WriteOk);
}

void TestSocketCanAdapter::otherSettingsAreToldAndTakenOver_data()
{
    QTest::addColumn<int>("wantedBitrate");
    QTest::addColumn<int>("wantedFdBitrate");
    QTest::addColumn<bool>("wantsFd");
    QTest::addColumn<bool>("linkIsFd");
    QTest::addColumn<int>("result");
    const int ok = Adapter::OpenOk;
    const int others = Adapter::OpenOtherSettings;
    QTest::newRow("no wish") << 0 << 0 << false << false << ok;
    QTest::newRow("as it is") << 500 << 2000 << true << true << ok;
    QTest::newRow("other bitrate") << 250 << 2000 << true << true << others;
    QTest::newRow("other data bitrate") << 500 << 4000 << true << true << others;
    QTest::newRow("other data bitrate that is not used") << 500 << 4000 << false << true << ok;
    QTest::newRow("classic on CAN FD") << 500 << 0 << false << true << ok;
    QTest::newRow("CAN FD on classic") << 500 << 0 << true << false << others;
}

void TestSocketCanAdapter::otherSettingsAreToldAndTakenOver()
{
    QFETCH(int, wantedBitrate);
    QFETCH(int, wantedFdBitrate);
    QFETCH(bool, wantsFd);
    QFETCH(bool, linkIsFd);
    QFETCH(int, result);
    InjectedAdapter adapter;
    adapter.link.timing.bitrate = 500000;
    adapter.link.dataTiming.bitrate = 2000000;
    adapter.link.mtu = linkIsFd ? CANFD_MTU : CAN_MTU;
    adapter.setCanAdapterOption(Adapter::OptionUseCanFd, wantsFd);
    adapter.setBitrate(quint16(wantedBitrate));
    adapter.setFdBitrate(quint16(wantedFdBitrate));
    QCOMPARE(adapter.open(), result);
    if (result == Adapter::OpenOtherSettings) {
        QCOMPARE(bitrate(adapter, Adapter::OptionBitrate), quint16(500));
        QCOMPARE(bitrate(adapter, Adapter::OptionFdBitrate), quint16(linkIsFd ? 2000 : 0));
        QCOMPARE(adapter.getCanAdapterOption(Adapter::OptionUseCanFd), QVariant(linkIsFd));
    }
}

void TestSocketCanAdapter::settingsThatTheLinkCannotTellOfAreNoOthers()
{
    InjectedAdapter adapter;
    adapter.setBitrate(250);
    QCOMPARE(adapter.open(), int(Adapter::OpenOk));
}

void TestSocketCanAdapter::optionsHaveDefaults_data()
{
    QTest::addColumn<unsigned int>("option");
    QTest::addColumn<QVariant>("value");
    for (const Adapter::AdapterOption flag :
         {Adapter::OptionUseCanFd, Adapter::OptionAutoBusOn, Adapter::OptionLogErrorFrames,
          Adapter::OptionContinuousSystemTime, Adapter::OptionSystemTimestamp, Adapter::OptionListenOnly,
          Adapter::OptionForcedEcho})
        QTest::addRow("option %u", flag) << unsigned(flag) << QVariant(false);
    QTest::newRow("type") << unsigned(Adapter::OptionAdapterType) << QVariant(1u);
    QTest::newRow("device") << unsigned(Adapter::OptionDeviceName) << QVariant(QStringLiteral("can0|test"));
    QTest::newRow("partner") << unsigned(Adapter::OptionLinkedAdapter) << QVariant(0u);
}

void TestSocketCanAdapter::optionsHaveDefaults()
{
    QFETCH(unsigned int, option);
    QFETCH(QVariant, value);
    InjectedAdapter adapter;
    QCOMPARE(adapter.getCanAdapterOption(Adapter::AdapterOption(option)), value);
    QVERIFY(adapter.getSupportedOptions().contains(Adapter::AdapterOption(option)));
}

void TestSocketCanAdapter::wholeStateOfALinkIsStoredAsOneBitrate_data()
{
    QTest::addColumn<Adapter::SocketCANProps>("props");
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<int>("fdBitrate");
    QTest::newRow("CAN FD") << Adapter::SocketCANProps{true, 500, 2000, 0} << 500 << 2000;
    QTest::newRow("classic") << Adapter::SocketCANProps{false, 125, 0, 100} << 125 << 0;
    QTest::newRow("none") << Adapter::SocketCANProps{true, 0, 0, 0} << 0 << 0;
}

void TestSocketCanAdapter::wholeStateOfALinkIsStoredAsOneBitrate()
{
    QFETCH(Adapter::SocketCANProps, props);
    QFETCH(int, bitrate);
    QFETCH(int, fdBitrate);
    InjectedAdapter adapter;
    for (const Adapter::AdapterOption option : {Adapter::OptionBitrate, Adapter::OptionFdBitrate}) {
        adapter.setCanAdapterOption(option, QVariant::fromValue(props));
        QCOMPARE(adapter.getCanAdapterOption(option).userType(), qMetaTypeId<CAN::CANBitrateDesc>());
    }
    QCOMPARE(int(::bitrate(adapter, Adapter::OptionBitrate)), bitrate);
    QCOMPARE(int(::bitrate(adapter, Adapter::OptionFdBitrate)), fdBitrate);
}

void TestSocketCanAdapter::whatTheSystemDictatesMakesNoDifference_data()
{
    QTest::addColumn<unsigned int>("option");
    QTest::addColumn<QVariant>("value");
    const QVariant rate = QVariant::fromValue(CAN::CANBitrateDesc(QString(), 33));
    QTest::newRow("CAN FD") << unsigned(Adapter::OptionUseCanFd) << QVariant(true);
    QTest::newRow("auto bus on") << unsigned(Adapter::OptionAutoBusOn) << QVariant(true);
    QTest::newRow("data bitrate") << unsigned(Adapter::OptionFdBitrate) << rate;
    QTest::newRow("bitrate") << unsigned(Adapter::OptionBitrate) << rate;
}

void TestSocketCanAdapter::whatTheSystemDictatesMakesNoDifference()
{
    QFETCH(unsigned int, option);
    QFETCH(QVariant, value);
    InjectedAdapter a;
    InjectedAdapter b;
    QVERIFY(a == b);
    a.setCanAdapterOption(Adapter::AdapterOption(option), value);
    QVERIFY(a == b && b == a);
}

void TestSocketCanAdapter::whatTheUserChoosesMakesADifference()
{
    InjectedAdapter a;
    InjectedAdapter b;
    b.setCanAdapterOption(Adapter::OptionLogErrorFrames, true);
    QVERIFY(a != b);
    const InjectedAdapter other(QStringLiteral("can1"));
    QVERIFY(a != other);
}

void TestSocketCanAdapter::limitsOfALinkThatIsNotThereAreNone()
{
    SocketCanAdapter adapter(QStringLiteral("nolink0"));
    QVERIFY(!adapter.getThresholds(false).valid);
    QVERIFY(!adapter.getThresholds(true).valid);
}

QTEST_GUILESS_MAIN(TestSocketCanAdapter)
#include "tst_socketcanadapter.moc"
