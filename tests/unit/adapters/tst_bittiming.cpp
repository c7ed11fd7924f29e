#include "adaptercontract.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cmath>

using Adapter = AbstractCanAdapter;

namespace {
/// Limits that many classic controllers have.
CAN::CANBitTimingThresholds classicLimits(quint16 clockMHz)
{
    return {clockMHz, 1, 255, 1, 16, 1, 8, 4, true};
}

struct Fit
{
    double bitrateError;     // ratio
    double samplePointError; // ratio
    int quanta;
};

Fit fitOf(double clockKiloHertz, int preScaler, int tSeg1, int tSeg2, double bitrate, double samplePoint)
{
    const int quanta = 1 + tSeg1 + tSeg2;
    return {std::abs(clockKiloHertz / (preScaler * quanta) - bitrate) / bitrate,
            std::abs((1.0 + tSeg1) / quanta - samplePoint / 100.0), quanta};
}

/// -1 if `a` is the better of the two, 1 if `b` is, 0 if they are the same but for rounding.
int compare(const Fit &a, const Fit &b)
{
    constexpr double tolerance = 1e-9;
    if (std::abs(a.bitrateError - b.bitrateError) > tolerance)
        return a.bitrateError < b.bitrateError ? -1 : 1;
    if (std::abs(a.samplePointError - b.samplePointError) > tolerance)
        return a.samplePointError < b.samplePointError ? -1 : 1;
    return a.quanta > b.quanta ? -1 : a.quanta < b.quanta ? 1 : 0;
}

/// Every setting there is, tried one by one.
bool bestByTrial(quint8 clock, quint16 bitrate, double samplePoint, const CAN::CANBitTimingThresholds &limits,
                 Fit &best)
{
    bool found = false;
    for (int preScaler = limits.preScalerMin; preScaler <= std::min<int>(limits.preScalerMax, 255); ++preScaler) {
        for (int tSeg1 = limits.tSeg1Min; tSeg1 <= limits.tSeg1Max; ++tSeg1) {
            for (int tSeg2 = limits.tSeg2Min; tSeg2 <= limits.tSeg2Max; ++tSeg2) {
                const Fit fit = fitOf(clock * 1000.0, preScaler, tSeg1, tSeg2, bitrate, samplePoint);
                if (fit.bitrateError <= 0.005 && (!found || compare(fit, best) < 0)) {
                    best = fit;
                    found = true;
                }
            }
        }
    }
    return found;
}
} // namespace

class TestBitTiming : public QObject
{
    Q_OBJECT

private slots:
    void registersGiveBitrateAndSamplePoint_data();
    void registersGiveBitrateAndSamplePoint();
    void recommendedBitratesAreFoundExactly_data();
    void recommendedBitratesAreFoundExactly();
    void searchFindsTheBestSettingThereIs();
    void halfAPerCentIsTheLastDeviationAccepted();
    void exactSearchAcceptsNoDeviation();
    void moreQuantaWinBetweenEquals();
    void jumpWidthIsHalfOfTheSecondSegmentWithinItsLimit_data();
    void jumpWidthIsHalfOfTheSecondSegmentWithinItsLimit();
    void senselessQuestionsFindNothing_data();
    void senselessQuestionsFindNothing();
    void absurdLimitsDoNotCostTime();
};

void TestBitTiming::registersGiveBitrateAndSamplePoint_data()
{
    QTest::addColumn<int>("clock");
    QTest::addColumn<int>("preScaler");
    QTest::addColumn<int>("tSeg1");
    QTest::addColumn<int>("tSeg2");
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<double>("samplePoint");

    QTest::newRow("500 kBit/s at 8 MHz") << 8 << 1 << 13 << 2 << 500 << 0.875;
    QTest::newRow("1 MBit/s at 80 MHz") << 80 << 5 << 11 << 4 << 1000 << 0.75;
    QTest::newRow("rounded") << 8 << 3 << 13 << 2 << 167 << 0.875;
    QTest::newRow("prescaler 0") << 8 << 0 << 13 << 2 << 0 << 0.0;
    QTest::newRow("clock 0") << 0 << 1 << 13 << 2 << 0 << 0.0;
    QTest::newRow("sync quantum alone") << 8 << 1 << 0 << 0 << 8000 << 1.0;
    QTest::newRow("more than the record holds") << 65535 << 1 << 1 << 1 << 65535 << 2.0 / 3.0;
    QTest::newRow("largest registers") << 80 << 255 << 65535 << 65535 << 0 << 65536.0 / 131071.0;
}

