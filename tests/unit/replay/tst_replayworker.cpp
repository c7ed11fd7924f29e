#include "fakeadapter.h"
#include "textrecording.h"
#include "replayworker.h"
#include "toldtexts.h"
#include "writtenframes.h"

#include <QtTest>

#include <thread>

#include <sys/stat.h>

class TestReplayWorker : public QObject
{
    Q_OBJECT

private slots:
    void framesGoOutInTheirOrder();
    void framesGoOutWhole();
    void tabLinesGoOutToo();
    void framesOfOneRecordingKeepTheirGaps();
    void singleFrameIsSentAtTheEnd();
    void emptyRecordingSendsTheFrameThatWasNeverFilled();
    void recordingWithoutFramesSendsTheFrameThatWasNeverFilled();
    void foreignLinesAreToldAndSkipped();
    void dataOfTabLinesAreTold();
    void endlessLineIsPassedOver();
    void lineOfJustTheLimitIsPassedOver();
    void brokenTimeEndsTheRecording_data();
    void brokenTimeEndsTheRecording();
    void fileThatDoesNotOpenIsToldAndStopsTheWorker();
    void pipeDoesNotOpen();
    void nameInCapitalsIsNoTrace();
    void withoutAnAdapterTheReplayRunsAllTheSame();
    void noAdapterTakesThePlaceOfOne();
    void writeSignalIsConnectedOnce();
    void failedWriteDoesNotStopTheReplay();
    void stoppedWorkerSendsNothing();
    void stopLosesTheFrameHeldBack();
    void secondReplayBeginsAnew();
    void loopSendsTheHeldBackFrameOnTheNextPass();
    void brokenTimeEndsALoop();
    void loopThatIsStoppedEnds();
    void speedOfZeroPlaysWithoutWaits();
    void backwardStepsInTimeDoNotWait();
    void longWaitIsToldWhenItIsOver();
    void timeThatTheAdapterTakesIsNotAddedToTheGaps();
    void timeOfABlockedWriteIsNotMadeUpFor();
    void stepWithoutPauseSkipsOneGap();
    void pauseHoldsTheReplayUntilItGoesOn();
    void pauseBeforeTheReplayHoldsItAtTheSecondFrame();
    void stepsOfAPausedReplaySendOneFrameEach();
    void stepAskedForWhileAFrameGoesOutIsTheNextOne();
    void stopEndsAPause();
    void progressOfATextIsNoNumber();
    void progressIsToldNoMoreThanEvery300Milliseconds();
    void loadingProgressIsHandedOn();
};

namespace {
constexpr int bound = 30000; // ms

const QString loading = QStringLiteral("Loading file...");

/// A worker and an adapter, and what came of them, from whatever thread.
class Replay
{
public:
    Replay()
    {
        worker.setCanApdater(&adapter);
        QObject::connect(&worker, &ReplayWorker::infoText, [this](const QString &text) { m_texts.add(text); });
        QObject::connect(&worker, &ReplayWorker::completed, [this] { m_ends.add(QStringLiteral("completed")); });
    }

    ~Replay()
    {
        worker.setStop();
        join();
    }

    /// On a thread of its own.
    void play(const Recording &recording)
    {
        m_thread = std::thread([this, path = recording.path()] { worker.doWork(path); });
    }

    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    QString written() const { return writtenFrames(adapter); }

    /// But for those on the progress.
    QStringList texts() const { return withoutProgress(allTexts()); }
    QStringList allTexts() const { return m_texts.lines(); }
    int ends() const { return m_ends.lines().size(); }

    FakeAdapter adapter;
    ReplayWorker worker;

private:
    CallRecord m_texts;
    CallRecord m_ends;
    std::thread m_thread;
};

/// As an adapter is whose write takes that long.
void beBusy(qint64 milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds)
        std::this_thread::yield();
}

CAN::CanRxMessage frame(quint32 id, qint32 seconds, qint32 microseconds = 0)
{
    CAN::CanRxMessage record;
    record.timeStamp = {seconds, microseconds};
    record.message.id = id;
    return record;
}
} // namespace

