// What the form does when a type or a device is selected: it offers what both are capable of.

#include "caninterfacewidget.h"
#include "ui_caninterfacewidget.h"

#include "bitratelists.h"
#include "capabilityboxes.h"
#include "devicelist.h"

namespace {
using Adapter = AbstractCanAdapter;

/// The area of the pages is as tall as the tallest of them that has a height at all.
void setCountsForHeight(QWidget *page, bool counts)
{
    page->setSizePolicy(QSizePolicy::Preferred, counts ? QSizePolicy::Preferred : QSizePolicy::Ignored);
}
} // namespace

void CanInterfaceWidget::on_cbCanInterfaceType_currentIndexChanged(int index)
{
    const auto type = static_cast<Type>(ui->cbCanInterfaceType->itemData(index).toUInt());
    setCountsForHeight(ui->stackedWidget->currentWidget(), false);
    takeType(type);
    ui->le_port->setPlaceholderText(QString());
    updateBitrates(type, ui->cbCanfdConfig->isChecked());
    updateInterfaceList(type);
    // A type whose devices have no feature word answers for all of them, by its own name.
    offerCapabilities(type, ui->cbCanInterfaceType->itemText(index));
    ui->cbBitrate->setEnabled(CanAdapterFactory::isBaudrateChangeable(type));
    breakFdLock();
    if (type == Adapter::CanAdapterSocketCan) {
        lockDataBitrate();
        showSystemSettings(CanAdapterFactory::getSocketCanProps(ui->cbCanDevice->currentText()));
        emit sigUpdateAdapter();
    } else {
        showUserSettings();
        on_cbCanfdConfig_toggled(ui->cbCanfdConfig->isChecked());
    }
    showSettingsPage(type);
    toggleCANUserBitrate(CanAdapterFactory::isCANClassicBaudrateSettingAvailable(type));
    toggleCANFDUserBitrate(CanAdapterFactory::isCANFDBaudrateSettingAvailable(type));
    setCountsForHeight(ui->stackedWidget->currentWidget(), true);
    ui->stackedWidget->adjustSize();
}

/// For an adapter of that type, which the form is about to show.
void CanInterfaceWidget::selectType(const QVariant &type)
{
    const bool wasLink = currentType == Adapter::CanAdapterSocketCan;
    ui->cbCanInterfaceType->setCurrentIndex(ui->cbCanInterfaceType->findData(type));
    // A new form shows its first type without ever having selected it.
    if (selectedType() != currentType)
        on_cbCanInterfaceType_currentIndexChanged(ui->cbCanInterfaceType->currentIndex());
    // The box of a link was still locked while the new type was to show what the adapter says of CAN FD.
    if (wasLink && currentType != Adapter::CanAdapterSocketCan)
        showRememberedCanFd();
}

void CanInterfaceWidget::showRememberedCanFd()
{
    const bool used = !ui->cbCanfdConfig->isHidden() && capabilities->useCanFd;
    if (ui->cbCanfdConfig->isChecked() == used)
        return;
    ui->cbCanfdConfig->setChecked(used);
    updateBitrates();
}

void CanInterfaceWidget::takeType(Type type)
{
    if (type == currentType)
        return;
    currentType = type;
    const QSignalBlocker blocker(ui->cbCanDevice);
    ui->cbCanDevice->clear();
}

void CanInterfaceWidget::on_cbCanDevice_currentIndexChanged(int index)
{
    const QString device = ui->cbCanDevice->itemText(index);
    const Type type = selectedType();
    offerCapabilities(type, device);
    breakFdLock();
    if (type == Adapter::CanAdapterSocketCan)
        showSystemSettings(CanAdapterFactory::getSocketCanProps(device));
    else
        showUserSettings();
    showDeviceToolTip();
    ui->cbCanDevice->setEnabled(true);
    offerTimingEdit();
}

/// What there is to say of the selected device; of one with nothing to say, the tool tip stays as it is.
void CanInterfaceWidget::showDeviceToolTip()
{
    if (selectedType() == Adapter::CanAdapterIxxatVci3) {
        if (const auto adapter = buildAdapter())
            showDeviceNumber(*adapter);
    }
    const QString toolTip = ui->cbCanDevice->currentData(Qt::ToolTipRole).toString();
    if (!toolTip.isEmpty())
        ui->cbCanDevice->setToolTip(toolTip);
}

