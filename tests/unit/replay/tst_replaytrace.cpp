#include "canreplayer.h"
#include "datachunkhandler.h"
#include "fakeadapter.h"
#include "replayworker.h"
#include "toldtexts.h"
#include "writtenframes.h"

#include <QtTest>

#include <ctime>
#include <utility>

class TestReplayTrace : public QObject
{
    Q_OBJECT

private slots:
    void framesOfATraceGoOut();
    void dotBeforeTheSuffixIsNotLookedFor();
    void loadingIsToldBeforeTheStart();
    void fileThatIsNoTraceIsToldAndSendsNothing();
    void importIsClosedAsItEnded_data();
    void importIsClosedAsItEnded();
    void endOfAReplayComesWhenItsTraceIsGone();
    void endOfAFailedLoadComesWhileItsTraceIsThere();
    void emptyTraceSendsTheFrameThatWasNeverFilled();
    void singleFrameIsSentAtTheEnd();
    void stopLosesTheFrameHeldBack();
    void emptyTraceInALoopEndsByAStop();
    void emptyTraceInALoopLeavesTheProcessorAlone();
    void loopSendsTheHeldBackFrameOnTheNextPass();
    void secondReplaySendsTheLastFrameAgain();
    void progressCountsFramesAndRecordedTime_data();
    void progressCountsFramesAndRecordedTime();
    void replayerTellsTheWholeStory();
};

namespace {
constexpr int bound = 30000; // ms

/// A trace file with one frame for each time in microseconds, with the identifiers 001, 002 and so on.
class TraceOnDisk
{
public:
    explicit TraceOnDisk(const QList<qint64> &times, const QString &name = QStringLiteral("recording.qrm"))
        : m_path(m_directory.filePath(name))
    {
        DatachunkHandler trace;
        for (int i = 0; i < times.size(); ++i) {
            CAN::CanRxMessage record;
            record.timeStamp = {static_cast<qint32>(times[i] / 1000000), static_cast<qint32>(times[i] % 1000000)};
            record.message.id = static_cast<quint32>(i + 1);
            trace.appendCanMessage(record);
        }
        m_written = trace.saveQrmFile(m_path);
    }

    /// Empty if the disk did not take the trace.
    QString path() const { return m_written ? m_path : QString(); }

private:
    QTemporaryDir m_directory;
    QString m_path;
    bool m_written = false;
};

/// A capture that loads as far as its header, which says that there are no CAN frames in it but Ethernet.
const QByteArray ethernetCapture = QByteArray::fromHex("d4c3b2a1 0200 0400 00000000 00000000 ffff0000 01000000");

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// A worker and an adapter, and what came of them, all on the test's thread.
struct Replay
{
    Replay() { worker.setCanApdater(&adapter); }

    QString written() const { return writtenFrames(adapter); }

    /// But for the progress.
    QStringList told() const { return withoutProgress(textsOf(texts)); }

    FakeAdapter adapter;
    ReplayWorker worker;
    QSignalSpy texts{&worker, &ReplayWorker::infoText};
    QSignalSpy ends{&worker, &ReplayWorker::completed};
};

const QString loading = QStringLiteral("Loading file...");
const QString started = QStringLiteral("CAN replay started");
} // namespace

void TestReplayTrace::framesOfATraceGoOut()
{
    const TraceOnDisk trace({0, 100, 200});
    Replay replay;
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
    QCOMPARE(replay.told(), QStringList({loading, started}));
    QCOMPARE(replay.ends.size(), 1);
}

void TestReplayTrace::dotBeforeTheSuffixIsNotLookedFor()
{
    const TraceOnDisk trace({0, 100}, QStringLiteral("recordingqrm"));
    Replay replay;
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QCOMPARE(replay.told(), QStringList({loading, started}));
}

void TestReplayTrace::loadingIsToldBeforeTheStart()
{
    const TraceOnDisk trace({0, 100});
    Replay replay;
    QList<double> percents;
    connect(&replay.worker, &ReplayWorker::sigLoadingProgress, [&](double percent) {
        percents << percent;
        QCOMPARE(replay.told(), QStringList(loading));
    });
    replay.worker.doWork(trace.path());
    QVERIFY(!percents.isEmpty());
    QCOMPARE(percents.last(), 100.0);
}

