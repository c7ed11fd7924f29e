// The slots of single controls, and the bitrate lists, which are an object of their own.

#include "caninterfacewidget.h"
#include "ui_caninterfacewidget.h"

#include "addresscheck.h"
#include "bitratelists.h"
#include "capabilityboxes.h"
#include "typetreatment.h"

// ---- Capabilities.

void CanInterfaceWidget::on_cbCanfdConfig_toggled(bool checked)
{
    if (!checked) {
        ui->cbCanFdDataBitrate->setEnabled(false);
        return;
    }
    ui->lbCanFdDataBitrate->show();
    ui->cbCanFdDataBitrate->show();
    ui->cbCanFdDataBitrate->setEnabled(CanAdapterFactory::isBaudrateChangeable(selectedType()));
}

void CanInterfaceWidget::on_cbCanfdConfig_clicked(bool checked)
{
    if (selectedType() != AbstractCanAdapter::CanAdapterSocketCan)
        updateBitrates(selectedType(), checked);
}

void CanInterfaceWidget::on_cbLowSpeed_stateChanged(int state)
{
    if (!ui->cbLowSpeed->isEnabled())
        return;
    capabilities->lowSpeedChanged(state);
    updateLSBitrates(state == Qt::Checked);
    if (state == Qt::Unchecked)
        updateBitrates();
}

void CanInterfaceWidget::on_cbListenOnly_stateChanged(int state)
{
    capabilities->listenOnlyChanged(state);
}

void CanInterfaceWidget::on_chLogErrorFrames_stateChanged(int state)
{
    capabilities->errorFramesChanged(state);
}

void CanInterfaceWidget::on_cbAutoBusOn_stateChanged(int state)
{
    capabilities->autoBusOnChanged(state);
}

// ---- Input.

void CanInterfaceWidget::on_le_ipAddress_textChanged(const QString &text)
{
    if (ui->stackedWidget->currentIndex() != NetworkPage)
        return;
    ui->validIPAddress->setText(looksLikeIpAddress(text) ? QString() : tr("IP Address does not seem to be valid."));
}

void CanInterfaceWidget::on_le_port_textChanged(const QString &text)
{
    ui->validPort->setText(text.isEmpty() ? tr("Port does not seem to be valid.") : QString());
}

void CanInterfaceWidget::on_xm3cbFilterMode_currentIndexChanged(int index)
{
    ui->xm3swFilter->setCurrentIndex(ui->xm3cbFilterMode->itemData(index).toInt());
}

// ---- The bitrate lists.

void CanInterfaceWidget::setDefaultBitrate(unsigned short bitrate)
{
    bitrates->setDefaultBitrate(bitrate);
}

void CanInterfaceWidget::updateBitrates()
{
    updateBitrates(selectedType(), ui->cbCanfdConfig->isChecked());
}

void CanInterfaceWidget::updateBitrates(AbstractCanAdapter::CanAdapterType type, bool fd)
{
    bitrates->updateBitrates(type, fd);
}

void CanInterfaceWidget::updateLSBitrates(bool lowSpeed)
{
    bitrates->updateLSBitrates(lowSpeed, selectedType(), ui->cbCanfdConfig->isChecked());
}

void CanInterfaceWidget::setBitrateInUi(CAN::CANBitrateDesc bitrate)
{
    bitrates->setBitrateInUi(bitrate);
}

void CanInterfaceWidget::setFdBitrateInUi(CAN::CANBitrateDesc bitrate)
{
    bitrates->setFdBitrateInUi(bitrate);
}

void CanInterfaceWidget::toggleCANUserBitrate(bool on)
{
    bitrates->toggleCANUserBitrate(on);
}

void CanInterfaceWidget::toggleCANFDUserBitrate(bool on)
{
    bitrates->toggleCANFDUserBitrate(on);
}

void CanInterfaceWidget::toggleSystecBtrExt(bool on)
{
    bitrates->toggleSystecBtrExt(on);
}

void CanInterfaceWidget::on_cbBitrate_currentIndexChanged(int index)
{
    bitrates->classicIndexChanged(index);
    offerTimingEdit();
}

void CanInterfaceWidget::on_cbCanFdDataBitrate_currentIndexChanged(int index)
{
    bitrates->dataIndexChanged(index);
}

void CanInterfaceWidget::on_btnEdtClassicBitrate_clicked()
{
    bitrates->editClassicTiming(timingLimits(false));
}

void CanInterfaceWidget::on_btnEdtFDBitrate_clicked()
{
    bitrates->editDataTiming(timingLimits(true), static_cast<Type>(currentType));
}

/// Those of the controller that the form describes; none if there is none.
std::optional<CAN::CANBitTimingThresholds> CanInterfaceWidget::timingLimits(bool dataPhase)
{
    const std::unique_ptr<AbstractCanAdapter> adapter = buildAdapter();
    return adapter ? std::optional(adapter->getThresholds(dataPhase)) : std::nullopt;
}
