#include "statussummary.h"

#include <QLocale>
#include <QTest>

namespace {
InterfaceStatus counted(quint64 received, quint64 sent, quint64 lost)
{
    return {QString(), received, sent, lost, false, {}, CAN::CanStateUnknown};
}

InterfaceStatus connected(const char *name, CAN::CanState controller)
{
    return {QString::fromLatin1(name), 1, 2, 3, true, {}, controller};
}

InterfaceStatus failed(const char *name)
{
    return {QString::fromLatin1(name), 0, 0, 0, false, QStringLiteral("It is gone."), CAN::CanStateUnknown};
}

InterfaceStatus closed(const char *name)
{
    return {QString::fromLatin1(name), 0, 0, 0, false, {}, CAN::CanStateUnknown};
}
} // namespace

Q_DECLARE_METATYPE(QVector<InterfaceStatus>)

class TestStatusSummary : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }
    void sumIsOverAllInterfaces();
    void breakdownHasALineForEachInterface();
    void connectionIsToldWithWhatIsWrong_data();
    void connectionIsToldWithWhatIsWrong();
    void rateIsThatOfTheLastSecond();
    void rateNeedsTwoReports();
    void rateStartsAfreshWhenTheCountWasCleared();
    void rateOfReportsAtTheSameTimeIsNone();
};

void TestStatusSummary::sumIsOverAllInterfaces()
{
    const InterfaceStatus sum = sumOf({counted(1, 20, 300), counted(4, 50, 600)});
    QCOMPARE(sum.received, 5ULL);
    QCOMPARE(sum.sent, 70ULL);
    QCOMPARE(sum.lost, 900ULL);
    QCOMPARE(sumOf({}).received, 0ULL);
}

void TestStatusSummary::breakdownHasALineForEachInterface()
{
    QCOMPARE(breakdown(
                 {connected("A", CAN::CanStateUnknown), connected("B", CAN::CanStateBusOff), failed("C"), closed("D")}),
             QStringLiteral("A: connected; received 1, sent 2, lost 3\n"
                            "B: connected, controller bus off; received 1, sent 2, lost 3\n"
                            "C: It is gone.; received 0, sent 0, lost 0\n"
                            "D: not connected; received 0, sent 0, lost 0"));
    QCOMPARE(breakdown({}), QString());
}

void TestStatusSummary::connectionIsToldWithWhatIsWrong_data()
{
    QTest::addColumn<QVector<InterfaceStatus>>("interfaces");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("trouble");
    const InterfaceStatus well = connected("A", CAN::CanStateErrorActive);
    QTest::newRow("none") << QVector<InterfaceStatus>() << "Not connected" << false;
    QTest::newRow("closed") << QVector<InterfaceStatus>{closed("A")} << "Not connected" << false;
    QTest::newRow("one") << QVector<InterfaceStatus>{well, closed("B")} << "Connected: A" << false;
    QTest::newRow("no controller") << QVector<InterfaceStatus>{well, connected("B", CAN::CanStateUnknown)}
                                   << "Connected: A, B" << false;
    QTest::newRow("warning") << QVector<InterfaceStatus>{connected("A", CAN::CanStateErrorWarning)}
                             << "Connected: A (error warning)" << true;
    QTest::newRow("passive") << QVector<InterfaceStatus>{connected("A", CAN::CanStateErrorPassive)}
                             << "Connected: A (error passive)" << true;
    QTest::newRow("bus off") << QVector<InterfaceStatus>{connected("B", CAN::CanStateBusOff), well}
                             << "Connected: B (bus off), A" << true;
    QTest::newRow("stopped") << QVector<InterfaceStatus>{connected("A", CAN::CanStateStopped)}
                             << "Connected: A (stopped)" << true;
    QTest::newRow("failed") << QVector<InterfaceStatus>{failed("A")} << "Failed: A" << true;
    QTest::newRow("one failed") << QVector<InterfaceStatus>{failed("B"), well} << "Connected: A; Failed: B" << true;
}

void TestStatusSummary::connectionIsToldWithWhatIsWrong()
{
    QFETCH(QVector<InterfaceStatus>, interfaces);
    QTEST(connectionText(interfaces), "text");
    QTEST(hasTrouble(interfaces), "trouble");
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
