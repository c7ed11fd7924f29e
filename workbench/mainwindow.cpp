#include "mainwindow.h"

#include "appearance.h"
#include "canlinks.h"
#include "command.h"
#include "controllerstates.h"
#include "demosession.h"
#include "emptystate.h"
#include "filelogging.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "frameview.h"
#include "helpmenu.h"
#include "icons.h"
#include "identifiermodel.h"
#include "interfacecommands.h"
#include "interfacename.h"
#include "markbar.h"
#include "messagecommands.h"
#include "recordmenu.h"
#include "replaypanel.h"
#include "statusline.h"
#include "timemenu.h"
#include "tracefilecommands.h"
#include "tracearchive.h"
#include "tracemodel.h"
#include "tracepage.h"
#include "tracesituation.h"
#include "transmitpanel.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QVBoxLayout>

namespace {
constexpr int traceRefreshMilliseconds = 40;
constexpr int statusRefreshMilliseconds = 250;
constexpr QSize usualSize(1200, 760);

/// How the window looks, in the settings.
QString appearanceItem()
{
    return QStringLiteral("mainWindow");
}

QString marksItem()
{
    return QStringLiteral("marks");
}
} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_session(this)
    , m_files(m_session.trace())
    , m_traceModel(new TraceModel(m_session.trace(), this))
    , m_identifierModel(new IdentifierModel(m_session.trace(), this))
    , m_fileCommands(new TraceFileCommands(&m_files, statusBar(), this))
    , m_marks(new FrameMarks(this))
    , m_logging(new FileLogging(&m_session, this))
    , m_demo(new DemoSession(&m_session, this))
    , m_links(new CanLinks(&m_session, this))
    , m_controllers(new ControllerStates(this))
    , m_statusLine(new StatusLine(statusBar()))
{
    setWindowTitle(tr("Kestrune Workbench"));
    buildFileAndConnectionMenus();
    buildPages();
    buildTransmitDock();
    buildReplayDock();
    buildTraceMenu();
    buildMessageMenu();
    buildViewMenu();
    menuBar()->addMenu(new HelpMenu(this));
    buildToolBar();
    resize(usualSize);

    connect(&m_session, &Session::connectionChanged, this, &MainWindow::showConnection);
    connect(&m_session, &Session::schedulerChanged, this, [this](CanScheduler *scheduler) {
        m_transmitPanel->setConnection(scheduler != nullptr ? m_session.primaryAdapter() : nullptr, scheduler);
    });
    connect(&m_session, &Session::traceCleared, this, &MainWindow::resetViews);
    connect(&m_files, &TraceArchive::traceReplaced, this, &MainWindow::resetViews);
    connect(&m_files, &TraceArchive::remark, this, [this](const QString &text) { statusBar()->showMessage(text); });
    connect(m_session.trace(), &DatachunkHandler::storageFailed, this,
            [this](const QString &reason) { statusBar()->showMessage(reason); });
    connect(&m_session, &Session::settingsProblem, this,
            [this](const QString &text) { statusBar()->showMessage(text); });
    connect(m_links, &CanLinks::changed, this, &MainWindow::showConnection);
    connect(m_links, &CanLinks::remark, this, [this](const QString &text) { statusBar()->showMessage(text); });
    connect(m_demo, &DemoSession::remark, this, [this](const QString &text) { statusBar()->showMessage(text); });

    m_clock.start();
    connect(&m_traceTimer, &QTimer::timeout, this, &MainWindow::refreshTrace);
    m_traceTimer.start(traceRefreshMilliseconds);
    connect(&m_statusTimer, &QTimer::timeout, this, &MainWindow::refreshStatus);
    m_statusTimer.start(statusRefreshMilliseconds);
    showConnection();
    m_tracePage->view()->setFocus();
}

MainWindow::~MainWindow()
{
    // A replay writes to adapters, and a log is fed by them. They go with the session, before the widgets do.
    m_session.disconnectAdapters();
    delete m_replayDock;
    delete m_logging;
}

