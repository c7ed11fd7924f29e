#include "canopenmessagebuilderdialog.h"
#include "emptystate.h"
#include "fakefamily.h"
#include "framemarks.h"
#include "frameview.h"
#include "mainwindow.h"
#include "messageboxes.h"
#include "messages.h"
#include "settingshome.h"
#include "tracepage.h"
#include "transmitpanel.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void withoutInterfacesTheDemoIsOffered();
    void linksOfTheComputerAreOfferedAtOnce();
    void linkThatIsPluggedInIsOffered();
    void controllerStateAndLostLinkStandInTheStatusBar();
    void connectWithoutInterfacesSaysWhatToDo();
    void commandsFollowTheConnection();
    void emptyStateFollowsTheConnection();
    void framesShowInBothViews();
    void countersShowWhatTheInterfacesCount();
    void lossesAreHighlighted();
    void stallsStandInTheToolTip();
    void transmitPanelFollowsTheConnection();
    void buildMessageFillsThePanel();
    void identifierOfTheCurrentFrameIsMarked();
    void withoutCurrentFrameMarkingSaysWhatToDo();
    void markStartsFromTheCurrentFrame();
    void marksAreRememberedWhenAskedFor();
    void replayPanelOffersTheConnectedInterfaces();
    void recordingIsInSight();
    void openedTraceShowsInBothViews();
    void traceCommandsFollowTheSituation();
    void clearTraceEmptiesBothViews();
    void recordMenuListsTheInterfaces();
    void timeMenuSwitchesTheColumn();
    void lostConnectionIsTold();
    void keysAreListed();
    void aboutTellsTheVersions();
    void everyCommandHasItsWords();
    void mnemonicsOfTheMenuBarDiffer();
    void closingTheWindowDisconnects();
    void appearanceIsRememberedWhenAskedFor();
    void damagedAppearanceIsLeftAside();

private:
    FakeAdapter *addAdapter(const char *name, bool primary = true)
    {
        auto *adapter = new FakeAdapter(AbstractCanAdapter::CanAdapterDemo, QString::fromLatin1(name));
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionAdapterName, QString::fromLatin1(name));
        m_window->session()->adapters()->addNewCanAdapter(adapter, primary, true, false);
        return adapter;
    }
    QAction *action(const char *name) const { return m_window->findChild<QAction *>(QString::fromLatin1(name)); }
    QLabel *label(const char *name) const { return m_window->findChild<QLabel *>(QString::fromLatin1(name)); }
    /// Frames that show in both views.
    void receive(const std::vector<CAN::CanMessage> &frames)
    {
        FakeAdapter *adapter = addAdapter("A");
        action("actionConnect")->trigger();
        FakeAdapter::onReceiveThread([&] {
            for (const CAN::CanMessage &frame : frames)
                adapter->receive(at(0, frame));
        });
        QTRY_COMPARE_WITH_TIMEOUT(rows(m_window->tracePage()), int(frames.size()), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(rows(m_window->identifierPage()) > 0, 5000);
    }
    int rows(const TracePage *page) const { return page->view()->model()->rowCount(); }

    FakeFamily *m_links = nullptr;
    std::unique_ptr<MainWindow> m_window;
};

void TestMainWindow::initTestCase()
{
    QLocale::setDefault(QLocale::c());
}

void TestMainWindow::init()
{
    // Links of the computer that runs the test are none of its business.
    m_links = FakeFamily::install(AbstractCanAdapter::CanAdapterSocketCan, QStringLiteral("SocketCAN"));
    m_window = std::make_unique<MainWindow>();
}

void TestMainWindow::cleanup()
{
    m_window.reset();
}

void TestMainWindow::withoutInterfacesTheDemoIsOffered()
{
    QVERIFY(m_window->tracePage()->showsEmptyState());
    QCOMPARE(m_window->tracePage()->emptyState()->title(), QStringLiteral("No CAN interface yet"));
    QVERIFY(action("actionDemo")->isEnabled());
    QCOMPARE(label("lblState")->text(), QStringLiteral("Not connected"));
}

