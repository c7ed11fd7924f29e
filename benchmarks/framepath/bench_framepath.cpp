// The road of a frame within one process: from an adapter's signal through the connection handler into the trace.
//
// Everything counts frames per second ("items_per_second") and, where frames are stored, checks at the end that none
// is missing.

#include "applicationinterfacehandler.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <random>
#include <vector>

namespace {
constexpr int batchFrames = 10000;
constexpr unsigned oldFrames = 1000000;
constexpr unsigned fewInMemory = 10000;

/// Emits frames as a receive thread does, on the thread that calls receive().
class SignallingAdapter : public AbstractCanAdapter
{
public:
    SignallingAdapter()
        : AbstractCanAdapter(CanAdapterDemo, QStringLiteral("Signalling"))
    {
    }
    ~SignallingAdapter() override { setRunningState(false); }

    void receive(CAN::CanRxMessage &frame) { emit newCanMessage(&frame); }

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

CAN::CanRxMessage frame()
{
    CAN::CanRxMessage frame;
    frame.message.id = 0x181;
    frame.message.length = CAN::maxClassicDataLength;
    return frame;
}

void stamp(CAN::CanRxMessage &frame, qint64 number)
{
    frame.timeStamp.seconds = static_cast<qint32>(number / 1000000);
    frame.timeStamp.microseconds = static_cast<qint32>(number % 1000000);
}

/// Whether the trace holds `frames` frames, the last of them in its place.
bool isComplete(const DatachunkHandler &trace, qint64 frames)
{
    CAN::CanRxMessage last;
    stamp(last, frames - 1);
    return trace.getMessageCount() == frames && trace.lostMessageCount() == 0
        && trace.getLastMessage().timeStamp == last.timeStamp;
}

/// An adapter and a trace, joined by the connection handler.
class Road
{
public:
    Road()
        : m_handler(nullptr, m_tracePointer, nullptr, m_primaryAdapter, m_scheduler, nullptr)
    {
    }

    void connectTo(DatachunkHandler &trace)
    {
        m_tracePointer = &trace;
        bool usesCanFd = false;
        m_handler.connectToAdapter(&m_adapter, false, usesCanFd);
    }

    void run(int frames)
    {
        for (int i = 0; i < frames; ++i) {
            stamp(m_frame, m_sent++);
            m_adapter.receive(m_frame);
        }
    }

