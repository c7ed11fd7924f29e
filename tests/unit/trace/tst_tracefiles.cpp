#include "captures.h"
#include "childprocess.h"
#include "datachunkhandler.h"
#include "fulldisk.h"
#include "traceexport.h"
#include "traceframes.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <thread>

#include <sys/stat.h>

namespace {
constexpr qint32 firstSecond = std::numeric_limits<qint32>::min();
constexpr qint32 lastSecond = std::numeric_limits<qint32>::max();

QByteArray contents(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &fileName, const QByteArray &bytes)
{
    QFile file(fileName);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

/// Frames of every kind: any flags, any identifier, any length that the kind allows, any time.
class RandomFrames
{
public:
    explicit RandomFrames(quint32 seed)
        : m_random(seed)
    {
    }

    CAN::CanRxMessage next()
    {
        CAN::CanRxMessage frame;
        frame.timeStamp = CanTimeStamp(static_cast<qint32>(m_random.generate()), m_random.bounded(1000000));
        CAN::CanMessage &message = frame.message;
        message.ext = flag();
        message.id = m_random.generate() & (message.ext ? 0x1FFFFFFF : 0x7FF);
        message.fd = flag();
        message.length = static_cast<quint8>(
            m_random.bounded(1 + (message.fd ? CAN::maxDataLength : CAN::maxClassicDataLength)));
        for (int i = 0; i < message.length; ++i)
            message.data[i] = static_cast<quint8>(m_random.generate());
        message.rtr = flag();
        message.extraFlag = flag();
        message.brs = flag();
        message.errorFrame = flag();
        return frame;
    }

    /// Mostly none.
    QStringList nextNotes()
    {
        QStringList notes;
        while (m_random.bounded(8) == 0) {
            QString note;
            for (int length = m_random.bounded(40); length > 0; --length)
                note += QString::fromUcs4(&letters[m_random.bounded(letterCount)], 1);
            notes.append(note);
        }
        return notes;
    }

private:
    // One of each length in UTF-8.
    static constexpr uint letters[] = {'a', ' ', 0xE4, 0x20AC, 0x1F68C};
    static constexpr int letterCount = 5;

    bool flag() { return m_random.bounded(2) != 0; }

    QRandomGenerator m_random;
};

/// A trace saved and loaded again.
class RoundTrip
{
public:
    explicit RoundTrip(const DatachunkHandler &trace)
    {
        const QString fileName = m_directory.filePath(QStringLiteral("trace.qrm"));
        worked = trace.saveQrmFile(fileName) && loaded.loadQrmFile(fileName);
    }

    bool worked;
    DatachunkHandler loaded;

private:
    QTemporaryDir m_directory;
};

QStringList notesBack(const QStringList &notes)
{
    DatachunkHandler trace;
    trace.appendCanMessage(numberedFrame(0));
    for (const QString &note : notes)
        trace.addMessageNoteToLastMessage(note);
    const RoundTrip trip(trace);
    return trip.worked ? trip.loaded.messageNotes(0) : QStringList{QStringLiteral("failed")};
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

class TestTraceFiles : public QObject
{
    Q_OBJECT

private slots:
    void framesOfEveryKindComeBack();
    void stampsComeBackNormalised_data();
    void stampsComeBackNormalised();
    void notesComeBack_data();
    void notesComeBack();
    void moreNotesThanABlockTakesAreCut();
    void traceLongerThanItsMemoryComesBack();
    void emptyTraceComesBack();
    void frameBeforeTheEpochAddsItsInterfaceOnce();
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
    void savingReplacesAFileOnlyWhenAllIsWritten();
    void smallTraceOnAFullDiskIsTold();
    void savingWhereNothingCanBeWrittenIsTold();
    void savingNoticesThatTheTraceIsCleared();
};

void TestTraceFiles::framesOfEveryKindComeBack()
{
    constexpr unsigned count = 100000;
    DatachunkHandler trace;
    RandomFrames random(4);
    for (unsigned i = 0; i < count; ++i) {
        trace.appendCanMessage(random.next());
        const QStringList notes = random.nextNotes();
        for (const QString &note : notes)
            trace.addMessageNoteToLastMessage(note);
    }

    const RoundTrip trip(trace);

    QVERIFY(trip.worked);
    QCOMPARE(trip.loaded.importRemark(), QString());
    QCOMPARE(trip.loaded.getMessageCount(), count);
    QCOMPARE(trip.loaded.getMessages(0, count), trace.getMessages(0, count));
    for (unsigned i = 0; i < count; ++i)
        QCOMPARE(trip.loaded.messageNotes(i), trace.messageNotes(i));
}

void TestTraceFiles::stampsComeBackNormalised_data()
{
    QTest::addColumn<CanTimeStamp>("stamp");
    QTest::addColumn<CanTimeStamp>("back");

    for (const CanTimeStamp stamp :
         {CanTimeStamp(0, 0), CanTimeStamp(1, 1), CanTimeStamp(1600000000, 123456), CanTimeStamp(-1, 999999),
          CanTimeStamp(-1, 0), CanTimeStamp(firstSecond, 0), CanTimeStamp(lastSecond, 999999)})
        QTest::addRow("%d.%06d", stamp.seconds, stamp.microseconds) << stamp << stamp;
    QTest::newRow("distance backwards") << CanTimeStamp(-1, -1) << CanTimeStamp(-2, 999999);
    QTest::newRow("too many microseconds") << CanTimeStamp(1, 2000001) << CanTimeStamp(3, 1);
    QTest::newRow("before the first") << CanTimeStamp(firstSecond, -1) << CanTimeStamp(firstSecond, 0);
    QTest::newRow("after the last") << CanTimeStamp(lastSecond, lastSecond) << CanTimeStamp(lastSecond, 999999);
}

void TestTraceFiles::stampsComeBackNormalised()
{
    QFETCH(CanTimeStamp, stamp);
    CAN::CanRxMessage frame = numberedFrame(1);
    frame.timeStamp = stamp;
    DatachunkHandler trace;
    trace.appendCanMessage(frame);
    const RoundTrip trip(trace);
    QVERIFY(trip.worked);
    QTEST(trip.loaded.getLastMessage().timeStamp, "back");
}

void TestTraceFiles::notesComeBack_data()
{
    QTest::addColumn<QStringList>("notes");
    QTest::addColumn<QStringList>("back");

    const auto row = [](const char *name, const QStringList &notes) { QTest::newRow(name) << notes << notes; };
    const QString euro(QChar(0x20AC));
    row("none", {});
    row("one", {QStringLiteral("Connect:Demo:500")});
    row("empty", {QString()});
    row("several, one of them empty", {QStringLiteral("a"), QString(), QStringLiteral("b")});
    row("lines", {QStringLiteral("first\nsecond")});
    row("not only letters", {euro + QStringLiteral("\t\"';")});
    row("longest", {QString(65535, QLatin1Char('x'))});
    QTest::newRow("too long") << QStringList{QString(65536, QLatin1Char('x'))}
                              << QStringList{QString(65535, QLatin1Char('x'))};
    QTest::newRow("too long within a character")
        << QStringList{QLatin1Char('x') + euro.repeated(21845)} << QStringList{QLatin1Char('x') + euro.repeated(21844)};
}

void TestTraceFiles::notesComeBack()
{
    QFETCH(QStringList, notes);
    QTEST(notesBack(notes), "back");
}

void TestTraceFiles::moreNotesThanABlockTakesAreCut()
{
    QStringList notes;
    for (int i = 0; i < 300; ++i)
        notes.append(QString(65000, QLatin1Char('x')));
    constexpr int fit = ((16 << 20) - 200) / (65000 + 4);
    QCOMPARE(notesBack(notes).size(), fit);
}

void TestTraceFiles::traceLongerThanItsMemoryComesBack()
{
    DatachunkHandler trace(nullptr, 0);
    const unsigned frames = 30000;
    for (unsigned i = 0; i < frames; ++i) {
        CAN::CanRxMessage frame = numberedFrame(i);
        frame.message.fd = true; // so that any length is one
        trace.appendCanMessage(frame);
    }
    const RoundTrip trip(trace);
    QVERIFY(trip.worked);
    QCOMPARE(trip.loaded.getMessages(0, frames), trace.getMessages(0, frames));
}

void TestTraceFiles::emptyTraceComesBack()
{
    const RoundTrip trip{DatachunkHandler()};
    QVERIFY(trip.worked);
    QCOMPARE(trip.loaded.getMessageCount(), 0u);
    QCOMPARE(trip.loaded.importRemark(), QString());
}

void TestTraceFiles::frameBeforeTheEpochAddsItsInterfaceOnce()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("trace.qrm"));
    const auto sizeWith = [&fileName](std::initializer_list<int> seconds) {
        DatachunkHandler trace;
        for (const int second : seconds) {
            CAN::CanRxMessage frame;
            frame.timeStamp.seconds = second;
            trace.appendCanMessage(frame);
        }
        trace.saveQrmFile(fileName);
        return QFileInfo(fileName).size();
    };
    constexpr int frame = 32 + 8;
    constexpr int interface = 20 + 8 + 12 + 4;
    const qint64 none = sizeWith({});
    QCOMPARE(sizeWith({0, 0}) - none, 2 * frame);
    QCOMPARE(sizeWith({0, -1, 0, -2}) - none, 4 * frame + interface);
}

void TestTraceFiles::loadReplacesTheTrace()
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

void TestTraceFiles::refusedFileLeavesTheTraceAsItWas_data()
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

void TestTraceFiles::refusedFileLeavesTheTraceAsItWas()
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

void TestTraceFiles::fileWithoutRightsIsRefused()
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

void TestTraceFiles::pipeIsRefusedAtOnce()
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

void TestTraceFiles::remarkTellsWhatIsMissing_data()
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

void TestTraceFiles::remarkTellsWhatIsMissing()
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

void TestTraceFiles::progressIsPerCent()
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

void TestTraceFiles::loadsFromAnyThread()
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

void TestTraceFiles::loadMayBeCancelledFromWithin()
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

void TestTraceFiles::cancelBeforeALoadIsForgotten()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("file.qrm"));
    write(fileName, captureOf(20000));
    DatachunkHandler trace;
    trace.cancelImport();
    QVERIFY(trace.loadQrmFile(fileName));
    QCOMPARE(trace.getMessageCount(), 20000u);
}