void MainWindow::connectAdapters()
{
    if (!m_session.hasInterfaces()) {
        const bool hasLinks = m_linksAction->isEnabled();
        const QAction *offer = hasLinks ? m_linksAction : m_demoAction;
        const QString advice = hasLinks ? tr("There is no CAN interface to connect. Connect the CAN links: press %1.")
                                        : tr("There is no CAN interface to connect. Start the demo: press %1.");
        statusBar()->showMessage(advice.arg(offer->shortcut().toString(QKeySequence::NativeText)));
        return;
    }
    statusBar()->clearMessage();
    m_session.connectAdapters();
    m_demo->joinNetwork();
}

void MainWindow::disconnectAdapters()
{
    m_session.disconnectAdapters();
}

void MainWindow::clearTrace()
{
    m_session.clearTrace();
    statusBar()->clearMessage();
}

void MainWindow::startDemo()
{
    m_demo->addInterfaces();
    m_session.saveSettings();
    connectAdapters();
}

void MainWindow::startLinks()
{
    m_links->addInterfaces();
    m_session.saveSettings();
    connectAdapters();
}

void MainWindow::showPage(TracePage *page)
{
    m_tabs->setCurrentWidget(page);
    page->view()->setFocus();
}

void MainWindow::useSettings()
{
    if (m_session.openSettings()) {
        restoreAppearance(this, m_session.settings()->value(appearanceItem(), QVariantMap()).toMap());
        m_marks->setFromVariant(m_session.settings()->value(marksItem(), QVariantList()).toList());
        connect(m_marks, &FrameMarks::changed, this, [this] {
            m_session.settings()->setValue(marksItem(), m_marks->toVariant());
            m_session.saveSettings();
        });
    }
    showConnection();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    m_session.disconnectAdapters();
    if (m_session.settings()->isOpen())
        m_session.settings()->setValue(appearanceItem(), appearanceOf(this));
    m_session.saveSettings();
    QMainWindow::closeEvent(event);
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // The counter of lost frames has a colour of its own, by the palette.
    if (event->type() == QEvent::PaletteChange)
        QMetaObject::invokeMethod(this, &MainWindow::refreshStatus, Qt::QueuedConnection);
}

void MainWindow::buildFileAndConnectionMenus()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(m_fileCommands->openAction());
    file->addAction(m_fileCommands->saveAction());
    file->addAction(m_fileCommands->recordAction());
    file->addSeparator();
    QAction *quit = addCommand(file, QStringLiteral("actionQuit"), tr("&Quit"), QKeySequence(Qt::CTRL + Qt::Key_Q),
                               tr("Disconnect and close the window"));
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, this, &MainWindow::close);

    QMenu *connection = menuBar()->addMenu(tr("&Connection"));
    m_connectAction = addCommand(connection, QStringLiteral("actionConnect"), tr("&Connect"), QKeySequence(Qt::Key_F5),
                                 tr("Connect all active interfaces"));
    m_disconnectAction = addCommand(connection, QStringLiteral("actionDisconnect"), tr("&Disconnect"),
                                    QKeySequence(Qt::SHIFT + Qt::Key_F5), tr("Close all interfaces"));
    connection->addSeparator();
    m_interfaceCommands = new InterfaceCommands(&m_session, connection);
    connect(m_interfaceCommands, &InterfaceCommands::connectRequested, this, &MainWindow::connectAdapters);
    connection->addSeparator();
    m_linksAction = addCommand(
        connection, QStringLiteral("actionLinks"), tr("Connect the CAN &links"), QKeySequence(Qt::CTRL + Qt::Key_F5),
        tr("Make an interface of each CAN link of this computer that is not in use, and connect"));
    m_demoAction = addCommand(connection, QStringLiteral("actionDemo"), tr("&Start the demo"),
                              QKeySequence(Qt::CTRL + Qt::Key_D),
                              tr("Two interfaces on a simulated bus with a CANopen network; needs no hardware"));
    connect(m_connectAction, &QAction::triggered, this, &MainWindow::connectAdapters);
    connect(m_disconnectAction, &QAction::triggered, this, &MainWindow::disconnectAdapters);
    connect(m_linksAction, &QAction::triggered, this, &MainWindow::startLinks);
    connect(m_demoAction, &QAction::triggered, this, &MainWindow::startDemo);
}

