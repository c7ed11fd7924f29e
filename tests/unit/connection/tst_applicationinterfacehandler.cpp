#include "applicationinterfacehandler.h"

#include "fakefamily.h"
#include "messageboxes.h"
#include "settingshome.h"

#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Adapter = AbstractCanAdapter;

namespace {
CAN::CanRxMessage frame(quint32 id)
{
    CAN::CanRxMessage message;
    message.timeStamp = CanTimeStamp(12, 345);
    message.message.id = id;
    message.message.length = 2;
    message.message.data[0] = 0xAB;
    message.message.data[1] = 0xCD;
    return message;
}

/// A handler with all that an application hands to it, and fakes for adapters.
class Bench
{
public:
    Bench()
        : settings(nullptr)
        , store(new DatachunkHandler)
        , handler(&settings, store, collection.get(), primary, scheduler, &window)
    {
    }

    ~Bench()
    {
        delete scheduler;
        delete store;
    }

    /// An active fake in the collection. It belongs to that.
    FakeAdapter *add(const QString &name, bool isPrimary = false,
                     Adapter::CanAdapterType type = Adapter::CanAdapterDemo)
    {
        auto *adapter = new FakeAdapter(type, name);
        adapter->setCanAdapterOption(Adapter::OptionAdapterName, QStringLiteral("Adapter ") + name);
        adapter->setCanAdapterOption(Adapter::OptionUseCanFd, false);
        adapter->setCanAdapterOption(Adapter::OptionBitrate,
                                     QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("nominal"), 250, 0.8)));
        adapter->setCanAdapterOption(Adapter::OptionFdBitrate,
                                     QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("data"), 4000, 0.7)));
        handler.addNewCanAdapter(adapter, isPrimary, true, false);
        return adapter;
    }

    int connectTo(Adapter *adapter, bool withoutTrace = false)
    {
        return handler.connectToAdapter(adapter, withoutTrace, usesCanFd);
    }

    QWidget window;
    SettingsDatabase settings;
    std::unique_ptr<MultiCanAdapterHandler> collection = std::make_unique<MultiCanAdapterHandler>();
    QPointer<DatachunkHandler> store;
    QPointer<AbstractCanAdapter> primary;
    QPointer<CanScheduler> scheduler;
    ApplicationInterfaceHandler handler;
    MessageBoxes boxes;
    bool usesCanFd = false;
};
} // namespace

class TestApplicationInterfaceHandler : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void nullAdapterShowsItsBoxAndGivesSix();
    void runningAdapterIsLeftAlone();
    void connectionTakesItsStepsInOrder();
    void bitratesAreSetBeforeOpening_data();
    void bitratesAreSetBeforeOpening();
    void failedOpeningShowsABox_data();
    void failedOpeningShowsABox();
    void failedAdapterStillReportsErrors();
    void adapterRunningWithOtherSettingsIsConnected_data();
    void adapterRunningWithOtherSettingsIsConnected();
    void otherSettingsBoxComesAfterTheSignal();
    void otherSettingsAreReadAfresh();
    void systemDecidesOnSocketCanBitrates_data();
    void systemDecidesOnSocketCanBitrates();
    void usesCanFdIsOnlyEverSet();
    void framesReachTheStore();
    void frameIsCopiedOnTheThreadOfTheAdapter();
    void nullFrameIsIgnored();
    void withoutTraceNoFrameReachesTheStore();
    void withoutStoreNoFrameIsHandedOn();
    void connectNoteComesBeforeTheFirstFrame();
    void laterPrimaryWins();
    void primaryIsUntouchedByAFailure();

    void disconnectingClosesAllAdapters();
    void disconnectingCutsTheSignalsOfAllListeners();
    void disconnectingTakesItsStepsInOrder();
    void disconnectingNotesItAtTheLastFrame();
    void disconnectingWithoutACollectionOnlyTellsTheState();
    void clearingWithoutASchedulerIsSilent();
    void clearingEndsTheSchedulerBeforeListenersHear();
    void stateIsWhatTheCollectionSays();
    void destructionLeavesAdaptersRunning();
    void widgetParentBecomesParentOfTheBoxes();

    void newAdaptersGoToTheCollection();
    void adaptersConnectInTheOrderOfIdentifiers();
    void whatAdaptersUseComesBackThroughAll();
    void collectionMayGoWhileTheBoxIsUp();
    void adapterAddedWhileTheBoxIsUpWaits();
    void emptyListShowsABox();
    void emptyListWithALivingPrimaryMakesAScheduler();
    void noActiveAdapterWithALivingPrimaryMakesAScheduler();
    void noActiveAdapterIsSilent();
    void failedPrimaryLeavesTheOthersWithoutScheduler();
    void linksAreResolved_data();
    void linksAreResolved();
    void connectingWithoutACollectionDoesNothing();
    void oldSchedulerGoesBeforeAdaptersConnect();

    void listenersSeeTheSchedulerBeforeItIsAttached();
    void schedulerIsMadeWithoutAPrimaryToo();
    void controllerStatesPassOnTheThreadOfTheAdapter();
    void newSchedulerTakesThePlaceOfTheOld();
    void newPrimaryReportsErrorsWithoutBeingConnectedHere();
    void listenerMayEndTheConnectionOnTheNewScheduler();

    void interfaceErrorClosesEverything();
    void interfaceErrorIsQueued();
    void secondQueuedErrorShowsAnEmptyName();
    void errorWithoutASenderShowsAnEmptyName();