void TestReplayWorker::framesGoOutInTheirOrder()
{
    const Recording recording(Recording::frames({0, 0.0001, 0.0002, 0.0003}));
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 003 004"));
    QCOMPARE(replay.texts(), QStringList(loading));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::framesGoOutWhole()
{
    const Recording recording(" 1.000002 0x123/291  (2): 0a 0b;0\n"
                              " 1.000002 0x123/291  (2): 0a 0b;1\n"
                              " 1.000002 0x123/291  (1): 0c;14\r\n"
                              " 1.000002 0x123/291  (4): Remote Transmission Request;0");
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.adapter.calls(),
             QStringList({QStringLiteral("write 123#0A0B"), QStringLiteral("write 00000123#0A0B"),
                          QStringLiteral("write 123##30C"), QStringLiteral("write 123#R")}));
}

void TestReplayWorker::tabLinesGoOutToo()
{
    const Recording recording("1.000002\t291\tRx\tx\t0A 0b\n1.000003\t16/0x10\tRx\tx\t\n");
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.adapter.calls(), QStringList({QStringLiteral("write 123#0A0B"), QStringLiteral("write 010#")}));
}

void TestReplayWorker::framesOfOneRecordingKeepTheirGaps()
{
    const Recording recording(Recording::frames({5, 5.05, 5.3}));
    Replay replay;
    QElapsedTimer timer;
    QList<qint64> times;
    replay.adapter.onWrite = [&] { times << timer.elapsed(); };
    timer.start();
    replay.worker.doWork(recording.path());
    QCOMPARE(times.size(), 3);
    QVERIFY2(times[1] - times[0] >= 49, qPrintable(QString::number(times[1] - times[0])));
    QVERIFY2(times[2] - times[0] >= 299, qPrintable(QString::number(times[2] - times[0])));
    QVERIFY2(times[2] - times[0] < 5000, qPrintable(QString::number(times[2] - times[0])));
}

void TestReplayWorker::singleFrameIsSentAtTheEnd()
{
    const Recording recording(Recording::frames({1}));
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001"));
}

void TestReplayWorker::emptyRecordingSendsTheFrameThatWasNeverFilled()
{
    const Recording recording("");
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.adapter.calls(), QStringList(QStringLiteral("write 000#")));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::recordingWithoutFramesSendsTheFrameThatWasNeverFilled()
{
    const Recording recording("# timestamp id (dlc): data\n\nCAN connection lost\n");
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.adapter.calls(), QStringList(QStringLiteral("write 000#")));
}

void TestReplayWorker::foreignLinesAreToldAndSkipped()
{
    const Recording recording("# timestamp id (dlc): data\n" + Recording::frames({0, 0.0001})
                              + "# Stop CAN ID (0x123) detected\n");
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("playLine.*# timestamp id .dlc.: data")));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("playLine.*# Stop CAN ID")));
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestReplayWorker::dataOfTabLinesAreTold()
{
    const Recording recording("1.0\t1\t\t\t0a  0b\nbroken\t1\t\t\t0c\n");
    QTest::ignoreMessage(QtDebugMsg, "d> (\"0a\", \"0b\") <d");
    QTest::ignoreMessage(QtDebugMsg, "d> (\"0c\") <d");
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001"));
}

void TestReplayWorker::endlessLineIsPassedOver()
{
    const QByteArray frames = Recording::frames({0, 0.0001});
    const Recording recording(frames + QByteArray(1000000, ' ') + frames + frames);
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 002 001 002"));
}

void TestReplayWorker::lineOfJustTheLimitIsPassedOver()
{
    const QByteArray line = Recording::frames({0}).trimmed();
    const QByteArray longest = QByteArray(65535 - line.size(), ' ') + line + '\n';
    const Recording recording(' ' + longest + longest + Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 001 002"));
}

void TestReplayWorker::brokenTimeEndsTheRecording_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("log") << QByteArray("1 0x7/7 (0): ;0\n");
    QTest::newRow("tabs") << QByteArray("1.0.0\t7\t\t\t\n");
}