void TestTraceFiles::secondLoadIsRefusedWhileOneRuns()
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

void TestTraceFiles::noRecordingBeginsWhileALoadRuns()
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

void TestTraceFiles::importIsOpenUntilItIsClosed()
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

void TestTraceFiles::closingAnImportMaySayMore_data()
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

void TestTraceFiles::closingAnImportMaySayMore()
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

void TestTraceFiles::discardedImportLeavesNothing()
{
    DatachunkHandler trace;
    fill(trace, 5);
    trace.setImportFinished(true, DatachunkHelper::TraceFile, QString(), true);
    QCOMPARE(trace.getMessageCount(), 0u);
    QCOMPARE(trace.importedFileType(), DatachunkHelper::NoFile);
}

void TestTraceFiles::clearForgetsWhereFramesCameFrom()
{
    DatachunkHandler trace;
    trace.setImportFinished(true, DatachunkHelper::TraceFile, QString(), false);
    QCOMPARE(trace.importedFileType(), DatachunkHelper::TraceFile);
    trace.clear();
    QCOMPARE(trace.importedFileType(), DatachunkHelper::NoFile);
}

void TestTraceFiles::fullTemporaryDiskIsToldByTheLoad()
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

void TestTraceFiles::savingReplacesAFileOnlyWhenAllIsWritten()
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("trace.qrm"));
    write(fileName, "before");
    DatachunkHandler trace;
    fill(trace, 50000);
    QString error;
    {
        const FullDisk disk(100000);
        QVERIFY(!trace.saveQrmFile(fileName, &error));
    }
    QVERIFY2(error.contains(qt_error_string(EFBIG)), qPrintable(error));
    QCOMPARE(contents(fileName), QByteArray("before"));
    QCOMPARE(QDir(directory.path()).entryList(QDir::Files), QStringList{QStringLiteral("trace.qrm")});
    QVERIFY(trace.saveQrmFile(fileName, &error));
    QVERIFY(contents(fileName).size() > 100000);
}

