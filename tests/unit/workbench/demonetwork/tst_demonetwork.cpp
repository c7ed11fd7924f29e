#include "demonetwork.h"

#include "frames.h"

#include <QMap>
#include <QRandomGenerator>
#include <QtTest>

namespace {
constexpr qint64 millisecond = 1000;
constexpr qint64 second = 1000 * millisecond;
constexpr qint64 allUp = 100 * millisecond;

std::vector<CAN::CanMessage> liveUntil(DemoNetwork &network, qint64 time)
{
    std::vector<CAN::CanMessage> all;
    for (qint64 due = network.nextDue(); due <= time; due = network.nextDue()) {
        const auto frames = network.advanceTo(due);
        all.insert(all.end(), frames.cbegin(), frames.cend());
    }
    return all;
}

QMap<quint32, int> countById(const std::vector<CAN::CanMessage> &frames)
{
    QMap<quint32, int> counts;
    for (const CAN::CanMessage &message : frames)
        ++counts[message.id];
    return counts;
}
} // namespace

class TestDemoNetwork : public QObject
{
    Q_OBJECT

private slots:
    void nodesBootOneAfterTheOther();
    void suddenPowerBootsAllAtOnce();
    void busIsAliveWithinASecond();
    void framesKeepTheirPeriods();
    void everyFrameIsValid();
    void framesDueTogetherAreArbitrated();
    void broadcastReachesAllNodes();
    void requestReachesItsNodeOnly();
    void farJumpGivesNoBurst();
    void sameSeedGivesSameFrames();
    void otherSeedGivesOtherNoise();
    void errorsOfTheNodesComeIndependently();
    void framesThatConcernNobodyAreTold_data();
    void framesThatConcernNobodyAreTold();
    void foreignFramesDoNoHarm();
};

void TestDemoNetwork::nodesBootOneAfterTheOther()
{
    DemoNetwork network;
    QCOMPARE(network.nodes().size(), std::size_t(5));
    const QStringList texts = frameTexts(liveUntil(network, allUp));
    QCOMPARE(texts.filter(QRegularExpression(QStringLiteral("^7"))),
             QStringList({QStringLiteral("702#00"), QStringLiteral("705#00"), QStringLiteral("70A#00"),
                          QStringLiteral("711#00"), QStringLiteral("720#00")}));
}

void TestDemoNetwork::suddenPowerBootsAllAtOnce()
{
    DemoNetwork network;
    QCOMPARE(frameTexts(network.advanceTo(60 * second)),
             QStringList({QStringLiteral("702#00"), QStringLiteral("705#00"), QStringLiteral("70A#00"),
                          QStringLiteral("711#00"), QStringLiteral("720#00")}));
}

void TestDemoNetwork::busIsAliveWithinASecond()
{
    DemoNetwork network;
    const QList<quint32> ids = countById(liveUntil(network, second)).keys();
    for (const quint32 id : {0x182U, 0x282U, 0x185U, 0x18AU, 0x191U, 0x1A0U, 0x3A0U, 0x4A0U})
        QVERIFY2(ids.contains(id), qPrintable(QString::number(id, 16)));
}

void TestDemoNetwork::framesKeepTheirPeriods()
{
    DemoNetwork network;
    liveUntil(network, allUp);
    const QMap<quint32, int> counts = countById(liveUntil(network, allUp + 30 * second));
    const QMap<quint32, int> expected = {{0x182, 3000}, {0x282, 1500}, {0x185, 300}, {0x18A, 600},
                                         {0x191, 1500}, {0x1A0, 600},  {0x3A0, 300}, {0x4A0, 300},
                                         {0x702, 60},   {0x705, 30},   {0x711, 50},  {0x720, 40}};
    for (auto it = expected.cbegin(); it != expected.cend(); ++it)
        QVERIFY2(counts.value(it.key()) == it.value(), qPrintable(QString::number(it.key(), 16)));
}

void TestDemoNetwork::everyFrameIsValid()
{
    DemoNetwork network;
    for (const CAN::CanMessage &message : liveUntil(network, 120 * second)) {
        QVERIFY(message.id >= 0x80 && message.id <= 0x7FF);
        QVERIFY(!message.ext && !message.rtr && !message.errorFrame);
        QVERIFY(message.fd || message.length <= CAN::maxClassicDataLength);
        QVERIFY(message.fd || !message.brs);
        QVERIFY(!message.fd || message.length <= 8 || canFdDataLengths.contains(message.length));
    }
}

void TestDemoNetwork::framesDueTogetherAreArbitrated()
{
    DemoNetwork network;
    liveUntil(network, allUp);
    for (int i = 0; i < 1000; ++i) {
        const auto frames = network.advanceTo(network.nextDue());
        QVERIFY(
            std::is_sorted(frames.cbegin(), frames.cend(), [](const auto &a, const auto &b) { return a.id < b.id; }));
    }
}

