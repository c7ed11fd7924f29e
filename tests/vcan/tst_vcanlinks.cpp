#include "slcanpair.h"

using Adapter = AbstractCanAdapter;

namespace {
constexpr int soon = 100; // ms

QVariant rate(Adapter &adapter, Adapter::AdapterOption option)
{
    return CAN::CANBitrateDesc(adapter.getCanAdapterOption(option)).bitrate;
}
} // namespace

/// Links that come, go, and fail.
class TestVcanLinks : public QObject
{
    Q_OBJECT

private slots:
    void linkThatIsNoneIsAnInvalidDevice_data();
    void linkThatIsNoneIsAnInvalidDevice();
    void linkThatIsDownIsBusyAndSaysHowToSwitchItOn();
    void openingLeavesTheLinkAsItIs();
    void devicesAreTheLinksUpOrDown();
    void systemTellsOfItsLinks();
    void bitratesOfTheFamilyHoldThoseOfTheLinks();
    void linkThatGoesDownBeforeRunningIsAnInterfaceErrorToo();
    void controllerStatesAreTold();
    void firstStateComesByItself();
    void frameForAControllerThatIsOffTheBusCountsAsLost();
    void fullQueueIsWaitedForAndLostInTheEnd();
    void notifierTellsOfLinksThatComeAndGo();
};

void TestVcanLinks::linkThatIsNoneIsAnInvalidDevice_data()
{
    QTest::addColumn<QString>("device");
    QTest::newRow("unknown") << QStringLiteral("vcan77");
    QTest::newRow("empty") << QString();
    QTest::newRow("blank") << QStringLiteral("  ");
    QTest::newRow("bar only") << QStringLiteral("|vcan0");
    QTest::newRow("no CAN link") << QStringLiteral("lo");
    QTest::newRow("longer than any name") << QString(300, QLatin1Char('v'));
    QTest::newRow("not Latin") << QString::fromUtf8("вкан0");
}

void TestVcanLinks::linkThatIsNoneIsAnInvalidDevice()
{
    QFETCH(QString, device);
    const Vcan::AdapterPtr adapter(CanAdapterFactory::createCanAdapter(Adapter::CanAdapterSocketCan, device));
    QCOMPARE(adapter->open(), int(Adapter::OpenInvalidDevice));
    QVERIFY(!adapter->errorText().isEmpty());
    QCOMPARE(CanAdapterFactory::getSocketCanProps(device).bitrate, quint16(0));
}

void TestVcanLinks::linkThatIsDownIsBusyAndSaysHowToSwitchItOn()
{
    QVERIFY(Vcan::run("ip link set vcan1 down"));
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan1");
    QCOMPARE(adapter->open(), int(Adapter::OpenBusy));
    QVERIFY(adapter->errorText().contains(QStringLiteral("ip link set vcan1 up")));
    QVERIFY(Vcan::run("ip link set vcan1 up"));
    QCOMPARE(adapter->open(), int(Adapter::OpenOk));
    QVERIFY(adapter->errorText().isEmpty());
}

void TestVcanLinks::openingLeavesTheLinkAsItIs()
{
    const SlcanPair lines;
    QVERIFY(lines.isReady());
    const QByteArray before = Vcan::outputOf("ip -d link show slcan0");
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("slcan0");
    adapter->setBitrate(250);
    QCOMPARE(adapter->open(), int(Adapter::OpenOtherSettings));
    adapter->setRunning(true);
    QCOMPARE(rate(*adapter, Adapter::OptionBitrate), QVariant(500));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionUseCanFd), QVariant(false));
    QCOMPARE(Vcan::outputOf("ip -d link show slcan0"), before);
    QVERIFY(before.contains("bitrate 500000"));
}

void TestVcanLinks::devicesAreTheLinksUpOrDown()
{
    QVERIFY(Vcan::run("ip link add vcan5 type vcan") && Vcan::run("ip link set vcan5 mtu 16"));
    constexpr unsigned int always = Adapter::FeatureErrorFrames | Adapter::FeatureListenOnly;
    const QMap<QString, unsigned int> expected = {{QStringLiteral("vcan0"), always | Adapter::FeatureCanFd},
                                                  {QStringLiteral("vcan1"), always | Adapter::FeatureCanFd},
                                                  {QStringLiteral("vcan5"), always}};
    QCOMPARE(CanAdapterFactory::getAdvInterfaceList(Adapter::CanAdapterSocketCan), expected);
    QVERIFY(CanAdapterFactory::isInterfaceFd(Adapter::CanAdapterSocketCan, QStringLiteral("vcan0")));
    QVERIFY(!CanAdapterFactory::isInterfaceFd(Adapter::CanAdapterSocketCan, QStringLiteral("vcan5")));
    QVERIFY(Vcan::run("ip link del vcan5"));
}

void TestVcanLinks::systemTellsOfItsLinks()
{
    const SlcanPair lines;
    QVERIFY(lines.isReady());
    const Adapter::SocketCANProps serial = CanAdapterFactory::getSocketCanProps(QStringLiteral("slcan0"));
    QVERIFY(serial == (Adapter::SocketCANProps{false, 500, 0, 0}));
    const Adapter::SocketCANProps virtualLink = CanAdapterFactory::getSocketCanProps(QStringLiteral("vcan0"));
    QVERIFY(virtualLink == (Adapter::SocketCANProps{true, 0, 0, 0}));
}

