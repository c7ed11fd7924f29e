#include "advancedvalues.h"
#include "ui_caninterfacewidget.h"

namespace {
using FilterValues = AbstractCanAdapter::SystecXM3AdvValues;

struct FilterField
{
    QLineEdit *Ui_CanInterfaceWidget::*edit;
    quint32 FilterValues::*value;
};

constexpr FilterField filterFields[] = {
    {&Ui_CanInterfaceWidget::xm3leCanId_1, &FilterValues::canId1},
    {&Ui_CanInterfaceWidget::xm3leCanId_2, &FilterValues::canId2},
    {&Ui_CanInterfaceWidget::xm3leCanId_3, &FilterValues::canId3},
    {&Ui_CanInterfaceWidget::xm3leCanId_4, &FilterValues::canId4},
    {&Ui_CanInterfaceWidget::xm3leFilterAMR, &FilterValues::filterAMR},
    {&Ui_CanInterfaceWidget::xm3leFilterACR, &FilterValues::filterACR},
};
} // namespace

AbstractCanAdapter::PeakAdvValues readTimingPage(const Ui_CanInterfaceWidget &ui)
{
    AbstractCanAdapter::PeakAdvValues values;
    values.useAdvanced = ui.cbAdvancedConfig->isChecked();
    values.clockMHz = ui.comboBox_peakFreq->currentText().section(QLatin1Char(' '), 0, 0).toUInt();
    values.preScaler = static_cast<quint8>(ui.spinBox_preScaler->value());
    values.tSeg1 = static_cast<quint8>(ui.spinBox_tseg1->value());
    values.tSeg2 = static_cast<quint8>(ui.spinBox_tseg2->value());
    values.sjw = static_cast<quint8>(ui.spinBox_synsw->value());
    return values;
}

void writeTimingPage(const Ui_CanInterfaceWidget &ui, const AbstractCanAdapter::PeakAdvValues &values)
{
    ui.comboBox_peakFreq->setCurrentText(QStringLiteral("%1 MHz").arg(values.clockMHz));
    ui.spinBox_preScaler->setValue(values.preScaler);
    ui.spinBox_tseg1->setValue(values.tSeg1);
    ui.spinBox_tseg2->setValue(values.tSeg2);
    ui.spinBox_synsw->setValue(values.sjw);
}

FilterValues readFilterPage(const Ui_CanInterfaceWidget &ui)
{
    FilterValues values;
    values.filterMode = ui.xm3cbFilterMode->currentData().toUInt();
    for (const FilterField &field : filterFields)
        values.*field.value = readRegister((ui.*field.edit)->text());
    return values;
}

void writeFilterPage(const Ui_CanInterfaceWidget &ui, const FilterValues &values)
{
    const int mode = static_cast<int>(values.filterMode);
    ui.xm3cbFilterMode->setCurrentIndex(mode);
    ui.xm3swFilter->setCurrentIndex(mode);
    for (const FilterField &field : filterFields)
        (ui.*field.edit)->setText(registerText(values.*field.value));
}

unsigned int readRegister(const QString &text)
{
    constexpr int baseFromPrefix = 0;
    return text.toUInt(nullptr, baseFromPrefix);
}

QString registerText(unsigned int value)
{
    return QStringLiteral("0x%1").arg(value, 0, 16);
}
