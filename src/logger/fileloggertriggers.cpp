// What starts and ends a log by itself, and what of the traffic goes into it.

#include "fileloggerwindow.h"
#include "ui_fileloggerwindow.h"

#include "identifierset.h"
#include "identifiertexts.h"
#include "logline.h"
#include "logoutput.h"
#include "stoplimits.h"
#include "templatecomparison.h"

#include <QFileInfo>

namespace {
bool isPast(const QDateTimeEdit *edit)
{
    return edit->dateTime() < QDateTime::currentDateTime();
}
} // namespace

void FileLoggerWindow::checkStartTriggerCANIDs(unsigned int id)
{
    if (ui->gbStartTriggersCANIDs->isChecked() && !logging && startIds.contains(id))
        startLogging();
}

void FileLoggerWindow::checkStartTriggerCANMessage(CAN::CanRxMessage *message)
{
    if (ui->gbStartTriggersCANMessage->isChecked() && !logging && CANRAW::matches(startMessage, *message))
        startLogging();
}

void FileLoggerWindow::checkStopTriggerCANIDs(unsigned int id)
{
    if (!ui->gbStopTriggersCANIDs->isChecked())
        return;
    qDebug() << "Line:" << stopIds;
    if (!stopIds.contains(id))
        return;
    writeToLog(outputFile, logStopIdentifierLine(id), Q_FUNC_INFO);
    on_btnStop_clicked();
}

void FileLoggerWindow::checkStopTriggerCANMessage(CAN::CanRxMessage *message)
{
    if (!ui->gbStopTriggersCANMessage->isChecked() || !CANRAW::matches(stopMessage, *message))
        return;
    writeToLog(outputFile, logStopMessageLine(), Q_FUNC_INFO);
    on_btnStop_clicked();
}

void FileLoggerWindow::checkStopTriggerCount()
{
    if (ui->gbStopTriggersCounter->isChecked() && isCountReached(messageCount, ui->spCounter->value()))
        on_btnStop_clicked();
}

void FileLoggerWindow::handleTimer()
{
    if (!logging) {
        if (startTriggerArmed && ui->gbStartTriggersTime->isChecked() && isPast(ui->dateStart))
            on_btnStart_clicked();
        return;
    }
    if (!stopTriggerArmed)
        return;
    const bool isTimeOver = ui->gbStopTriggersTime->isChecked() && stopTimeValid && isPast(ui->dateStop);
    if (isTimeOver || isFileFull())
        on_btnStop_clicked();
}

bool FileLoggerWindow::isFileFull() const
{
    // The size on disk. What is still in the buffer counts later, for asking the file itself would write it out.
    return ui->gbStopTriggersFileSize->isChecked() && isWritable(outputFile)
        && isFileSizeReached(QFileInfo(*outputFile).size(), maxFileSize);
}

void FileLoggerWindow::checkStopTime()
{
    if (!ui->gbStopTriggersTime->isChecked()) {
        ui->lblStopInfo->clear();
        return;
    }
    stopTimeValid = !isPast(ui->dateStop);
    ui->lblStopInfo->setText(stopTimeValid ? QString() : tr("Stop time is in the past and will be ignored."));
}

void FileLoggerWindow::setFilter()
{
    writeSettings();
    *filterIds = filteredIdentifiers(ui->textEditFilterList->toPlainText());
}

void FileLoggerWindow::on_btnStartTriggers_clicked(bool checked)
{
    updateStartTriggerButtonText(checked);
    startTriggerArmed = checked;
    ui->gbStartTriggers->setEnabled(!checked);
    if (checked)
        updateStartTriggerValues();
}

void FileLoggerWindow::on_btnStopTriggers_clicked(bool checked)
{
    checkStopTime();
    updateStopTriggerButtonText(checked);
    stopTriggerArmed = checked;
    ui->gbStopTriggers->setEnabled(!checked);
    if (checked)
        updateStopTriggerValues();
}

void FileLoggerWindow::updateStartTriggerValues()
{
    startIds = listedIdentifiers(ui->edtStartIds->text());
    statusLabel->setText(tr("Wait for start trigger event"));
}

void FileLoggerWindow::updateStopTriggerValues()
{
    stopIds = listedIdentifiers(ui->edtStartIds_2->text());
    maxFileSize = ui->spFileSize->value();
}

void FileLoggerWindow::startTriggerChanged(bool checked)
{
    Q_UNUSED(checked)
    ui->btnStartTriggers->setEnabled(ui->gbStartTriggersCANIDs->isChecked()
                                     || ui->gbStartTriggersCANMessage->isChecked()
                                     || ui->gbStartTriggersTime->isChecked());
}

void FileLoggerWindow::stopTriggerChanged(bool checked)
{
    Q_UNUSED(checked)
    ui->btnStopTriggers->setEnabled(ui->gbStopTriggersCANIDs->isChecked() || ui->gbStopTriggersCANMessage->isChecked()
                                    || ui->gbStopTriggersTime->isChecked() || ui->gbStopTriggersCounter->isChecked()
                                    || ui->gbStopTriggersFileSize->isChecked());
}

void FileLoggerWindow::updateStartTriggerButtonText(bool armed)
{
    ui->btnStartTriggers->setText(armed ? tr("Deactivate Start Triggers") : tr("Activate Start Triggers"));
}

void FileLoggerWindow::updateStopTriggerButtonText(bool armed)
{
    ui->btnStopTriggers->setText(armed ? tr("Deactivate Stop Triggers") : tr("Activate Stop Triggers"));
}
