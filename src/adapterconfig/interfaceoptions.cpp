#include "interfaceoptions.h"
#include "ui_caninterfacewidget.h"

#include "advancedvalues.h"
#include "bitratelists.h"
#include "capabilityboxes.h"

#include <algorithm>
#include <iterator>

namespace {
using Adapter = AbstractCanAdapter;
using Form = OptionTargets;
using Ui = Ui_CanInterfaceWidget;

// ---- What several options have in common: one control that is the value.

template <auto box>
QVariant readChecked(const Form &form)
{
    return (form.ui.*box)->isChecked();
}

template <auto box>
void writeChecked(const Form &form, const QVariant &value)
{
    (form.ui.*box)->setChecked(value.toBool());
}

/// A box that the device does not offer says no, whatever it shows.
template <auto box>
QVariant readOffered(const Form &form)
{
    return (form.ui.*box)->isEnabled() && (form.ui.*box)->isChecked();
}

/// The choice is remembered for a device that offers the box.
template <auto box, bool CapabilityBoxes::*choice>
void writeRemembered(const Form &form, const QVariant &value)
{
    form.capabilities.*choice = value.toBool();
    if ((form.ui.*box)->isEnabled())
        writeChecked<box>(form, value);
}

template <QLineEdit *Ui::*edit>
QVariant readText(const Form &form)
{
    return (form.ui.*edit)->text();
}

template <QLineEdit *Ui::*edit>
void writeText(const Form &form, const QVariant &value)
{
    (form.ui.*edit)->setText(value.toString());
}

template <QSpinBox *Ui::*box>
QVariant readNumber(const Form &form)
{
    return (form.ui.*box)->value();
}

template <QSpinBox *Ui::*box>
void writeNumber(const Form &form, const QVariant &value)
{
    (form.ui.*box)->setValue(value.toInt());
}

template <QComboBox *Ui::*list>
QVariant readEntryIndex(const Form &form)
{
    return (form.ui.*list)->currentIndex();
}

template <QComboBox *Ui::*list>
void writeEntryIndex(const Form &form, const QVariant &value)
{
    (form.ui.*list)->setCurrentIndex(value.toInt());
}

template <QComboBox *Ui::*list>
QVariant readEntryData(const Form &form)
{
    return (form.ui.*list)->currentData();
}

template <QComboBox *Ui::*list>
void writeEntryData(const Form &form, const QVariant &value)
{
    (form.ui.*list)->setCurrentIndex((form.ui.*list)->findData(value));
}

template <QComboBox *Ui::*list>
QVariant readEntryNumber(const Form &form)
{
    return (form.ui.*list)->currentText().toUInt();
}

template <QComboBox *Ui::*list>
void writeEntryText(const Form &form, const QVariant &value)
{
    (form.ui.*list)->setCurrentText(value.toString());
}

// ---- What one option has of its own.

bool isTypeSelected(const Form &form, Adapter::CanAdapterType type)
{
    return form.ui.cbCanInterfaceType->currentData().toUInt() == type;
}

QVariant readType(const Form &form)
{
    return form.ui.cbCanInterfaceType->currentData().toUInt();
}

void writeType(const Form &form, const QVariant &value)
{
    form.selectType(value);
}

QVariant readName(const Form &form)
{
    const QString type = form.ui.cbCanInterfaceType->currentText();
    const QString device = form.ui.cbCanDevice->currentText();
    return device.isEmpty() ? type : QStringLiteral("%1 - %2").arg(type, device.section(QLatin1Char('|'), 0, 0));
}

QVariant readDevice(const Form &form)
{
    return form.ui.cbCanDevice->currentText();
}

void writeDevice(const Form &form, const QVariant &value)
{
    form.selectDevice(value.toString());
}

QVariant readProtocol(const Form &form)
{
    return form.ui.rb_tcp->isChecked() ? 0 : 1;
}

void writeProtocol(const Form &form, const QVariant &value)
{
    QRadioButton *button = value.toInt() == 1 ? form.ui.rb_udp : form.ui.rb_tcp;
    button->setChecked(true);
}

QVariant readTiming(const Form &form)
{
    return QVariant::fromValue(readTimingPage(form.ui));
}

void writeTiming(const Form &form, const QVariant &value)
{
    if (!isTypeSelected(form, Adapter::CanAdapterPcanAdvanced))
        return;
    const auto timing = value.value<Adapter::PeakAdvValues>();
    form.showUserTiming(timing.useAdvanced);
    writeTimingPage(form.ui, timing);
}

QVariant readFilter(const Form &form)
{
    return QVariant::fromValue(readFilterPage(form.ui));
}

void writeFilter(const Form &form, const QVariant &value)
{
    if (!isTypeSelected(form, Adapter::CanAdapterSystecXm3))
        return;
    form.openSettingsPage();
    writeFilterPage(form.ui, value.value<Adapter::SystecXM3AdvValues>());
}

void writeAutoBusOn(const Form &form, const QVariant &value)
{
    if (form.ui.cbAutoBusOn->property("changeable").toBool())
        writeChecked<&Ui::cbAutoBusOn>(form, value);
}

/// Even a device that offers no choice shows it, since each adapter knows whether it may only listen.
void writeListenOnly(const Form &form, const QVariant &value)
{
    form.capabilities.listenOnly = value.toBool();
    writeChecked<&Ui::cbListenOnly>(form, value);
}

QVariant readBtrExt(const Form &form)
{
    return readRegister(form.ui.edtBtr->text());
}

void writeBtrExt(const Form &form, const QVariant &value)
{
    form.ui.edtBtr->setText(registerText(value.toUInt()));
}

/// An adapter that is linked with one that is gone keeps what is selected.
void writeLinkedAdapter(const Form &form, const QVariant &value)
{
    const int index = form.ui.cbLinkedAdapter->findData(value);
    if (index >= 0)
        form.ui.cbLinkedAdapter->setCurrentIndex(index);
}

QVariant readClassicParameter(const Form &form)
{
    return QVariant::fromValue(form.bitrates.classicParameter());
}

void writeClassicParameter(const Form &form, const QVariant &value)
{
    form.bitrates.setClassicParameter(value.value<CAN::CANClassicBusParameter>());
}

QVariant readFdParameter(const Form &form)
{
    return QVariant::fromValue(form.bitrates.fdParameter());
}

void writeFdParameter(const Form &form, const QVariant &value)
{
    form.bitrates.setFdParameter(value.value<CAN::CANFDBusParameter>());
}

/// A number in place of a record stands for a timing made by hand, which its own option has brought.
template <void (BitrateLists::*select)(const CAN::CANBitrateDesc &)>
void writeBitrate(const Form &form, const QVariant &value)
{
    if (!value.canConvert<CAN::CANBitrateDesc>())
        return;
    const auto type = static_cast<Adapter::CanAdapterType>(form.ui.cbCanInterfaceType->currentData().toUInt());
    form.bitrates.updateBitrates(type, form.ui.cbCanfdConfig->isChecked());
    (form.bitrates.*select)(value);
}

// ---- The table.

struct OptionEntry
{
    Adapter::AdapterOption option;
    QVariant (*read)(const Form &form);
    void (*write)(const Form &form, const QVariant &value);
};

constexpr void (*readOnly)(const Form &, const QVariant &) = nullptr;

/// Options that are not in it belong to the collection, or to adapters alone.
constexpr OptionEntry options[] = {
    {Adapter::OptionUseCanFd, readChecked<&Ui::cbCanfdConfig>,
     writeRemembered<&Ui::cbCanfdConfig, &CapabilityBoxes::useCanFd>},
    {Adapter::OptionAdapterType, readType, writeType},
    {Adapter::OptionAdapterName, readName, readOnly},
    {Adapter::OptionDeviceName, readDevice, writeDevice},
    {Adapter::OptionDeviceData, readEntryData<&Ui::cbCanDevice>, readOnly},
    {Adapter::OptionIpAddress, readText<&Ui::le_ipAddress>, writeText<&Ui::le_ipAddress>},
    {Adapter::OptionPort, readText<&Ui::le_port>, writeText<&Ui::le_port>},
    {Adapter::OptionHardwareFlowControl, readChecked<&Ui::ch_HardwareFlowControl>,
     writeChecked<&Ui::ch_HardwareFlowControl>},
    {Adapter::OptionSerialBaudrate, readEntryNumber<&Ui::cb_Baudrate>, writeEntryText<&Ui::cb_Baudrate>},
    // One way only: the entries are words, so that the number of a parity selects none of them.
    {Adapter::OptionParity, readEntryIndex<&Ui::cb_Parity>, writeEntryText<&Ui::cb_Parity>},
    {Adapter::OptionDataBits, readEntryNumber<&Ui::cb_Databits>, writeEntryText<&Ui::cb_Databits>},
    {Adapter::OptionStopBits, readEntryData<&Ui::cb_Stopbits>, writeEntryData<&Ui::cb_Stopbits>},
    {Adapter::OptionInternExtern, readEntryIndex<&Ui::cb_internExtern>, writeEntryIndex<&Ui::cb_internExtern>},
    {Adapter::OptionReconnectTimeout, readNumber<&Ui::sb_reconnectTimeout>, writeNumber<&Ui::sb_reconnectTimeout>},
    {Adapter::OptionConnectTimeout, readNumber<&Ui::sb_connectTimeout>, writeNumber<&Ui::sb_connectTimeout>},
    {Adapter::OptionDisconnectTimeout, readNumber<&Ui::sb_disconnectTimeout>, writeNumber<&Ui::sb_disconnectTimeout>},
    {Adapter::OptionIpProtocol, readProtocol, writeProtocol},
    {Adapter::OptionPeakAdvValues, readTiming, writeTiming},
    {Adapter::OptionResetDevice, readChecked<&Ui::cb_ResetDevice>, writeChecked<&Ui::cb_ResetDevice>},
    {Adapter::OptionSingleWire, readChecked<&Ui::cb_velmorSingleWire>, writeChecked<&Ui::cb_velmorSingleWire>},
    {Adapter::OptionLowSpeed, readOffered<&Ui::cbLowSpeed>,
     writeRemembered<&Ui::cbLowSpeed, &CapabilityBoxes::lowSpeed>},
    {Adapter::OptionAutoBusOn, readChecked<&Ui::cbAutoBusOn>, writeAutoBusOn},
    {Adapter::OptionLogErrorFrames, readOffered<&Ui::chLogErrorFrames>,
     writeRemembered<&Ui::chLogErrorFrames, &CapabilityBoxes::errorFrames>},
    {Adapter::OptionContinuousSystemTime, readChecked<&Ui::cbContSystemTime>, writeChecked<&Ui::cbContSystemTime>},
    {Adapter::OptionSystemTimestamp, readChecked<&Ui::cbSystemTime>, writeChecked<&Ui::cbSystemTime>},
    {Adapter::OptionListenOnly, readOffered<&Ui::cbListenOnly>, writeListenOnly},
    {Adapter::OptionBtrExt, readBtrExt, writeBtrExt},
    {Adapter::OptionDescription, readText<&Ui::leDescription>, writeText<&Ui::leDescription>},
    {Adapter::OptionUsdoNodeId, readNumber<&Ui::sbUsdoId>, writeNumber<&Ui::sbUsdoId>},
    {Adapter::OptionXm3AdvValues, readFilter, writeFilter},
    {Adapter::OptionLinkedAdapter, readEntryData<&Ui::cbLinkedAdapter>, writeLinkedAdapter},
    {Adapter::OptionClassicBusParameter, readClassicParameter, writeClassicParameter},
    {Adapter::OptionFdBusParameter, readFdParameter, writeFdParameter},
    {Adapter::OptionFdBitrate, readEntryData<&Ui::cbCanFdDataBitrate>, writeBitrate<&BitrateLists::setFdBitrateInUi>},
    {Adapter::OptionBitrate, readEntryData<&Ui::cbBitrate>, writeBitrate<&BitrateLists::setBitrateInUi>},
    {Adapter::OptionForcedEcho, readChecked<&Ui::cbForcedEcho>, writeChecked<&Ui::cbForcedEcho>},
};

const OptionEntry *entryOf(Adapter::AdapterOption option)
{
    const auto *found = std::find_if(std::begin(options), std::end(options),
                                     [option](const OptionEntry &entry) { return entry.option == option; });
    return found != std::end(options) ? found : nullptr;
}
} // namespace

QVariant readOption(const OptionTargets &form, AbstractCanAdapter::AdapterOption option)
{
    const OptionEntry *entry = entryOf(option);
    return entry != nullptr ? entry->read(form) : QVariant();
}

void writeOption(const OptionTargets &form, AbstractCanAdapter::AdapterOption option, const QVariant &value)
{
    const OptionEntry *entry = entryOf(option);
    if (entry != nullptr && entry->write != readOnly)
        entry->write(form, value);
}
