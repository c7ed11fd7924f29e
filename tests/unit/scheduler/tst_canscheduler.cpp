#include "canscheduler.h"
#include "fakeadapter.h"

#include <QDir>
#include <QtTest>

#include <chrono>
#include <condition_variable>

namespace {
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr int patience = 20000; // ms
constexpr qint64 oneMillisecond = 1000;

CAN::CanMessage frame(quint32 id, quint8 firstByte = 0)
{
    CAN::CanMessage message;
    message.id = id;
    message.length = 1;
    message.data[0] = firstByte;
    return message;
}

int countOf(const QStringList &frames, const QString &frame)
{
    return static_cast<int>(std::count(frames.begin(), frames.end(), frame));
}

int threadCount()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

/// When each write began.
class Times
{
public:
    void note()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_times.push_back(Clock::now());
    }
    std::vector<Clock::time_point> all() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_times;
    }
    std::size_t count() const { return all().size(); }

private:
    mutable std::mutex m_mutex;
    std::vector<Clock::time_point> m_times;
};

/// What was written, as text. Outlives the adapter.
class Writes
{
public:
    void note(const CAN::CanMessage &message)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_frames.push_back(frameText(message));
    }
    QStringList all() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        QStringList frames;
        for (const QString &frame : m_frames)
            frames.append(frame);
        return frames;
    }

private:
    mutable std::mutex m_mutex;
    // No QStringList: the thread sanitizer does not understand how one that is shared with a reader grows.
    std::vector<QString> m_frames;
};

class WritingAdapter : public FakeAdapter
{
public:
    // Ends the frames on their way while write() still has what it needs.
    ~WritingAdapter() override { setRunningState(false); }

    const std::shared_ptr<Writes> written = std::make_shared<Writes>();

    QStringList writes() const { return written->all(); }

    WriteResult write(CAN::CanMessage *message) override
    {
        written->note(*message);
        return FakeAdapter::write(message);
    }
};

/// A write that takes long, as with a full queue in the hardware, and tells where it is.
class SlowWrite
{
public:
    explicit SlowWrite(milliseconds duration)
        : m_duration(duration)
    {
    }

    void operator()()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_begun = true;
        m_ended = false;
        m_changed.notify_all();
        m_never.wait_until(lock, Clock::now() + m_duration, [] { return false; });
        m_ended = true;
    }

    bool waitForBegin()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, milliseconds(patience), [this] { return m_begun; });
    }
    bool ended() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_ended;
    }

private:
    const milliseconds m_duration;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::condition_variable m_never;
    bool m_begun = false;
    bool m_ended = false;
};

/// A second scheduler that shows, by its own frames, that a first one had its time to send.
class Witness
{
public:
    Witness()
        : m_scheduler(&m_adapter)
    {
        m_adapter.setRunning(true);
        m_scheduler.connectToAdapter(true);
        m_scheduler.addCyclicMessage(frame(0x7FF), oneMillisecond);
    }
    bool seesTimePass()
    {
        const int before = m_adapter.writes().size();
        return QTest::qWaitFor([&] { return m_adapter.writes().size() >= before + 20; }, patience);
    }

private:
    WritingAdapter m_adapter;
    CanScheduler m_scheduler;
};
} // namespace

