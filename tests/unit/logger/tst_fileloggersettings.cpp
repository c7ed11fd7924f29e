#include "loggerform.h"

#include "canrawcomparemessage.h"

class TestFileLoggerSettings : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void entriesReturn();
    void tickedConditionsReturnAndCanBeArmed();
    void ticksOfTimesDoNotReturn();
    void composedMessagesReturn_data();
    void composedMessagesReturn();
    void formIsSaved_data();
    void formIsSaved();
    void messageThatWasNeverComposedMatchesNothing_data();
    void messageThatWasNeverComposedMatchesNothing();
    void damagedMessageIsHarmless_data();
    void damagedMessageIsHarmless();
    void armedTriggersDoNotReturn();
};

namespace {
const QString group = QStringLiteral("FileLoggerSettings/");

QVariant saved(const char *name)
{
    return QSettings().value(group + QString::fromLatin1(name));
}

void save(const char *name, const QVariant &value)
{
    QSettings().setValue(group + QString::fromLatin1(name), value);
}
} // namespace

void TestFileLoggerSettings::init()
{
    LoggerForm::forgetSettings();
}

void TestFileLoggerSettings::entriesReturn()
{
    const QDateTime time(QDate(2031, 5, 6), QTime(7, 8, 9));
    {
        LoggerForm form;
        form.setPath(QStringLiteral("/nowhere/at all"));
        form.type("edtStartIds", QStringLiteral("0x1"));
        form.type("edtStartIds_2", QStringLiteral("0x2"));
        form.setNumber("spFileSize", 7);
        form.setNumber("spCounter", 8);
        form.setTime("dateStart", time);
        form.setTime("dateStop", time.addDays(1));
        form.setFilter(QStringLiteral("1\n2-3"));
    }
    const FileLoggerWindow next;
    const auto text = [&next](const char *name) {
        return next.findChild<QWidget *>(QString::fromLatin1(name))->property("text").toString();
    };
    QCOMPARE(text("edtFilePath"), QStringLiteral("/nowhere/at all"));
    QCOMPARE(text("edtStartIds"), QStringLiteral("0x1"));
    QCOMPARE(text("edtStartIds_2"), QStringLiteral("0x2"));
    QCOMPARE(next.findChild<QSpinBox *>(QStringLiteral("spFileSize"))->value(), 7);
    QCOMPARE(next.findChild<QSpinBox *>(QStringLiteral("spCounter"))->value(), 8);
    QCOMPARE(next.findChild<QDateTimeEdit *>(QStringLiteral("dateStart"))->dateTime(), time);
    QCOMPARE(next.findChild<QDateTimeEdit *>(QStringLiteral("dateStop"))->dateTime(), time.addDays(1));
    QCOMPARE(next.findChild<QPlainTextEdit *>(QStringLiteral("textEditFilterList"))->toPlainText(),
             QStringLiteral("1\n2-3"));
}

void TestFileLoggerSettings::tickedConditionsReturnAndCanBeArmed()
{
    {
        LoggerForm form;
        form.tick("gbStartTriggersCANMessage");
        form.tick("gbStopTriggersCounter");
    }
    const LoggerForm next;
    QVERIFY(next.find<QGroupBox>("gbStartTriggersCANMessage")->isChecked());
    QVERIFY(next.find<QGroupBox>("gbStopTriggersCounter")->isChecked());
    QVERIFY(next.isEnabled("btnStartTriggers"));
    QVERIFY(next.isEnabled("btnStopTriggers"));
}

void TestFileLoggerSettings::ticksOfTimesDoNotReturn()
{
    {
        LoggerForm form;
        form.tick("gbStartTriggersTime");
        form.tick("gbStopTriggersTime");
    }
    const LoggerForm next;
    QVERIFY(!next.find<QGroupBox>("gbStartTriggersTime")->isChecked());
    QVERIFY(!next.find<QGroupBox>("gbStopTriggersTime")->isChecked());
    QVERIFY(!next.isEnabled("btnStartTriggers"));
    QVERIFY(!next.isEnabled("btnStopTriggers"));
}

void TestFileLoggerSettings::composedMessagesReturn_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<bool>("logsAfterwards");
    QTest::newRow("start") << QByteArray("StartMessage") << QByteArray("gbStartTriggersCANMessage")
                           << QByteArray("btnStartTriggers") << true;
    QTest::newRow("stop") << QByteArray("StopMessage") << QByteArray("gbStopTriggersCANMessage")
                          << QByteArray("btnStopTriggers") << false;
}

