#include "tracesituation.h"

#include <QTest>

Q_DECLARE_METATYPE(TraceSituation)
Q_DECLARE_METATYPE(QVector<TraceAdvice::Offer>)

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
    QTest::addColumn<QVector<TraceAdvice::Offer>>("offers");
    const QStringList links{QStringLiteral("can0"), QStringLiteral("vcan0")};
    const QVector<TraceAdvice::Offer> connect{TraceAdvice::OfferConnect};
    QTest::newRow("no interface") << TraceSituation{false, false, {}, {}} << "No CAN interface yet"
                                  << "Try the demo" << QVector<TraceAdvice::Offer>{TraceAdvice::OfferDemo};
    QTest::newRow("no link") << TraceSituation{false, false, {}, {}} << "No CAN interface yet"
                             << "sudo ip link add vcan0 type vcan\nsudo ip link set vcan0 mtu 72 up"
                             << QVector<TraceAdvice::Offer>{TraceAdvice::OfferDemo};
    QTest::newRow("links") << TraceSituation{false, false, {}, links} << "CAN links found: can0, vcan0"
                           << "Connect them"
                           << QVector<TraceAdvice::Offer>{TraceAdvice::OfferLinks, TraceAdvice::OfferDemo};
    QTest::newRow("not connected") << TraceSituation{true, false, {}, links} << "Not connected"
                                   << "Press F5 to connect" << connect;
    QTest::newRow("failed") << TraceSituation{true, false, QStringLiteral("Demo 1: Port 1 is in use."), {}}
                            << "Not connected"
                            << "Demo 1: Port 1 is in use." << connect;
    QTest::newRow("silent bus") << TraceSituation{true, true, {}, links} << "Waiting for the first frame"
                                << "check the bitrate" << QVector<TraceAdvice::Offer>();
    QTest::newRow("silent bus beside a failure")
        << TraceSituation{true, true, QStringLiteral("no"), {}} << "Waiting for the first frame"
        << "check the bitrate" << QVector<TraceAdvice::Offer>();
}

void TestTraceSituation::adviceFitsTheSituation()
{
    QFETCH(TraceSituation, situation);
    QFETCH(QString, textPart);
    const TraceAdvice advice = adviceFor(situation);
    QTEST(advice.title, "title");
    QVERIFY2(advice.text.contains(textPart), qPrintable(advice.text));
    QTEST(advice.offers, "offers");
}

QTEST_APPLESS_MAIN(TestTraceSituation)
#include "tst_tracesituation.moc"
