#include "demosession.h"
#include "demonetworkrunner.h"
#include "interfacename.h"
#include "messages.h"
#include "session.h"

#include <QSignalSpy>
#include <QTest>

namespace {
// A bus of its own, that no other test and no demo uses.
const QString testPort = QStringLiteral("45993");

/// A session with its demo, as a window has them.
struct Demo
{
    Session session;
    DemoSession demo{&session};

    Demo() { demo.setPort(testPort); }

    void connect()
    {
        demo.addInterfaces();
        session.connectAdapters();
        demo.joinNetwork();
    }
};
} // namespace

class TestDemoSession : public QObject
{
    Q_OBJECT

private slots:
    void twoInterfacesAreAddedOnce();
    void interfacesOfTheUserStayAndTakeThePort();
    void demoNeedsAPlace();
    void userWhoConnectsGetsNoNetworkUnasked();
    void networkStartsOnASilentBus();
    void busWithTrafficGetsNoSecondNetwork();
    void everyFrameShowsOnceInTheTrace();
    void nothingStartsWithoutAConnection();
};

void TestDemoSession::twoInterfacesAreAddedOnce()
{
    Demo demo;
    demo.demo.addInterfaces();
    demo.demo.addInterfaces();
    MultiCanAdapterHandler *adapters = demo.session.adapters();
    QCOMPARE(adapters->getAdapterCount(), quint16(2));
    QCOMPARE(adapters->getActiveAdapterCount(), quint16(2));
    QCOMPARE(adapters->getPrimaryAdapter(), adapters->adapterAt(0));
    for (quint16 row = 0; row < 2; ++row) {
        const AbstractCanAdapter *adapter = adapters->adapterAt(row);
        QCOMPARE(interfaceName(*adapter), QStringLiteral("Demo %1").arg(row + 1));
        QVERIFY(adapter->getCanAdapterOption(AbstractCanAdapter::OptionUseCanFd).toBool());
        QCOMPARE(adapter->getCanAdapterOption(AbstractCanAdapter::OptionPort).toString(), testPort);
    }
}

void TestDemoSession::interfacesOfTheUserStayAndTakeThePort()
{
    Demo demo;
    MultiCanAdapterHandler *adapters = demo.session.adapters();
    auto *own = CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QStringLiteral("Demo 3"));
    adapters->addNewCanAdapter(own, true, true, false);
    demo.demo.addInterfaces();
    QCOMPARE(adapters->getAdapterCount(), quint16(1));
    QCOMPARE(own->getCanAdapterOption(AbstractCanAdapter::OptionPort).toString(), testPort);
}

void TestDemoSession::demoNeedsAPlace()
{
    Demo demo;
    QVERIFY(demo.demo.isPossible());
    MultiCanAdapterHandler *adapters = demo.session.adapters();
    const auto add = [adapters](AbstractCanAdapter::CanAdapterType type, const char *name) {
        adapters->addNewCanAdapter(CanAdapterFactory::createCanAdapter(type, QString::fromLatin1(name)), false, true,
                                   false);
    };
    add(AbstractCanAdapter::CanAdapterFixedNetwork20, "TCP gateway");
    QVERIFY(!demo.demo.isPossible());
    add(AbstractCanAdapter::CanAdapterDemo, "Demo 2");
    QVERIFY(demo.demo.isPossible());
}

void TestDemoSession::userWhoConnectsGetsNoNetworkUnasked()
{
    Demo demo;
    demo.session.adapters()->addNewCanAdapter(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QStringLiteral("Demo 3")), true, true,
        false);
    demo.session.adapters()->adapterAt(0)->setCanAdapterOption(AbstractCanAdapter::OptionPort, testPort);
    demo.session.connectAdapters();
    demo.demo.joinNetwork();
    QVERIFY(demo.session.isConnected());
    QVERIFY(!demo.demo.isNetworkRunning());
    demo.demo.addInterfaces();
    demo.demo.joinNetwork();
    QTRY_VERIFY(demo.demo.isNetworkRunning());
}

void TestDemoSession::networkStartsOnASilentBus()
{
    Demo demo;
    demo.connect();
    QVERIFY(demo.session.isConnected());
    QTRY_VERIFY_WITH_TIMEOUT(demo.demo.isNetworkRunning(), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(demo.session.trace()->getMessageCount() > 20, 10000);
    // A network outlives the connection of the window, as a real one does.
    demo.session.disconnectAdapters();
    QVERIFY(demo.demo.isNetworkRunning());
}

void TestDemoSession::busWithTrafficGetsNoSecondNetwork()
{
    Demo first;
    first.connect();
    QTRY_VERIFY_WITH_TIMEOUT(first.session.trace()->getMessageCount() > 0, 10000);
    Demo second;
    QSignalSpy remarks(&second.demo, &DemoSession::remark);
    second.connect();
    QTRY_COMPARE_WITH_TIMEOUT(remarks.count(), 1, 10000);
    QVERIFY(!second.demo.isNetworkRunning());
}

void TestDemoSession::everyFrameShowsOnceInTheTrace()
{
    Demo demo;
    demo.demo.addInterfaces();
    demo.session.connectAdapters();
    for (quint16 row = 0; row < 2; ++row) {
        CAN::CanMessage message = dataFrame(0x6E0u + row);
        QCOMPARE(demo.session.adapters()->adapterAt(row)->write(&message), AbstractCanAdapter::WriteOk);
    }
    QTRY_COMPARE_WITH_TIMEOUT(demo.session.trace()->getMessageCount(), 2u, 10000);
    // A second copy would be on its way by now: the network's frames come behind it.
    demo.demo.joinNetwork();
    QTRY_VERIFY_WITH_TIMEOUT(demo.session.trace()->getMessageCount() > 10, 10000);
    int ours = 0;
    const QVector<CAN::CanRxMessage> frames = demo.session.trace()->getMessages(0, 10);
    for (const CAN::CanRxMessage &frame : frames)
        ours += frame.message.id == 0x6E0 || frame.message.id == 0x6E1 ? 1 : 0;
    QCOMPARE(ours, 2);
}

void TestDemoSession::nothingStartsWithoutAConnection()
{
    Demo demo;
    QSignalSpy remarks(&demo.demo, &DemoSession::remark);
    demo.demo.joinNetwork();
    demo.demo.addInterfaces();
    demo.demo.joinNetwork();
    QVERIFY(!demo.demo.isNetworkRunning());
    demo.session.connectAdapters();
    demo.demo.joinNetwork();
    demo.session.disconnectAdapters();
    // Runs the delayed start, which finds no connection; a second one comes behind it.
    demo.session.connectAdapters();
    demo.demo.joinNetwork();
    QTRY_VERIFY_WITH_TIMEOUT(demo.demo.isNetworkRunning(), 10000);
    QCOMPARE(remarks.count(), 0);
}

QTEST_MAIN(TestDemoSession)
#include "tst_demosession.moc"