void CanInterfaceWidget::showDeviceNumber(AbstractCanAdapter &adapter)
{
    ui->cbCanDevice->setToolTip(QString::number(static_cast<unsigned int>(adapter.getDeviceNumber()), 16));
}

// ---- Devices.

void CanInterfaceWidget::updateInterfaceList(AbstractCanAdapter::CanAdapterType type)
{
    const QSignalBlocker blocker(ui->cbCanDevice);
    const QString selected = ui->cbCanDevice->currentText();
    ui->cbCanDevice->clear();
    fillDeviceList(*ui->cbCanDevice, CanAdapterFactory::getAdvInterfaceList(type));
    if (!selected.isEmpty())
        setDeviceName(selected);
    offerTimingEdit();
}

void CanInterfaceWidget::setDeviceName(QString name)
{
    if (name.isEmpty()) {
        ui->cbCanDevice->setCurrentText(name);
        return;
    }
    removeMissingDevices(*ui->cbCanDevice);
    const int index = ui->cbCanDevice->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    ui->cbCanDevice->setCurrentIndex(index >= 0 ? index : addMissingDevice(*ui->cbCanDevice, name, savedFeatures()));
    offerTimingEdit();
}

/// What the current adapter's device is capable of, as far as was known when the adapter was made.
unsigned int CanInterfaceWidget::savedFeatures() const
{
    return currentAdapter != nullptr ? currentAdapter->getCanAdapterOption(Adapter::OptionDeviceData).toUInt() : 0;
}

/// A timing is worked out within the limits of the device, which one that is not connected does not tell.
void CanInterfaceWidget::offerTimingEdit()
{
    const QVariant bitrate = ui->cbBitrate->currentData();
    const bool isUser = bitrate.userType() == QMetaType::Int && bitrate.toInt() == BitrateLists::UserBitrateMarker;
    ui->btnEdtClassicBitrate->setEnabled(isUser && !isMissingDeviceSelected(*ui->cbCanDevice));
}

void CanInterfaceWidget::updateDeviceList(unsigned int vendor)
{
    if (selectedType() == vendorTypes.value(vendor, Adapter::CanAdapterNone))
        on_cbCanInterfaceType_currentIndexChanged(ui->cbCanInterfaceType->currentIndex());
}

void CanInterfaceWidget::refreshDevices(AbstractCanAdapter::CanAdapterType type)
{
    if (selectedType() != type)
        return;
    const QString device = ui->cbCanDevice->currentText();
    const QVariant features = ui->cbCanDevice->currentData();
    // The first device that comes takes the place of none.
    if (isNoDeviceSelected(*ui->cbCanDevice)) {
        const QSignalBlocker blocker(ui->cbCanDevice);
        ui->cbCanDevice->clear();
    }
    // A missing one may be back.
    if (isMissingDeviceSelected(*ui->cbCanDevice))
        ui->cbCanDevice->setToolTip(QString());
    if (type == Adapter::CanAdapterSocketCan) {
        // The settings of a link may have changed, too.
        on_cbCanInterfaceType_currentIndexChanged(ui->cbCanInterfaceType->currentIndex());
    } else {
        updateInterfaceList(type);
        // Only then: to select a device sets back what the user has not yet taken over.
        if (ui->cbCanDevice->currentText() != device || ui->cbCanDevice->currentData() != features)
            on_cbCanDevice_currentIndexChanged(ui->cbCanDevice->currentIndex());
    }
    showDeviceToolTip();
}

// ---- Capabilities.

void CanInterfaceWidget::offerCapabilities(Type type, const QString &factoryName)
{
    const unsigned int features = ui->cbCanDevice->currentData().toUInt();
    if (features == Adapter::FeaturesUnknown)
        offerByName(type, factoryName);
    else
        handleDeviceFeatures(features, type);
}

void CanInterfaceWidget::offerByName(Type type, const QString &factoryName)
{
    offerCanFd(CanAdapterFactory::isInterfaceFd(type, factoryName) && capabilities->canFdAllowed);
    enableLowSpeedCheckBox(CanAdapterFactory::isInterfaceLowSpeed(type, factoryName));
    enableAutoBusOnCheckBox(CanAdapterFactory::canDisableAutoBusOn(type, factoryName), false);
    enableErrorFramesCheckBox(false);
    enableListenOnlyCheckBox(false);
}