private:
    std::unique_ptr<SettingsHome> m_home;
    std::unique_ptr<Bench> m_bench;
};

void TestApplicationInterfaceHandler::initTestCase()
{
    qRegisterMetaType<AbstractCanAdapter *>();
}

void TestApplicationInterfaceHandler::init()
{
    m_home = std::make_unique<SettingsHome>();
    m_bench = std::make_unique<Bench>();
}

void TestApplicationInterfaceHandler::cleanup()
{
    m_bench.reset();
    m_home.reset();
}

void TestApplicationInterfaceHandler::nullAdapterShowsItsBoxAndGivesSix()
{
    QCOMPARE(m_bench->connectTo(nullptr), 6);
    QCOMPARE(m_bench->boxes.texts(),
             QStringList(QStringLiteral("CAN interface cannot be opened.|The CAN interface DLL was not found or the "
                                        "interface is not supported at all on this platform.")));
    const MessageBoxes::Box &box = m_bench->boxes.shown.first();
    QCOMPARE(box.title, QStringLiteral("Falcon"));
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.icon, QMessageBox::Warning);
}

void TestApplicationInterfaceHandler::runningAdapterIsLeftAlone()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    adapter->setRunning(true);
    adapter->takeCalls();
    QSignalSpy connected(&m_bench->handler, &ApplicationInterfaceHandler::newAdapter);

    QCOMPARE(m_bench->connectTo(adapter), 0);
    QCOMPARE(adapter->calls(), QStringList());
    QCOMPARE(connected.size(), 0);
    QVERIFY(m_bench->boxes.shown.isEmpty());
    QVERIFY(!m_bench->usesCanFd);
}

void TestApplicationInterfaceHandler::connectionTakesItsStepsInOrder()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    adapter->onOpen = [this] { QVERIFY2(!m_bench->primary, "only an open adapter becomes the primary one"); };
    connect(&m_bench->handler, &ApplicationInterfaceHandler::newAdapter, adapter, [&](AbstractCanAdapter *connected) {
        QCOMPARE(connected, adapter);
        QCOMPARE(m_bench->primary.data(), adapter);
        adapter->record->add(QStringLiteral("newAdapter"));
    });
    QCOMPARE(m_bench->connectTo(adapter), 0);
    QCOMPARE(adapter->calls(),
             (QStringList{QStringLiteral("setBitrate 250"), QStringLiteral("open"), QStringLiteral("setRunning true"),
                          QStringLiteral("newAdapter")}));
    QVERIFY(m_bench->boxes.shown.isEmpty());
}

void TestApplicationInterfaceHandler::bitratesAreSetBeforeOpening_data()
{
    QTest::addColumn<bool>("canFd");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("classic") << false << QStringList{QStringLiteral("setBitrate 250"), QStringLiteral("open")};
    QTest::newRow("CAN FD") << true
                            << QStringList{QStringLiteral("setBitrate 250"), QStringLiteral("setFdBitrate 4000"),
                                           QStringLiteral("open")};
}

void TestApplicationInterfaceHandler::bitratesAreSetBeforeOpening()
{
    QFETCH(bool, canFd);
    QFETCH(QStringList, calls);
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, canFd);
    adapter->openResult = Adapter::OpenBusy;
    m_bench->connectTo(adapter);
    QCOMPARE(adapter->calls(), calls);
    QVERIFY2(!m_bench->usesCanFd, "a failed connection uses nothing");
}

void TestApplicationInterfaceHandler::failedOpeningShowsABox_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("text");
    const QString busy = QStringLiteral("Adapter A cannot be opened.|The CAN interface does not exist or is busy.");
    QTest::newRow("invalid device") << 5
                                    << QStringLiteral(
                                           "Invalid device error.|There is no valid device found or an error "
                                           "with the selected device occured.");
    QTest::newRow("invalid bitrate") << 3
                                     << QStringLiteral("Adapter A cannot be opened.|The configured bitrate is faulty.");
    QTest::newRow("busy") << 1 << busy;
    QTest::newRow("two") << 2 << busy;
    QTest::newRow("six") << 6 << busy;
    QTest::newRow("negative") << -1 << busy;
}

