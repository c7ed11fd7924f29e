#include "linkmessage.h"

#include <QtTest>

#include <algorithm>
#include <cstring>

using Adapter = AbstractCanAdapter;
using Props = Adapter::SocketCANProps;
using Message = LinkMessage;

Q_DECLARE_METATYPE(CAN::CanState)
Q_DECLARE_METATYPE(CAN::CANBitTimingThresholds)

namespace {
can_bittiming_const limitsOf(const char *controller)
{
    can_bittiming_const limits = {};
    std::copy_n(controller, qMin(std::strlen(controller) + 1, sizeof limits.name), limits.name);
    limits.tseg1_min = 2;
    limits.tseg1_max = 256;
    limits.tseg2_min = 1;
    limits.tseg2_max = 128;
    limits.sjw_max = 100;
    limits.brp_min = 3;
    limits.brp_max = 512;
    limits.brp_inc = 1;
    return limits;
}
} // namespace

class TestLinkProperties : public QObject
{
    Q_OBJECT

private slots:
    void serialLineTellsItsBitrateAndItsState();
    void virtualLinkTellsNoBitrate();
    void linkThatIsDownIsALinkAllTheSame();
    void otherLinksAreNone();
    void noticesTellWhetherTheLinkIsGone();
    void damagedMessageIsNoLinkOrAnotherOne_data();
    void damagedMessageIsNoLinkOrAnotherOne();
    void propsAreWhatTheSystemSays_data();
    void propsAreWhatTheSystemSays();
    void dataOfOtherKindsIsNotRead();
    void shortAttributeCountsAsMissing();
    void limitsAreThoseOfEachPhase();
    void limitsFitTheirRecord();
    void limitsWithoutAClockAreNotValid();
    void linkWithoutLimitsHasNone();
    void featuresFollowWhatTheDriverAllows_data();
    void featuresFollowWhatTheDriverAllows();
    void deviceTextNamesTheController_data();
    void deviceTextNamesTheController();
    void linkNameEndsAtTheBar_data();
    void linkNameEndsAtTheBar();
    void statesAreTranslated_data();
    void statesAreTranslated();
};

void TestLinkProperties::serialLineTellsItsBitrateAndItsState()
{
    const std::optional<LinkNotice> notice = parse(recordedMessage("slcan"));
    QVERIFY(notice && !notice->isGone);
    QCOMPARE(notice->link.name, QStringLiteral("slcan0"));
    QCOMPARE(notice->link.index, 4);
    QVERIFY(notice->link.isUp && notice->link.hasController && !notice->link.isFd());
    QVERIFY(notice->link.props() == (Props{false, 500, 0, 0}));
    QVERIFY(notice->link.controllerState() == CAN::CanStateErrorActive);
    // Listen only is all that its driver can do.
    QCOMPARE(notice->link.allowedModes.value_or(0), quint32(CAN_CTRLMODE_LISTENONLY));
    QVERIFY(!notice->link.thresholds(false).valid);
}

void TestLinkProperties::virtualLinkTellsNoBitrate()
{
    const std::optional<LinkNotice> notice = parse(recordedMessage("vcan"));
    QVERIFY(notice);
    QCOMPARE(notice->link.name, QStringLiteral("vcan0"));
    QVERIFY(notice->link.isUp && !notice->link.hasController);
    QVERIFY(notice->link.props() == (Props{true, 0, 0, 0}));
    QVERIFY(!notice->link.controllerState());
}

void TestLinkProperties::linkThatIsDownIsALinkAllTheSame()
{
    const std::optional<LinkNotice> notice = parse(recordedMessage("vcan_down_classic"));
    QVERIFY(notice);
    QCOMPARE(notice->link.deviceText(), QStringLiteral("vcan5"));
    QVERIFY(!notice->link.isUp && !notice->link.isFd());
}

