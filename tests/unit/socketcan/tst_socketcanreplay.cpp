#include "adaptercontracttest.h"
#include "injectedadapter.h"
#include "replayworker.h"
#include "textrecording.h"

#include <QtTest>

/// A replay and an adapter, each on threads of their own.
class TestSocketCanReplay : public QObject
{
    Q_OBJECT

private slots:
    void replayOutlivesLinksThatEndWhileFramesComeIn();
    void replayOutlivesAnAdapterThatIsClosedAndOpened();
};

namespace {
constexpr int rounds = 10;

/// Plays without waits, again and again, until its end.
class EndlessReplay
{
public:
    explicit EndlessReplay(AbstractCanAdapter &adapter)
    {
        m_worker.setCanApdater(&adapter);
        m_worker.setLoop(true);
        m_worker.setPlaybackSpeed(0);
        m_thread = std::thread([this] { m_worker.doWork(m_recording.path()); });
    }
    ~EndlessReplay()
    {
        m_worker.setStop();
        m_thread.join();
    }

private:
    const Recording m_recording{Recording::frames({0, 0.001, 0.002, 0.003, 0.004})};
    ReplayWorker m_worker;
    std::thread m_thread;
};

/// Has frames come in while frames of the replay are fetched.
bool exchangeFrames(SocketPeer &peer, quint32 count)
{
    bool all = true;
    for (quint32 id = 0x100; id < 0x100 + count; ++id)
        all = peer.send(id) && peer.receive() != 0xFFFFFFFF && all;
    return all;
}
} // namespace

void TestSocketCanReplay::replayOutlivesLinksThatEndWhileFramesComeIn()
{
    constexpr quint32 frames = 200;
    InjectedAdapter adapter;
    AdapterRecord record(adapter);
    const EndlessReplay replay(adapter);
    for (int round = 1; round <= rounds; ++round) {
        QVERIFY(adapter.start());
        QVERIFY(exchangeFrames(*adapter.peer, frames));
        QVERIFY(record.waitForFrames(std::size_t(frames) * std::size_t(round)));
        adapter.peer->close();
        QTRY_COMPARE(record.errors(), round);
        QTRY_VERIFY(!adapter.getRunning());
    }
}

void TestSocketCanReplay::replayOutlivesAnAdapterThatIsClosedAndOpened()
{
    InjectedAdapter adapter;
    const AdapterRecord record(adapter);
    const EndlessReplay replay(adapter);
    for (int round = 1; round <= rounds; ++round) {
        QVERIFY(adapter.start());
        QVERIFY(exchangeFrames(*adapter.peer, 50));
        adapter.close();
        QVERIFY(!adapter.getRunning());
    }
    QCOMPARE(record.errors(), 0);
}

QTEST_GUILESS_MAIN(TestSocketCanReplay)
#include "tst_socketcanreplay.moc"
