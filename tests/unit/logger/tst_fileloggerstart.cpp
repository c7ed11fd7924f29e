#include "composer.h"
#include "loggerform.h"

#include <QRegularExpression>

class TestFileLoggerStart : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void anyTickedConditionCanBeArmed_data();
    void anyTickedConditionCanBeArmed();
    void armedConditionsAreFrozen_data();
    void armedConditionsAreFrozen();
    void armedStartIsShown();
    void disarmedTriggersDoNothing();
    void startByHandDisarmsTheStartTriggers();
    void conditionsCountFromArmingOn();
    void identifierStarts();
    void composedMessageStarts();
    void otherMessagesDoNotStart();
    void pastTimeStarts();
    void comingTimeStarts();
    void identifierStartsBeforeTheTime();
    void timeStartsBeforeTheIdentifier();
    void untickedConditionDoesNotStart();
    void startConditionsRestWhileLogging();
    void startArmedWhileLoggingWaitsForTheStop();
    void armedStartOutlastsAStop_data();
    void armedStartOutlastsAStop();
    void changedTimeShowsInTheDebugStream();

private:
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
} // namespace

void TestFileLoggerStart::init()
{
    LoggerForm::forgetSettings();
    m_form = std::make_unique<LoggerForm>();
}

void TestFileLoggerStart::cleanup()
{
    m_form.reset();
}

void TestFileLoggerStart::anyTickedConditionCanBeArmed_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("button");
    for (const char *box : {"gbStartTriggersTime", "gbStartTriggersCANIDs", "gbStartTriggersCANMessage"})
        QTest::newRow(box) << QByteArray(box) << QByteArray("btnStartTriggers");
    for (const char *box : {"gbStopTriggersTime", "gbStopTriggersCANIDs", "gbStopTriggersCANMessage",
                            "gbStopTriggersFileSize", "gbStopTriggersCounter"})
        QTest::newRow(box) << QByteArray(box) << QByteArray("btnStopTriggers");
}

void TestFileLoggerStart::anyTickedConditionCanBeArmed()
{
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, button);
    QVERIFY(!m_form->isEnabled(button.constData()));
    m_form->tick(box.constData());
    QVERIFY(m_form->isEnabled(button.constData()));
    m_form->tick(box.constData());
    QVERIFY(!m_form->isEnabled(button.constData()));
}

void TestFileLoggerStart::armedConditionsAreFrozen_data()
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

void TestFileLoggerStart::armedConditionsAreFrozen()
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

void TestFileLoggerStart::armedStartIsShown()
{
    m_form->armStartByIds(QStringLiteral("1"));
    QCOMPARE(m_form->statusText(), QStringLiteral("Wait for start trigger event"));
}

void TestFileLoggerStart::disarmedTriggersDoNothing()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->click("btnStartTriggers");
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerStart::startByHandDisarmsTheStartTriggers()
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

void TestFileLoggerStart::conditionsCountFromArmingOn()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->type("edtStartIds", QStringLiteral("2"));
    m_form->receive(2);
    QVERIFY(!m_form->isLogging());
    m_form->receive(1);
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerStart::identifierStarts()
{
    m_form->armStartByIds(QStringLiteral("0x100, 0x200,abc"));
    m_form->receive(0x1FF);
    QVERIFY(!m_form->isLogging());
    m_form->receive({0x200, 0x100, 0x1FF});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("100 1ff"));
}

void TestFileLoggerStart::composedMessageStarts()
{
    CANRAW::CanRawCompareMessage message;
    message.id = {0x181, true};
    message.length = {2, true};
    message.data = QByteArray("\x01\x05", 2);
    message.consideration.setBit(1);
    m_form->tick("gbStartTriggersCANMessage");
    compose(*m_form, "btn_buildCanMessage", message);
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

void TestFileLoggerStart::otherMessagesDoNotStart()
{
    m_form->tick("gbStartTriggersCANMessage");
    compose(*m_form, "btn_buildCanMessage", anyDataOf(0x181));
    m_form->click("btnStartTriggers");
    m_form->receive(0x182, QByteArray(3, '\1'));
    CAN::CanRxMessage remote = received(0x181);
    remote.message.rtr = true;
    m_form->adapter.receive(remote);
    QVERIFY(!m_form->isLogging());
    m_form->receive(0x181, QByteArray(3, '\1'));
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerStart::pastTimeStarts()
{
    m_form->tick("gbStartTriggersTime");
    m_form->setTime("dateStart", past());
    QVERIFY(!m_form->isLogging());
    m_form->click("btnStartTriggers");
    QTRY_VERIFY_WITH_TIMEOUT(m_form->isLogging(), patience);
}

void TestFileLoggerStart::comingTimeStarts()
{
    m_form->tick("gbStartTriggersTime");
    const QDateTime time = soon();
    m_form->setTime("dateStart", time);
    m_form->click("btnStartTriggers");
    QTRY_VERIFY_WITH_TIMEOUT(m_form->isLogging(), patience);
    QVERIFY(QDateTime::currentDateTime() > time);
}

void TestFileLoggerStart::identifierStartsBeforeTheTime()
{
    m_form->tick("gbStartTriggersTime");
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->receive(1);
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerStart::timeStartsBeforeTheIdentifier()
{
    m_form->tick("gbStartTriggersTime");
    m_form->setTime("dateStart", past());
    m_form->armStartByIds(QStringLiteral("1"));
    QTRY_VERIFY_WITH_TIMEOUT(m_form->isLogging(), patience);
    m_form->receive(1);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001"));
}

void TestFileLoggerStart::untickedConditionDoesNotStart()
{
    m_form->tick("gbStartTriggersTime");
    m_form->type("edtStartIds", QStringLiteral("1"));
    m_form->click("btnStartTriggers");
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerStart::startConditionsRestWhileLogging()
{
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->receive({1, 1, 1});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001 001"));
}

void TestFileLoggerStart::startArmedWhileLoggingWaitsForTheStop()
{
    m_form->click("btnStart");
    m_form->armStartByIds(QStringLiteral("1"));
    m_form->receive({1, 2});
    QCOMPARE(m_form->countText(), QStringLiteral("2"));
    QVERIFY(m_form->find<QAbstractButton>("btnStartTriggers")->isChecked());
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001 002"));
    m_form->receive({1, 3});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("003"));
}

void TestFileLoggerStart::armedStartOutlastsAStop_data()
{
    QTest::addColumn<LoggerAction>("stop");
    QTest::newRow("by the application") << LoggerAction([](LoggerForm &form) { form.window->stopAction(); });
    QTest::newRow("by the close button") << LoggerAction([](LoggerForm &form) { form.window->close(); });
}

void TestFileLoggerStart::armedStartOutlastsAStop()
{
    QFETCH(LoggerAction, stop);
    m_form->armStartByIds(QStringLiteral("1"));
    stop(*m_form);
    QVERIFY(m_form->find<QAbstractButton>("btnStartTriggers")->isChecked());
    QVERIFY(!m_form->isLogging());
    m_form->receive(1);
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerStart::changedTimeShowsInTheDebugStream()
{
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^Line: QDateTime\\(2020-01-01 00:00:00")));
    m_form->setTime("dateStart", past());
}

QTEST_MAIN(TestFileLoggerStart)
#include "tst_fileloggerstart.moc"
