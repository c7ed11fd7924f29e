// What it costs to hold every received frame against a template, beside the least that could be done: a memcmp of the
// same bytes written by hand.

#include "templatecomparison.h"

#include <QRandomGenerator>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {
constexpr std::size_t frameCount = 4096;
constexpr quint32 identifier = 0x181;

/// Every eighth frame has the identifier and the leading bytes of the template; the others differ somewhere.
std::vector<CAN::CanRxMessage> randomFrames(quint8 length)
{
    QRandomGenerator random(1);
    std::vector<CAN::CanRxMessage> frames(frameCount);
    for (CAN::CanRxMessage &frame : frames) {
        CAN::CanMessage &message = frame.message;
        message.id = random.bounded(8) == 0 ? identifier : random.bounded(0x800u);
        message.length = length;
        message.fd = length > CAN::maxClassicDataLength;
        for (quint8 &byte : message.data)
            byte = 0x5A;
        if (random.bounded(2) == 0)
            message.data[random.bounded(int(length))] = static_cast<quint8>(random.bounded(256));
    }
    return frames;
}

/// As strict as a template can be but for the identifier, so that many frames get as far as their bytes.
CANRAW::CanRawCompareMessage dataTemplate(quint8 length)
{
    CANRAW::CanRawCompareMessage wanted;
    wanted.id.isSet = false;
    wanted.length.value = length;
    wanted.data = QByteArray(length, '\x5A');
    wanted.consideration = QBitArray(length, true);
    wanted.fd = length > CAN::maxClassicDataLength ? Qt::Checked : Qt::Unchecked;
    return wanted;
}

void compareAll(benchmark::State &state, const CANRAW::CanRawCompareMessage &wanted,
                const std::vector<CAN::CanRxMessage> &frames)
{
    std::size_t matching = 0;
    for (auto _ : state) {
        for (const CAN::CanRxMessage &frame : frames)
            matching += CANRAW::matches(wanted, frame) ? 1 : 0;
    }
    if (matching == 0)
        state.SkipWithError("no frame matched");
    state.SetItemsProcessed(state.iterations() * std::int64_t(frames.size()));
}

void compareIdentifier(benchmark::State &state)
{
    const auto length = static_cast<quint8>(state.range(0));
    CANRAW::CanRawCompareMessage wanted = dataTemplate(length);
    wanted.id = {identifier, true};
    compareAll(state, wanted, randomFrames(length));
}
BENCHMARK(compareIdentifier)->Arg(8)->Arg(64);

void compareData(benchmark::State &state)
{
    const auto length = static_cast<quint8>(state.range(0));
    compareAll(state, dataTemplate(length), randomFrames(length));
}
BENCHMARK(compareData)->Arg(8)->Arg(64);

/// The template as a builder leaves it: the bits of all 64 bytes, and a few of them set.
void compareFewBytes(benchmark::State &state)
{
    const auto length = static_cast<quint8>(state.range(0));
    CANRAW::CanRawCompareMessage wanted = dataTemplate(length);
    wanted.consideration = QBitArray(CAN::maxDataLength);
    wanted.consideration.fill(true, 0, 4);
    compareAll(state, wanted, randomFrames(length));
}
BENCHMARK(compareFewBytes)->Arg(8)->Arg(64);

void memcmpByHand(benchmark::State &state)
{
    const auto length = static_cast<quint8>(state.range(0));
    const std::vector<CAN::CanRxMessage> frames = randomFrames(length);
    const QByteArray expected(length, '\x5A');
    std::size_t matching = 0;
    for (auto _ : state) {
        for (const CAN::CanRxMessage &frame : frames) {
            const bool same = frame.message.length == length
                && std::memcmp(frame.message.data, expected.constData(), length) == 0;
            matching += same ? 1 : 0;
        }
    }
    if (matching == 0)
        state.SkipWithError("no frame matched");
    state.SetItemsProcessed(state.iterations() * std::int64_t(frames.size()));
}
BENCHMARK(memcmpByHand)->Arg(8)->Arg(64);

void readStoredTemplate(benchmark::State &state)
{
    const QByteArray bytes = dataTemplate(CAN::maxDataLength).toByteArray();
    for (auto _ : state)
        benchmark::DoNotOptimize(CANRAW::CanRawCompareMessage::fromByteArray(bytes).valid);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readStoredTemplate);
} // namespace

int main(int argc, char *argv[])
{
    benchmark::AddCustomContext("goal", "at least 2 million comparisons per second");
    benchmark::AddCustomContext("frames", "4096, of 8 or 64 bytes");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