void MainWindow::buildPages()
{
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabTrace"));
    m_tabs->setDocumentMode(true);
    m_tracePage = new TracePage(m_traceModel, true, m_tabs);
    m_tracePage->view()->setObjectName(QStringLiteral("traceView"));
    m_tracePage->view()->setAccessibleName(tr("Trace in the order of arrival"));
    m_identifierPage = new TracePage(m_identifierModel, false, m_tabs);
    m_identifierPage->view()->setObjectName(QStringLiteral("identifierView"));
    m_identifierPage->view()->setAccessibleName(tr("Trace by identifiers"));
    m_tabs->addTab(m_tracePage, tr("Trace"));
    m_tabs->addTab(m_identifierPage, tr("Identifiers"));
    m_tabs->setTabToolTip(0, tr("Every frame, the newest at the bottom (Ctrl+1)"));
    m_tabs->setTabToolTip(1, tr("One line for each identifier, with its cycle time and last data (Ctrl+2)"));

    auto *centre = new QWidget(this);
    auto *layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tabs, 1);
    auto *markBar = new MarkBar(m_marks, centre);
    markBar->setObjectName(QStringLiteral("markBar"));
    layout->addWidget(markBar);
    setCentralWidget(centre);
    m_traceModel->setMarks(m_marks);
    m_identifierModel->setMarks(m_marks);
    connect(markBar, &MarkBar::editRequested, this, [this](int mark) { m_messageCommands->changeMark(mark); });
}

void MainWindow::buildTransmitDock()
{
    m_transmitPanel = new TransmitPanel(this);
    m_transmitDock = new QDockWidget(tr("Transmit"), this);
    m_transmitDock->setObjectName(QStringLiteral("transmitDock"));
    m_transmitDock->setWidget(m_transmitPanel);
    addDockWidget(Qt::BottomDockWidgetArea, m_transmitDock);
    m_messageCommands = new MessageCommands(m_transmitPanel, m_marks, this);
    connect(m_messageCommands, &MessageCommands::remark, this,
            [this](const QString &text) { statusBar()->showMessage(text); });
}

void MainWindow::buildReplayDock()
{
    m_replayPanel = new ReplayPanel(this);
    m_replayDock = new QDockWidget(tr("Replay"), this);
    m_replayDock->setObjectName(QStringLiteral("replayDock"));
    m_replayDock->setWidget(m_replayPanel);
    addDockWidget(Qt::BottomDockWidgetArea, m_replayDock);
    tabifyDockWidget(m_transmitDock, m_replayDock);
    m_transmitDock->raise();
}

void MainWindow::buildTraceMenu()
{
    QMenu *trace = menuBar()->addMenu(tr("&Trace"));
    m_clearAction = addCommand(trace, QStringLiteral("actionClear"), tr("C&lear trace"),
                               QKeySequence(Qt::CTRL + Qt::Key_L), tr("Forget all recorded frames"));
    connect(m_clearAction, &QAction::triggered, this, &MainWindow::clearTrace);
    trace->addAction(m_tracePage->followAction());
    trace->addSeparator();

    trace->addMenu(new TimeMenu(m_traceModel, this));
    trace->addSeparator();
    buildMarkCommands(trace);
    trace->addSeparator();
    trace->addMenu(new RecordMenu(&m_session, this));
}

