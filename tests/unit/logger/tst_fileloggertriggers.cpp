#include "loggerform.h"

#include "canopenmessagebuilderdialog.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimer>

class TestFileLoggerTriggers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Arming.
    void anyTickedConditionCanBeArmed_data();
    void anyTickedConditionCanBeArmed();
    void armedConditionsAreFrozen_data();
    void armedConditionsAreFrozen();
    void armedStartIsShown();
    void disarmedTriggersDoNothing();
    void startByHandDisarmsTheStartTriggers();
    void armedStopIsShownFromTheStartOn();
    void stopArmsNothingAgain();
    void conditionsCountFromArmingOn();

    // Start.
    void identifierStarts();
    void composedMessageStarts();
    void otherMessagesDoNotStart();
    void pastTimeStarts();
    void comingTimeStarts();
    void firstOfTwoConditionsStarts();
    void untickedConditionDoesNotStart();
    void startConditionsRestWhileLogging();

    // Stop.
    void identifierStops();
    void composedMessageStops();
    void oneFrameStopsOnce();
    void countStops_data();
    void countStops();
    void framesThatAreFilteredOutStopToo();
    void framesThatAreFilteredOutDoNotCount();
    void fileSizeStops();
    void noFileSizeStopsAtOnce();
    void comingTimeStops();
    void pastTimeIsIgnored();
    void pastTimeIsForgottenWithItsTick();
    void stopConditionsRestWithoutALog();
    void stopConditionsRestUntilTheyAreArmed();

private:
    /// Composes a message in the dialog that the button opens.
    void compose(const char *button, const CANRAW::CanRawCompareMessage &message);

    std::unique_ptr<LoggerForm> m_form;
};

namespace {
constexpr int patience = 5000; // ms

QDateTime past()
{
    return QDateTime(QDate(2020, 1, 1), QTime(0, 0));
}

QDateTime soon()
{
    return QDateTime::currentDateTime().addMSecs(500);
}

/// Asks for an identifier and for flags that are clear, and leaves length and data open.
CANRAW::CanRawCompareMessage anyDataOf(quint32 id)
{
    CANRAW::CanRawCompareMessage message;
    message.id = {id, true};
    message.length.isSet = false;
    return message;
}
} // namespace

void TestFileLoggerTriggers::init()
{
    LoggerForm::forgetSettings();
    m_form = std::make_unique<LoggerForm>();
}

void TestFileLoggerTriggers::cleanup()
{
    m_form.reset();
}

void TestFileLoggerTriggers::compose(const char *button, const CANRAW::CanRawCompareMessage &message)
{
    auto *dialog = m_form->find<CANopenMessageBuilderDialog>("CANopenMessageBuilderDialog");
    QTimer user;
    connect(&user, &QTimer::timeout, dialog, [&] {
        if (!dialog->isVisible())
            return;
        dialog->setMessage(message);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    });
    user.start(10);
    m_form->click(button);
}

void TestFileLoggerTriggers::anyTickedConditionCanBeArmed_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("button");
    for (const char *box : {"gbStartTriggersTime", "gbStartTriggersCANIDs", "gbStartTriggersCANMessage"})
        QTest::newRow(box) << QByteArray(box) << QByteArray("btnStartTriggers");
    for (const char *box : {"gbStopTriggersTime", "gbStopTriggersCANIDs", "gbStopTriggersCANMessage",
                            "gbStopTriggersFileSize", "gbStopTriggersCounter"})
        QTest::newRow(box) << QByteArray(box) << QByteArray("btnStopTriggers");
}

void TestFileLoggerTriggers::anyTickedConditionCanBeArmed()
{
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, button);
    QVERIFY(!m_form->isEnabled(button.constData()));
    m_form->tick(box.constData());
    QVERIFY(m_form->isEnabled(button.constData()));
    m_form->tick(box.constData());
    QVERIFY(!m_form->isEnabled(button.constData()));
}

