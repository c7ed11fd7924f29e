#include "loggerform.h"

#include "randomframes.h"

class TestFileLoggerWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // What is in the file.
    void logBeginsWithTheNamesOfItsColumns();
    void eachFrameIsALine();
    void countShowsTheFramesOfThisLog();
    void fileIsOverwritten();
    void framesOutsideALogAreNotKept();
    void frameIsCopiedOnItsOwnThread();
    void fileCanBeOpenedWithoutALog();
    void nothingIsNoFrame();

    // Start and stop by hand.
    void logStarts_data();
    void logStarts();
    void logStops_data();
    void logStops();
    void stopWithoutALogIsHarmless();
    void fileStaysTheSameWhileLogging();
    void hidingAloneDoesNotStop();
    void destructionCompletesTheLog();

    // The filter.
    void filterDecidesWhatIsLogged_data();
    void filterDecidesWhatIsLogged();
    void filterOfARunningLogStays();

    // The connection.
    void schedulerTakesTheWarningAway();
    void lostConnectionEndsTheLog();
    void lostConnectionWithoutALogIsOnlyShown();
    void schedulerWithoutAdapterBringsNoFrames();
    void sameSchedulerAgainBringsNoFrameTwice();
    void earlierAdapterIsStillHeard();

private:
    std::unique_ptr<LoggerForm> m_form;
};

void TestFileLoggerWindow::init()
{
    LoggerForm::forgetSettings();
    m_form = std::make_unique<LoggerForm>();
}

void TestFileLoggerWindow::cleanup()
{
    m_form.reset();
}

void TestFileLoggerWindow::logBeginsWithTheNamesOfItsColumns()
{
    m_form->click("btnStart");
    m_form->click("btnStop");
    QCOMPARE(m_form->content(), QByteArray("# timestamp id (dlc): data\n"));
}

void TestFileLoggerWindow::eachFrameIsALine()
{
    RandomFrames random;
    QByteArray expected = "# timestamp id (dlc): data\n";
    m_form->click("btnStart");
    for (int i = 0; i < 1000; ++i) {
        CAN::CanRxMessage record = random.next();
        expected += m_form->window->message2Str(&record);
        m_form->adapter.receive(record);
    }
    m_form->click("btnStop");
    QCOMPARE(m_form->content(), expected);
    QVERIFY(expected.startsWith("# timestamp id (dlc): data\n "));
}

void TestFileLoggerWindow::countShowsTheFramesOfThisLog()
{
    m_form->click("btnStart");
    m_form->receive({1, 2, 3});
    QCOMPARE(m_form->countText(), QStringLiteral("3"));
    m_form->click("btnStop");
    m_form->receive(4);
    QCOMPARE(m_form->countText(), QStringLiteral("3"));
    m_form->click("btnStart");
    m_form->receive(5);
    QCOMPARE(m_form->countText(), QStringLiteral("1"));
}

void TestFileLoggerWindow::fileIsOverwritten()
{
    m_form->click("btnStart");
    m_form->receive({1, 2, 3});
    m_form->click("btnStop");
    m_form->click("btnStart");
    m_form->receive(4);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("004"));
}

void TestFileLoggerWindow::framesOutsideALogAreNotKept()
{
    m_form->receive(1);
    m_form->click("btnStart");
    m_form->receive(2);
    m_form->click("btnStop");
    m_form->receive(3);
    QCOMPARE(m_form->log(), QStringLiteral("002"));
}

void TestFileLoggerWindow::frameIsCopiedOnItsOwnThread()
{
    m_form->click("btnStart");
    FakeAdapter::onReceiveThread([this] { m_form->receive(0x123); });
    QCOMPARE(m_form->countText(), QString());
    QTRY_COMPARE(m_form->countText(), QStringLiteral("1"));
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("123"));
}