void MainWindow::buildMarkCommands(QMenu *menu)
{
    QAction *mark = addCommand(menu, QStringLiteral("actionMark"), tr("&Mark frames..."),
                               QKeySequence(Qt::CTRL + Qt::Key_M),
                               tr("Show frames that match a template in a colour of their own"));
    connect(mark, &QAction::triggered, this, [this] { m_messageCommands->addMark(currentFrame()); });
    m_markIdentifierAction = addCommand(menu, QStringLiteral("actionMarkIdentifier"), tr("Mark this &identifier"),
                                        QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_M),
                                        tr("Show all frames with the identifier of the current one in a colour"));
    connect(m_markIdentifierAction, &QAction::triggered, this, [this] {
        if (const std::optional<CAN::CanMessage> frame = currentFrame())
            m_messageCommands->markIdentifier(*frame);
        else
            statusBar()->showMessage(tr("Select a frame first."));
    });
    QAction *clear = addCommand(menu, QStringLiteral("actionClearMarks"), tr("Remove &all marks"), {},
                                tr("Show all frames in the usual colours"));
    connect(clear, &QAction::triggered, m_marks, &FrameMarks::clear);
    connect(m_marks, &FrameMarks::changed, clear, [this, clear] { clear->setEnabled(m_marks->count() > 0); });
    clear->setEnabled(false);
    for (TracePage *page : {m_tracePage, m_identifierPage})
        page->view()->addAction(m_markIdentifierAction);
}

void MainWindow::buildMessageMenu()
{
    QMenu *message = menuBar()->addMenu(tr("&Message"));
    QAction *write = addCommand(message, QStringLiteral("actionWriteFrame"), tr("&Write a frame"),
                                QKeySequence(Qt::CTRL + Qt::Key_T), tr("Go to the fields of the transmit panel"));
    connect(write, &QAction::triggered, this, [this] { showDock(m_transmitDock); });
    QAction *build = addCommand(message, QStringLiteral("actionBuildMessage"), tr("&Build message..."),
                                QKeySequence(Qt::CTRL + Qt::Key_B),
                                tr("Compose the frame of the transmit panel, for example from a CANopen service"));
    connect(build, &QAction::triggered, this, [this] {
        showDock(m_transmitDock);
        m_messageCommands->buildMessage();
    });
    message->addSeparator();
    QAction *log = addCommand(message, QStringLiteral("actionFileLogger"), tr("File &logger"),
                              QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_L),
                              tr("Write frames to a text file, from a start to a stop that triggers detect"));
    connect(log, &QAction::triggered, m_logging, &FileLogging::showWindow);
    QAction *replay = addCommand(message, QStringLiteral("actionReplay"), tr("&Replay a recording"),
                                 QKeySequence(Qt::CTRL + Qt::Key_P), tr("Play a trace or a log onto the bus"));
    connect(replay, &QAction::triggered, this, [this] { showDock(m_replayDock); });
}

void MainWindow::showDock(QDockWidget *dock)
{
    dock->show();
    dock->raise();
    dock->widget()->setFocus(Qt::ShortcutFocusReason);
}

std::optional<CAN::CanMessage> MainWindow::currentFrame() const
{
    const auto *page = static_cast<const TracePage *>(m_tabs->currentWidget());
    const QVariant frame = page->view()->currentIndex().data(FrameRoles::FrameRole);
    if (!frame.canConvert<CAN::CanRxMessage>())
        return {};
    return frame.value<CAN::CanRxMessage>().message;
}

void MainWindow::buildViewMenu()
{
    QMenu *view = menuBar()->addMenu(tr("&View"));
    QAction *trace = addCommand(view, QStringLiteral("actionShowTrace"), tr("&Trace"),
                                QKeySequence(Qt::CTRL + Qt::Key_1), tr("Show every frame, the newest at the bottom"));
    connect(trace, &QAction::triggered, this, [this] { showPage(m_tracePage); });
    QAction *identifiers = addCommand(view, QStringLiteral("actionShowIdentifiers"), tr("&Identifiers"),
                                      QKeySequence(Qt::CTRL + Qt::Key_2), tr("Show one line for each identifier"));
    connect(identifiers, &QAction::triggered, this, [this] { showPage(m_identifierPage); });
    view->addSeparator();
    view->addAction(m_transmitDock->toggleViewAction());
    view->addAction(m_replayDock->toggleViewAction());
}