class TestCanScheduler : public QObject
{
    Q_OBJECT

private slots:
    void framesComeInTheirPeriodAndNeverEarly();
    void missedPeriodsAreSkipped();
    void tooShortPeriodsAreRaised();
    void frameLeavesAtOnceAndAsItIs();
    void severalFramesShareTheThread();
    void lostFramesDoNotEndTheRhythm();
    void handlesAreNeverZeroAndNotReused();
    void unknownHandlesAreRefused();
    void countFollowsTheFrames();
    void changedFrameLeavesWithItsNewContent();
    void newPeriodTakesEffectBeforeTheOldOneEnds();
    void removedFrameIsNotSentAgain();
    void removingOneFrameLeavesTheOthers();
    void removingAllWaitsForTheFrameOnItsWay();
    void withoutConnectionFramesAreKept();
    void disconnectingWaitsForTheFrameOnItsWay();
    void connectingTwiceKeepsTheRhythm();
    void framesWaitForTheAdapterToRun();
    void closingWaitsForTheFrameOnItsWay();
    void reopenedAdapterGetsItsFramesAtOnce();
    void adapterMayStopWithinAWrite();
    void deletedAdapterIsLeftAlone();
    void deletingTheAdapterWaitsForTheFrameOnItsWay();
    void adapterWithCutSignalsIsLeftAlone();
    void connectingAgainUsesAnAdapterWhoseSignalsWereCut();
    void deletingTheSchedulerWaitsForTheFrameOnItsWay();
    void withoutAdapterNothingHappens();
    void threadLivesFromTheFirstFrameToTheEndOfTheScheduler();
};

void TestCanScheduler::framesComeInTheirPeriodAndNeverEarly()
{
    WritingAdapter adapter;
    Times times;
    adapter.onWrite = [&] { times.note(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);

    const auto start = Clock::now();
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);

    QTRY_VERIFY_WITH_TIMEOUT(times.count() >= 200, patience);
    scheduler.connectToAdapter(false);
    const auto all = times.all();
    // The scheduler counts whole microseconds.
    const auto firstDeadline = std::chrono::floor<microseconds>(start);
    for (std::size_t k = 0; k < all.size(); ++k)
        QVERIFY2(all[k] >= firstDeadline + k * milliseconds(1), qPrintable(QString::number(k)));
}

void TestCanScheduler::missedPeriodsAreSkipped()
{
    constexpr int missed = 50;
    WritingAdapter adapter;
    Times times;
    SlowWrite slow{milliseconds(missed)};
    adapter.onWrite = [&] {
        times.note();
        if (times.count() == 5)
            slow();
    };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);

    const auto start = Clock::now();
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);

    QTRY_VERIFY_WITH_TIMEOUT(times.count() >= 100, patience);
    scheduler.connectToAdapter(false);
    const auto all = times.all();
    const auto firstDeadline = std::chrono::floor<microseconds>(start);
    // The first frame after the long one serves the last of the missed deadlines.
    for (std::size_t k = 5; k < all.size(); ++k)
        QVERIFY2(all[k] >= firstDeadline + (k + missed - 1) * milliseconds(1), qPrintable(QString::number(k)));
}

void TestCanScheduler::tooShortPeriodsAreRaised()
{
    WritingAdapter adapter;
    Times times;
    adapter.onWrite = [&] { times.note(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);

    const auto start = Clock::now();
    scheduler.addCyclicMessage(frame(0x123), -1);

    QTRY_VERIFY_WITH_TIMEOUT(times.count() >= 100, patience);
    scheduler.connectToAdapter(false);
    const auto all = times.all();
    const auto firstDeadline = std::chrono::floor<microseconds>(start);
    for (std::size_t k = 0; k < all.size(); ++k)
        QVERIFY2(all[k] >= firstDeadline + k * microseconds(100), qPrintable(QString::number(k)));
}

void TestCanScheduler::frameLeavesAtOnceAndAsItIs()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    CAN::CanMessage message = frame(0x1ABCDEF0, 0x42);
    message.ext = message.fd = message.brs = true;

    scheduler.addCyclicMessage(message, 3600LL * 1000000);

    QTRY_COMPARE_WITH_TIMEOUT(adapter.writes(), QStringList{QStringLiteral("1ABCDEF0##142")}, patience);
}

void TestCanScheduler::severalFramesShareTheThread()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    for (quint32 id = 1; id <= 20; ++id)
        scheduler.addCyclicMessage(frame(id), oneMillisecond * id);

    for (quint32 id = 1; id <= 20; ++id) {
        const QString line = frameText(frame(id));
        QTRY_VERIFY_WITH_TIMEOUT(countOf(adapter.writes(), line) >= 5, patience);
    }
}

