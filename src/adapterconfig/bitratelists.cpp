#include "bitratelists.h"

#include "canbusparameterdialog.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

namespace {
constexpr uint highestLowSpeedBitrate = 125; // kBit/s

// Of that very type: a listed bitrate converts to a number, too.
bool isMarker(const QVariant &data, int marker)
{
    return data.userType() == QMetaType::Int && data.toInt() == marker;
}

int indexOfMarker(const QComboBox *list, int marker)
{
    for (int i = 0; i < list->count(); ++i) {
        if (isMarker(list->itemData(i), marker))
            return i;
    }
    return -1;
}

bool isUserBitrateSelected(const QComboBox *list)
{
    return isMarker(list->currentData(), BitrateLists::UserBitrateMarker);
}

QString nameWithSamplePoint(const CAN::CANBitrateDesc &description)
{
    return QStringLiteral("%1 (%2)").arg(description.name, QString::number(description.samplePoint));
}

bool isSameBitrate(const CAN::CANBitrateDesc &a, const CAN::CANBitrateDesc &b)
{
    const bool oneIsOpen = a.samplePoint == 0.0 || b.samplePoint == 0.0;
    return a.bitrate == b.bitrate && (oneIsOpen || a.samplePoint == b.samplePoint);
}

/// @return whether there was an entry of that bitrate
bool select(QComboBox *list, const CAN::CANBitrateDesc &description)
{
    for (int i = 0; i < list->count(); ++i) {
        const QVariant data = list->itemData(i);
        // A hand-made timing is selected by its record: its number coming back must neither select the entry nor become
        // the bitrate to fall back on. A register value has no record, so that its number alone leads to its entry.
        const bool isBitrate = data.isValid() && !isMarker(data, BitrateLists::UserBitrateMarker);
        if (isBitrate && isSameBitrate(CAN::CANBitrateDesc(data), description)) {
            list->setCurrentIndex(i);
            return true;
        }
    }
    return false;
}

/// @return whether the user accepted, and the form is still there
bool isAccepted(CANBusParameterDialog &dialog, const QComboBox *list)
{
    const QPointer<const QComboBox> stillThere = list;
    return dialog.exec() == QDialog::Accepted && stillThere;
}
} // namespace

BitrateLists::BitrateLists(const Controls &formControls)
    : controls(formControls)
{
}

void BitrateLists::setDefaultBitrate(quint16 bitrate)
{
    defaultBitrate = bitrate;
}

void BitrateLists::updateBitrates(AbstractCanAdapter::CanAdapterType type, bool fdBus)
{
    const QString classicText = controls.classic->currentText();
    const int defaultIndex = fillClassicList(CanAdapterFactory::getSupportedBitrates(type, fdBus));
    toggleCANUserBitrate(CanAdapterFactory::isCANClassicBaudrateSettingAvailable(type));
    toggleSystecBtrExt(type == AbstractCanAdapter::CanAdapterSystecUsb);

    const QString dataText = controls.data->currentText();
    const QList<CAN::CANBitrateDesc> dataBitrates = CanAdapterFactory::getSupportedFDBitrates(type);
    fillDataList(dataBitrates);
    if (!dataBitrates.isEmpty())
        toggleCANFDUserBitrate(CanAdapterFactory::isCANFDBaudrateSettingAvailable(type));

    restoreSelection(controls.classic, classicText, classic.name, defaultIndex);
    // By the index in the classic list: where the data list is the shorter one, nothing may be selected.
    restoreSelection(controls.data, dataText, fd.name, defaultIndex);
}

int BitrateLists::fillClassicList(const QList<CAN::CANBitrateDesc> &bitrates)
{
    const quint16 wanted = lastBitrateFromAdapter != 0 ? lastBitrateFromAdapter : defaultBitrate;
    int defaultIndex = 0;
    controls.classic->clear();
    for (const CAN::CANBitrateDesc &entry : bitrates) {
        if (entry.bitrate == wanted)
            defaultIndex = controls.classic->count();
        const bool isPlain = entry.samplePoint == 0.0;
        controls.classic->addItem(isPlain ? entry.name : nameWithSamplePoint(entry), QVariant::fromValue(entry));
    }
    return defaultIndex;
}

void BitrateLists::fillDataList(const QList<CAN::CANBitrateDesc> &bitrates)
{
    controls.data->clear();
    for (const CAN::CANBitrateDesc &entry : bitrates)
        controls.data->addItem(nameWithSamplePoint(entry), QVariant::fromValue(entry));
}

void BitrateLists::restoreSelection(QComboBox *list, const QString &text, const QString &userName, int defaultIndex)
{
    if (text.contains(tr("User bitrate")) && selectUserBitrate(list, userName))
        return;
    const int index = list->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    list->setCurrentIndex(index >= 0 ? index : defaultIndex);
}