void TestApplicationInterfaceHandler::failedOpeningShowsABox()
{
    QFETCH(int, result);
    QFETCH(QString, text);
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    adapter->openResult = result;
    QSignalSpy connected(&m_bench->handler, &ApplicationInterfaceHandler::newAdapter);

    QCOMPARE(m_bench->connectTo(adapter), result);
    QCOMPARE(m_bench->boxes.texts(), QStringList(text));
    const MessageBoxes::Box &box = m_bench->boxes.shown.first();
    QCOMPARE(box.title, QStringLiteral("Falcon"));
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(connected.size(), 0);
    QVERIFY(!adapter->getRunning());
    QVERIFY2(m_bench->collection->getAdapterMap()->values().contains(adapter), "it stays in the collection");
}

void TestApplicationInterfaceHandler::failedAdapterStillReportsErrors()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    adapter->openResult = Adapter::OpenBusy;
    m_bench->connectTo(adapter);
    adapter->fail();
    QTRY_COMPARE(m_bench->boxes.shown.size(), 2);
    QCOMPARE(m_bench->boxes.shown.last().text, QStringLiteral("CAN interface has been closed."));
}

void TestApplicationInterfaceHandler::adapterRunningWithOtherSettingsIsConnected_data()
{
    QTest::addColumn<bool>("canFd");
    QTest::addColumn<QString>("text");
    QTest::newRow("CAN FD") << true
                            << QStringLiteral(
                                   "The device is already initialized with other settings.|The device is set "
                                   "with CAN FD enabled and a nominal bitrate of 250 kBit/s and a databitrate "
                                   "of 4000 kBit/s.");
    QTest::newRow("classic") << false
                             << QStringLiteral("The device is already initialized with other settings.|The device is "
                                               "set with CAN FD disabled and a bitrate of 250 kBit/s.");
}

void TestApplicationInterfaceHandler::adapterRunningWithOtherSettingsIsConnected()
{
    QFETCH(bool, canFd);
    QFETCH(QString, text);
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, canFd);
    adapter->openResult = Adapter::OpenOtherSettings;

    QCOMPARE(m_bench->connectTo(adapter), 4);
    QVERIFY(adapter->getRunning());
    QCOMPARE(m_bench->primary.data(), adapter);
    QCOMPARE(m_bench->usesCanFd, canFd);
    QCOMPARE(m_bench->boxes.texts(), QStringList(text));
    QCOMPARE(m_bench->boxes.shown.first().icon, QMessageBox::Information);
}

void TestApplicationInterfaceHandler::otherSettingsBoxComesAfterTheSignal()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    adapter->openResult = Adapter::OpenOtherSettings;
    QSignalSpy connected(&m_bench->handler, &ApplicationInterfaceHandler::newAdapter);
    int connectedWhenShown = -1;
    m_bench->boxes.whileShown = [&] { connectedWhenShown = connected.size(); };
    m_bench->connectTo(adapter);
    QCOMPARE(connectedWhenShown, 1);
}

void TestApplicationInterfaceHandler::otherSettingsAreReadAfresh()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    adapter->openResult = Adapter::OpenOtherSettings;
    adapter->onOpen = [adapter] {
        adapter->setCanAdapterOption(Adapter::OptionBitrate, QVariant::fromValue(CAN::CANBitrateDesc({}, 125)));
    };
    m_bench->connectTo(adapter);
    QCOMPARE(m_bench->boxes.shown.first().informativeText,
             QStringLiteral("The device is set with CAN FD disabled and a bitrate of 125 kBit/s."));
}

void TestApplicationInterfaceHandler::systemDecidesOnSocketCanBitrates_data()
{
    QTest::addColumn<bool>("settingsFd");
    QTest::addColumn<bool>("systemFd");
    QTest::addColumn<QStringList>("calls");
    const QString open = QStringLiteral("open");
    const QString running = QStringLiteral("setRunning true");
    QTest::newRow("the system has CAN FD on")
        << false << true
        << QStringList{QStringLiteral("setBitrate 800"), QStringLiteral("setFdBitrate 5000"), open, running};
    QTest::newRow("the system has CAN FD off")
        << true << false << QStringList{QStringLiteral("setBitrate 800"), open, running};
}

void TestApplicationInterfaceHandler::systemDecidesOnSocketCanBitrates()
{
    QFETCH(bool, settingsFd);
    QFETCH(bool, systemFd);
    QFETCH(QStringList, calls);
    FakeFamily *family = FakeFamily::install(Adapter::CanAdapterSocketCan);
    family->props.insert(QStringLiteral("can0"), {systemFd, 800, 5000, 0});
    FakeAdapter *adapter = m_bench->add(QStringLiteral("can0"), false, Adapter::CanAdapterSocketCan);
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, settingsFd);

    QCOMPARE(m_bench->connectTo(adapter), 0);
    CanAdapterFactory::unregisterFamily(Adapter::CanAdapterSocketCan);
    QCOMPARE(adapter->calls(), calls);
    QCOMPARE(m_bench->usesCanFd, systemFd);
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionUseCanFd), QVariant(systemFd));
    QCOMPARE(CAN::CANBitrateDesc(adapter->getCanAdapterOption(Adapter::OptionBitrate)),
             CAN::CANBitrateDesc(QStringLiteral("nominal"), 800, 0.8));
    QCOMPARE(CAN::CANBitrateDesc(adapter->getCanAdapterOption(Adapter::OptionFdBitrate)),
             CAN::CANBitrateDesc(QStringLiteral("data"), 5000, 0.7));
}

