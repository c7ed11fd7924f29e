#include "filelogging.h"

#include "fileloggerwindow.h"
#include "session.h"

FileLogging::FileLogging(Session *session, QWidget *window)
    : QObject(window)
    , m_session(session)
    , m_window(window)
{
}

FileLogging::~FileLogging()
{
    delete m_logger;
}

void FileLogging::showWindow()
{
    if (m_logger.isNull()) {
        m_logger = new FileLoggerWindow(m_window);
        connect(m_session, &Session::schedulerChanged, m_logger, &FileLoggerWindow::canSchedulerChanged);
        m_logger->canSchedulerChanged(m_session->scheduler());
    }
    m_logger->show();
    m_logger->raise();
    m_logger->activateWindow();
}
