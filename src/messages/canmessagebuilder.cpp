#include "canmessagebuilder.h"
#include "ui_canmessagebuilder.h"

#include "canopenchoices.h"

#include <QApplication>
#include <QHeaderView>

#include <algorithm>

namespace {
constexpr int lastByteValue = 0xFF;
constexpr int linePadding = 2; // pixels that a row keeps free around its text
// Pixels of the table as the form has it.
constexpr int usualRowHeight = 23;
constexpr int usualColumnWidth = 50;
constexpr int usualTableHeight = 50;

QString hexText(quint32 number)
{
    return QStringLiteral("0x%1").arg(number, 0, 16);
}

QString byteText(quint16 value)
{
    return value > lastByteValue ? QStringLiteral("XX") : hexText(value);
}
} // namespace

CanMessageBuilder::CanMessageBuilder(QWidget *parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::CanMessageBuilder>())
{
    ui->setupUi(this);
    fitTableToFont();
    // Behind the change of the widgets' own fonts.
    connect(
        qApp, &QGuiApplication::fontChanged, this, [this] { fitTableToFont(); }, Qt::QueuedConnection);
    fillEmcyMap();
    fillEmcyComboBox();
}

CanMessageBuilder::~CanMessageBuilder() = default;

void CanMessageBuilder::setCurrentMessage(QStringList message)
{
    const int count = std::min(message.size(), ui->tbl_canmessage->columnCount());
    for (int column = 0; column < count; ++column) {
        if (QTableWidgetItem *item = ui->tbl_canmessage->item(0, column))
            item->setData(Qt::DisplayRole, message.at(column));
        else
            ui->tbl_canmessage->setItem(0, column, new QTableWidgetItem(message.at(column)));
    }
}

QStringList CanMessageBuilder::getCurrentMessage()
{
    QStringList message;
    const auto count = static_cast<quint8>(ui->tbl_canmessage->columnCount());
    for (int column = 0; column < count; ++column) {
        const QTableWidgetItem *item = ui->tbl_canmessage->item(0, column);
        if (item && !item->text().isEmpty())
            message += item->text();
    }
    return message;
}

void CanMessageBuilder::setNewMessage(CanMessageBuilder::CMBMessage message)
{
    ui->tbl_canmessage->clearContents();
    ui->tbl_canmessage->setItem(0, 0, new QTableWidgetItem(hexText(message.id)));
    const int length = std::min<int>(message.length, CMBMessage::maxLength);
    for (int i = 0; i < length; ++i)
        ui->tbl_canmessage->setItem(0, i + 1, new QTableWidgetItem(byteText(message.data[i])));
}

void CanMessageBuilder::buildNmtMessage()
{
    CMBMessage message;
    message.length = 2;
    if (const auto command = CanOpenChoices::nmtCommandSpecifier(ui->comboBox_nmtCmd->currentIndex()))
        message.data[0] = *command;
    message.data[1] = static_cast<quint16>(ui->spinBox_nmtNodeId->value());
    setNewMessage(message);
}

void CanMessageBuilder::buildHeartbeatMessage()
{
    CMBMessage message;
    message.id = CanOpenChoices::heartbeatIdentifier(ui->spinBox_hbNodeId->value());
    message.length = 1;
    message.data[0] = CanOpenChoices::heartbeatState(ui->comboBox_hbState->currentIndex());
    setNewMessage(message);
}

void CanMessageBuilder::buildEmcyMessage()
{
    // Whatever node is chosen, the identifier is 0: templates have always been made so.
    CMBMessage message;
    message.length = 8;
    message.data[0] = static_cast<quint8>(ui->comboBox_emcyCode->currentData().toUInt());
    setNewMessage(message);
}

void CanMessageBuilder::buildSdoMessage()
{
    const CanOpenChoices::ObjectAddress object(ui->edt_sdoIndex->text(), ui->edt_sdoSub->text());
    CMBMessage message;
    message.id = CanOpenChoices::sdoIdentifier(ui->spinBox_sdoNodeId->value(), ui->comboBox_sdoType->currentIndex());
    message.length = 8;
    message.data[1] = object.indexLow;
    message.data[2] = object.indexHigh;
    // A subindex that is no byte leaves its byte open, however large it is.
    message.data[3] = static_cast<quint16>(std::min<uint>(object.subindex, CMBMessage::openByte));
    setNewMessage(message);
}

void CanMessageBuilder::buildPdoMessage()
{
    CMBMessage message;
    message.id = static_cast<quint32>(ui->spinBox_pdoCobId->value());
    message.length = static_cast<quint8>(ui->spinBox_pdoLength->value());
    setNewMessage(message);
}

void CanMessageBuilder::fillEmcyMap()
{
    mEmcyMap = CanOpenChoices::emergencyClasses();
}

void CanMessageBuilder::fillEmcyComboBox()
{
    CanOpenChoices::fillEmergencyBox(ui->comboBox_emcyCode, mEmcyMap);
}

void CanMessageBuilder::on_btn_ok_clicked()
{
    accept();
}

void CanMessageBuilder::on_btn_cancel_clicked()
{
    reject();
}

void CanMessageBuilder::on_btn_build_clicked()
{
    using Build = void (CanMessageBuilder::*)();
    static constexpr Build builds[] = {
        &CanMessageBuilder::buildNmtMessage,  &CanMessageBuilder::buildPdoMessage,
        &CanMessageBuilder::buildSdoMessage,  &CanMessageBuilder::buildHeartbeatMessage,
        &CanMessageBuilder::buildEmcyMessage,
    };
    const int page = ui->tabWidget->currentIndex();
    if (page >= 0 && page < int(std::size(builds)))
        (this->*builds[page])();
}

/// The sizes of the form suit usual fonts. A font that the row has no room for gets a row, columns and a table that are
/// larger as well.
void CanMessageBuilder::fitTableToFont()
{
    QTableWidget *table = ui->tbl_canmessage;
    QHeaderView *rows = table->verticalHeader();
    QHeaderView *columns = table->horizontalHeader();
    const int frame = 2 * table->frameWidth();
    const int height = std::max(usualRowHeight, table->fontMetrics().height() + linePadding);
    const bool isLarge = height > usualRowHeight;
    rows->setDefaultSectionSize(height);
    columns->setDefaultSectionSize(usualColumnWidth * height / usualRowHeight);
    columns->resizeSection(0, std::max(columns->defaultSectionSize(), isLarge ? columns->sectionSizeHint(0) : 0));
    table->setMaximumHeight(isLarge ? columns->sizeHint().height() + height + frame : usualTableHeight);
    table->setMinimumHeight(isLarge ? table->maximumHeight() : 0);
    table->setMinimumWidth(rows->sizeHint().width() + columns->length() + frame);
}
