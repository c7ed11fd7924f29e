#include "canreplayer.h"
#include "fakeadapter.h"
#include "textrecording.h"
#include "toldtexts.h"
#include "writtenframes.h"

#include <QtTest>

#include <ctime>

class TestCANReplayer : public QObject
{
    Q_OBJECT

private slots:
    void missingFileIsTold();
    void replayerOfAMissingFileIsInert();
    void textsAndTheEndComeToTheThreadOfTheReplayer();
    void framesAreWrittenFromAnotherThread();
    void failureEndsWithFinished();
    void withoutAnAdapterTheReplayEndsAllTheSame();
    void ignoredFramesAreNotSent();
    void gapsOfIgnoredFramesAreWaitedFor();
    void ignoredFrameIsNotSentAtTheEnd();
    void frameThatWasNeverFilledCanBeIgnored();
    void whatIsSetAfterTheStartCountsFromTheNext();
    void speedScalesTheGaps();
    void fastForwardSkipsGapsWithoutATextAboutThem();
    void ignoredGapsShrinkToASecond();
    void gapIsToldBeforeItIsWaitedFor();
    void pauseBeforeTheStartHoldsTheReplay();
    void stepsGoFrameByFrame();
    void performanceModeChangesNothing();
    void loopRunsUntilItIsSwitchedOff();
    void loopOverNoFramesLeavesTheProcessorAlone();
    void stopInAPauseEndsTheReplay();
    void secondStartPlaysAgainBehindTheFirst();
    void startAfterAStopEndsAtOnce();
    void destructionBeforeTheStartIsHarmless();
    void destructionAfterAStopEndsALoop();
    void destructionWaitsForTheEndOfTheReplay();
    void loadingIsToldInPercent();
};

namespace {
constexpr int bound = 30000; // ms

const QString loading = QStringLiteral("Loading file...");

/// A replayer of that text onto a fake, with what it says.
struct Replay
{
    explicit Replay(const QByteArray &text)
        : recording(text)
        , replayer(recording.path())
    {
        replayer.setCanApdater(&adapter);
    }
    ~Replay() { replayer.setStop(); }

    bool playToTheEnd()
    {
        replayer.start();
        return waitForEnds(1);
    }

    bool waitForEnds(int count)
    {
        return QTest::qWaitFor([this, count] { return ends.size() >= count; }, bound);
    }

    QString written() const { return writtenFrames(adapter); }

    /// But for the progress.
    QStringList told() const { return withoutProgress(textsOf(texts)); }

    Recording recording;
    FakeAdapter adapter;
    CANReplayer replayer;
    QSignalSpy texts{&replayer, &CANReplayer::infoText};
    QSignalSpy ends{&replayer, &CANReplayer::finished};
};

int threadsOfThisProcess()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

/// One that was joined by the test before can be among them a little longer.
int settledThreadsOfThisProcess()
{
    int count = threadsOfThisProcess();
    while (QTest::qWaitFor([count] { return threadsOfThisProcess() != count; }, 100))
        count = threadsOfThisProcess();
    return count;
}
} // namespace

void TestCANReplayer::missingFileIsTold()
{
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("^CANReplayer::CANReplayer\\(.*Invalid path .*/nowhere/no.*"
                                                           "\\. Not started\\.")));
    const CANReplayer replayer(QStringLiteral("/nowhere/no"));
}

void TestCANReplayer::replayerOfAMissingFileIsInert()
{
    const int threads = settledThreadsOfThisProcess();
    CANReplayer replayer(QStringLiteral("/nowhere/no"));
    QCOMPARE(threadsOfThisProcess(), threads);
    const QSignalSpy texts(&replayer, &CANReplayer::infoText);
    const QSignalSpy ends(&replayer, &CANReplayer::finished);
    const QSignalSpy orders(&replayer, &CANReplayer::operate);
    FakeAdapter adapter;
    replayer.setCanApdater(&adapter);
    replayer.setIgnoreList({1});
    replayer.setFastForward(true);
    replayer.setIgnoreGaps(true);
    replayer.setPause(true);
    replayer.sendNextSingleMessage();
    replayer.setPlaybackSpeed(2.0);
    replayer.setPerformanceMode(true);
    replayer.setLoopMode(true);
    replayer.start();
    replayer.setStop();
    QVERIFY(!QTest::qWaitFor([&] { return texts.size() + ends.size() + orders.size() > 0; }, 100));
    QCOMPARE(adapter.calls(), QStringList());
}