void TestMainWindow::linksOfTheComputerAreOfferedAtOnce()
{
    m_window.reset();
    m_links->deviceMap.insert(QStringLiteral("can0|mcp251xfd"), 0);
    m_window = std::make_unique<MainWindow>();
    QCOMPARE(m_window->tracePage()->emptyState()->title(), QStringLiteral("CAN links found: can0"));
    m_window->findChild<QToolButton *>(QStringLiteral("btnEmptyAction"))->click();
    QCOMPARE(label("lblState")->text(), QStringLiteral("Connected: can0"));
    QVERIFY(!action("actionLinks")->isEnabled());
}

void TestMainWindow::linkThatIsPluggedInIsOffered()
{
    QVERIFY(!action("actionLinks")->isEnabled());
    m_links->deviceMap.insert(QStringLiteral("vcan0"), 0);
    emit CanAdapterFactory::notifier()->devicesChanged(AbstractCanAdapter::CanAdapterSocketCan);
    QVERIFY(action("actionLinks")->isEnabled());
    QCOMPARE(m_window->tracePage()->emptyState()->title(), QStringLiteral("CAN links found: vcan0"));
    QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("There is a new CAN link: vcan0."));
    action("actionConnect")->trigger();
    QCOMPARE(m_window->statusBar()->currentMessage(),
             QStringLiteral("There is no CAN interface to connect. Connect the CAN links: press Ctrl+F5."));
}

void TestMainWindow::controllerStateAndLostLinkStandInTheStatusBar()
{
    FakeAdapter *adapter = addAdapter("can0");
    action("actionConnect")->trigger();
    const QColor usual = label("lblState")->palette().color(QPalette::WindowText);
    adapter->changeState(CAN::CanStateBusOff, CanTimeStamp());
    QTRY_COMPARE_WITH_TIMEOUT(label("lblState")->text(), QStringLiteral("Connected: can0 (bus off)"), 5000);
    QVERIFY(label("lblState")->palette().color(QPalette::WindowText) != usual);
    adapter->changeState(CAN::CanStateErrorActive, CanTimeStamp());
    QTRY_COMPARE_WITH_TIMEOUT(label("lblState")->text(), QStringLiteral("Connected: can0"), 5000);
    QCOMPARE(label("lblState")->palette().color(QPalette::WindowText), usual);
    MessageBoxes boxes;
    adapter->fail(QStringLiteral("can0 is gone."));
    QTRY_COMPARE_WITH_TIMEOUT(label("lblState")->text(), QStringLiteral("Failed: can0"), 5000);
    QVERIFY(label("lblState")->toolTip().contains(QStringLiteral("can0: can0 is gone.")));
}

void TestMainWindow::connectWithoutInterfacesSaysWhatToDo()
{
    action("actionConnect")->trigger();
    QCOMPARE(m_window->statusBar()->currentMessage(),
             QStringLiteral("There is no CAN interface to connect. Start the demo: press Ctrl+D."));
}

void TestMainWindow::commandsFollowTheConnection()
{
    addAdapter("A");
    QVERIFY(action("actionConnect")->isEnabled());
    QVERIFY(!action("actionDisconnect")->isEnabled());
    QVERIFY(action("actionDemo")->isEnabled()); // the interface is one for the embedded bus
    action("actionConnect")->trigger();
    QVERIFY(!action("actionConnect")->isEnabled());
    QVERIFY(action("actionDisconnect")->isEnabled());
    action("actionDisconnect")->trigger();
    QVERIFY(action("actionConnect")->isEnabled());
    QVERIFY(!action("actionDisconnect")->isEnabled());
}