void TestFileLoggerWindow::fileCanBeOpenedWithoutALog()
{
    QVERIFY(m_form->window->createOutputFile());
    m_form->receive(1);
    m_form->window.reset();
    QCOMPARE(m_form->content(), QByteArray("# timestamp id (dlc): data\n"));
}

void TestFileLoggerWindow::nothingIsNoFrame()
{
    m_form->click("btnStart");
    emit m_form->adapter.newCanMessage(nullptr);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QString());
}

void TestFileLoggerWindow::logStarts_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("by the button") << false;
    QTest::newRow("by the menu") << true;
}

void TestFileLoggerWindow::logStarts()
{
    QFETCH(bool, byMenu);
    if (byMenu)
        m_form->find<QAction>("action_Start_Logging")->trigger();
    else
        m_form->click("btnStart");
    QCOMPARE(m_form->statusText(), QStringLiteral("Logging ..."));
    QVERIFY(m_form->isEnabled("btnStop"));
    QVERIFY(!m_form->isEnabled("btnStart"));
    QVERIFY(!m_form->isEnabled("btnStartTriggers"));
    QVERIFY(!m_form->find<QAction>("action_Start_Logging")->isEnabled());
    m_form->receive(1);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001"));
}

void TestFileLoggerWindow::logStops_data()
{
    QTest::addColumn<LoggerAction>("stop");
    QTest::addColumn<bool>("hides");
    QTest::newRow("by the button") << LoggerAction([](LoggerForm &form) { form.click("btnStop"); }) << false;
    QTest::newRow("by the application") << LoggerAction([](LoggerForm &form) { form.window->stopAction(); }) << false;
    QTest::newRow("by the menu") << LoggerAction([](LoggerForm &form) {
        form.find<QAction>("action_Stop_close")->trigger();
    }) << true;
    QTest::newRow("by the close button") << LoggerAction([](LoggerForm &form) { form.window->close(); }) << true;
}

void TestFileLoggerWindow::logStops()
{
    QFETCH(LoggerAction, stop);
    QFETCH(bool, hides);
    const QSignalSpy hidden(m_form->window.get(), &FileLoggerWindow::hidden);
    m_form->click("btnStart");
    m_form->receive(1);
    stop(*m_form);
    QCOMPARE(m_form->log(), QStringLiteral("001"));
    QCOMPARE(m_form->statusText(), QStringLiteral("stopped"));
    QVERIFY(!m_form->isEnabled("btnStop"));
    for (const char *name : {"btnStart", "edtFilePath", "btnFileSelect", "gbStartTriggers", "gbStopTriggers",
                             "btnStartTriggers", "btnStopTriggers"})
        QVERIFY2(m_form->isEnabled(name), name);
    QVERIFY(m_form->find<QAction>("action_Start_Logging")->isEnabled());
    QCOMPARE(m_form->window->isHidden(), hides);
    QCOMPARE(hidden.count(), hides ? 1 : 0);
}

void TestFileLoggerWindow::stopWithoutALogIsHarmless()
{
    m_form->window->stopAction();
    QCOMPARE(m_form->content(), QByteArray("no file"));
    QCOMPARE(m_form->statusText(), QStringLiteral("stopped"));
}

void TestFileLoggerWindow::fileStaysTheSameWhileLogging()
{
    m_form->click("btnStart");
    QVERIFY(!m_form->isEnabled("edtFilePath"));
    QVERIFY(!m_form->isEnabled("btnFileSelect"));
}

void TestFileLoggerWindow::hidingAloneDoesNotStop()
{
    m_form->click("btnStart");
    m_form->window->hide();
    m_form->receive(1);
    m_form->window->stopAction();
    QCOMPARE(m_form->log(), QStringLiteral("001"));
}

void TestFileLoggerWindow::destructionCompletesTheLog()
{
    m_form->click("btnStart");
    m_form->receive(1);
    m_form->window.reset();
    QCOMPARE(m_form->log(), QStringLiteral("001"));
}

