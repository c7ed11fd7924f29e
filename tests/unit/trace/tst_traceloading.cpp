#include "captures.h"
#include "childprocess.h"
#include "datachunkhandler.h"
#include "fulldisk.h"
#include "traceframes.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <thread>

#include <sys/stat.h>

namespace {
void write(const QString &fileName, const QByteArray &bytes)
{
    QFile file(fileName);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

DatachunkHandler &fill(DatachunkHandler &trace, unsigned frames)
{
    for (unsigned i = trace.getMessageCount(); i < frames; ++i)
        trace.appendCanMessage(numberedFrame(i));
    return trace;
}

QByteArray captureOf(unsigned frames)
{
    const CaptureBuilder make;
    QByteArray capture = make.section() + make.interface();
    for (unsigned i = 0; i < frames; ++i)
        capture += make.packet(i, CaptureBuilder::frame(i));
    return capture;
}
} // namespace

class TestTraceLoading : public QObject
{
    Q_OBJECT

private slots:
    void loadReplacesTheTrace();
    void refusedFileLeavesTheTraceAsItWas_data();
    void refusedFileLeavesTheTraceAsItWas();
    void fileWithoutRightsIsRefused();
    void pipeIsRefusedAtOnce();
    void remarkTellsWhatIsMissing_data();
    void remarkTellsWhatIsMissing();
    void progressIsPerCent();
    void loadsFromAnyThread();
    void loadMayBeCancelledFromWithin();
    void cancelBeforeALoadIsForgotten();
    void secondLoadIsRefusedWhileOneRuns();
    void noRecordingBeginsWhileALoadRuns();
    void importIsOpenUntilItIsClosed();
    void closingAnImportMaySayMore_data();
    void closingAnImportMaySayMore();
    void discardedImportLeavesNothing();
    void clearForgetsWhereFramesCameFrom();
    void fullTemporaryDiskIsToldByTheLoad();
};

void TestTraceLoading::loadReplacesTheTrace()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("trace.qrm"));
    write(fileName, captureOf(3));
    DatachunkHandler trace;
    fill(trace, 10);
    trace.addMessageNoteToNextMessage(QStringLiteral("left over"));

    QVERIFY(trace.loadQrmFile(fileName));

    QCOMPARE(trace.getMessageCount(), 3u);
    QCOMPARE(trace.messageNotes(0), QStringList());
    QVERIFY(trace.loadQrmFile(fileName));
    QCOMPARE(trace.getMessageCount(), 3u);
}

void TestTraceLoading::refusedFileLeavesTheTraceAsItWas_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("error");

    const CaptureBuilder make;
    QTest::newRow("empty") << QByteArray("")
                           << QStringLiteral("is not a trace file: it begins neither like pcapng nor like pcap");
    QTest::newRow("text") << QByteArray("# timestamp id (dlc): data\n")
                          << QStringLiteral("is not a trace file: it begins neither like pcapng nor like pcap");
    QTest::newRow("another network") << make.section() + make.interface(CaptureBuilder::ethernet)
                                     << QStringLiteral("holds no CAN frames: it was captured on another kind of");
    QTest::newRow("damaged") << captureOf(0) + QByteArray(12, '\0')
                             << QStringLiteral("is damaged at byte 48, before its first frame");
    QTest::newRow("no file") << QByteArray() << QStringLiteral("cannot be opened (%1)").arg(qt_error_string(ENOENT));
}

void TestTraceLoading::refusedFileLeavesTheTraceAsItWas()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, error);
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    if (!bytes.isNull())
        write(fileName, bytes);
    DatachunkHandler trace;
    fill(trace, 10);

    QVERIFY(!trace.loadQrmFile(fileName));

    QVERIFY2(trace.importError().startsWith(fileName), qPrintable(trace.importError()));
    QVERIFY2(trace.importError().contains(error), qPrintable(trace.importError()));
    QCOMPARE(trace.importRemark(), QString());
    QCOMPARE(trace.getMessageCount(), 10u);
}