void TestDemoNetwork::broadcastReachesAllNodes()
{
    DemoNetwork network;
    liveUntil(network, allUp);
    QVERIFY(network.handle(frame(QStringLiteral("000#0200"))).empty());
    for (const DemoNode &node : network.nodes())
        QCOMPARE(node.state(), CanOpen::NmtState::Stopped);
    QCOMPARE(frameTexts(network.handle(frame(QStringLiteral("000#8200")))),
             QStringList({QStringLiteral("702#00"), QStringLiteral("705#00"), QStringLiteral("70A#00"),
                          QStringLiteral("711#00"), QStringLiteral("720#00")}));
}

void TestDemoNetwork::requestReachesItsNodeOnly()
{
    DemoNetwork network;
    liveUntil(network, allUp);
    QCOMPARE(frameTexts(network.handle(frame(QStringLiteral("611#4008100000000000")))),
             QStringList({QStringLiteral("591#43081000456E636F")}));
    QVERIFY(network.handle(frame(QStringLiteral("603#4008100000000000"))).empty());
    network.handle(frame(QStringLiteral("000#800A")));
    for (const DemoNode &node : network.nodes()) {
        QCOMPARE(node.state(),
                 node.nodeId() == 0x0A ? CanOpen::NmtState::PreOperational : CanOpen::NmtState::Operational);
    }
}

void TestDemoNetwork::farJumpGivesNoBurst()
{
    DemoNetwork network;
    liveUntil(network, allUp);
    const auto frames = network.advanceTo(3600 * second);
    for (const int count : countById(frames))
        QCOMPARE(count, 1);
    QVERIFY(network.advanceTo(3600 * second).empty());
    QVERIFY(network.nextDue() > 3600 * second);
}

void TestDemoNetwork::sameSeedGivesSameFrames()
{
    DemoNetwork a(7);
    DemoNetwork b(7);
    QCOMPARE(frameTexts(liveUntil(a, 60 * second)), frameTexts(liveUntil(b, 60 * second)));
}

void TestDemoNetwork::otherSeedGivesOtherNoise()
{
    DemoNetwork a(7);
    DemoNetwork b(8);
    QVERIFY(frameTexts(liveUntil(a, second)) != frameTexts(liveUntil(b, second)));
}

void TestDemoNetwork::errorsOfTheNodesComeIndependently()
{
    DemoNetwork network;
    QMap<quint32, qint64> firstErrors;
    for (qint64 due = network.nextDue(); due < 60 * second; due = network.nextDue()) {
        for (const CAN::CanMessage &message : network.advanceTo(due)) {
            if (message.id < CanOpen::cobTpdo1 && !firstErrors.contains(message.id))
                firstErrors.insert(message.id, due);
        }
    }
    QCOMPARE(firstErrors.keys(), QList<quint32>({0x82, 0x85, 0x8A, 0x91, 0xA0}));
    QList<qint64> times = firstErrors.values();
    std::sort(times.begin(), times.end());
    QVERIFY(times.constLast() - times.constFirst() > second);
}

void TestDemoNetwork::framesThatConcernNobodyAreTold_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("concerns");

    QTest::newRow("NMT") << QStringLiteral("000#0100") << true;
    QTest::newRow("SDO request to a node") << QStringLiteral("60A#4000100000000000") << true;
    QTest::newRow("SDO request to no node") << QStringLiteral("60B#4000100000000000") << false;
    QTest::newRow("SDO response") << QStringLiteral("58A#4300100000000000") << false;
    QTest::newRow("extended") << QStringLiteral("0000060A#4000100000000000") << false;
    QTest::newRow("remote") << QStringLiteral("70A#R") << false;
    QTest::newRow("load") << QStringLiteral("400#0000000000000000") << false;
}

void TestDemoNetwork::framesThatConcernNobodyAreTold()
{
    QFETCH(QString, text);
    QTEST(DemoNetwork::concerns(frame(text)), "concerns");
}

void TestDemoNetwork::foreignFramesDoNoHarm()
{
    QRandomGenerator random(1);
    DemoNetwork network;
    liveUntil(network, allUp);
    const quint32 targets[] = {0x000, 0x602, 0x605, 0x60A, 0x611, 0x620, 0x700};
    for (int i = 0; i < 20000; ++i) {
        CAN::CanMessage message;
        message.id = random.bounded(8) == 0 ? random.generate() : targets[random.bounded(7)];
        // Beyond what any frame holds, too: the record comes from another thread's hands.
        message.length = static_cast<quint8>(random.bounded(4) == 0 ? random.bounded(256) : random.bounded(2) ? 8 : 2);
        for (quint8 &byte : message.data)
            byte = static_cast<quint8>(random.generate());
        message.rtr = random.bounded(16) == 0;
        message.ext = random.bounded(16) == 0;
        message.fd = random.bounded(16) == 0;
        message.errorFrame = random.bounded(16) == 0;

        const auto answers = network.handle(message);
        QVERIFY(answers.size() <= 5);
        QVERIFY(answers.empty() || DemoNetwork::concerns(message));
        network.advanceTo(allUp + i * millisecond);
    }
    // Whatever happened, a reset brings them all back.
    QCOMPARE(network.handle(frame(QStringLiteral("000#8100"))).size(), std::size_t(5));
}

QTEST_APPLESS_MAIN(TestDemoNetwork)
#include "tst_demonetwork.moc"
