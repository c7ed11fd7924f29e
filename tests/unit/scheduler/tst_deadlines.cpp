#include "deadlines.h"

#include <QtTest>

class TestDeadlines : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsEverDueWithoutFrames();
    void firstDeadlineIsTheStart();
    void deadlineIsServedOnceAndTheNextLiesBehindNow_data();
    void deadlineIsServedOnceAndTheNextLiesBehindNow();
    void latenessDoesNotAddUp();
    void periodIsBounded_data();
    void periodIsBounded();
    void earliestFrameComesFirst();
    void equalDeadlinesFollowTheHandles();
    void overdueFrameDoesNotKeepOthersWaiting();
    void newPeriodCountsFromTheLastServedDeadline_data();
    void newPeriodCountsFromTheLastServedDeadline();
    void newPeriodBeforeTheFirstFrameKeepsTheStart();
    void removedFrameIsNotDue();
    void removingAndChangingUnknownFramesIsHarmless();
    void restartBringsEveryFrameToNow();
    void clearForgetsEverything();
};

void TestDeadlines::nothingIsEverDueWithoutFrames()
{
    Deadlines deadlines;
    QCOMPARE(deadlines.next(), Deadlines::never);
    QCOMPARE(deadlines.take(Deadlines::never - 1), 0u);
}

void TestDeadlines::firstDeadlineIsTheStart()
{
    Deadlines deadlines;
    deadlines.start(1, 1000, 5000);
    QCOMPARE(deadlines.next(), 5000LL);
    QCOMPARE(deadlines.take(4999), 0u);
    QCOMPARE(deadlines.take(5000), 1u);
    QCOMPARE(deadlines.next(), 6000LL);
}

void TestDeadlines::deadlineIsServedOnceAndTheNextLiesBehindNow_data()
{
    QTest::addColumn<qint64>("now");
    QTest::addColumn<qint64>("next");

    // A period of 1000 from 0 on.
    QTest::newRow("on time") << 0LL << 1000LL;
    QTest::newRow("a little late") << 1LL << 1000LL;
    QTest::newRow("just not a whole period late") << 999LL << 1000LL;
    QTest::newRow("a whole period late") << 1000LL << 2000LL;
    QTest::newRow("just more than a period late") << 1001LL << 2000LL;
    QTest::newRow("many periods late") << 123456LL << 124000LL;
    QTest::newRow("a century late") << 3155760000000000LL << 3155760000001000LL;
}

void TestDeadlines::deadlineIsServedOnceAndTheNextLiesBehindNow()
{
    QFETCH(qint64, now);
    Deadlines deadlines;
    deadlines.start(7, 1000, 0);

    QCOMPARE(deadlines.take(now), 7u);
    QCOMPARE(deadlines.take(now), 0u);
    QTEST(deadlines.next(), "next");
}

void TestDeadlines::latenessDoesNotAddUp()
{
    Deadlines deadlines;
    deadlines.start(1, 1000, 0);
    for (qint64 k = 0; k < 100000; ++k) {
        QCOMPARE(deadlines.next(), k * 1000);
        QCOMPARE(deadlines.take(k * 1000 + k % 1000), 1u);
    }
}

void TestDeadlines::periodIsBounded_data()
{
    QTest::addColumn<qint64>("period");
    QTest::addColumn<qint64>("next");

    QTest::newRow("smallest number") << std::numeric_limits<qint64>::min() << 100LL;
    QTest::newRow("negative") << -1LL << 100LL;
    QTest::newRow("zero") << 0LL << 100LL;
    QTest::newRow("just too short") << 99LL << 100LL;
    QTest::newRow("shortest") << 100LL << 100LL;
    QTest::newRow("just longer") << 101LL << 101LL;
    QTest::newRow("longest") << 1000000000000000LL << 1000000000000000LL;
    QTest::newRow("just too long") << 1000000000000001LL << 1000000000000000LL;
    QTest::newRow("largest number") << std::numeric_limits<qint64>::max() << 1000000000000000LL;
}

void TestDeadlines::periodIsBounded()
{
    QFETCH(qint64, period);
    Deadlines started;
    started.start(1, period, 0);
    QCOMPARE(started.take(0), 1u);
    QTEST(started.next(), "next");

    Deadlines changed;
    changed.start(1, 5000, 0);
    QCOMPARE(changed.take(0), 1u);
    changed.changePeriod(1, period, 0);
    QTEST(changed.next(), "next");
}

void TestDeadlines::earliestFrameComesFirst()
{
    Deadlines deadlines;
    deadlines.start(1, 5000, 300);
    deadlines.start(2, 5000, 100);
    deadlines.start(3, 5000, 200);
    QCOMPARE(deadlines.take(1000), 2u);
    QCOMPARE(deadlines.take(1000), 3u);
    QCOMPARE(deadlines.take(1000), 1u);
    QCOMPARE(deadlines.take(1000), 0u);
    QCOMPARE(deadlines.next(), 5100LL);
}

