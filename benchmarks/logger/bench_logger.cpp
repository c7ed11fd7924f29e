// What the file logger takes: frames from a receive thread through its window into the file.
//
// Beside it stand the two parts that no such road can do without: a loop that formats and writes the same lines, and
// queued delivery of the records from thread to thread. All count frames per second ("items_per_second"). Linux desktops
// usually run Qt on GLib's event loop, which wakes the window's thread by a system call for each frame; with QT_NO_GLIB=1
// in the environment Qt's own loop calls once while the thread is awake.
//
// The last one logs a full bus in real time: 30,000 frames/s, sent by one adapter of the embedded bus and received by
// another. It counts the lines and tells by how much a timer of the window's thread came too late at most ("late_ms").
// LOGGER_BENCH_SECONDS in the environment says for how long.

#include "adaptercontract.h"
#include "canscheduler.h"
#include "fileloggerwindow.h"
#include "logline.h"
#include "randomframes.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace {
constexpr int batchFrames = 10000;
constexpr int busFramesPerSecond = 30000;

using Frames = std::vector<CAN::CanRxMessage>;

/// Frames of a busy classic bus.
const Frames &frames()
{
    static const Frames all = [] {
        RandomFrames random;
        Frames result;
        while (result.size() < batchFrames) {
            const CAN::CanRxMessage record = random.next();
            if (!record.message.rtr && record.message.length == CAN::maxClassicDataLength)
                result.push_back(record);
        }
        return result;
    }();
    return all;
}

qint64 lineCount(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : -1;
}

/// Emits frames as a receive thread does, on the thread that calls receiveAll().
class SignallingAdapter : public AbstractCanAdapter
{
public:
    SignallingAdapter()
        : AbstractCanAdapter(CanAdapterDemo, QStringLiteral("Signalling"))
    {
    }
    ~SignallingAdapter() override { setRunningState(false); }

    void receiveAll()
    {
        for (CAN::CanRxMessage frame : frames())
            emit newCanMessage(&frame);
    }

    int open() override { return OpenOk; }
    void close() override { setRunningState(false); }
    void setBitrate(quint16) override {}
    void setFdBitrate(quint16) override {}
    int getDeviceNumber() override { return 0; }
    void setRunning(bool running) override { setRunningState(running); }
    QList<AdapterOption> getSupportedOptions() override { return {}; }
    CAN::CANBitTimingThresholds getThresholds(bool) override { return {}; }
    WriteResult write(CAN::CanMessage *) override { return WriteOk; }
};

/// A window that logs what an adapter receives.
class Logger
{
public:
    explicit Logger(AbstractCanAdapter *adapter)
        : m_scheduler(adapter)
    {
        m_window.findChild<QLineEdit *>(QStringLiteral("edtFilePath"))->setText(path());
        m_window.canSchedulerChanged(&m_scheduler);
        m_window.show();
        QApplication::processEvents();
        m_window.findChild<QPushButton *>(QStringLiteral("btnStart"))->click();
    }

    /// Number of frames in the file, whose log ends with this.
    qint64 loggedFrames()
    {
        m_window.stopAction();
        return lineCount(path()) - 1;
    }

private:
    QString path() const { return m_folder.filePath(QStringLiteral("log.txt")); }

    QTemporaryDir m_folder;
    CanScheduler m_scheduler;
    FileLoggerWindow m_window;
};

/// Runs the event loop while `work` runs on another thread, and until all is done that it queued.
void runBeside(const std::function<void()> &work)
{
    QEventLoop loop;
    std::thread thread([&] {
        work();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    thread.join();
}

void formatAndWrite(benchmark::State &state)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("log.txt")));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        state.SkipWithError("no file");
    for (auto _ : state) {
        for (const CAN::CanRxMessage &frame : frames())
            file.write(logMessageLine(frame));
    }
    state.SetItemsProcessed(state.iterations() * batchFrames);
}
BENCHMARK(formatAndWrite)->UseRealTime();

void queuedDelivery(benchmark::State &state)
{
    SignallingAdapter adapter;
    QObject receiver;
    qint64 delivered = 0;
    QObject::connect(
        &adapter, &AbstractCanAdapter::newCanMessage, &receiver,
        [&](CAN::CanRxMessage *frame) {
            QMetaObject::invokeMethod(
                &receiver, [&delivered, copy = *frame] { delivered += copy.message.id <= 0x1FFFFFFF ? 1 : 0; },
                Qt::QueuedConnection);
        },
        Qt::DirectConnection);
    for (auto _ : state)
        runBeside([&] { adapter.receiveAll(); });
    if (delivered != state.iterations() * batchFrames)
        state.SkipWithError("frames are missing");
    state.SetItemsProcessed(delivered);
}
BENCHMARK(queuedDelivery)->UseRealTime();