void TestMainWindow::emptyStateFollowsTheConnection()
{
    addAdapter("A");
    const EmptyState *state = m_window->tracePage()->emptyState();
    QCOMPARE(state->title(), QStringLiteral("Not connected"));
    QVERIFY(state->text().contains(QStringLiteral("F5")));
    action("actionConnect")->trigger();
    QCOMPARE(state->title(), QStringLiteral("Waiting for the first frame"));
    action("actionDisconnect")->trigger();
    QCOMPARE(state->title(), QStringLiteral("Not connected"));
}

void TestMainWindow::framesShowInBothViews()
{
    FakeAdapter *adapter = addAdapter("A");
    action("actionConnect")->trigger();
    FakeAdapter::onReceiveThread([adapter] {
        for (int i = 0; i < 10; ++i)
            adapter->receive(at(i * 1000, dataFrame(i % 2 == 0 ? 0x100 : 0x200, "01")));
    });
    QTRY_COMPARE_WITH_TIMEOUT(rows(m_window->tracePage()), 10, 5000);
    QTRY_COMPARE_WITH_TIMEOUT(rows(m_window->identifierPage()), 2, 5000);
    QVERIFY(!m_window->tracePage()->showsEmptyState());
    action("actionShowIdentifiers")->trigger();
    auto *tabs = m_window->findChild<QTabWidget *>(QStringLiteral("tabTrace"));
    QCOMPARE(tabs->currentWidget(), m_window->identifierPage());
    action("actionShowTrace")->trigger();
    QCOMPARE(tabs->currentWidget(), m_window->tracePage());
}

void TestMainWindow::countersShowWhatTheInterfacesCount()
{
    FakeAdapter *first = addAdapter("A");
    FakeAdapter *second = addAdapter("B", false);
    action("actionConnect")->trigger();
    QCOMPARE(label("lblState")->text(), QStringLiteral("Connected: A, B"));
    for (int i = 0; i < 3; ++i)
        first->receive(at(0, dataFrame(1)));
    second->receive(at(0, dataFrame(2)));
    CAN::CanMessage message = dataFrame(3);
    second->write(&message);
    QTRY_COMPARE_WITH_TIMEOUT(label("lblReceived")->text(), QStringLiteral("Received 4"), 5000);
    QTRY_COMPARE_WITH_TIMEOUT(label("lblSent")->text(), QStringLiteral("Sent 1"), 5000);
    QCOMPARE(label("lblLost")->text(), QStringLiteral("Lost 0"));
    QVERIFY(label("lblReceived")
                ->toolTip()
                .contains(QStringLiteral("A: connected; received 3, sent 0, lost 0\n"
                                         "B: connected; received 1, sent 1, lost 0")));
    action("actionDisconnect")->trigger();
    QCOMPARE(label("lblReceived")->text(), QStringLiteral("Received 4"));
}

void TestMainWindow::lossesAreHighlighted()
{
    FakeAdapter *adapter = addAdapter("A");
    action("actionConnect")->trigger();
    const QColor usual = label("lblReceived")->palette().color(QPalette::WindowText);
    QCOMPARE(label("lblLost")->palette().color(QPalette::WindowText), usual);
    adapter->writeResult = AbstractCanAdapter::WriteLost;
    CAN::CanMessage message = dataFrame(3);
    adapter->write(&message);
    QTRY_COMPARE_WITH_TIMEOUT(label("lblLost")->text(), QStringLiteral("Lost 1"), 5000);
    QVERIFY(label("lblLost")->palette().color(QPalette::WindowText) != usual);
    QVERIFY(label("lblLost")->font().bold());
}

void TestMainWindow::stallsStandInTheToolTip()
{
    QVERIFY(label("lblRate")->toolTip().contains(QStringLiteral("did not react")));
    QVERIFY(label("lblState")->toolTip().contains(QStringLiteral("did not react")));
}

