#include "interfacecommands.h"

#include "canmultiinterfacedialog.h"
#include "demosession.h"
#include "mainwindow.h"
#include "messageboxes.h"
#include "settingshome.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <memory>

/// A user at the overview, which the window's command opens.
class TestInterfaceCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void closingTheOverviewLeavesTheConnection();
    void theOverviewMayConnect();
    void whatTheOverviewChangesIsSaved();
    void whileConnectedInterfacesStayAsTheyAre();

private:
    void useOverview(const QList<const char *> &buttons)
    {
        QTimer::singleShot(0, this, [=] {
            QWidget *dialog = qobject_cast<CanMultiInterfaceDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog != nullptr);
            for (const char *button : buttons)
                dialog->findChild<QPushButton *>(QLatin1String(button))->click();
            dialog->hide(); // if the user left it open
        });
        action()->trigger();
    }
    QAction *action() const { return m_window->findChild<QAction *>(QStringLiteral("actionInterfaces")); }

    std::unique_ptr<SettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_windows;
    std::unique_ptr<MessageBoxes> m_boxes;
    std::unique_ptr<MainWindow> m_window;
};

void TestInterfaceCommands::init()
{
    m_home = std::make_unique<SettingsHome>();
    m_windows = std::make_unique<QTemporaryDir>();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_windows->path());
    QCoreApplication::setOrganizationName(QStringLiteral("Harrier"));
    m_boxes = std::make_unique<MessageBoxes>();
    m_window = std::make_unique<MainWindow>();
    m_window->useSettings();
    m_window->demo()->setPort(QStringLiteral("45989"));
    m_window->demo()->addInterfaces();
}

void TestInterfaceCommands::cleanup()
{
    m_window.reset();
    m_boxes.reset();
    m_windows.reset();
    m_home.reset();
}

void TestInterfaceCommands::closingTheOverviewLeavesTheConnection()
{
    useOverview({"btnClose"});
    QVERIFY(!m_window->session()->isConnected());
    // Interfaces that the workbench itself makes are such as the form describes them.
    QVERIFY(m_boxes->shown.isEmpty());
}

void TestInterfaceCommands::theOverviewMayConnect()
{
    useOverview({"btnUpdateCloseConnect"});
    QVERIFY(m_window->session()->isConnected());
    QVERIFY(m_boxes->shown.isEmpty());
}

void TestInterfaceCommands::whatTheOverviewChangesIsSaved()
{
    useOverview({"btnRemoveSelected", "btnClose"});
    Session next;
    QVERIFY(next.openSettings());
    QCOMPARE(next.adapters()->getAdapterCount(), quint16(1));
}

void TestInterfaceCommands::whileConnectedInterfacesStayAsTheyAre()
{
    QVERIFY(action()->isEnabled());
    m_window->connectAdapters();
    QVERIFY(!action()->isEnabled());
    m_window->disconnectAdapters();
    QVERIFY(action()->isEnabled());
}

QTEST_MAIN(TestInterfaceCommands)
#include "tst_interfacecommands.moc"
