// The lines of a log, written and read: by the library, and the plain way that QString offers, which gives the same
// bytes and frames, as the tests of both show.
//
// Everything counts lines per second ("items_per_second"), of the frames of a busy classic bus and of CAN FD frames with
// 64 bytes.

#include "logline.h"
#include "plainlogtext.h"
#include "plainreplayline.h"
#include "randomframes.h"
#include "replayline.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {
constexpr std::size_t frameCount = 1000;

enum Kind { Classic, LongFd };

std::vector<CAN::CanRxMessage> frames(int kind)
{
    RandomFrames random;
    std::vector<CAN::CanRxMessage> result;
    while (result.size() < frameCount) {
        CAN::CanRxMessage record = random.next();
        const CAN::CanMessage &frame = record.message;
        const int length = kind == Classic ? CAN::maxClassicDataLength : CAN::maxDataLength;
        if (!frame.rtr && frame.fd == (kind == LongFd) && frame.length == length)
            result.push_back(record);
    }
    return result;
}

std::vector<QString> lines(int kind)
{
    std::vector<QString> result;
    for (const CAN::CanRxMessage &record : frames(kind))
        result.push_back(QString::fromLatin1(logMessageLine(record).trimmed()));
    return result;
}

template <typename Item, typename Work>
void measure(benchmark::State &state, const std::vector<Item> &items, Work work)
{
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(work(items[next]));
        next = next + 1 == items.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(state.range(0) == Classic ? "8 bytes" : "64 bytes");
}

void writeLine(benchmark::State &state)
{
    measure(state, frames(state.range(0)), logMessageLine);
}
BENCHMARK(writeLine)->Arg(Classic)->Arg(LongFd);

void writeLineThePlainWay(benchmark::State &state)
{
    measure(state, frames(state.range(0)), PlainLogText::messageLine);
}
BENCHMARK(writeLineThePlainWay)->Arg(Classic)->Arg(LongFd);

void readLine(benchmark::State &state)
{
    measure(state, lines(state.range(0)), [](const QString &line) { return parseReplayLine(line); });
}
BENCHMARK(readLine)->Arg(Classic)->Arg(LongFd);

void readLineThePlainWay(benchmark::State &state)
{
    measure(state, lines(state.range(0)), PlainReplayLine::parse);
}
BENCHMARK(readLineThePlainWay)->Arg(Classic)->Arg(LongFd);
} // namespace

int main(int argc, char *argv[])
{
    benchmark::AddCustomContext("goal", "10 times the plain way in writing, 5 times in reading");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
