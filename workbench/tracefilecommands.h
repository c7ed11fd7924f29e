#pragma once

#include <QObject>

class QAction;
class QLabel;
class QProgressBar;
class QStatusBar;
class QToolButton;
class TraceArchive;

/// The commands around trace files, as they stand in the menus, with what the status bar shows of them.
class TraceFileCommands : public QObject
{
    Q_OBJECT

public:
    /// @param files must outlive the commands
    /// @param window on which the dialogs stand
    TraceFileCommands(TraceArchive *files, QStatusBar *statusBar, QWidget *window);

    QAction *openAction() const { return m_open; }
    QAction *saveAction() const { return m_save; }
    QAction *recordAction() const { return m_record; }

    /// A file takes the place of the trace only while no frames come in, and there is something to save only with
    /// frames in it.
    void setSituation(bool connected, bool hasFrames);

private:
    void openTrace();
    void saveTrace();
    void record(bool on);
    QString askForNewFile(const QString &title);
    void showBusy(bool busy);
    void showRecording();
    void updateActions();

    TraceArchive *m_files;
    QWidget *m_window;
    QAction *m_open;
    QAction *m_save;
    QAction *m_record;
    QProgressBar *m_progress;
    QToolButton *m_cancel;
    QLabel *m_recording;
    bool m_connected = false;
    bool m_hasFrames = false;
};
