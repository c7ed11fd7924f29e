#include "fakeadapter.h"
#include "frameprobe.h"
#include "messages.h"

#include <QTest>

class TestFrameProbe : public QObject
{
    Q_OBJECT

private slots:
    void framesAreCountedByIdentifier();
    void onlyTheFramesOfKeptIdentifiersAreKept();
    void recordingHasEveryFrameInOrder();
    void switchedFramesAreCounted();
    void framesFromTheReceiveThreadAreHeard();
    void probeThatIsGoneHearsNothing();
    void disconnectedAdapterIsNotHeard();
};

void TestFrameProbe::framesAreCountedByIdentifier()
{
    FakeAdapter adapter;
    const FrameProbe probe(&adapter);
    adapter.receive(at(0, dataFrame(1, "0A")));
    adapter.receive(at(0, dataFrame(2)));
    adapter.receive(at(0, dataFrame(1, "0B")));
    QCOMPARE(probe.count(1), 2ULL);
    QCOMPARE(probe.count(2), 1ULL);
    QCOMPARE(probe.count(3), 0ULL);
    QCOMPARE(probe.last(1).data[0], quint8(0x0B));
    QCOMPARE(probe.last(3).length, quint8(0));
}

void TestFrameProbe::onlyTheFramesOfKeptIdentifiersAreKept()
{
    FakeAdapter adapter;
    FrameProbe probe(&adapter);
    adapter.receive(at(0, dataFrame(1, "01")));
    probe.keep(1);
    adapter.receive(at(0, dataFrame(1, "02")));
    adapter.receive(at(0, dataFrame(2, "03")));
    adapter.receive(at(0, dataFrame(1, "04")));
    QCOMPARE(probe.kept(1).size(), 2);
    QCOMPARE(probe.kept(1)[0].message.data[0], quint8(2));
    QCOMPARE(probe.kept(1)[1].message.data[0], quint8(4));
    QVERIFY(probe.kept(2).isEmpty());
}

void TestFrameProbe::recordingHasEveryFrameInOrder()
{
    FakeAdapter adapter;
    FrameProbe probe(&adapter);
    adapter.receive(at(0, dataFrame(1)));
    probe.record();
    adapter.receive(at(1, dataFrame(3)));
    adapter.receive(at(2, dataFrame(2)));
    QCOMPARE(probe.recording(), QVector<CAN::CanRxMessage>({at(1, dataFrame(3)), at(2, dataFrame(2))}));
    probe.record();
    QVERIFY(probe.recording().isEmpty());
}

void TestFrameProbe::switchedFramesAreCounted()
{
    FakeAdapter adapter;
    const FrameProbe probe(&adapter);
    CAN::CanMessage message = dataFrame(1);
    message.fd = true;
    adapter.receive(at(0, message));
    QCOMPARE(probe.switchedFrames(), 0ULL);
    message.brs = true;
    adapter.receive(at(0, message));
    QCOMPARE(probe.switchedFrames(), 1ULL);
}

void TestFrameProbe::framesFromTheReceiveThreadAreHeard()
{
    FakeAdapter adapter;
    const FrameProbe probe(&adapter);
    FakeAdapter::onReceiveThread([&adapter] {
        for (int i = 0; i < 100; ++i)
            adapter.receive(at(i, dataFrame(1)));
    });
    QCOMPARE(probe.count(1), 100ULL);
}

void TestFrameProbe::probeThatIsGoneHearsNothing()
{
    FakeAdapter adapter;
    {
        const FrameProbe probe(&adapter);
        adapter.receive(at(0, dataFrame(1)));
        QCOMPARE(probe.count(1), 1ULL);
    }
    adapter.receive(at(0, dataFrame(1)));
}

void TestFrameProbe::disconnectedAdapterIsNotHeard()
{
    FakeAdapter adapter;
    const FrameProbe probe(&adapter);
    adapter.disconnect();
    adapter.receive(at(0, dataFrame(1)));
    QCOMPARE(probe.count(1), 0ULL);
}

QTEST_GUILESS_MAIN(TestFrameProbe)
#include "tst_frameprobe.moc"
