// The log and its states: idle, waiting for a start trigger, logging.

#include "fileloggerwindow.h"
#include "ui_fileloggerwindow.h"

#include "canscheduler.h"
#include "guihelper.h"
#include "identifierset.h"
#include "logline.h"
#include "logoutput.h"

#include <QCoreApplication>

#include <sys/stat.h>

namespace {
/// A pipe lets nobody in, and so blocks the user interface, until there is a reader; and again when that is slow.
bool waitsForReader(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0
        && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}
} // namespace

QByteArray FileLoggerWindow::message2Str(CAN::CanRxMessage *message) const
{
    return logMessageLine(*message);
}

bool FileLoggerWindow::createOutputFile()
{
    // While the user reads why there is no log, frames and the clock go on to fire triggers.
    if (tellingFailure)
        return false;
    const QString path = ui->edtFilePath->text();
    delete outputFile;
    outputFile = new QFile(path, this);
    if (!waitsForReader(path) && outputFile->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        outputFile->write(logHeaderLine());
        return true;
    }
    // The window, and the file with it, may die while the box is up.
    const QPointer<FileLoggerWindow> self(this);
    const QPointer<QFile> unusable = outputFile;
    tellingFailure = true;
    GuiHelper::showMessageBox(this, QCoreApplication::applicationName(),
                              tr("File '%1' cannot be opened for logging.").arg(path), {}, QMessageBox::Ok,
                              QMessageBox::Critical);
    if (self)
        tellingFailure = false;
    delete unusable;
    return false;
}

void FileLoggerWindow::canSchedulerChanged(CanScheduler *newScheduler)
{
    scheduler = newScheduler;
    if (scheduler && scheduler->canAdapter() != nullptr) {
        connect(scheduler->canAdapter(), &AbstractCanAdapter::newCanMessage, this, &FileLoggerWindow::newMessage,
                static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::UniqueConnection));
    }
    if (!scheduler && logging && isWritable(outputFile)) {
        writeToLog(outputFile, logConnectionLostLine(), Q_FUNC_INFO);
        flushLog(outputFile, Q_FUNC_INFO);
        on_btnStop_clicked();
    }
    statusLabel->setTextFormat(Qt::RichText);
    statusLabel->setText(scheduler ? QString() : tr("<font color=\"red\"><b>Disconnected</b></font>"));
}

void FileLoggerWindow::newMessage(CAN::CanRxMessage *message)
{
    if (message != nullptr)
        emit newRxMessage(*message);
}

void FileLoggerWindow::addNewMessage(CAN::CanRxMessage message)
{
    const quint32 id = message.message.id;
    if (logging) {
        if (outputFile && (filterIds->isEmpty() || filterIds->contains(id))) {
            writeToLog(outputFile, message2Str(&message), Q_FUNC_INFO);
            countLabel->setText(QString::number(++messageCount));
        }
        if (!stopTriggerArmed)
            return;
        checkStopTriggerCANIDs(id);
        checkStopTriggerCANMessage(&message);
        checkStopTriggerCount();
        if (logging)
            return;
    }
    if (startTriggerArmed) {
        // A start that fails tells the user, who may do anything meanwhile.
        const QPointer<FileLoggerWindow> self(this);
        checkStartTriggerCANIDs(id);
        if (self)
            checkStartTriggerCANMessage(&message);
    }
}

void FileLoggerWindow::startLogging()
{
    if (!logging) {
        if (!createOutputFile())
            return;
        checkStopTime();
        setFilter();
        logging = true;
        statusLabel->setText(tr("Logging ..."));
        messageCount = 0;
        ui->btnStart->setEnabled(false);
        ui->btnStop->setEnabled(true);
    }
    startTriggerArmed = false;
    ui->btnStartTriggers->setEnabled(false);
    ui->btnStartTriggers->setChecked(false);
    updateStartTriggerButtonText(false);
    if (stopTriggerArmed)
        statusLabel->setText(tr("Wait for stop trigger event"));
    ui->edtFilePath->setEnabled(false);
    ui->btnFileSelect->setEnabled(false);
    ui->action_Start_Logging->setEnabled(false);
}

void FileLoggerWindow::stopLogging()
{
    if (stopTriggerArmed) {
        stopTriggerArmed = false;
        ui->btnStopTriggers->setChecked(false);
    }
    ui->btnStartTriggers->setEnabled(true);
    ui->btnStopTriggers->setEnabled(true);
    updateStartTriggerButtonText(false);
    updateStopTriggerButtonText(false);
}

void FileLoggerWindow::on_btnStart_clicked()
{
    startLogging();
}

void FileLoggerWindow::on_action_Start_Logging_triggered()
{
    startLogging();
}

void FileLoggerWindow::on_btnStop_clicked()
{
    stopLogging();
    if (logging) {
        logging = false;
        if (outputFile) {
            flushLog(outputFile, Q_FUNC_INFO);
            outputFile->close();
        }
    }
    statusLabel->setText(tr("stopped"));
    ui->btnStart->setEnabled(true);
    ui->action_Start_Logging->setEnabled(true);
    ui->edtFilePath->setEnabled(true);
    ui->btnFileSelect->setEnabled(true);
    ui->gbStartTriggers->setEnabled(true);
    ui->gbStopTriggers->setEnabled(true);
    ui->btnStop->setEnabled(false);
    ui->lblStopInfo->clear();
}

void FileLoggerWindow::stopAction()
{
    on_btnStop_clicked();
}
