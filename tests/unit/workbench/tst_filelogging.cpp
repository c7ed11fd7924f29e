#include "fakeadapter.h"
#include "fileloggerwindow.h"
#include "mainwindow.h"
#include "messages.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class TestFileLogging : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void commandShowsTheOneWindow();
    void closedWindowComesBackAsItWas();
    void windowOfAStandingConnectionLogs();
    void windowFollowsTheConnection();
    void lostConnectionEndsTheLog();
    void logIsWholeWhenTheWorkbenchEnds();
    void openLoggerKeepsNobodyFromQuitting();

private:
    FileLoggerWindow *openLogger()
    {
        m_window->findChild<QAction *>(QStringLiteral("actionFileLogger"))->trigger();
        return m_window->findChild<FileLoggerWindow *>();
    }
    FakeAdapter *connectAdapter()
    {
        auto *adapter = new FakeAdapter(AbstractCanAdapter::CanAdapterDemo, QStringLiteral("A"));
        m_window->session()->adapters()->addNewCanAdapter(adapter, true, true, false);
        m_window->connectAdapters();
        return adapter;
    }
    void startLog(FileLoggerWindow *logger)
    {
        logger->findChild<QLineEdit *>(QStringLiteral("edtFilePath"))
            ->setText(m_directory.filePath(QStringLiteral("log.txt")));
        logger->findChild<QPushButton *>(QStringLiteral("btnStart"))->click();
    }
    QByteArrayList lines() const
    {
        QFile file(m_directory.filePath(QStringLiteral("log.txt")));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().split('\n') : QByteArrayList();
    }

    QTemporaryDir m_directory;
    std::unique_ptr<MainWindow> m_window;
};

void TestFileLogging::init()
{
    QSettings().clear();
    m_window = std::make_unique<MainWindow>();
}

void TestFileLogging::cleanup()
{
    m_window.reset();
}

void TestFileLogging::commandShowsTheOneWindow()
{
    FileLoggerWindow *logger = openLogger();
    QVERIFY(logger->isVisible());
    QCOMPARE(openLogger(), logger);
    QCOMPARE(m_window->findChildren<FileLoggerWindow *>().size(), 1);
}

void TestFileLogging::closedWindowComesBackAsItWas()
{
    FileLoggerWindow *logger = openLogger();
    logger->findChild<QLineEdit *>(QStringLiteral("edtStartIds"))->setText(QStringLiteral("0x181"));
    logger->close();
    QVERIFY(!logger->isVisible());
    QCOMPARE(openLogger(), logger);
    QVERIFY(logger->isVisible());
    QCOMPARE(logger->findChild<QLineEdit *>(QStringLiteral("edtStartIds"))->text(), QStringLiteral("0x181"));
}

void TestFileLogging::windowOfAStandingConnectionLogs()
{
    FakeAdapter *adapter = connectAdapter();
    FileLoggerWindow *logger = openLogger();
    startLog(logger);
    FakeAdapter::onReceiveThread([&] { adapter->receive(at(0, dataFrame(0x123, "0A"))); });
    QCoreApplication::processEvents();
    logger->stopAction();
    QCOMPARE(lines().size(), 2);
    QVERIFY(lines().last().contains("0x123/291"));
}

void TestFileLogging::windowFollowsTheConnection()
{
    FileLoggerWindow *logger = openLogger();
    FakeAdapter *adapter = connectAdapter();
    startLog(logger);
    FakeAdapter::onReceiveThread([&] { adapter->receive(at(0, dataFrame(0x123, "0A"))); });
    QCoreApplication::processEvents();
    logger->stopAction();
    QCOMPARE(lines().size(), 2);
}

void TestFileLogging::lostConnectionEndsTheLog()
{
    connectAdapter();
    startLog(openLogger());
    m_window->disconnectAdapters();
    QCOMPARE(lines().last(), QByteArray("CAN connection lost"));
}

void TestFileLogging::logIsWholeWhenTheWorkbenchEnds()
{
    constexpr int frames = 100;
    FakeAdapter *adapter = connectAdapter();
    startLog(openLogger());
    FakeAdapter::onReceiveThread([&] {
        for (int i = 0; i < frames; ++i)
            adapter->receive(at(i, dataFrame(0x123)));
    });
    QCoreApplication::processEvents();
    m_window.reset();
    QCOMPARE(lines().size(), frames + 2);
    QCOMPARE(lines().last(), QByteArray("CAN connection lost"));
}

void TestFileLogging::openLoggerKeepsNobodyFromQuitting()
{
    constexpr int stillRunning = 1;
    m_window->show();
    openLogger();
    QTimer::singleShot(0, m_window.get(), &QWidget::close);
    QTimer watchdog;
    connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(stillRunning); });
    watchdog.start(5000);
    QCOMPARE(QApplication::exec(), 0);
}

QTEST_MAIN(TestFileLogging)
#include "tst_filelogging.moc"
