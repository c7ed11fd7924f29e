#include "replaygap.h"

#include <QtTest>

#include <cmath>
#include <limits>

Q_DECLARE_METATYPE(GapRules)

class TestReplayGap : public QObject
{
    Q_OBJECT

private slots:
    void speedDividesTheGap_data();
    void speedDividesTheGap();
    void gapWrapsAt32Bits_data();
    void gapWrapsAt32Bits();
    void gapDecidesAboutWaitAndTexts_data();
    void gapDecidesAboutWaitAndTexts();
};

namespace {
constexpr qint64 negative = std::numeric_limits<qint64>::min();
constexpr qint64 noWait = -1;

CanTimeStamp stamp(qint64 microseconds)
{
    return {static_cast<qint32>(microseconds / 1000000), static_cast<qint32>(microseconds % 1000000)};
}

const CanTimeStamp start = {1000, 999999};

CanTimeStamp startPlus(qint64 gap)
{
    return stamp(1000999999 + gap);
}

const QString active = QStringLiteral("CAN replay active");

QString waiting(int seconds)
{
    return QStringLiteral(" %1 s gap to next message, don't worry").arg(seconds);
}

QString reduced(int seconds)
{
    return QStringLiteral(" %1 s gap to next message reduced to 1s").arg(seconds);
}
} // namespace

void TestReplayGap::speedDividesTheGap_data()
{
    QTest::addColumn<qint64>("gap");
    QTest::addColumn<double>("speed");
    QTest::addColumn<qint64>("scaled");

    const double infinity = std::numeric_limits<double>::infinity();
    QTest::newRow("as recorded") << 1234567LL << 1.0 << 1234567LL;
    QTest::newRow("twice as fast") << 1234567LL << 2.0 << 617283LL;
    QTest::newRow("half as fast") << 1234567LL << 0.5 << 2469134LL;
    QTest::newRow("cut, not rounded") << 19LL << 10.0 << 1LL;
    QTest::newRow("a negative one is cut toward zero as well") << -19LL << 10.0 << -1LL;
    QTest::newRow("less than a microsecond backward") << -1LL << 2.0 << 0LL;
    QTest::newRow("backward") << -5000000LL << 1.0 << -5000000LL;
    QTest::newRow("no gap") << 0LL << 1.0 << 0LL;
    QTest::newRow("negative speed") << 100LL << -1.0 << -100LL;
    QTest::newRow("speed of zero") << 100LL << 0.0 << negative;
    QTest::newRow("speed of zero, backward") << -100LL << 0.0 << negative;
    QTest::newRow("speed of zero, no gap") << 0LL << 0.0 << negative;
    QTest::newRow("speed is no number") << 100LL << std::nan("") << negative;
    QTest::newRow("endless speed") << 100LL << infinity << 0LL;
    QTest::newRow("largest result") << 1LL << std::ldexp(1.0, -62) << (1LL << 62);
    QTest::newRow("just too large") << 1LL << std::ldexp(1.0, -63) << negative;
    QTest::newRow("just small enough") << 1LL << -std::ldexp(1.0, -63) << negative;
    QTest::newRow("too small") << 1LL << -std::ldexp(1.0, -64) << negative;
}

void TestReplayGap::speedDividesTheGap()
{
    QFETCH(qint64, gap);
    QFETCH(double, speed);
    QTEST(scaledGap(start, startPlus(gap), speed), "scaled");
}

void TestReplayGap::gapWrapsAt32Bits_data()
{
    QTest::addColumn<qint64>("gap");
    QTest::addColumn<qint64>("scaled");

    QTest::newRow("last that fits") << 2147483647LL << 2147483647LL;
    QTest::newRow("first that does not") << 2147483648LL << -2147483648LL;
    QTest::newRow("one hour") << 3600000000LL << -694967296LL;
    QTest::newRow("twice around") << 4294967296LL + 5 << 5LL;
    QTest::newRow("backward, last that fits") << -2147483648LL + 1000 << -2147483648LL + 1000;
    QTest::newRow("a day") << 86400000000LL << 500654080LL;
}

void TestReplayGap::gapWrapsAt32Bits()
{
    QFETCH(qint64, gap);
    const CanTimeStamp begin = gap < 0 ? stamp(-gap) : CanTimeStamp();
    const CanTimeStamp end = gap < 0 ? CanTimeStamp() : stamp(gap);
    QTEST(scaledGap(begin, end, 1.0), "scaled");
}

