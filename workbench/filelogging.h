#pragma once

#include <QObject>
#include <QPointer>

class FileLoggerWindow;
class Session;

/// The one window of the file logger: made at its first use, fed from the connection's primary interface.
///
/// Destroying this object ends a log and takes the window with it. The connection must be closed then: no interface may
/// deliver a frame meanwhile.
class FileLogging : public QObject
{
    Q_OBJECT

public:
    /// @param session must outlive this object
    /// @param window on which the logger's window stands
    FileLogging(Session *session, QWidget *window);
    ~FileLogging() override;

public slots:
    void showWindow();

private:
    Session *m_session;
    QWidget *m_window;
    QPointer<FileLoggerWindow> m_logger;
};