void TestCANReplayer::textsAndTheEndComeToTheThreadOfTheReplayer()
{
    Replay replay(Recording::frames({0, 0.4, 0.8}));
    QStringList seen;
    const auto add = [&](const QString &what) {
        seen << what + QLatin1String(QThread::currentThread() == thread() ? "" : " elsewhere");
    };
    QObject::connect(&replay.replayer, &CANReplayer::infoText, add);
    QObject::connect(&replay.replayer, &CANReplayer::finished, [&] { add(QStringLiteral("finished")); });
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(withoutProgress(seen), QStringList({loading, QStringLiteral("finished")}));
    QCOMPARE(seen.first(), loading);
    QCOMPARE(seen.last(), QStringLiteral("finished"));
    QVERIFY(seen.size() > 2);
    QCOMPARE(seen.filter(QStringLiteral("elsewhere")), QStringList());
}

void TestCANReplayer::framesAreWrittenFromAnotherThread()
{
    Replay replay(Recording::frames({0, 0.0001}));
    std::atomic<bool> here{false};
    replay.adapter.onWrite = [&] { here = here || QThread::currentThread() == thread(); };
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QVERIFY(!here);
}

void TestCANReplayer::failureEndsWithFinished()
{
    const QTemporaryDir directory;
    CANReplayer replayer(directory.path());
    QSignalSpy texts(&replayer, &CANReplayer::infoText);
    QSignalSpy ends(&replayer, &CANReplayer::finished);
    replayer.start();
    QTRY_COMPARE_WITH_TIMEOUT(ends.size(), 1, bound);
    QCOMPARE(texts.size(), 2);
    QCOMPARE(texts[0][0].toString(), loading);
    QCOMPARE(texts[1][0].toString(), QStringLiteral("Cannot open file..."));
}

void TestCANReplayer::withoutAnAdapterTheReplayEndsAllTheSame()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    CANReplayer replayer(recording.path());
    QSignalSpy ends(&replayer, &CANReplayer::finished);
    replayer.start();
    QTRY_COMPARE_WITH_TIMEOUT(ends.size(), 1, bound);
}

void TestCANReplayer::ignoredFramesAreNotSent()
{
    Replay replay(Recording::frames({0, 0.0001, 0.0002, 0.0003}));
    replay.replayer.setIgnoreList({1, 3});
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(replay.written(), QStringLiteral("002 004"));
}

void TestCANReplayer::gapsOfIgnoredFramesAreWaitedFor()
{
    Replay replay(Recording::frames({0, 0.1, 0.2}));
    replay.replayer.setIgnoreList({1, 2});
    QElapsedTimer timer;
    timer.start();
    QVERIFY(replay.playToTheEnd());
    QVERIFY(timer.elapsed() >= 199);
    QCOMPARE(replay.written(), QStringLiteral("003"));
}

void TestCANReplayer::ignoredFrameIsNotSentAtTheEnd()
{
    Replay replay(Recording::frames({0, 0.0001}));
    replay.replayer.setIgnoreList({2});
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(replay.written(), QStringLiteral("001"));
}

void TestCANReplayer::frameThatWasNeverFilledCanBeIgnored()
{
    Replay replay("");
    replay.replayer.setIgnoreList({0});
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(replay.written(), QString());
}

