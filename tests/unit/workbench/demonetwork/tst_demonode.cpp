#include "demonode.h"

#include "frames.h"

#include <QtTest>

using CanOpen::NmtState;

namespace {
constexpr qint64 millisecond = 1000;
constexpr qint64 second = 1000 * millisecond;
constexpr qint64 bootTime = 20 * millisecond;

void fillCount(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    CanOpen::append<quint16>(pdo, static_cast<quint16>(sample.count));
    CanOpen::append<quint32>(pdo, static_cast<quint32>(sample.time));
}

/// A node whose frames are easily told by hand: a heartbeat each 500 ms and a PDO each 100 ms with its number and time.
DemoNodeProfile profile()
{
    return {0x05,       "Abcdef", 0x00020194, 0x11223344,     0x55667788,
            0x99AABBCC, 500,      bootTime,   {0x4200, 0x09}, {{CanOpen::cobTpdo1, 100 * millisecond, fillCount}}};
}

QStringList textsOf(const std::vector<DueFrame> &frames)
{
    QStringList texts;
    for (const DueFrame &due : frames)
        texts.append(frameText(due.message));
    return texts;
}

/// A node and the hours it lives through.
class Bench
{
public:
    explicit Bench(quint32 seed = 0)
        : node(profile(), seed)
    {
    }

    DemoNode node;

    QStringList advanceTo(qint64 time)
    {
        std::vector<DueFrame> frames;
        node.advanceTo(time, frames);
        return textsOf(frames);
    }

    /// Every frame up to that time, from deadline to deadline.
    QStringList liveUntil(qint64 time)
    {
        std::vector<DueFrame> frames;
        for (qint64 due = node.nextDue(); due <= time; due = node.nextDue())
            node.advanceTo(due, frames);
        node.advanceTo(time, frames);
        return textsOf(frames);
    }

    QStringList handle(const QString &text)
    {
        std::vector<CAN::CanMessage> answers;
        node.handle(frame(text), answers);
        return frameTexts(answers);
    }
};

QStringList withId(const QStringList &texts, const char *id)
{
    return texts.filter(QRegularExpression(QStringLiteral("^%1#").arg(QLatin1String(id))));
}
} // namespace

Q_DECLARE_METATYPE(CanOpen::NmtState)

class TestDemoNode : public QObject
{
    Q_OBJECT

private slots:
    void bootsAfterItsBootTime();
    void isDeafBeforeBootUp();
    void isOperationalAfterBootUp();
    void heartbeatTellsTheState_data();
    void heartbeatTellsTheState();
    void nmtCommandSetsTheState_data();
    void nmtCommandSetsTheState();
    void resetIsAnsweredByBootUp_data();
    void resetIsAnsweredByBootUp();
    void resetRestoresTheHeartbeatTime_data();
    void resetRestoresTheHeartbeatTime();
    void onlyResetNodeRestartsTheApplication();
    void pdosRunInOperationalOnly_data();
    void pdosRunInOperationalOnly();
    void startDoesNotDisturbARunningNode();
    void sdoIsServedUnlessStopped_data();
    void sdoIsServedUnlessStopped();
    void objectIsUploaded_data();
    void objectIsUploaded();
    void heartbeatTimeIsChangedBySdo();
    void heartbeatIsSwitchedOffAndOnBySdo();
    void missedPeriodsAreSkipped();
    void timeNeverRunsBackwards();
    void nextDueIsWhenTheNextFrameComes();
    void errorComesAndGoes();
    void errorRegisterFollowsTheError();
    void emcyWaitsWhileStopped();
    void resetNodeEndsAnErrorSilently();
    void silencedNodeHasNothingDue();
};

void TestDemoNode::bootsAfterItsBootTime()
{
    Bench bench;
    QCOMPARE(bench.node.nextDue(), bootTime);
    QCOMPARE(bench.advanceTo(bootTime - 1), QStringList());
    QCOMPARE(bench.node.state(), NmtState::BootUp);
    QCOMPARE(bench.advanceTo(bootTime), QStringList({QStringLiteral("705#00")}));
    QCOMPARE(bench.advanceTo(bootTime), QStringList());
}

void TestDemoNode::isDeafBeforeBootUp()
{
    Bench bench;
    QCOMPARE(bench.handle(QStringLiteral("605#4000100000000000")), QStringList());
    QCOMPARE(bench.handle(QStringLiteral("000#8100")), QStringList());
    QCOMPARE(bench.node.state(), NmtState::BootUp);
}

void TestDemoNode::isOperationalAfterBootUp()
{
    Bench bench;
    bench.advanceTo(bootTime);
    QCOMPARE(bench.node.state(), NmtState::Operational);
    QCOMPARE(bench.liveUntil(bootTime + 250 * millisecond),
             QStringList({QStringLiteral("185#0000A0860100"), QStringLiteral("185#0100400D0300")}));
}

