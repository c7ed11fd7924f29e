#include "canopenmessagebuilderdialog.h"
#include "ui_canopenmessagebuilderdialog.h"

#include "canopenchoices.h"
#include "canopentemplates.h"
#include "canrawmessageeditor.h"

const QHash<QString, CANopenMessageBuilderDialog::BuildMsgType> CANopenMessageBuilderDialog::mString2BuildMsgType = {
    {QStringLiteral("tab_nmt"), BuildNmt},   {QStringLiteral("tab_pdo"), BuildPdo},
    {QStringLiteral("tab_sdo"), BuildSdo},   {QStringLiteral("tab_heartbeat"), BuildHeartbeat},
    {QStringLiteral("tab_emcy"), BuildEmcy},
};

const QHash<unsigned char, QString> CANopenMessageBuilderDialog::mEmcyMap = CanOpenChoices::emergencyClasses();

CANopenMessageBuilderDialog::CANopenMessageBuilderDialog(QWidget *parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::CANopenMessageBuilderDialog>())
{
    ui->setupUi(this);
    fillEmcyComboBox();
    messageEditor = new CanRawMessageEditor(this);
    ui->layoutMessageEditor->addWidget(messageEditor);
    // It stands above the pages, and was created behind them.
    messageEditor->setFocus();
}

CANopenMessageBuilderDialog::~CANopenMessageBuilderDialog() = default;

bool CANopenMessageBuilderDialog::getMessage(CANRAW::CanRawCompareMessage &message)
{
    if (!messageEditor)
        return false;
    message = messageEditor->getMessage();
    return true;
}

bool CANopenMessageBuilderDialog::setMessage(CANRAW::CanRawCompareMessage const &message)
{
    if (messageEditor)
        messageEditor->setMessage(message);
    return true;
}

void CANopenMessageBuilderDialog::buildNmtMessage()
{
    setMessage(CanOpenTemplates::nmt(ui->comboBox_nmtCmd->currentIndex(), ui->spinBox_nmtNodeId->value()));
}

void CANopenMessageBuilderDialog::buildHeartbeatMessage()
{
    setMessage(CanOpenTemplates::heartbeat(ui->spinBox_hbNodeId->value(), ui->comboBox_hbState->currentIndex()));
}

void CANopenMessageBuilderDialog::buildEmcyMessage()
{
    setMessage(CanOpenTemplates::emergency(static_cast<quint8>(ui->comboBox_emcyCode->currentData().toUInt())));
}

void CANopenMessageBuilderDialog::buildSdoMessage()
{
    setMessage(CanOpenTemplates::sdo(ui->spinBox_sdoNodeId->value(), ui->comboBox_sdoType->currentIndex(),
                                     {ui->edt_sdoIndex->text(), ui->edt_sdoSub->text()}));
}

void CANopenMessageBuilderDialog::buildPdoMessage()
{
    setMessage(CanOpenTemplates::pdo(ui->spinBox_pdoCobId->value(), ui->spinBox_pdoLength->value()));
}

void CANopenMessageBuilderDialog::fillEmcyComboBox()
{
    CanOpenChoices::fillEmergencyBox(ui->comboBox_emcyCode, mEmcyMap);
}

void CANopenMessageBuilderDialog::on_btnBuild_clicked()
{
    const QWidget *page = ui->tabWidget->currentWidget();
    switch (mString2BuildMsgType.value(page ? page->objectName() : QString(), BuildNmt)) {
    case BuildNmt:
        buildNmtMessage();
        break;
    case BuildPdo:
        buildPdoMessage();
        break;
    case BuildSdo:
        buildSdoMessage();
        break;
    case BuildHeartbeat:
        buildHeartbeatMessage();
        break;
    case BuildEmcy:
        buildEmcyMessage();
        break;
    }
}
