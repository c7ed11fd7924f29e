// How the form stands on the screen.

#include "caninterfacewidget.h"
#include "ui_caninterfacewidget.h"

#include "fontfit.h"

#include <QShowEvent>

#include <algorithm>

namespace {
constexpr int usualMinimumWidth = 500;
} // namespace

void CanInterfaceWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    on_cbCanInterfaceType_currentIndexChanged(ui->cbCanInterfaceType->currentIndex());
    if (parentWidget() != nullptr) {
        move(parentWidget()->geometry().center() - rect().center());
        // A layout that keeps the form has the last word on its place.
        updateGeometry();
    }
    if (ui->cbCanfdConfig->isChecked()) {
        ui->lbCanFdDataBitrate->show();
        ui->cbCanFdDataBitrate->show();
    }
}

/// Fields below one another begin at one line, whatever the font is.
void CanInterfaceWidget::fitToFont()
{
    alignLabels({ui->lblCanInterfaceType, ui->lblCanDevice, ui->lblBitrate, ui->lblDescription, ui->lblLinkedAdapter,
                 ui->lblUsdoId});
    alignLabels({ui->lblIpAddress, ui->lblPort, ui->lblReconnectTimeout, ui->lblConnectTimeout,
                 ui->lblDisconnectTimeout, ui->lblIpProtocol});
    alignLabels({ui->lblXm3FilterMode, ui->lblXm3CanId_1, ui->lblXm3CanId_2, ui->lblXm3CanId_3, ui->lblXm3CanId_4,
                 ui->lblXm3FilterAMR, ui->lblXm3FilterACR});
    ui->groupBox->setMinimumWidth(widthInColumns(*ui->gridLayout, capabilityBoxes(), 1));
    arrangeBoxes();
}

void CanInterfaceWidget::arrangeBoxes()
{
    const int columns = ui->groupBox->width() < widthInColumns(*ui->gridLayout, capabilityBoxes(), 2) ? 1 : 2;
    if (columns == boxColumns)
        return;
    boxColumns = columns;
    arrangeInColumns(*ui->gridLayout, capabilityBoxes(), columns);
}

QList<QWidget *> CanInterfaceWidget::capabilityBoxes() const
{
    return {ui->chLogErrorFrames, ui->cbListenOnly,     ui->cbAutoBusOn, ui->cbLowSpeed,
            ui->cbSystemTime,     ui->cbContSystemTime, ui->cbForcedEcho};
}

void CanInterfaceWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrangeBoxes();
}

bool CanInterfaceWidget::event(QEvent *event)
{
    const bool done = QWidget::event(event);
    // A font may be so large that the usual width cuts texts off.
    if (event->type() == QEvent::LayoutRequest)
        setMinimumWidth(std::max(usualMinimumWidth, ui->verticalLayout->totalMinimumSize().width()));
    return done;
}

void CanInterfaceWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitToFont();
}
