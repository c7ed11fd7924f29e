#include "fulldisk.h"
#include "recording.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <thread>

#include <sys/stat.h>

namespace {
unsigned framesIn(const QString &fileName)
{
    return Recording(fileName).trace.getMessageCount();
}
} // namespace

class TestTraceRecorder : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void framesReachTheFileWhileTheyCome();
    void recordingBeginsWithTheNextFrame();
    void stopWritesAllThatIsThere();
    void nothingIsWrittenAfterTheStop();
    void destructionEndsTheRecording();
    void notesAreRecorded();
    void noteReachesAFrameThatIsInTheFileAlready();
    void clearedTraceIsRecordedToItsEnd();
    void newRecordingEndsTheOneBefore();
    void fileFromBeforeIsOverwritten();
    void placesThatTakeNoRecordingAreRefused_data();
    void placesThatTakeNoRecordingAreRefused();
    void loadIsRefusedWhileARecordingRuns();
    void fullDiskLeavesWholeBlocks_data();
    void fullDiskLeavesWholeBlocks();
    void fullDiskWhileClearingIsTold();
    void failureIsToldFromTheRecordingThread();
    void traceOnItsWayToTheDiskIsRecorded();
    void appendersAndClearsFromSeveralThreadsLoseNothing();

private:
    QScopedPointer<QTemporaryDir> m_directory;
    QString m_file;
};

void TestTraceRecorder::init()
{
    m_directory.reset(new QTemporaryDir);
    m_file = m_directory->filePath(QStringLiteral("recording.qrm"));
}

void TestTraceRecorder::cleanup()
{
    m_directory.reset();
}

void TestTraceRecorder::framesReachTheFileWhileTheyCome()
{
    DatachunkHandler trace;
    QVERIFY(!trace.isRecording());
    QVERIFY(trace.startRecording(m_file));
    QVERIFY(trace.isRecording());
    QVERIFY(Recording(m_file).holds(0, 0));
    append(trace, 0, 10);
    QTRY_VERIFY(Recording(m_file).holds(0, 10));
    append(trace, 10, 20);
    QTRY_VERIFY(Recording(m_file).holds(0, 20));
}

void TestTraceRecorder::recordingBeginsWithTheNextFrame()
{
    DatachunkHandler trace;
    append(trace, 0, 10);
    trace.addMessageNoteToLastMessage(QStringLiteral("before"));
    QVERIFY(trace.startRecording(m_file));
    trace.addMessageNoteToLastMessage(QStringLiteral("still of the frame before"));
    append(trace, 10, 15);
    trace.stopRecording();
    const Recording recording(m_file);
    QVERIFY(recording.holds(10, 15));
    QCOMPARE(recording.trace.messageNotes(0), QStringList());
}

void TestTraceRecorder::stopWritesAllThatIsThere()
{
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 20000);
    trace.stopRecording();
    QVERIFY(!trace.isRecording());
    QVERIFY(Recording(m_file).holds(0, 20000));
}

void TestTraceRecorder::nothingIsWrittenAfterTheStop()
{
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 5);
    trace.stopRecording();
    append(trace, 5, 10);
    trace.stopRecording();
    QVERIFY(Recording(m_file).holds(0, 5));
}

void TestTraceRecorder::destructionEndsTheRecording()
{
    {
        DatachunkHandler trace;
        QVERIFY(trace.startRecording(m_file));
        append(trace, 0, 5);
    }
    QVERIFY(Recording(m_file).holds(0, 5));
}

void TestTraceRecorder::notesAreRecorded()
{
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    trace.addMessageNoteToNextMessage(QStringLiteral("Connect:Demo:500"));
    append(trace, 0, 5);
    trace.addMessageNoteToLastMessage(QStringLiteral("Disconnected"));
    trace.stopRecording();
    const Recording recording(m_file);
    QCOMPARE(recording.trace.messageNotes(0), QStringList{QStringLiteral("Connect:Demo:500")});
    QCOMPARE(recording.trace.messageNotes(4), QStringList{QStringLiteral("Disconnected")});
}

void TestTraceRecorder::noteReachesAFrameThatIsInTheFileAlready()
{
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    trace.addMessageNoteToNextMessage(QStringLiteral("in time"));
    append(trace, 0, 1);
    QTRY_COMPARE(framesIn(m_file), 1u);
    trace.addMessageNoteToLastMessage(QStringLiteral("late"));
    QTRY_COMPARE(Recording(m_file).trace.messageNotes(0),
                 (QStringList{QStringLiteral("in time"), QStringLiteral("late")}));
    trace.addMessageNoteToLastMessage(QStringLiteral("later"));
    append(trace, 1, 2);
    trace.stopRecording();
    const Recording recording(m_file);
    QVERIFY(recording.holds(0, 2));
    QCOMPARE(recording.trace.messageNotes(0),
             (QStringList{QStringLiteral("in time"), QStringLiteral("late"), QStringLiteral("later")}));
    QCOMPARE(recording.trace.messageNotes(1), QStringList());
}

void TestTraceRecorder::clearedTraceIsRecordedToItsEnd()
{
    DatachunkHandler trace;
    append(trace, 0, 3);
    QVERIFY(trace.startRecording(m_file));
    append(trace, 3, 9000);
    trace.clear();
    append(trace, 9000, 9010);
    trace.clear();
    trace.clear();
    append(trace, 9010, 9011);
    trace.stopRecording();
    QVERIFY(Recording(m_file).holds(3, 9011));
}

