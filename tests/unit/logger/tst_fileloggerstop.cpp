#include "composer.h"
#include "loggerform.h"

class TestFileLoggerStop : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void armedStopIsShownFromTheStartOn();
    void stopArmsNothingAgain();
    void identifierStops();
    void identifiersShowInTheDebugStream();
    void composedMessageStops();
    void oneFrameStopsOnce();
    void messageStopsBeforeTheCount();
    void frameThatStopsMayStartTheNextLog();
    void countStops_data();
    void countStops();
    void framesThatAreFilteredOutStopToo();
    void framesThatAreFilteredOutDoNotCount();
    void fileSizeStops();
    void noFileSizeStopsAtOnce();
    void comingTimeStops();
    void pastTimeIsIgnored();
    void pastTimeIsForgottenWithItsTick();
    void timeThatPassedBeforeArmingIsTold();
    void timeThatPassedBeforeTheStartIsTold();
    void timeTickedByProgramKeepsWhatWasKnown();
    void stopConditionsRestWithoutALog_data();
    void stopConditionsRestWithoutALog();
    void stopConditionsRestUntilTheyAreArmed();

private:
    bool waitUntilPast(const char *edit) const;

    std::unique_ptr<LoggerForm> m_form;
};

namespace {
constexpr int patience = 5000; // ms
const QString timeIsIgnored = QStringLiteral("Stop time is in the past and will be ignored.");

QDateTime past()
{
    return QDateTime(QDate(2020, 1, 1), QTime(0, 0));
}

QDateTime soon()
{
    return QDateTime::currentDateTime().addMSecs(500);
}
} // namespace

bool TestFileLoggerStop::waitUntilPast(const char *edit) const
{
    const QDateTime time = m_form->find<QDateTimeEdit>(edit)->dateTime();
    return QTest::qWaitFor([&time] { return QDateTime::currentDateTime() > time; });
}

void TestFileLoggerStop::init()
{
    LoggerForm::forgetSettings();
    m_form = std::make_unique<LoggerForm>();
}

void TestFileLoggerStop::cleanup()
{
    m_form.reset();
}

void TestFileLoggerStop::armedStopIsShownFromTheStartOn()
{
    m_form->armStopByCount(1);
    QCOMPARE(m_form->statusText(), QString());
    m_form->click("btnStart");
    QCOMPARE(m_form->statusText(), QStringLiteral("Wait for stop trigger event"));
}

void TestFileLoggerStop::stopArmsNothingAgain()
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

void TestFileLoggerStop::identifierStops()
{
    m_form->armStopByIds(QStringLiteral("0x5, 0x1ab"));
    m_form->click("btnStart");
    m_form->receive({1, 0x1AB, 2});
    QVERIFY(!m_form->isLogging());
    QCOMPARE(m_form->log(), QStringLiteral("001 1ab # Stop CAN ID (0x1ab) detected"));
    QCOMPARE(m_form->countText(), QStringLiteral("2"));
}

void TestFileLoggerStop::identifiersShowInTheDebugStream()
{
    m_form->armStopByIds(QStringLiteral("0x5, 0x1ab"));
    m_form->click("btnStart");
    QTest::ignoreMessage(QtDebugMsg, "Line: (5, 427)");
    m_form->receive(1);
}

void TestFileLoggerStop::composedMessageStops()
{
    m_form->tick("gbStopTriggersCANMessage");
    compose(*m_form, "btn_buildCanStopMessage", anyDataOf(0x181));
    QCOMPARE(m_form->find<QLineEdit>("le_canStopMessage")->text(), QStringLiteral("0x181 -1"));
    m_form->click("btnStopTriggers");
    m_form->click("btnStart");
    m_form->receive({1, 0x181, 2});
    QCOMPARE(m_form->log(), QStringLiteral("001 181 # Stop CAN Message detected"));
}

void TestFileLoggerStop::oneFrameStopsOnce()
{
    m_form->tick("gbStopTriggersCANMessage");
    compose(*m_form, "btn_buildCanStopMessage", anyDataOf(5));
    m_form->tick("gbStopTriggersCounter");
    m_form->setNumber("spCounter", 1);
    m_form->armStopByIds(QStringLiteral("5"));
    m_form->click("btnStart");
    m_form->receive(5);
    QCOMPARE(m_form->log(), QStringLiteral("005 # Stop CAN ID (0x005) detected"));
}

void TestFileLoggerStop::messageStopsBeforeTheCount()
{
    m_form->tick("gbStopTriggersCANMessage");
    compose(*m_form, "btn_buildCanStopMessage", anyDataOf(5));
    m_form->armStopByCount(1);
    m_form->click("btnStart");
    m_form->receive(5);
    QCOMPARE(m_form->log(), QStringLiteral("005 # Stop CAN Message detected"));
}

void TestFileLoggerStop::frameThatStopsMayStartTheNextLog()
{
    m_form->armStopByCount(1);
    m_form->click("btnStart");
    m_form->tick("gbStartTriggersCANIDs");
    m_form->type("edtStartIds", QStringLiteral("5"));
    m_form->click("btnStartTriggers");
    m_form->receive(5);
    QVERIFY(m_form->isLogging());
    QCOMPARE(m_form->statusText(), QStringLiteral("Logging ..."));
    m_form->receive(6);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("006"));
}

