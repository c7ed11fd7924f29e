#include "canbusparameterdialog.h"
#include "ui_canbusparameterdialog.h"

#include <QLayout>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

namespace {
constexpr int infoDuration = 2000; // ms

bool sameRegisters(const CanBitTimingValues &a, const CanBitTimingValues &b)
{
    return a.preScaler == b.preScaler && a.tSeg1 == b.tSeg1 && a.tSeg2 == b.tSeg2 && a.sjw == b.sjw;
}

// A record may hold numbers that no int does.
void setBounded(QSpinBox *box, quint32 value)
{
    box->setValue(static_cast<int>(std::min(value, static_cast<quint32>(box->maximum()))));
}
} // namespace

CANBusParameterDialog::CANBusParameterDialog(QWidget *parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui_CANBusParameterDialog>())
{
    ui->setupUi(this);
    connect(ui->btnUpdateBitrate, &QPushButton::clicked, this, &CANBusParameterDialog::onUpdateBitrate);
    connect(ui->btnUpdateTimings, &QPushButton::clicked, this, &CANBusParameterDialog::onUpdateTimings);
    watchControls(ui->gbBitrate, &CANBusParameterDialog::onBitrateValueChange,
                  &CANBusParameterDialog::onBitrateValueChange);
    watchControls(ui->gbTimings, &CANBusParameterDialog::onTimingsChanged, &CANBusParameterDialog::onTimingsChanged);
}

CANBusParameterDialog::~CANBusParameterDialog() = default;

// By group, so that a control that joins one of them takes part by itself.
void CANBusParameterDialog::watchControls(const QObject *group, void (CANBusParameterDialog::*onNumber)(int),
                                          void (CANBusParameterDialog::*onDecimals)(double))
{
    for (QObject *child : group->children()) {
        if (auto *number = qobject_cast<QSpinBox *>(child))
            connect(number, QOverload<int>::of(&QSpinBox::valueChanged), this, onNumber);
        else if (auto *decimals = qobject_cast<QDoubleSpinBox *>(child))
            connect(decimals, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, onDecimals);
    }
}

void CANBusParameterDialog::setThresholds(CAN::CANBitTimingThresholds const &newThresholds)
{
    thresholds = newThresholds;
    ui->lblThresholds->setText(thresholds.toString());
    ui->edtClock->setText(QStringLiteral("%1 MHz").arg(thresholds.clockFrequency));
}

void CANBusParameterDialog::setValues(CAN::CANClassicBusParameter values)
{
    ui->sbPrescaler->setValue(values.timing.preScaler);
    setBounded(ui->sbBitrate, values.bitrate);
    ui->sbSamplePoint->setValue(values.samplePoint);
    ui->edtName->setText(values.name);
    ui->sbSJW->setValue(values.timing.sjw);
    ui->sbTSeg1->setValue(values.timing.tSeg1);
    ui->sbTSeg2->setValue(values.timing.tSeg2);
    ui->sbTDCO->hide();
    ui->lblTDCO->hide();
    storedClassic = values;
    updateTimingValues();
    updateBitrateValues();
    markCutSamplePoint();
}

void CANBusParameterDialog::setValues(CAN::CANFDBusParameter values, AbstractCanAdapter::CanAdapterType type)
{
    // Before the controls: each of their changes is compared with it, so that the last one finds the views in agreement.
    fdMode = true;
    storedFd = values;
    ui->sbTDCO->hide();
    ui->lblTDCO->hide();
    setBounded(ui->sbBitrate, values.bitrate);
    ui->sbSamplePoint->setValue(values.samplePoint);
    ui->edtName->setText(values.name);
    ui->sbSJW->setValue(values.timing.sjw);
    ui->sbTSeg1->setValue(values.timing.tSeg1);
    ui->sbTSeg2->setValue(values.timing.tSeg2);
    ui->sbTDCO->setValue(values.tdco);
    ui->sbPrescaler->setValue(values.timing.preScaler);
    markCutSamplePoint();
    if (type == AbstractCanAdapter::CanAdapterIxxatVci3) {
        ui->sbTDCO->show();
        ui->lblTDCO->show();
    }
}

CAN::CANClassicBusParameter CANBusParameterDialog::getValues()
{
    CAN::CANClassicBusParameter values;
    values.bitrate = static_cast<quint32>(ui->sbBitrate->value());
    values.name = ui->edtName->text();
    values.samplePoint = ui->sbSamplePoint->value();
    values.timing = enteredTiming();
    values.userDefined = true;
    return values;
}

CAN::CANFDBusParameter CANBusParameterDialog::getFDValues()
{
    CAN::CANFDBusParameter values;
    values.bitrate = static_cast<quint32>(ui->sbBitrate->value());
    values.name = ui->edtName->text();
    values.samplePoint = ui->sbSamplePoint->value();
    values.timing = enteredTiming();
    values.tdco = static_cast<quint8>(ui->sbTDCO->value());
    values.userDefined = true;
    return values;
}

