#include "tracesituation.h"

#include <QTest>

Q_DECLARE_METATYPE(TraceSituation)

class TestTraceSituation : public QObject
{
    Q_OBJECT

private slots:
    void adviceFitsTheSituation_data();
    void adviceFitsTheSituation();
};

void TestTraceSituation::adviceFitsTheSituation_data()
{
    QTest::addColumn<TraceSituation>("situation");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("textPart");
    QTest::addColumn<int>("offer");
    QTest::newRow("no interface") << TraceSituation{false, false, {}} << "No CAN interface yet"
                                  << "Try the demo" << int(TraceAdvice::OfferDemo);
    QTest::newRow("not connected") << TraceSituation{true, false, {}} << "Not connected"
                                   << "Press F5 to connect" << int(TraceAdvice::OfferConnect);
    QTest::newRow("failed") << TraceSituation{true, false, QStringLiteral("Demo 1: Port 1 is in use.")}
                            << "Not connected"
                            << "Demo 1: Port 1 is in use." << int(TraceAdvice::OfferConnect);
    QTest::newRow("silent bus") << TraceSituation{true, true, {}} << "Waiting for the first frame"
                                << "check the bitrate" << int(TraceAdvice::NoOffer);
    QTest::newRow("silent bus beside a failure")
        << TraceSituation{true, true, QStringLiteral("no")} << "Waiting for the first frame"
        << "check the bitrate" << int(TraceAdvice::NoOffer);
}

void TestTraceSituation::adviceFitsTheSituation()
{
    QFETCH(TraceSituation, situation);
    QFETCH(QString, textPart);
    const TraceAdvice advice = adviceFor(situation);
    QTEST(advice.title, "title");
    QVERIFY2(advice.text.contains(textPart), qPrintable(advice.text));
    QTEST(int(advice.offer), "offer");
}

QTEST_APPLESS_MAIN(TestTraceSituation)
#include "tst_tracesituation.moc"
