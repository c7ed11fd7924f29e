#include "stallmeter.h"

#include <QTest>

class TestStallMeter : public QObject
{
    Q_OBJECT

private slots:
    void longestOfTheLastMinuteForgetsOlderDelays();
    void longestOfAllRemembersThem();
    void historyStartsEmpty();
    void aBlockedEventLoopIsAStall();
    void restartForgets();
};

void TestStallMeter::longestOfTheLastMinuteForgetsOlderDelays()
{
    StallHistory history;
    history.report(500, 120);
    history.report(900, 30);
    history.report(30'500, 50);
    QCOMPARE(history.longestInLastMinute(30'500), qint64(120));
    QCOMPARE(history.longestInLastMinute(59'999), qint64(120));
    QCOMPARE(history.longestInLastMinute(60'000), qint64(50));
    QCOMPARE(history.longestInLastMinute(90'000), qint64(0));
    history.report(60'100, 7);
    QCOMPARE(history.longestInLastMinute(90'000), qint64(7));
}

void TestStallMeter::longestOfAllRemembersThem()
{
    StallHistory history;
    history.report(0, 120);
    history.report(200'000, 3);
    QCOMPARE(history.longest(), qint64(120));
    history.clear();
    QCOMPARE(history.longest(), qint64(0));
    QCOMPARE(history.longestInLastMinute(200'000), qint64(0));
}

void TestStallMeter::historyStartsEmpty()
{
    const StallHistory history;
    QCOMPARE(history.longestInLastMinute(0), qint64(0));
    QCOMPARE(history.longest(), qint64(0));
}

void TestStallMeter::aBlockedEventLoopIsAStall()
{
    StallMeter meter;
    QElapsedTimer clock;
    clock.start();
    while (!clock.hasExpired(200)) {
    }
    QTRY_VERIFY_WITH_TIMEOUT(meter.longest() >= 100, 5000);
    QVERIFY(meter.longestInLastMinute() >= 100);
}

void TestStallMeter::restartForgets()
{
    StallMeter meter;
    QElapsedTimer clock;
    clock.start();
    while (!clock.hasExpired(200)) {
    }
    QTRY_VERIFY_WITH_TIMEOUT(meter.longest() >= 100, 5000);
    meter.restart();
    QCOMPARE(meter.longest(), qint64(0));
    QCOMPARE(meter.longestInLastMinute(), qint64(0));
}

QTEST_GUILESS_MAIN(TestStallMeter)
#include "tst_stallmeter.moc"
