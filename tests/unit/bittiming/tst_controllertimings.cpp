#include "linkmessage.h"
#include "timingform.h"

#include <QScopedPointer>

Q_DECLARE_METATYPE(CAN::CANBitTimingThresholds)

// What the dialog finds within the limits of the adapters that come with the library.
class TestControllerTimings : public QObject
{
    Q_OBJECT

private slots:
    void wantedBitrateIsFound_data();
    void wantedBitrateIsFound();
    void linkWithoutControllerHasNoTimings();
};

namespace {
CAN::CANBitTimingThresholds demoLimits(bool dataPhase)
{
    const QScopedPointer<AbstractCanAdapter> adapter(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QStringLiteral("Demo 1")));
    return adapter->getThresholds(dataPhase);
}

/// Of a controller as the system tells of it.
CAN::CANBitTimingThresholds linkLimits(quint32 megahertz, bool dataPhase)
{
    const can_bittiming_const arbitration = {"mcp251xfd", 2, 256, 1, 128, 128, 1, 256, 1};
    const can_bittiming_const data = {"mcp251xfd", 1, 32, 1, 16, 16, 1, 256, 1};
    return LinkMessage()
        .with(IFLA_CAN_BITTIMING_CONST, arbitration)
        .with(IFLA_CAN_DATA_BITTIMING_CONST, data)
        .with(IFLA_CAN_CLOCK, can_clock{megahertz * 1000000})
        .link()
        .thresholds(dataPhase);
}
} // namespace

void TestControllerTimings::wantedBitrateIsFound_data()
{
    QTest::addColumn<CAN::CANBitTimingThresholds>("limits");
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<double>("samplePoint");
    for (const int bitrate : {10, 20, 50, 125, 250, 500, 1000}) {
        QTest::addRow("Demo, %d", bitrate) << demoLimits(false) << bitrate << 87.5;
        QTest::addRow("SocketCAN, %d", bitrate) << linkLimits(40, false) << bitrate << 87.5;
    }
    for (const int bitrate : {1000, 2000, 4000, 8000}) {
        QTest::addRow("Demo, data phase, %d", bitrate) << demoLimits(true) << bitrate << 80.0;
        QTest::addRow("SocketCAN, data phase, %d", bitrate) << linkLimits(40, true) << bitrate << 80.0;
    }
}

void TestControllerTimings::wantedBitrateIsFound()
{
    QFETCH(CAN::CANBitTimingThresholds, limits);
    QFETCH(int, bitrate);
    QFETCH(double, samplePoint);
    TimingForm form;
    form.dialog.setThresholds(limits);
    form.setNumber("sbBitrate", bitrate);
    form.setSamplePoint(samplePoint);
    form.click("btnUpdateTimings");

    QCOMPARE(form.text("lblInfo"), QStringLiteral("Succesfully updated bit timings."));
    QCOMPARE(form.text("lblThresholds"), limits.toString());
    QVERIFY(limits.valid);
    const CanBitTimingValues timing = form.dialog.getValues().timing;
    QVERIFY(timing.preScaler >= limits.preScalerMin && timing.preScaler <= limits.preScalerMax);
    QVERIFY(timing.tSeg1 >= limits.tSeg1Min && timing.tSeg1 <= limits.tSeg1Max);
    QVERIFY(timing.tSeg2 >= limits.tSeg2Min && timing.tSeg2 <= limits.tSeg2Max);
    QVERIFY(timing.sjw >= 1 && timing.sjw <= limits.sjwMax);
    QCOMPARE(limits.clockFrequency * 1000 / (timing.preScaler * (1 + timing.tSeg1 + timing.tSeg2)), bitrate);
    QCOMPARE(form.number("sbBitrate"), bitrate);
    QCOMPARE(form.samplePoint(), samplePoint);
    QCOMPARE(form.state(), QStringLiteral("ok"));
}

void TestControllerTimings::linkWithoutControllerHasNoTimings()
{
    TimingForm form;
    form.dialog.setThresholds(LinkMessage().link().thresholds(false));
    form.setNumber("sbBitrate", 500);
    form.click("btnUpdateTimings");
    QCOMPARE(form.text("lblInfo"), QStringLiteral("No suitable timings found."));
}

QTEST_MAIN(TestControllerTimings)
#include "tst_controllertimings.moc"
