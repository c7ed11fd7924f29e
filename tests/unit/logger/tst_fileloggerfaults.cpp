#include "composer.h"
#include "debuglines.h"
#include "loggerform.h"
#include "messageboxes.h"

#include <QRegularExpression>

#include <sys/stat.h>

class TestFileLoggerFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void unusablePathIsTold_data();
    void unusablePathIsTold();
    void pipeIsToldWithoutWaitingForAReader_data();
    void pipeIsToldWithoutWaitingForAReader();
    void socketIsTold();
    void failedStartChangesNothing();
    void triggersPutUpOneBoxAtATime();
    void boxOfTheApplicationStopsNoLog();
    void windowMayDieUnderTheBox();
    void windowMayDieUnderTheComposer();
    void linesThatAreNotTakenCountAllTheSame();
    void lastLineThatIsNotTakenStopsAllTheSame_data();
    void lastLineThatIsNotTakenStopsAllTheSame();
    void shortLogThatIsNotTakenIsTold_data();
    void shortLogThatIsNotTakenIsTold();
    void deletedFileIsLoggedToItsEnd();
    void vanishedFileObjectEndsTheLinesOnly();
    void adapterMayVanishInTheMiddleOfALog();
    void armedStartOutlivesTheScheduler();
    void armedTimeStartsWithoutAConnection();
};

namespace {
QStringList shownTexts(const MessageBoxes &boxes)
{
    QStringList texts;
    for (const MessageBoxes::Box &box : boxes.shown)
        texts.append(box.text);
    return texts;
}

/// The functions of the window that told of a full disk in the debug stream, in their order.
QStringList failedWriters()
{
    static const QRegularExpression told(
        QStringLiteral("FileLoggerWindow::(\\w+)\\(.* write failed: \"No space left on device\"$"));
    QStringList functions;
    for (const QString &text : DebugLines::texts()) {
        const QRegularExpressionMatch match = told.match(text);
        if (match.hasMatch())
            functions.append(match.captured(1));
    }
    return functions;
}

void logToFullDevice(LoggerForm &form)
{
    form.setPath(QStringLiteral("/dev/full"));
    form.click("btnStart");
}
} // namespace

void TestFileLoggerFaults::init()
{
    LoggerForm::forgetSettings();
}

void TestFileLoggerFaults::unusablePathIsTold_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("warning");
    QTest::newRow("in a missing folder") << QStringLiteral("/nowhere/at/all.txt") << QByteArray();
    QTest::newRow("a folder") << QStringLiteral("/tmp") << QByteArray();
    QTest::newRow("a placeholder") << QStringLiteral("/nowhere/%1") << QByteArray();
    QTest::newRow("none") << QString() << QByteArray("QFSFileEngine::open: No file name specified");
}

void TestFileLoggerFaults::unusablePathIsTold()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, warning);
    LoggerForm form;
    const MessageBoxes boxes;
    form.setPath(path);
    if (!warning.isEmpty())
        QTest::ignoreMessage(QtWarningMsg, warning.constData());
    form.click("btnStart");
    QCOMPARE(boxes.shown.size(), 1);
    const MessageBoxes::Box &box = boxes.shown.first();
    QCOMPARE(box.text, QStringLiteral("File '") + path + QStringLiteral("' cannot be opened for logging."));
    QCOMPARE(box.informativeText, QString());
    QCOMPARE(box.title, QStringLiteral("Falcon"));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(!form.isLogging());
}

void TestFileLoggerFaults::pipeIsToldWithoutWaitingForAReader_data()
{
    QTest::addColumn<bool>("byLink");
    QTest::newRow("by its name") << false;
    QTest::newRow("by a link") << true;
}

