#include "tourreport.h"

#include <QTest>

class TestTourReport : public QObject
{
    Q_OBJECT

private slots:
    void tableHasColumnsAndASum();
    void oneFailureFailsTheReport();
    void emptyReportPasses();
};

void TestTourReport::tableHasColumnsAndASum()
{
    TourReport report;
    report.compare(QStringLiteral("Frames sent"), 1000, 1000);
    report.compare(QStringLiteral("Order"), QStringLiteral("kept"), QStringLiteral("kept"));
    QCOMPARE(report.table(),
             QStringLiteral("Check        Expected  Seen  Result\n"
                            "Frames sent  1000      1000  ok\n"
                            "Order        kept      kept  ok\n"
                            "All 2 checks passed.\n"));
    QVERIFY(report.allPassed());
}

void TestTourReport::oneFailureFailsTheReport()
{
    TourReport report;
    report.compare(QStringLiteral("a"), 1, 1);
    report.compare(QStringLiteral("b"), 1, 2);
    report.add(QStringLiteral("c"), QStringLiteral("many"), QStringLiteral("7"), true);
    QVERIFY(!report.allPassed());
    QCOMPARE(report.failureCount(), 1);
    QVERIFY(report.table().contains(QStringLiteral("b      1         2     FAILED\n")));
    QVERIFY(report.table().endsWith(QStringLiteral("1 of 3 checks failed.\n")));
}

void TestTourReport::emptyReportPasses()
{
    QVERIFY(TourReport().allPassed());
}

QTEST_APPLESS_MAIN(TestTourReport)
#include "tst_tourreport.moc"