void TestCANReplayer::whatIsSetAfterTheStartCountsFromTheNext()
{
    Replay replay(Recording::frames({0, 0.0001}));
    FakeAdapter other;
    replay.replayer.setPause(true);
    replay.replayer.start();
    replay.replayer.setCanApdater(&other);
    replay.replayer.setIgnoreList({1});
    replay.replayer.setPause(false);
    QVERIFY(replay.waitForEnds(1));
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QCOMPARE(other.calls(), QStringList());

    replay.replayer.start();
    QVERIFY(replay.waitForEnds(2));
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QCOMPARE(other.calls(), QStringList(QStringLiteral("write 002#")));
}

void TestCANReplayer::speedScalesTheGaps()
{
    Replay replay(Recording::frames({0, 600}));
    replay.replayer.setPlaybackSpeed(3000);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(replay.playToTheEnd());
    QVERIFY(timer.elapsed() >= 199);
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestCANReplayer::fastForwardSkipsGapsWithoutATextAboutThem()
{
    Replay replay(Recording::frames({0, 8, 600}));
    replay.replayer.setFastForward(true);
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
    QCOMPARE(replay.told(), QStringList(loading));
}

void TestCANReplayer::ignoredGapsShrinkToASecond()
{
    Replay replay(Recording::frames({0, 600}));
    replay.replayer.setIgnoreGaps(true);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(replay.playToTheEnd());
    QVERIFY(timer.elapsed() >= 1000);
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QCOMPARE(replay.told(), QStringList({loading, QStringLiteral(" 600 s gap to next message reduced to 1s")}));
}

void TestCANReplayer::gapIsToldBeforeItIsWaitedFor()
{
    Replay replay(Recording::frames({0, 600}));
    replay.replayer.setIgnoreGaps(true);
    QElapsedTimer timer;
    qint64 told = -1;
    std::atomic<qint64> sent{-1};
    replay.adapter.onWrite = [&] { sent = timer.elapsed(); };
    connect(&replay.replayer, &CANReplayer::infoText, [&](const QString &text) {
        if (text.contains(QStringLiteral("gap")))
            told = timer.elapsed();
    });
    timer.start();
    QVERIFY(replay.playToTheEnd());
    QVERIFY2(told >= 0 && told < 1000, qPrintable(QString::number(told)));
    QVERIFY2(sent >= 1000, qPrintable(QString::number(sent)));
}

void TestCANReplayer::pauseBeforeTheStartHoldsTheReplay()
{
    Replay replay(Recording::frames({0, 0.0001}));
    replay.replayer.setPause(true);
    replay.replayer.start();
    QTRY_COMPARE_WITH_TIMEOUT(replay.told(), QStringList(loading), bound);
    QVERIFY(!QTest::qWaitFor([&] { return replay.ends.size() > 0 || !replay.written().isEmpty(); }, 100));
    replay.replayer.setPause(false);
    QVERIFY(replay.waitForEnds(1));
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestCANReplayer::stepsGoFrameByFrame()
{
    Replay replay(Recording::frames({0, 0.0001, 600}));
    replay.replayer.setPause(true);
    replay.replayer.start();
    replay.replayer.sendNextSingleMessage();
    QTRY_COMPARE_WITH_TIMEOUT(replay.written(), QStringLiteral("001"), bound);
    // The second step takes the replay to its end, and with it goes the last frame.
    replay.replayer.sendNextSingleMessage();
    QVERIFY(replay.waitForEnds(1));
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
}

void TestCANReplayer::performanceModeChangesNothing()
{
    Replay replay(Recording::frames({0, 0.1}));
    replay.replayer.setPerformanceMode(true);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(replay.playToTheEnd());
    QVERIFY(timer.elapsed() >= 99);
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestCANReplayer::loopRunsUntilItIsSwitchedOff()
{
    Replay replay(Recording::frames({0, 0.0001}));
    replay.replayer.setLoopMode(true);
    replay.replayer.start();
    QTRY_VERIFY_WITH_TIMEOUT(replay.adapter.calls().size() > 10, bound);
    QCOMPARE(replay.ends.size(), 0);
    replay.replayer.setLoopMode(false);
    QVERIFY(replay.waitForEnds(1));
    QVERIFY(replay.written().endsWith(QStringLiteral("001 002")));
}

void TestCANReplayer::loopOverNoFramesLeavesTheProcessorAlone()
{
    Replay replay("# timestamp id (dlc): data\n");
    replay.replayer.setLoopMode(true);
    replay.replayer.start();
    QTRY_COMPARE_WITH_TIMEOUT(replay.told(), QStringList(loading), bound);
    const std::clock_t before = std::clock();
    QVERIFY(!QTest::qWaitFor([&] { return replay.ends.size() > 0; }, 500));
    QVERIFY(std::clock() - before < CLOCKS_PER_SEC / 5);
}

void TestCANReplayer::stopInAPauseEndsTheReplay()
{
    Replay replay(Recording::frames({0, 0.0001, 0.0002}));
    replay.replayer.setPause(true);
    replay.replayer.start();
    replay.replayer.setStop();
    QVERIFY(replay.waitForEnds(1));
    QCOMPARE(replay.written(), QString());
}

void TestCANReplayer::secondStartPlaysAgainBehindTheFirst()
{
    Replay replay(Recording::frames({0, 0.05}));
    replay.replayer.start();
    replay.replayer.start();
    QVERIFY(replay.waitForEnds(2));
    QCOMPARE(replay.written(), QStringLiteral("001 002 001 002"));
    QCOMPARE(replay.told(), QStringList({loading, loading}));
}

void TestCANReplayer::startAfterAStopEndsAtOnce()
{
    Replay replay(Recording::frames({0, 0.0001}));
    replay.replayer.setStop();
    QVERIFY(replay.playToTheEnd());
    QCOMPARE(replay.written(), QString());
    QCOMPARE(replay.told(), QStringList(loading));
}

void TestCANReplayer::destructionBeforeTheStartIsHarmless()
{
    const int threads = settledThreadsOfThisProcess();
    const Recording recording(Recording::frames({0}));
    {
        const CANReplayer replayer(recording.path());
        QCOMPARE(threadsOfThisProcess(), threads + 1);
    }
    QTRY_COMPARE_WITH_TIMEOUT(threadsOfThisProcess(), threads, bound);
}

void TestCANReplayer::destructionAfterAStopEndsALoop()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    FakeAdapter adapter;
    {
        CANReplayer replayer(recording.path());
        const auto stop = qScopeGuard([&] { replayer.setStop(); });
        replayer.setCanApdater(&adapter);
        replayer.setLoopMode(true);
        replayer.start();
        QTRY_VERIFY_WITH_TIMEOUT(adapter.calls().size() > 2, bound);
    }
    QVERIFY(adapter.takeCalls().size() > 2);
    QVERIFY(!QTest::qWaitFor([&] { return !adapter.calls().isEmpty(); }, 50));
}

void TestCANReplayer::destructionWaitsForTheEndOfTheReplay()
{
    const Recording recording(Recording::frames({0, 0.1, 0.2}));
    FakeAdapter adapter;
    {
        CANReplayer replayer(recording.path());
        replayer.setCanApdater(&adapter);
        replayer.start();
        QTRY_VERIFY_WITH_TIMEOUT(!adapter.calls().isEmpty(), bound);
    }
    QCOMPARE(adapter.calls().size(), 3);
}

void TestCANReplayer::loadingIsToldInPercent()
{
    Replay replay("");
    replay.replayer.onLoadingProgressChanged(0);
    replay.replayer.onLoadingProgressChanged(12.5);
    replay.replayer.onLoadingProgressChanged(99.999);
    QCOMPARE(replay.told(),
             QStringList({QStringLiteral("Loading 0.00 % completed"), QStringLiteral("Loading 12.50 % completed"),
                          QStringLiteral("Loading 100.00 % completed")}));
}

QTEST_GUILESS_MAIN(TestCANReplayer)
#include "tst_canreplayer.moc"