void TestReplayWorker::brokenTimeEndsTheRecording()
{
    QFETCH(QByteArray, line);
    const Recording recording(Recording::frames({0, 0.0001}) + line + Recording::frames({0, 0.0001, 0.0002}));
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QCOMPARE(replay.texts(), QStringList(loading));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::fileThatDoesNotOpenIsToldAndStopsTheWorker()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.doWork(recording.directory());
    QCOMPARE(replay.texts(), QStringList({loading, QStringLiteral("Cannot open file...")}));
    QCOMPARE(replay.ends(), 1);
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QString());
}

void TestReplayWorker::pipeDoesNotOpen()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("pipe.txt"));
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    Replay replay;
    replay.worker.doWork(path);
    QCOMPARE(replay.texts(), QStringList({loading, QStringLiteral("Cannot open file...")}));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::nameInCapitalsIsNoTrace()
{
    const Recording recording(Recording::frames({0, 0.0001}), QStringLiteral("recording.QRM"));
    Replay replay;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestReplayWorker::withoutAnAdapterTheReplayRunsAllTheSame()
{
    const Recording recording(Recording::frames({0, 0.1}));
    Replay replay;
    replay.worker.setCanApdater(nullptr);
    QElapsedTimer timer;
    timer.start();
    replay.worker.doWork(recording.path());
    QVERIFY(timer.elapsed() >= 99);
    QCOMPARE(replay.texts(), QStringList(loading));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::noAdapterTakesThePlaceOfOne()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.setCanApdater(nullptr);
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QString());
}

void TestReplayWorker::writeSignalIsConnectedOnce()
{
    Replay replay;
    replay.worker.setCanApdater(&replay.adapter);
    CAN::CanMessage message;
    message.id = 5;
    emit replay.worker.writeMessage(&message);
    QCOMPARE(replay.written(), QStringLiteral("005"));
}

void TestReplayWorker::failedWriteDoesNotStopTheReplay()
{
    const Recording recording(Recording::frames({0, 0.0001, 0.0002}));
    Replay replay;
    replay.adapter.setRunning(true);
    replay.adapter.takeCalls();
    replay.adapter.writeResult = AbstractCanAdapter::WriteLost;
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
    QCOMPARE(replay.adapter.framesLost(), quint64(3));
}

void TestReplayWorker::stoppedWorkerSendsNothing()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.setStop();
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QString());
    QCOMPARE(replay.texts(), QStringList(loading));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::stopLosesTheFrameHeldBack()
{
    const Recording recording(Recording::frames({0, 0.0001, 0.0002}));
    Replay replay;
    replay.adapter.onWrite = [&] { replay.worker.setStop(); };
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001"));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::secondReplayBeginsAnew()
{
    const Recording recording(Recording::frames({0, 0.0001, 0.0002}));
    Replay replay;
    replay.worker.doWork(recording.path());
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 003 001 002 003"));
    QCOMPARE(replay.ends(), 2);
}

void TestReplayWorker::loopSendsTheHeldBackFrameOnTheNextPass()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.setLoop(true);
    int writes = 0;
    replay.adapter.onWrite = [&] {
        if (++writes == 5)
            replay.worker.setLoop(false);
    };
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 001 002 001 002"));
}

void TestReplayWorker::brokenTimeEndsALoop()
{
    const Recording recording(Recording::frames({0, 0.0001}) + "1 0x7/7 (0): ;0\n");
    Replay replay;
    replay.worker.setLoop(true);
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestReplayWorker::loopThatIsStoppedEnds()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.setLoop(true);
    int writes = 0;
    replay.adapter.onWrite = [&] {
        if (++writes == 3)
            replay.worker.setStop();
    };
    replay.worker.doWork(recording.path());
    QCOMPARE(replay.written(), QStringLiteral("001 002 001"));
}

