#include "demonodeprofiles.h"

#include "canopen.h"
#include "frames.h"

#include <QSet>
#include <QtTest>

namespace {
constexpr qint64 millisecond = 1000;
constexpr qint64 second = 1000 * millisecond;

/// The PDO with that COB-ID, at that time.
CAN::CanMessage pdo(quint32 cobId, qint64 time, quint32 count = 0)
{
    static NoiseGenerator noise;
    CAN::CanMessage message;
    for (const DemoNodeProfile &profile : demoNodeProfiles()) {
        for (const PdoProfile &candidate : profile.pdos) {
            if (candidate.cobBase + profile.nodeId == cobId)
                candidate.fill(message, {time, count, noise});
        }
    }
    message.id = cobId;
    return message;
}

template <typename T>
T number(const CAN::CanMessage &message, int offset)
{
    return qFromLittleEndian<T>(message.data + offset);
}
} // namespace

class TestDemoNodeProfiles : public QObject
{
    Q_OBJECT

private slots:
    void nodesAreDistinct();
    void periodsAreThoseOfALiveBus();
    void axisRunsToAndFro_data();
    void axisRunsToAndFro();
    void temperatureStaysInTheRoom();
    void inputsAndOutputsCount_data();
    void inputsAndOutputsCount();
    void encoderPositionFollowsItsSpeed();
    void batteryStaysWithinItsLimits();
    void fdPdosHaveTheirLength_data();
    void fdPdosHaveTheirLength();
};

void TestDemoNodeProfiles::nodesAreDistinct()
{
    QSet<int> ids;
    QSet<int> heartbeatTimes;
    QSet<QByteArray> names;
    for (const DemoNodeProfile &profile : demoNodeProfiles()) {
        ids.insert(profile.nodeId);
        heartbeatTimes.insert(profile.heartbeatTime);
        names.insert(QByteArray(profile.name).left(4));
        QVERIFY(profile.heartbeatTime >= 500 && profile.heartbeatTime <= 1000);
    }
    QCOMPARE(ids, QSet<int>({0x02, 0x05, 0x0A, 0x11, 0x20}));
    QCOMPARE(heartbeatTimes.size(), 5);
    QCOMPARE(names.size(), 5);
}

void TestDemoNodeProfiles::periodsAreThoseOfALiveBus()
{
    QSet<quint32> cobIds;
    int count = 0;
    for (const DemoNodeProfile &profile : demoNodeProfiles()) {
        for (const PdoProfile &candidate : profile.pdos) {
            QVERIFY(candidate.period >= 10 * millisecond && candidate.period <= 100 * millisecond);
            cobIds.insert(candidate.cobBase + profile.nodeId);
            ++count;
        }
    }
    QCOMPARE(cobIds.size(), count);
}

void TestDemoNodeProfiles::axisRunsToAndFro_data()
{
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("text");

    QTest::newRow("at the start") << qint64(0) << QStringLiteral("182#370200000000");
    QTest::newRow("on its way") << 10 * millisecond << QStringLiteral("182#3702F4010000");
    QTest::newRow("half-way") << 1 * second << QStringLiteral("182#370250C30000");
    QTest::newRow("just before the end") << 1990 * millisecond << QStringLiteral("182#3702AC840100");
    QTest::newRow("at rest") << 2 * second << QStringLiteral("182#3706A0860100");
    QTest::newRow("about to return") << 2500 * millisecond << QStringLiteral("182#3702A0860100");
    QTest::newRow("half-way back") << 3500 * millisecond << QStringLiteral("182#370250C30000");
    QTest::newRow("at rest at the start") << 4500 * millisecond << QStringLiteral("182#370600000000");
    QTest::newRow("the next round") << 5010 * millisecond << QStringLiteral("182#3702F4010000");
}

void TestDemoNodeProfiles::axisRunsToAndFro()
{
    QFETCH(qint64, time);
    QTEST(frameText(pdo(0x182, time)), "text");
}