void TestApplicationInterfaceHandler::usesCanFdIsOnlyEverSet()
{
    FakeAdapter *classic = m_bench->add(QStringLiteral("A"));
    FakeAdapter *fd = m_bench->add(QStringLiteral("B"));
    fd->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    m_bench->connectTo(fd);
    QVERIFY(m_bench->usesCanFd);
    m_bench->connectTo(classic);
    QVERIFY2(m_bench->usesCanFd, "a later classic adapter does not take it back");
}

void TestApplicationInterfaceHandler::framesReachTheStore()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    m_bench->connectTo(adapter);
    adapter->receive(frame(0x123));
    QCOMPARE(m_bench->store->getMessageCount(), 1U);
    QVERIFY(m_bench->store->getLastMessage() == frame(0x123));

    // A second adapter must not double the way into the store.
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    m_bench->connectTo(second);
    second->receive(frame(0x124));
    QCOMPARE(m_bench->store->getMessageCount(), 2U);
}

void TestApplicationInterfaceHandler::frameIsCopiedOnTheThreadOfTheAdapter()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    m_bench->connectTo(adapter);
    const QThread *emitter = nullptr;
    connect(
        &m_bench->handler, &ApplicationInterfaceHandler::sigAppendCanMessage, &m_bench->handler,
        [&emitter] { emitter = QThread::currentThread(); }, Qt::DirectConnection);
    FakeAdapter::onReceiveThread([adapter] { adapter->receive(frame(0x123)); });
    QVERIFY(emitter != nullptr && emitter != QThread::currentThread());
    QTRY_COMPARE(m_bench->store->getMessageCount(), 1U);
}

void TestApplicationInterfaceHandler::nullFrameIsIgnored()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    m_bench->connectTo(adapter);
    emit adapter->newCanMessage(nullptr);
    QCOMPARE(m_bench->store->getMessageCount(), 0U);
}

void TestApplicationInterfaceHandler::withoutTraceNoFrameReachesTheStore()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    QSignalSpy connected(&m_bench->handler, &ApplicationInterfaceHandler::newAdapter);
    m_bench->connectTo(adapter, true);
    adapter->receive(frame(0x123));
    QCOMPARE(m_bench->store->getMessageCount(), 0U);
    QCOMPARE(connected.size(), 1);

    m_bench->store->appendCanMessage(frame(0x124));
    QCOMPARE(m_bench->store->messageNotes(0), QStringList(QStringLiteral("Connect:A:250")));
}

void TestApplicationInterfaceHandler::withoutStoreNoFrameIsHandedOn()
{
    delete m_bench->store;
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    QSignalSpy handedOn(&m_bench->handler, &ApplicationInterfaceHandler::sigAppendCanMessage);
    QCOMPARE(m_bench->connectTo(adapter), 0);
    adapter->receive(frame(0x123));
    QCOMPARE(handedOn.size(), 0);
    m_bench->handler.disconnectFromAdapter();
}

void TestApplicationInterfaceHandler::connectNoteComesBeforeTheFirstFrame()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    // The hardest case: a frame that comes in as soon as the adapter is told to run.
    connect(adapter, &Adapter::runningChanged, adapter, [adapter](bool running) {
        if (running)
            adapter->receive(frame(0x123));
    });
    m_bench->connectTo(adapter);
    QCOMPARE(m_bench->store->getMessageCount(), 1U);
    QCOMPARE(m_bench->store->messageNotes(0), QStringList(QStringLiteral("Connect:A:250")));
}

void TestApplicationInterfaceHandler::laterPrimaryWins()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    // The collection keeps to one; an application that writes the option itself may have two.
    second->setCanAdapterOption(Adapter::OptionPrimary, true);
    m_bench->connectTo(second);
    QCOMPARE(m_bench->primary.data(), second);
    m_bench->connectTo(first);
    QCOMPARE(m_bench->primary.data(), first);
}

void TestApplicationInterfaceHandler::primaryIsUntouchedByAFailure()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    m_bench->connectTo(first);
    second->setCanAdapterOption(Adapter::OptionPrimary, true);
    second->openResult = Adapter::OpenBusy;
    m_bench->connectTo(second);
    QCOMPARE(m_bench->primary.data(), first);
}

void TestApplicationInterfaceHandler::disconnectingClosesAllAdapters()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *inactive = m_bench->add(QStringLiteral("B"));
    inactive->setCanAdapterOption(Adapter::OptionActive, false);
    first->prefix = QStringLiteral("A ");
    inactive->prefix = QStringLiteral("B ");
    inactive->record = first->record;
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    first->takeCalls();
    QSignalSpy state(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState);

    m_bench->handler.disconnectFromAdapter();
    QCOMPARE(first->calls(), (QStringList{QStringLiteral("A close"), QStringLiteral("B close")}));
    QVERIFY(!m_bench->primary);
    QVERIFY(!m_bench->scheduler);
    QCOMPARE(state.size(), 1);
}