void TestReplayWorker::speedOfZeroPlaysWithoutWaits()
{
    const Recording recording(Recording::frames({0, 600, 1200}));
    Replay replay;
    replay.worker.setPlaybackSpeed(0);
    QElapsedTimer timer;
    timer.start();
    replay.worker.doWork(recording.path());
    QVERIFY(timer.elapsed() < bound);
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
    QCOMPARE(replay.texts(), QStringList(loading));
}

void TestReplayWorker::backwardStepsInTimeDoNotWait()
{
    const Recording recording(Recording::frames({1200, 600, 0}));
    Replay replay;
    QElapsedTimer timer;
    timer.start();
    replay.worker.doWork(recording.path());
    QVERIFY(timer.elapsed() < bound);
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
    QCOMPARE(replay.texts(), QStringList(loading));
}

void TestReplayWorker::longWaitIsToldWhenItIsOver()
{
    Replay replay;
    replay.worker.handleTxMessage(frame(1, 0));
    QElapsedTimer timer;
    qint64 told = 0;
    connect(&replay.worker, &ReplayWorker::infoText, [&] { told = timer.elapsed(); });
    timer.start();
    replay.worker.handleTxMessage(frame(2, 7, 1));
    QVERIFY2(told >= 7000, qPrintable(QString::number(told)));
    QCOMPARE(replay.texts(), QStringList(QStringLiteral("CAN replay active")));
}

void TestReplayWorker::timeThatTheAdapterTakesIsNotAddedToTheGaps()
{
    Replay replay;
    replay.adapter.onWrite = [] { beBusy(50); };
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i <= 15; ++i)
        replay.worker.handleTxMessage(frame(1, 0, i * 60000));
    QVERIFY2(timer.elapsed() >= 899, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(timer.elapsed() < 1500, qPrintable(QString::number(timer.elapsed())));
}

void TestReplayWorker::timeOfABlockedWriteIsNotMadeUpFor()
{
    Replay replay;
    QElapsedTimer sinceTheBlock;
    replay.adapter.onWrite = [&] {
        if (replay.written() != QStringLiteral("001 002"))
            return;
        beBusy(500);
        sinceTheBlock.start();
    };
    replay.worker.handleTxMessage(frame(1, 0));
    replay.worker.handleTxMessage(frame(2, 0, 1));
    replay.worker.handleTxMessage(frame(3, 0, 200001));
    QVERIFY2(sinceTheBlock.elapsed() >= 199, qPrintable(QString::number(sinceTheBlock.elapsed())));
}

void TestReplayWorker::stepWithoutPauseSkipsOneGap()
{
    const Recording recording(Recording::frames({0, 600, 600.1}));
    Replay replay;
    replay.worker.sendSingleStepMessage();
    QElapsedTimer timer;
    timer.start();
    replay.worker.doWork(recording.path());
    QVERIFY(timer.elapsed() >= 99);
    QVERIFY(timer.elapsed() < bound);
    QCOMPARE(replay.written(), QStringLiteral("001 002 003"));
    QCOMPARE(replay.texts(), QStringList(loading));
}

void TestReplayWorker::pauseHoldsTheReplayUntilItGoesOn()
{
    const Recording recording(Recording::frames({0, 0.0001, 0.0002, 0.0003}));
    Replay replay;
    replay.adapter.onWrite = [&] {
        if (replay.written() == QStringLiteral("001 002"))
            replay.worker.setPause(true);
    };
    replay.play(recording);
    QTRY_COMPARE_WITH_TIMEOUT(replay.written(), QStringLiteral("001 002"), bound);
    QCOMPARE(replay.ends(), 0);
    replay.worker.setPause(false);
    replay.join();
    QCOMPARE(replay.written(), QStringLiteral("001 002 003 004"));
}

void TestReplayWorker::pauseBeforeTheReplayHoldsItAtTheSecondFrame()
{
    const Recording recording(Recording::frames({0, 0.0001}));
    Replay replay;
    replay.worker.setPause(true);
    replay.play(recording);
    QTRY_COMPARE_WITH_TIMEOUT(replay.texts(), QStringList(loading), bound);
    QVERIFY(!QTest::qWaitFor([&] { return replay.ends() > 0 || !replay.written().isEmpty(); }, 100));
    replay.worker.setPause(false);
    replay.join();
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
}