void TestFileLoggerSettings::composedMessagesReturn()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, button);
    QFETCH(bool, logsAfterwards);
    CANRAW::CanRawCompareMessage message;
    message.id = {0x181, true};
    save(key.constData(), message.toByteArray());
    LoggerForm form;
    form.tick(box.constData());
    form.click(button.constData());
    if (!logsAfterwards)
        form.click("btnStart");
    form.receive(0x182);
    QCOMPARE(form.isLogging(), !logsAfterwards);
    form.receive(0x181);
    QCOMPARE(form.isLogging(), logsAfterwards);
    form.window->writeSettings();
    QCOMPARE(saved(key.constData()).toByteArray(), message.toByteArray());
}

void TestFileLoggerSettings::formIsSaved_data()
{
    QTest::addColumn<LoggerAction>("action");
    QTest::newRow("when a log starts") << LoggerAction([](LoggerForm &form) { form.click("btnStart"); });
    QTest::newRow("when it is closed") << LoggerAction([](LoggerForm &form) { form.window->close(); });
    QTest::newRow("when it ends") << LoggerAction([](LoggerForm &form) { form.window.reset(); });
}

void TestFileLoggerSettings::formIsSaved()
{
    QFETCH(LoggerAction, action);
    LoggerForm form;
    form.type("edtStartIds", QStringLiteral("0x77"));
    QCOMPARE(saved("edtStartIds"), QVariant());
    action(form);
    QCOMPARE(saved("edtStartIds").toString(), QStringLiteral("0x77"));
    QCOMPARE(saved("StartMessage").toByteArray(), CANRAW::CanRawCompareMessage(false).toByteArray());
    QCOMPARE(saved("StopMessage").toByteArray(), CANRAW::CanRawCompareMessage(false).toByteArray());
}

void TestFileLoggerSettings::messageThatWasNeverComposedMatchesNothing_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<bool>("logs");
    QTest::newRow("to start") << QByteArray("gbStartTriggersCANMessage") << QByteArray("btnStartTriggers") << false;
    QTest::newRow("to stop") << QByteArray("gbStopTriggersCANMessage") << QByteArray("btnStopTriggers") << true;
}

void TestFileLoggerSettings::messageThatWasNeverComposedMatchesNothing()
{
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, button);
    QFETCH(bool, logs);
    LoggerForm form;
    form.tick(box.constData());
    form.click(button.constData());
    if (logs)
        form.click("btnStart");
    form.receive({0, 1});
    form.receive(0, QByteArray(8, '\0'));
    QCOMPARE(form.isLogging(), logs);
}

void TestFileLoggerSettings::damagedMessageIsHarmless_data()
{
    QTest::addColumn<QVariant>("stored");
    CANRAW::CanRawCompareMessage message;
    message.data = QByteArray(64, '\1');
    message.consideration.fill(true);
    const QByteArray whole = message.toByteArray();
    for (int size = 1; size < whole.size(); size += 7)
        QTest::addRow("cut at %d", size) << QVariant(whole.left(size));
    QTest::newRow("ones only") << QVariant(QByteArray(200, '\xFF'));
    QTest::newRow("an identifier that no frame has") << QVariant(QByteArray("\x01\xFF\xFF\xFF\xFF\x01", 6));
    QTest::newRow("text") << QVariant(QStringLiteral("@Invalid("));
    QTest::newRow("number") << QVariant(5);
    QTest::newRow("list") << QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b")});
}

void TestFileLoggerSettings::damagedMessageIsHarmless()
{
    QFETCH(QVariant, stored);
    save("StartMessage", stored);
    save("StopMessage", stored);
    LoggerForm form;
    form.tick("gbStartTriggersCANMessage");
    form.tick("gbStopTriggersCANMessage");
    form.click("btnStartTriggers");
    form.click("btnStopTriggers");
    form.receive(1, QByteArray(8, '\1'));
    form.window->stopAction();
    form.click("btnStart");
    form.receive(2);
    form.click("btnStop");
    QCOMPARE(form.log(), QStringLiteral("002"));
}

void TestFileLoggerSettings::armedTriggersDoNotReturn()
{
    {
        LoggerForm form;
        form.armStartByIds(QStringLiteral("1"));
    }
    LoggerForm next;
    next.receive(1);
    QVERIFY(!next.isLogging());
    QCOMPARE(next.text("btnStartTriggers"), QStringLiteral("Activate Start Triggers"));
    QVERIFY(!next.find<QAbstractButton>("btnStartTriggers")->isChecked());
}

QTEST_MAIN(TestFileLoggerSettings)
#include "tst_fileloggersettings.moc"
