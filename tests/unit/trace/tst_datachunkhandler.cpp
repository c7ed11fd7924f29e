#include "datachunkhandler.h"
#include "fulldisk.h"
#include "traceframes.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>

#include <sched.h>
#include <sys/mount.h>

namespace {
constexpr unsigned chunk = 4096;
constexpr unsigned chunkBytes = chunk * 84;

void fill(DatachunkHandler &trace, unsigned frames)
{
    for (unsigned i = trace.getMessageCount(); i < frames; ++i)
        trace.appendCanMessage(numberedFrame(i));
}

bool isInPlace(const DatachunkHandler &trace, unsigned index)
{
    CAN::CanRxMessage message;
    return trace.getMessageAtIndex(message, index) && message == numberedFrame(index);
}

/// The indexes below `frames` that do not give their frame, as a test shows them.
QVector<unsigned> misplaced(const DatachunkHandler &trace, unsigned frames)
{
    QVector<unsigned> indexes;
    for (unsigned i = 0; i < frames; ++i) {
        if (!isInPlace(trace, i))
            indexes.append(i);
    }
    return indexes;
}

QString note(unsigned number)
{
    return QStringLiteral("note %1").arg(number);
}

/// Runs the calls at the same time, each on a thread of its own, and waits for the end of all.
void atTheSameTime(const std::vector<std::function<void()>> &calls)
{
    std::vector<std::thread> threads;
    for (const auto &call : calls)
        threads.emplace_back(call);
    for (std::thread &thread : threads)
        thread.join();
}

/// TMPDIR while it lives.
class TemporaryPlace
{
public:
    explicit TemporaryPlace(const QString &directory) { qputenv("TMPDIR", directory.toLocal8Bit()); }
    ~TemporaryPlace() { m_before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", m_before); }

private:
    const QByteArray m_before = qgetenv("TMPDIR");
    Q_DISABLE_COPY(TemporaryPlace)
};
} // namespace

class TestDatachunkHandler : public QObject
{
    Q_OBJECT

private slots:
    void emptyTraceGivesNothing();
    void everyFrameComesBackByItsIndex_data();
    void everyFrameComesBackByItsIndex();
    void longTraceComesBackInAnyOrder();
    void rangesEndWithTheTrace_data();
    void rangesEndWithTheTrace();
    void noteForTheNextFrameWaitsForIt();
    void noteForTheLastFrameIsThereAtOnce();
    void noteForTheLastFrameOfAnEmptyTraceGoesToTheFirst();
    void notesOfOneFrameKeepTheirOrder();
    void notesStayWithFramesThatWentToTheFile();
    void clearForgetsFramesAndNotes();
    void readersSeeTheirFramesWhileATraceGrows();
    void severalAppendersLoseNothing();
    void readersSurviveAClearedTrace();
    void tracesMayBeClearedFromAnyThread();
    void fullDiskCostsOnlyTheFramesThatFollow();
    void roomOnTheDiskCountsForTheNextTrace();
    void fullDiskIsToldFromTheAppendingThread();
    void fullFileSystemIsTold();
};

void TestDatachunkHandler::emptyTraceGivesNothing()
{
    const DatachunkHandler trace;
    CAN::CanRxMessage message = numberedFrame(5);
    QCOMPARE(trace.getMessageCount(), 0u);
    QCOMPARE(trace.getLastMessage(), CAN::CanRxMessage());
    QVERIFY(!trace.getMessageAtIndex(message, 0));
    QCOMPARE(message, numberedFrame(5));
    QVERIFY(trace.getMessages(0, 10).isEmpty());
    QCOMPARE(trace.messageNotes(0), QStringList());
    QCOMPARE(trace.lostMessageCount(), quint64(0));
}

void TestDatachunkHandler::everyFrameComesBackByItsIndex_data()
{
    QTest::addColumn<unsigned>("framesInMemory");
    QTest::addColumn<unsigned>("frames");

    for (const unsigned framesInMemory : {0u, 1u, chunk - 1, chunk, chunk + 1, 100000u}) {
        for (const unsigned frames : {1u, chunk - 1, chunk, chunk + 1, 2 * chunk - 1, 2 * chunk, 2 * chunk + 1,
                                      3 * chunk - 1, 3 * chunk, 3 * chunk + 1})
            QTest::addRow("%u frames, %u in memory", frames, framesInMemory) << framesInMemory << frames;
    }
}

void TestDatachunkHandler::everyFrameComesBackByItsIndex()
{
    QFETCH(unsigned, framesInMemory);
    QFETCH(unsigned, frames);
    DatachunkHandler trace(nullptr, framesInMemory);

    fill(trace, frames);

    QCOMPARE(trace.getMessageCount(), frames);
    QCOMPARE(trace.getLastMessage(), numberedFrame(frames - 1));
    QCOMPARE(misplaced(trace, frames), QVector<unsigned>());
    CAN::CanRxMessage message = numberedFrame(3);
    QVERIFY(!trace.getMessageAtIndex(message, frames));
    QVERIFY(!trace.getMessageAtIndex(message, std::numeric_limits<unsigned>::max()));
    QCOMPARE(message, numberedFrame(3));
    QCOMPARE(trace.lostMessageCount(), quint64(0));
}

void TestDatachunkHandler::longTraceComesBackInAnyOrder()
{
    constexpr unsigned frames = 300000;
    DatachunkHandler trace(nullptr, 1000);
    fill(trace, frames);

    QCOMPARE(trace.getMessageCount(), frames);
    QCOMPARE(misplaced(trace, frames), QVector<unsigned>());
    for (unsigned i = frames; i-- > 0;)
        QVERIFY(isInPlace(trace, i));
    QRandomGenerator random(1);
    for (int n = 0; n < 5000; ++n)
        QVERIFY(isInPlace(trace, random.bounded(frames)));
    for (int n = 0; n < 200; ++n) {
        const unsigned first = random.bounded(frames);
        const unsigned count = random.bounded(1u, 20000u);
        const QVector<CAN::CanRxMessage> range = trace.getMessages(first, count);
        QCOMPARE(static_cast<unsigned>(range.size()), std::min(count, frames - first));
        QVERIFY(areNumbered(range, first));
    }
    QVERIFY(areNumbered(trace.getMessages(0, frames), 0));
}

void TestDatachunkHandler::rangesEndWithTheTrace_data()
{
    QTest::addColumn<unsigned>("first");
    QTest::addColumn<unsigned>("count");
    QTest::addColumn<int>("size");

    // Three chunks and 10 frames, of which the last chunk and the 10 are in memory.
    constexpr unsigned frames = 3 * chunk + 10;
    constexpr unsigned most = std::numeric_limits<unsigned>::max();
    QTest::newRow("no frame") << 0u << 0u << 0;
    QTest::newRow("first frame") << 0u << 1u << 1;
    QTest::newRow("last frame") << frames - 1 << 1u << 1;
    QTest::newRow("beyond the last frame") << frames - 1 << 2u << 1;
    QTest::newRow("past the end") << frames << 1u << 0;
    QTest::newRow("far past the end") << most << most << 0;
    QTest::newRow("whole trace") << 0u << frames << int(frames);
    QTest::newRow("all there is") << 0u << most << int(frames);
    QTest::newRow("all there is from the second on") << 1u << most << int(frames - 1);
    QTest::newRow("up to the last in the file") << chunk << chunk << int(chunk);
    QTest::newRow("last in the file, first in memory") << 2 * chunk - 1 << 2u << 2;
    QTest::newRow("from the first in memory on") << 2 * chunk << chunk << int(chunk);
    QTest::newRow("over two chunks in memory") << 3 * chunk - 1 << 2u << 2;
    QTest::newRow("over everything") << 5u << 3 * chunk << int(3 * chunk);
}

void TestDatachunkHandler::rangesEndWithTheTrace()
{
    QFETCH(unsigned, first);
    QFETCH(unsigned, count);
    DatachunkHandler trace(nullptr, chunk);
    fill(trace, 3 * chunk + 10);

    const QVector<CAN::CanRxMessage> range = trace.getMessages(first, count);

    QTEST(range.size(), "size");
    QVERIFY(areNumbered(range, first));
}

void TestDatachunkHandler::noteForTheNextFrameWaitsForIt()
{
    DatachunkHandler trace;
    fill(trace, 3);
    trace.addMessageNoteToNextMessage(note(1));
    for (unsigned i = 0; i < 4; ++i)
        QCOMPARE(trace.messageNotes(i), QStringList());
    fill(trace, 5);
    QCOMPARE(trace.messageNotes(2), QStringList());
    QCOMPARE(trace.messageNotes(3), QStringList{note(1)});
    QCOMPARE(trace.messageNotes(4), QStringList());
}

void TestDatachunkHandler::noteForTheLastFrameIsThereAtOnce()
{
    DatachunkHandler trace;
    fill(trace, 3);
    trace.addMessageNoteToLastMessage(note(1));
    QCOMPARE(trace.messageNotes(2), QStringList{note(1)});
    fill(trace, 4);
    QCOMPARE(trace.messageNotes(2), QStringList{note(1)});
    QCOMPARE(trace.messageNotes(3), QStringList());
}

void TestDatachunkHandler::noteForTheLastFrameOfAnEmptyTraceGoesToTheFirst()
{
    DatachunkHandler trace;
    trace.addMessageNoteToLastMessage(note(1));
    QCOMPARE(trace.messageNotes(0), QStringList());
    fill(trace, 2);
    QCOMPARE(trace.messageNotes(0), QStringList{note(1)});
    QCOMPARE(trace.messageNotes(1), QStringList());
}

void TestDatachunkHandler::notesOfOneFrameKeepTheirOrder()
{
    DatachunkHandler trace;
    trace.addMessageNoteToNextMessage(note(1));
    trace.addMessageNoteToLastMessage(note(2));
    trace.addMessageNoteToNextMessage(note(3));
    fill(trace, 1);
    trace.addMessageNoteToLastMessage(note(4));
    trace.addMessageNoteToNextMessage(note(5));
    trace.addMessageNoteToLastMessage(note(6));
    QCOMPARE(trace.messageNotes(0), (QStringList{note(1), note(2), note(3), note(4), note(6)}));
    fill(trace, 2);
    QCOMPARE(trace.messageNotes(1), QStringList{note(5)});
}

void TestDatachunkHandler::notesStayWithFramesThatWentToTheFile()
{
    DatachunkHandler trace(nullptr, 0);
    for (unsigned i = 0; i < 3 * chunk; ++i) {
        if (i % 1000 == 0)
            trace.addMessageNoteToNextMessage(note(i));
        trace.appendCanMessage(numberedFrame(i));
    }
    for (unsigned i = 0; i < 3 * chunk; ++i)
        QCOMPARE(trace.messageNotes(i), i % 1000 == 0 ? QStringList{note(i)} : QStringList());
}

void TestDatachunkHandler::clearForgetsFramesAndNotes()
{
    DatachunkHandler trace(nullptr, 0);
    for (int round = 0; round < 3; ++round) {
        trace.addMessageNoteToNextMessage(note(1));
        fill(trace, 3 * chunk + 7);
        trace.addMessageNoteToNextMessage(note(2));

        trace.clear();

        CAN::CanRxMessage message;
        QCOMPARE(trace.getMessageCount(), 0u);
        QCOMPARE(trace.getLastMessage(), CAN::CanRxMessage());
        QVERIFY(!trace.getMessageAtIndex(message, 0));
        QVERIFY(trace.getMessages(0, 1).isEmpty());
        QCOMPARE(trace.messageNotes(0), QStringList());
        trace.appendCanMessage(numberedFrame(0));
        QCOMPARE(trace.messageNotes(0), QStringList());
        QVERIFY(trace.getMessageAtIndex(message, 0));
        QCOMPARE(message, numberedFrame(0));
    }
}

void TestDatachunkHandler::readersSeeTheirFramesWhileATraceGrows()
{
    constexpr unsigned frames = 25 * chunk;
    DatachunkHandler trace(nullptr, chunk);
    std::atomic<bool> growing{true};
    std::atomic<int> wrong{0};

    const auto grow = [&] {
        for (unsigned i = 0; i < frames; ++i) {
            if (i % 5000 == 0)
                trace.addMessageNoteToNextMessage(note(i));
            trace.appendCanMessage(numberedFrame(i));
        }
        growing = false;
    };
    const auto readSingles = [&] {
        QRandomGenerator random(2);
        while (growing) {
            const unsigned count = trace.getMessageCount();
            if (count == 0)
                continue;
            const unsigned i = random.bounded(count);
            CAN::CanRxMessage message;
            wrong += !trace.getMessageAtIndex(message, i) || message != numberedFrame(i);
            wrong += trace.getLastMessage().message.id < count - 1;
        }
    };
    const auto readRanges = [&] {
        QRandomGenerator random(3);
        while (growing) {
            const unsigned first = random.bounded(trace.getMessageCount() + 1);
            wrong += !areNumbered(trace.getMessages(first, 300), first);
            wrong += trace.messageNotes(first / 5000 * 5000).size() > 1;
        }
    };
    atTheSameTime({grow, readSingles, readSingles, readRanges});

    QCOMPARE(wrong.load(), 0);
    QCOMPARE(trace.getMessageCount(), frames);
    QVERIFY(areNumbered(trace.getMessages(0, frames), 0));
}

void TestDatachunkHandler::severalAppendersLoseNothing()
{
    constexpr quint32 appenders = 4;
    constexpr quint32 framesEach = 10 * chunk + 1;
    DatachunkHandler trace(nullptr, 0);
    std::vector<std::function<void()>> calls;
    for (quint32 who = 0; who < appenders; ++who) {
        calls.push_back([&trace, who] {
            CAN::CanRxMessage frame;
            frame.message.id = who;
            for (quint32 i = 0; i < framesEach; ++i) {
                frame.timeStamp.seconds = static_cast<qint32>(i);
                trace.appendCanMessage(frame);
            }
        });
    }
    atTheSameTime(calls);

    QCOMPARE(trace.getMessageCount(), appenders * framesEach);
    QCOMPARE(trace.lostMessageCount(), quint64(0));
    qint32 next[appenders] = {};
    const QVector<CAN::CanRxMessage> all = trace.getMessages(0, appenders * framesEach);
    QCOMPARE(static_cast<quint32>(all.size()), appenders * framesEach);
    for (const CAN::CanRxMessage &frame : all) {
        QVERIFY(frame.message.id < appenders);
        QCOMPARE(frame.timeStamp.seconds, next[frame.message.id]++);
    }
}

void TestDatachunkHandler::readersSurviveAClearedTrace()
{
    DatachunkHandler trace(nullptr, 0);
    std::atomic<bool> growing{true};
    std::atomic<int> wrong{0};

    const auto growAndClear = [&] {
        for (int round = 0; round < 20; ++round) {
            fill(trace, 3 * chunk + 5);
            trace.clear();
        }
        growing = false;
    };
    const auto read = [&] {
        QRandomGenerator random(4);
        while (growing) {
            const unsigned i = random.bounded(3 * chunk);
            CAN::CanRxMessage message;
            if (trace.getMessageAtIndex(message, i))
                wrong += message != numberedFrame(i);
            wrong += !areNumbered(trace.getMessages(i, 100), i);
        }
    };
    atTheSameTime({growAndClear, read, read});

    QCOMPARE(wrong.load(), 0);
}

void TestDatachunkHandler::tracesMayBeClearedFromAnyThread()
{
    constexpr unsigned frames = 20 * chunk;
    DatachunkHandler trace(nullptr, 0);
    std::atomic<int> growing{2};
    const auto grow = [&] {
        for (unsigned i = 0; i < frames; ++i)
            trace.appendCanMessage(numberedFrame(i));
        --growing;
    };
    const auto clear = [&] {
        while (growing > 0) {
            if (trace.getMessageCount() > 3 * chunk)
                trace.clear();
        }
    };
    atTheSameTime({grow, grow, clear});

    QCOMPARE(trace.lostMessageCount(), quint64(0));
    trace.clear();
    fill(trace, 3 * chunk);
    QVERIFY(areNumbered(trace.getMessages(0, 3 * chunk), 0));
    QCOMPARE(trace.getMessageCount(), 3 * chunk);
}

void TestDatachunkHandler::fullDiskCostsOnlyTheFramesThatFollow()
{
    QTemporaryDir directory;
    const TemporaryPlace place(directory.path());
    DatachunkHandler trace(nullptr, 0);
    QSignalSpy failed(&trace, &DatachunkHandler::storageFailed);
    const FullDisk disk(2 * chunkBytes + 1000);

    // Two chunks in the file, and the one that the file has no more room for in memory.
    fill(trace, 3 * chunk);
    QCOMPARE(failed.count(), 0);
    for (unsigned i = 1; i <= 1000; ++i) {
        trace.appendCanMessage(numberedFrame(i));
        QCOMPARE(trace.lostMessageCount(), quint64(i));
    }

    QCOMPARE(failed.count(), 1);
    const QString reason = failed[0][0].toString();
    QVERIFY2(reason.contains(directory.path()), qPrintable(reason));
    QVERIFY2(reason.contains(qt_error_string(EFBIG)), qPrintable(reason));
    QCOMPARE(trace.getMessageCount(), 3 * chunk);
    QCOMPARE(trace.getLastMessage(), numberedFrame(3 * chunk - 1));
    QVERIFY(areNumbered(trace.getMessages(0, 3 * chunk), 0));
    QCOMPARE(misplaced(trace, 3 * chunk), QVector<unsigned>());
    trace.addMessageNoteToLastMessage(note(1));
    QCOMPARE(trace.messageNotes(3 * chunk - 1), QStringList{note(1)});
}

void TestDatachunkHandler::roomOnTheDiskCountsForTheNextTrace()
{
    DatachunkHandler trace(nullptr, 0);
    QSignalSpy failed(&trace, &DatachunkHandler::storageFailed);
    {
        const FullDisk disk(0);
        fill(trace, chunk);
        trace.appendCanMessage(numberedFrame(0));
        QCOMPARE(failed.count(), 1);
    }
    trace.appendCanMessage(numberedFrame(0));
    QCOMPARE(trace.getMessageCount(), chunk);
    QCOMPARE(trace.lostMessageCount(), quint64(2));

    trace.clear();

    QCOMPARE(trace.lostMessageCount(), quint64(0));
    fill(trace, 3 * chunk);
    QCOMPARE(trace.getMessageCount(), 3 * chunk);
    QCOMPARE(trace.lostMessageCount(), quint64(0));
    QVERIFY(areNumbered(trace.getMessages(0, 3 * chunk), 0));
    QCOMPARE(failed.count(), 1);
}

void TestDatachunkHandler::fullDiskIsToldFromTheAppendingThread()
{
    DatachunkHandler trace(nullptr, 0);
    std::thread::id told;
    connect(
        &trace, &DatachunkHandler::storageFailed, &trace,
        [&] {
            told = std::this_thread::get_id();
            trace.getMessageCount(); // whoever is told may look at once
        },
        Qt::DirectConnection);
    const FullDisk disk(0);
    std::thread appending([&] {
        fill(trace, chunk);
        trace.appendCanMessage(numberedFrame(0));
    });
    const std::thread::id expected = appending.get_id();
    appending.join();
    QVERIFY(told == expected);
}

void TestDatachunkHandler::fullFileSystemIsTold()
{
    QTemporaryDir directory;
    const TemporaryPlace place(directory.path());
    DatachunkHandler trace(nullptr, 0);
    QSignalSpy failed(&trace, &DatachunkHandler::storageFailed);
    bool mounted = false;
    // The mount belongs to the one thread, and goes with it.
    std::thread([&] {
        const QByteArray path = directory.path().toLocal8Bit();
        mounted = ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
            && ::mount("tmpfs", path.constData(), "tmpfs", 0, "size=512k") == 0;
        if (!mounted)
            return;
        fill(trace, 2 * chunk);
        trace.appendCanMessage(numberedFrame(0));
    }).join();
    if (!mounted)
        QSKIP("No permission to mount a small file system.");

    QCOMPARE(failed.count(), 1);
    QVERIFY(failed[0][0].toString().contains(qt_error_string(ENOSPC)));
    QCOMPARE(trace.getMessageCount(), 2 * chunk);
    QCOMPARE(trace.lostMessageCount(), quint64(1));
    QVERIFY(areNumbered(trace.getMessages(0, 2 * chunk), 0));
}

QTEST_GUILESS_MAIN(TestDatachunkHandler)
#include "tst_datachunkhandler.moc"