void TestFileLoggerStop::countStops_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("logged");
    QTest::newRow("three") << 3 << QStringLiteral("001 002 003");
    QTest::newRow("one") << 1 << QStringLiteral("001");
    QTest::newRow("none, with the first frame all the same") << 0 << QStringLiteral("001");
}

void TestFileLoggerStop::countStops()
{
    QFETCH(int, count);
    m_form->armStopByCount(count);
    m_form->click("btnStart");
    m_form->receive({1, 2, 3, 4});
    QVERIFY(!m_form->isLogging());
    QTEST(m_form->log(), "logged");
}

void TestFileLoggerStop::framesThatAreFilteredOutStopToo()
{
    m_form->setFilter(QStringLiteral("1"));
    m_form->armStopByIds(QStringLiteral("5"));
    m_form->click("btnStart");
    m_form->receive({1, 5, 1});
    QCOMPARE(m_form->log(), QStringLiteral("001 # Stop CAN ID (0x005) detected"));
}

void TestFileLoggerStop::framesThatAreFilteredOutDoNotCount()
{
    m_form->setFilter(QStringLiteral("1"));
    m_form->armStopByCount(2);
    m_form->click("btnStart");
    m_form->receive({1, 5, 5, 5});
    QVERIFY(m_form->isLogging());
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
}

void TestFileLoggerStop::fileSizeStops()
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

void TestFileLoggerStop::noFileSizeStopsAtOnce()
{
    m_form->tick("gbStopTriggersFileSize");
    m_form->setNumber("spFileSize", 0);
    m_form->click("btnStopTriggers");
    m_form->click("btnStart");
    QVERIFY(m_form->isLogging());
    QTRY_VERIFY_WITH_TIMEOUT(!m_form->isLogging(), patience);
}

void TestFileLoggerStop::comingTimeStops()
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

void TestFileLoggerStop::pastTimeIsIgnored()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", past());
    QCOMPARE(m_form->stopInfo(), timeIsIgnored);
    m_form->armStopByCount(2);
    m_form->click("btnStart");
    QCOMPARE(m_form->stopInfo(), timeIsIgnored);
    m_form->receive(1);
    QVERIFY(m_form->waitForPolls(2));
    QVERIFY(m_form->isLogging());
    m_form->receive(1);
    QVERIFY(!m_form->isLogging());
    QCOMPARE(m_form->stopInfo(), QString());
}

void TestFileLoggerStop::pastTimeIsForgottenWithItsTick()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", past());
    m_form->tick("gbStopTriggersTime");
    QCOMPARE(m_form->stopInfo(), QString());
}

void TestFileLoggerStop::timeThatPassedBeforeArmingIsTold()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", soon());
    QCOMPARE(m_form->stopInfo(), QString());
    QVERIFY(waitUntilPast("dateStop"));
    m_form->click("btnStopTriggers");
    QCOMPARE(m_form->stopInfo(), timeIsIgnored);
}

void TestFileLoggerStop::timeThatPassedBeforeTheStartIsTold()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", soon());
    m_form->click("btnStopTriggers");
    QCOMPARE(m_form->stopInfo(), QString());
    QVERIFY(waitUntilPast("dateStop"));
    m_form->click("btnStart");
    QCOMPARE(m_form->stopInfo(), timeIsIgnored);
    QVERIFY(m_form->waitForPolls(2));
    QVERIFY(m_form->isLogging());
}

void TestFileLoggerStop::timeTickedByProgramKeepsWhatWasKnown()
{
    m_form->tick("gbStopTriggersTime");
    m_form->setTime("dateStop", soon());
    m_form->tick("gbStopTriggersTime");
    m_form->armStopByCount(100);
    m_form->click("btnStart");
    QVERIFY(waitUntilPast("dateStop"));
    m_form->find<QGroupBox>("gbStopTriggersTime")->setChecked(true);
    QTRY_VERIFY_WITH_TIMEOUT(!m_form->isLogging(), patience);
}

void TestFileLoggerStop::stopConditionsRestWithoutALog_data()
{
    QTest::addColumn<QByteArray>("box");
    for (const char *box : {"gbStopTriggersTime", "gbStopTriggersCANIDs", "gbStopTriggersCANMessage",
                            "gbStopTriggersCounter", "gbStopTriggersFileSize"})
        QTest::newRow(box) << QByteArray(box);
}

void TestFileLoggerStop::stopConditionsRestWithoutALog()
{
    QFETCH(QByteArray, box);
    compose(*m_form, "btn_buildCanStopMessage", anyDataOf(5));
    m_form->type("edtStartIds_2", QStringLiteral("5"));
    m_form->setNumber("spCounter", 0);
    m_form->setNumber("spFileSize", 0);
    m_form->tick(box.constData());
    m_form->setTime("dateStop", soon());
    m_form->click("btnStopTriggers");
    QVERIFY(waitUntilPast("dateStop"));
    m_form->receive(5);
    QVERIFY(m_form->waitForPolls(2));
    QCOMPARE(m_form->text("btnStopTriggers"), QStringLiteral("Deactivate Stop Triggers"));
    QVERIFY(!m_form->isEnabled("gbStopTriggers"));
}

void TestFileLoggerStop::stopConditionsRestUntilTheyAreArmed()
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

QTEST_MAIN(TestFileLoggerStop)
#include "tst_fileloggerstop.moc"
