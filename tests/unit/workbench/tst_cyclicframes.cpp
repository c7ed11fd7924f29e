#include "canscheduler.h"
#include "cyclicframes.h"
#include "fakeadapter.h"
#include "messages.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

class TestCyclicFrames : public QObject
{
    Q_OBJECT

private slots:
    void startedFrameIsSentAgainAndAgain();
    void sameIdentifierTakesOverTheRow();
    void sameNumberOf29BitsIsAnotherRow();
    void stoppedFrameIsNotScheduled();
    void removedFrameIsNotScheduled();
    void withoutSchedulerFramesWait();
    void nextSchedulerResumesWhatWasSending();
    void schedulerThatDiedUnannouncedDoesNoHarm();
    void stopAllStopsEveryFrame();

private:
    static QString state(const CyclicFrames &frames, int row)
    {
        return frames.index(row, CyclicFrames::StateColumn).data().toString();
    }
};

void TestCyclicFrames::startedFrameIsSentAgainAndAgain()
{
    FakeAdapter adapter;
    adapter.setRunning(true);
    adapter.takeCalls();
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    CyclicFrames frames;
    const QAbstractItemModelTester tester(&frames, QAbstractItemModelTester::FailureReportingMode::QtTest);
    frames.setScheduler(&scheduler);
    QCOMPARE(frames.start(dataFrame(0x123, "0102"), 2000), 0);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.calls().size() >= 3, 10000);
    frames.stopAll();
    QStringList kinds = adapter.calls();
    kinds.removeDuplicates();
    QCOMPARE(kinds, QStringList{QStringLiteral("write 123#0102")});
    frames.setScheduler(nullptr);
}

void TestCyclicFrames::sameIdentifierTakesOverTheRow()
{
    CanScheduler scheduler(nullptr);
    CyclicFrames frames;
    frames.setScheduler(&scheduler);
    frames.start(dataFrame(0x123, "01"), 100'000);
    frames.start(dataFrame(0x124, "02"), 100'000);
    QCOMPARE(frames.start(dataFrame(0x123, "0A0B"), 20'000), 0);
    QCOMPARE(frames.rowCount(), 2);
    QCOMPARE(scheduler.cyclicMessageCount(), 2);
    QCOMPARE(frames.index(0, CyclicFrames::DataColumn).data().toString(), QStringLiteral("0A 0B"));
    QCOMPARE(frames.index(0, CyclicFrames::PeriodColumn).data().toString(), QStringLiteral("20.000"));
}

void TestCyclicFrames::sameNumberOf29BitsIsAnotherRow()
{
    CyclicFrames frames;
    frames.start(dataFrame(0x123), 100'000);
    QCOMPARE(frames.start(dataFrame(0x123, "", true), 100'000), 1);
    QCOMPARE(frames.index(1, CyclicFrames::IdentifierColumn).data().toString(), QStringLiteral("00000123x"));
}

void TestCyclicFrames::stoppedFrameIsNotScheduled()
{
    CanScheduler scheduler(nullptr);
    CyclicFrames frames;
    frames.setScheduler(&scheduler);
    frames.start(dataFrame(0x123), 100'000);
    QCOMPARE(state(frames, 0), QStringLiteral("Sending"));
    QSignalSpy changed(&frames, &CyclicFrames::sendingChanged);
    frames.setSending(0, false);
    QCOMPARE(scheduler.cyclicMessageCount(), 0);
    QCOMPARE(state(frames, 0), QStringLiteral("Stopped"));
    QCOMPARE(frames.sendingCount(), 0);
    frames.setSending(0, false);
    QCOMPARE(changed.count(), 1);
    frames.setSending(0, true);
    QCOMPARE(scheduler.cyclicMessageCount(), 1);
    QCOMPARE(frames.sendingCount(), 1);
}

void TestCyclicFrames::removedFrameIsNotScheduled()
{
    CanScheduler scheduler(nullptr);
    CyclicFrames frames;
    const QAbstractItemModelTester tester(&frames, QAbstractItemModelTester::FailureReportingMode::QtTest);
    frames.setScheduler(&scheduler);
    frames.start(dataFrame(0x123), 100'000);
    frames.start(dataFrame(0x124), 100'000);
    frames.remove(0);
    QCOMPARE(frames.rowCount(), 1);
    QCOMPARE(frames.message(0).id, 0x124u);
    QCOMPARE(scheduler.cyclicMessageCount(), 1);
}

void TestCyclicFrames::withoutSchedulerFramesWait()
{
    CyclicFrames frames;
    frames.start(dataFrame(0x123), 100'000);
    QCOMPARE(state(frames, 0), QStringLiteral("Waits for the connection"));
    QCOMPARE(frames.sendingCount(), 1);
}

void TestCyclicFrames::nextSchedulerResumesWhatWasSending()
{
    CyclicFrames frames;
    auto first = std::make_unique<CanScheduler>(nullptr);
    frames.setScheduler(first.get());
    frames.start(dataFrame(0x123), 100'000);
    frames.start(dataFrame(0x124), 100'000);
    frames.setSending(1, false);
    first.reset();
    frames.setScheduler(nullptr);
    QCOMPARE(state(frames, 0), QStringLiteral("Waits for the connection"));
    QCOMPARE(state(frames, 1), QStringLiteral("Stopped"));

    CanScheduler second(nullptr);
    frames.setScheduler(&second);
    QCOMPARE(second.cyclicMessageCount(), 1);
    QCOMPARE(state(frames, 0), QStringLiteral("Sending"));
    QCOMPARE(state(frames, 1), QStringLiteral("Stopped"));
}

void TestCyclicFrames::schedulerThatDiedUnannouncedDoesNoHarm()
{
    CyclicFrames frames;
    auto scheduler = std::make_unique<CanScheduler>(nullptr);
    frames.setScheduler(scheduler.get());
    frames.start(dataFrame(0x123), 100'000);
    scheduler.reset();
    frames.setSending(0, false);
    frames.setSending(0, true);
    QCOMPARE(state(frames, 0), QStringLiteral("Waits for the connection"));
    frames.remove(0);
    QCOMPARE(frames.rowCount(), 0);
}

void TestCyclicFrames::stopAllStopsEveryFrame()
{
    CanScheduler scheduler(nullptr);
    CyclicFrames frames;
    frames.setScheduler(&scheduler);
    for (quint32 id = 0; id < 5; ++id)
        frames.start(dataFrame(id), 100'000);
    frames.stopAll();
    QCOMPARE(frames.sendingCount(), 0);
    QCOMPARE(scheduler.cyclicMessageCount(), 0);
    QCOMPARE(frames.rowCount(), 5);
}

QTEST_GUILESS_MAIN(TestCyclicFrames)
#include "tst_cyclicframes.moc"