void MainWindow::buildToolBar()
{
    QToolBar *bar = addToolBar(tr("Tool bar"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_connectAction->setIcon(Icons::icon(Icons::Connect));
    m_disconnectAction->setIcon(Icons::icon(Icons::Disconnect));
    m_interfaceCommands->overviewAction()->setIcon(Icons::icon(Icons::Settings));
    m_clearAction->setIcon(Icons::icon(Icons::Clear));
    m_tracePage->followAction()->setIcon(Icons::icon(Icons::Follow));
    bar->addAction(m_connectAction);
    bar->addAction(m_disconnectAction);
    bar->addAction(m_interfaceCommands->overviewAction());
    bar->addSeparator();
    bar->addAction(m_clearAction);
    bar->addAction(m_tracePage->followAction());
}

void MainWindow::showConnection()
{
    const bool connected = m_session.isConnected();
    m_connectAction->setEnabled(!connected);
    m_disconnectAction->setEnabled(connected);
    m_interfaceCommands->overviewAction()->setEnabled(!connected);
    m_linksAction->setEnabled(!connected && !m_links->unused().isEmpty());
    m_demoAction->setEnabled(m_demo->isPossible() && !m_demo->isNetworkRunning());
    if (connected && !m_wasConnected)
        m_stallMeter.restart();
    m_wasConnected = connected;
    if (!m_session.failure().isEmpty())
        statusBar()->showMessage(m_session.failure());
    offerInterfaces();
    showAdvice();
    refreshStatus();
}

void MainWindow::offerInterfaces()
{
    QVector<ReplayPanel::Interface> interfaces;
    const auto adapters = m_session.adapters()->getAdapterMap()->values();
    for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
        m_controllers->follow(adapter);
        if (adapter->getRunning())
            interfaces.append({interfaceName(*adapter), adapter});
    }
    m_replayPanel->setInterfaces(interfaces);
}

void MainWindow::showAdvice()
{
    const TraceAdvice advice = adviceFor(
        {m_session.hasInterfaces(), m_session.isConnected(), m_session.failure(), m_links->unused()});
    QAction *const commands[] = {m_connectAction, m_linksAction, m_demoAction};
    QList<QAction *> offers;
    for (const TraceAdvice::Offer offer : advice.offers)
        offers.append(commands[offer]);
    for (TracePage *page : {m_tracePage, m_identifierPage})
        page->emptyState()->show(advice.title, advice.text, offers);
}

void MainWindow::resetViews()
{
    m_traceModel->reset();
    m_identifierModel->reset();
    m_rate.clear();
}

void MainWindow::refreshTrace()
{
    m_traceModel->refresh();
    const bool allListed = m_identifierModel->unlistedFrames() == 0;
    m_identifierModel->refresh();
    if (allListed && m_identifierModel->unlistedFrames() > 0) {
        statusBar()->showMessage(
            tr("The list of identifiers is full at %1. Frames of further ones are in the trace only.")
                .arg(IdentifierStatistics::maxIdentifiers));
    }
}

void MainWindow::refreshStatus()
{
    StatusLine::Content content;
    const auto adapters = m_session.adapters()->getAdapterMap()->values();
    for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
        const bool failed = adapter->isActiveAdapter() && !adapter->getRunning();
        content.interfaces.append({interfaceName(*adapter), adapter->framesReceived(), adapter->framesSent(),
                                   adapter->framesLost(), adapter->getRunning(),
                                   failed ? adapter->errorText() : QString(), m_controllers->stateOf(adapter)});
    }
    m_fileCommands->setSituation(m_session.isConnected(), m_session.trace()->getMessageCount() > 0);
    content.notStored = m_session.trace()->lostMessageCount();
    m_rate.report(m_clock.elapsed(), m_session.trace()->getMessageCount() + content.notStored);
    content.framesPerSecond = m_rate.perSecond();
    content.stallInLastMinute = m_stallMeter.longestInLastMinute();
    content.longestStall = m_stallMeter.longest();
    m_statusLine->show(content);
}
