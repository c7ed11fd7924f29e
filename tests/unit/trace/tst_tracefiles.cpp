#include "datachunkhandler.h"
#include "fulldisk.h"
#include "traceexport.h"
#include "traceframes.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <limits>

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