void TestDemoNodeProfiles::temperatureStaysInTheRoom()
{
    QSet<qint16> values;
    for (qint64 time = 0; time < 120 * second; time += 100 * millisecond) {
        const CAN::CanMessage message = pdo(0x185, time, 7);
        QCOMPARE(message.length, quint8(6));
        const auto room = number<qint16>(message, 0);
        QVERIFY2(room >= 2045 && room <= 2555, qPrintable(QString::number(room)));
        const auto coolant = number<qint16>(message, 2);
        QVERIFY2(coolant >= 5185 && coolant <= 7015, qPrintable(QString::number(coolant)));
        QCOMPARE(number<quint16>(message, 4), quint16(7));
        values.insert(room);
    }
    QVERIFY(values.size() > 100);
    QVERIFY(number<qint16>(pdo(0x185, 15 * second), 0) > 2500);
    QVERIFY(number<qint16>(pdo(0x185, 45 * second), 0) < 2100);
}

void TestDemoNodeProfiles::inputsAndOutputsCount_data()
{
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("text");

    QTest::newRow("first input") << qint64(0) << QStringLiteral("18A#01000201");
    QTest::newRow("second input") << 250 * millisecond << QStringLiteral("18A#02000201");
    QTest::newRow("last input") << 1999 * millisecond << QStringLiteral("18A#80000201");
    QTest::newRow("second round") << 2 * second << QStringLiteral("18A#01010201");
    QTest::newRow("outputs wrap") << 512 * second << QStringLiteral("18A#01000201");
}

void TestDemoNodeProfiles::inputsAndOutputsCount()
{
    QFETCH(qint64, time);
    QTEST(frameText(pdo(0x18A, time, 0x102)), "text");
}

void TestDemoNodeProfiles::encoderPositionFollowsItsSpeed()
{
    constexpr qint64 step = 20 * millisecond;
    constexpr double stepsPerTurn = 4096;
    for (qint64 time = step; time < 40 * second; time += step) {
        const CAN::CanMessage before = pdo(0x191, time - step);
        const CAN::CanMessage now = pdo(0x191, time);
        const double moved = double(number<quint32>(now, 0)) - double(number<quint32>(before, 0));
        const double speed = (number<qint16>(now, 4) + number<qint16>(before, 4)) / 2.0; // 1/min
        const double expected = speed / 60 * stepsPerTurn * double(step) / double(second);
        QVERIFY2(qAbs(moved - expected) < 6, qPrintable(QStringLiteral("%1 %2 %3").arg(time).arg(moved).arg(expected)));
    }
}

void TestDemoNodeProfiles::batteryStaysWithinItsLimits()
{
    for (qint64 time = 0; time < 600 * second; time += 50 * millisecond) {
        const CAN::CanMessage message = pdo(0x1A0, time);
        QCOMPARE(message.length, quint8(8));
        const auto voltage = number<quint16>(message, 0);
        QVERIFY2(voltage >= 5800 && voltage <= 6000, qPrintable(QString::number(voltage)));
        const auto current = number<qint16>(message, 2);
        QVERIFY2(current >= -3720 && current <= 1320, qPrintable(QString::number(current)));
        QVERIFY(message.data[4] >= 50 && message.data[4] <= 90);
        QVERIFY(message.data[5] >= 24 && message.data[5] <= 32);
    }
}

void TestDemoNodeProfiles::fdPdosHaveTheirLength_data()
{
    QTest::addColumn<quint32>("cobId");
    QTest::addColumn<int>("length");

    QTest::newRow("cell voltages") << 0x3A0U << 32;
    QTest::newRow("current log") << 0x4A0U << 64;
}

void TestDemoNodeProfiles::fdPdosHaveTheirLength()
{
    QFETCH(quint32, cobId);
    const CAN::CanMessage message = pdo(cobId, 5 * second, 50);
    QVERIFY(message.fd);
    QVERIFY(message.brs);
    QVERIFY(!message.extraFlag);
    QTEST(int(message.length), "length");
}

QTEST_APPLESS_MAIN(TestDemoNodeProfiles)
#include "tst_demonodeprofiles.moc"