void TestVcanLinks::bitratesOfTheFamilyHoldThoseOfTheLinks()
{
    const SlcanPair lines;
    QVERIFY(lines.isReady());
    int matches = 0;
    for (const CAN::CANBitrateDesc &entry :
         CanAdapterFactory::getSupportedBitrates(Adapter::CanAdapterSocketCan, false))
        matches += entry.bitrate == 500 ? 1 : 0;
    QCOMPARE(matches, 1);
}

void TestVcanLinks::linkThatGoesDownBeforeRunningIsAnInterfaceErrorToo()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan1");
    AdapterRecord record(*adapter);
    QCOMPARE(adapter->open(), int(Adapter::OpenOk));
    QVERIFY(Vcan::run("ip link set vcan1 down"));
    QTRY_COMPARE_WITH_TIMEOUT(record.errors(), 1, soon);
    adapter->setRunning(true);
    QVERIFY(!adapter->getRunning());
    QVERIFY(Vcan::run("ip link set vcan1 up"));
}

void TestVcanLinks::controllerStatesAreTold()
{
    SlcanPair lines;
    QVERIFY(lines.isReady());
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("slcan0", false);
    Vcan::StateRecord states(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QTRY_COMPARE(states.states(), (QList<CAN::CanState>{CAN::CanStateErrorActive}));
    lines.say("sw000128");
    QTRY_COMPARE(states.states().size(), 2);
    lines.say("sp000200");
    QTRY_COMPARE(states.states().size(), 3);
    lines.say("sa000000");
    QTRY_COMPARE(states.states().size(), 4);
    QCOMPARE(states.states(),
             (QList<CAN::CanState>{CAN::CanStateErrorActive, CAN::CanStateErrorWarning, CAN::CanStateErrorPassive,
                                   CAN::CanStateErrorActive}));
    const CanTimeStamp distance = states.entries().at(0).second.timeDifference(states.entries().at(3).second);
    QVERIFY(distance.seconds >= 0 && distance.microseconds >= 0 && distance.seconds < 10);
    adapter->close();
}

void TestVcanLinks::firstStateComesByItself()
{
    SlcanPair lines;
    QVERIFY(lines.isReady());
    lines.say("sp000200");
    QTRY_VERIFY(Vcan::outputOf("ip -d link show slcan0").contains("ERROR-PASSIVE"));
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("slcan0", false);
    Vcan::StateRecord states(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QTRY_COMPARE(states.states(), (QList<CAN::CanState>{CAN::CanStateErrorPassive}));
    adapter->close();
}

void TestVcanLinks::frameForAControllerThatIsOffTheBusCountsAsLost()
{
    SlcanPair lines;
    QVERIFY(lines.isReady());
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("slcan0", false);
    Vcan::StateRecord states(*adapter);
    QVERIFY(Vcan::start(*adapter));
    lines.say("sb000255");
    QTRY_VERIFY(states.states().contains(CAN::CanStateBusOff));
    CAN::CanMessage message;
    QCOMPARE(adapter->write(&message), Adapter::WriteLost);
    QCOMPARE(adapter->framesLost(), quint64(1));
    adapter->close();
}

void TestVcanLinks::fullQueueIsWaitedForAndLostInTheEnd()
{
    SlcanPair lines;
    QVERIFY(lines.isReady());
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("slcan0", false);
    QVERIFY(Vcan::start(*adapter));
    lines.freeze();
    CAN::CanMessage message;
    QElapsedTimer elapsed;
    do {
        elapsed.start();
    } while (adapter->write(&message) == Adapter::WriteOk);
    QVERIFY(elapsed.elapsed() >= 990 && elapsed.elapsed() < 1500);
    QCOMPARE(adapter->framesLost(), quint64(1));
    // Nobody waits for what is known to be stuck.
    elapsed.start();
    QCOMPARE(adapter->write(&message), Adapter::WriteLost);
    QVERIFY(elapsed.elapsed() < 500);
    QVERIFY(adapter->getRunning());
    adapter->close();
}

void TestVcanLinks::notifierTellsOfLinksThatComeAndGo()
{
    QSignalSpy spy(CanAdapterFactory::notifier(), &CanAdapterNotifier::devicesChanged);
    const QList<QVariantList> once = {{QVariant::fromValue(Adapter::CanAdapterSocketCan)}};
    QVERIFY(Vcan::run("ip link add vcan7 type vcan"));
    QTRY_VERIFY(!spy.isEmpty());
    QVERIFY(CanAdapterFactory::getAdvInterfaceList(Adapter::CanAdapterSocketCan).contains(QStringLiteral("vcan7")));
    spy.clear();
    // Up and down make no other list.
    QVERIFY(Vcan::run("ip link set vcan7 up") && Vcan::run("ip link set vcan7 down") && Vcan::run("ip link del vcan7"));
    QTRY_COMPARE(spy, once);
    QVERIFY(!CanAdapterFactory::getAdvInterfaceList(Adapter::CanAdapterSocketCan).contains(QStringLiteral("vcan7")));
}

QTEST_GUILESS_MAIN(TestVcanLinks)
#include "tst_vcanlinks.moc"