void TestDemoNode::heartbeatTellsTheState_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("heartbeat");

    QTest::newRow("operational") << QStringLiteral("000#0105") << QStringLiteral("705#05");
    QTest::newRow("stopped") << QStringLiteral("000#0205") << QStringLiteral("705#04");
    QTest::newRow("pre-operational") << QStringLiteral("000#8005") << QStringLiteral("705#7F");
}

void TestDemoNode::heartbeatTellsTheState()
{
    QFETCH(QString, command);
    QFETCH(QString, heartbeat);
    Bench bench;
    bench.advanceTo(bootTime);
    QCOMPARE(bench.handle(command), QStringList());
    const QStringList heartbeats = withId(bench.liveUntil(bootTime + 1600 * millisecond), "705");
    QCOMPARE(heartbeats, QStringList({heartbeat, heartbeat, heartbeat}));
}

void TestDemoNode::nmtCommandSetsTheState_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("command");
    QTest::addColumn<NmtState>("state");

    const QString operational = QStringLiteral("000#0105");
    const QString stopped = QStringLiteral("000#0205");
    const QString preOperational = QStringLiteral("000#8005");
    QTest::newRow("start the stopped") << stopped << operational << NmtState::Operational;
    QTest::newRow("start the pre-operational") << preOperational << operational << NmtState::Operational;
    QTest::newRow("stop the operational") << operational << stopped << NmtState::Stopped;
    QTest::newRow("stop the pre-operational") << preOperational << stopped << NmtState::Stopped;
    QTest::newRow("pre-operational from stopped") << stopped << preOperational << NmtState::PreOperational;
    QTest::newRow("pre-operational from operational") << operational << preOperational << NmtState::PreOperational;
    QTest::newRow("reset node") << stopped << QStringLiteral("000#8105") << NmtState::Operational;
    QTest::newRow("reset communication") << stopped << QStringLiteral("000#8205") << NmtState::Operational;
    QTest::newRow("start all") << stopped << QStringLiteral("000#0100") << NmtState::Operational;
    QTest::newRow("stop all") << operational << QStringLiteral("000#0200") << NmtState::Stopped;

    QTest::newRow("another node") << stopped << QStringLiteral("000#0106") << NmtState::Stopped;
    QTest::newRow("unknown command") << stopped << QStringLiteral("000#0305") << NmtState::Stopped;
    QTest::newRow("no command") << stopped << QStringLiteral("000#0005") << NmtState::Stopped;
    QTest::newRow("empty") << stopped << QStringLiteral("000#") << NmtState::Stopped;
    QTest::newRow("too short") << stopped << QStringLiteral("000#01") << NmtState::Stopped;
    QTest::newRow("too long") << stopped << QStringLiteral("000#010500") << NmtState::Stopped;
    QTest::newRow("extended identifier") << stopped << QStringLiteral("00000000#0105") << NmtState::Stopped;
    QTest::newRow("remote frame") << stopped << QStringLiteral("000#R") << NmtState::Stopped;
    QTest::newRow("another identifier") << stopped << QStringLiteral("001#0105") << NmtState::Stopped;
}

void TestDemoNode::nmtCommandSetsTheState()
{
    QFETCH(QString, before);
    QFETCH(QString, command);
    Bench bench;
    bench.advanceTo(bootTime);
    bench.handle(before);
    bench.handle(command);
    QTEST(bench.node.state(), "state");
}

void TestDemoNode::resetIsAnsweredByBootUp_data()
{
    QTest::addColumn<QString>("command");

    QTest::newRow("reset node") << QStringLiteral("000#8105");
    QTest::newRow("reset communication") << QStringLiteral("000#8205");
    QTest::newRow("reset all nodes") << QStringLiteral("000#8100");
}

void TestDemoNode::resetIsAnsweredByBootUp()
{
    QFETCH(QString, command);
    Bench bench;
    bench.advanceTo(bootTime);
    bench.advanceTo(bootTime + 450 * millisecond);
    QCOMPARE(bench.handle(command), QStringList({QStringLiteral("705#00")}));
    // Its rhythms begin anew.
    QCOMPARE(withId(bench.liveUntil(bootTime + 949 * millisecond), "705"), QStringList());
    QCOMPARE(withId(bench.advanceTo(bootTime + 950 * millisecond), "705"), QStringList({QStringLiteral("705#05")}));
}

void TestDemoNode::resetRestoresTheHeartbeatTime_data()
{
    resetIsAnsweredByBootUp_data();
}