void TestReplayTrace::fileThatIsNoTraceIsToldAndSendsNothing()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("text.qrm"));
    QVERIFY(writeFile(path, " 1.000002 0x123/291  (2): 0a 0b;0\n"));
    Replay replay;
    replay.worker.doWork(path);
    QCOMPARE(replay.told(), QStringList({loading, QStringLiteral("Cannot load QRM file: ") + path}));
    QCOMPARE(replay.written(), QString());
    QCOMPARE(replay.ends.size(), 1);
}

void TestReplayTrace::importIsClosedAsItEnded_data()
{
    QTest::addColumn<QByteArray>("damage");
    QTest::addColumn<bool>("success");

    QTest::newRow("a good trace") << QByteArray() << true;
    QTest::newRow("a capture of another kind of network") << ethernetCapture << false;
}

void TestReplayTrace::importIsClosedAsItEnded()
{
    QFETCH(QByteArray, damage);
    QFETCH(bool, success);
    const TraceOnDisk trace({0, 100});
    QVERIFY(damage.isEmpty() || writeFile(trace.path(), damage));
    Replay replay;
    QList<bool> successes;
    QList<DatachunkHelper::ImportFileType> types;
    bool listening = false;
    connect(&replay.worker, &ReplayWorker::sigLoadingProgress, [&] {
        if (std::exchange(listening, true))
            return;
        connect(replay.worker.findChild<DatachunkHandler *>(), &DatachunkHandler::importFinished,
                [&](bool success, DatachunkHelper::ImportFileType type) {
                    successes << success;
                    types << type;
                });
    });
    replay.worker.doWork(trace.path());
    QCOMPARE(successes, QList<bool>({success}));
    QCOMPARE(types, QList<DatachunkHelper::ImportFileType>({DatachunkHelper::TraceFile}));
}

void TestReplayTrace::endOfAReplayComesWhenItsTraceIsGone()
{
    const TraceOnDisk trace({0, 100});
    Replay replay;
    bool gone = false;
    connect(&replay.worker, &ReplayWorker::completed,
            [&] { gone = replay.worker.findChild<DatachunkHandler *>() == nullptr; });
    replay.worker.doWork(trace.path());
    QVERIFY(gone);
}

void TestReplayTrace::endOfAFailedLoadComesWhileItsTraceIsThere()
{
    const TraceOnDisk trace({});
    QVERIFY(writeFile(trace.path(), ethernetCapture));
    Replay replay;
    QString reason;
    connect(&replay.worker, &ReplayWorker::completed, [&] {
        if (const auto *const store = replay.worker.findChild<DatachunkHandler *>())
            reason = store->importError();
    });
    replay.worker.doWork(trace.path());
    QVERIFY(!reason.isEmpty());
    QCOMPARE(replay.ends.size(), 1);
}

void TestReplayTrace::emptyTraceSendsTheFrameThatWasNeverFilled()
{
    const TraceOnDisk trace({});
    Replay replay;
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.adapter.calls(), QStringList(QStringLiteral("write 000#")));
    QCOMPARE(replay.told(), QStringList({loading, started}));
}

void TestReplayTrace::singleFrameIsSentAtTheEnd()
{
    const TraceOnDisk trace({5});
    Replay replay;
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.written(), QStringLiteral("001"));
}

void TestReplayTrace::stopLosesTheFrameHeldBack()
{
    const TraceOnDisk trace({0, 100, 200});
    Replay replay;
    replay.adapter.onWrite = [&] { replay.worker.setStop(); };
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.written(), QStringLiteral("001"));
    QCOMPARE(replay.ends.size(), 1);
}

