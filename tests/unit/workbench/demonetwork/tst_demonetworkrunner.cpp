#include "demonetworkrunner.h"

#include "fakefamily.h"
#include "frames.h"
#include "loadgenerator.h"

#include <QSignalSpy>
#include <QtTest>

#include <condition_variable>

namespace {
/// A runner with a fake adapter whose record outlives both.
class Bench
{
public:
    Bench()
        : adapter(new FakeAdapter)
        , record(adapter->record)
        , runner(std::make_unique<DemoNetworkRunner>(std::unique_ptr<AbstractCanAdapter>(adapter)))
    {
    }

    FakeAdapter *adapter;
    std::shared_ptr<CallRecord> record;
    std::unique_ptr<DemoNetworkRunner> runner;

    bool wrote(const char *text) const
    {
        return record->lines().contains(QStringLiteral("write ") + QLatin1String(text));
    }

    void receive(const char *text) const
    {
        FakeAdapter::onReceiveThread([this, text] { adapter->receive({{}, frame(QString::fromLatin1(text))}); });
    }

    QStringList written() const { return record->lines().filter(QRegularExpression(QStringLiteral("^write "))); }
};

/// Holds back threads that pass through it until it is opened.
class Gate
{
public:
    ~Gate() { open(); }

    void pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_waiting = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_open; });
    }
    bool waitForSomebody()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(20), [this] { return m_waiting; });
    }
    void open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_waiting = false;
    bool m_open = false;
};
} // namespace

class TestDemoNetworkRunner : public QObject
{
    Q_OBJECT

private slots:
    void joinsTheBusWithCanFd();
    void nodesBootUp();
    void nodesAnswerRequests();
    void silencedNetworkStillListens();
    void stopEndsAllWriting();
    void stopTwiceIsHarmless();
    void destructorStops();
    void startAgainBeginsAnew();
    void refusedStartTellsWhy_data();
    void refusedStartTellsWhy();
    void otherSettingsOfTheBusAreFine();
    void runnerWithoutAdapterDoesNotStart();
    void adapterComesFromTheFactory();
    void lostBusStopsTheNetwork_data();
    void lostBusStopsTheNetwork();
    void lossDuringARefusedStartIsNotTold();
    void lossOfAnEarlierBusIsIgnored();
    void restartWithinStoppedKeepsTheReason();
    void runnerMayDieInStopped();
    void lostFramesAreCounted();
    void extraLoadIsNumberedWithoutGaps();
    void extraLoadEnds();
    void extraLoadStaysOverARestart();
    void requestsAreBounded();
    void stopDoesNotWaitForABacklog();
};

void TestDemoNetworkRunner::joinsTheBusWithCanFd()
{
    Bench bench;
    QVERIFY(!bench.runner->isRunning());
    QVERIFY(bench.runner->start(QStringLiteral("45999")));
    QVERIFY(bench.runner->isRunning());
    QCOMPARE(bench.runner->errorText(), QString());
    QCOMPARE(bench.record->lines().mid(0, 4),
             QStringList({QStringLiteral("setBitrate 500"), QStringLiteral("setFdBitrate 2000"), QStringLiteral("open"),
                          QStringLiteral("setRunning true")}));
    QCOMPARE(bench.adapter->getCanAdapterOption(AbstractCanAdapter::OptionPort).toString(), QStringLiteral("45999"));
    QVERIFY(bench.adapter->getCanAdapterOption(AbstractCanAdapter::OptionUseCanFd).toBool());
}

void TestDemoNetworkRunner::nodesBootUp()
{
    Bench bench;
    QVERIFY(bench.runner->start());
    for (const char *bootUp : {"702#00", "705#00", "70A#00", "711#00", "720#00"})
        QTRY_VERIFY_WITH_TIMEOUT(bench.wrote(bootUp), 20000);
    QTRY_VERIFY_WITH_TIMEOUT(bench.written().size() > 50, 20000);
    bench.runner->stop();
    QCOMPARE(bench.runner->framesSent(), quint64(bench.written().size()));
    QCOMPARE(bench.runner->extraFramesSent(), quint64(0));
    QCOMPARE(bench.runner->framesLost(), quint64(0));
}