void TestFileLoggerFaults::pipeIsToldWithoutWaitingForAReader()
{
    QFETCH(bool, byLink);
    LoggerForm form;
    const MessageBoxes boxes;
    const QString pipe = form.path(QStringLiteral("pipe"));
    const QString link = form.path(QStringLiteral("link"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(QFile::link(pipe, link));
    const QString path = byLink ? link : pipe;
    form.setPath(path);
    form.click("btnStart");
    QCOMPARE(shownTexts(boxes),
             QStringList{QStringLiteral("File '") + path + QStringLiteral("' cannot be opened for logging.")});
    QVERIFY(!form.isLogging());
}

void TestFileLoggerFaults::socketIsTold()
{
    LoggerForm form;
    const MessageBoxes boxes;
    const QString path = form.path(QStringLiteral("socket"));
    QCOMPARE(::mknod(QFile::encodeName(path).constData(), S_IFSOCK | 0600, 0), 0);
    form.setPath(path);
    form.click("btnStart");
    QCOMPARE(boxes.shown.size(), 1);
    QVERIFY(!form.isLogging());
}

void TestFileLoggerFaults::failedStartChangesNothing()
{
    LoggerForm form;
    const MessageBoxes boxes;
    form.setPath(QStringLiteral("/nowhere/at/all.txt"));
    form.armStartByIds(QStringLiteral("1"));
    form.receive(1);
    QCOMPARE(boxes.shown.size(), 1);
    QVERIFY(form.isEnabled("btnStart"));
    QVERIFY(form.isEnabled("edtFilePath"));
    QCOMPARE(form.text("btnStartTriggers"), QStringLiteral("Deactivate Start Triggers"));
    QCOMPARE(form.statusText(), QStringLiteral("Wait for start trigger event"));
    form.setPath(form.path());
    form.receive(1);
    QVERIFY(form.isLogging());
}

void TestFileLoggerFaults::triggersPutUpOneBoxAtATime()
{
    LoggerForm form;
    MessageBoxes boxes;
    boxes.whileShown = [&form] { form.receive({1, 1, 1}); };
    form.setPath(QStringLiteral("/nowhere/at/all.txt"));
    form.armStartByIds(QStringLiteral("1"));
    form.receive(1);
    QCOMPARE(shownTexts(boxes).size(), 1);
}

void TestFileLoggerFaults::boxOfTheApplicationStopsNoLog()
{
    LoggerForm form;
    QMessageBox box(form.window.get());
    box.setModal(false);
    box.show();
    form.click("btnStart");
    QVERIFY(form.isLogging());
}

void TestFileLoggerFaults::windowMayDieUnderTheBox()
{
    LoggerForm form;
    MessageBoxes boxes;
    boxes.whileShown = [&form] { form.window.reset(); };
    form.setPath(QStringLiteral("/nowhere/at/all.txt"));
    form.armStartByIds(QStringLiteral("1"));
    form.receive(1);
    QCOMPARE(boxes.shown.size(), 1);
    QVERIFY(!form.window);
}

void TestFileLoggerFaults::windowMayDieUnderTheComposer()
{
    LoggerForm form;
    QTimer::singleShot(0, qApp, [&form] { form.window.reset(); });
    form.window->on_btn_buildCanMessage_clicked();
    QVERIFY(!form.window);
}

void TestFileLoggerFaults::linesThatAreNotTakenCountAllTheSame()
{
    LoggerForm form;
    logToFullDevice(form);
    const DebugLines debug;
    for (int i = 0; i < 1000; ++i)
        form.receive(1);
    QCOMPARE(form.countText(), QStringLiteral("1000"));
    QVERIFY(form.isLogging());
    QVERIFY(!DebugLines::texts().isEmpty());
    const QString line = DebugLines::texts().last();
    QVERIFY2(line.contains(QLatin1String("FileLoggerWindow::addNewMessage(")), qPrintable(line));
    QVERIFY2(line.endsWith(QLatin1String(" write failed: \"No space left on device\"")), qPrintable(line));
}

void TestFileLoggerFaults::lastLineThatIsNotTakenStopsAllTheSame_data()
{
    QTest::addColumn<LoggerAction>("end");
    QTest::addColumn<QStringList>("functions");
    const LoggerAction receiveFive([](LoggerForm &form) { form.receive(5); });
    const LoggerAction loseConnection([](LoggerForm &form) { form.window->canSchedulerChanged(nullptr); });
    const QString lost = QStringLiteral("canSchedulerChanged");
    const QString stop = QStringLiteral("on_btnStop_clicked");
    QTest::newRow("identifier") << receiveFive << QStringList{QStringLiteral("checkStopTriggerCANIDs"), stop};
    QTest::newRow("message") << receiveFive << QStringList{QStringLiteral("checkStopTriggerCANMessage"), stop};
    QTest::newRow("connection") << loseConnection << QStringList{lost, lost, stop};
}

void TestFileLoggerFaults::lastLineThatIsNotTakenStopsAllTheSame()
{
    QFETCH(LoggerAction, end);
    LoggerForm form;
    form.tick("gbStopTriggersCANMessage");
    compose(form, "btn_buildCanStopMessage", anyDataOf(5));
    if (QTest::currentDataTag() == QByteArray("identifier"))
        form.armStopByIds(QStringLiteral("5"));
    else
        form.click("btnStopTriggers");
    logToFullDevice(form);
    const DebugLines debug;
    // Lines of this length leave no room in the buffer for the shortest last line.
    while (failedWriters().isEmpty())
        form.receive(1, QByteArray(3, '\1'));
    DebugLines::texts().clear();
    // The frame itself is not taken either.
    end(form);
    QStringList writers = failedWriters();
    writers.removeAll(QStringLiteral("addNewMessage"));
    QTEST(writers, "functions");
    QVERIFY(!form.isLogging());
}

void TestFileLoggerFaults::shortLogThatIsNotTakenIsTold_data()
{
    QTest::addColumn<LoggerAction>("end");
    QTest::addColumn<QStringList>("functions");
    const QString lost = QStringLiteral("canSchedulerChanged");
    const QString stop = QStringLiteral("on_btnStop_clicked");
    QTest::newRow("at a stop") << LoggerAction([](LoggerForm &form) { form.click("btnStop"); }) << QStringList{stop};
    QTest::newRow("when the connection is lost")
        << LoggerAction([](LoggerForm &form) { form.window->canSchedulerChanged(nullptr); }) << QStringList{lost, stop};
}

void TestFileLoggerFaults::shortLogThatIsNotTakenIsTold()
{
    QFETCH(LoggerAction, end);
    LoggerForm form;
    logToFullDevice(form);
    form.receive(1);
    const DebugLines debug;
    end(form);
    QTEST(failedWriters(), "functions");
    QVERIFY(!form.isLogging());
}

void TestFileLoggerFaults::deletedFileIsLoggedToItsEnd()
{
    LoggerForm form;
    form.tick("gbStopTriggersFileSize");
    form.armStopByCount(3);
    form.click("btnStart");
    form.receive(1);
    QVERIFY(QFile::remove(form.path()));
    QVERIFY(form.waitForPolls(1));
    form.receive(2);
    QVERIFY(form.isLogging());
    form.receive(3);
    QVERIFY(!form.isLogging());
    QCOMPARE(form.countText(), QStringLiteral("3"));
    QVERIFY(!QFile::exists(form.path()));
}

void TestFileLoggerFaults::vanishedFileObjectEndsTheLinesOnly()
{
    LoggerForm form;
    form.tick("gbStopTriggersFileSize");
    form.setNumber("spFileSize", 0);
    form.armStopByIds(QStringLiteral("5"));
    form.click("btnStart");
    form.receive(1);
    delete form.window->findChild<QFile *>();
    QVERIFY(form.waitForPolls(1));
    form.receive(2);
    QCOMPARE(form.countText(), QStringLiteral("1"));
    QVERIFY(form.isLogging());
    form.receive(5);
    QVERIFY(!form.isLogging());
    QCOMPARE(form.log(), QStringLiteral("001"));
}

void TestFileLoggerFaults::adapterMayVanishInTheMiddleOfALog()
{
    LoggerForm form;
    auto adapter = std::make_unique<FakeAdapter>();
    CanScheduler scheduler(adapter.get());
    form.window->canSchedulerChanged(&scheduler);
    form.click("btnStart");
    adapter->receive(received(1));
    adapter.reset();
    QVERIFY(form.isLogging());
    form.connectBus();
    form.receive(2);
    form.window->canSchedulerChanged(nullptr);
    QCOMPARE(form.log(), QStringLiteral("001 002 CAN connection lost"));
}

void TestFileLoggerFaults::armedStartOutlivesTheScheduler()
{
    LoggerForm form;
    form.armStartByIds(QStringLiteral("1"));
    form.window->canSchedulerChanged(nullptr);
    QCOMPARE(form.content(), QByteArray("no file"));
    QCOMPARE(form.statusText(), QStringLiteral("<font color=\"red\"><b>Disconnected</b></font>"));
    form.connectBus();
    form.receive({1, 2});
    form.click("btnStop");
    QCOMPARE(form.log(), QStringLiteral("002"));
}

void TestFileLoggerFaults::armedTimeStartsWithoutAConnection()
{
    LoggerForm form;
    form.tick("gbStartTriggersTime");
    form.setTime("dateStart", QDateTime(QDate(2020, 1, 1), QTime(0, 0)));
    form.click("btnStartTriggers");
    form.window->canSchedulerChanged(nullptr);
    QVERIFY(form.waitForPolls(1));
    QVERIFY(form.isLogging());
}

QTEST_MAIN(TestFileLoggerFaults)
#include "tst_fileloggerfaults.moc"
