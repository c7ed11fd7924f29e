#include "canchannel.h"
#include "socketpeer.h"

#include <QtTest>

#include <condition_variable>
#include <mutex>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {
constexpr std::chrono::seconds patience{10};

/// Keeps what a channel reports. Safe from any thread.
class Record final : public CanChannelListener
{
public:
    std::atomic<int> losses{0};
    std::atomic<int> lastError{0};
    std::atomic<int> quietMoments{0};
    std::atomic<int> quietMomentsWanted{1};
    std::atomic<bool> wasOnReceiveThread{false};
    const CanChannel *channel = nullptr;

    bool waitForFrames(std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, patience, [&] { return m_ids.size() >= count; });
    }
    std::vector<quint32> ids() const
    {
        const std::lock_guard lock(m_mutex);
        return m_ids;
    }
    std::vector<std::size_t> sizes() const
    {
        const std::lock_guard lock(m_mutex);
        return m_sizes;
    }

private:
    void frameArrived(const canfd_frame &frame, std::size_t size, const ReceptionInfo &) override
    {
        wasOnReceiveThread = channel != nullptr && channel->isReceiveThread();
        const std::lock_guard lock(m_mutex);
        m_ids.push_back(frame.can_id);
        m_sizes.push_back(size);
        m_changed.notify_all();
    }
    void framesDropped(quint32) override {}
    bool fellQuiet() override { return ++quietMoments < quietMomentsWanted; }
    void linkLost(int error) override
    {
        lastError = error;
        ++losses;
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<quint32> m_ids;
    std::vector<std::size_t> m_sizes;
};

canfd_frame frame(quint32 id)
{
    canfd_frame made = {};
    made.can_id = id;
    return made;
}

CanChannel::SendResult send(CanChannel &channel, quint32 id)
{
    return channel.send(frame(id), CAN_MTU);
}

/// Sends until the socket takes no more.
int fill(CanChannel &channel)
{
    int sent = 0;
    while (send(channel, 1) == CanChannel::SendResult::Sent)
        ++sent;
    return sent;
}
} // namespace

/// The road of frames through a socket, and its ends.
class TestCanChannel : public QObject
{
    Q_OBJECT

private slots:
    void framesArriveInOrderOnAThreadOfTheChannel();
    void sizeTellsTheKindOfFrame();
    void framesLeaveInOrder();
    void floodArrivesWhole();
    void channelWithoutASocketSendsNothing();
    void vanishedPeerIsALossOnce();
    void framesBeforeTheEndStillArrive();
    void lossMetInSendingIsToldByTheReceiveThread();
    void stoppingIsNoLoss();
    void stoppedChannelStartsAgain();
    void fullSocketIsWaitedFor();
    void frameIsLostAfterASecondAndTheNextAtOnce();
    void stoppingFreesWhoeverWaits();
    void lossFreesWhoeverWaits();
    void quietIsToldOnceAfterFrames();
    void quietIsToldAgainWhereWanted();
    void idleChannelStaysSilent();
    void severalThreadsSendWhileFramesArriveAndTheLinkEnds();
};

void TestCanChannel::framesArriveInOrderOnAThreadOfTheChannel()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    record.channel = &channel;
    QVERIFY(channel.start(peer.takeNear()));
    QVERIFY(channel.isLinked() && !channel.isReceiveThread());
    for (quint32 id : {1u, 2u, 3u})
        QVERIFY(peer.send(id));
    QVERIFY(record.waitForFrames(3));
    QVERIFY(record.ids() == (std::vector<quint32>{1, 2, 3}));
    QVERIFY(record.wasOnReceiveThread);
}

void TestCanChannel::sizeTellsTheKindOfFrame()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    for (const std::size_t size : {CANFD_MTU, CAN_MTU, std::size_t(3), CANFD_MTU})
        QVERIFY(peer.send(1, size));
    QVERIFY(record.waitForFrames(4));
    QVERIFY(record.sizes() == (std::vector<std::size_t>{CANFD_MTU, CAN_MTU, 3, CANFD_MTU}));
}

void TestCanChannel::framesLeaveInOrder()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    for (quint32 id : {7u, 8u, 9u}) {
        QVERIFY(send(channel, id) == CanChannel::SendResult::Sent);
        QCOMPARE(peer.receive(), id);
    }
}

void TestCanChannel::floodArrivesWhole()
{
    constexpr quint32 count = 20000;
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    std::vector<quint32> sent;
    for (quint32 id = 0; id < count; ++id) {
        QVERIFY(peer.send(id));
        sent.push_back(id);
    }
    QVERIFY(record.waitForFrames(count));
    QVERIFY(record.ids() == sent);
}

void TestCanChannel::channelWithoutASocketSendsNothing()
{
    Record record;
    CanChannel channel(record);
    QVERIFY(!channel.isLinked());
    QVERIFY(send(channel, 1) == CanChannel::SendResult::NotLinked);
    channel.stop();
}

void TestCanChannel::vanishedPeerIsALossOnce()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    peer.close();
    QTRY_COMPARE(record.losses.load(), 1);
    QVERIFY(record.lastError != 0);
    QVERIFY(!channel.isLinked());
    QVERIFY(send(channel, 1) == CanChannel::SendResult::NotLinked);
    channel.stop();
    QCOMPARE(record.losses.load(), 1);
}

