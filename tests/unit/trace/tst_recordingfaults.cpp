// Recordings in a process that dies, and on a disk that is full. They are made in a child, which has threads: that is too
// much for the sanitizer of threads, and no other test needs it.

#include "childprocess.h"
#include "recording.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

class TestRecordingFaults : public QObject
{
    Q_OBJECT

private slots:
    void fullFileSystemEndsTheRecording();
    void recordingSurvivesAKill();
};

void TestRecordingFaults::fullFileSystemEndsTheRecording()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("recording.qrm"));
    const QString verdict = ChildProcess::runOnSmallDisk(directory.path(), "256k", [&fileName] {
        DatachunkHandler trace;
        const Failures failed(trace);
        if (!trace.startRecording(fileName))
            return QStringLiteral("not started");
        append(trace, 0, 20000);
        trace.stopRecording();
        if (failed.count() != 1 || !failed.first().contains(qt_error_string(ENOSPC)))
            return QStringLiteral("told %1 times: %2").arg(failed.count()).arg(failed.first());
        const Recording recording(fileName);
        const unsigned kept = recording.trace.getMessageCount();
        const bool good = kept > 1000 && recording.holds(0, kept) && recording.trace.importRemark().isEmpty();
        return good ? QString() : QStringLiteral("%1 frames").arg(kept);
    });
    if (verdict == QLatin1String("no small disk could be mounted"))
        QSKIP("No permission to mount a small file system.");
    QCOMPARE(verdict, QString());
}

void TestRecordingFaults::recordingSurvivesAKill()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("recording.qrm"));
    for (const qint64 size : {0, 1000, 200000, 2000000, 3333333}) {
        const QString verdict = ChildProcess::run([&] {
            DatachunkHandler trace;
            if (!trace.startRecording(fileName))
                return QStringLiteral("not started");
            for (unsigned next = 0; QFileInfo(fileName).size() < size; next += 100)
                append(trace, next, next + 100);
            // While the other thread writes.
            ::raise(SIGKILL);
            return QStringLiteral("alive");
        });
        QCOMPARE(verdict, QStringLiteral("ended by signal 9"));

        const Recording recording(fileName);
        QVERIFY(recording.loaded);
        const unsigned kept = recording.trace.getMessageCount();
        QVERIFY(recording.holds(0, kept));
        QVERIFY(kept >= size / (32 + 8 + CAN::maxDataLength));
    }
}

QTEST_GUILESS_MAIN(TestRecordingFaults)
#include "tst_recordingfaults.moc"