void TestApplicationInterfaceHandler::disconnectingCutsTheSignalsOfAllListeners()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    m_bench->connectTo(adapter);
    int heard = 0;
    connect(adapter, &Adapter::newCanMessage, &m_bench->window, [&heard] { ++heard; });
    adapter->receive(frame(0x123));
    m_bench->handler.disconnectFromAdapter();
    adapter->receive(frame(0x123));
    QCOMPARE(heard, 1);
    QCOMPARE(m_bench->store->getMessageCount(), 1U);
}

void TestApplicationInterfaceHandler::disconnectingTakesItsStepsInOrder()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    adapter->receive(frame(0x123));
    QStringList events;
    connect(adapter, &Adapter::runningChanged, &m_bench->window,
            [&](bool) { events.append(QStringLiteral("closed, listeners still connected")); });
    connect(&m_bench->handler, &ApplicationInterfaceHandler::newCanScheduler, &m_bench->window, [&] {
        if (m_bench->primary)
            events.append(QStringLiteral("scheduler gone, primary still known"));
    });
    connect(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState, &m_bench->window, [&] {
        if (!m_bench->primary && m_bench->store->messageNotes(0).contains(QStringLiteral("Disconnected")))
            events.append(QStringLiteral("state told last"));
    });
    m_bench->handler.disconnectFromAdapter();
    QCOMPARE(events,
             (QStringList{QStringLiteral("closed, listeners still connected"),
                          QStringLiteral("scheduler gone, primary still known"), QStringLiteral("state told last")}));
}

void TestApplicationInterfaceHandler::disconnectingNotesItAtTheLastFrame()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"));
    m_bench->connectTo(adapter);
    adapter->receive(frame(0x123));
    adapter->receive(frame(0x124));
    m_bench->handler.disconnectFromAdapter();
    QCOMPARE(m_bench->store->messageNotes(1), QStringList(QStringLiteral("Disconnected")));
}

void TestApplicationInterfaceHandler::disconnectingWithoutACollectionOnlyTellsTheState()
{
    FakeAdapter adapter;
    adapter.setCanAdapterOption(Adapter::OptionPrimary, true);
    m_bench->connectTo(&adapter);
    m_bench->collection.reset();
    QSignalSpy state(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState);
    m_bench->handler.disconnectFromAdapter();
    QCOMPARE(state.size(), 1);
    QCOMPARE(m_bench->primary.data(), &adapter);
    QVERIFY(adapter.getRunning());
    QVERIFY(!m_bench->handler.isConnected());
    QVERIFY(m_bench->handler.getPrimaryAdapter() == nullptr);
}

void TestApplicationInterfaceHandler::clearingWithoutASchedulerIsSilent()
{
    QSignalSpy schedulers(&m_bench->handler, &ApplicationInterfaceHandler::newCanScheduler);
    m_bench->handler.clearScheduler();
    QCOMPARE(schedulers.size(), 0);
}

void TestApplicationInterfaceHandler::clearingEndsTheSchedulerBeforeListenersHear()
{
    m_bench->add(QStringLiteral("A"), true);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(m_bench->scheduler);
    bool aliveWhenHeard = true;
    QList<CanScheduler *> heard;
    connect(&m_bench->handler, &ApplicationInterfaceHandler::newCanScheduler, &m_bench->window,
            [&](CanScheduler *scheduler) {
                heard.append(scheduler);
                aliveWhenHeard = !m_bench->scheduler.isNull();
            });
    m_bench->handler.clearScheduler();
    QCOMPARE(heard, QList<CanScheduler *>{nullptr});
    QVERIFY(!aliveWhenHeard);
}

void TestApplicationInterfaceHandler::stateIsWhatTheCollectionSays()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    QVERIFY(!m_bench->handler.isConnected());
    QCOMPARE(m_bench->handler.getPrimaryAdapter(), adapter);
    m_bench->connectTo(adapter);
    QVERIFY(m_bench->handler.isConnected());
    QCOMPARE(m_bench->handler.getConnectedAdapters(), QList<QPointer<AbstractCanAdapter>>{adapter});
    adapter->close();
    QVERIFY(!m_bench->handler.isConnected());
    QCOMPARE(m_bench->primary.data(), adapter);
    QVERIFY(!m_bench->handler.getDirectConnect());
}

void TestApplicationInterfaceHandler::destructionLeavesAdaptersRunning()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    {
        ApplicationInterfaceHandler other(&m_bench->settings, m_bench->store, m_bench->collection.get(),
                                          m_bench->primary, m_bench->scheduler, nullptr);
        other.connectAdapters(false, m_bench->usesCanFd);
        adapter->takeCalls();
    }
    QCOMPARE(adapter->calls(), QStringList());
    QVERIFY(adapter->getRunning());
    QVERIFY(m_bench->scheduler);
}