void TestReplayWorker::stepsOfAPausedReplaySendOneFrameEach()
{
    const Recording recording(Recording::frames({0, 0.0001, 600, 1200}));
    Replay replay;
    replay.worker.setPause(true);
    replay.play(recording);
    replay.worker.sendSingleStepMessage();
    QTRY_COMPARE_WITH_TIMEOUT(replay.written(), QStringLiteral("001"), bound);
    replay.worker.sendSingleStepMessage();
    QTRY_COMPARE_WITH_TIMEOUT(replay.written(), QStringLiteral("001 002"), bound);
    QVERIFY(!QTest::qWaitFor([&] { return replay.written() != QStringLiteral("001 002"); }, 50));
    QElapsedTimer timer;
    timer.start();
    replay.worker.setStop();
    replay.join();
    // The gap behind the second frame was skipped.
    QVERIFY(timer.elapsed() < bound);
    QCOMPARE(replay.written(), QStringLiteral("001 002"));
    QCOMPARE(replay.texts(), QStringList(loading));
}

void TestReplayWorker::stepAskedForWhileAFrameGoesOutIsTheNextOne()
{
    const Recording recording(Recording::frames({0, 0.05, 600, 600.0001}));
    Replay replay;
    replay.adapter.onWrite = [&] {
        if (replay.written() == QStringLiteral("001"))
            replay.worker.sendSingleStepMessage();
    };
    QElapsedTimer timer;
    timer.start();
    replay.worker.doWork(recording.path());
    QVERIFY(timer.elapsed() >= 49);
    QVERIFY(timer.elapsed() < bound);
    QCOMPARE(replay.written(), QStringLiteral("001 002 003 004"));
}

void TestReplayWorker::stopEndsAPause()
{
    const Recording recording(Recording::frames({0, 0.0001, 0.0002}));
    Replay replay;
    replay.adapter.onWrite = [&] { replay.worker.setPause(true); };
    replay.play(recording);
    QTRY_COMPARE_WITH_TIMEOUT(replay.written(), QStringLiteral("001"), bound);
    replay.worker.setStop();
    replay.join();
    QCOMPARE(replay.written(), QStringLiteral("001"));
    QCOMPARE(replay.ends(), 1);
}

void TestReplayWorker::progressOfATextIsNoNumber()
{
    Replay replay;
    replay.worker.onUpdateProgress();
    QCOMPARE(replay.allTexts(),
             QStringList(QStringLiteral("CAN replay active - nan % completed. Approx. 00:00:00 left")));
}

void TestReplayWorker::progressIsToldNoMoreThanEvery300Milliseconds()
{
    QList<double> times;
    for (int i = 0; i < 100; ++i)
        times << i * 0.01;
    const Recording recording(Recording::frames(times));
    Replay replay;
    QElapsedTimer timer;
    timer.start();
    replay.worker.doWork(recording.path());
    const qint64 most = timer.elapsed() / 300;
    const int told = replay.allTexts().size() - 1;
    QVERIFY2(told >= 1 && told <= most, qPrintable(QStringLiteral("%1 of %2").arg(told).arg(most)));
    QCOMPARE(replay.allTexts().last(), QStringLiteral("CAN replay active - nan % completed. Approx. 00:00:00 left"));
}

void TestReplayWorker::loadingProgressIsHandedOn()
{
    Replay replay;
    QSignalSpy progress(&replay.worker, &ReplayWorker::sigLoadingProgress);
    replay.worker.onloadingProgressChanged(12.5);
    QCOMPARE(progress.size(), 1);
    QCOMPARE(progress[0][0].toDouble(), 12.5);
}

QTEST_GUILESS_MAIN(TestReplayWorker)
#include "tst_replayworker.moc"
