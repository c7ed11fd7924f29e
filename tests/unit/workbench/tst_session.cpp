#include "fakeadapter.h"
#include "messageboxes.h"
#include "messages.h"
#include "session.h"
#include "settingshome.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

namespace {
/// A fake whose failure has a reason, as with real ones.
class FailingAdapter : public FakeAdapter
{
public:
    using AbstractCanAdapter::setErrorText;
    using FakeAdapter::FakeAdapter;
};
} // namespace

class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void connectingReachesAdapterSchedulerAndTrace();
    void disconnectingTakesThemAway();
    void framesOfAnUntracedInterfaceStayOut();
    void tracingCanBeSwitchedWhileConnected();
    void tracedFramesComeOnce();
    void failureIsKeptInWords();
    void nextConnectionForgetsTheFailure();
    void lostInterfaceBringsTheConnectionDown();
    void clearTraceForgetsAllFrames();
    void runningSessionCanBeDestroyed();
    void interfacesSurviveARestart();
    void nothingIsSavedUnlessAskedFor();
    void settingsThatCannotBeReadAreToldAndLeftAlone();
    void nextVersionTakesTheInterfacesOver();

private:
    template <typename Adapter = FakeAdapter>
    static Adapter *add(Session &session, const char *name, bool primary = false)
    {
        auto *adapter = new Adapter(AbstractCanAdapter::CanAdapterDemo, QString::fromLatin1(name));
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionAdapterName, QString::fromLatin1(name));
        session.adapters()->addNewCanAdapter(adapter, primary, true, false);
        return adapter;
    }
};

void TestSession::connectingReachesAdapterSchedulerAndTrace()
{
    Session session;
    QVERIFY(!session.hasInterfaces());
    FakeAdapter *adapter = add(session, "A", true);
    QVERIFY(session.hasInterfaces());
    QSignalSpy schedulers(&session, &Session::schedulerChanged);
    QSignalSpy changes(&session, &Session::connectionChanged);
    session.connectAdapters();
    QVERIFY(session.isConnected());
    QCOMPARE(session.primaryAdapter(), adapter);
    QVERIFY(session.scheduler() != nullptr);
    QCOMPARE(schedulers.count(), 1);
    QVERIFY(changes.count() >= 1);
    FakeAdapter::onReceiveThread([adapter] { adapter->receive(at(0, dataFrame(0x123))); });
    QTRY_COMPARE_WITH_TIMEOUT(session.trace()->getMessageCount(), 1u, 5000);
    QCOMPARE(session.trace()->getLastMessage().message.id, 0x123u);
    QVERIFY(session.trace()->messageNotes(0).constFirst().startsWith(QStringLiteral("Connect:A:")));
}

void TestSession::disconnectingTakesThemAway()
{
    Session session;
    FakeAdapter *adapter = add(session, "A", true);
    session.connectAdapters();
    QSignalSpy schedulers(&session, &Session::schedulerChanged);
    session.disconnectAdapters();
    QVERIFY(!session.isConnected());
    QVERIFY(session.primaryAdapter() == nullptr);
    QVERIFY(session.scheduler() == nullptr);
    QCOMPARE(schedulers.count(), 1);
    QVERIFY(schedulers[0][0].value<CanScheduler *>() == nullptr);
    QVERIFY(!adapter->getRunning());
}

void TestSession::framesOfAnUntracedInterfaceStayOut()
{
    Session session;
    FakeAdapter *first = add(session, "A", true);
    FakeAdapter *second = add(session, "B");
    session.setTraced(1, false);
    QVERIFY(!session.isTraced(1));
    QVERIFY(session.isTraced(2));
    session.connectAdapters();
    first->receive(at(0, dataFrame(1)));
    second->receive(at(0, dataFrame(2)));
    QTRY_COMPARE_WITH_TIMEOUT(session.trace()->getMessageCount(), 1u, 5000);
    QCOMPARE(session.trace()->getLastMessage().message.id, 2u);
}

void TestSession::tracingCanBeSwitchedWhileConnected()
{
    Session session;
    FakeAdapter *adapter = add(session, "A", true);
    session.connectAdapters();
    session.setTraced(1, false);
    adapter->receive(at(0, dataFrame(1)));
    session.setTraced(1, true);
    adapter->receive(at(0, dataFrame(2)));
    QTRY_COMPARE_WITH_TIMEOUT(session.trace()->getMessageCount(), 1u, 5000);
    QCOMPARE(session.trace()->getLastMessage().message.id, 2u);
}

void TestSession::tracedFramesComeOnce()
{
    Session session;
    FakeAdapter *adapter = add(session, "A", true);
    session.connectAdapters();
    session.setTraced(1, true);
    session.setTraced(1, true);
    for (quint32 id = 1; id <= 3; ++id)
        adapter->receive(at(0, dataFrame(id)));
    QTRY_COMPARE_WITH_TIMEOUT(session.trace()->getLastMessage().message.id, 3u, 5000);
    QCOMPARE(session.trace()->getMessageCount(), 3u);
}

void TestSession::failureIsKeptInWords()
{
    MessageBoxes boxes;
    Session session;
    auto *adapter = add<FailingAdapter>(session, "A", true);
    adapter->openResult = AbstractCanAdapter::OpenBusy;
    adapter->onOpen = [adapter] { adapter->setErrorText(QStringLiteral("Port 1 is in use.")); };
    QSignalSpy changes(&session, &Session::connectionChanged);
    session.connectAdapters();
    QVERIFY(!session.isConnected());
    QCOMPARE(session.failure(), QStringLiteral("A: Port 1 is in use."));
    QVERIFY(changes.count() >= 1);
    QCOMPARE(boxes.shown.size(), 1);
}

