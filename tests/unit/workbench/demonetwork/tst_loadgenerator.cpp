#include "loadgenerator.h"

#include "frames.h"

#include <QtTest>

namespace {
constexpr qint64 second = 1000000;
}

class TestLoadGenerator : public QObject
{
    Q_OBJECT

private slots:
    void framesHoldTheirNumber();
    void identifiersTakeTurns();
    void numberIsReadFromOwnFramesOnly_data();
    void numberIsReadFromOwnFramesOnly();
    void streamIsUniform_data();
    void streamIsUniform();
    void wakesInBatches_data();
    void wakesInBatches();
    void rateIsBounded_data();
    void rateIsBounded();
    void backlogIsBoundedAndGivenInBatches();
    void numberingGoesOnOverPausesAndRates();
    void runsForYears();
};

void TestLoadGenerator::framesHoldTheirNumber()
{
    LoadGenerator load;
    load.setRate(1000, 0);
    QCOMPARE(frameTexts(load.advanceTo(3000)),
             QStringList({QStringLiteral("400#0000000000000000"), QStringLiteral("401#0100000000000000"),
                          QStringLiteral("402#0200000000000000")}));
}

void TestLoadGenerator::identifiersTakeTurns()
{
    LoadGenerator load;
    load.setRate(1000, 0);
    const auto frames = load.advanceTo(66000);
    QCOMPARE(frames.size(), std::size_t(66));
    QCOMPARE(frameText(frames[63]), QStringLiteral("43F#3F00000000000000"));
    QCOMPARE(frameText(frames[64]), QStringLiteral("400#4000000000000000"));
}

void TestLoadGenerator::numberIsReadFromOwnFramesOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("number"); // -1 for none

    QTest::newRow("first") << QStringLiteral("400#0000000000000000") << 0LL;
    QTest::newRow("a later one") << QStringLiteral("43F#7F01000000000000") << 0x17FLL;
    QTest::newRow("number beyond 32 bits") << QStringLiteral("400#0000000001000000") << 0x100000000LL;
    QTest::newRow("identifier of another number") << QStringLiteral("401#0000000000000000") << -1LL;
    QTest::newRow("identifier of none") << QStringLiteral("440#4000000000000000") << -1LL;
    QTest::newRow("too short") << QStringLiteral("400#00000000000000") << -1LL;
    QTest::newRow("extended") << QStringLiteral("00000400#0000000000000000") << -1LL;
    QTest::newRow("remote") << QStringLiteral("400#R") << -1LL;
}

void TestLoadGenerator::numberIsReadFromOwnFramesOnly()
{
    QFETCH(QString, text);
    QFETCH(qint64, number);
    const std::optional<quint64> read = LoadGenerator::number(frame(text));
    QCOMPARE(read ? static_cast<qint64>(*read) : -1, number);
}

void TestLoadGenerator::streamIsUniform_data()
{
    QTest::addColumn<int>("rate");

    QTest::newRow("slow") << 1;
    QTest::newRow("no divisor of a second") << 7;
    QTest::newRow("a frame a millisecond") << 1000;
    QTest::newRow("a loaded bus") << 30000;
    QTest::newRow("an odd rate") << 31415;
}

void TestLoadGenerator::streamIsUniform()
{
    QFETCH(int, rate);
    LoadGenerator load;
    load.setRate(rate, 0);
    qint64 given = 0;
    for (qint64 now = load.nextDue(); now <= 10 * second; now = load.nextDue()) {
        const auto frames = load.advanceTo(now);
        given += static_cast<qint64>(frames.size());
        QVERIFY(!frames.empty());
        QCOMPARE(given, now * rate / second);
    }
    given += static_cast<qint64>(load.advanceTo(10 * second).size());
    QVERIFY2(10 * rate - given < qMax(1, rate / 1000), qPrintable(QString::number(given)));
}

void TestLoadGenerator::wakesInBatches_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<qint64>("due");

    QTest::newRow("single frames") << 100 << 10000LL;
    QTest::newRow("rounded up, so that the frame is due then") << 3 << 333334LL;
    QTest::newRow("a frame a millisecond") << 1000 << 1000LL;
    QTest::newRow("thirty a millisecond") << 30000 << 1000LL;
    QTest::newRow("as many as fit into a batch") << 1000000 << 256LL;
}

void TestLoadGenerator::wakesInBatches()
{
    QFETCH(int, rate);
    QFETCH(qint64, due);
    LoadGenerator load;
    load.setRate(rate, 0);
    QCOMPARE(load.nextDue(), due);
    QVERIFY(load.advanceTo(due - 1).empty());
    QVERIFY(!load.advanceTo(due).empty());
}

void TestLoadGenerator::rateIsBounded_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("taken");

    QTest::newRow("negative") << -5 << 0;
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("highest") << 1000000 << 1000000;
    QTest::newRow("beyond the highest") << 1000001 << 1000000;
}

void TestLoadGenerator::rateIsBounded()
{
    QFETCH(int, rate);
    QFETCH(int, taken);
    LoadGenerator load;
    load.setRate(rate, 0);
    QCOMPARE(load.rate(), taken);
    QCOMPARE(load.nextDue() == Rhythm::never, taken == 0);
    QCOMPARE(load.advanceTo(second).empty(), taken == 0);
}

void TestLoadGenerator::backlogIsBoundedAndGivenInBatches()
{
    LoadGenerator load;
    load.setRate(30000, 0);
    const qint64 wakeUp = 3600 * second;
    std::size_t given = 0;
    int batches = 0;
    while (load.nextDue() <= wakeUp) {
        const auto frames = load.advanceTo(wakeUp);
        QVERIFY(frames.size() <= std::size_t(LoadGenerator::largestBatch));
        given += frames.size();
        ++batches;
    }
    QCOMPARE(given, std::size_t(3000));
    QCOMPARE(batches, 12);
}

void TestLoadGenerator::numberingGoesOnOverPausesAndRates()
{
    LoadGenerator load;
    load.setRate(1000, 0);
    QCOMPARE(load.advanceTo(2000).size(), std::size_t(2));
    load.setRate(0, 2000);
    QVERIFY(load.advanceTo(5 * second).empty());
    load.setRate(10, 5 * second);
    const auto frames = load.advanceTo(5 * second + 100000);
    QCOMPARE(frames.size(), std::size_t(1));
    QCOMPARE(LoadGenerator::number(frames.front()), std::optional<quint64>(2));
}

void TestLoadGenerator::runsForYears()
{
    LoadGenerator load;
    load.setRate(LoadGenerator::highestRate, 0);
    const qint64 years = 100 * 365 * 86400LL * second;
    QCOMPARE(load.advanceTo(years).size(), std::size_t(LoadGenerator::largestBatch));
    QVERIFY(load.nextDue() <= years + second);
}

QTEST_APPLESS_MAIN(TestLoadGenerator)
#include "tst_loadgenerator.moc"
