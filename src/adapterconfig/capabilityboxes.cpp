#include "capabilityboxes.h"

#include <QCheckBox>

CapabilityBoxes::CapabilityBoxes(const Controls &boxes)
    : controls(boxes)
{
}

void CapabilityBoxes::enableErrorFrames(bool enable)
{
    const QString toolTip = enable ? QString() : tr("Error frames are not available within this adapter.");
    this->enable(*controls.errorFrames, enable, errorFrames, toolTip);
}

void CapabilityBoxes::enableListenOnly(bool enable)
{
    const QString toolTip = enable ? tr("No transmission, no acknowledge")
                                   : tr("Listen only is not changeable for this adapter.");
    this->enable(*controls.listenOnly, enable, listenOnly, toolTip);
}

void CapabilityBoxes::enableLowSpeed(bool enable)
{
    const QString toolTip = enable ? QString() : tr("CAN Low Speed is not available within this adapter.");
    this->enable(*controls.lowSpeed, enable, lowSpeed, toolTip);
}

void CapabilityBoxes::enableAutoBusOn(bool enable, bool value)
{
    QCheckBox &box = *controls.autoBusOn;
    box.setEnabled(enable);
    if (enable) {
        box.setToolTip(QString());
        box.setChecked(autoBusOn);
        return;
    }
    autoBusOn = box.isChecked();
    box.setToolTip(tr("Auto is not changeable within this adapter."));
    box.setChecked(value);
}

void CapabilityBoxes::errorFramesChanged(int checkState)
{
    changed(*controls.errorFrames, checkState, errorFrames);
}

void CapabilityBoxes::listenOnlyChanged(int checkState)
{
    changed(*controls.listenOnly, checkState, listenOnly);
}

void CapabilityBoxes::lowSpeedChanged(int checkState)
{
    changed(*controls.lowSpeed, checkState, lowSpeed);
}

void CapabilityBoxes::autoBusOnChanged(int checkState)
{
    changed(*controls.autoBusOn, checkState, autoBusOn);
}

void CapabilityBoxes::enable(QCheckBox &box, bool enable, bool &choice, const QString &toolTip)
{
    if (box.isEnabled() == enable)
        return;
    box.setEnabled(enable);
    box.setToolTip(toolTip);
    if (enable) {
        box.setChecked(choice);
        return;
    }
    choice = box.isChecked();
    box.setChecked(false);
}

void CapabilityBoxes::changed(const QCheckBox &box, int checkState, bool &choice)
{
    if (!box.isEnabled() || checkState == Qt::PartiallyChecked)
        return;
    choice = checkState == Qt::Checked;
}