void TestLinkProperties::otherLinksAreNone()
{
    QVERIFY(!recordedMessage("lo").isEmpty());
    QVERIFY(!parse(recordedMessage("lo")));
}

void TestLinkProperties::noticesTellWhetherTheLinkIsGone()
{
    for (const char *name : {"vcan_new", "vcan_up", "vcan_gone"}) {
        const std::optional<LinkNotice> notice = parse(recordedMessage(name));
        QVERIFY(notice);
        QCOMPARE(notice->link.name, QStringLiteral("vcan7"));
        QCOMPARE(notice->isGone, qstrcmp(name, "vcan_gone") == 0);
        QCOMPARE(notice->link.isUp, qstrcmp(name, "vcan_up") == 0);
    }
}

void TestLinkProperties::damagedMessageIsNoLinkOrAnotherOne_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("serial line") << recordedMessage("slcan");
    QTest::newRow("virtual link") << recordedMessage("vcan");
    QTest::newRow("notice") << recordedMessage("vcan_gone");
}

void TestLinkProperties::damagedMessageIsNoLinkOrAnotherOne()
{
    QFETCH(QByteArray, message);
    const QString name = parse(message)->link.name;
    int named = 0;
    for (int size = int(sizeof(nlmsghdr)); size < message.size(); ++size) {
        QByteArray cut = message.left(size);
        reinterpret_cast<nlmsghdr *>(cut.data())->nlmsg_len = quint32(size);
        const std::optional<LinkNotice> notice = parse(cut);
        named += notice && notice->link.name == name ? 1 : 0;
    }
    QVERIFY(named > 0);
    for (int position = sizeof(nlmsghdr); position < message.size(); ++position) {
        for (const char value : {'\x00', '\x01', '\x7F', '\xFF'}) {
            QByteArray bent = message;
            bent[position] = value;
            const std::optional<LinkNotice> notice = parse(bent);
            QVERIFY(!notice || !notice->link.deviceText().isEmpty());
        }
    }
}

void TestLinkProperties::propsAreWhatTheSystemSays_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<Props>("props");
    const auto add = [](const char *name, Message message, Props props) {
        QTest::newRow(name) << message.withState(CAN_STATE_ERROR_ACTIVE).bytes() << props;
    };
    constexpr auto fd = CAN_CTRLMODE_FD;
    constexpr int data = IFLA_CAN_DATA_BITTIMING;
    add("never set up", Message(), {false, 0, 0, 0});
    add("classic", Message().withBitrate(125000).with(IFLA_CAN_RESTART_MS, 100u), {false, 125, 0, 100});
    add("CAN FD by its mode", Message().withBitrate(500000).withModes(fd).withBitrate(2000000, data),
        {true, 500, 2000, 0});
    add("CAN FD by its size of frames", Message("can0", CANFD_MTU).withBitrate(500000).withBitrate(4000000, data),
        {true, 500, 4000, 0});
    add("data bitrate left over from CAN FD", Message().withBitrate(500000).withBitrate(2000000, data),
        {false, 500, 0, 0});
    add("rounded down", Message().withBitrate(83333), {false, 83, 0, 0});
    add("rounded up", Message().withBitrate(33500), {false, 34, 0, 0});
    add("slower than one", Message().withBitrate(1), {false, 1, 0, 0});
    add("largest", Message().withBitrate(65535000), {false, 65535, 0, 0});
    add("beyond the largest", Message().withBitrate(0xFFFFFFFF), {false, 65535, 0, 0});
    add("long restart time", Message().withBitrate(10000).with(IFLA_CAN_RESTART_MS, 70000u), {false, 10, 0, 65535});
}

void TestLinkProperties::propsAreWhatTheSystemSays()
{
    QFETCH(QByteArray, message);
    QFETCH(Props, props);
    QVERIFY(parse(message)->link.props() == props);
}

