#include "canreplayer.h"
#include "slcanpair.h"
#include "textrecording.h"

using Adapter = AbstractCanAdapter;

namespace {
constexpr int rounds = 20;
constexpr int soon = 100; // ms

/// A link, and how it fails and comes back.
class Trouble
{
public:
    enum Kind { SwitchedOff, Removed, Unplugged, BusOff };

    virtual ~Trouble() = default;

    virtual bool isReady() const = 0;
    virtual const char *link() const = 0;
    /// Nothing can be sent or received any more when this returns.
    /// @param states what the adapter on the link has told so far
    virtual bool begin(const Vcan::StateRecord &states) = 0;
    virtual bool end() = 0;
};

class VirtualLinkTrouble : public Trouble
{
public:
    ~VirtualLinkTrouble() override { Vcan::run(QStringLiteral("ip link del vcan6"), Vcan::Quiet); }

    bool isReady() const override { return m_isReady; }
    const char *link() const override { return "vcan6"; }

protected:
    static bool add() { return Vcan::run("ip link add vcan6 up type vcan"); }

private:
    const bool m_isReady = add();
};

class SwitchedOffTrouble : public VirtualLinkTrouble
{
    bool begin(const Vcan::StateRecord &) override { return Vcan::run("ip link set vcan6 down"); }
    bool end() override { return Vcan::run("ip link set vcan6 up"); }
};

class RemovedTrouble : public VirtualLinkTrouble
{
    bool begin(const Vcan::StateRecord &) override { return Vcan::run("ip link del vcan6"); }
    bool end() override { return add(); }
};

class SerialLineTrouble : public Trouble
{
public:
    explicit SerialLineTrouble(SlcanPair::Bitrate bitrate)
        : m_lines(bitrate)
    {
    }
    bool isReady() const override { return m_lines.isReady(); }
    const char *link() const override { return "slcan0"; }

protected:
    SlcanPair m_lines;
};

class UnpluggedTrouble : public SerialLineTrouble
{
public:
    UnpluggedTrouble()
        : SerialLineTrouble(SlcanPair::SetOnLine)
    {
    }

private:
    bool begin(const Vcan::StateRecord &) override { return m_lines.unplug(); }
    bool end() override { return m_lines.plug(); }
};

/// The administrator restarts a controller that is off the bus by switching its link off and on.
class BusOffTrouble : public SerialLineTrouble
{
public:
    BusOffTrouble()
        : SerialLineTrouble(SlcanPair::SetOnLink)
    {
    }

private:
    bool begin(const Vcan::StateRecord &states) override
    {
        const int before = states.states().count(CAN::CanStateBusOff);
        m_lines.say("sb000255");
        return QTest::qWaitFor([&] { return states.states().count(CAN::CanStateBusOff) == before + 1; })
            && Vcan::run("ip link set slcan0 down");
    }
    bool end() override { return Vcan::run("ip link set slcan0 up"); }
};

std::unique_ptr<Trouble> makeTrouble(int kind)
{
    switch (kind) {
    case Trouble::SwitchedOff:
        return std::make_unique<SwitchedOffTrouble>();
    case Trouble::Removed:
        return std::make_unique<RemovedTrouble>();
    case Trouble::Unplugged:
        return std::make_unique<UnpluggedTrouble>();
    default:
        return std::make_unique<BusOffTrouble>();
    }
}

/// Plays the same few frames again and again, one every two milliseconds, until its end.
class EndlessReplay
{
public:
    explicit EndlessReplay(Adapter &adapter)
    {
        m_replayer.setCanApdater(&adapter);
        m_replayer.setLoopMode(true);
        m_replayer.start();
    }
    ~EndlessReplay() { m_replayer.setStop(); }

private:
    const Recording m_recording{Recording::frames({0, 0.002, 0.004, 0.006, 0.008})};
    CANReplayer m_replayer{m_recording.path()};
};
} // namespace

/// Links that fail and come back, again and again, under one adapter.
class TestVcanRecovery : public QObject
{
    Q_OBJECT

private slots:
    void eachFailureIsOneInterfaceErrorAfterWhichTheAdapterOpensAgain_data();
    void eachFailureIsOneInterfaceErrorAfterWhichTheAdapterOpensAgain();
};

void TestVcanRecovery::eachFailureIsOneInterfaceErrorAfterWhichTheAdapterOpensAgain_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("replays");
    QTest::addColumn<int>("openResult");
    const int off = Adapter::OpenBusy;
    const int gone = Adapter::OpenInvalidDevice;
    QTest::newRow("switched off") << int(Trouble::SwitchedOff) << false << off;
    QTest::newRow("switched off under a replay") << int(Trouble::SwitchedOff) << true << off;
    QTest::newRow("removed") << int(Trouble::Removed) << false << gone;
    QTest::newRow("removed under a replay") << int(Trouble::Removed) << true << gone;
    QTest::newRow("unplugged") << int(Trouble::Unplugged) << false << gone;
    QTest::newRow("unplugged under a replay") << int(Trouble::Unplugged) << true << gone;
    QTest::newRow("bus off") << int(Trouble::BusOff) << false << off;
    QTest::newRow("bus off under a replay") << int(Trouble::BusOff) << true << off;
}

void TestVcanRecovery::eachFailureIsOneInterfaceErrorAfterWhichTheAdapterOpensAgain()
{
    QFETCH(int, kind);
    QFETCH(bool, replays);
    QFETCH(int, openResult);
    const std::unique_ptr<Trouble> trouble = makeTrouble(kind);
    QVERIFY(trouble->isReady());
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter(trouble->link(), false);
    // So that frames come in too.
    adapter->setCanAdapterOption(Adapter::OptionForcedEcho, true);
    AdapterRecord record(*adapter);
    const Vcan::StateRecord states(*adapter);
    const auto replay = replays ? std::make_unique<EndlessReplay>(*adapter) : nullptr;
    for (int round = 1; round <= rounds; ++round) {
        const std::size_t before = record.received().size();
        QVERIFY(Vcan::start(*adapter));
        CAN::CanMessage message;
        QCOMPARE(adapter->write(&message), Adapter::WriteOk);
        QVERIFY(record.waitForFrames(before + (replays ? 10 : 1)));
        QVERIFY(trouble->begin(states));
        QTRY_COMPARE_WITH_TIMEOUT(record.errors(), round, soon);
        QTRY_VERIFY(!adapter->getRunning());
        QVERIFY(!adapter->errorText().isEmpty());
        QCOMPARE(adapter->open(), openResult);
        QVERIFY(trouble->end());
    }
    QCOMPARE(record.errors(), rounds);
}

QTEST_GUILESS_MAIN(TestVcanRecovery)
#include "tst_vcanrecovery.moc"
