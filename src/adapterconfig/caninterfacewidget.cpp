#include "caninterfacewidget.h"
#include "ui_caninterfacewidget.h"

#include "addresscheck.h"

#include <QRegularExpressionValidator>

namespace {
constexpr int addressPage = 1;
constexpr int highestSerialBaudrate = 9999999;

// The values of OptionStopBits.
constexpr unsigned int oneStopBit = 1;
constexpr unsigned int twoStopBits = 2;
constexpr unsigned int oneAndAHalfStopBits = 3;
} // namespace

CanInterfaceWidget::CanInterfaceWidget(QWidget *parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui_CanInterfaceWidget>())
    , vendorTypes(usbVendorAdapterTypes)
{
    ui->setupUi(this);
    capabilities.setControls({ui->chLogErrorFrames, ui->cbListenOnly, ui->cbLowSpeed, ui->cbAutoBusOn});
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

    changeTimer = new QTimer(this);
    fillXm3FilterModeCombobox();
    showForcedEcho(false);
}

CanInterfaceWidget::~CanInterfaceWidget()
{
    if (changeTimer)
        changeTimer->stop();
}

/// The types that there are take the place of the usual ones.
void CanInterfaceWidget::fillTypeList()
{
    const QSignalBlocker blocker(ui->cbCanInterfaceType);
    ui->cbCanInterfaceType->clear();
    for (const auto &[name, type] : CanAdapterFactory::getImplementedAdapters())
        ui->cbCanInterfaceType->addItem(name, static_cast<unsigned int>(type));
}

void CanInterfaceWidget::limitInput()
{
    ui->cb_Baudrate->setEditable(true);
    ui->cb_Baudrate->setValidator(new QIntValidator(0, highestSerialBaudrate, this));
    ui->le_ipAddress->setValidator(new QRegularExpressionValidator(ipAddressPattern(), this));
    ui->le_port->setValidator(new QRegularExpressionValidator(portPattern(), this));
}

void CanInterfaceWidget::setCurrentAdapter(AbstractCanAdapter *adapter)
{
    currentAdapter = adapter;
}

void CanInterfaceWidget::setAdapterMap(QMap<unsigned short, QPointer<AbstractCanAdapter>> *map)
{
    adapterMap = map;
}

void CanInterfaceWidget::prohibitCanFd()
{
    capabilities.canFdAllowed = false;
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

void CanInterfaceWidget::on_cbListenOnly_stateChanged(int state)
{
    capabilities.listenOnlyChanged(state);
}

void CanInterfaceWidget::on_chLogErrorFrames_stateChanged(int state)
{
    capabilities.errorFramesChanged(state);
}

void CanInterfaceWidget::on_cbAutoBusOn_stateChanged(int state)
{
    capabilities.autoBusOnChanged(state);
}

void CanInterfaceWidget::on_le_ipAddress_textChanged(const QString &text)
{
    if (ui->stackedWidget->currentIndex() != addressPage)
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

void CanInterfaceWidget::enableListenOnlyCheckBox(bool enable)
{
    capabilities.enableListenOnly(enable);
}

void CanInterfaceWidget::enableLowSpeedCheckBox(bool enable)
{
    capabilities.enableLowSpeed(enable);
}

void CanInterfaceWidget::enableErrorFramesCheckBox(bool enable)
{
    capabilities.enableErrorFrames(enable);
}

void CanInterfaceWidget::enableAutoBusOnCheckBox(bool enable, bool value)
{
    capabilities.enableAutoBusOn(enable, value);
}

void CanInterfaceWidget::fillXm3FilterModeCombobox()
{
    const QStringList modes = {tr("No filter"), tr("CAN ID filter"), tr("Acceptance filter")};
    for (int mode = 0; mode < modes.size(); ++mode)
        ui->xm3cbFilterMode->addItem(modes[mode], mode);
}