void TestMainWindow::transmitPanelFollowsTheConnection()
{
    FakeAdapter *adapter = addAdapter("A");
    auto *send = m_window->transmitPanel()->findChild<QPushButton *>(QStringLiteral("btnSend"));
    QVERIFY(!send->isEnabled());
    action("actionConnect")->trigger();
    QVERIFY(send->isEnabled());
    adapter->takeCalls();
    send->click();
    QCOMPARE(adapter->calls(), QStringList{QStringLiteral("write 123#01020304")});
    action("actionDisconnect")->trigger();
    QVERIFY(!send->isEnabled());
}

void TestMainWindow::buildMessageFillsThePanel()
{
    action("actionBuildMessage")->trigger();
    auto *dialog = m_window->findChild<CANopenMessageBuilderDialog *>(QStringLiteral("dlgBuildMessage"));
    QVERIFY(dialog != nullptr);
    dialog->findChild<QPushButton *>(QStringLiteral("btnBuild"))->click();
    dialog->accept();
    QCOMPARE(m_window->transmitPanel()->input().identifier, QStringLiteral("000"));
    QCOMPARE(m_window->transmitPanel()->input().data, QStringLiteral("80 01"));
}

void TestMainWindow::identifierOfTheCurrentFrameIsMarked()
{
    receive({dataFrame(0x100), dataFrame(0x200)});
    m_window->tracePage()->view()->setCurrentIndex(m_window->tracePage()->view()->model()->index(1, 3));
    action("actionMarkIdentifier")->trigger();
    QCOMPARE(m_window->marks()->count(), 1);
    QCOMPARE(m_window->marks()->at(0).id.value, 0x200U);
    QVERIFY(!m_window->findChild<QWidget *>(QStringLiteral("markBar"))->isHidden());
    action("actionClearMarks")->trigger();
    QCOMPARE(m_window->marks()->count(), 0);
    QVERIFY(!action("actionClearMarks")->isEnabled());
}

void TestMainWindow::withoutCurrentFrameMarkingSaysWhatToDo()
{
    action("actionMarkIdentifier")->trigger();
    QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Select a frame first."));
    QCOMPARE(m_window->marks()->count(), 0);
}

void TestMainWindow::markStartsFromTheCurrentFrame()
{
    receive({dataFrame(0x100), dataFrame(0x200)});
    m_window->showPage(m_window->identifierPage());
    m_window->identifierPage()->view()->setCurrentIndex(m_window->identifierPage()->view()->model()->index(1, 0));
    action("actionMark")->trigger();
    auto *dialog = m_window->findChild<CANopenMessageBuilderDialog *>(QStringLiteral("dlgMarkFrames"));
    CANRAW::CanRawCompareMessage message;
    QVERIFY(dialog->getMessage(message));
    QCOMPARE(message.id.value, 0x200U);
}

void TestMainWindow::marksAreRememberedWhenAskedFor()
{
    const SettingsHome home;
    m_window->useSettings();
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
    m_window->marks()->add(CANRAW::CanRawCompareMessage());
    MainWindow again;
    QCOMPARE(again.marks()->count(), 0);
    again.useSettings();
    QCOMPARE(again.marks()->count(), 1);
}

void TestMainWindow::replayPanelOffersTheConnectedInterfaces()
{
    const auto *interfaces = m_window->findChild<QComboBox *>(QStringLiteral("cbReplayInterface"));
    addAdapter("A");
    QCOMPARE(interfaces->count(), 0);
    action("actionConnect")->trigger();
    QCOMPARE(interfaces->count(), 1);
    QCOMPARE(interfaces->itemText(0), QStringLiteral("A"));
    action("actionDisconnect")->trigger();
    QCOMPARE(interfaces->count(), 0);
}

