#include "adaptercontract.h"

#include <algorithm>
#include <cmath>

// A bit is one sync quantum, tSeg1 and tSeg2; a quantum is `prescaler` clock periods. The sample point lies between
// the two segments.

namespace {
constexpr int syncQuanta = 1;
constexpr int largestPreScaler = 255; // the inverse takes eight bits

struct Range
{
    int lowest;
    int highest;

    bool isEmpty() const { return lowest > highest; }
    int clamp(int value) const { return std::clamp(value, lowest, highest); }
};

struct Candidate
{
    int preScaler = 0;
    int tSeg1 = 0;
    int tSeg2 = 0;
    qint64 deviation = 0; // of preScaler * quanta * bitrate from the clock, in kHz
    double samplePointError = 0.0;

    int quanta() const { return syncQuanta + tSeg1 + tSeg2; }
    /// In clock periods: the deviation divided by this is the error of the bitrate in kBit/s.
    qint64 bitLength() const { return qint64(preScaler) * quanta(); }
};

struct Search
{
    qint64 clockKiloHertz;
    qint64 bitrate;
    double samplePoint; // ratio
    Range tSeg1;
    Range tSeg2;

    Range quanta() const
    {
        return {syncQuanta + tSeg1.lowest + tSeg2.lowest, syncQuanta + tSeg1.highest + tSeg2.highest};
    }
};

bool isBetter(const Candidate &a, const Candidate &b)
{
    const qint64 aError = a.deviation * b.bitLength();
    const qint64 bError = b.deviation * a.bitLength();
    if (aError != bError)
        return aError < bError;
    // Equal ratios of different bit lengths differ in the last bits of a double.
    if (std::abs(a.samplePointError - b.samplePointError) > 1e-9)
        return a.samplePointError < b.samplePointError;
    return a.quanta() > b.quanta();
}

bool isCloseEnough(const Candidate &candidate, qint64 bitrate, bool exactOnly)
{
    if (exactOnly)
        return candidate.deviation == 0;
    return candidate.deviation * 200 <= bitrate * candidate.bitLength();
}

Candidate makeCandidate(const Search &search, int preScaler, int quanta, int tSeg1)
{
    Candidate candidate;
    candidate.preScaler = preScaler;
    candidate.tSeg1 = tSeg1;
    candidate.tSeg2 = quanta - syncQuanta - tSeg1;
    candidate.deviation = std::abs(search.clockKiloHertz - search.bitrate * candidate.bitLength());
    candidate.samplePointError = std::abs(double(syncQuanta + tSeg1) / quanta - search.samplePoint);
    return candidate;
}

/// The split of `quanta` that comes closest to the sample point. The error grows to both sides of the wanted place, so
/// that only the two splits around it can win.
Candidate bestSplit(const Search &search, int preScaler, int quanta)
{
    const int segments = quanta - syncQuanta;
    const Range allowed = {std::max(search.tSeg1.lowest, segments - search.tSeg2.highest),
                           std::min(search.tSeg1.highest, segments - search.tSeg2.lowest)};
    const double wanted = std::clamp(search.samplePoint * quanta - syncQuanta, 0.0, double(segments));
    const int below = allowed.clamp(static_cast<int>(wanted));
    const int above = allowed.clamp(static_cast<int>(wanted) + 1);
    const Candidate early = makeCandidate(search, preScaler, quanta, below);
    const Candidate late = makeCandidate(search, preScaler, quanta, above);
    return late.samplePointError < early.samplePointError ? late : early;
}

/// Segments of 0 quanta and negative ones do not exist.
Range segmentRange(int lowest, int highest)
{
    return {std::max(lowest, 1), highest};
}
} // namespace

CAN::CANBitrateDesc AbstractCanAdapter::getBitrateFromTimings(quint16 clockMHz, quint8 preScaler, quint16 tSeg1,
                                                              quint16 tSeg2)
{
    if (clockMHz == 0 || preScaler == 0)
        return {};
    const double quanta = double(syncQuanta) + tSeg1 + tSeg2;
    const double bitrate = clockMHz * 1000.0 / (preScaler * quanta);
    return {QString(), static_cast<quint16>(std::lround(std::min(bitrate, 65535.0))), (syncQuanta + tSeg1) / quanta};
}

CanBitTimingValues AbstractCanAdapter::getTimingParameters(quint8 clockMHz, quint16 bitrate, double samplePoint,
                                                           bool &found, bool exactOnly,
                                                           CAN::CANBitTimingThresholds thresholds)
{
    found = false;
    const Search search = {clockMHz * 1000, bitrate, samplePoint / 100.0,
                           segmentRange(thresholds.tSeg1Min, thresholds.tSeg1Max),
                           segmentRange(thresholds.tSeg2Min, thresholds.tSeg2Max)};
    const Range preScalers = {std::max<int>(thresholds.preScalerMin, 1),
                              std::min<int>(thresholds.preScalerMax, largestPreScaler)};
    if (clockMHz == 0 || bitrate == 0 || !std::isfinite(samplePoint) || search.tSeg1.isEmpty()
        || search.tSeg2.isEmpty())
        return {};

    Candidate best;
    for (int preScaler = preScalers.lowest; preScaler <= preScalers.highest; ++preScaler) {
        // The error of the bitrate grows to both sides of the wanted length of a bit.
        const int wanted = static_cast<int>(search.clockKiloHertz / (search.bitrate * preScaler));
        for (const int length : {wanted, wanted + 1}) {
            const Candidate candidate = bestSplit(search, preScaler, search.quanta().clamp(length));
            if (isCloseEnough(candidate, search.bitrate, exactOnly) && (!found || isBetter(candidate, best))) {
                best = candidate;
                found = true;
            }
        }
    }
    if (!found)
        return {};

    CanBitTimingValues timing;
    timing.preScaler = static_cast<quint16>(best.preScaler);
    timing.tSeg1 = static_cast<quint16>(best.tSeg1);
    timing.tSeg2 = static_cast<quint16>(best.tSeg2);
    timing.sjw = static_cast<quint16>(std::min(std::max(best.tSeg2 / 2, 1), std::max<int>(thresholds.sjwMax, 0)));
    return timing;
}