void TestTraceLoading::fileWithoutRightsIsRefused()
{
    QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(1));
    QFile::setPermissions(fileName, {});
    QFile::setPermissions(directory.path(), static_cast<QFile::Permissions>(0x5555));
    const QString verdict = ChildProcess::runWithoutRights([&fileName] {
        DatachunkHandler trace;
        return trace.loadQrmFile(fileName) ? QStringLiteral("loaded") : trace.importError();
    });
    QVERIFY2(verdict.contains(qt_error_string(EACCES)), qPrintable(verdict));
    QFile::setPermissions(directory.path(), static_cast<QFile::Permissions>(0x7777));
}

void TestTraceLoading::pipeIsRefusedAtOnce()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("pipe.qrm"));
    QCOMPARE(::mkfifo(QFile::encodeName(fileName).constData(), 0600), 0);
    DatachunkHandler trace;
    QString error;
    QVERIFY(!trace.loadQrmFile(fileName));
    QVERIFY(trace.importError().contains(QStringLiteral("is not a file")));
    QVERIFY(!trace.loadQrmFile(directory.path()));
    QVERIFY(trace.importError().contains(QStringLiteral("is not a file")));
}

void TestTraceLoading::remarkTellsWhatIsMissing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("remark");

    const CaptureBuilder make;
    const QByteArray capture = captureOf(2);
    const QByteArray other = make.packet(0, "no frame");
    QTest::newRow("nothing") << capture << QString();
    QTest::newRow("end") << capture.left(capture.size() - 1)
                         << QStringLiteral("The end of the file is missing. All frames before it were loaded.");
    QTest::newRow("damaged end") << capture + QByteArray(12, '\0')
                                 << QStringLiteral("The file is damaged from byte %1 on. All frames before it were "
                                                   "loaded.")
                                        .arg(capture.size());
    QTest::newRow("other packets") << capture + make.packet(0, "short", {}, 0) + other.left(0)
                                   << QStringLiteral("Packets that are no CAN frames were left out: 1.");
    QTest::newRow("other packets and the end")
        << capture + make.packet(0, "short") + "x"
        << QStringLiteral("The end of the file is missing. All frames before it were loaded. Packets that are no CAN "
                          "frames were left out: 1.");
}

void TestTraceLoading::remarkTellsWhatIsMissing()
{
    QFETCH(QByteArray, bytes);
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, bytes);
    DatachunkHandler trace;
    QVERIFY(trace.loadQrmFile(fileName));
    QTEST(trace.importRemark(), "remark");
    QCOMPARE(trace.importError(), QString());
}

void TestTraceLoading::progressIsPerCent()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(1));
    DatachunkHandler trace;
    const QSignalSpy progress(&trace, &DatachunkHandler::sigQRMLoadingProgress);
    QVERIFY(trace.loadQrmFile(fileName));
    QCOMPARE(progress.first().first().toDouble(), 0.0);
    QCOMPARE(progress.last().first().toDouble(), 100.0);
}

void TestTraceLoading::loadsFromAnyThread()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(20000));
    DatachunkHandler trace;
    bool loaded = false;
    std::thread loading([&] { loaded = trace.loadQrmFile(fileName); });
    unsigned seen = 0;
    bool grew = true;
    while (trace.getMessageCount() < 20000 && trace.importError().isEmpty()) {
        grew = grew && trace.getMessageCount() >= seen;
        seen = trace.getMessageCount();
    }
    loading.join();
    QVERIFY(loaded);
    QVERIFY(grew);
}

void TestTraceLoading::loadMayBeCancelledFromWithin()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(20000));
    DatachunkHandler trace;
    connect(&trace, &DatachunkHandler::sigQRMLoadingProgress, &trace, &DatachunkHandler::cancelImport);
    QVERIFY(!trace.loadQrmFile(fileName));
    QCOMPARE(trace.importError(), QStringLiteral("Loading %1 was cancelled.").arg(fileName));
    QVERIFY(trace.getMessageCount() < 20000);
}

void TestTraceLoading::cancelBeforeALoadIsForgotten()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(20000));
    DatachunkHandler trace;
    trace.cancelImport();
    QVERIFY(trace.loadQrmFile(fileName));
    QCOMPARE(trace.getMessageCount(), 20000u);
}