void TestDeadlines::equalDeadlinesFollowTheHandles()
{
    Deadlines deadlines;
    deadlines.start(9, 1000, 0);
    deadlines.start(4, 1000, 0);
    QCOMPARE(deadlines.take(0), 4u);
    QCOMPARE(deadlines.take(0), 9u);
}

void TestDeadlines::overdueFrameDoesNotKeepOthersWaiting()
{
    // Each write takes ten periods of the first frame, so that it is overdue whenever the thread looks.
    Deadlines deadlines;
    deadlines.start(1, 1000, 0);
    deadlines.start(2, 50000, 0);
    QCOMPARE(deadlines.take(0), 1u);
    QCOMPARE(deadlines.take(10000), 2u);
    QCOMPARE(deadlines.take(20000), 1u);
    QCOMPARE(deadlines.take(30000), 1u);
    QCOMPARE(deadlines.take(40000), 1u);
    QCOMPARE(deadlines.take(50500), 1u);
    QCOMPARE(deadlines.take(60500), 2u);
}

void TestDeadlines::newPeriodCountsFromTheLastServedDeadline_data()
{
    QTest::addColumn<qint64>("period");
    QTest::addColumn<qint64>("now");
    QTest::addColumn<qint64>("next");

    // Served at 3000 in a period of 1000, so that 4000 is next.
    QTest::newRow("unchanged") << 1000LL << 3500LL << 4000LL;
    QTest::newRow("unchanged and overdue") << 1000LL << 8000LL << 4000LL;
    QTest::newRow("longer") << 5000LL << 3500LL << 8000LL;
    QTest::newRow("shorter") << 600LL << 3500LL << 3600LL;
    QTest::newRow("shorter, exactly now") << 500LL << 3500LL << 3500LL;
    QTest::newRow("shorter, already past") << 499LL << 3500LL << 3500LL;
}

void TestDeadlines::newPeriodCountsFromTheLastServedDeadline()
{
    QFETCH(qint64, period);
    QFETCH(qint64, now);
    QFETCH(qint64, next);
    Deadlines deadlines;
    deadlines.start(1, 1000, 0);
    QCOMPARE(deadlines.take(3200), 1u);

    deadlines.changePeriod(1, period, now);
    QCOMPARE(deadlines.next(), next);
    QCOMPARE(deadlines.take(next), 1u);
    QCOMPARE(deadlines.next(), next + period);
}

void TestDeadlines::newPeriodBeforeTheFirstFrameKeepsTheStart()
{
    Deadlines deadlines;
    deadlines.start(1, 1000, 500);
    deadlines.changePeriod(1, 7000, 600);
    QCOMPARE(deadlines.next(), 500LL);
    QCOMPARE(deadlines.take(600), 1u);
    QCOMPARE(deadlines.next(), 7500LL);
}

void TestDeadlines::removedFrameIsNotDue()
{
    Deadlines deadlines;
    deadlines.start(1, 1000, 0);
    deadlines.start(2, 1000, 10);
    deadlines.remove(1);
    QCOMPARE(deadlines.next(), 10LL);
    QCOMPARE(deadlines.take(5000), 2u);
    QCOMPARE(deadlines.take(5000), 0u);
}

void TestDeadlines::removingAndChangingUnknownFramesIsHarmless()
{
    Deadlines deadlines;
    deadlines.remove(1);
    deadlines.changePeriod(1, 1000, 0);
    QCOMPARE(deadlines.next(), Deadlines::never);
}

void TestDeadlines::restartBringsEveryFrameToNow()
{
    Deadlines deadlines;
    deadlines.start(1, 1000, 0);
    deadlines.start(2, 300, 50);
    QCOMPARE(deadlines.take(0), 1u);

    deadlines.restart(777);
    QCOMPARE(deadlines.take(776), 0u);
    QCOMPARE(deadlines.take(777), 1u);
    QCOMPARE(deadlines.take(777), 2u);
    QCOMPARE(deadlines.next(), 1077LL);
    deadlines.restart(800);
    deadlines.changePeriod(1, 5000, 900);
    QCOMPARE(deadlines.next(), 800LL);
}

void TestDeadlines::clearForgetsEverything()
{
    Deadlines deadlines;
    deadlines.start(1, 1000, 0);
    deadlines.clear();
    QCOMPARE(deadlines.next(), Deadlines::never);
    deadlines.start(1, 1000, 5);
    QCOMPARE(deadlines.next(), 5LL);
}

QTEST_GUILESS_MAIN(TestDeadlines)
#include "tst_deadlines.moc"