void logWithinOneThread(benchmark::State &state)
{
    SignallingAdapter adapter;
    Logger logger(&adapter);
    for (auto _ : state) {
        adapter.receiveAll();
        QApplication::processEvents();
    }
    const qint64 logged = logger.loggedFrames();
    if (logged != state.iterations() * batchFrames)
        state.SkipWithError("lines are missing");
    state.SetItemsProcessed(logged);
}
BENCHMARK(logWithinOneThread)->UseRealTime();

void logFromAnotherThread(benchmark::State &state)
{
    SignallingAdapter adapter;
    Logger logger(&adapter);
    for (auto _ : state)
        runBeside([&] { adapter.receiveAll(); });
    const qint64 logged = logger.loggedFrames();
    if (logged != state.iterations() * batchFrames)
        state.SkipWithError("lines are missing");
    state.SetItemsProcessed(logged);
}
BENCHMARK(logFromAnotherThread)->UseRealTime();

// ---- In real time.

std::unique_ptr<AbstractCanAdapter> joinEmbeddedBus(const char *name)
{
    std::unique_ptr<AbstractCanAdapter> adapter(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QString::fromLatin1(name)));
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, QStringLiteral("45987"));
    if (adapter->open() != AbstractCanAdapter::OpenOk)
        return nullptr;
    adapter->setRunning(true);
    return adapter;
}

/// Sends in the rhythm of a full bus; gives the number of frames that the adapter took.
qint64 sendForSeconds(AbstractCanAdapter &adapter, int seconds)
{
    constexpr int framesATurn = busFramesPerSecond / 1000;
    auto deadline = std::chrono::steady_clock::now();
    qint64 sent = 0;
    for (int turn = 0; turn < 1000 * seconds; ++turn) {
        for (int i = 0; i < framesATurn; ++i) {
            CAN::CanMessage frame = frames()[static_cast<std::size_t>(sent) % frames().size()].message;
            frame.fd = frame.brs = frame.extraFlag = false;
            sent += adapter.write(&frame) == AbstractCanAdapter::WriteOk ? 1 : 0;
        }
        deadline += std::chrono::milliseconds(1);
        std::this_thread::sleep_until(deadline);
    }
    return sent;
}

/// By how much, in ms, a timer with a short period came too late at most.
class Lateness
{
public:
    Lateness()
    {
        m_clock.start();
        QObject::connect(&m_timer, &QTimer::timeout, [this] { m_most = std::max(m_most, m_clock.restart() - period); });
        m_timer.start(period);
    }
    qint64 most() const { return m_most; }

private:
    static constexpr int period = 10;
    QElapsedTimer m_clock;
    QTimer m_timer;
    qint64 m_most = 0;
};

void logFullBus(benchmark::State &state)
{
    const int seconds = std::max(1, qEnvironmentVariableIntValue("LOGGER_BENCH_SECONDS"));
    const auto receiver = joinEmbeddedBus("Demo 1");
    const auto sender = joinEmbeddedBus("Demo 2");
    if (!receiver || !sender) {
        state.SkipWithError("no embedded bus");
        return;
    }
    Logger logger(receiver.get());
    const Lateness lateness;
    qint64 sent = 0;
    for (auto _ : state) {
        runBeside([&] {
            sent += sendForSeconds(*sender, seconds);
            for (int wait = 0; wait < 5000 && receiver->framesReceived() < quint64(sent); ++wait)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        });
    }
    state.counters["late_ms"] = double(lateness.most());
    state.counters["sent"] = double(sent);
    const qint64 logged = logger.loggedFrames();
    state.counters["lines"] = double(logged);
    if (logged != sent || sent != qint64(busFramesPerSecond) * seconds)
        state.SkipWithError("lines are missing");
    state.SetItemsProcessed(logged);
}
BENCHMARK(logFullBus)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char *argv[])
{
    QStandardPaths::setTestModeEnabled(true);
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(settings.path()));
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Kestrune"));
    QApplication::setApplicationName(QStringLiteral("bench_logger"));
    benchmark::AddCustomContext("goal", "300,000 lines/s from another thread; nothing lost on a full bus");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