void TestApplicationInterfaceHandler::widgetParentBecomesParentOfTheBoxes()
{
    m_bench->connectTo(nullptr);
    QCOMPARE(m_bench->boxes.shown.last().parent.data(), &m_bench->window);

    QObject plain;
    ApplicationInterfaceHandler other(&m_bench->settings, m_bench->store, m_bench->collection.get(), m_bench->primary,
                                      m_bench->scheduler, &plain);
    other.connectToAdapter(nullptr, false, m_bench->usesCanFd);
    QCOMPARE(m_bench->boxes.shown.size(), 2);
    QVERIFY(m_bench->boxes.shown.last().parent.isNull());
}

void TestApplicationInterfaceHandler::newAdaptersGoToTheCollection()
{
    auto first = std::make_unique<FakeAdapter>(Adapter::CanAdapterDemo, QStringLiteral("A"));
    auto second = std::make_unique<FakeAdapter>(Adapter::CanAdapterDemo, QStringLiteral("B"));
    second->setCanAdapterOption(Adapter::OptionAdapterId, QVariant::fromValue<quint16>(40));
    QCOMPARE(m_bench->handler.addNewCanAdapter(first.release(), false, false, false), quint16(1));
    FakeAdapter *const kept = second.release();
    QCOMPARE(m_bench->handler.addNewCanAdapter(kept, true, true, true), quint16(40));
    QCOMPARE(m_bench->collection->getAdapterMap()->keys(), (QList<quint16>{1, 40}));
    QCOMPARE(m_bench->handler.getPrimaryAdapter(), kept);

    m_bench->collection.reset();
    FakeAdapter third;
    QCOMPARE(m_bench->handler.addNewCanAdapter(&third, true, true, true), quint16(0));
}

void TestApplicationInterfaceHandler::whatAdaptersUseComesBackThroughAll()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    first->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    m_bench->handler.connectAdapters(true, m_bench->usesCanFd);
    QVERIFY(m_bench->usesCanFd);
    first->receive(frame(0x123));
    second->receive(frame(0x124));
    QVERIFY2(m_bench->store->getMessageCount() == 0, "connected without trace");
}

void TestApplicationInterfaceHandler::collectionMayGoWhileTheBoxIsUp()
{
    m_bench->boxes.whileShown = [this] { m_bench->collection.reset(); };
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QCOMPARE(m_bench->boxes.shown.size(), 1);
    QVERIFY(!m_bench->scheduler);
}

void TestApplicationInterfaceHandler::adapterAddedWhileTheBoxIsUpWaits()
{
    FakeAdapter *late = nullptr;
    m_bench->boxes.whileShown = [this, &late] { late = m_bench->add(QStringLiteral("late"), true); };
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(late != nullptr);
    QCOMPARE(late->calls(), QStringList());
}