void CanInterfaceWidget::handleDeviceFeatures(unsigned int features, AbstractCanAdapter::CanAdapterType type)
{
    const auto has = [features](Adapter::DeviceFeature feature) { return (features & feature) != 0; };

    enableErrorFramesCheckBox(has(Adapter::FeatureErrorFrames));
    offerLowSpeed(has(Adapter::FeatureLowSpeedSelectable), has(Adapter::FeatureLowSpeedOnly));
    offerCanFd(has(Adapter::FeatureCanFd));
    updateBitrates(type, has(Adapter::FeatureCanFd) && capabilities->useCanFd);
    enableAutoBusOnCheckBox(has(Adapter::FeatureAutoBusOnChangeable), has(Adapter::FeatureAutoBusOnDefault));
    if (has(Adapter::FeatureAutoBusOnForced))
        ui->cbAutoBusOn->setChecked(true);
    enableListenOnlyCheckBox(has(Adapter::FeatureListenOnly));
}

void CanInterfaceWidget::offerLowSpeed(bool selectable, bool nothingElse)
{
    if (selectable) {
        enableLowSpeedCheckBox(true);
        return;
    }
    if (nothingElse) {
        ui->cbLowSpeed->show();
        ui->cbLowSpeed->setEnabled(false);
    } else {
        enableLowSpeedCheckBox(false);
    }
    ui->cbLowSpeed->setChecked(nothingElse);
    updateLSBitrates(nothingElse);
}

void CanInterfaceWidget::offerCanFd(bool offered)
{
    // Checking shows the rows of the group, and so comes before hiding them.
    ui->cbCanfdConfig->setChecked(offered && capabilities->useCanFd);
    ui->cbCanfdConfig->setVisible(offered);
    ui->lbCanFdDataBitrate->setVisible(offered);
    ui->cbCanFdDataBitrate->setVisible(offered);
}

void CanInterfaceWidget::enableListenOnlyCheckBox(bool enable)
{
    capabilities->enableListenOnly(enable);
}

void CanInterfaceWidget::enableLowSpeedCheckBox(bool enable)
{
    capabilities->enableLowSpeed(enable);
}

void CanInterfaceWidget::enableErrorFramesCheckBox(bool enable)
{
    capabilities->enableErrorFrames(enable);
}

void CanInterfaceWidget::enableAutoBusOnCheckBox(bool enable, bool value)
{
    capabilities->enableAutoBusOn(enable, value);
}

void CanInterfaceWidget::disableFDCheckbox(bool state)
{
    ui->cbCanfdConfig->setChecked(state);
    breakFdLock();
    fdLock = connect(ui->cbCanfdConfig, &QGroupBox::toggled, ui->cbCanfdConfig,
                     [box = ui->cbCanfdConfig, state](bool checked) {
                         if (checked != state)
                             box->setChecked(state);
                     });
}

void CanInterfaceWidget::breakFdLock()
{
    disconnect(fdLock);
}

// ---- Settings that the system makes, or the user.

void CanInterfaceWidget::showSystemSettings(const AbstractCanAdapter::SocketCANProps &props)
{
    const QString text = tr("%1 kbit/s");
    ui->cbBitrate->clear();
    ui->cbAutoBusOn->setProperty("changeable", false);
    ui->cbBitrate->addItem(text.arg(props.bitrate), props.toQVariant());
    disableFDCheckbox(props.canFd);
    if (props.canFd) {
        ui->cbCanFdDataBitrate->clear();
        ui->cbCanFdDataBitrate->addItem(text.arg(props.fdBitrate), props.toQVariant());
    }
    const bool restarts = props.restartMs != 0;
    ui->cbAutoBusOn->setChecked(restarts);
    ui->cbAutoBusOn->setToolTip(restarts ? tr("Auto bus on is activated with a value of %1 ms").arg(props.restartMs)
                                         : tr("Auto bus on is deactivated"));
}

void CanInterfaceWidget::lockDataBitrate()
{
    ui->cbCanFdDataBitrate->setEnabled(false);
    ui->btnEdtFDBitrate->setEnabled(false);
}

void CanInterfaceWidget::showUserSettings()
{
    ui->cbAutoBusOn->setProperty("changeable", true);
    ui->cbCanfdConfig->setEnabled(true);
}
