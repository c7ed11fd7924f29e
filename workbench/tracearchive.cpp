#include "tracearchive.h"

#include "datachunkhandler.h"
#include "frametext.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
QString shown(const QString &fileName)
{
    return QDir::toNativeSeparators(fileName);
}
} // namespace

TraceArchive::TraceArchive(DatachunkHandler *trace, QObject *parent)
    : QObject(parent)
    , m_trace(trace)
    , m_worker(new QObject)
{
    m_thread.setObjectName(QStringLiteral("trace files"));
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    // From the thread that loads, into the queue of this one.
    connect(trace, &DatachunkHandler::sigQRMLoadingProgress, this, &TraceArchive::progressed, Qt::QueuedConnection);
    connect(
        trace, &DatachunkHandler::recordingFailed, this,
        [this](const QString &reason) {
            m_recordedFile.clear();
            emit recordingChanged();
            emit remark(reason);
        },
        Qt::QueuedConnection);
    m_thread.start();
}

TraceArchive::~TraceArchive()
{
    m_trace->disconnect(this);
    m_trace->cancelImport();
    m_thread.quit();
    m_thread.wait();
    m_trace->stopRecording();
}

void TraceArchive::open(const QString &fileName)
{
    if (m_busy)
        return;
    runAside(
        [this, fileName] {
            const bool loaded = m_trace->loadQrmFile(fileName);
            m_trace->setImportFinished(loaded, DatachunkHelper::TraceFile, {}, false);
            return loaded;
        },
        [this, fileName](bool loaded) {
            emit traceReplaced();
            if (!loaded) {
                emit remark(m_trace->importError());
                return;
            }
            const QString done = tr("%1 frames from \"%2\".")
                                     .arg(FrameText::count(m_trace->getMessageCount()), shown(fileName));
            emit remark(m_trace->importRemark().isEmpty() ? done : done + QLatin1Char(' ') + m_trace->importRemark());
        });
}

void TraceArchive::cancel()
{
    m_trace->cancelImport();
}

void TraceArchive::save(const QString &fileName)
{
    if (m_busy)
        return;
    runAside(
        [this, fileName] {
            QString error;
            m_trace->saveQrmFile(fileName, &error);
            return error;
        },
        [this, fileName](const QString &error) {
            emit remark(error.isEmpty() ? tr("The trace is saved to \"%1\".").arg(shown(fileName)) : error);
        });
}

void TraceArchive::startRecording(const QString &fileName)
{
    QString error;
    if (!m_trace->startRecording(fileName, &error)) {
        m_recordedFile.clear();
        emit recordingChanged();
        emit remark(error);
        return;
    }
    m_recordedFile = fileName;
    emit recordingChanged();
    emit remark(tr("All frames from now on go to \"%1\" too.").arg(shown(fileName)));
}

void TraceArchive::stopRecording()
{
    if (!isRecording())
        return;
    m_trace->stopRecording();
    const QString file = m_recordedFile;
    m_recordedFile.clear();
    emit recordingChanged();
    emit remark(tr("The recording is in \"%1\".").arg(shown(file)));
}

QString TraceArchive::usualDirectory()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

void TraceArchive::setBusy(bool busy)
{
    m_busy = busy;
    emit busyChanged(busy);
}

template <typename Work, typename Done>
void TraceArchive::runAside(Work work, Done done)
{
    setBusy(true);
    QMetaObject::invokeMethod(m_worker, [this, work, done] {
        const auto result = work();
        // Dropped if this object goes meanwhile.
        QMetaObject::invokeMethod(this, [this, done, result] {
            setBusy(false);
            done(result);
        });
    });
}