void TestFileLoggerTriggers::armedConditionsAreFrozen_data()
{
    QTest::addColumn<QByteArray>("tick");
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QByteArray>("group");
    QTest::addColumn<QString>("armed");
    QTest::addColumn<QString>("disarmed");
    QTest::newRow("start") << QByteArray("gbStartTriggersCANIDs") << QByteArray("btnStartTriggers")
                           << QByteArray("gbStartTriggers") << QStringLiteral("Deactivate Start Triggers")
                           << QStringLiteral("Activate Start Triggers");
    QTest::newRow("stop") << QByteArray("gbStopTriggersCANIDs") << QByteArray("btnStopTriggers")
                          << QByteArray("gbStopTriggers") << QStringLiteral("Deactivate Stop Triggers")
                          << QStringLiteral("Activate Stop Triggers");
}

void TestFileLoggerTriggers::armedConditionsAreFrozen()
{
    QFETCH(QByteArray, button);
    QFETCH(QByteArray, group);
    QFETCH(QByteArray, tick);
    m_form->tick(tick.constData());
    m_form->click(button.constData());
    QTEST(m_form->text(button.constData()), "armed");
    QVERIFY(!m_form->isEnabled(group.constData()));
    m_form->click(button.constData());
    QTEST(m_form->text(button.constData()), "disarmed");
    QVERIFY(m_form->isEnabled(group.constData()));
}

void TestFileLoggerTriggers::armedStartIsShown()
{
    m_form->armStartByIds(QStringLiteral("1"));
    QCOMPARE(m_form->statusText(), QStringLiteral("Wait for start trigger event"));
}

void TestFileLoggerTriggers::disarmedTriggersDoNothing()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->click("btnStartTriggers");
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerTriggers::startByHandDisarmsTheStartTriggers()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->click("btnStart");
    QCOMPARE(m_form->text("btnStartTriggers"), QStringLiteral("Activate Start Triggers"));
    QVERIFY(!m_form->find<QPushButton>("btnStartTriggers")->isChecked());
    QVERIFY(!m_form->isEnabled("gbStartTriggers"));
    m_form->click("btnStop");
    QVERIFY(m_form->isEnabled("gbStartTriggers"));
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerTriggers::armedStopIsShownFromTheStartOn()
{
    m_form->armStopByCount(1);
    QCOMPARE(m_form->statusText(), QString());
    m_form->click("btnStart");
    QCOMPARE(m_form->statusText(), QStringLiteral("Wait for stop trigger event"));
}

void TestFileLoggerTriggers::stopArmsNothingAgain()
{
    m_form->armStopByCount(1);
    m_form->click("btnStart");
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
    QCOMPARE(m_form->text("btnStopTriggers"), QStringLiteral("Activate Stop Triggers"));
    QVERIFY(!m_form->find<QPushButton>("btnStopTriggers")->isChecked());
    QVERIFY(m_form->isEnabled("gbStopTriggers"));
    m_form->click("btnStart");
    m_form->receive({1, 2, 3});
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerTriggers::conditionsCountFromArmingOn()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->type("edtStartIds", QStringLiteral("2"));
    m_form->receive(2);
    QVERIFY(!m_form->isLogging());
    m_form->receive(1);
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerTriggers::identifierStarts()
{
    m_form->armStartByIds(QStringLiteral("0x100, 0x200,abc"));
    m_form->receive(0x1FF);
    QVERIFY(!m_form->isLogging());
    m_form->receive({0x200, 0x100, 0x1FF});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("100 1ff"));
}

void TestFileLoggerTriggers::composedMessageStarts()
{
    CANRAW::CanRawCompareMessage message;
    message.id = {0x181, true};
    message.length = {2, true};
    message.data = QByteArray("\x01\x05", 2);
    message.consideration.setBit(1);
    m_form->tick("gbStartTriggersCANMessage");
    compose("btn_buildCanMessage", message);
    QCOMPARE(m_form->find<QLineEdit>("le_canStartMessage")->text(), QStringLiteral("0x181 2 1 5"));
    m_form->click("btnStartTriggers");
    m_form->receive(0x181, QByteArray("\x01\x06", 2));
    QVERIFY(!m_form->isLogging());
    m_form->receive(0x181, QByteArray("\x09\x05", 2));
    QVERIFY(m_form->isLogging());
    m_form->receive(7);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("007"));
}

