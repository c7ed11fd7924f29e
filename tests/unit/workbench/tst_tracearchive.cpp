#include "datachunkhandler.h"
#include "messages.h"
#include "tracearchive.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
constexpr int patience = 10'000; // ms
} // namespace

class TestTraceArchive : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void savedTraceCanBeOpened();
    void openedFileReplacesTheTrace();
    void refusedFileLeavesTheTrace();
    void unwritableFileIsTold();
    void progressOfALoadIsTold();
    void oneThingAtATime();
    void recordingHoldsTheFramesFromThenOn();
    void recordingThatCannotBeginIsTold();
    void destructionInTheMiddleOfALoadIsHarmless();

private:
    QString path(const char *name) const { return m_directory->filePath(QString::fromLatin1(name)); }
    void append(int frames)
    {
        for (int i = 0; i < frames; ++i)
            m_trace->appendCanMessage(at(i * 1000LL, dataFrame(static_cast<quint32>(i % 0x800), "0102")));
    }
    void save(const QString &file)
    {
        m_files->save(file);
        QTRY_VERIFY_WITH_TIMEOUT(!m_files->isBusy(), patience);
    }
    void open(const QString &file)
    {
        m_files->open(file);
        QTRY_VERIFY_WITH_TIMEOUT(!m_files->isBusy(), patience);
    }
    QString lastRemark() const { return m_remarks->isEmpty() ? QString() : m_remarks->last().first().toString(); }

    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<DatachunkHandler> m_trace;
    std::unique_ptr<TraceArchive> m_files;
    std::unique_ptr<QSignalSpy> m_remarks;
};

void TestTraceArchive::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    m_trace = std::make_unique<DatachunkHandler>();
    m_files = std::make_unique<TraceArchive>(m_trace.get());
    m_remarks = std::make_unique<QSignalSpy>(m_files.get(), &TraceArchive::remark);
}

void TestTraceArchive::cleanup()
{
    m_remarks.reset();
    m_files.reset();
    m_trace.reset();
}

void TestTraceArchive::savedTraceCanBeOpened()
{
    append(100);
    save(path("trace.qrm"));
    QVERIFY2(lastRemark().startsWith(QStringLiteral("The trace is saved to ")), qPrintable(lastRemark()));
    m_trace->clear();
    const QSignalSpy replaced(m_files.get(), &TraceArchive::traceReplaced);
    open(path("trace.qrm"));
    QCOMPARE(replaced.count(), 1);
    QCOMPARE(m_trace->getMessageCount(), 100U);
    QVERIFY2(lastRemark().startsWith(QStringLiteral("100 frames from ")), qPrintable(lastRemark()));
}

void TestTraceArchive::openedFileReplacesTheTrace()
{
    append(3);
    save(path("trace.qrm"));
    append(50);
    open(path("trace.qrm"));
    QCOMPARE(m_trace->getMessageCount(), 3U);
}

void TestTraceArchive::refusedFileLeavesTheTrace()
{
    append(3);
    QFile file(path("text.qrm"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not a capture at all");
    file.close();
    open(file.fileName());
    QCOMPARE(m_trace->getMessageCount(), 3U);
    QCOMPARE(lastRemark(), m_trace->importError());
    QVERIFY(!lastRemark().isEmpty());
}

void TestTraceArchive::unwritableFileIsTold()
{
    append(3);
    save(path("missing/trace.qrm"));
    QVERIFY2(!lastRemark().isEmpty() && !lastRemark().startsWith(QStringLiteral("The trace is saved")),
             qPrintable(lastRemark()));
}

void TestTraceArchive::progressOfALoadIsTold()
{
    append(1000);
    save(path("trace.qrm"));
    const QSignalSpy progressed(m_files.get(), &TraceArchive::progressed);
    open(path("trace.qrm"));
    QVERIFY(progressed.count() >= 2);
    QCOMPARE(progressed.first().first().toDouble(), 0.0);
    QCOMPARE(progressed.last().first().toDouble(), 100.0);
}

void TestTraceArchive::oneThingAtATime()
{
    append(3);
    save(path("trace.qrm"));
    const QSignalSpy busy(m_files.get(), &TraceArchive::busyChanged);
    m_files->open(path("trace.qrm"));
    QVERIFY(m_files->isBusy());
    m_files->save(path("other.qrm"));
    m_files->open(path("missing.qrm"));
    QTRY_VERIFY_WITH_TIMEOUT(!m_files->isBusy(), patience);
    QCOMPARE(busy.count(), 2);
    QVERIFY(!QFile::exists(path("other.qrm")));
    QCOMPARE(m_trace->getMessageCount(), 3U);
}

void TestTraceArchive::recordingHoldsTheFramesFromThenOn()
{
    append(3);
    const QSignalSpy changed(m_files.get(), &TraceArchive::recordingChanged);
    m_files->startRecording(path("recording.qrm"));
    QVERIFY(m_files->isRecording());
    append(5);
    m_files->stopRecording();
    QVERIFY(!m_files->isRecording());
    QCOMPARE(changed.count(), 2);
    open(path("recording.qrm"));
    QCOMPARE(m_trace->getMessageCount(), 5U);
}

void TestTraceArchive::recordingThatCannotBeginIsTold()
{
    m_files->startRecording(path("missing/recording.qrm"));
    QVERIFY(!m_files->isRecording());
    QVERIFY(!lastRemark().isEmpty());
}

void TestTraceArchive::destructionInTheMiddleOfALoadIsHarmless()
{
    append(200'000);
    save(path("trace.qrm"));
    m_files->open(path("trace.qrm"));
    m_remarks.reset();
    m_files.reset();
    QVERIFY(m_trace->getMessageCount() <= 200'000U);
}

QTEST_MAIN(TestTraceArchive)
#include "tst_tracearchive.moc"
