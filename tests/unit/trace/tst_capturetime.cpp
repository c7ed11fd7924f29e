#include "capturetime.h"

#include <QtTest>

#include <limits>

namespace {
constexpr qint32 first = std::numeric_limits<qint32>::min();
constexpr qint32 last = std::numeric_limits<qint32>::max();
constexpr quint64 all = std::numeric_limits<quint64>::max();
constexpr quint8 binary = 0x80;
} // namespace

class TestCaptureTime : public QObject
{
    Q_OBJECT

private slots:
    void stampsAreNormalised_data();
    void stampsAreNormalised();
    void ticksBecomeStamps_data();
    void ticksBecomeStamps();
    void everyClockStaysWithinTheStamps();
};

void TestCaptureTime::stampsAreNormalised_data()
{
    QTest::addColumn<CanTimeStamp>("stamp");
    QTest::addColumn<CanTimeStamp>("normal");

    QTest::newRow("zero") << CanTimeStamp(0, 0) << CanTimeStamp(0, 0);
    QTest::newRow("last within the second") << CanTimeStamp(5, 999999) << CanTimeStamp(5, 999999);
    QTest::newRow("a whole second") << CanTimeStamp(5, 1000000) << CanTimeStamp(6, 0);
    QTest::newRow("just before the second") << CanTimeStamp(5, -1) << CanTimeStamp(4, 999999);
    QTest::newRow("a whole second before") << CanTimeStamp(5, -1000000) << CanTimeStamp(4, 0);
    QTest::newRow("negative distance") << CanTimeStamp(-1, -500000) << CanTimeStamp(-2, 500000);
    QTest::newRow("negative, normal") << CanTimeStamp(-1, 500000) << CanTimeStamp(-1, 500000);
    QTest::newRow("first stamp") << CanTimeStamp(first, 0) << CanTimeStamp(first, 0);
    QTest::newRow("before the first stamp") << CanTimeStamp(first, -1) << CanTimeStamp(first, 0);
    QTest::newRow("last stamp") << CanTimeStamp(last, 999999) << CanTimeStamp(last, 999999);
    QTest::newRow("after the last stamp") << CanTimeStamp(last, 1000000) << CanTimeStamp(last, 999999);
    QTest::newRow("most microseconds") << CanTimeStamp(0, last) << CanTimeStamp(2147, 483647);
    QTest::newRow("least microseconds") << CanTimeStamp(0, first) << CanTimeStamp(-2148, 516352);
}

void TestCaptureTime::stampsAreNormalised()
{
    QFETCH(CanTimeStamp, stamp);
    QTEST(normalised(stamp), "normal");
}

void TestCaptureTime::ticksBecomeStamps_data()
{
    QTest::addColumn<quint8>("resolution");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<quint64>("ticks");
    QTest::addColumn<CanTimeStamp>("stamp");

    const auto row = [](const char *name, int resolution, qint64 offset, quint64 ticks, CanTimeStamp stamp) {
        QTest::newRow(name) << static_cast<quint8>(resolution) << offset << ticks << stamp;
    };
    row("microseconds", 6, 0, 1500000, {1, 500000});
    row("seconds", 0, 0, 7, {7, 0});
    row("milliseconds", 3, 0, 1234, {1, 234000});
    row("nanoseconds, cut", 9, 0, 1000001999, {1, 1});
    row("finest decimal that has seconds", 19, 0, 10000000000000000000ULL, {1, 0});
    row("too fine for seconds", 20, 0, 10000000000000000000ULL, {0, 100000});
    row("finest that has microseconds", 25, 0, 10000000000000000000ULL, {0, 1});
    row("too fine for microseconds", 26, 0, all, {0, 0});
    row("finest decimal", 127, 0, all, {0, 0});
    row("whole seconds, binary", binary | 0, 0, 7, {7, 0});
    row("halves", binary | 1, 0, 3, {1, 500000});
    row("binary as fine as it matters", binary | 40, 0, (quint64(3) << 40) + (quint64(1) << 38), {3, 250000});
    row("binary beyond that", binary | 41, 0, (quint64(3) << 41) + (quint64(1) << 39), {3, 250000});
    row("finest binary that has seconds", binary | 63, 0, quint64(1) << 63, {1, 0});
    row("binary without seconds", binary | 64, 0, quint64(1) << 63, {0, 500000});
    row("finest binary", binary | 127, 0, all, {0, 0});
    row("offset", 6, 100, 1500000, {101, 500000});
    row("negative offset", 6, -2, 500000, {-2, 500000});
    row("first stamp", 6, first, 0, {first, 0});
    row("before the first stamp", 6, qint64(first) - 1, 999999, {first, 0});
    row("last stamp", 6, last, 999999, {last, 999999});
    row("after the last stamp", 6, last, 1000000, {last, 999999});
    row("most ticks", 0, 0, all / 2, {last, 999999});
    row("most ticks, far offset", 0, std::numeric_limits<qint64>::max(), all / 2, {last, 999999});
    row("negative ticks", 6, 0, quint64(-2000000), {-2, 0});
    row("negative ticks within a second", 6, 0, quint64(-1), {-1, 999999});
    row("negative ticks and an offset", 6, 10, quint64(-1500000), {8, 500000});
    row("least ticks", 0, 0, all / 2 + 1, {first, 0});
    row("finest clock with negative ticks", 9, 0, quint64(-1000000000), {-1, 0});
    row("finer clock", 10, 0, all, {1844674407, 370955});
    row("binary clock", binary | 40, 0, all, {16777215, 999999});
    row("no ticks, far offset", 6, std::numeric_limits<qint64>::min(), 0, {first, 0});
}

void TestCaptureTime::ticksBecomeStamps()
{
    QFETCH(quint8, resolution);
    QFETCH(qint64, offset);
    QFETCH(quint64, ticks);
    QTEST(CaptureClock(resolution, offset).stamp(ticks), "stamp");
}

void TestCaptureTime::everyClockStaysWithinTheStamps()
{
    for (int resolution = 0; resolution < 256; ++resolution) {
        for (const qint64 offset :
             {qint64(0), std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()}) {
            for (const quint64 ticks : {quint64(0), all / 3, all}) {
                const CanTimeStamp stamp = CaptureClock(static_cast<quint8>(resolution), offset).stamp(ticks);
                QVERIFY(stamp.microseconds >= 0 && stamp.microseconds <= 999999);
            }
        }
    }
}

QTEST_APPLESS_MAIN(TestCaptureTime)
#include "tst_capturetime.moc"
