// The form in its parts. Here: its life, the adapter that it shows, and the values that go both ways.
//
//   caninterfaceselection    what it offers for a type and a device
//   caninterfacepage         the page of further settings that a type has
//   caninterfacecontrols     the slots of single controls
//   caninterfaceappearance   its place, its fonts
//
// What can be said apart from the form stands apart: the table of the options (interfaceoptions), the table of the types
// (typetreatment), the bitrate lists (bitratelists), the boxes that remember a choice (capabilityboxes), the list of
// devices (devicelist), the comparison of the watch (changewatch).

#include "caninterfacewidget.h"
#include "ui_caninterfacewidget.h"

#include "addresscheck.h"
#include "adaptertype.h"
#include "bitratelists.h"
#include "capabilityboxes.h"
#include "changewatch.h"
#include "interfaceoptions.h"
#include "linkedadapters.h"

#include <QRegularExpressionValidator>

#include <utility>

namespace {
using Adapter = AbstractCanAdapter;

constexpr int changeInterval = 250; // ms
constexpr int highestSerialBaudrate = 9999999;

// The values of OptionStopBits.
constexpr unsigned int oneStopBit = 1;
constexpr unsigned int twoStopBits = 2;
constexpr unsigned int oneAndAHalfStopBits = 3;

bool saysTheSame(const Adapter &adapter, const Adapter::SocketCANProps &props)
{
    const CAN::CANBitrateDesc bitrate = adapter.getCanAdapterOption(Adapter::OptionBitrate);
    const CAN::CANBitrateDesc fdBitrate = adapter.getCanAdapterOption(Adapter::OptionFdBitrate);
    return adapter.getCanAdapterOption(Adapter::OptionUseCanFd).toBool() == props.canFd
        && bitrate.bitrate == props.bitrate && fdBitrate.bitrate == props.fdBitrate;
}
} // namespace

CanInterfaceWidget::CanInterfaceWidget(QWidget *parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui_CanInterfaceWidget>())
    , vendorTypes(usbVendorAdapterTypes)
{
    ui->setupUi(this);
    capabilities = std::make_unique<CapabilityBoxes>(
        CapabilityBoxes::Controls{ui->chLogErrorFrames, ui->cbListenOnly, ui->cbLowSpeed, ui->cbAutoBusOn});
    bitrates = std::make_unique<BitrateLists>(BitrateLists::Controls{
        ui->cbBitrate, ui->cbCanFdDataBitrate, ui->btnEdtClassicBitrate, ui->btnEdtFDBitrate, ui->lblBtr, ui->edtBtr});
    fitToFont();
    ui->lblAdapterChanged->hide();
    ui->cbAutoBusOn->setProperty("changeable", true);
    fillTypeList();
    ui->stackedWidget->hide();
    adjustSize();
    limitInput();

    ui->cbCanfdConfig->hide();
    ui->lbCanFdDataBitrate->hide();
    ui->cbCanFdDataBitrate->hide();
    ui->cbCanFdDataBitrate->setEnabled(false);
    ui->cb_Stopbits->addItem(QStringLiteral("1"), oneStopBit);
    ui->cb_Stopbits->addItem(QStringLiteral("1.5"), oneAndAHalfStopBits);
    ui->cb_Stopbits->addItem(QStringLiteral("2"), twoStopBits);

    enableErrorFramesCheckBox(false);
    enableListenOnlyCheckBox(false);
    enableLowSpeedCheckBox(false);
    enableAutoBusOnCheckBox(false, false);
    registerDeviceChangeNotification();
    connect(CanAdapterFactory::notifier(), &CanAdapterNotifier::devicesChanged, this,
            &CanInterfaceWidget::refreshDevices);

    changeTimer = new QTimer(this);
    connect(changeTimer, &QTimer::timeout, this, &CanInterfaceWidget::checkForChanges);
    fillXm3FilterModeCombobox();
    showForcedEcho(false);
}

CanInterfaceWidget::~CanInterfaceWidget()
{
    if (changeTimer)
        changeTimer->stop();
    // It may be a child of the form, and die after all this.
    setCurrentAdapter(nullptr);
}

/// The types that there are take the place of the usual ones.
void CanInterfaceWidget::fillTypeList()
{
    const QSignalBlocker blocker(ui->cbCanInterfaceType);
    ui->cbCanInterfaceType->clear();
    for (const auto &[name, type] : CanAdapterFactory::getImplementedAdapters())
        ui->cbCanInterfaceType->addItem(name, static_cast<unsigned int>(type));
}

void CanInterfaceWidget::fillXm3FilterModeCombobox()
{
    const QStringList modes = {tr("No filter"), tr("CAN ID filter"), tr("Acceptance filter")};
    for (int mode = 0; mode < modes.size(); ++mode)
        ui->xm3cbFilterMode->addItem(modes[mode], mode);
}

void CanInterfaceWidget::limitInput()
{
    ui->cb_Baudrate->setEditable(true);
    ui->cb_Baudrate->setValidator(new QIntValidator(0, highestSerialBaudrate, this));
    ui->le_ipAddress->setValidator(new QRegularExpressionValidator(ipAddressPattern(), this));
    ui->le_port->setValidator(new QRegularExpressionValidator(portPattern(), this));
}

// ---- The current adapter.

