#pragma once

#include "canrawcomparemessage.h"
#include "canrecords.h"
#include "kestrune_export.h"

#include <QDateTime>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QPointer>

#include <memory>

class CANopenMessageBuilderDialog;
class CanScheduler;
class IdentifierSet;
class Ui_FileLoggerWindow;

/// Writes received frames to a text file, one line each, from a start to a stop, which the user brings about or which
/// armed triggers detect: a time, an identifier, a message, the size of the file or the number of frames. A filter says
/// which identifiers are logged.
///
/// An application keeps one window, shows and hides it, and calls canSchedulerChanged() when the connection changes. The
/// window hides when it is closed, and stops logging; hide() alone does not. Armed start triggers stay armed over a stop
/// and a close, and start a log behind a hidden window, too. What the user entered is kept in the application's default
/// settings, but for the check marks of the two time triggers: a time is for once.
///
/// All functions belong to the GUI thread. Frames come from the adapter's thread; the window keeps as many of them as
/// arrive while the GUI thread is busy. It owns neither scheduler nor adapter. No adapter may be delivering a frame while
/// the window is destroyed: close the connection first.
class KESTRUNE_EXPORT FileLoggerWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit FileLoggerWindow(QWidget *parent = nullptr);
    ~FileLoggerWindow() override;

    /// The line of a frame, as it stands in the log.
    /// @param message not null
    QByteArray message2Str(CAN::CanRxMessage *message) const;
    /// Opens the file at the entered path, overwriting what is there, and writes the line that names the columns. Gives
    /// up an earlier file. On failure tells the user in a modal box, and runs an event loop meanwhile.
    /// @return whether there is a file to log to; false also for a pipe or socket, and while such a box is up
    bool createOutputFile();

    /// Fills the form, and takes the composed messages, as writeSettings() left them. What was not stored stays.
    void readSettings();
    /// Stores the form and the composed messages. Happens by itself when a log starts, on closing and on destruction.
    void writeSettings();

public slots:
    /// Takes frames from the scheduler's adapter from now on. Without a scheduler, a running log ends with a line that
    /// says so.
    /// @param newScheduler may be null
    void canSchedulerChanged(CanScheduler *newScheduler);
    /// Ends logging, and disarms the stop triggers but not the start triggers. Harmless where nothing is logged.
    void stopAction();
    /// Lets the user compose the message that starts a log, in a modal dialog.
    void on_btn_buildCanMessage_clicked();
    /// Lets the user compose the message that stops a log, in a modal dialog.
    void on_btn_buildCanStopMessage_clicked();
    /// Lets the user select a path. To cancel the dialog clears it.
    void on_btnFileSelect_clicked();
    /// Warns in the status bar when there is such a file.
    void on_edtFilePath_textChanged(const QString &path);
    /// Ends logging as stopAction() does, and hides the window.
    void on_action_Stop_close_triggered();
    /// Shows the time in the debug stream.
    void on_dateStart_dateTimeChanged(const QDateTime &dateTime);
    /// Says on the form when the entered stop time has passed, and will be ignored.
    void on_dateStop_dateTimeChanged(const QDateTime &dateTime);
    /// The same, for a stop time that is ticked.
    void on_gbStopTriggersTime_clicked(bool checked);

signals:
    /// The window was hidden by its close button or its menu.
    void hidden();
    /// From the adapter's thread.
    void newRxMessage(CAN::CanRxMessage message);

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void newMessage(CAN::CanRxMessage *message); ///< on the adapter's thread
    void addNewMessage(CAN::CanRxMessage message);
    void handleTimer();
    void startLogging();
    void stopLogging();
    void on_btnStart_clicked();
    void on_action_Start_Logging_triggered();
    void on_btnStop_clicked();
    void on_btnStartTriggers_clicked(bool checked);
    void on_btnStopTriggers_clicked(bool checked);
    void startTriggerChanged(bool checked);
    void stopTriggerChanged(bool checked);

private:
    void connectTriggerBoxes();
    bool askForMessage(CANRAW::CanRawCompareMessage &message);

    void checkStartTriggerCANIDs(unsigned int id);
    void checkStartTriggerCANMessage(CAN::CanRxMessage *message);
    void checkStopTriggerCANIDs(unsigned int id);
    void checkStopTriggerCANMessage(CAN::CanRxMessage *message);
    void checkStopTriggerCount();
    void checkStopTime();
    bool isFileFull() const;
    void setFilter();
    void updateStartTriggerValues();
    void updateStopTriggerValues();
    void updateStartTriggerButtonText(bool armed);
    void updateStopTriggerButtonText(bool armed);

    std::unique_ptr<Ui_FileLoggerWindow> ui;
    bool startTriggerArmed = false;
    bool stopTriggerArmed = false;
    QPointer<QFile> outputFile;                       ///< stays after the end of a log, closed
    CANRAW::CanRawCompareMessage startMessage{false}; ///< matches nothing until it is composed
    CANRAW::CanRawCompareMessage stopMessage{false};  ///< the same
    QPointer<CANopenMessageBuilderDialog> messageBuilder;
    QPointer<CanScheduler> scheduler;
    QPointer<QLabel> statusLabel;
    QPointer<QLabel> countLabel;
    QList<quint32> startIds;
    QList<quint32> stopIds;
    quint32 messageCount = 0; ///< in this log
    qint32 maxFileSize = 0;   ///< in units of logMegabyte
    bool logging = false;
    const std::unique_ptr<IdentifierSet> filterIds; ///< empty: all
    bool stopTimeValid = false;
    bool tellingFailure = false; ///< that the file cannot be opened, in a box that is up
};