void TestLinkProperties::dataOfOtherKindsIsNotRead()
{
    const LinkProperties link = Message("vx0", CAN_MTU, "vxcan").withBitrate(500000).withState(0).link();
    QCOMPARE(link.name, QStringLiteral("vx0"));
    QVERIFY(!link.hasController);
    QCOMPARE(link.props().bitrate, quint16(0));
}

void TestLinkProperties::shortAttributeCountsAsMissing()
{
    const LinkProperties link = Message()
                                    .with(IFLA_CAN_BITTIMING, quint16(500))
                                    .with(IFLA_CAN_BITTIMING_CONST, quint8(1))
                                    .with(IFLA_CAN_STATE, quint8(0))
                                    .link();
    QCOMPARE(link.props().bitrate, quint16(0));
    QVERIFY(!link.thresholds(false).valid);
    QVERIFY(!link.controllerState());
}

void TestLinkProperties::limitsAreThoseOfEachPhase()
{
    can_bittiming_const dataLimits = limitsOf("m_can");
    dataLimits.tseg1_max = 32;
    const LinkProperties link = Message()
                                    .with(IFLA_CAN_BITTIMING_CONST, limitsOf("m_can"))
                                    .with(IFLA_CAN_DATA_BITTIMING_CONST, dataLimits)
                                    .with(IFLA_CAN_CLOCK, can_clock{80000000})
                                    .link();
    CAN::CANBitTimingThresholds expected;
    expected.clockFrequency = 80;
    expected.preScalerMin = 3;
    expected.preScalerMax = 512;
    expected.tSeg1Min = 2;
    expected.tSeg1Max = 256;
    expected.tSeg2Min = 1;
    expected.tSeg2Max = 128;
    expected.sjwMax = 100;
    expected.valid = true;
    QCOMPARE(link.thresholds(false), expected);
    expected.tSeg1Max = 32;
    QCOMPARE(link.thresholds(true), expected);
}

void TestLinkProperties::limitsFitTheirRecord()
{
    can_bittiming_const limits = limitsOf("x");
    limits.brp_max = 65536;
    limits.sjw_max = 0xFFFFFFFF;
    const LinkProperties link =
        Message().with(IFLA_CAN_BITTIMING_CONST, limits).with(IFLA_CAN_CLOCK, can_clock{4000000000}).link();
    QCOMPARE(link.thresholds(false).preScalerMax, qint16(32767));
    QCOMPARE(link.thresholds(false).sjwMax, qint16(32767));
    QCOMPARE(link.thresholds(false).clockFrequency, quint16(4000));
}

void TestLinkProperties::limitsWithoutAClockAreNotValid()
{
    QVERIFY(!Message().with(IFLA_CAN_BITTIMING_CONST, limitsOf("x")).link().thresholds(false).valid);
}

void TestLinkProperties::linkWithoutLimitsHasNone()
{
    const LinkProperties link =
        Message().with(IFLA_CAN_BITTIMING_CONST, limitsOf("x")).with(IFLA_CAN_CLOCK, can_clock{80000000}).link();
    QVERIFY(link.thresholds(false).valid);
    QCOMPARE(link.thresholds(true), CAN::CANBitTimingThresholds());
}

void TestLinkProperties::featuresFollowWhatTheDriverAllows_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<unsigned int>("features");
    constexpr unsigned int errors = Adapter::FeatureErrorFrames;
    constexpr unsigned int listen = errors | Adapter::FeatureListenOnly;
    constexpr unsigned int fd = Adapter::FeatureCanFd;
    const auto controller = [] { return Message().withState(0); };
    QTest::newRow("nothing allowed") << controller().withAllowedModes(0).bytes() << errors;
    QTest::newRow("listen only") << controller().withAllowedModes(CAN_CTRLMODE_LISTENONLY).bytes() << listen;
    QTest::newRow("CAN FD that is off") << controller().withAllowedModes(CAN_CTRLMODE_FD).bytes() << (errors | fd);
    QTest::newRow("CAN FD that is on, and so cannot be chosen")
        << controller().withAllowedModes(0).withModes(CAN_CTRLMODE_FD).bytes() << (errors | fd);
    QTest::newRow("older kernel, classic controller") << controller().bytes() << listen;
    QTest::newRow("older kernel, CAN FD controller")
        << controller().with(IFLA_CAN_DATA_BITTIMING_CONST, limitsOf("x")).bytes() << (listen | fd);
    QTest::newRow("restart after bus off") << controller().withAllowedModes(0).with(IFLA_CAN_RESTART_MS, 1u).bytes()
                                           << (errors | Adapter::FeatureAutoBusOnDefault);
    QTest::newRow("virtual") << recordedMessage("vcan_down_classic") << listen;
    QTest::newRow("virtual, CAN FD") << recordedMessage("vcan") << (listen | fd);
}