void TestBitTiming::registersGiveBitrateAndSamplePoint()
{
    QFETCH(int, clock);
    QFETCH(int, preScaler);
    QFETCH(int, tSeg1);
    QFETCH(int, tSeg2);
    const CAN::CANBitrateDesc description = Adapter::getBitrateFromTimings(
        static_cast<quint16>(clock), static_cast<quint8>(preScaler), static_cast<quint16>(tSeg1),
        static_cast<quint16>(tSeg2));
    QTEST(int(description.bitrate), "bitrate");
    QTEST(description.samplePoint, "samplePoint");
}

void TestBitTiming::recommendedBitratesAreFoundExactly_data()
{
    QTest::addColumn<int>("clock");
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<bool>("reachable");
    for (const int clock : {8, 16, 20, 24, 40, 80}) {
        for (const int bitrate : {10, 20, 50, 125, 250, 500, 800, 1000}) {
            // 87.5 % takes 8, 16 or 24 quanta. 800 kBit/s is no multiple of such; 20 MHz has 20 for 1000 kBit/s; and
            // 80 MHz would need a prescaler above 255 for 10 kBit/s.
            const bool reachable = bitrate != 800 && !(clock == 20 && bitrate == 1000)
                && !(clock == 80 && bitrate == 10);
            QTest::addRow("%d kBit/s at %d MHz", bitrate, clock) << clock << bitrate << reachable;
        }
    }
}

void TestBitTiming::recommendedBitratesAreFoundExactly()
{
    QFETCH(int, clock);
    QFETCH(int, bitrate);
    QFETCH(bool, reachable);
    const auto clockMHz = static_cast<quint8>(clock);
    bool found = false;
    const CanBitTimingValues timing = Adapter::getTimingParameters(clockMHz, static_cast<quint16>(bitrate), 87.5, found,
                                                                   false, classicLimits(clockMHz));
    const CAN::CANBitrateDesc reached = Adapter::getBitrateFromTimings(clockMHz, static_cast<quint8>(timing.preScaler),
                                                                       timing.tSeg1, timing.tSeg2);
    QCOMPARE(found && int(reached.bitrate) == bitrate && reached.samplePoint == 0.875, reachable);
}

void TestBitTiming::searchFindsTheBestSettingThereIs()
{
    QRandomGenerator random(4711);
    for (int round = 0; round < 400; ++round) {
        const auto clock = static_cast<quint8>(random.bounded(1, 256));
        const auto bitrate = static_cast<quint16>(random.bounded(5, 2000));
        const double samplePoint = random.bounded(1001) / 10.0;
        CAN::CANBitTimingThresholds limits = classicLimits(clock);
        limits.preScalerMax = static_cast<qint16>(random.bounded(1, 400));
        limits.tSeg1Min = static_cast<qint16>(random.bounded(1, 5));
        limits.tSeg1Max = static_cast<qint16>(random.bounded(5, 40));
        limits.tSeg2Min = static_cast<qint16>(random.bounded(1, 4));
        limits.tSeg2Max = static_cast<qint16>(random.bounded(4, 20));

        Fit best = {};
        const bool exists = bestByTrial(clock, bitrate, samplePoint, limits, best);
        bool found = false;
        const CanBitTimingValues timing = Adapter::getTimingParameters(clock, bitrate, samplePoint, found, false,
                                                                       limits);
        QCOMPARE(found, exists);
        if (!found)
            continue;
        const Fit fit = fitOf(clock * 1000.0, timing.preScaler, timing.tSeg1, timing.tSeg2, bitrate, samplePoint);
        QVERIFY2(compare(fit, best) == 0,
                 qPrintable(
                     QStringLiteral("clock %1, bitrate %2, sample point %3").arg(clock).arg(bitrate).arg(samplePoint)));
        QVERIFY(timing.tSeg1 >= limits.tSeg1Min && timing.tSeg1 <= limits.tSeg1Max);
        QVERIFY(timing.tSeg2 >= limits.tSeg2Min && timing.tSeg2 <= limits.tSeg2Max);
    }
}

void TestBitTiming::halfAPerCentIsTheLastDeviationAccepted()
{
    // One setting only: 8 MHz / (1 * 8 quanta) = 1000 kBit/s.
    const CAN::CANBitTimingThresholds limits = {8, 1, 1, 5, 5, 2, 2, 1, true};
    bool found = false;
    Adapter::getTimingParameters(8, 996, 75.0, found, false, limits);
    QVERIFY(found);
    Adapter::getTimingParameters(8, 995, 75.0, found, false, limits);
    QVERIFY(!found);
}

