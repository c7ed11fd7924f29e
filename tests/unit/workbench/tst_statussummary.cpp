#include "statussummary.h"

#include <QLocale>
#include <QTest>

class TestStatusSummary : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }
    void sumIsOverAllInterfaces();
    void breakdownHasALineForEachInterface();
    void rateIsThatOfTheLastSecond();
    void rateNeedsTwoReports();
    void rateStartsAfreshWhenTheCountWasCleared();
    void rateOfReportsAtTheSameTimeIsNone();
};

void TestStatusSummary::sumIsOverAllInterfaces()
{
    const InterfaceCounts sum = sumOf({{QStringLiteral("A"), 1, 20, 300}, {QStringLiteral("B"), 4, 50, 600}});
    QCOMPARE(sum.received, 5ULL);
    QCOMPARE(sum.sent, 70ULL);
    QCOMPARE(sum.lost, 900ULL);
    QCOMPARE(sumOf({}).received, 0ULL);
}

void TestStatusSummary::breakdownHasALineForEachInterface()
{
    QCOMPARE(breakdown({{QStringLiteral("A"), 1, 2, 3}, {QStringLiteral("B"), 4, 5, 6}}),
             QStringLiteral("A: received 1, sent 2, lost 3\nB: received 4, sent 5, lost 6"));
    QCOMPARE(breakdown({}), QString());
}

void TestStatusSummary::rateIsThatOfTheLastSecond()
{
    RateMeter meter;
    quint64 count = 0;
    for (qint64 now = 0; now <= 4000; now += 250) {
        meter.report(now, count);
        count += now < 2000 ? 1000 : 25;
    }
    QCOMPARE(meter.perSecond(), 100ULL);
    for (qint64 now = 4250; now <= 6000; now += 250)
        meter.report(now, count);
    QCOMPARE(meter.perSecond(), 0ULL);
}

void TestStatusSummary::rateNeedsTwoReports()
{
    RateMeter meter;
    QCOMPARE(meter.perSecond(), 0ULL);
    meter.report(100, 5000);
    QCOMPARE(meter.perSecond(), 0ULL);
    meter.report(200, 5050);
    QCOMPARE(meter.perSecond(), 500ULL);
}

void TestStatusSummary::rateStartsAfreshWhenTheCountWasCleared()
{
    RateMeter meter;
    meter.report(0, 1000);
    meter.report(250, 2000);
    meter.report(500, 10);
    QCOMPARE(meter.perSecond(), 0ULL);
    meter.report(750, 20);
    QCOMPARE(meter.perSecond(), 40ULL);
}

void TestStatusSummary::rateOfReportsAtTheSameTimeIsNone()
{
    RateMeter meter;
    meter.report(100, 0);
    meter.report(100, 50);
    QCOMPARE(meter.perSecond(), 0ULL);
}

QTEST_APPLESS_MAIN(TestStatusSummary)
#include "tst_statussummary.moc"