void TestReplayGap::gapDecidesAboutWaitAndTexts_data()
{
    QTest::addColumn<qint64>("gap");
    QTest::addColumn<GapRules>("rules");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<qint64>("wait");
    QTest::addColumn<QString>("after");

    const GapRules plain;
    GapRules step;
    step.singleStep = true;
    GapRules fast;
    fast.fastForward = true;
    GapRules ignoring;
    ignoring.ignoreGaps = true;
    GapRules slow;
    slow.speed = 0.5;
    GapRules slowIgnoring = slow;
    slowIgnoring.ignoreGaps = true;
    GapRules stopped;
    stopped.speed = 0.0;
    GapRules fastIgnoring = fast;
    fastIgnoring.ignoreGaps = true;
    const QStringList none;
    const QString nothing;
    const QString toMinute = QStringLiteral(" gap exceeding 1h to next message reduced to 60s");

    QTest::newRow("backward") << -1LL << plain << none << noWait << nothing;
    QTest::newRow("no gap is a wait all the same") << 0LL << plain << none << 0LL << nothing;
    QTest::newRow("shortest") << 1LL << plain << none << 1LL << nothing;
    QTest::newRow("usual") << 1000LL << plain << none << 1000LL << nothing;
    QTest::newRow("7 s") << 7000000LL << plain << none << 7000000LL << nothing;
    QTest::newRow("just above 7 s") << 7000001LL << plain << none << 7000001LL << active;
    QTest::newRow("10 s") << 10000000LL << plain << none << 10000000LL << active;
    QTest::newRow("just above 10 s") << 10000001LL << plain << QStringList(waiting(10)) << 10000001LL << active;
    QTest::newRow("seconds are cut") << 11999999LL << plain << QStringList(waiting(11)) << 11999999LL << active;
    QTest::newRow("longest") << 2147483647LL << plain << QStringList(waiting(2147)) << 2147483647LL << active;
    QTest::newRow("beyond 32 bits") << 2147483648LL << plain << none << noWait << nothing;

    QTest::newRow("scaled to 1 h") << 1800000000LL << slow << QStringList(waiting(3600)) << 3600000000LL << active;
    QTest::newRow("scaled to just above 1 h")
        << 1800000001LL << slow << QStringList({waiting(3600), toMinute}) << 60000000LL << active;
    QTest::newRow("scaled above 1 h, ignored")
        << 1800000001LL << slowIgnoring << QStringList(reduced(3600)) << 1000000LL << nothing;
    QTest::newRow("speed of zero") << 5000000LL << stopped << none << noWait << nothing;

    QTest::newRow("gaps ignored, 10 s") << 10000000LL << ignoring << none << 10000000LL << active;
    QTest::newRow("gaps ignored, just above 10 s")
        << 10000001LL << ignoring << QStringList(reduced(10)) << 1000000LL << nothing;
    QTest::newRow("gaps ignored, backward") << -1LL << ignoring << none << noWait << nothing;

    QTest::newRow("fast forward keeps 99 us") << 99LL << fast << none << 99LL << nothing;
    QTest::newRow("fast forward skips 100 us") << 100LL << fast << none << noWait << nothing;
    QTest::newRow("fast forward skips 8 s without a text") << 8000000LL << fast << none << noWait << nothing;
    QTest::newRow("fast forward skips 11 s without a text") << 11000000LL << fast << none << noWait << nothing;
    QTest::newRow("fast forward goes before ignored gaps") << 11000000LL << fastIgnoring << none << noWait << nothing;

    QTest::newRow("step, usual") << 1000LL << step << none << 0LL << nothing;
    QTest::newRow("step, long") << 11000000LL << step << none << 0LL << nothing;
    QTest::newRow("step, backward") << -1LL << step << none << 0LL << nothing;
}

void TestReplayGap::gapDecidesAboutWaitAndTexts()
{
    QFETCH(qint64, gap);
    QFETCH(GapRules, rules);
    const GapPlan plan = planGap(start, startPlus(gap), rules);
    QTEST(plan.textsBefore, "before");
    QTEST(plan.wait ? static_cast<qint64>(*plan.wait) : noWait, "wait");
    QTEST(plan.textAfter, "after");
}

QTEST_APPLESS_MAIN(TestReplayGap)
#include "tst_replaygap.moc"