void TestDemoNetworkRunner::nodesAnswerRequests()
{
    Bench bench;
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("720#00"), 20000);
    bench.receive("605#4017100000000000");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("585#4B171000E8030000"), 20000);
    bench.receive("620#4000200000000000");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("5A0#8000200000000206"), 20000);
    bench.receive("605#2B171000FF000000");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("585#6017100000000000"), 20000);
    bench.receive("000#0205");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("705#04"), 20000);
    QCOMPARE(bench.runner->requestsDropped(), quint64(0));
}

void TestDemoNetworkRunner::silencedNetworkStillListens()
{
    Bench bench;
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("720#00"), 20000);
    for (const char *heartbeatOff : {"602#2B17100000000000", "605#2B17100000000000", "60A#2B17100000000000",
                                     "611#2B17100000000000", "620#2B17100000000000"})
        bench.receive(heartbeatOff);
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("5A0#6017100000000000"), 20000);
    // Only the error of a node is due now, in eight seconds at the earliest, and then nothing at all.
    bench.receive("000#8000");
    bench.receive("602#4000100000000000");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("582#4300100092010200"), 5000);
    bench.receive("605#4000100000000000");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("585#4300100094010200"), 5000);
    bench.receive("000#0200");
    bench.record->take();
    bench.receive("000#8200");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("702#00"), 20000);
}

void TestDemoNetworkRunner::stopEndsAllWriting()
{
    Bench bench;
    QSignalSpy stopped(bench.runner.get(), &DemoNetworkRunner::stopped);
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("702#00"), 20000);
    bench.runner->stop();
    QVERIFY(!bench.runner->isRunning());
    QCOMPARE(bench.record->lines().constLast(), QStringLiteral("close"));
    bench.record->take();
    bench.receive("605#4017100000000000");
    QVERIFY(bench.record->lines().isEmpty());
    QVERIFY(stopped.isEmpty());
}

void TestDemoNetworkRunner::stopTwiceIsHarmless()
{
    Bench bench;
    bench.runner->stop();
    QVERIFY(bench.runner->start());
    bench.runner->stop();
    bench.record->take();
    bench.runner->stop();
    QVERIFY(bench.record->lines().isEmpty());
}

void TestDemoNetworkRunner::destructorStops()
{
    Bench bench;
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("702#00"), 20000);
    bench.runner.reset();
    const QStringList lines = bench.record->lines();
    QCOMPARE(lines.mid(lines.size() - 2), QStringList({QStringLiteral("close"), QStringLiteral("~")}));
}

void TestDemoNetworkRunner::startAgainBeginsAnew()
{
    Bench bench;
    QVERIFY(bench.runner->start(QStringLiteral("1")));
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("720#00"), 20000);
    QVERIFY(bench.runner->start(QStringLiteral("2")));
    const QStringList lines = bench.record->take();
    const int close = lines.indexOf(QStringLiteral("close"));
    QVERIFY(close >= 0 && close < lines.lastIndexOf(QStringLiteral("open")));
    QCOMPARE(bench.adapter->getCanAdapterOption(AbstractCanAdapter::OptionPort).toString(), QStringLiteral("2"));
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("720#00"), 20000);
}

void TestDemoNetworkRunner::refusedStartTellsWhy_data()
{
    QTest::addColumn<QString>("adapterText");
    QTest::addColumn<QString>("errorText");

    QTest::newRow("in the adapter's words")
        << QStringLiteral("Port 9 is in use.") << QStringLiteral("Port 9 is in use.");
    QTest::newRow("in our own") << QString()
                                << QStringLiteral("The simulated network could not join the bus at port \"9\".");
}

void TestDemoNetworkRunner::refusedStartTellsWhy()
{
    QFETCH(QString, adapterText);
    Bench bench;
    bench.adapter->openResult = 99;
    bench.adapter->onOpen = [&bench, adapterText] { bench.adapter->fail(adapterText); };
    QVERIFY(!bench.runner->start(QStringLiteral("9")));
    QTEST(bench.runner->errorText(), "errorText");
    QVERIFY(!bench.runner->isRunning());
    QVERIFY(bench.written().isEmpty());

    bench.adapter->openResult = AbstractCanAdapter::OpenOk;
    bench.adapter->onOpen = nullptr;
    QVERIFY(bench.runner->start(QStringLiteral("9")));
    QCOMPARE(bench.runner->errorText(), QString());
}

void TestDemoNetworkRunner::otherSettingsOfTheBusAreFine()
{
    Bench bench;
    bench.adapter->openResult = AbstractCanAdapter::OpenOtherSettings;
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("702#00"), 20000);
}

