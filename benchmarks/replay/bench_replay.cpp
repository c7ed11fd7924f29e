// How true a replay is to its recording: 10,000 frames with equal gaps, played by the replayer, by a plain loop that
// sleeps for each gap, and by a loop that sleeps until each frame's own moment.
//
// Per recording: "drift_percent", by how much the whole took too long, and "median_us" and "p99_us", by how much a
// single gap was missed, in either direction.

#include "adaptercontract.h"
#include "canreplayer.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include <sys/prctl.h>
#include <time.h>

namespace {
constexpr int frameCount = 10000;
constexpr qint64 second = 1000000000; // nanoseconds

qint64 now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * second + time.tv_nsec;
}

/// When each frame went out, in nanoseconds.
using Times = std::vector<qint64>;

Times timesForAll()
{
    Times times;
    times.reserve(frameCount);
    return times;
}

/// Notes when it is asked to write.
class NotingAdapter : public AbstractCanAdapter
{
public:
    NotingAdapter()
        : AbstractCanAdapter(CanAdapterDemo, QStringLiteral("Noting"))
    {
    }
    ~NotingAdapter() override { setRunningState(false); }

    Times times = timesForAll();

    int open() override { return OpenOk; }
    void close() override { setRunningState(false); }
    void setBitrate(quint16) override {}
    void setFdBitrate(quint16) override {}
    int getDeviceNumber() override { return 0; }
    void setRunning(bool running) override { setRunningState(running); }
    QList<AdapterOption> getSupportedOptions() override { return {}; }
    CAN::CANBitTimingThresholds getThresholds(bool) override { return {}; }
    WriteResult write(CAN::CanMessage *) override
    {
        times.push_back(now());
        return WriteOk;
    }
};

bool writeRecording(const QString &path, qint64 gap)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (qint64 i = 0; i < frameCount; ++i) {
        file.write(QStringLiteral(" %1.%2 0x123/291  (8): 00 11 22 33 44 55 66 77;0\n")
                       .arg(i * gap / 1000000)
                       .arg(i * gap % 1000000, 6, 10, QLatin1Char('0'))
                       .toLatin1());
    }
    return file.flush();
}

Times playByReplayer(qint64 gap)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("recording.txt"));
    NotingAdapter adapter;
    if (!writeRecording(path, gap))
        return {};
    CANReplayer replayer(path);
    QEventLoop loop;
    QObject::connect(&replayer, &CANReplayer::finished, &loop, &QEventLoop::quit);
    replayer.setCanApdater(&adapter);
    replayer.start();
    loop.exec();
    return adapter.times;
}

Times playByPlainSleeps(qint64 gap)
{
    Times times = timesForAll();
    for (int i = 0; i < frameCount; ++i) {
        times.push_back(now());
        QThread::usleep(static_cast<unsigned long>(gap));
    }
    return times;
}

Times playByDeadlines(qint64 gap)
{
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    Times times = timesForAll();
    const qint64 start = now();
    for (qint64 i = 0; i < frameCount; ++i) {
        times.push_back(now());
        const qint64 next = start + (i + 1) * gap * 1000;
        const timespec deadline = {next / second, next % second};
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr);
    }
    // 0 stands for the thread's default.
    prctl(PR_SET_TIMERSLACK, 0UL, 0UL, 0UL, 0UL);
    return times;
}

void report(benchmark::State &state, const Times &times, qint64 gap)
{
    if (times.size() != frameCount) {
        state.SkipWithError("frames are missing");
        return;
    }
    std::vector<double> errors;
    for (std::size_t i = 1; i < times.size(); ++i)
        errors.push_back(std::abs(double(times[i] - times[i - 1]) / 1000 - double(gap)));
    std::sort(errors.begin(), errors.end());
    const double nominal = double(gap) * (frameCount - 1);
    const double taken = double(times.back() - times.front()) / 1000;
    state.counters["drift_percent"] = (taken / nominal - 1) * 100;
    state.counters["median_us"] = errors[errors.size() / 2];
    state.counters["p99_us"] = errors[errors.size() * 99 / 100];
}

void play(benchmark::State &state, Times (*player)(qint64))
{
    const qint64 gap = state.range(0);
    for (auto _ : state)
        report(state, player(gap), gap);
}

void replayer(benchmark::State &state)
{
    play(state, playByReplayer);
}
void plainSleeps(benchmark::State &state)
{
    play(state, playByPlainSleeps);
}
void deadlines(benchmark::State &state)
{
    play(state, playByDeadlines);
}

void bothRecordings(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgName("gap_us")->Arg(1000)->Arg(250)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK(replayer)->Apply(bothRecordings);
BENCHMARK(plainSleeps)->Apply(bothRecordings);
BENCHMARK(deadlines)->Apply(bothRecordings);
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::AddCustomContext("goal", "a replay that drifts by less than 0.1 %");
    benchmark::AddCustomContext("frames", "10,000");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