void TestCanScheduler::lostFramesDoNotEndTheRhythm()
{
    WritingAdapter adapter;
    adapter.writeResult = AbstractCanAdapter::WriteLost;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);

    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesLost() >= 5, patience);
    adapter.writeResult = AbstractCanAdapter::WriteOk;
    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 5, patience);
}

void TestCanScheduler::handlesAreNeverZeroAndNotReused()
{
    CanScheduler scheduler(nullptr);
    QSet<quint32> handles;
    for (int i = 0; i < 1000; ++i) {
        const quint32 handle = scheduler.addCyclicMessage(frame(1), oneMillisecond);
        QVERIFY(handle != 0);
        QVERIFY(!handles.contains(handle));
        handles.insert(handle);
        if (i % 2 == 0)
            QVERIFY(scheduler.removeCyclicMessage(handle));
        if (i % 100 == 0)
            scheduler.removeAllCyclicMessages();
    }
}

void TestCanScheduler::unknownHandlesAreRefused()
{
    CanScheduler scheduler(nullptr);
    const quint32 handle = scheduler.addCyclicMessage(frame(1), oneMillisecond);
    QVERIFY(!scheduler.changeCyclicMessage(0, frame(1), oneMillisecond));
    QVERIFY(!scheduler.changeCyclicMessage(handle + 1, frame(1), oneMillisecond));
    QVERIFY(!scheduler.removeCyclicMessage(0));
    QVERIFY(!scheduler.removeCyclicMessage(handle + 1));
    QCOMPARE(scheduler.cyclicMessageCount(), 1);

    QVERIFY(scheduler.removeCyclicMessage(handle));
    QVERIFY(!scheduler.removeCyclicMessage(handle));
    QVERIFY(!scheduler.changeCyclicMessage(handle, frame(1), oneMillisecond));
}

void TestCanScheduler::countFollowsTheFrames()
{
    CanScheduler scheduler(nullptr);
    QCOMPARE(scheduler.cyclicMessageCount(), 0);
    const quint32 first = scheduler.addCyclicMessage(frame(1), oneMillisecond);
    scheduler.addCyclicMessage(frame(1), oneMillisecond);
    scheduler.addCyclicMessage(frame(2), oneMillisecond);
    QCOMPARE(scheduler.cyclicMessageCount(), 3);
    QVERIFY(scheduler.changeCyclicMessage(first, frame(3), oneMillisecond));
    QCOMPARE(scheduler.cyclicMessageCount(), 3);
    QVERIFY(scheduler.removeCyclicMessage(first));
    QCOMPARE(scheduler.cyclicMessageCount(), 2);
    scheduler.removeAllCyclicMessages();
    QCOMPARE(scheduler.cyclicMessageCount(), 0);
}

void TestCanScheduler::changedFrameLeavesWithItsNewContent()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    const quint32 handle = scheduler.addCyclicMessage(frame(0x123, 0x01), oneMillisecond);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.writes().contains(QStringLiteral("123#01")), patience);

    QVERIFY(scheduler.changeCyclicMessage(handle, frame(0x456, 0x02), oneMillisecond));

    QTRY_VERIFY_WITH_TIMEOUT(adapter.writes().contains(QStringLiteral("456#02")), patience);
    const QStringList writes = adapter.writes();
    const int firstNew = writes.indexOf(QStringLiteral("456#02"));
    QVERIFY(writes.lastIndexOf(QStringLiteral("123#01")) < firstNew);
}

void TestCanScheduler::newPeriodTakesEffectBeforeTheOldOneEnds()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    const quint32 handle = scheduler.addCyclicMessage(frame(0x123), 3600LL * 1000000);
    QTRY_COMPARE_WITH_TIMEOUT(adapter.framesSent(), quint64(1), patience);

    QVERIFY(scheduler.changeCyclicMessage(handle, frame(0x123), oneMillisecond));

    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 5, patience);
}

