#pragma once

#include "session.h"
#include "stallmeter.h"
#include "statussummary.h"
#include "tracearchive.h"

#include <QMainWindow>

#include <optional>

class CanLinks;
class ControllerStates;
class DemoSession;
class FileLogging;
class FrameMarks;
class IdentifierModel;
class InterfaceCommands;
class MessageCommands;
class ReplayPanel;
class QDockWidget;
class QMenu;
class QTabWidget;
class StatusLine;
class TraceFileCommands;
class TraceModel;
class TracePage;
class TransmitPanel;

/// The window of the workbench: the trace in two views, the transmit panel, the state of the connection.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    Session *session() { return &m_session; }
    DemoSession *demo() const { return m_demo; }
    TransmitPanel *transmitPanel() const { return m_transmitPanel; }
    TracePage *tracePage() const { return m_tracePage; }
    TracePage *identifierPage() const { return m_identifierPage; }
    ReplayPanel *replayPanel() const { return m_replayPanel; }
    TraceArchive *files() { return &m_files; }
    FrameMarks *marks() const { return m_marks; }
    const StallMeter &stallMeter() const { return m_stallMeter; }
    void restartStallMeter() { m_stallMeter.restart(); }

    /// Brings back the saved interfaces and how the window looked when it was closed the last time; from then on, what
    /// the user changes is saved.
    void useSettings();

public slots:
    void connectAdapters();
    void disconnectAdapters();
    void clearTrace();
    /// Two interfaces on a simulated bus, connected at once.
    void startDemo();
    /// An interface for each CAN link of this computer that is not in use, connected at once.
    void startLinks();
    void showPage(TracePage *page);

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildPages();
    void buildTransmitDock();
    void buildReplayDock();
    void buildFileAndConnectionMenus();
    void buildTraceMenu();
    void buildMarkCommands(QMenu *menu);
    void buildMessageMenu();
    void buildViewMenu();
    void buildToolBar();

    /// Of the view in front; none while no row is current.
    std::optional<CAN::CanMessage> currentFrame() const;

    void showConnection();
    void offerInterfaces();
    void showAdvice();
    void showDock(QDockWidget *dock);
    void resetViews();
    void refreshTrace();
    void refreshStatus();

    Session m_session;
    TraceArchive m_files; ///< of the session's trace: goes before it
    StallMeter m_stallMeter;
    RateMeter m_rate;
    QElapsedTimer m_clock;
    QTimer m_traceTimer;
    QTimer m_statusTimer;
    bool m_wasConnected = false;

    TraceModel *m_traceModel;
    IdentifierModel *m_identifierModel;
    TraceFileCommands *m_fileCommands;
    FrameMarks *m_marks;
    FileLogging *m_logging;
    DemoSession *m_demo;
    CanLinks *m_links;
    ControllerStates *m_controllers;
    InterfaceCommands *m_interfaceCommands;
    MessageCommands *m_messageCommands;
    QTabWidget *m_tabs;
    TracePage *m_tracePage;
    TracePage *m_identifierPage;
    TransmitPanel *m_transmitPanel;
    QDockWidget *m_transmitDock;
    ReplayPanel *m_replayPanel;
    QDockWidget *m_replayDock;
    StatusLine *m_statusLine;

    QAction *m_markIdentifierAction;
    QAction *m_connectAction;
    QAction *m_disconnectAction;
    QAction *m_clearAction;
    QAction *m_linksAction;
    QAction *m_demoAction;
};