bool BitrateLists::nameUserBitrate(QComboBox *list, const QString &name)
{
    const int index = indexOfMarker(list, UserBitrateMarker);
    if (index >= 0)
        list->setItemText(index, tr("User bitrate - %1").arg(name));
    return index >= 0;
}

bool BitrateLists::selectUserBitrate(QComboBox *list, const QString &name)
{
    if (!nameUserBitrate(list, name))
        return false;
    list->setCurrentIndex(indexOfMarker(list, UserBitrateMarker));
    return true;
}

void BitrateLists::updateLSBitrates(bool lowSpeed, AbstractCanAdapter::CanAdapterType type, bool fdBus)
{
    if (!lowSpeed) {
        updateBitrates(type, fdBus);
        return;
    }
    for (int i = controls.classic->count() - 1; i >= 0; --i) {
        if (controls.classic->itemData(i).toUInt() > highestLowSpeedBitrate)
            controls.classic->removeItem(i);
    }
}

void BitrateLists::setBitrateInUi(const CAN::CANBitrateDesc &description)
{
    if (select(controls.classic, description))
        lastBitrateFromAdapter = description.bitrate;
}

void BitrateLists::setFdBitrateInUi(const CAN::CANBitrateDesc &description)
{
    select(controls.data, description);
}

void BitrateLists::toggleUserBitrate(QComboBox *list, bool on)
{
    const int index = indexOfMarker(list, UserBitrateMarker);
    if (on && index < 0)
        list->addItem(tr("User bitrate"), UserBitrateMarker);
    else if (!on && index >= 0)
        list->removeItem(index);
}

void BitrateLists::toggleCANUserBitrate(bool on)
{
    toggleUserBitrate(controls.classic, on);
}

void BitrateLists::toggleCANFDUserBitrate(bool on)
{
    toggleUserBitrate(controls.data, on);
}

void BitrateLists::toggleSystecBtrExt(bool on)
{
    const int index = indexOfMarker(controls.classic, BtrExtMarker);
    if (on && index < 0)
        controls.classic->addItem(tr("User bitrate"), BtrExtMarker);
    else if (!on && index >= 0)
        // Of the other list, on purpose: this one loses the entry when it is filled for the next type.
        controls.data->removeItem(index);
}

void BitrateLists::classicIndexChanged(int index)
{
    const bool isUser = isUserBitrateSelected(controls.classic);
    controls.editClassic->setEnabled(isUser);
    classic.userDefined = isUser;
    const bool isBtr = isMarker(controls.classic->itemData(index), BtrExtMarker);
    controls.lblBtr->setEnabled(isBtr);
    controls.edtBtr->setEnabled(isBtr);
}

void BitrateLists::dataIndexChanged(int index)
{
    const bool isUser = isUserBitrateSelected(controls.data);
    controls.editData->setEnabled(isUser);
    fd.userDefined = isUser;
    controls.data->setToolTip(QString());
    const double samplePoint = controls.data->itemData(index).value<CAN::CANBitrateDesc>().samplePoint;
    if (samplePoint > 0.0)
        controls.data->setToolTip(QStringLiteral("%1 %").arg(samplePoint));
}

void BitrateLists::editClassicTiming(const std::optional<CAN::CANBitTimingThresholds> &limits)
{
    CANBusParameterDialog dialog;
    if (limits)
        dialog.setThresholds(*limits);
    dialog.setValues(classic);
    if (!isAccepted(dialog, controls.classic))
        return;
    classic = dialog.getValues();
    classic.userDefined = isUserBitrateSelected(controls.classic);
    nameUserBitrate(controls.classic, classic.name);
}

void BitrateLists::editDataTiming(const std::optional<CAN::CANBitTimingThresholds> &limits,
                                  AbstractCanAdapter::CanAdapterType type)
{
    CANBusParameterDialog dialog;
    if (limits)
        dialog.setThresholds(*limits);
    dialog.setValues(fd, type);
    if (!isAccepted(dialog, controls.data))
        return;
    fd = dialog.getFDValues();
    fd.userDefined = isUserBitrateSelected(controls.data);
    nameUserBitrate(controls.data, fd.name);
}

CAN::CANClassicBusParameter BitrateLists::classicParameter() const
{
    return classic;
}

CAN::CANFDBusParameter BitrateLists::fdParameter() const
{
    return fd;
}

void BitrateLists::setClassicParameter(const CAN::CANClassicBusParameter &parameter)
{
    classic = parameter;
    if (parameter.userDefined)
        selectUserBitrate(controls.classic, parameter.name);
    // No signal tells of an entry that was selected before.
    if (isUserBitrateSelected(controls.classic))
        classic.userDefined = true;
}

void BitrateLists::setFdParameter(const CAN::CANFDBusParameter &parameter)
{
    fd = parameter;
    if (!parameter.name.isEmpty())
        selectUserBitrate(controls.data, parameter.name);
    if (isUserBitrateSelected(controls.data))
        fd.userDefined = true;
}
