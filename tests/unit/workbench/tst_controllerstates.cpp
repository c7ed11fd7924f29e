#include "controllerstates.h"
#include "fakeadapter.h"

#include <QTest>

class TestControllerStates : public QObject
{
    Q_OBJECT

private slots:
    void stateIsUnknownAtFirst();
    void stateIsThatWhichTheAdapterTold();
    void stateToldByTheReceiveThreadArrives();
    void followingTwiceHearsOnce();
    void closedAdapterHasNoState();
    void adapterIsFollowedAgainAfterItsConnectionsWereCut();
    void adapterThatIsGoneHasNoState();

private:
    static void tell(FakeAdapter &adapter, CAN::CanState state) { adapter.changeState(state, CanTimeStamp()); }
};

void TestControllerStates::stateIsUnknownAtFirst()
{
    const FakeAdapter adapter;
    ControllerStates states;
    QCOMPARE(states.stateOf(&adapter), CAN::CanStateUnknown);
}

void TestControllerStates::stateIsThatWhichTheAdapterTold()
{
    FakeAdapter first;
    FakeAdapter second;
    ControllerStates states;
    states.follow(&first);
    states.follow(&second);
    tell(first, CAN::CanStateErrorPassive);
    tell(second, CAN::CanStateErrorActive);
    QCOMPARE(states.stateOf(&first), CAN::CanStateErrorPassive);
    QCOMPARE(states.stateOf(&second), CAN::CanStateErrorActive);
    tell(first, CAN::CanStateBusOff);
    QCOMPARE(states.stateOf(&first), CAN::CanStateBusOff);
}

void TestControllerStates::stateToldByTheReceiveThreadArrives()
{
    FakeAdapter adapter;
    ControllerStates states;
    states.follow(&adapter);
    FakeAdapter::onReceiveThread([&] { tell(adapter, CAN::CanStateErrorWarning); });
    QTRY_COMPARE(states.stateOf(&adapter), CAN::CanStateErrorWarning);
}

void TestControllerStates::followingTwiceHearsOnce()
{
    FakeAdapter adapter;
    ControllerStates states;
    states.follow(&adapter);
    tell(adapter, CAN::CanStateBusOff);
    states.follow(&adapter);
    QCOMPARE(states.stateOf(&adapter), CAN::CanStateBusOff);
}

void TestControllerStates::closedAdapterHasNoState()
{
    FakeAdapter adapter;
    ControllerStates states;
    states.follow(&adapter);
    adapter.open();
    adapter.setRunning(true);
    tell(adapter, CAN::CanStateBusOff);
    adapter.close();
    QCOMPARE(states.stateOf(&adapter), CAN::CanStateUnknown);
}

void TestControllerStates::adapterIsFollowedAgainAfterItsConnectionsWereCut()
{
    FakeAdapter adapter;
    ControllerStates states;
    states.follow(&adapter);
    adapter.disconnect();
    tell(adapter, CAN::CanStateBusOff);
    QCOMPARE(states.stateOf(&adapter), CAN::CanStateUnknown);
    states.follow(&adapter);
    tell(adapter, CAN::CanStateBusOff);
    QCOMPARE(states.stateOf(&adapter), CAN::CanStateBusOff);
}

void TestControllerStates::adapterThatIsGoneHasNoState()
{
    ControllerStates states;
    auto adapter = std::make_unique<FakeAdapter>();
    const AbstractCanAdapter *gone = adapter.get();
    states.follow(adapter.get());
    tell(*adapter, CAN::CanStateBusOff);
    adapter.reset();
    QCOMPARE(states.stateOf(gone), CAN::CanStateUnknown);
}

QTEST_MAIN(TestControllerStates)
#include "tst_controllerstates.moc"
