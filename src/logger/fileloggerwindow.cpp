#include "fileloggerwindow.h"
#include "ui_fileloggerwindow.h"

#include "canopenmessagebuilderdialog.h"
#include "canscheduler.h"
#include "guihelper.h"
#include "identifierset.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDebug>
#include <QFileDialog>
#include <QSettings>
#include <QTimer>

namespace {
constexpr int pollInterval = 333; // ms

const QLatin1String settingsGroup("FileLoggerSettings");
const QLatin1String startMessageKey("StartMessage");
const QLatin1String stopMessageKey("StopMessage");

void restoreMessage(QLatin1String key, CANRAW::CanRawCompareMessage &message)
{
    const QByteArray bytes = GuiHelper::restoreSetting(settingsGroup, key, {}).toByteArray();
    if (!bytes.isEmpty())
        message = CANRAW::CanRawCompareMessage::fromByteArray(bytes);
}

void saveMessage(QLatin1String key, const CANRAW::CanRawCompareMessage &message)
{
    GuiHelper::saveSetting(settingsGroup, key, message.toByteArray(), {});
}

} // namespace

FileLoggerWindow::FileLoggerWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(std::make_unique<Ui_FileLoggerWindow>())
    , filterIds(std::make_unique<IdentifierSet>())
{
    ui->setupUi(this);

    statusLabel = new QLabel(this);
    countLabel = new QLabel(this);
    ui->statusbar->addPermanentWidget(countLabel);
    ui->statusbar->addPermanentWidget(statusLabel);
    canSchedulerChanged(nullptr);

    auto *timer = new QTimer(this);
    timer->start(pollInterval);
    connect(timer, &QTimer::timeout, this, &FileLoggerWindow::handleTimer);

    messageBuilder = new CANopenMessageBuilderDialog(this);
    ui->btnStop->setEnabled(false);
    connectTriggerBoxes();

    // A restart does not arm a time: it would start or end a log that nobody thinks of any more.
    for (QGroupBox *box : {ui->gbStartTriggersTime, ui->gbStopTriggersTime})
        box->setProperty("ExcludeSaving", true);
    readSettings();
    startTriggerChanged(false);
    stopTriggerChanged(false);
    connect(this, &FileLoggerWindow::newRxMessage, this, &FileLoggerWindow::addNewMessage, Qt::UniqueConnection);
}

FileLoggerWindow::~FileLoggerWindow()
{
    on_btnStop_clicked();
    writeSettings();
}

void FileLoggerWindow::connectTriggerBoxes()
{
    for (QGroupBox *box : {ui->gbStartTriggersCANIDs, ui->gbStartTriggersCANMessage, ui->gbStartTriggersTime})
        connect(box, &QGroupBox::clicked, this, &FileLoggerWindow::startTriggerChanged);
    for (QGroupBox *box : {ui->gbStopTriggersCANIDs, ui->gbStopTriggersCANMessage, ui->gbStopTriggersTime,
                           ui->gbStopTriggersCounter, ui->gbStopTriggersFileSize})
        connect(box, &QGroupBox::clicked, this, &FileLoggerWindow::stopTriggerChanged);
}

void FileLoggerWindow::readSettings()
{
    GuiHelper::restoreSettings(this, settingsGroup, {});
    restoreMessage(startMessageKey, startMessage);
    restoreMessage(stopMessageKey, stopMessage);
}

void FileLoggerWindow::writeSettings()
{
    GuiHelper::saveSettings(this, settingsGroup, {});
    saveMessage(startMessageKey, startMessage);
    saveMessage(stopMessageKey, stopMessage);
}

void FileLoggerWindow::on_btn_buildCanMessage_clicked()
{
    if (askForMessage(startMessage))
        ui->le_canStartMessage->setText(startMessage.toString());
}

void FileLoggerWindow::on_btn_buildCanStopMessage_clicked()
{
    if (askForMessage(stopMessage))
        ui->le_canStopMessage->setText(stopMessage.toString());
}

bool FileLoggerWindow::askForMessage(CANRAW::CanRawCompareMessage &message)
{
    if (!messageBuilder)
        return false;
    messageBuilder->setMessage(message);
    // The window may die while the dialog runs; that rejects the dialog.
    return messageBuilder->exec() == QDialog::Accepted && messageBuilder->getMessage(message);
}

void FileLoggerWindow::on_btnFileSelect_clicked()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Select file to log CAN messages"),
                                                      ui->edtFilePath->text(), tr("Files (*.txt)"));
    ui->edtFilePath->setText(path);
    QSettings settings(QCoreApplication::organizationName(), QCoreApplication::applicationName());
    settings.beginGroup(QStringLiteral("CANFileLoogger"));
    settings.setValue(QStringLiteral("filePath"), path);
}

void FileLoggerWindow::on_edtFilePath_textChanged(const QString &path)
{
    if (QFile::exists(path))
        ui->statusbar->showMessage(tr("File already exists and will be overwritten!"));
    else
        ui->statusbar->clearMessage();
}

void FileLoggerWindow::on_action_Stop_close_triggered()
{
    on_btnStop_clicked();
    hide();
    emit hidden();
}

void FileLoggerWindow::on_dateStart_dateTimeChanged(const QDateTime &dateTime)
{
    qDebug() << "Line:" << dateTime;
}

void FileLoggerWindow::on_dateStop_dateTimeChanged(const QDateTime &dateTime)
{
    Q_UNUSED(dateTime)
    checkStopTime();
}

void FileLoggerWindow::on_gbStopTriggersTime_clicked(bool checked)
{
    Q_UNUSED(checked)
    checkStopTime();
}

void FileLoggerWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    on_action_Stop_close_triggered();
    writeSettings();
}
