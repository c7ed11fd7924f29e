#include "slcanpair.h"

#include "emptystate.h"
#include "frameview.h"
#include "mainwindow.h"
#include "messageboxes.h"
#include "tracepage.h"

#include <QAction>
#include <QLabel>
#include <QStatusBar>

/// The window of the workbench on links of the kernel.
class TestVcanWorkbench : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void linksAreOfferedAndConnected();
    void linkThatIsMadeIsOffered();
    void linkThatVanishesIsToldAndComesBack();
    void stateOfTheControllerIsInSight();

private:
    QAction *action(const char *name) const { return m_window->findChild<QAction *>(QString::fromLatin1(name)); }
    QString connection() const { return m_window->findChild<QLabel *>(QStringLiteral("lblState"))->text(); }
    EmptyState *emptyState() const { return m_window->tracePage()->emptyState(); }

    std::unique_ptr<MainWindow> m_window;
};

void TestVcanWorkbench::init()
{
    m_window = std::make_unique<MainWindow>();
    m_window->show();
}

void TestVcanWorkbench::cleanup()
{
    m_window.reset();
}

void TestVcanWorkbench::linksAreOfferedAndConnected()
{
    QCOMPARE(emptyState()->title(), QStringLiteral("CAN links found: vcan0, vcan1"));
    action("actionLinks")->trigger();
    QCOMPARE(connection(), QStringLiteral("Connected: vcan0, vcan1"));
    QVERIFY(Vcan::run("cansend vcan1 123#1122"));
    QAbstractItemModel *rows = m_window->tracePage()->view()->model();
    QTRY_COMPARE_WITH_TIMEOUT(rows->rowCount(), 1, Vcan::patience);
}

void TestVcanWorkbench::linkThatIsMadeIsOffered()
{
    QVERIFY(Vcan::run("ip link add vcan7 type vcan"));
    QTRY_COMPARE_WITH_TIMEOUT(emptyState()->title(), QStringLiteral("CAN links found: vcan0, vcan1, vcan7"),
                              Vcan::patience);
    QVERIFY(Vcan::run("ip link del vcan7"));
    QTRY_COMPARE_WITH_TIMEOUT(emptyState()->title(), QStringLiteral("CAN links found: vcan0, vcan1"), Vcan::patience);
}

void TestVcanWorkbench::linkThatVanishesIsToldAndComesBack()
{
    MessageBoxes boxes;
    action("actionLinks")->trigger();
    QVERIFY(Vcan::run("ip link del vcan1"));
    QTRY_VERIFY_WITH_TIMEOUT(connection().contains(QStringLiteral("Failed: vcan1")), Vcan::patience);
    QVERIFY(Vcan::run("ip link add vcan1 type vcan"));
    QVERIFY(Vcan::run("ip link set vcan1 mtu 72 up"));
    QTRY_VERIFY_WITH_TIMEOUT(m_window->statusBar()->currentMessage().contains(QStringLiteral("vcan1 is gone")),
                             Vcan::patience);
    action("actionDisconnect")->trigger();
    action("actionConnect")->trigger();
    QCOMPARE(connection(), QStringLiteral("Connected: vcan0, vcan1"));
}

void TestVcanWorkbench::stateOfTheControllerIsInSight()
{
    SlcanPair pair;
    QVERIFY(pair.isReady());
    QTRY_VERIFY_WITH_TIMEOUT(emptyState()->title().contains(QStringLiteral("slcan0, slcan1")), Vcan::patience);
    action("actionLinks")->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(connection(), QStringLiteral("Connected: slcan0, slcan1, vcan0, vcan1"), Vcan::patience);
    pair.say("sp000200");
    QTRY_COMPARE_WITH_TIMEOUT(connection(), QStringLiteral("Connected: slcan0 (error passive), slcan1, vcan0, vcan1"),
                              Vcan::patience);
}

QTEST_MAIN(TestVcanWorkbench)
#include "tst_vcanworkbench.moc"