void TestDemoNetworkRunner::runnerWithoutAdapterDoesNotStart()
{
    DemoNetworkRunner runner(std::unique_ptr<AbstractCanAdapter>{});
    QVERIFY(!runner.start());
    QVERIFY(!runner.isRunning());
    QVERIFY(!runner.errorText().isEmpty());
    runner.stop();
}

void TestDemoNetworkRunner::adapterComesFromTheFactory()
{
    FakeFamily *family = FakeFamily::install(AbstractCanAdapter::CanAdapterDemo);
    QStringList devices;
    family->create = [&devices](const QString &device) {
        devices.append(device);
        return new FakeAdapter(AbstractCanAdapter::CanAdapterDemo, device);
    };
    DemoNetworkRunner runner;
    QCOMPARE(devices, QStringList({QStringLiteral("Demo 4")}));
    QVERIFY(runner.start());
    QTRY_VERIFY_WITH_TIMEOUT(runner.framesSent() > 0, 20000);
    CanAdapterFactory::unregisterFamily(AbstractCanAdapter::CanAdapterDemo);
}

void TestDemoNetworkRunner::lostBusStopsTheNetwork_data()
{
    QTest::addColumn<QString>("adapterText");
    QTest::addColumn<QString>("reason");

    QTest::newRow("in the adapter's words") << QStringLiteral("The hub ended.") << QStringLiteral("The hub ended.");
    QTest::newRow("in our own") << QString()
                                << QStringLiteral("The simulated network lost the bus. Start it again to rejoin.");
}

void TestDemoNetworkRunner::lostBusStopsTheNetwork()
{
    QFETCH(QString, adapterText);
    QFETCH(QString, reason);
    Bench bench;
    QSignalSpy stopped(bench.runner.get(), &DemoNetworkRunner::stopped);
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("702#00"), 20000);
    FakeAdapter::onReceiveThread([&bench, adapterText] { bench.adapter->fail(adapterText); });
    QVERIFY(stopped.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(stopped.size(), 1, 20000);
    QCOMPARE(stopped.constFirst().constFirst().toString(), reason);
    QCOMPARE(bench.runner->errorText(), reason);
    QVERIFY(!bench.runner->isRunning());
    QCOMPARE(bench.record->lines().constLast(), QStringLiteral("close"));

    QVERIFY(bench.runner->start());
    QVERIFY(bench.runner->isRunning());
}

void TestDemoNetworkRunner::lossDuringARefusedStartIsNotTold()
{
    Bench bench;
    QSignalSpy stopped(bench.runner.get(), &DemoNetworkRunner::stopped);
    bench.adapter->openResult = 99;
    bench.adapter->onOpen = [&bench] { bench.adapter->fail(); };
    QVERIFY(!bench.runner->start());
    QCoreApplication::sendPostedEvents(bench.runner.get());
    QVERIFY(stopped.isEmpty());
}

void TestDemoNetworkRunner::lossOfAnEarlierBusIsIgnored()
{
    Bench bench;
    QSignalSpy stopped(bench.runner.get(), &DemoNetworkRunner::stopped);
    QVERIFY(bench.runner->start());
    FakeAdapter::onReceiveThread([&bench] { bench.adapter->fail(); });
    QVERIFY(bench.runner->start());
    QCoreApplication::sendPostedEvents(bench.runner.get());
    QVERIFY(bench.runner->isRunning());
    QVERIFY(stopped.isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("702#00"), 20000);
}

void TestDemoNetworkRunner::restartWithinStoppedKeepsTheReason()
{
    Bench bench;
    QString reasonAfterRestart;
    connect(bench.runner.get(), &DemoNetworkRunner::stopped, this,
            [&bench, &reasonAfterRestart](const QString &reason) {
                bench.runner->start();
                reasonAfterRestart = reason;
            });
    QVERIFY(bench.runner->start());
    FakeAdapter::onReceiveThread([&bench] { bench.adapter->fail(QStringLiteral("gone")); });
    QTRY_COMPARE_WITH_TIMEOUT(reasonAfterRestart, QStringLiteral("gone"), 20000);
    QVERIFY(bench.runner->isRunning());
}