CanBitTimingValues CANBusParameterDialog::enteredTiming() const
{
    CanBitTimingValues timing;
    timing.preScaler = static_cast<quint16>(ui->sbPrescaler->value());
    timing.tSeg1 = static_cast<quint16>(ui->sbTSeg1->value());
    timing.tSeg2 = static_cast<quint16>(ui->sbTSeg2->value());
    timing.sjw = static_cast<quint16>(ui->sbSJW->value());
    return timing;
}

bool CANBusParameterDialog::timingsChanged()
{
    if (!fdMode)
        return !sameRegisters(getValues().timing, storedClassic.timing);
    const CAN::CANFDBusParameter entered = getFDValues();
    return !sameRegisters(entered.timing, storedFd.timing) || entered.tdco != storedFd.tdco;
}

bool CANBusParameterDialog::bitrateChanged()
{
    const CAN::CANClassicBusParameter entered = getValues();
    const quint32 bitrate = fdMode ? storedFd.bitrate : storedClassic.bitrate;
    return entered.bitrate != bitrate || entered.samplePoint != storedSamplePoint();
}

double CANBusParameterDialog::storedSamplePoint() const
{
    return fdMode ? storedFd.samplePoint : storedClassic.samplePoint;
}

// Each of the two checks acts on the button box without regard to the other, so that OK can be had by bringing one view
// back in line while the other's warning stands.

void CANBusParameterDialog::updateBitrateValues()
{
    const bool changed = timingsChanged();
    ui->lblTimingsChanged->setText(changed ? tr("Timings changed, you'll need to update bitrate.") : QString());
    ui->buttonBox->setEnabled(!changed);
    makeRoomForWarnings();
}

void CANBusParameterDialog::updateTimingValues()
{
    const bool changed = bitrateChanged();
    ui->lblBitrateChanged->setText(changed ? tr("Bitrate values changed,\nyou'll need to update timings.") : QString());
    ui->buttonBox->setEnabled(!changed);
    makeRoomForWarnings();
}

// No window asks its layout by itself what height a wrapped text needs.
void CANBusParameterDialog::makeRoomForWarnings()
{
    if (!isVisible())
        return;
    for (QLayout *changed : {ui->gbBitrate->layout(), ui->gbTimings->layout(), layout()})
        changed->activate();
    const int needed = layout()->totalHeightForWidth(width());
    if (needed > height())
        resize(width(), needed);
}

// Nobody shall accept what was rounded without having seen it. By now the check of the timings may have enabled the box,
// and where the form showed the rounded number before, no signal has asked for a check of the bitrate.
void CANBusParameterDialog::markCutSamplePoint()
{
    const double shown = ui->sbSamplePoint->value();
    const double stored = storedSamplePoint();
    const bool readsTheSame = ui->sbSamplePoint->textFromValue(shown) == ui->sbSamplePoint->textFromValue(stored);
    if (readsTheSame && shown != stored)
        updateTimingValues();
}

void CANBusParameterDialog::onTimingsChanged(int)
{
    updateBitrateValues();
}

void CANBusParameterDialog::onTimingsChanged(double)
{
    updateBitrateValues();
}

void CANBusParameterDialog::onBitrateValueChange(int)
{
    updateTimingValues();
}

void CANBusParameterDialog::onBitrateValueChange(double)
{
    updateTimingValues();
}

void CANBusParameterDialog::onUpdateBitrate()
{
    const CanBitTimingValues timing = getValues().timing;
    const CAN::CANBitrateDesc reached = AbstractCanAdapter::getBitrateFromTimings(
        thresholds.clockFrequency, static_cast<quint8>(timing.preScaler), timing.tSeg1, timing.tSeg2);
    ui->sbBitrate->setValue(reached.bitrate);
    ui->sbSamplePoint->setValue(100.0 * reached.samplePoint);
    updateLabelText(tr("Succesfully updated bitrate."));
    if (fdMode)
        storedFd = getFDValues();
    else
        storedClassic = getValues();
    updateBitrateValues();
    updateTimingValues();
}

void CANBusParameterDialog::onUpdateTimings()
{
    bool found = false;
    const CanBitTimingValues timing = AbstractCanAdapter::getTimingParameters(
        static_cast<quint8>(thresholds.clockFrequency), static_cast<quint16>(ui->sbBitrate->value()),
        ui->sbSamplePoint->value(), found, false, thresholds);
    if (found) {
        ui->sbTSeg1->setValue(timing.tSeg1);
        ui->sbTSeg2->setValue(timing.tSeg2);
        ui->sbSJW->setValue(timing.sjw);
        ui->sbPrescaler->setValue(timing.preScaler);
        updateLabelText(tr("Succesfully updated bit timings."));
    } else {
        updateLabelText(tr("No suitable timings found."));
    }
    // Shows what the timing really yields. Where none was found that is the old one: what was typed is gone, and the
    // text says why.
    onUpdateBitrate();
}

void CANBusParameterDialog::updateLabelText(QString text)
{
    if (ui->lblInfo->text().isEmpty())
        ui->lblInfo->setText(text);
    QTimer::singleShot(infoDuration, Qt::CoarseTimer, this, [this] { ui->lblInfo->clear(); });
}