void TestDemoNode::resetRestoresTheHeartbeatTime()
{
    QFETCH(QString, command);
    Bench bench;
    bench.advanceTo(bootTime);
    bench.handle(QStringLiteral("605#2B17100000000000"));
    bench.handle(command);
    QCOMPARE(bench.handle(QStringLiteral("605#4017100000000000")),
             QStringList({QStringLiteral("585#4B171000F4010000")}));
    QCOMPARE(withId(bench.liveUntil(bootTime + second), "705").size(), 2);
}

void TestDemoNode::onlyResetNodeRestartsTheApplication()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.liveUntil(bootTime + 300 * millisecond);
    bench.handle(QStringLiteral("000#8205"));
    QCOMPARE(bench.liveUntil(bootTime + 400 * millisecond), QStringList({QStringLiteral("185#0300801A0600")}));
    bench.handle(QStringLiteral("000#8105"));
    QCOMPARE(bench.liveUntil(bootTime + 500 * millisecond), QStringList({QStringLiteral("185#0000A0860100")}));
}

void TestDemoNode::pdosRunInOperationalOnly_data()
{
    QTest::addColumn<QString>("command");

    QTest::newRow("stopped") << QStringLiteral("000#0205");
    QTest::newRow("pre-operational") << QStringLiteral("000#8005");
}

void TestDemoNode::pdosRunInOperationalOnly()
{
    QFETCH(QString, command);
    Bench bench;
    bench.advanceTo(bootTime);
    QCOMPARE(withId(bench.liveUntil(second), "185").size(), 9);
    bench.handle(command);
    QCOMPARE(withId(bench.liveUntil(2 * second), "185").size(), 0);
    bench.handle(QStringLiteral("000#0105"));
    QCOMPARE(withId(bench.liveUntil(3 * second), "185").size(), 10);
}

void TestDemoNode::startDoesNotDisturbARunningNode()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.advanceTo(bootTime + 60 * millisecond);
    bench.handle(QStringLiteral("000#0105"));
    QCOMPARE(bench.node.nextDue(), bootTime + 100 * millisecond);
}

void TestDemoNode::sdoIsServedUnlessStopped_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("served");

    QTest::newRow("operational") << QStringLiteral("000#0105") << true;
    QTest::newRow("pre-operational") << QStringLiteral("000#8005") << true;
    QTest::newRow("stopped") << QStringLiteral("000#0205") << false;
}

void TestDemoNode::sdoIsServedUnlessStopped()
{
    QFETCH(QString, command);
    Bench bench;
    bench.advanceTo(bootTime);
    bench.handle(command);
    QTEST(!bench.handle(QStringLiteral("605#4000100000000000")).isEmpty(), "served");
    QTEST(!bench.handle(QStringLiteral("605#4000200000000000")).isEmpty(), "served");
}

void TestDemoNode::objectIsUploaded_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("response");

    const auto row = [](const char *name, const char *request, const char *response) {
        QTest::newRow(name) << QString::fromLatin1(request) << QString::fromLatin1(response);
    };
    row("device type", "605#4000100000000000", "585#4300100094010200");
    row("error register", "605#4001100000000000", "585#4F01100000000000");
    row("device name, as far as it fits", "605#4008100000000000", "585#4308100041626364");
    row("heartbeat time", "605#4017100000000000", "585#4B171000F4010000");
    row("identity, entries", "605#4018100000000000", "585#4F18100004000000");
    row("identity, vendor", "605#4018100100000000", "585#4318100100000000");
    row("identity, product", "605#4018100200000000", "585#4318100244332211");
    row("identity, revision", "605#4018100300000000", "585#4318100388776655");
    row("identity, serial number", "605#4018100400000000", "585#43181004CCBBAA99");
    row("identity, beyond the last", "605#4018100500000000", "585#8018100511000906");
    row("device name is read-only", "605#2308100041424344", "585#8008100002000106");
}

void TestDemoNode::objectIsUploaded()
{
    QFETCH(QString, request);
    QFETCH(QString, response);
    Bench bench;
    bench.advanceTo(bootTime);
    QCOMPARE(bench.handle(request), QStringList({response}));
}

void TestDemoNode::heartbeatTimeIsChangedBySdo()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.advanceTo(bootTime + 90 * millisecond);
    QCOMPARE(bench.handle(QStringLiteral("605#2B171000C8000000")),
             QStringList({QStringLiteral("585#6017100000000000")}));
    QCOMPARE(withId(bench.liveUntil(bootTime + 289 * millisecond), "705").size(), 0);
    QCOMPARE(withId(bench.liveUntil(bootTime + 290 * millisecond), "705").size(), 1);
    QCOMPARE(withId(bench.liveUntil(bootTime + 1090 * millisecond), "705").size(), 4);
}