void TestDemoNetworkRunner::runnerMayDieInStopped()
{
    Bench bench;
    connect(bench.runner.get(), &DemoNetworkRunner::stopped, this, [&bench] { bench.runner.reset(); });
    QVERIFY(bench.runner->start());
    FakeAdapter::onReceiveThread([&bench] { bench.adapter->fail(); });
    QTRY_VERIFY_WITH_TIMEOUT(bench.runner == nullptr, 20000);
    QCOMPARE(bench.record->lines().constLast(), QStringLiteral("~"));
}

void TestDemoNetworkRunner::lostFramesAreCounted()
{
    Bench bench;
    bench.adapter->writeResult = AbstractCanAdapter::WriteLost;
    bench.runner->setExtraLoad(2000);
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.runner->framesLost() > 100, 20000);
    bench.runner->stop();
    QCOMPARE(bench.runner->framesSent(), quint64(0));
    QCOMPARE(bench.runner->extraFramesSent(), quint64(0));
    QCOMPARE(bench.runner->framesLost(), quint64(bench.written().size()));
}

void TestDemoNetworkRunner::extraLoadIsNumberedWithoutGaps()
{
    Bench bench;
    QVERIFY(bench.runner->start());
    bench.runner->setExtraLoad(20000);
    QTRY_VERIFY_WITH_TIMEOUT(bench.runner->extraFramesSent() > 5000, 60000);
    bench.runner->stop();

    quint64 expected = 0;
    for (const QString &line : bench.written()) {
        const std::optional<quint64> number = LoadGenerator::number(frame(line.mid(6)));
        if (!number)
            continue;
        QCOMPARE(*number, expected);
        ++expected;
    }
    QCOMPARE(expected, bench.runner->extraFramesSent());
    QCOMPARE(bench.runner->framesSent(), quint64(bench.written().size()));
}

void TestDemoNetworkRunner::extraLoadEnds()
{
    Bench bench;
    bench.runner->setExtraLoad(5000);
    QVERIFY(bench.runner->start());
    QTRY_VERIFY_WITH_TIMEOUT(bench.runner->extraFramesSent() > 100, 20000);
    bench.runner->setExtraLoad(0);
    // An answer shows that the thread has seen the change.
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("720#00"), 20000);
    bench.receive("605#4017100000000000");
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("585#4B171000E8030000"), 20000);
    bench.record->take();
    const quint64 sent = bench.runner->extraFramesSent();
    QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("705#05"), 20000);
    QCOMPARE(bench.runner->extraFramesSent(), sent);
}

void TestDemoNetworkRunner::extraLoadStaysOverARestart()
{
    Bench bench;
    bench.runner->setExtraLoad(5000);
    for (int round = 0; round < 2; ++round) {
        QVERIFY(bench.runner->start());
        QTRY_VERIFY_WITH_TIMEOUT(bench.wrote("400#0000000000000000"), 20000);
        bench.runner->stop();
        bench.record->take();
    }
}

void TestDemoNetworkRunner::requestsAreBounded()
{
    Gate gate;
    Bench bench;
    bench.adapter->onWrite = [&gate] { gate.pass(); };
    QVERIFY(bench.runner->start());
    QVERIFY(gate.waitForSomebody());
    FakeAdapter::onReceiveThread([&bench] {
        for (int i = 0; i < 3000; ++i) {
            bench.adapter->receive({{}, frame(QStringLiteral("602#4000100000000000"))});
            bench.adapter->receive({{}, frame(QStringLiteral("123#00"))});
        }
    });
    QCOMPARE(bench.runner->requestsDropped(), quint64(3000 - 1024));
    gate.open();
    const auto answers = [&bench] {
        return bench.written().filter(QStringLiteral("write 582#4300100092010200")).size();
    };
    QTRY_COMPARE_WITH_TIMEOUT(answers(), 1024, 20000);
}

void TestDemoNetworkRunner::stopDoesNotWaitForABacklog()
{
    Gate gate;
    Bench bench;
    bench.runner->setExtraLoad(LoadGenerator::highestRate);
    bench.adapter->onWrite = [&gate] { gate.pass(); };
    QVERIFY(bench.runner->start());
    QVERIFY(gate.waitForSomebody());
    // A lost bus requests the stop while the first frame is still held back, so that nothing follows that frame.
    FakeAdapter::onReceiveThread([&bench] { bench.adapter->fail(); });
    gate.open();
    bench.runner->stop();
    QCOMPARE(bench.written().size(), 1);
}

QTEST_GUILESS_MAIN(TestDemoNetworkRunner)
#include "tst_demonetworkrunner.moc"