void TestMainWindow::recordingIsInSight()
{
    const QTemporaryDir directory;
    QVERIFY(label("lblRecording")->isHidden());
    m_window->files()->startRecording(directory.filePath(QStringLiteral("a.qrm")));
    QVERIFY(action("actionRecordTrace")->isChecked());
    QCOMPARE(label("lblRecording")->text(), QStringLiteral("Recording to a.qrm"));
    QVERIFY(!label("lblRecording")->isHidden());
    action("actionRecordTrace")->trigger();
    QVERIFY(!m_window->files()->isRecording());
    QVERIFY(label("lblRecording")->isHidden());
}

void TestMainWindow::openedTraceShowsInBothViews()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.qrm"));
    DatachunkHandler trace;
    trace.appendCanMessage(at(0, dataFrame(0x100)));
    trace.appendCanMessage(at(1, dataFrame(0x200)));
    QVERIFY(trace.saveQrmFile(file));
    m_window->files()->open(file);
    QTRY_COMPARE_WITH_TIMEOUT(rows(m_window->tracePage()), 2, 5000);
    QTRY_COMPARE_WITH_TIMEOUT(rows(m_window->identifierPage()), 2, 5000);
}

void TestMainWindow::traceCommandsFollowTheSituation()
{
    QVERIFY(action("actionOpenTrace")->isEnabled());
    QVERIFY(!action("actionSaveTrace")->isEnabled());
    receive({dataFrame(0x100)});
    QTRY_VERIFY_WITH_TIMEOUT(action("actionSaveTrace")->isEnabled(), 5000);
    QVERIFY(!action("actionOpenTrace")->isEnabled()); // frames come in
    action("actionDisconnect")->trigger();
    QTRY_VERIFY_WITH_TIMEOUT(action("actionOpenTrace")->isEnabled(), 5000);
}

void TestMainWindow::clearTraceEmptiesBothViews()
{
    FakeAdapter *adapter = addAdapter("A");
    action("actionConnect")->trigger();
    adapter->receive(at(0, dataFrame(1)));
    QTRY_COMPARE_WITH_TIMEOUT(rows(m_window->identifierPage()), 1, 5000);
    action("actionClear")->trigger();
    QCOMPARE(rows(m_window->tracePage()), 0);
    QCOMPARE(rows(m_window->identifierPage()), 0);
    QVERIFY(m_window->tracePage()->showsEmptyState());
}

void TestMainWindow::recordMenuListsTheInterfaces()
{
    addAdapter("A");
    addAdapter("B", false);
    QMenu *menu = nullptr;
    const auto menus = m_window->findChildren<QMenu *>();
    for (QMenu *candidate : menus) {
        if (candidate->title() == QLatin1String("&Record from"))
            menu = candidate;
    }
    QVERIFY(menu != nullptr);
    emit menu->aboutToShow();
    QCOMPARE(menu->actions().size(), 2);
    QCOMPARE(menu->actions()[1]->text(), QStringLiteral("B"));
    QVERIFY(menu->actions()[1]->isChecked());
    menu->actions()[1]->trigger();
    QVERIFY(!m_window->session()->isTraced(2));
}

void TestMainWindow::timeMenuSwitchesTheColumn()
{
    QAction *mode = nullptr;
    const auto actions = m_window->findChildren<QAction *>();
    for (QAction *candidate : actions) {
        if (candidate->text() == QLatin1String("Time of &day"))
            mode = candidate;
    }
    QVERIFY(mode != nullptr);
    mode->trigger();
    QCOMPARE(m_window->tracePage()->view()->model()->headerData(1, Qt::Horizontal).toString(),
             QStringLiteral("Time of day"));
}

void TestMainWindow::lostConnectionIsTold()
{
    MessageBoxes boxes;
    FakeAdapter *adapter = addAdapter("A");
    action("actionConnect")->trigger();
    adapter->fail(QStringLiteral("The cable was pulled."));
    QTRY_COMPARE_WITH_TIMEOUT(boxes.shown.size(), 1, 5000);
    QCOMPARE(m_window->tracePage()->emptyState()->text(), QStringLiteral("A: The cable was pulled."));
    QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("A: The cable was pulled."));
    QVERIFY(action("actionConnect")->isEnabled());
}

