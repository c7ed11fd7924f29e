#include "cansocket.h"
#include "rtnetlink.h"
#include "socketcanadapter.h"
#include "vcanbench.h"

#include <cstring>

using Adapter = AbstractCanAdapter;

namespace {
/// Counts frames whose data counts up, as cangen makes them, and notices where one is missing.
class SequenceCheck
{
public:
    explicit SequenceCheck(Adapter &adapter)
    {
        QObject::connect(
            &adapter, &Adapter::newCanMessage, &m_context,
            [this](CAN::CanRxMessage *message) { look(message->message); }, Qt::DirectConnection);
    }

    quint64 count() const { return m_count; }
    quint64 gaps() const { return m_gaps; }

private:
    void look(const CAN::CanMessage &message)
    {
        // The first byte moves fastest.
        quint64 number = 0;
        std::memcpy(&number, message.data, sizeof number);
        if (m_count > 0 && number != m_last + 1)
            ++m_gaps;
        m_last = number;
        ++m_count;
    }

    quint64 m_last = 0;
    std::atomic<quint64> m_count{0};
    std::atomic<quint64> m_gaps{0};
    QObject m_context;
};

/// Its receive queue holds a few frames.
class NarrowAdapter : public SocketCanAdapter
{
public:
    NarrowAdapter()
        : SocketCanAdapter(QStringLiteral("vcan0"))
    {
    }
    int openLink() override
    {
        const std::optional<LinkProperties> link = readCanLink(QStringLiteral("vcan0"));
        CanSocket socket = openCanSocket(link->index, false, 4096);
        return socket.error == 0 ? openOn(std::move(socket.descriptor), *link) : int(OpenBusy);
    }
};

constexpr quint64 floodFrames = 50000;

bool flood()
{
    return Vcan::run(QStringLiteral("cangen vcan0 -g 0 -I 123 -L 8 -D i -n %1").arg(floodFrames));
}
} // namespace

/// Whether frames are lost, and whether those that are lost are counted.
class TestVcanLoad : public QObject
{
    Q_OBJECT

private slots:
    void pacedLoadLosesNothing();
    void floodLosesNothing();
    void whatASmallQueueLosesIsCountedToTheFrame();
    void whatTheSystemGivesToAUserIsCountedToo();
    void slowListenerLosesNothingWithinTheQueue();
};

void TestVcanLoad::pacedLoadLosesNothing()
{
    constexpr quint64 frames = 20 * 8000;
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    const SequenceCheck check(*adapter);
    QVERIFY(Vcan::start(*adapter));
    Vcan::Tool generator(QStringLiteral("cangen vcan0 -g 5 -c 40 -I 123 -L 8 -D i -n %1").arg(frames));
    QTRY_COMPARE_WITH_TIMEOUT(check.count(), frames, 60000);
    QVERIFY(generator.endsWithoutError());
    QCOMPARE(check.gaps(), quint64(0));
    QCOMPARE(adapter->framesReceived(), frames);
    QCOMPARE(adapter->framesLost(), quint64(0));
    adapter->close();
}

void TestVcanLoad::floodLosesNothing()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    const SequenceCheck check(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QVERIFY(flood());
    QTRY_COMPARE(check.count(), floodFrames);
    QCOMPARE(check.gaps(), quint64(0));
    QCOMPARE(adapter->framesLost(), quint64(0));
    adapter->close();
}

void TestVcanLoad::whatASmallQueueLosesIsCountedToTheFrame()
{
    NarrowAdapter adapter;
    const SequenceCheck check(adapter);
    QVERIFY(Vcan::start(adapter));
    // Said once, however often frames are lost.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^vcan0: .* lost so far\\.$")));
    QVERIFY(flood());
    QTRY_COMPARE(adapter.framesReceived() + adapter.framesLost(), floodFrames);
    QVERIFY(adapter.framesLost() > 0);
    QCOMPARE(check.count(), adapter.framesReceived());
    adapter.close();
    QCOMPARE(adapter.framesReceived() + adapter.framesLost(), floodFrames);
}

void TestVcanLoad::whatTheSystemGivesToAUserIsCountedToo()
{
    constexpr uid_t nobody = 65534;
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    // Held up at its first frame until all have been sent.
    std::mutex gate;
    QObject context;
    QObject::connect(
        adapter.get(), &Adapter::newCanMessage, &context, [&gate] { const std::lock_guard pass(gate); },
        Qt::DirectConnection);
    QCOMPARE(::seteuid(nobody), 0);
    const bool started = Vcan::start(*adapter);
    QCOMPARE(::seteuid(0), 0);
    QVERIFY(started);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^vcan0: .* lost so far\\.$")));
    {
        const std::lock_guard closed(gate);
        QVERIFY(flood());
    }
    QTRY_COMPARE(adapter->framesReceived() + adapter->framesLost(), floodFrames);
    // What the system's limit for users allows, and no less: it is more than its default gives.
    QVERIFY(adapter->framesReceived() > 278);
    adapter->close();
}

void TestVcanLoad::slowListenerLosesNothingWithinTheQueue()
{
    constexpr quint64 frames = 15000;
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    std::mutex gate;
    const SequenceCheck check(*adapter);
    QObject context;
    QObject::connect(
        adapter.get(), &Adapter::newCanMessage, &context, [&gate] { const std::lock_guard pass(gate); },
        Qt::DirectConnection);
    QVERIFY(Vcan::start(*adapter));
    {
        const std::lock_guard closed(gate);
        QVERIFY(Vcan::run(QStringLiteral("cangen vcan0 -g 0 -I 123 -L 8 -D i -n %1").arg(frames)));
    }
    QTRY_COMPARE(check.count(), frames);
    QCOMPARE(check.gaps(), quint64(0));
    QCOMPARE(adapter->framesLost(), quint64(0));
    adapter->close();
}

QTEST_GUILESS_MAIN(TestVcanLoad)
#include "tst_vcanload.moc"