void TestLinkProperties::featuresFollowWhatTheDriverAllows()
{
    QFETCH(QByteArray, message);
    QFETCH(unsigned int, features);
    QCOMPARE(parse(message)->link.features(), features);
}

void TestLinkProperties::deviceTextNamesTheController_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("text");
    const auto named = [](const char *controller) {
        return Message().with(IFLA_CAN_BITTIMING_CONST, limitsOf(controller)).bytes();
    };
    QTest::newRow("controller") << named("mcp251xfd") << QStringLiteral("can0|mcp251xfd");
    QTest::newRow("name that fills its field") << named("sixteen_letters_") << QStringLiteral("can0|sixteen_letters_");
    QTest::newRow("controller without a name") << named("") << QStringLiteral("can0");
    QTest::newRow("no controller") << recordedMessage("vcan") << QStringLiteral("vcan0");
}

void TestLinkProperties::deviceTextNamesTheController()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, text);
    QCOMPARE(parse(message)->link.deviceText(), text);
}

void TestLinkProperties::linkNameEndsAtTheBar_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("name");
    QTest::newRow("name alone") << QStringLiteral("can0") << QStringLiteral("can0");
    QTest::newRow("with controller") << QStringLiteral("can0|pcan_usb") << QStringLiteral("can0");
    QTest::newRow("two bars") << QStringLiteral("can0|a|b") << QStringLiteral("can0");
    QTest::newRow("blanks") << QStringLiteral(" can0 | x") << QStringLiteral("can0");
    QTest::newRow("empty") << QString() << QString();
}

void TestLinkProperties::linkNameEndsAtTheBar()
{
    QFETCH(QString, device);
    QFETCH(QString, name);
    QCOMPARE(linkNameOf(device), name);
}

void TestLinkProperties::statesAreTranslated_data()
{
    QTest::addColumn<quint32>("kernelState");
    QTest::addColumn<CAN::CanState>("state");
    QTest::newRow("active") << quint32(CAN_STATE_ERROR_ACTIVE) << CAN::CanStateErrorActive;
    QTest::newRow("warning") << quint32(CAN_STATE_ERROR_WARNING) << CAN::CanStateErrorWarning;
    QTest::newRow("passive") << quint32(CAN_STATE_ERROR_PASSIVE) << CAN::CanStateErrorPassive;
    QTest::newRow("bus off") << quint32(CAN_STATE_BUS_OFF) << CAN::CanStateBusOff;
    QTest::newRow("stopped") << quint32(CAN_STATE_STOPPED) << CAN::CanStateStopped;
    QTest::newRow("sleeping") << quint32(CAN_STATE_SLEEPING) << CAN::CanStateStopped;
    QTest::newRow("unheard of") << 99u << CAN::CanStateUnknown;
}

void TestLinkProperties::statesAreTranslated()
{
    QFETCH(quint32, kernelState);
    QFETCH(CAN::CanState, state);
    QCOMPARE(Message().withState(kernelState).link().controllerState().value_or(CAN::CanStateUnknown), state);
}

QTEST_APPLESS_MAIN(TestLinkProperties)
#include "tst_linkproperties.moc"