void CanInterfaceWidget::setCurrentAdapter(AbstractCanAdapter *adapter)
{
    if (currentAdapter != nullptr)
        disconnect(currentAdapter, &QObject::destroyed, this, &CanInterfaceWidget::forgetAdapter);
    currentAdapter = adapter;
    if (currentAdapter != nullptr)
        connect(currentAdapter, &QObject::destroyed, this, &CanInterfaceWidget::forgetAdapter);
    if (appliedAdapter.get() != adapter)
        appliedAdapter.reset();
}

void CanInterfaceWidget::forgetAdapter()
{
    currentAdapter = nullptr;
}

void CanInterfaceWidget::setAdapterMap(QMap<unsigned short, QPointer<AbstractCanAdapter>> *map)
{
    adapterMap = map;
}

void CanInterfaceWidget::updateValues()
{
    setUpdatesEnabled(false);
    updateLinkedAdapterList();
    updateValuesFromCurrentAdapter();
    setUpdatesEnabled(true);
}

void CanInterfaceWidget::updateLinkedAdapterList()
{
    ui->cbLinkedAdapter->setUpdatesEnabled(false);
    fillLinkedAdapters(*ui->cbLinkedAdapter, currentAdapter, adapterMap);
    ui->cbLinkedAdapter->setUpdatesEnabled(true);
}

void CanInterfaceWidget::updateValuesFromCurrentAdapter()
{
    // Whoever answers sigUpdateAdapter(), which the type and the device may set off, may put another adapter here, or
    // none.
    for (unsigned int option = 0; option < Adapter::optionCount && currentAdapter != nullptr; ++option) {
        const auto key = static_cast<Adapter::AdapterOption>(option);
        setCanInterfaceOption(key, currentAdapter->getCanAdapterOption(key));
    }
    if (currentAdapter == nullptr) {
        changeTimer->stop();
        return;
    }
    const Type type = typeOf(*currentAdapter);
    if (type == Adapter::CanAdapterIxxatVci3)
        showDeviceNumber(*currentAdapter);
    if (type == Adapter::CanAdapterSocketCan)
        followSystem();
    changeTimer->start(changeInterval);
}

/// What was saved of a link may be out of date.
void CanInterfaceWidget::followSystem()
{
    const Adapter::SocketCANProps props = CanAdapterFactory::getSocketCanProps(ui->cbCanDevice->currentText());
    if (props.bitrate == 0 || saysTheSame(*currentAdapter, props))
        return;
    lockDataBitrate();
    showSystemSettings(props);
    emit sigUpdateAdapter();
}

// ---- Values.

OptionTargets CanInterfaceWidget::optionTargets()
{
    return {*ui,
            *capabilities,
            *bitrates,
            [this](const QVariant &type) { selectType(type); },
            [this](const QString &name) { setDeviceName(name); },
            [this](bool inUse) { showUserTiming(inUse); },
            [this] { openSettingsPage(); }};
}

QVariant CanInterfaceWidget::getCanInterfaceOption(AbstractCanAdapter::AdapterOption option)
{
    return readOption(optionTargets(), option);
}

void CanInterfaceWidget::setCanInterfaceOption(AbstractCanAdapter::AdapterOption option, QVariant value)
{
    writeOption(optionTargets(), option, value);
}

QPointer<AbstractCanAdapter> CanInterfaceWidget::createAdapterFromSettings()
{
    ui->lblAdapterChanged->hide();
    return buildAdapter().release();
}

std::unique_ptr<AbstractCanAdapter> CanInterfaceWidget::buildAdapter()
{
    std::unique_ptr<Adapter> adapter(
        CanAdapterFactory::createCanAdapter(selectedType(), ui->cbCanDevice->currentText()));
    if (!adapter)
        return nullptr;
    const QList<Adapter::AdapterOption> supported = adapter->getSupportedOptions();
    adapter->listenOnly = ui->cbListenOnly->isChecked();
    const OptionTargets form = optionTargets();
    for (unsigned int option = 0; option < Adapter::optionCount; ++option) {
        const auto key = static_cast<Adapter::AdapterOption>(option);
        if (supported.contains(key))
            adapter->setCanAdapterOption(key, readOption(form, key));
    }
    return adapter;
}

CanInterfaceWidget::Type CanInterfaceWidget::selectedType() const
{
    return static_cast<Type>(ui->cbCanInterfaceType->currentData().toUInt());
}

void CanInterfaceWidget::checkForChanges()
{
    if (currentAdapter == nullptr)
        return;
    std::unique_ptr<Adapter> fromForm = buildAdapter();
    const FormDifference difference = fromForm ? compareWithForm(*currentAdapter, *fromForm) : FormDifference::None;
    ui->lblAdapterChanged->setVisible(difference == FormDifference::Unsaved);
    if (difference != FormDifference::Applied)
        return;
    // From here on the form compares with what it has just asked to be taken over. It may ask in vain, and then does not
    // ask again.
    setCurrentAdapter(fromForm.get());
    appliedAdapter = std::move(fromForm);
    emit sigUpdateAdapter();
}

// ---- What an application sets.

void CanInterfaceWidget::prohibitCanFd()
{
    capabilities->canFdAllowed = false;
}

void CanInterfaceWidget::showForcedEcho(bool show)
{
    ui->cbForcedEcho->setVisible(show);
}

bool CanInterfaceWidget::registerDeviceChangeNotification()
{
    return false;
}

bool CanInterfaceWidget::nativeEvent(const QByteArray &eventType, void *message, long *result)
{
    Q_UNUSED(eventType)
    Q_UNUSED(message)
    Q_UNUSED(result)
    return false;
}
