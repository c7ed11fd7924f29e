#include "fakeadapter.h"
#include "recordings.h"
#include "replaycontroller.h"

#include <QSignalSpy>
#include <QTest>

namespace {
constexpr int patience = 10'000; // ms
} // namespace

class TestReplayController : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void framesGoOutThroughTheAdapter();
    void ignoredIdentifiersAreNotSent();
    void missingFileIsTold();
    void folderIsNoRecording();
    void pauseBeforeTheStartHoldsTheFirstFrame();
    void settingsHoldForTheNextReplay();
    void stopInALongWaitEndsAtOnce();
    void newStartReplacesARunningReplay();
    void destructionInALongWaitDoesNotBlock();
    void wordsTellHowFarItIs_data();
    void wordsTellHowFarItIs();

private:
    ReplayController::Recording recording(const QString &file, const QSet<quint32> &ignored = {}) const
    {
        return {file, m_adapter.get(), ignored};
    }

    Recordings m_recordings;
    std::unique_ptr<FakeAdapter> m_adapter;
    std::unique_ptr<ReplayController> m_controller;
};

void TestReplayController::init()
{
    m_adapter = std::make_unique<FakeAdapter>();
    m_adapter->setRunning(true);
    m_adapter->takeCalls();
    m_controller = std::make_unique<ReplayController>();
}

void TestReplayController::cleanup()
{
    m_controller.reset();
    m_adapter.reset();
}

void TestReplayController::framesGoOutThroughTheAdapter()
{
    const QSignalSpy running(m_controller.get(), &ReplayController::runningChanged);
    const QSignalSpy ended(m_controller.get(), &ReplayController::ended);
    QVERIFY(m_controller->start(recording(m_recordings.log(0x123, 3, 0))));
    QVERIFY(m_controller->isRunning());
    QCOMPARE(m_controller->adapter(), m_adapter.get());
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, patience);
    QCOMPARE(running.count(), 2);
    QVERIFY(!m_controller->isRunning());
    QVERIFY(m_controller->adapter() == nullptr);
    QCOMPARE(
        m_adapter->calls(),
        QStringList({QStringLiteral("write 123#00"), QStringLiteral("write 123#01"), QStringLiteral("write 123#02")}));
}

void TestReplayController::ignoredIdentifiersAreNotSent()
{
    const QSignalSpy ended(m_controller.get(), &ReplayController::ended);
    m_controller->start(recording(m_recordings.log(0x123, 3, 0), {0x123}));
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, patience);
    QCOMPARE(m_adapter->calls(), QStringList());
}

void TestReplayController::missingFileIsTold()
{
    const QSignalSpy status(m_controller.get(), &ReplayController::statusChanged);
    QVERIFY(!m_controller->start(recording(m_recordings.path(QStringLiteral("missing.txt")))));
    QVERIFY(!m_controller->isRunning());
    QCOMPARE(status.count(), 1);
    QVERIFY(status.first().first().toString().contains(QStringLiteral("missing.txt\" cannot be read")));
}

void TestReplayController::folderIsNoRecording()
{
    QVERIFY(!m_controller->start(recording(m_recordings.path(QString()))));
}

void TestReplayController::pauseBeforeTheStartHoldsTheFirstFrame()
{
    const QSignalSpy ended(m_controller.get(), &ReplayController::ended);
    m_controller->setPaused(true);
    m_controller->start(recording(m_recordings.log(0x123, 3, 0)));
    m_controller->step();
    QTRY_COMPARE_WITH_TIMEOUT(m_adapter->calls(), QStringList{QStringLiteral("write 123#00")}, patience);
    QCOMPARE(ended.count(), 0);
    m_controller->setPaused(false);
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, patience);
    QCOMPARE(m_adapter->calls().size(), 3);
}

void TestReplayController::settingsHoldForTheNextReplay()
{
    // Gaps that fast forward does not wait for.
    const QSignalSpy ended(m_controller.get(), &ReplayController::ended);
    m_controller->setFastForward(true);
    m_controller->start(recording(m_recordings.log(0x123, 3, 1000)));
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, patience);
    m_controller->start(recording(m_recordings.log(0x123, 3, 1000)));
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 2, patience);
    QCOMPARE(m_adapter->calls().size(), 6);
}

void TestReplayController::stopInALongWaitEndsAtOnce()
{
    const QSignalSpy ended(m_controller.get(), &ReplayController::ended);
    m_controller->start(recording(m_recordings.log(0x123, 2, 600'000)));
    QTRY_COMPARE_WITH_TIMEOUT(m_adapter->calls().size(), 1, patience);
    m_controller->stop();
    QVERIFY(!m_controller->isRunning());
    QCOMPARE(ended.count(), 0); // it was stopped, it did not come to its end
}

void TestReplayController::newStartReplacesARunningReplay()
{
    const QSignalSpy ended(m_controller.get(), &ReplayController::ended);
    m_controller->start(recording(m_recordings.log(0x123, 2, 600'000, QStringLiteral("long.txt"))));
    QTRY_COMPARE_WITH_TIMEOUT(m_adapter->calls().size(), 1, patience);
    m_adapter->takeCalls();
    m_controller->start(recording(m_recordings.log(0x200, 2, 0)));
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, patience);
    QCOMPARE(m_adapter->calls(), QStringList({QStringLiteral("write 200#00"), QStringLiteral("write 200#01")}));
}

void TestReplayController::destructionInALongWaitDoesNotBlock()
{
    m_controller->start(recording(m_recordings.log(0x123, 2, 600'000)));
    QTRY_COMPARE_WITH_TIMEOUT(m_adapter->calls().size(), 1, patience);
    // Were it to wait, it would do so for ten minutes, and the test program has less.
    m_controller.reset();
    QCOMPARE(m_adapter->calls().size(), 1);
}

void TestReplayController::wordsTellHowFarItIs_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<double>("percent");
    QTest::newRow("loading") << QStringLiteral("Loading 12.50 % completed") << 12.5;
    QTest::newRow("playing") << QStringLiteral("CAN replay active - 99.99 % completed. Approx. 00:00:01 left") << 99.99;
    QTest::newRow("text path") << QStringLiteral("CAN replay active - nan % completed. Approx. 00:00:00 left") << -1.0;
    QTest::newRow("gap") << QStringLiteral(" 12 s gap to next message, don't worry") << -1.0;
    QTest::newRow("more than all") << QStringLiteral("Loading 1000.00 % completed") << 100.0;
}

void TestReplayController::wordsTellHowFarItIs()
{
    QFETCH(QString, words);
    QTEST(ReplayController::percentIn(words).value_or(-1.0), "percent");
}

QTEST_MAIN(TestReplayController)
#include "tst_replaycontroller.moc"