void TestSession::nextConnectionForgetsTheFailure()
{
    MessageBoxes boxes;
    Session session;
    auto *adapter = add<FailingAdapter>(session, "A", true);
    adapter->openResult = AbstractCanAdapter::OpenBusy;
    adapter->setErrorText(QStringLiteral("Busy."));
    session.connectAdapters();
    QCOMPARE(session.failure(), QStringLiteral("A: Busy."));
    adapter->openResult = AbstractCanAdapter::OpenOk;
    adapter->setErrorText(QString());
    session.connectAdapters();
    QCOMPARE(session.failure(), QString());
    QVERIFY(session.isConnected());
}

void TestSession::lostInterfaceBringsTheConnectionDown()
{
    MessageBoxes boxes;
    Session session;
    FakeAdapter *first = add(session, "A", true);
    FakeAdapter *second = add(session, "B");
    session.connectAdapters();
    FakeAdapter::onReceiveThread([second] { second->fail(QStringLiteral("The cable was pulled.")); });
    QTRY_VERIFY_WITH_TIMEOUT(!session.isConnected(), 5000);
    QTRY_COMPARE_WITH_TIMEOUT(boxes.shown.size(), 1, 5000);
    QVERIFY(!first->getRunning());
    QCOMPARE(session.failure(), QStringLiteral("B: The cable was pulled."));
}

void TestSession::clearTraceForgetsAllFrames()
{
    Session session;
    FakeAdapter *adapter = add(session, "A", true);
    session.connectAdapters();
    adapter->receive(at(0, dataFrame(1)));
    QTRY_COMPARE_WITH_TIMEOUT(session.trace()->getMessageCount(), 1u, 5000);
    QSignalSpy cleared(&session, &Session::traceCleared);
    session.clearTrace();
    QCOMPARE(session.trace()->getMessageCount(), 0u);
    QCOMPARE(cleared.count(), 1);
}

void TestSession::runningSessionCanBeDestroyed()
{
    auto session = std::make_unique<Session>();
    FakeAdapter *adapter = add(*session, "A", true);
    const std::shared_ptr<CallRecord> record = adapter->record;
    session->connectAdapters();
    adapter->receive(at(0, dataFrame(1)));
    session.reset();
    QVERIFY(record->lines().contains(QStringLiteral("close")));
    QCOMPARE(record->lines().constLast(), QStringLiteral("~"));
}

namespace {
void addDemoInterfaces(Session &session)
{
    for (const char *name : {"Demo 1", "Demo 3"}) {
        session.adapters()->addNewCanAdapter(
            CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QString::fromLatin1(name)), false,
            true, false);
    }
    session.adapters()->handlePrimaryChanged(1, true);
    session.setTraced(1, false);
}

QStringList deviceNames(Session &session)
{
    QStringList names;
    for (quint16 row = 0; row < session.adapters()->getAdapterCount(); ++row) {
        const AbstractCanAdapter *adapter = session.adapters()->adapterAt(row);
        names.append(adapter->getCanAdapterOption(AbstractCanAdapter::OptionDeviceName).toString());
    }
    return names;
}

const QStringList bothNames = {QStringLiteral("Demo 1"), QStringLiteral("Demo 3")};
} // namespace

void TestSession::interfacesSurviveARestart()
{
    const SettingsHome home;
    {
        Session session;
        QVERIFY(session.openSettings());
        addDemoInterfaces(session);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
        QVERIFY(session.saveSettings());
    }
    Session session;
    QVERIFY(session.openSettings());
    QCOMPARE(deviceNames(session), bothNames);
    QCOMPARE(session.adapters()->getPrimaryAdapter(), session.adapters()->adapterAt(1));
    QVERIFY(!session.isTraced(1));
    QVERIFY(session.isTraced(2));
}

void TestSession::nothingIsSavedUnlessAskedFor()
{
    const SettingsHome home;
    Session session;
    addDemoInterfaces(session);
    QVERIFY(session.saveSettings());
    QVERIFY(!QFile::exists(home.standardFile()));
}

void TestSession::settingsThatCannotBeReadAreToldAndLeftAlone()
{
    const SettingsHome home;
    home.makeFolder();
    const QByteArray letter(5000, 'x');
    QFile file(home.standardFile());
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(letter) == letter.size());
    file.close();

    Session session;
    QSignalSpy problems(&session, &Session::settingsProblem);
    QVERIFY(!session.openSettings());
    QCOMPARE(problems.count(), 1);
    QVERIFY(problems[0][0].toString().contains(home.standardFile()));
    addDemoInterfaces(session);
    session.saveSettings();
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), letter);
}

void TestSession::nextVersionTakesTheInterfacesOver()
{
    const SettingsHome home;
    {
        Session session;
        QVERIFY(session.openSettings());
        addDemoInterfaces(session);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
        QVERIFY(session.saveSettings());
    }
    QCoreApplication::setApplicationVersion(QStringLiteral("2.5.0"));
    QCoreApplication::instance()->setProperty(SettingsHome::nameProperty, QStringLiteral("Falcon 2.5.0"));
    Session session;
    QVERIFY(session.openSettings());
    QCOMPARE(deviceNames(session), bothNames);
}

QTEST_MAIN(TestSession)
#include "tst_session.moc"