void TestBitTiming::exactSearchAcceptsNoDeviation()
{
    const CAN::CANBitTimingThresholds limits = {8, 1, 1, 5, 5, 2, 2, 1, true};
    bool found = false;
    Adapter::getTimingParameters(8, 1000, 75.0, found, true, limits);
    QVERIFY(found);
    Adapter::getTimingParameters(8, 999, 75.0, found, true, limits);
    QVERIFY(!found);
}

void TestBitTiming::moreQuantaWinBetweenEquals()
{
    // 500 kBit/s at 75 %: 8 quanta at prescaler 2 and 16 quanta at prescaler 1 are both exact.
    bool found = false;
    const CanBitTimingValues timing = Adapter::getTimingParameters(8, 500, 75.0, found, false, classicLimits(8));
    QVERIFY(found);
    QVERIFY(timing == (CanBitTimingValues{1, 11, 4, 2, 0}));
}

void TestBitTiming::jumpWidthIsHalfOfTheSecondSegmentWithinItsLimit_data()
{
    QTest::addColumn<int>("tSeg1");
    QTest::addColumn<int>("tSeg2");
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("jumpWidth");
    QTest::newRow("half") << 11 << 4 << 4 << 2;
    QTest::newRow("half, cut") << 10 << 5 << 4 << 2;
    QTest::newRow("at least one") << 14 << 1 << 4 << 1;
    QTest::newRow("limit") << 7 << 8 << 3 << 3;
    QTest::newRow("absurd limit") << 7 << 8 << -3 << 0;
}

void TestBitTiming::jumpWidthIsHalfOfTheSecondSegmentWithinItsLimit()
{
    QFETCH(int, tSeg1);
    QFETCH(int, tSeg2);
    QFETCH(int, limit);
    const auto first = static_cast<qint16>(tSeg1);
    const auto second = static_cast<qint16>(tSeg2);
    const CAN::CANBitTimingThresholds limits = {16,  1, 1, first, first, second, second, static_cast<qint16>(limit),
                                                true};
    bool found = false;
    const CanBitTimingValues timing = Adapter::getTimingParameters(16, 1000, 80.0, found, false, limits);
    QVERIFY(found);
    QTEST(int(timing.sjw), "jumpWidth");
}

void TestBitTiming::senselessQuestionsFindNothing_data()
{
    QTest::addColumn<int>("clock");
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<double>("samplePoint");
    QTest::addColumn<int>("tSeg1Max");
    QTest::addColumn<int>("preScalerMax");
    QTest::newRow("no clock") << 0 << 500 << 80.0 << 16 << 128;
    QTest::newRow("no bitrate") << 8 << 0 << 80.0 << 16 << 128;
    QTest::newRow("no number") << 8 << 500 << std::nan("") << 16 << 128;
    QTest::newRow("empty segment range") << 8 << 500 << 80.0 << 0 << 128;
    QTest::newRow("empty prescaler range") << 8 << 500 << 80.0 << 16 << 0;
    QTest::newRow("too fast") << 8 << 65535 << 80.0 << 16 << 128;
}

void TestBitTiming::senselessQuestionsFindNothing()
{
    QFETCH(int, clock);
    QFETCH(int, bitrate);
    QFETCH(double, samplePoint);
    QFETCH(int, tSeg1Max);
    QFETCH(int, preScalerMax);
    CAN::CANBitTimingThresholds limits = classicLimits(8);
    limits.tSeg1Max = static_cast<qint16>(tSeg1Max);
    limits.preScalerMax = static_cast<qint16>(preScalerMax);
    bool found = true;
    const CanBitTimingValues timing = Adapter::getTimingParameters(
        static_cast<quint8>(clock), static_cast<quint16>(bitrate), samplePoint, found, false, limits);
    QVERIFY(!found);
    QVERIFY(timing == CanBitTimingValues());
}

void TestBitTiming::absurdLimitsDoNotCostTime()
{
    const CAN::CANBitTimingThresholds limits = {255, -32768, 32767, -32768, 32767, -32768, 32767, 32767, true};
    bool found = false;
    const CanBitTimingValues timing = Adapter::getTimingParameters(255, 1, 1e300, found, false, limits);
    QVERIFY(found);
    QVERIFY(timing.tSeg1 >= 1 && timing.tSeg2 >= 1);
    // A search over all splits would take years for these.
    for (int i = 0; i < 1000; ++i) {
        Adapter::getTimingParameters(255, static_cast<quint16>(i + 1), 87.5, found, false, limits);
        QVERIFY(found);
    }
}

QTEST_GUILESS_MAIN(TestBitTiming)
#include "tst_bittiming.moc"