void TestTraceLoading::secondLoadIsRefusedWhileOneRuns()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(1));
    DatachunkHandler trace;
    QList<bool> second;
    connect(&trace, &DatachunkHandler::sigQRMLoadingProgress, &trace,
            [&] { second.append(trace.loadQrmFile(fileName)); });
    QVERIFY(trace.loadQrmFile(fileName));
    QCOMPARE(second, (QList<bool>{false, false}));
    QCOMPARE(trace.getMessageCount(), 1u);
}

void TestTraceLoading::noRecordingBeginsWhileALoadRuns()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    const QString recording = directory.filePath(QStringLiteral("recording.qrm"));
    write(fileName, captureOf(1));
    DatachunkHandler trace;
    QString error;
    connect(&trace, &DatachunkHandler::sigQRMLoadingProgress, &trace, [&] { trace.startRecording(recording, &error); });
    QVERIFY(trace.loadQrmFile(fileName));
    QVERIFY(!trace.isRecording());
    QCOMPARE(error, QStringLiteral("A file is being loaded. Start the recording when that is done."));
    QVERIFY(!QFile::exists(recording));
}

void TestTraceLoading::importIsOpenUntilItIsClosed()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(1));
    DatachunkHandler trace;
    QVERIFY(!trace.isImporting());
    const bool loaded = trace.loadQrmFile(fileName);
    QVERIFY(trace.isImporting());
    QCOMPARE(trace.importedFileType(), DatachunkHelper::NoFile);

    trace.setImportFinished(loaded, DatachunkHelper::ImportFileType(1), QString(), false);

    QVERIFY(!trace.isImporting());
    QCOMPARE(trace.importedFileType(), DatachunkHelper::TraceFile);
    QCOMPARE(trace.getMessageCount(), 1u);
}

void TestTraceLoading::closingAnImportMaySayMore_data()
{
    QTest::addColumn<bool>("success");
    QTest::addColumn<QString>("said");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("remark");

    const QString missing = QStringLiteral("The end of the file is missing. All frames before it were loaded.");
    const QString said = QStringLiteral("no use");
    QTest::newRow("success") << true << QString() << QString() << missing;
    QTest::newRow("success with a word") << true << said << QString() << said;
    QTest::newRow("failure") << false << QString() << QString() << missing;
    QTest::newRow("failure with a word") << false << said << said << missing;
}

void TestTraceLoading::closingAnImportMaySayMore()
{
    QFETCH(bool, success);
    QFETCH(QString, said);
    QFETCH(QString, error);
    QFETCH(QString, remark);
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(1) + "x");
    DatachunkHandler trace;
    const QSignalSpy finished(&trace, &DatachunkHandler::importFinished);
    trace.loadQrmFile(fileName);

    trace.setImportFinished(success, DatachunkHelper::TraceFile, said, false);

    QCOMPARE(trace.importError(), error);
    QCOMPARE(trace.importRemark(), remark);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished[0],
             (QVariantList{success, QVariant::fromValue(DatachunkHelper::TraceFile), success ? remark : error}));
}

void TestTraceLoading::discardedImportLeavesNothing()
{
    DatachunkHandler trace;
    fill(trace, 5);
    trace.setImportFinished(true, DatachunkHelper::TraceFile, QString(), true);
    QCOMPARE(trace.getMessageCount(), 0u);
    QCOMPARE(trace.importedFileType(), DatachunkHelper::NoFile);
}

void TestTraceLoading::clearForgetsWhereFramesCameFrom()
{
    DatachunkHandler trace;
    trace.setImportFinished(true, DatachunkHelper::TraceFile, QString(), false);
    QCOMPARE(trace.importedFileType(), DatachunkHelper::TraceFile);
    trace.clear();
    QCOMPARE(trace.importedFileType(), DatachunkHelper::NoFile);
}

void TestTraceLoading::fullTemporaryDiskIsToldByTheLoad()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(20000));
    DatachunkHandler trace(nullptr, 0);
    const QSignalSpy failed(&trace, &DatachunkHandler::storageFailed);
    const FullDisk disk(0);
    QVERIFY(!trace.loadQrmFile(fileName));
    QVERIFY(trace.importError().contains(QStringLiteral("the trace takes no more frames")));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(trace.getMessageCount(), 4096u);
}

QTEST_GUILESS_MAIN(TestTraceLoading)
#include "tst_traceloading.moc"
