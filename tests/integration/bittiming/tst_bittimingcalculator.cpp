#include "adaptercontract.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(CAN::CANBitTimingThresholds)

// The search for a timing, beside the calculator that comes with the CAN programs of the system.
class TestBitTimingCalculator : public QObject
{
    Q_OBJECT

private slots:
    void searchIsAtLeastAsClose_data();
    void searchIsAtLeastAsClose();
};

namespace {
constexpr int requestCount = 1000;
constexpr int acceptedOutsideLimits = 50;
constexpr double acceptedDeviation = 0.005;
constexpr double tolerance = 1e-12; // of ratios that are the same but for rounding

struct Request
{
    int clock;       // MHz
    int bitrate;     // kBit/s
    int samplePoint; // per mille
};

QVector<Request> randomRequests(quint32 seed)
{
    constexpr int clocks[] = {8, 16, 20, 24, 30, 32, 40, 48, 60, 80};
    QRandomGenerator random(seed);
    QVector<Request> requests;
    for (int i = 0; i < requestCount; ++i) {
        const int clock = clocks[random.bounded(int(std::size(clocks)))];
        const int bitrate = random.bounded(10, 1001);
        requests.append({clock, bitrate, random.bounded(500, 951)});
    }
    return requests;
}

struct Answers
{
    QStringList lines; // one for each request
    QString trouble;   // what went wrong, if there are fewer
};

Answers askCalculator(const QVector<Request> &requests, const QString &controller)
{
    // One shell for all of them: a process from here for each would cost more than what it works out.
    QString script;
    for (const Request &request : requests)
        script += QStringLiteral("can-calc-bit-timing -q -c %1 -b %2 -s %3 %4\n")
                      .arg(QString::number(request.clock * 1000000), QString::number(request.bitrate * 1000),
                           QString::number(request.samplePoint), controller);
    QProcess shell;
    shell.start(QStringLiteral("sh"), {QStringLiteral("-s")});
    shell.write(script.toLatin1());
    shell.closeWriteChannel();
    if (!shell.waitForFinished(60000))
        return {{}, shell.errorString()};
    return {QString::fromLatin1(shell.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts),
            QString::fromLocal8Bit(shell.readAllStandardError())};
}

/// A line such as " 500000    100   7    8    4   1   8  500000  0.0% 80.0% 80.0%  0.0% 0x07 0x3e".
/// @return false if the calculator found nothing
bool readAnswer(const QString &line, CanBitTimingValues &timing)
{
    const QStringList columns = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (columns.size() < 12)
        return false;
    enum Column { PropagationSegment = 2, PhaseSegment1, PhaseSegment2, JumpWidth, PreScaler };
    timing.tSeg1 = static_cast<quint16>(columns[PropagationSegment].toUShort() + columns[PhaseSegment1].toUShort());
    timing.tSeg2 = columns[PhaseSegment2].toUShort();
    timing.sjw = columns[JumpWidth].toUShort();
    timing.preScaler = columns[PreScaler].toUShort();
    return timing.preScaler != 0;
}

struct Fit
{
    double bitrateError;
    double samplePointError;
};

Fit fitOf(const Request &request, const CanBitTimingValues &timing)
{
    const double quanta = 1.0 + timing.tSeg1 + timing.tSeg2;
    const double bitrate = request.clock * 1000.0 / (timing.preScaler * quanta);
    return {std::abs(bitrate - request.bitrate) / request.bitrate,
            std::abs((1.0 + timing.tSeg1) / quanta - request.samplePoint / 1000.0)};
}

bool isWithin(const CanBitTimingValues &timing, const CAN::CANBitTimingThresholds &limits)
{
    return timing.preScaler >= limits.preScalerMin && timing.preScaler <= limits.preScalerMax
        && timing.tSeg1 >= limits.tSeg1Min && timing.tSeg1 <= limits.tSeg1Max && timing.tSeg2 >= limits.tSeg2Min
        && timing.tSeg2 <= limits.tSeg2Max && timing.sjw <= limits.sjwMax;
}
} // namespace

void TestBitTimingCalculator::searchIsAtLeastAsClose_data()
{
    QTest::addColumn<CAN::CANBitTimingThresholds>("limits");
    QTest::addColumn<quint32>("seed");
    // The clock is part of each request.
    QTest::newRow("sja1000") << CAN::CANBitTimingThresholds{0, 1, 64, 1, 16, 1, 8, 4, true} << 1U;
    QTest::newRow("flexcan") << CAN::CANBitTimingThresholds{0, 1, 255, 4, 16, 2, 8, 4, true} << 2U;
}

void TestBitTimingCalculator::searchIsAtLeastAsClose()
{
    QFETCH(CAN::CANBitTimingThresholds, limits);
    QFETCH(quint32, seed);
    const QVector<Request> requests = randomRequests(seed);
    const auto [answers, trouble] = askCalculator(requests, QLatin1String(QTest::currentDataTag()));
    QVERIFY2(answers.size() == requests.size(),
             qPrintable(QStringLiteral("%1 answers; %2").arg(QString::number(answers.size()), trouble)));

    int compared = 0;
    int impossible = 0;
    int closerBitrates = 0;
    int closerSamplePoints = 0;
    for (int i = 0; i < requests.size(); ++i) {
        const Request &request = requests[i];
        CanBitTimingValues theirs;
        if (!readAnswer(answers[i], theirs))
            continue;
        const Fit theirFit = fitOf(request, theirs);
        if (theirFit.bitrateError > acceptedDeviation)
            continue;
        // Its first segment may be shorter than the controller's shortest, or have no quanta at all.
        if (!isWithin(theirs, limits)) {
            QVERIFY2(theirs.tSeg1 < limits.tSeg1Min, qPrintable(answers[i]));
            ++impossible;
            continue;
        }

        bool found = false;
        const CanBitTimingValues ours = AbstractCanAdapter::getTimingParameters(
            static_cast<quint8>(request.clock), static_cast<quint16>(request.bitrate), request.samplePoint / 10.0,
            found, false, limits);
        QVERIFY2(found && isWithin(ours, limits), qPrintable(answers[i]));
        const Fit ourFit = fitOf(request, ours);
        const double bitrateGain = theirFit.bitrateError - ourFit.bitrateError;
        const double samplePointGain = theirFit.samplePointError - ourFit.samplePointError;
        QVERIFY2(bitrateGain >= -tolerance, qPrintable(answers[i]));
        QVERIFY2(bitrateGain > tolerance || samplePointGain >= -tolerance, qPrintable(answers[i]));

        ++compared;
        closerBitrates += bitrateGain > tolerance ? 1 : 0;
        closerSamplePoints += bitrateGain <= tolerance && samplePointGain > tolerance ? 1 : 0;
    }
    qInfo("%d of %d requests compared: the bitrate is closer in %d of them, the sample point in another %d; "
          "in %d the calculator left the limits",
          compared, requestCount, closerBitrates, closerSamplePoints, impossible);
    QVERIFY(compared > requestCount / 3);
    QVERIFY(impossible < acceptedOutsideLimits);
}

QTEST_GUILESS_MAIN(TestBitTimingCalculator)
#include "tst_bittimingcalculator.moc"
