#include "replayclock.h"

#include <QtTest>

#include <limits>

class TestReplayClock : public QObject
{
    Q_OBJECT

private slots:
    void firstWaitIsSleptInFull();
    void oversleptTimeIsTakenOutOfTheNextSleep();
    void debtBeyondAWaitIsCarriedOn();
    void debtOfNearlyTooMuchIsMadeUpFor();
    void debtOfTooMuchIsForgotten();
    void waitAfterAForgottenDebtIsOnTimeAgain();
    void latenessDoesNotAddUp();
    void restartForgetsTheDebt();
    void anotherSpeedForgetsTheDebt();
    void sameSpeedKeepsTheDebt();
    void endlessWaitsAreBounded();
};

namespace {
// Somewhere on the clock, in nanoseconds.
constexpr qint64 start = 123456789000;

constexpr qint64 after(qint64 microseconds)
{
    return start + microseconds * 1000;
}
} // namespace

void TestReplayClock::firstWaitIsSleptInFull()
{
    ReplayClock clock;
    QCOMPARE(clock.sleepFor(1000, start), quint64(1000));
}

void TestReplayClock::oversleptTimeIsTakenOutOfTheNextSleep()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    QCOMPARE(clock.sleepFor(1000, after(1070)), quint64(930));
    QCOMPARE(clock.sleepFor(500, after(2000)), quint64(500));
}

void TestReplayClock::debtBeyondAWaitIsCarriedOn()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    QCOMPARE(clock.sleepFor(1000, after(4500)), quint64(0));
    QCOMPARE(clock.sleepFor(1000, after(4600)), quint64(0));
    QCOMPARE(clock.sleepFor(2000, after(4700)), quint64(300));
}

void TestReplayClock::debtOfNearlyTooMuchIsMadeUpFor()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    QCOMPARE(clock.sleepFor(150000, after(1000 + 100000)), quint64(50000));
}

void TestReplayClock::debtOfTooMuchIsForgotten()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    QCOMPARE(clock.sleepFor(150000, after(1000 + 100001)), quint64(150000));
}

void TestReplayClock::waitAfterAForgottenDebtIsOnTimeAgain()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    clock.sleepFor(1000, after(2000000));
    QCOMPARE(clock.sleepFor(1000, after(2001070)), quint64(930));
}

void TestReplayClock::latenessDoesNotAddUp()
{
    ReplayClock clock;
    qint64 now = start;
    for (int i = 0; i < 100000; ++i)
        now += static_cast<qint64>(clock.sleepFor(250, now)) * 1000 + i % 90 * 1000 + 123;
    const qint64 late = now - after(250LL * 100000);
    QVERIFY2(late >= 0 && late < 100 * 1000, qPrintable(QString::number(late)));
}

void TestReplayClock::restartForgetsTheDebt()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    clock.restart();
    QCOMPARE(clock.sleepFor(1000, after(50000)), quint64(1000));
}

void TestReplayClock::anotherSpeedForgetsTheDebt()
{
    ReplayClock clock;
    clock.sleepFor(1000, start);
    clock.setSpeed(2.0);
    QCOMPARE(clock.sleepFor(500, after(1200)), quint64(500));
}

void TestReplayClock::sameSpeedKeepsTheDebt()
{
    ReplayClock clock;
    clock.setSpeed(2.0);
    clock.sleepFor(1000, start);
    clock.setSpeed(2.0);
    QCOMPARE(clock.sleepFor(1000, after(1200)), quint64(800));
}

void TestReplayClock::endlessWaitsAreBounded()
{
    const quint64 year = 365ULL * 24 * 3600 * 1000000;
    ReplayClock clock;
    QCOMPARE(clock.sleepFor(std::numeric_limits<quint64>::max(), start), year);
    QCOMPARE(clock.sleepFor(std::numeric_limits<quint64>::max(), start), 2 * year);
}

QTEST_APPLESS_MAIN(TestReplayClock)
#include "tst_replayclock.moc"