void TestCanScheduler::removedFrameIsNotSentAgain()
{
    WritingAdapter adapter;
    SlowWrite slow{milliseconds(100)};
    adapter.onWrite = [&] { slow(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    const quint32 handle = scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    QVERIFY(slow.waitForBegin());

    QVERIFY(scheduler.removeCyclicMessage(handle));

    QVERIFY(slow.ended());
    const QStringList writes = adapter.writes();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
}

void TestCanScheduler::removingOneFrameLeavesTheOthers()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    const quint32 first = scheduler.addCyclicMessage(frame(1), oneMillisecond);
    scheduler.addCyclicMessage(frame(2), oneMillisecond);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 10, patience);

    QVERIFY(scheduler.removeCyclicMessage(first));

    const QStringList before = adapter.writes();
    QTRY_VERIFY_WITH_TIMEOUT(adapter.writes().size() >= before.size() + 10, patience);
    QCOMPARE(countOf(adapter.writes(), QStringLiteral("001#00")), countOf(before, QStringLiteral("001#00")));
}

void TestCanScheduler::removingAllWaitsForTheFrameOnItsWay()
{
    WritingAdapter adapter;
    SlowWrite slow{milliseconds(100)};
    adapter.onWrite = [&] { slow(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(1), oneMillisecond);
    scheduler.addCyclicMessage(frame(2), oneMillisecond);
    QVERIFY(slow.waitForBegin());

    scheduler.removeAllCyclicMessages();

    QVERIFY(slow.ended());
    const QStringList writes = adapter.writes();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
}

void TestCanScheduler::withoutConnectionFramesAreKept()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), QStringList());

    scheduler.connectToAdapter(true);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.writes().size() >= 3, patience);
    scheduler.connectToAdapter(false);
    const QStringList writes = adapter.writes();
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);

    QCOMPARE(scheduler.cyclicMessageCount(), 1);
    scheduler.connectToAdapter(true);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.writes().size() >= writes.size() + 3, patience);
}

void TestCanScheduler::disconnectingWaitsForTheFrameOnItsWay()
{
    WritingAdapter adapter;
    SlowWrite slow{milliseconds(100)};
    adapter.onWrite = [&] { slow(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    QVERIFY(slow.waitForBegin());

    scheduler.connectToAdapter(false);

    QVERIFY(slow.ended());
    const QStringList writes = adapter.writes();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
}

void TestCanScheduler::connectingTwiceKeepsTheRhythm()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), 3600LL * 1000000);
    QTRY_COMPARE_WITH_TIMEOUT(adapter.framesSent(), quint64(1), patience);

    scheduler.connectToAdapter(true);

    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.framesSent(), quint64(1));
}

void TestCanScheduler::framesWaitForTheAdapterToRun()
{
    WritingAdapter adapter;
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), QStringList());

    adapter.setRunning(true);

    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 3, patience);
}

void TestCanScheduler::closingWaitsForTheFrameOnItsWay()
{
    WritingAdapter adapter;
    SlowWrite slow{milliseconds(100)};
    adapter.onWrite = [&] { slow(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    QVERIFY(slow.waitForBegin());

    adapter.close();

    QVERIFY(slow.ended());
    // As a handler does that brings the whole connection down.
    adapter.disconnect();
    const QStringList writes = adapter.writes();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
}

void TestCanScheduler::reopenedAdapterGetsItsFramesAtOnce()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(1), 3600LL * 1000000);
    scheduler.addCyclicMessage(frame(2), oneMillisecond);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 3, patience);
    adapter.close();
    const QStringList before = adapter.writes();
    QCOMPARE(countOf(before, QStringLiteral("001#00")), 1);

    adapter.setRunning(true);

    QTRY_VERIFY_WITH_TIMEOUT(adapter.writes().size() >= before.size() + 5, patience);
    QCOMPARE(countOf(adapter.writes(), QStringLiteral("001#00")), 2);
}

void TestCanScheduler::adapterMayStopWithinAWrite()
{
    WritingAdapter adapter;
    adapter.onWrite = [&] { adapter.close(); };
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);

    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);

    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesLost() == 1, patience);
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(countOf(adapter.writes(), QStringLiteral("123#00")), 1);
}

