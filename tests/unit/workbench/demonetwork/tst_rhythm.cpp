#include "rhythm.h"

#include <QtTest>

class TestRhythm : public QObject
{
    Q_OBJECT

private slots:
    void firstDeadlineIsOnePeriodAway();
    void deadlineIsTakenOnce();
    void missedDeadlinesAreSkipped_data();
    void missedDeadlinesAreSkipped();
    void periodOfZeroNeverStrikes();
    void stoppedRhythmNeverStrikes();
};

void TestRhythm::firstDeadlineIsOnePeriodAway()
{
    Rhythm rhythm;
    rhythm.start(500, 100);
    QCOMPARE(rhythm.due(), 600);
    QVERIFY(!rhythm.take(599));
    QVERIFY(rhythm.take(600));
}

void TestRhythm::deadlineIsTakenOnce()
{
    Rhythm rhythm;
    rhythm.start(0, 100);
    QVERIFY(rhythm.take(100));
    QVERIFY(!rhythm.take(100));
    QVERIFY(!rhythm.take(199));
    QVERIFY(rhythm.take(200));
}

void TestRhythm::missedDeadlinesAreSkipped_data()
{
    QTest::addColumn<qint64>("taken");
    QTest::addColumn<qint64>("next");

    QTest::newRow("in time") << 100LL << 200LL;
    QTest::newRow("late by less than a period") << 199LL << 200LL;
    QTest::newRow("late by a period, which is the next deadline") << 200LL << 300LL;
    QTest::newRow("late by many") << 1'000'042LL << 1'000'100LL;
}

void TestRhythm::missedDeadlinesAreSkipped()
{
    QFETCH(qint64, taken);
    Rhythm rhythm;
    rhythm.start(0, 100);
    QVERIFY(rhythm.take(taken));
    QVERIFY(!rhythm.take(taken));
    QTEST(rhythm.due(), "next");
}

void TestRhythm::periodOfZeroNeverStrikes()
{
    Rhythm rhythm;
    rhythm.start(0, 100);
    rhythm.start(0, 0);
    QCOMPARE(rhythm.due(), Rhythm::never);
    QVERIFY(!rhythm.take(1'000'000'000'000LL));
}

void TestRhythm::stoppedRhythmNeverStrikes()
{
    Rhythm rhythm;
    rhythm.start(0, 100);
    rhythm.stop();
    QVERIFY(!rhythm.take(1000));
}

QTEST_APPLESS_MAIN(TestRhythm)
#include "tst_rhythm.moc"
