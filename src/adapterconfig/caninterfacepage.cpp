// The page of further settings: which one a type has, and what goes with it.

#include "caninterfacewidget.h"
#include "ui_caninterfacewidget.h"

#include "adaptertype.h"
#include "typetreatment.h"

namespace {
using Adapter = AbstractCanAdapter;

/// A layout moves with all that is in it.
void moveLayout(QLayout *layout, QBoxLayout *newHome, int position)
{
    if (auto *oldHome = qobject_cast<QLayout *>(layout->parent())) {
        oldHome->removeItem(layout);
        layout->setParent(nullptr);
    }
    newHome->insertLayout(position, layout);
}

bool usesOwnTiming(const Adapter &adapter)
{
    const QVariant timing = adapter.getCanAdapterOption(Adapter::OptionPeakAdvValues);
    return typeOf(adapter) == Adapter::CanAdapterPcanAdvanced && timing.value<Adapter::PeakAdvValues>().useAdvanced;
}
} // namespace

void CanInterfaceWidget::showSettingsPage(Type type)
{
    if (CanAdapterFactory::isAdditionalConfigAvailable(type)) {
        showNeutralPage();
        applyTreatment(treatmentOf(type));
    } else {
        ui->cbBitrate->setToolTip(QString());
        ui->cbAdvancedConfig->hide();
        ui->stackedWidget->hide();
        adjustSize();
    }
    if (type == Adapter::CanAdapterPcanAdvanced)
        showUserTiming(currentAdapter != nullptr && usesOwnTiming(*currentAdapter));
}

void CanInterfaceWidget::showNeutralPage()
{
    ui->cbAdvancedConfig->setText(tr("Show advanced config"));
    ui->cbAdvancedConfig->show();
    ui->stackedWidget->setVisible(ui->cbAdvancedConfig->isChecked());
    ui->stackedWidget->setCurrentIndex(CommonPage);
    ui->cbTerminator->setEnabled(false);
    ui->cbTerminator->hide();
    ui->cbBitrate->setToolTip(QString());
    ui->edtBtr->show();
    ui->lblBtr->show();
    toggleSystecBtrExt(false);
    ui->cbCanDevice->setEnabled(true);
    ui->cb_velmorSingleWire->show();
    ui->cb_internExtern->hide();
    ui->placeHolderLabel->show();
}

void CanInterfaceWidget::applyTreatment(const TypeTreatment &treatment)
{
    placePortRow(treatment);
    if (treatment.has(NoListenOnly))
        enableListenOnlyCheckBox(false);
    if (treatment.has(NoDeviceChoice))
        ui->cbCanDevice->setEnabled(false);
    ui->stackedWidget->setCurrentIndex(treatment.page);
    showRows(treatment);
    if (treatment.has(ExtendedBtr))
        toggleSystecBtrExt(true);
    if (treatment.has(BitrateFromFile))
        ui->cbBitrate->setToolTip(tr("The bitrate have to be set via the configuration file."));
    if (treatment.has(FixedBitrate))
        ui->cbBitrate->setEnabled(false);
    if (treatment.has(OpensPage))
        openSettingsPage();
    if (treatment.page != CommonPage) {
        ui->stackedWidget->adjustSize();
        adjustSize();
    }
}

void CanInterfaceWidget::showRows(const TypeTreatment &treatment)
{
    if (treatment.has(NoBtrRow)) {
        ui->edtBtr->hide();
        ui->lblBtr->hide();
    }
    if (treatment.has(Terminator)) {
        ui->cbTerminator->show();
        ui->cbTerminator->setEnabled(true);
    }
    if (treatment.has(InternExtern)) {
        ui->cb_internExtern->show();
        ui->placeHolderLabel->hide();
        ui->cb_velmorSingleWire->hide();
    }
    if (treatment.has(ShowsTimeouts) || treatment.has(HidesTimeouts))
        ui->advFrame->setVisible(treatment.has(ShowsTimeouts));
    if (treatment.has(ChecksAddress))
        on_le_ipAddress_textChanged(ui->le_ipAddress->text());
}

void CanInterfaceWidget::placePortRow(const TypeTreatment &treatment)
{
    if (treatment.has(PortOnPortPage))
        moveLayout(ui->horizontalLayout_6, ui->verticalLayout_7, 0);
    else if (treatment.has(PortOnNetworkPage))
        moveLayout(ui->horizontalLayout_6, ui->verticalLayout_10, 1);
    else
        return;
    if (treatment.has(DefaultPort))
        ui->le_port->setPlaceholderText(tr("Default 45674"));
}

void CanInterfaceWidget::openSettingsPage()
{
    ui->cbAdvancedConfig->setChecked(true);
    on_cbAdvancedConfig_clicked(true);
}

void CanInterfaceWidget::showUserTiming(bool inUse)
{
    ui->cbAdvancedConfig->setText(tr("User defined bitrate settings"));
    ui->cbAdvancedConfig->setChecked(inUse);
    on_cbAdvancedConfig_clicked(inUse);
}

void CanInterfaceWidget::on_cbAdvancedConfig_clicked(bool checked)
{
    const auto type = static_cast<Type>(currentType);
    ui->stackedWidget->setVisible(checked);
    if (checked && type == Adapter::CanAdapterPcanAdvanced) {
        // The timing on the page takes the place of the list.
        ui->cbBitrate->setEnabled(false);
        return;
    }
    if (!checked) {
        adjustSize();
        ui->cbTerminator->setChecked(false);
    }
    ui->cbBitrate->setEnabled(CanAdapterFactory::isBaudrateChangeable(type));
}
