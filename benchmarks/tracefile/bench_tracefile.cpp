// What a trace of two million frames costs on its way to a file and back, beside copying the file, which no program that
// reads or writes all of it can beat. "peak_MB" is the most memory of the process meanwhile, which counts the trace: with
// few frames in memory it shows what the way itself takes.

#include "datachunkhandler.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {
constexpr unsigned frames = 2000000;
constexpr unsigned fewInMemory = 10000;

QString directory;

QString path(const char *name)
{
    return directory + QLatin1Char('/') + QLatin1String(name);
}

/// Classic and CAN FD frames of several lengths, 100 us apart.
CAN::CanRxMessage frame(unsigned number)
{
    CAN::CanRxMessage frame;
    frame.timeStamp = CanTimeStamp(static_cast<qint32>(number / 10000), static_cast<qint32>(number % 10000 * 100));
    frame.message.id = number & 0x7FF;
    frame.message.fd = number % 8 == 0;
    frame.message.length = frame.message.fd ? 32 : 8;
    return frame;
}

void fill(DatachunkHandler &trace)
{
    for (unsigned i = 0; i < frames; ++i)
        trace.appendCanMessage(frame(i));
}

/// The file that is loaded and copied.
QString savedFile()
{
    const QString fileName = path("saved.qrm");
    if (!QFile::exists(fileName)) {
        DatachunkHandler trace(nullptr, fewInMemory);
        fill(trace);
        trace.saveQrmFile(fileName);
    }
    return fileName;
}

/// The most memory of the process from construction on, or from the last one on that the system allowed to forget.
class PeakMemory
{
public:
    PeakMemory()
    {
        QFile references(QStringLiteral("/proc/self/clear_refs"));
        if (references.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            references.write("5");
    }

    void report(benchmark::State &state) const
    {
        QFile status(QStringLiteral("/proc/self/status"));
        status.open(QIODevice::ReadOnly);
        const QRegularExpression peak(QStringLiteral("VmHWM:\\s*(\\d+) kB"));
        state.counters["peak_MB"] = peak.match(QString::fromLatin1(status.readAll())).captured(1).toDouble() / 1024;
        state.counters["file_MB"] = static_cast<double>(QFile(savedFile()).size()) / (1024 * 1024);
    }
};

void copyTheFile(benchmark::State &state)
{
    const QString from = savedFile();
    const QString to = path("copy.qrm");
    const PeakMemory memory;
    for (auto _ : state) {
        QFile::remove(to);
        if (!QFile::copy(from, to))
            state.SkipWithError("the file was not copied");
    }
    memory.report(state);
}
BENCHMARK(copyTheFile)->UseRealTime()->Unit(benchmark::kMillisecond);

void load(benchmark::State &state)
{
    const QString fileName = savedFile();
    DatachunkHandler trace(nullptr, static_cast<unsigned>(state.range(0)));
    const PeakMemory memory;
    for (auto _ : state) {
        if (!trace.loadQrmFile(fileName) || trace.getMessageCount() != frames)
            state.SkipWithError("the trace was not loaded");
    }
    state.SetItemsProcessed(state.iterations() * frames);
    memory.report(state);
}
BENCHMARK(load)->ArgName("in_memory")->Arg(fewInMemory)->Arg(frames)->UseRealTime()->Unit(benchmark::kMillisecond);

void save(benchmark::State &state)
{
    DatachunkHandler trace(nullptr, static_cast<unsigned>(state.range(0)));
    fill(trace);
    const PeakMemory memory;
    for (auto _ : state) {
        if (!trace.saveQrmFile(path("again.qrm")))
            state.SkipWithError("the trace was not saved");
    }
    state.SetItemsProcessed(state.iterations() * frames);
    memory.report(state);
}
BENCHMARK(save)->ArgName("in_memory")->Arg(fewInMemory)->Arg(frames)->UseRealTime()->Unit(benchmark::kMillisecond);

/// What the bus sees of a recording: the time that appending takes.
void append(benchmark::State &state)
{
    const bool recording = state.range(0) != 0;
    for (auto _ : state) {
        DatachunkHandler trace(nullptr, fewInMemory);
        if (recording && !trace.startRecording(path("recording.qrm")))
            state.SkipWithError("no recording began");
        fill(trace);
        state.PauseTiming();
        trace.stopRecording();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(append)->ArgName("recording")->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    // On the disk that the build is on: a temporary folder may be memory.
    const QTemporaryDir place(QDir::currentPath() + QStringLiteral("/traces-XXXXXX"));
    directory = place.path();
    benchmark::AddCustomContext("goal", "loading and saving within a small factor of copying the file");
    benchmark::AddCustomContext("frames", "2,000,000");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