void TestDemoNode::heartbeatIsSwitchedOffAndOnBySdo()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.handle(QStringLiteral("605#2B17100000000000"));
    QCOMPARE(withId(bench.liveUntil(5 * second), "705").size(), 0);
    bench.handle(QStringLiteral("605#2B171000E8030000"));
    QCOMPARE(withId(bench.liveUntil(8 * second), "705").size(), 3);
}

void TestDemoNode::missedPeriodsAreSkipped()
{
    Bench bench;
    bench.advanceTo(bootTime);
    const qint64 wakeUp = bootTime + 3 * second + 30 * millisecond;
    QCOMPARE(bench.advanceTo(wakeUp), QStringList({QStringLiteral("705#05"), QStringLiteral("185#0000F03B2E00")}));
    QCOMPARE(bench.advanceTo(wakeUp), QStringList());
    // The rhythm is the old one.
    QCOMPARE(bench.node.nextDue(), bootTime + 3 * second + 100 * millisecond);
}

void TestDemoNode::timeNeverRunsBackwards()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.advanceTo(bootTime + 150 * millisecond);
    QCOMPARE(bench.advanceTo(0), QStringList());
    QCOMPARE(bench.advanceTo(-1), QStringList());
    bench.handle(QStringLiteral("000#8205"));
    QCOMPARE(bench.node.nextDue(), bootTime + 250 * millisecond);
}

void TestDemoNode::nextDueIsWhenTheNextFrameComes()
{
    Bench bench;
    for (int i = 0; i < 2000; ++i) {
        const qint64 due = bench.node.nextDue();
        QCOMPARE(bench.advanceTo(due - 1), QStringList());
        QVERIFY(!bench.advanceTo(due).isEmpty());
    }
}

void TestDemoNode::errorComesAndGoes()
{
    Bench bench;
    const QStringList emcys = withId(bench.liveUntil(600 * second), "085");
    QVERIFY(emcys.size() >= 4);
    QCOMPARE(emcys.mid(0, 4),
             QStringList({QStringLiteral("085#0042090100000000"), QStringLiteral("085#0000000100000000"),
                          QStringLiteral("085#0042090200000000"), QStringLiteral("085#0000000200000000")}));
    QVERIFY2(emcys.size() < 200, qPrintable(QString::number(emcys.size())));
}

void TestDemoNode::errorRegisterFollowsTheError()
{
    Bench bench;
    const QString request = QStringLiteral("605#4001100000000000");
    int changes = 0;
    for (int i = 0; i < 2000 && changes < 4; ++i) {
        const QStringList emcys = withId(bench.advanceTo(bench.node.nextDue()), "085");
        if (emcys.isEmpty())
            continue;
        ++changes;
        const QString response = changes % 2 == 1 ? QStringLiteral("585#4F01100009000000")
                                                  : QStringLiteral("585#4F01100000000000");
        QCOMPARE(bench.handle(request), QStringList({response}));
    }
    QCOMPARE(changes, 4);
}

void TestDemoNode::emcyWaitsWhileStopped()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.handle(QStringLiteral("000#0205"));
    QCOMPARE(withId(bench.liveUntil(600 * second), "085"), QStringList());
    bench.handle(QStringLiteral("000#8005"));
    QCOMPARE(bench.advanceTo(600 * second), QStringList({QStringLiteral("085#0042090100000000")}));
    QCOMPARE(bench.advanceTo(600 * second), QStringList());
}

void TestDemoNode::resetNodeEndsAnErrorSilently()
{
    Bench bench;
    for (int i = 0; i < 1000; ++i) {
        if (!withId(bench.advanceTo(bench.node.nextDue()), "085").isEmpty())
            break;
    }
    QCOMPARE(bench.handle(QStringLiteral("605#4001100000000000")),
             QStringList({QStringLiteral("585#4F01100009000000")}));
    QCOMPARE(bench.handle(QStringLiteral("000#8105")), QStringList({QStringLiteral("705#00")}));
    QCOMPARE(bench.handle(QStringLiteral("605#4001100000000000")),
             QStringList({QStringLiteral("585#4F01100000000000")}));
    const QStringList emcys = withId(bench.liveUntil(600 * second), "085");
    QCOMPARE(emcys.value(0), QStringLiteral("085#0042090100000000"));
}

void TestDemoNode::silencedNodeHasNothingDue()
{
    Bench bench;
    bench.advanceTo(bootTime);
    bench.handle(QStringLiteral("605#2B17100000000000"));
    bench.handle(QStringLiteral("000#0205"));
    QCOMPARE(bench.node.nextDue(), Rhythm::never);
    QCOMPARE(bench.advanceTo(3600 * second), QStringList());
}

QTEST_APPLESS_MAIN(TestDemoNode)
#include "tst_demonode.moc"