void TestFileLoggerWindow::filterDecidesWhatIsLogged_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("logged");
    const auto row = [](const char *filter, const char *logged) {
        QTest::newRow(filter) << QString::fromLatin1(filter) << QString::fromLatin1(logged);
    };
    row("", "000 001 005 100 10f 110 200 1fffffff");
    row("abc", "000 001 005 100 10f 110 200 1fffffff");
    row("5-", "000 001 005 100 10f 110 200 1fffffff");
    row("0x100-0x10F;0x200", "100 10f 200");
    QTest::newRow("all separators") << QStringLiteral("1\n5,0x110;") << QStringLiteral("001 005 110");
    row("0-0x1FFFFFFF", "000 001 005 100 10f 110 200 1fffffff");
    row("0-0x7FFFFFFF", "000 001 005 100 10f 110 200 1fffffff");
    row("0x300", "");
}

void TestFileLoggerWindow::filterDecidesWhatIsLogged()
{
    QFETCH(QString, filter);
    QFETCH(QString, logged);
    m_form->setFilter(filter);
    m_form->click("btnStart");
    m_form->receive({0, 1, 5, 0x100, 0x10F, 0x110, 0x200, 0x1FFFFFFF});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), logged);
    QCOMPARE(m_form->countText().toInt(), logged.split(QLatin1Char(' '), Qt::SkipEmptyParts).size());
}

void TestFileLoggerWindow::filterOfARunningLogStays()
{
    m_form->setFilter(QStringLiteral("1"));
    m_form->click("btnStart");
    m_form->setFilter(QStringLiteral("2"));
    m_form->receive({1, 2});
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001"));
}

namespace {
const QString disconnectedText = QStringLiteral("<font color=\"red\"><b>Disconnected</b></font>");
} // namespace

void TestFileLoggerWindow::schedulerTakesTheWarningAway()
{
    QCOMPARE(m_form->statusText(), QString());
    m_form->window->canSchedulerChanged(nullptr);
    QCOMPARE(m_form->statusText(), disconnectedText);
    QCOMPARE(m_form->statusLabels().last()->textFormat(), Qt::RichText);
    m_form->connectBus();
    QCOMPARE(m_form->statusText(), QString());
}

void TestFileLoggerWindow::lostConnectionEndsTheLog()
{
    m_form->click("btnStart");
    m_form->receive(1);
    m_form->window->canSchedulerChanged(nullptr);
    QCOMPARE(m_form->log(), QStringLiteral("001 CAN connection lost"));
    QVERIFY(!m_form->isLogging());
    QCOMPARE(m_form->statusText(), disconnectedText);
}

void TestFileLoggerWindow::lostConnectionWithoutALogIsOnlyShown()
{
    m_form->click("btnStart");
    m_form->click("btnStop");
    m_form->window->canSchedulerChanged(nullptr);
    QCOMPARE(m_form->log(), QString());
    QCOMPARE(m_form->statusText(), disconnectedText);
}

void TestFileLoggerWindow::schedulerWithoutAdapterBringsNoFrames()
{
    CanScheduler idle(nullptr);
    m_form->window->canSchedulerChanged(&idle);
    QCOMPARE(m_form->statusText(), QString());
}

void TestFileLoggerWindow::sameSchedulerAgainBringsNoFrameTwice()
{
    m_form->connectBus();
    m_form->window->canSchedulerChanged(nullptr);
    m_form->connectBus();
    m_form->click("btnStart");
    m_form->receive(1);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("001"));
}

void TestFileLoggerWindow::earlierAdapterIsStillHeard()
{
    FakeAdapter next;
    CanScheduler nextScheduler(&next);
    m_form->window->canSchedulerChanged(&nextScheduler);
    m_form->click("btnStart");
    next.receive(received(2));
    m_form->receive(1);
    m_form->click("btnStop");
    QCOMPARE(m_form->log(), QStringLiteral("002 001"));
}

QTEST_MAIN(TestFileLoggerWindow)
#include "tst_fileloggerwindow.moc"