void TestCanChannel::framesBeforeTheEndStillArrive()
{
    constexpr quint32 count = 250; // more than one reading takes
    SocketPeer peer;
    Record record;
    FileDescriptor near = peer.takeNear();
    for (quint32 id = 0; id < count; ++id)
        QVERIFY(peer.send(id));
    peer.close();
    CanChannel channel(record);
    QVERIFY(channel.start(std::move(near)));
    QTRY_COMPARE(record.losses.load(), 1);
    QCOMPARE(record.ids().size(), std::size_t(count));
}

void TestCanChannel::lossMetInSendingIsToldByTheReceiveThread()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    peer.close();
    QTRY_VERIFY(send(channel, 1) == CanChannel::SendResult::NotLinked);
    QTRY_COMPARE(record.losses.load(), 1);
}

void TestCanChannel::stoppingIsNoLoss()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    channel.stop();
    channel.stop();
    QCOMPARE(record.losses.load(), 0);
    QVERIFY(!channel.isLinked());
}

void TestCanChannel::stoppedChannelStartsAgain()
{
    Record record;
    CanChannel channel(record);
    for (std::size_t round = 1; round <= 5; ++round) {
        SocketPeer peer;
        QVERIFY(channel.start(peer.takeNear()));
        QVERIFY(peer.send(1));
        QVERIFY(record.waitForFrames(round));
        QVERIFY(send(channel, 2) == CanChannel::SendResult::Sent);
        QCOMPARE(peer.receive(), 2u);
        if (round % 2 == 0)
            channel.stop();
    }
}

void TestCanChannel::fullSocketIsWaitedFor()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    constexpr int count = 5000; // more than a socket holds
    std::thread reader([&peer] {
        for (int i = 0; i < count; ++i)
            peer.receive();
    });
    int sent = 0;
    while (sent < count && send(channel, 1) == CanChannel::SendResult::Sent)
        ++sent;
    channel.stop();
    reader.join();
    QCOMPARE(sent, count);
}

void TestCanChannel::frameIsLostAfterASecondAndTheNextAtOnce()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    const Clock::time_point begin = Clock::now();
    const int sent = fill(channel);
    const auto waited = Clock::now() - begin;
    QVERIFY(waited >= CanChannel::sendTimeout && waited < 5 * CanChannel::sendTimeout);
    const Clock::time_point again = Clock::now();
    QVERIFY(send(channel, 1) == CanChannel::SendResult::Lost);
    QVERIFY(Clock::now() - again < CanChannel::sendTimeout / 2);
    // As soon as it takes something, it is worth a wait again.
    for (int i = 0; i < sent; ++i)
        peer.receive();
    QVERIFY(send(channel, 1) == CanChannel::SendResult::Sent);
    QVERIFY(channel.isLinked());
}

void TestCanChannel::stoppingFreesWhoeverWaits()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    std::atomic<int> sent{0};
    std::thread writer([&] {
        while (send(channel, 1) == CanChannel::SendResult::Sent)
            ++sent;
    });
    QTRY_VERIFY(sent > 0);
    const Clock::time_point begin = Clock::now();
    channel.stop();
    QVERIFY(Clock::now() - begin < CanChannel::sendTimeout / 2);
    writer.join();
}

void TestCanChannel::lossFreesWhoeverWaits()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    std::atomic<int> sent{0};
    std::thread writer([&] {
        while (send(channel, 1) == CanChannel::SendResult::Sent)
            ++sent;
    });
    QTRY_VERIFY(sent > 0);
    peer.close();
    writer.join();
    QTRY_COMPARE(record.losses.load(), 1);
}

void TestCanChannel::quietIsToldOnceAfterFrames()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    QTRY_COMPARE(record.quietMoments.load(), 1);
    QVERIFY(peer.send(1));
    QTRY_COMPARE(record.quietMoments.load(), 2);
}

void TestCanChannel::quietIsToldAgainWhereWanted()
{
    SocketPeer peer;
    Record record;
    record.quietMomentsWanted = 3;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    QTRY_COMPARE(record.quietMoments.load(), 3);
}

void TestCanChannel::idleChannelStaysSilent()
{
    SocketPeer peer;
    Record record;
    CanChannel channel(record);
    QVERIFY(channel.start(peer.takeNear()));
    QTRY_COMPARE(record.quietMoments.load(), 1);
    // Twice as long as another moment would take.
    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_VERIFY(elapsed.elapsed() > 2 * CanChannel::quietTime.count());
    QCOMPARE(record.quietMoments.load(), 1);
}

void TestCanChannel::severalThreadsSendWhileFramesArriveAndTheLinkEnds()
{
    for (int round = 0; round < 10; ++round) {
        SocketPeer peer;
        Record record;
        CanChannel channel(record);
        QVERIFY(channel.start(peer.takeNear()));
        std::atomic<int> sent{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([&] {
                while (send(channel, 1) != CanChannel::SendResult::NotLinked)
                    ++sent;
            });
        }
        bool allSent = true;
        for (quint32 id = 0; id < 200; ++id) {
            allSent = peer.send(id) && allSent;
            peer.receive();
        }
        const bool arrived = record.waitForFrames(200);
        peer.close();
        for (std::thread &thread : threads)
            thread.join();
        QVERIFY(allSent && arrived && sent > 0);
        QTRY_COMPARE(record.losses.load(), 1);
    }
}

QTEST_GUILESS_MAIN(TestCanChannel)
#include "tst_canchannel.moc"