void TestMainWindow::keysAreListed()
{
    MessageBoxes boxes;
    boxes.whileShown = [] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box != nullptr)
            box->reject();
    };
    action("actionKeys")->trigger();
    QCOMPARE(boxes.shown.size(), 1);
    for (const char *key : {"F5", "Shift+F5", "Ctrl+L", "Ctrl+Q", "Ctrl+D", "F1", "Ctrl+E"})
        QVERIFY2(boxes.shown[0].text.contains(QLatin1String(key)), key);
}

void TestMainWindow::aboutTellsTheVersions()
{
    MessageBoxes boxes;
    action("actionAbout")->trigger();
    QCOMPARE(boxes.shown.size(), 1);
    QVERIFY(boxes.shown[0].text.contains(QLatin1String(qVersion())));
}

void TestMainWindow::everyCommandHasItsWords()
{
    for (const char *name :
         {"actionQuit", "actionConnect", "actionDisconnect", "actionDemo", "actionClear", "actionShowTrace",
          "actionShowIdentifiers", "actionWriteFrame", "actionKeys", "actionAbout"}) {
        QVERIFY2(action(name) != nullptr, name);
        QVERIFY2(action(name)->text().contains(QLatin1Char('&')), name);
        QVERIFY2(!action(name)->statusTip().isEmpty(), name);
        const QString keys = action(name)->shortcut().toString(QKeySequence::NativeText);
        QVERIFY2(action(name)->toolTip().contains(keys), name);
    }
}

void TestMainWindow::mnemonicsOfTheMenuBarDiffer()
{
    QSet<QChar> letters;
    const auto actions = m_window->menuBar()->actions();
    for (const QAction *entry : actions) {
        const QString title = entry->text();
        const int at = title.indexOf(QLatin1Char('&'));
        QVERIFY2(at >= 0 && at + 1 < title.size(), qPrintable(title));
        const QChar letter = title.at(at + 1).toLower();
        QVERIFY2(!letters.contains(letter), qPrintable(title));
        letters.insert(letter);
    }
}

void TestMainWindow::closingTheWindowDisconnects()
{
    FakeAdapter *adapter = addAdapter("A");
    action("actionConnect")->trigger();
    QVERIFY(adapter->getRunning());
    m_window->close();
    QVERIFY(!adapter->getRunning());
}

void TestMainWindow::appearanceIsRememberedWhenAskedFor()
{
    const SettingsHome home;
    const auto identifier = [](const MainWindow &window) {
        return window.transmitPanel()->findChild<QLineEdit *>(QStringLiteral("edtIdentifier"));
    };
    m_window->useSettings();
    identifier(*m_window)->setText(QStringLiteral("7AB"));
    m_window->resize(1100, 700);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("CanAdapters|Failed to remove")));
    m_window->close();

    MainWindow plain;
    QCOMPARE(identifier(plain)->text(), QStringLiteral("123"));
    MainWindow again;
    again.useSettings();
    QCOMPARE(identifier(again)->text(), QStringLiteral("7AB"));
    QCOMPARE(again.size(), QSize(1100, 700));
}

void TestMainWindow::damagedAppearanceIsLeftAside()
{
    const SettingsHome home;
    m_window->useSettings();
    const QSize size = m_window->size();
    m_window->session()->settings()->setValue(QStringLiteral("mainWindow"),
                                              QVariantMap{{QStringLiteral("Window/window/geometry"), 5},
                                                          {QStringLiteral("Window/edtIdentifier"), QVariantList{1}},
                                                          {QStringLiteral("nonsense"), QByteArray(100, 'x')}});
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
    QVERIFY(m_window->session()->saveSettings());
    MainWindow again;
    again.useSettings();
    QCOMPARE(again.size(), size);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