void TestTraceRecorder::newRecordingEndsTheOneBefore()
{
    const QString second = m_directory->filePath(QStringLiteral("second.qrm"));
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 5);
    QVERIFY(trace.startRecording(second));
    append(trace, 5, 10);
    trace.stopRecording();
    QVERIFY(Recording(m_file).holds(0, 5));
    QVERIFY(Recording(second).holds(5, 10));
}

void TestTraceRecorder::fileFromBeforeIsOverwritten()
{
    QFile before(m_file);
    QVERIFY(before.open(QIODevice::WriteOnly));
    before.write(QByteArray(1000000, 'x'));
    before.close();
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 1);
    trace.stopRecording();
    QVERIFY(Recording(m_file).holds(0, 1));
    QVERIFY(QFileInfo(m_file).size() < 1000);
}

void TestTraceRecorder::placesThatTakeNoRecordingAreRefused_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("reason");

    QTest::newRow("no such folder") << QStringLiteral("no/such/file.qrm") << qt_error_string(ENOENT);
    QTest::newRow("a folder") << QString() << qt_error_string(EISDIR);
    QTest::newRow("a pipe") << QStringLiteral("pipe") << qt_error_string(ENXIO);
    QTest::newRow("a device") << QStringLiteral("device") << QStringLiteral("it is not a file");
}

void TestTraceRecorder::placesThatTakeNoRecordingAreRefused()
{
    QFETCH(QString, place);
    QFETCH(QString, reason);
    ::mkfifo(QFile::encodeName(m_directory->filePath(QStringLiteral("pipe"))).constData(), 0600);
    QFile::link(QStringLiteral("/dev/null"), m_directory->filePath(QStringLiteral("device")));
    DatachunkHandler trace;
    QString error;
    QVERIFY(!trace.startRecording(m_directory->filePath(place), &error));
    QVERIFY2(error.contains(reason), qPrintable(error));
    QVERIFY(!trace.isRecording());
}

void TestTraceRecorder::loadIsRefusedWhileARecordingRuns()
{
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 5);
    QVERIFY(!trace.loadQrmFile(m_file));
    QCOMPARE(trace.importError(),
             QStringLiteral("The trace is being recorded. Stop the recording before you load a file."));
    QCOMPARE(trace.getMessageCount(), 5u);
    trace.stopRecording();
    QVERIFY(trace.loadQrmFile(m_file));
}

void TestTraceRecorder::fullDiskLeavesWholeBlocks_data()
{
    QTest::addColumn<int>("bytes");
    for (const int bytes : {1000, 1001, 1002, 1037, 5000, 70000})
        QTest::addRow("%d bytes", bytes) << bytes;
}

void TestTraceRecorder::fullDiskLeavesWholeBlocks()
{
    QFETCH(int, bytes);
    DatachunkHandler trace;
    const Failures failed(trace);
    {
        const FullDisk disk(static_cast<rlim_t>(bytes));
        QVERIFY(trace.startRecording(m_file));
        append(trace, 0, 2000);
        QTRY_COMPARE(failed.count(), 1);
    }
    QVERIFY(failed.first().contains(qt_error_string(EFBIG)));
    QVERIFY(failed.first().contains(m_file));
    QVERIFY(!trace.isRecording());
    append(trace, 2000, 2010);
    trace.stopRecording();
    QCOMPARE(failed.count(), 1);

    const Recording recording(m_file);
    QCOMPARE(recording.trace.importRemark(), QString());
    const unsigned kept = recording.trace.getMessageCount();
    QVERIFY(recording.holds(0, kept));
    const qint64 nextFrame = 32 + ((8 + fdFrame(kept).message.length + 3) & ~3);
    QVERIFY(QFileInfo(m_file).size() + nextFrame > bytes);
}

void TestTraceRecorder::fullDiskWhileClearingIsTold()
{
    DatachunkHandler trace;
    const Failures failed(trace);
    const FullDisk disk(1000);
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 2000);
    trace.clear();
    QCOMPARE(trace.getMessageCount(), 0u);
    QTRY_COMPARE(failed.count(), 1);
    QVERIFY(!trace.isRecording());
}

void TestTraceRecorder::failureIsToldFromTheRecordingThread()
{
    DatachunkHandler trace;
    std::atomic<bool> told = false;
    bool running = true;
    std::thread::id thread;
    connect(
        &trace, &DatachunkHandler::recordingFailed, &trace,
        [&] {
            thread = std::this_thread::get_id();
            running = trace.isRecording();
            trace.stopRecording(); // is too late, and does no harm
            told = true;
        },
        Qt::DirectConnection);
    const FullDisk disk(1000);
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 2000);
    QTRY_VERIFY(told);
    QVERIFY(!running);
    QVERIFY(thread != std::this_thread::get_id());
}

void TestTraceRecorder::traceOnItsWayToTheDiskIsRecorded()
{
    DatachunkHandler trace(nullptr, 0);
    QVERIFY(trace.startRecording(m_file));
    append(trace, 0, 50000);
    trace.stopRecording();
    QVERIFY(Recording(m_file).holds(0, 50000));
}

void TestTraceRecorder::appendersAndClearsFromSeveralThreadsLoseNothing()
{
    constexpr unsigned perThread = 20000;
    DatachunkHandler trace(nullptr, 0);
    QVERIFY(trace.startRecording(m_file));
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i)
        threads.emplace_back([&] { append(trace, 0, perThread); });
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) {
            trace.addMessageNoteToLastMessage(QStringLiteral("note"));
            trace.clear();
            std::this_thread::yield();
        }
    });
    for (std::thread &thread : threads)
        thread.join();
    trace.stopRecording();
    QCOMPARE(framesIn(m_file), 2 * perThread);
}

QTEST_GUILESS_MAIN(TestTraceRecorder)
#include "tst_tracerecorder.moc"