void TestReplayTrace::emptyTraceInALoopEndsByAStop()
{
    const TraceOnDisk trace({});
    FakeAdapter adapter;
    CANReplayer replayer(trace.path());
    const auto stop = qScopeGuard([&] { replayer.setStop(); });
    replayer.setCanApdater(&adapter);
    replayer.setLoopMode(true);
    const QSignalSpy texts(&replayer, &CANReplayer::infoText);
    const QSignalSpy ends(&replayer, &CANReplayer::finished);
    replayer.start();
    QTRY_VERIFY_WITH_TIMEOUT(!texts.isEmpty() && texts.last()[0].toString() == started, bound);
    QCOMPARE(ends.size(), 0);
    replayer.setStop();
    QTRY_COMPARE_WITH_TIMEOUT(ends.size(), 1, bound);
    QCOMPARE(adapter.calls(), QStringList());
}

void TestReplayTrace::emptyTraceInALoopLeavesTheProcessorAlone()
{
    const TraceOnDisk trace({});
    CANReplayer replayer(trace.path());
    const auto stop = qScopeGuard([&] { replayer.setStop(); });
    replayer.setCanApdater(nullptr);
    replayer.setLoopMode(true);
    const QSignalSpy texts(&replayer, &CANReplayer::infoText);
    const QSignalSpy ends(&replayer, &CANReplayer::finished);
    replayer.start();
    QTRY_VERIFY_WITH_TIMEOUT(textsOf(texts).contains(started), bound);
    const std::clock_t before = std::clock();
    QVERIFY(!QTest::qWaitFor([&] { return ends.size() > 0; }, 500));
    QVERIFY(std::clock() - before < CLOCKS_PER_SEC / 5);
}

void TestReplayTrace::loopSendsTheHeldBackFrameOnTheNextPass()
{
    const TraceOnDisk trace({0, 100});
    Replay replay;
    replay.worker.setLoop(true);
    int writes = 0;
    replay.adapter.onWrite = [&] {
        if (++writes == 5)
            replay.worker.setLoop(false);
    };
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 001 002 001 002"));
}

void TestReplayTrace::secondReplaySendsTheLastFrameAgain()
{
    const TraceOnDisk trace({0, 100, 200});
    Replay replay;
    replay.worker.doWork(trace.path());
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 003 003"));
    QCOMPARE(replay.ends.size(), 2);
}

void TestReplayTrace::progressCountsFramesAndRecordedTime_data()
{
    QTest::addColumn<double>("speed");
    QTest::newRow("as recorded") << 1.0;
    QTest::newRow("the speed does not shorten the time left") << 0.5;
}

void TestReplayTrace::progressCountsFramesAndRecordedTime()
{
    QFETCH(double, speed);
    const TraceOnDisk trace({0, 350000, 3662350000, 7323350000});
    Replay replay;
    replay.worker.setPlaybackSpeed(speed);
    // A slow machine tells of 25 % before.
    const QString half = QStringLiteral("CAN replay active - 50.00 % completed. Approx. 02:02:03 left");
    connect(&replay.worker, &ReplayWorker::infoText, [&](const QString &text) {
        if (text == half)
            replay.worker.setStop();
    });
    replay.worker.doWork(trace.path());
    QCOMPARE(replay.told(), QStringList({loading, started}));
    QCOMPARE(textsOf(replay.texts).last(), half);
}

void TestReplayTrace::replayerTellsTheWholeStory()
{
    const TraceOnDisk trace({0, 100});
    FakeAdapter adapter;
    CANReplayer replayer(trace.path());
    replayer.setCanApdater(&adapter);
    QStringList story;
    connect(&replayer, &CANReplayer::infoText, [&](const QString &text) { story << text; });
    const QSignalSpy ends(&replayer, &CANReplayer::finished);
    replayer.start();
    QTRY_COMPARE_WITH_TIMEOUT(ends.size(), 1, bound);
    QCOMPARE(story.first(), loading);
    QCOMPARE(withoutProgress(story).last(), started);
    QVERIFY(story.contains(QStringLiteral("Loading 100.00 % completed")));
    QCOMPARE(adapter.calls().size(), 2);
}

QTEST_GUILESS_MAIN(TestReplayTrace)
#include "tst_replaytrace.moc"