void TestTraceFiles::smallTraceOnAFullDiskIsTold()
{
    const QTemporaryDir directory;
    DatachunkHandler trace;
    fill(trace, 10);
    QString error;
    const FullDisk disk(100);
    QVERIFY(!trace.saveQrmFile(directory.filePath(QStringLiteral("trace.qrm")), &error));
    QVERIFY2(error.contains(qt_error_string(EFBIG)), qPrintable(error));
    QVERIFY(QDir(directory.path()).isEmpty());
}

void TestTraceFiles::savingWhereNothingCanBeWrittenIsTold()
{
    const QTemporaryDir directory;
    DatachunkHandler trace;
    QString error;
    QVERIFY(!trace.saveQrmFile(directory.filePath(QStringLiteral("no/such/folder.qrm")), &error));
    QVERIFY2(error.contains(QStringLiteral("cannot be written (%1)").arg(qt_error_string(ENOENT))), qPrintable(error));
    QVERIFY(!trace.saveQrmFile(directory.path(), &error));
    QVERIFY(!trace.saveQrmFile(directory.path()));
}

void TestTraceFiles::savingNoticesThatTheTraceIsCleared()
{
    class ClearingDevice : public QBuffer
    {
    public:
        explicit ClearingDevice(TraceStore &store)
            : m_store(store)
        {
            open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        }

    protected:
        qint64 writeData(const char *, qint64 size) override
        {
            m_store.clear();
            for (unsigned i = 0; i < 20000; ++i)
                m_store.append(numberedFrame(i));
            return size;
        }

    private:
        TraceStore &m_store;
    };
    TraceStore store{TraceStore::Limits()};
    for (unsigned i = 0; i < 10000; ++i)
        store.append(numberedFrame(i));
    ClearingDevice device(store);
    QCOMPARE(TraceExport::run(store, device), TraceExport::TraceUnreadable);
}

QTEST_GUILESS_MAIN(TestTraceFiles)
#include "tst_tracefiles.moc"
