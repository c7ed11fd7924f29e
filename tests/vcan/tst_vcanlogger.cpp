#include "connectionbench.h"
#include "frameexamples.h"
#include "loggerform.h"
#include "vcanbench.h"

/// What others send on a link, recorded by our logger.
class TestVcanLogger : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void logHoldsWhatPythonPlays();
    void logEndsWhenTheLinkGoesDown();
};

namespace {
/// A logger's window that follows a connection to vcan0.
struct LoggerBench
{
    ConnectionBench connection;
    LoggerForm form;

    LoggerBench()
    {
        QObject::connect(&connection.handler, &ApplicationInterfaceHandler::newCanScheduler, form.window.get(),
                         &FileLoggerWindow::canSchedulerChanged);
        connection.add(AbstractCanAdapter::CanAdapterSocketCan, "vcan0");
        bool usesCanFd = false;
        connection.handler.connectAdapters(true, usesCanFd);
    }
    ~LoggerBench() { connection.handler.disconnectFromAdapter(); }
};
} // namespace

void TestVcanLogger::init()
{
    LoggerForm::forgetSettings();
}

void TestVcanLogger::logHoldsWhatPythonPlays()
{
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/XXXXXX.log")); // the name tells the format
    QVERIFY(FrameExamples::record(file, "vcan0", FrameExamples::all()));
    LoggerBench bench;
    bench.form.click("btnStart");
    Vcan::Candump dump("vcan0");
    QVERIFY(Vcan::run(QStringLiteral("/usr/bin/python3 -m can.player -i socketcan -c vcan0 --fd ") + file.fileName(),
                      Vcan::Quiet));
    // The kernel gives both listeners the same time of a frame.
    const QList<CandumpLine> seen = dump.lines(int(FrameExamples::all().size()));
    QByteArray expected = "# timestamp id (dlc): data\n";
    for (const CandumpLine &line : seen)
        expected += line.logLine();
    QTRY_COMPARE(bench.form.countText(), QString::number(seen.size()));
    bench.form.click("btnStop");
    QCOMPARE(bench.form.content(), expected);
}

void TestVcanLogger::logEndsWhenTheLinkGoesDown()
{
    LoggerBench bench;
    bench.form.click("btnStart");
    QVERIFY(Vcan::run("cansend vcan0 123#11"));
    QTRY_COMPARE(bench.form.countText(), QStringLiteral("1"));
    QVERIFY(Vcan::run("ip link set vcan0 down"));
    QTRY_VERIFY(!bench.form.isLogging());
    QCOMPARE(bench.form.log(), QStringLiteral("123 CAN connection lost"));
    QVERIFY(Vcan::run("ip link set vcan0 up"));
}

QTEST_MAIN(TestVcanLogger)
#include "tst_vcanlogger.moc"
