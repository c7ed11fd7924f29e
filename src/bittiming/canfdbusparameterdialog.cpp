#include "canfdbusparameterdialog.h"
#include "ui_canfdbusparameterdialog.h"

namespace {
template <typename Number>
Number numberIn(const QLineEdit *edit)
{
    return static_cast<Number>(edit->text().toUInt(nullptr, 0));
}
} // namespace

CANFDBusParameterDialog::CANFDBusParameterDialog(QWidget *parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui_CANFDBusParameterDialog>())
{
    ui->setupUi(this);
    ui->edtTDCO->hide();
    ui->lblTDCO->hide();
}

CANFDBusParameterDialog::~CANFDBusParameterDialog() = default;

void CANFDBusParameterDialog::setValues(CAN::CANFDBusParameter values, AbstractCanAdapter::CanAdapterType type)
{
    ui->edtTDCO->hide();
    ui->lblTDCO->hide();
    ui->edtBitrate->setText(QString::number(values.bitrate));
    ui->edtName->setText(values.name);
    ui->edtSJW->setText(QString::number(values.timing.sjw));
    ui->edtTSeg1->setText(QString::number(values.timing.tSeg1));
    ui->edtTSeg2->setText(QString::number(values.timing.tSeg2));
    ui->edtTDCO->setText(QString::number(values.tdco));
    if (type == AbstractCanAdapter::CanAdapterIxxatVci3) {
        ui->edtTDCO->show();
        ui->lblTDCO->show();
    }
}

CAN::CANFDBusParameter CANFDBusParameterDialog::getValues()
{
    CAN::CANFDBusParameter values;
    values.bitrate = numberIn<quint32>(ui->edtBitrate);
    values.timing.sjw = numberIn<quint16>(ui->edtSJW);
    values.timing.tSeg1 = numberIn<quint16>(ui->edtTSeg1);
    values.timing.tSeg2 = numberIn<quint16>(ui->edtTSeg2);
    values.tdco = numberIn<quint8>(ui->edtTDCO);
    values.name = ui->edtName->text();
    values.userDefined = true;
    return values;
}