    qint64 sent() const { return m_sent; }

private:
    CAN::CanRxMessage m_frame = frame();
    qint64 m_sent = 0;
    SignallingAdapter m_adapter;
    QPointer<DatachunkHandler> m_tracePointer;
    QPointer<AbstractCanAdapter> m_primaryAdapter;
    QPointer<CanScheduler> m_scheduler;
    ApplicationInterfaceHandler m_handler;
};

/// The baseline: what no road can do without.
void copyTheRecord(benchmark::State &state)
{
    std::vector<CAN::CanRxMessage> copies(batchFrames);
    CAN::CanRxMessage original = frame();
    qint64 number = 0;
    for (auto _ : state) {
        for (CAN::CanRxMessage &copy : copies) {
            stamp(original, number++);
            copy = original;
        }
        benchmark::DoNotOptimize(copies.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * batchFrames);
}

/// The trace alone, with the file behind it once the memory is used up.
void appendToTheTrace(benchmark::State &state)
{
    DatachunkHandler trace;
    CAN::CanRxMessage original = frame();
    qint64 number = 0;
    for (auto _ : state) {
        for (int i = 0; i < batchFrames; ++i) {
            stamp(original, number++);
            trace.appendCanMessage(original);
        }
    }
    if (!isComplete(trace, number))
        state.SkipWithError("frames are missing");
    state.SetItemsProcessed(number);
}

/// The trace lives in the thread on which the adapter emits, so that every step is a plain call.
void roadWithinOneThread(benchmark::State &state)
{
    DatachunkHandler trace;
    Road road;
    road.connectTo(trace);
    for (auto _ : state)
        road.run(batchFrames);
    if (!isComplete(trace, road.sent()))
        state.SkipWithError("frames are missing");
    state.SetItemsProcessed(road.sent());
}

/// Waits until the trace's thread has done all that was queued for it so far.
void drain(DatachunkHandler &trace)
{
    QMetaObject::invokeMethod(
        &trace, [] {}, Qt::BlockingQueuedConnection);
}

/// The adapter emits on this thread and the trace lives on another with an event loop, as in an application whose
/// trace belongs to its main thread. The time includes the waiting, after each batch, until all of it is stored.
///
/// Linux desktops usually run Qt on GLib's event loop, which wakes the other thread by a system call for each frame;
/// with QT_NO_GLIB=1 in the environment Qt's own loop calls once while the other thread is awake.
void roadToAnotherThread(benchmark::State &state, bool glib)
{
    const QByteArray before = qgetenv("QT_NO_GLIB");
    qputenv("QT_NO_GLIB", glib ? QByteArray() : QByteArray("1"));
    QThread thread;
    thread.start();
    DatachunkHandler trace;
    trace.moveToThread(&thread);
    drain(trace); // from here on its loop is made
    qputenv("QT_NO_GLIB", before);
    Road road;
    road.connectTo(trace);
    for (auto _ : state) {
        road.run(batchFrames);
        drain(trace);
    }
    thread.quit();
    thread.wait();
    if (!isComplete(trace, road.sent()))
        state.SkipWithError("frames are missing");
    state.SetItemsProcessed(road.sent());
}

/// A trace most of which is in the file.
void fill(DatachunkHandler &trace)
{
    CAN::CanRxMessage original = frame();
    for (unsigned i = 0; i < oldFrames; ++i) {
        stamp(original, i);
        trace.appendCanMessage(original);
    }
}

void readAnywhere(benchmark::State &state)
{
    DatachunkHandler trace(nullptr, fewInMemory);
    fill(trace);
    std::minstd_rand random(1);
    CAN::CanRxMessage message;
    for (auto _ : state) {
        if (!trace.getMessageAtIndex(message, static_cast<unsigned>(random()) % oldFrames))
            state.SkipWithError("a frame is missing");
        benchmark::DoNotOptimize(message);
    }
    state.SetItemsProcessed(state.iterations());
}

void readOneAfterTheOther(benchmark::State &state)
{
    DatachunkHandler trace(nullptr, fewInMemory);
    fill(trace);
    unsigned index = 0;
    CAN::CanRxMessage message;
    for (auto _ : state) {
        if (!trace.getMessageAtIndex(message, index++ % oldFrames))
            state.SkipWithError("a frame is missing");
        benchmark::DoNotOptimize(message);
    }
    state.SetItemsProcessed(state.iterations());
}

/// By ranges of the given size: 50 is a screenful.
void readRanges(benchmark::State &state)
{
    DatachunkHandler trace(nullptr, fewInMemory);
    fill(trace);
    const auto size = static_cast<unsigned>(state.range(0));
    unsigned first = 0;
    qint64 frames = 0;
    for (auto _ : state) {
        const QVector<CAN::CanRxMessage> range = trace.getMessages(first, size);
        if (range.isEmpty())
            state.SkipWithError("frames are missing");
        frames += range.size();
        first = (first + size) % oldFrames;
        benchmark::DoNotOptimize(range.constData());
    }
    state.SetItemsProcessed(frames);
}
} // namespace

BENCHMARK(copyTheRecord)->UseRealTime();
BENCHMARK(appendToTheTrace)->UseRealTime();
BENCHMARK(roadWithinOneThread)->UseRealTime();
BENCHMARK_CAPTURE(roadToAnotherThread, onGlibLoop, true)->UseRealTime();
BENCHMARK_CAPTURE(roadToAnotherThread, onQtLoop, false)->UseRealTime();
BENCHMARK(readAnywhere);
BENCHMARK(readOneAfterTheOther);
BENCHMARK(readRanges)->Arg(50)->Arg(4096);

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::AddCustomContext("physical limit",
                                "classic CAN at 1 Mbit/s carries at most about 21,000 frames/s, CAN FD at 8 Mbit/s "
                                "about 30,000");
    benchmark::AddCustomContext("goal", "500,000 frames/s on the road, with nothing lost");
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