void TestApplicationInterfaceHandler::adaptersConnectInTheOrderOfIdentifiers()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"));
    FakeAdapter *failing = m_bench->add(QStringLiteral("B"));
    FakeAdapter *third = m_bench->add(QStringLiteral("C"), true);
    failing->openResult = Adapter::OpenBusy;
    QStringList order;
    for (FakeAdapter *adapter : {first, failing, third}) {
        adapter->onOpen = [&order, adapter] {
            order.append(adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString());
        };
    }
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QCOMPARE(order, (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    QCOMPARE(m_bench->boxes.shown.size(), 1);
    QCOMPARE(m_bench->handler.getConnectedAdapters(), (QList<QPointer<AbstractCanAdapter>>{first, third}));
    QCOMPARE(m_bench->primary.data(), third);
    QVERIFY(m_bench->scheduler && m_bench->scheduler->canAdapter() == third);
}

void TestApplicationInterfaceHandler::emptyListShowsABox()
{
    QSignalSpy state(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QCOMPARE(m_bench->boxes.texts(),
             QStringList(QStringLiteral("There is no CAN adapter specified.|You have to specify a CAN adapter you want "
                                        "connect to via the CAN interface settings.")));
    QCOMPARE(m_bench->boxes.shown.first().title, QStringLiteral("Falcon"));
    QCOMPARE(m_bench->boxes.shown.first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(m_bench->boxes.shown.first().icon, QMessageBox::Warning);
    QCOMPARE(state.size(), 0);
    QVERIFY(!m_bench->scheduler);
}

void TestApplicationInterfaceHandler::emptyListWithALivingPrimaryMakesAScheduler()
{
    FakeAdapter old;
    m_bench->primary = &old;
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QCOMPARE(m_bench->boxes.shown.size(), 1);
    QVERIFY(m_bench->scheduler && m_bench->scheduler->canAdapter() == &old);
}

void TestApplicationInterfaceHandler::noActiveAdapterWithALivingPrimaryMakesAScheduler()
{
    m_bench->add(QStringLiteral("A"), true)->setCanAdapterOption(Adapter::OptionActive, false);
    FakeAdapter old;
    m_bench->primary = &old;
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(m_bench->boxes.shown.isEmpty());
    QVERIFY(m_bench->scheduler && m_bench->scheduler->canAdapter() == &old);
}

void TestApplicationInterfaceHandler::noActiveAdapterIsSilent()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    adapter->setCanAdapterOption(Adapter::OptionActive, false);
    QSignalSpy state(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(m_bench->boxes.shown.isEmpty());
    QCOMPARE(adapter->calls(), QStringList());
    QVERIFY(!m_bench->scheduler);
    QCOMPARE(state.size(), 0);
}

void TestApplicationInterfaceHandler::failedPrimaryLeavesTheOthersWithoutScheduler()
{
    FakeAdapter *primary = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *other = m_bench->add(QStringLiteral("B"));
    primary->openResult = Adapter::OpenInvalidBitrate;
    QSignalSpy state(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(other->getRunning());
    QVERIFY(!m_bench->scheduler);
    QCOMPARE(state.size(), 0);
}

void TestApplicationInterfaceHandler::linksAreResolved_data()
{
    QTest::addColumn<uint>("link");
    QTest::addColumn<int>("partner");
    QTest::newRow("the other") << 2U << 2;
    QTest::newRow("itself") << 1U << 1;
    QTest::newRow("none") << 0U << 0;
    QTest::newRow("one that is not there") << 9U << 0;
    QTest::newRow("cut to 16 bits") << 0x10002U << 2;
    QTest::newRow("nothing left of it in 16 bits") << 0x20000U << 0;
}

void TestApplicationInterfaceHandler::linksAreResolved()
{
    QFETCH(uint, link);
    QFETCH(int, partner);
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    first->setCanAdapterOption(Adapter::OptionLinkedAdapter, link);
    first->setLinkedAdapter(QPointer<AbstractCanAdapter>(second)); // a stale one must not stay
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    AbstractCanAdapter *const partners[] = {nullptr, first, second};
    QCOMPARE(first->linkedAdapter().data(), partners[partner]);
}

void TestApplicationInterfaceHandler::connectingWithoutACollectionDoesNothing()
{
    FakeAdapter adapter;
    m_bench->primary = &adapter;
    m_bench->handler.updateSchedulerForNewPrimaryAdapter();
    m_bench->collection.reset();
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(m_bench->boxes.shown.isEmpty());
    QVERIFY2(m_bench->scheduler, "the scheduler stays");
}

void TestApplicationInterfaceHandler::oldSchedulerGoesBeforeAdaptersConnect()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    m_bench->handler.updateSchedulerForNewPrimaryAdapter();
    QVERIFY(m_bench->scheduler);
    bool schedulerAtOpening = true;
    adapter->onOpen = [&] { schedulerAtOpening = !m_bench->scheduler.isNull(); };
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(!schedulerAtOpening);
    QVERIFY(m_bench->scheduler);
}

void TestApplicationInterfaceHandler::listenersSeeTheSchedulerBeforeItIsAttached()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    QStringList events;
    connect(&m_bench->handler, &ApplicationInterfaceHandler::newCanScheduler, &m_bench->window,
            [&](CanScheduler *scheduler) {
                events.append(QStringLiteral("newCanScheduler"));
                QCOMPARE(scheduler, m_bench->scheduler.data());
                // Sends as soon as it is attached, so nothing was sent before this slot returned.
                CAN::CanMessage message;
                message.id = 0x80;
                scheduler->addCyclicMessage(message, 1000);
                QVERIFY(!adapter->calls().contains(QStringLiteral("write 080#")));
            });
    connect(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState, &m_bench->window,
            [&events] { events.append(QStringLiteral("updateCanConnectionState")); });
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QCOMPARE(events, (QStringList{QStringLiteral("newCanScheduler"), QStringLiteral("updateCanConnectionState")}));
    QTRY_VERIFY(adapter->calls().contains(QStringLiteral("write 080#")));
}

void TestApplicationInterfaceHandler::schedulerIsMadeWithoutAPrimaryToo()
{
    QSignalSpy state(&m_bench->handler, &ApplicationInterfaceHandler::updateCanConnectionState);
    m_bench->handler.updateSchedulerForNewPrimaryAdapter();
    QVERIFY(m_bench->scheduler);
    QVERIFY(m_bench->scheduler->canAdapter() == nullptr);
    QCOMPARE(state.size(), 1);
}

void TestApplicationInterfaceHandler::controllerStatesPassOnTheThreadOfTheAdapter()
{
    FakeAdapter *primary = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *other = m_bench->add(QStringLiteral("B"));
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    m_bench->handler.updateSchedulerForNewPrimaryAdapter(); // the connection stays single
    int heard = 0;
    const QThread *emitter = nullptr;
    connect(
        &m_bench->handler, &ApplicationInterfaceHandler::newCanState, &m_bench->handler,
        [&](CAN::CanState state, CanTimeStamp stamp) {
            ++heard;
            emitter = QThread::currentThread();
            QCOMPARE(state, CAN::CanStateErrorPassive);
            QCOMPARE(stamp, CanTimeStamp(7, 8));
        },
        Qt::DirectConnection);
    FakeAdapter::onReceiveThread([primary] { primary->changeState(CAN::CanStateErrorPassive, {7, 8}); });
    other->changeState(CAN::CanStateBusOff, {});
    QCOMPARE(heard, 1);
    QVERIFY(emitter != QThread::currentThread());
}

void TestApplicationInterfaceHandler::newSchedulerTakesThePlaceOfTheOld()
{
    m_bench->add(QStringLiteral("A"), true);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    const QPointer<CanScheduler> old = m_bench->scheduler;
    QList<bool> nulls;
    connect(&m_bench->handler, &ApplicationInterfaceHandler::newCanScheduler, &m_bench->window,
            [&nulls](CanScheduler *scheduler) { nulls.append(scheduler == nullptr); });
    m_bench->handler.updateSchedulerForNewPrimaryAdapter();
    QCOMPARE(nulls, (QList<bool>{true, false}));
    QVERIFY(old.isNull());
    QVERIFY(m_bench->scheduler);
}

void TestApplicationInterfaceHandler::newPrimaryReportsErrorsWithoutBeingConnectedHere()
{
    FakeAdapter adapter;
    m_bench->primary = &adapter;
    m_bench->handler.updateSchedulerForNewPrimaryAdapter();
    adapter.fail();
    QTRY_COMPARE(m_bench->boxes.shown.size(), 1);
}

void TestApplicationInterfaceHandler::listenerMayEndTheConnectionOnTheNewScheduler()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    connect(&m_bench->handler, &ApplicationInterfaceHandler::newCanScheduler, &m_bench->window,
            [this](CanScheduler *scheduler) {
                if (scheduler != nullptr)
                    m_bench->handler.disconnectFromAdapter();
            });
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    QVERIFY(!m_bench->scheduler);
    QVERIFY(!adapter->getRunning());
}

void TestApplicationInterfaceHandler::interfaceErrorClosesEverything()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    second->setCanAdapterOption(Adapter::OptionAdapterName, QStringLiteral("  My \n adapter\t"));
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    bool closedWhenShown = false;
    m_bench->boxes.whileShown = [&] { closedWhenShown = !first->getRunning() && !second->getRunning(); };

    second->fail();
    QTRY_COMPARE(m_bench->boxes.shown.size(), 1);
    QCOMPARE(m_bench->boxes.texts(),
             QStringList(QStringLiteral("CAN interface has been closed.|The interface \"My adapter\" has been "
                                        "disconnected or another interface error occured.")));
    QCOMPARE(m_bench->boxes.shown.first().title, QStringLiteral("Falcon"));
    QCOMPARE(m_bench->boxes.shown.first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(m_bench->boxes.shown.first().icon, QMessageBox::Warning);
    QTRY_VERIFY(closedWhenShown);
    QVERIFY(!m_bench->scheduler);
}

void TestApplicationInterfaceHandler::interfaceErrorIsQueued()
{
    FakeAdapter *adapter = m_bench->add(QStringLiteral("A"), true);
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    adapter->fail();
    QVERIFY(m_bench->boxes.shown.isEmpty());
    QVERIFY(adapter->getRunning());
    // Connected by the connection and again by the scheduler's set-up, and yet reported once.
    QTRY_VERIFY(!adapter->getRunning());
    QCoreApplication::processEvents();
    QCOMPARE(m_bench->boxes.shown.size(), 1);
}

void TestApplicationInterfaceHandler::secondQueuedErrorShowsAnEmptyName()
{
    FakeAdapter *first = m_bench->add(QStringLiteral("A"), true);
    FakeAdapter *second = m_bench->add(QStringLiteral("B"));
    m_bench->handler.connectAdapters(false, m_bench->usesCanFd);
    first->fail();
    second->fail();
    QTRY_COMPARE(m_bench->boxes.shown.size(), 2);
    const QString text = QStringLiteral("CAN interface has been closed.|The interface \"%1\" has been disconnected or "
                                        "another interface error occured.");
    QCOMPARE(m_bench->boxes.texts(), (QStringList{text.arg(QStringLiteral("Adapter A")), text.arg(QString())}));
}

void TestApplicationInterfaceHandler::errorWithoutASenderShowsAnEmptyName()
{
    m_bench->handler.interfaceError();
    QCOMPARE(m_bench->boxes.shown.first().informativeText,
             QStringLiteral("The interface \"\" has been disconnected or another interface error occured."));
}

QTEST_MAIN(TestApplicationInterfaceHandler)
#include "tst_applicationinterfacehandler.moc"