void TestCanScheduler::deletedAdapterIsLeftAlone()
{
    auto adapter = std::make_unique<WritingAdapter>();
    const auto written = adapter->written;
    adapter->setRunning(true);
    CanScheduler scheduler(adapter.get());
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), 100);
    QTRY_VERIFY_WITH_TIMEOUT(written->all().size() >= 10, patience);

    adapter.reset();

    QCOMPARE(scheduler.canAdapter(), nullptr);
    const QStringList writes = written->all();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(written->all(), writes);
    scheduler.connectToAdapter(false);
    scheduler.connectToAdapter(true);
    QCOMPARE(scheduler.cyclicMessageCount(), 1);
}

void TestCanScheduler::deletingTheAdapterWaitsForTheFrameOnItsWay()
{
    SlowWrite slow{milliseconds(100)};
    auto adapter = std::make_unique<WritingAdapter>();
    adapter->onWrite = [&] { slow(); };
    adapter->setRunning(true);
    CanScheduler scheduler(adapter.get());
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    QVERIFY(slow.waitForBegin());

    adapter.reset();

    QVERIFY(slow.ended());
}

void TestCanScheduler::adapterWithCutSignalsIsLeftAlone()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 3, patience);

    adapter.disconnect();

    Witness witness;
    QVERIFY(witness.seesTimePass()); // also for a frame that was on its way
    const QStringList writes = adapter.writes();
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
}

void TestCanScheduler::connectingAgainUsesAnAdapterWhoseSignalsWereCut()
{
    WritingAdapter adapter;
    adapter.setRunning(true);
    CanScheduler scheduler(&adapter);
    scheduler.connectToAdapter(true);
    scheduler.addCyclicMessage(frame(0x123), oneMillisecond);
    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= 3, patience);
    adapter.disconnect();

    scheduler.connectToAdapter(true);

    const quint64 before = adapter.framesSent();
    QTRY_VERIFY_WITH_TIMEOUT(adapter.framesSent() >= before + 3, patience);
    adapter.close();
    const QStringList writes = adapter.writes();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
}

void TestCanScheduler::deletingTheSchedulerWaitsForTheFrameOnItsWay()
{
    WritingAdapter adapter;
    SlowWrite slow{milliseconds(100)};
    adapter.onWrite = [&] { slow(); };
    adapter.setRunning(true);
    auto scheduler = std::make_unique<CanScheduler>(&adapter);
    scheduler->connectToAdapter(true);
    scheduler->addCyclicMessage(frame(0x123), oneMillisecond);
    QVERIFY(slow.waitForBegin());

    scheduler.reset();

    QVERIFY(slow.ended());
    const QStringList writes = adapter.writes();
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(adapter.writes(), writes);
    adapter.close();
}

void TestCanScheduler::withoutAdapterNothingHappens()
{
    CanScheduler scheduler(nullptr);
    QCOMPARE(scheduler.canAdapter(), nullptr);
    scheduler.connectToAdapter(true);
    QVERIFY(scheduler.addCyclicMessage(frame(0x123), oneMillisecond) != 0);
    Witness witness;
    QVERIFY(witness.seesTimePass());
    QCOMPARE(scheduler.cyclicMessageCount(), 1);
    scheduler.connectToAdapter(false);
}

void TestCanScheduler::threadLivesFromTheFirstFrameToTheEndOfTheScheduler()
{
    const int before = threadCount();
    WritingAdapter adapter;
    adapter.setRunning(true);
    {
        CanScheduler scheduler(&adapter);
        scheduler.connectToAdapter(true);
        QCOMPARE(scheduler.canAdapter(), &adapter);
        QCOMPARE(threadCount(), before);
        scheduler.addCyclicMessage(frame(1), oneMillisecond);
        scheduler.addCyclicMessage(frame(2), oneMillisecond);
        QCOMPARE(threadCount(), before + 1);
    }
    // The kernel may list a thread for a moment after it was joined.
    QTRY_COMPARE_WITH_TIMEOUT(threadCount(), before, patience);
}

QTEST_GUILESS_MAIN(TestCanScheduler)
#include "tst_canscheduler.moc"