void TestFileLoggerTriggers::otherMessagesDoNotStart()
{
    m_form->tick("gbStartTriggersCANMessage");
    compose("btn_buildCanMessage", anyDataOf(0x181));
    m_form->click("btnStartTriggers");
    m_form->receive(0x182, QByteArray(3, '\1'));
    CAN::CanRxMessage remote = received(0x181);
    remote.message.rtr = true;
    m_form->adapter.receive(remote);
    QVERIFY(!m_form->isLogging());
    m_form->receive(0x181, QByteArray(3, '\1'));
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerTriggers::pastTimeStarts()
{
    m_form->tick("gbStartTriggersTime");
    m_form->setTime("dateStart", past());
    QVERIFY(!m_form->isLogging());
    m_form->click("btnStartTriggers");
    QTRY_VERIFY_WITH_TIMEOUT(m_form->isLogging(), patience);
}

void TestFileLoggerTriggers::comingTimeStarts()
{
    m_form->tick("gbStartTriggersTime");
    const QDateTime time = soon();
    m_form->setTime("dateStart", time);
    m_form->click("btnStartTriggers");
    QTRY_VERIFY_WITH_TIMEOUT(m_form->isLogging(), patience);
    QVERIFY(QDateTime::currentDateTime() > time);
}

void TestFileLoggerTriggers::firstOfTwoConditionsStarts()
{
    m_form->tick("gbStartTriggersTime");
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->receive(1);
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerTriggers::untickedConditionDoesNotStart()
{
    m_form->tick("gbStartTriggersTime");
    m_form->type("edtStartIds", QStringLiteral("1"));
    m_form->click("btnStartTriggers");
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerTriggers::startConditionsRestWhileLogging()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->receive({1, 1, 1});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001 001"));
}

void TestFileLoggerTriggers::identifierStops()
{
    m_form->armStopByIds(QStringLiteral("0x5, 0x1ab"));
    m_form->click("btnStart");
    m_form->receive({1, 0x1AB, 2});
    QVERIFY(!m_form->isLogging());
    QCOMPARE(m_form->log(), QStringLiteral("001 1ab # Stop CAN ID (0x1ab) detected"));
    QCOMPARE(m_form->countText(), QStringLiteral("2"));
}

void TestFileLoggerTriggers::composedMessageStops()
{
    m_form->tick("gbStopTriggersCANMessage");
    compose("btn_buildCanStopMessage", anyDataOf(0x181));
    QCOMPARE(m_form->find<QLineEdit>("le_canStopMessage")->text(), QStringLiteral("0x181 -1"));
    m_form->click("btnStopTriggers");
    m_form->click("btnStart");
    m_form->receive({1, 0x181, 2});
    QCOMPARE(m_form->log(), QStringLiteral("001 181 # Stop CAN Message detected"));
}

void TestFileLoggerTriggers::oneFrameStopsOnce()
{
    m_form->tick("gbStopTriggersCANMessage");
    compose("btn_buildCanStopMessage", anyDataOf(5));
    m_form->tick("gbStopTriggersCounter");
    m_form->setNumber("spCounter", 1);
    m_form->armStopByIds(QStringLiteral("5"));
    m_form->click("btnStart");
    m_form->receive(5);
    QCOMPARE(m_form->log(), QStringLiteral("005 # Stop CAN ID (0x005) detected"));
}

void TestFileLoggerTriggers::countStops_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("logged");
    QTest::newRow("three") << 3 << QStringLiteral("001 002 003");
    QTest::newRow("one") << 1 << QStringLiteral("001");
    QTest::newRow("none, with the first frame all the same") << 0 << QStringLiteral("001");
}

void TestFileLoggerTriggers::countStops()
{
    QFETCH(int, count);
    m_form->armStopByCount(count);
    m_form->click("btnStart");
    m_form->receive({1, 2, 3, 4});
    QVERIFY(!m_form->isLogging());
    QTEST(m_form->log(), "logged");
}

void TestFileLoggerTriggers::framesThatAreFilteredOutStopToo()
{
    m_form->setFilter(QStringLiteral("1"));
    m_form->armStopByIds(QStringLiteral("5"));
    m_form->click("btnStart");
    m_form->receive({1, 5, 1});
    QCOMPARE(m_form->log(), QStringLiteral("001 # Stop CAN ID (0x005) detected"));
}

void TestFileLoggerTriggers::framesThatAreFilteredOutDoNotCount()
{
    m_form->setFilter(QStringLiteral("1"));
    m_form->armStopByCount(2);
    m_form->click("btnStart");
    m_form->receive({1, 5, 5, 5});
    QVERIFY(m_form->isLogging());
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerTriggers::fileSizeStops()
{
    constexpr qint64 megabyte = 1024000;
    constexpr qint64 bufferSize = 16384;
    m_form->tick("gbStopTriggersFileSize");
    m_form->setNumber("spFileSize", 1);
    m_form->click("btnStopTriggers");
    m_form->click("btnStart");
    const QByteArray data(64, '\x55');
    while (QFileInfo(m_form->path()).size() < megabyte - 3 * bufferSize)
        m_form->receive(1, data);
    QVERIFY(m_form->waitForPolls(2));
    QVERIFY(m_form->isLogging());
    while (QFileInfo(m_form->path()).size() < megabyte)
        m_form->receive(1, data);
    QTRY_VERIFY_WITH_TIMEOUT(!m_form->isLogging(), patience);
}

void TestFileLoggerTriggers::noFileSizeStopsAtOnce()
{
    m_form->tick("gbStopTriggersFileSize");
    m_form->setNumber("spFileSize", 0);
    m_form->click("btnStopTriggers");
    m_form->click("btnStart");
    QVERIFY(m_form->isLogging());
    QTRY_VERIFY_WITH_TIMEOUT(!m_form->isLogging(), patience);
}

void TestFileLoggerTriggers::comingTimeStops()
{
    m_form->tick("gbStopTriggersTime");
    const QDateTime time = soon();
    m_form->setTime("dateStop", time);
    m_form->click("btnStopTriggers");
    m_form->click("btnStart");
    QCOMPARE(m_form->stopInfo(), QString());
    QTRY_VERIFY_WITH_TIMEOUT(!m_form->isLogging(), patience);
    QVERIFY(QDateTime::currentDateTime() > time);
}

void TestFileLoggerTriggers::pastTimeIsIgnored()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", past());
    QCOMPARE(m_form->stopInfo(), QStringLiteral("Stop time is in the past and will be ignored."));
    m_form->armStopByCount(2);
    m_form->click("btnStart");
    QCOMPARE(m_form->stopInfo(), QStringLiteral("Stop time is in the past and will be ignored."));
    m_form->receive(1);
    QVERIFY(m_form->waitForPolls(2));
    QVERIFY(m_form->isLogging());
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
    QCOMPARE(m_form->stopInfo(), QString());
}

void TestFileLoggerTriggers::pastTimeIsForgottenWithItsTick()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", past());
    m_form->tick("gbStopTriggersTime");
    QCOMPARE(m_form->stopInfo(), QString());
}

void TestFileLoggerTriggers::stopConditionsRestWithoutALog()
{
    m_form->armStopByIds(QStringLiteral("5"));
    m_form->receive(5);
    QCOMPARE(m_form->text("btnStopTriggers"), QStringLiteral("Deactivate Stop Triggers"));
    QVERIFY(!m_form->isEnabled("gbStopTriggers"));
}

void TestFileLoggerTriggers::stopConditionsRestUntilTheyAreArmed()
{
    m_form->tick("gbStopTriggersCounter");
    m_form->setNumber("spCounter", 1);
    m_form->click("btnStart");
    m_form->receive({1, 2});
    QVERIFY(m_form->isLogging());
    m_form->click("btnStopTriggers");
    m_form->receive(3);
    QVERIFY(!m_form->isLogging());
}

QTEST_MAIN(TestFileLoggerTriggers)
#include "tst_fileloggertriggers.moc"
