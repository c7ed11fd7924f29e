#include "canrawmessageeditor.h"
#include "ui_canrawmessageeditor.h"

#include "canrecords.h"
#include "qhexedit.h"

#include <optional>

namespace {
constexpr int bytesPerLine = 16;

std::optional<uint> numberFrom(const QString &text, int base)
{
    bool isNumber = false;
    const uint number = text.toUInt(&isNumber, base);
    return isNumber ? std::optional<uint>(number) : std::nullopt;
}

/// A stored number that is no state asks for a clear flag in a comparison, and so the box shows it.
Qt::CheckState checkState(qint32 flag)
{
    return flag == Qt::Checked || flag == Qt::PartiallyChecked ? static_cast<Qt::CheckState>(flag) : Qt::Unchecked;
}
} // namespace

const QStringList CanRawMessageEditor::nonFdLengthList = {
    QStringLiteral("- -"), QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
    QStringLiteral("4"),   QStringLiteral("5"), QStringLiteral("6"), QStringLiteral("7"), QStringLiteral("8"),
};

const QStringList CanRawMessageEditor::fdLengthList = QStringList(nonFdLengthList)
    << QStringLiteral("12") << QStringLiteral("16") << QStringLiteral("20") << QStringLiteral("24")
    << QStringLiteral("32") << QStringLiteral("48") << QStringLiteral("64");

CanRawMessageEditor::CanRawMessageEditor(QWidget *parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui::CanRawMessageEditor>())
{
    ui->setupUi(this);
    setFocusProxy(ui->edtCanId);
    createHexEdit();
    changeLengthCombobox(false);
    for (QCheckBox *box : {ui->chFd, ui->chBrs, ui->chRtr, ui->chExt})
        box->setCheckState(Qt::PartiallyChecked);
    setTabOrder(ui->cbLength, hexEdit);
}

CanRawMessageEditor::~CanRawMessageEditor() = default;

CANRAW::CanRawCompareMessage CanRawMessageEditor::getMessage()
{
    CANRAW::CanRawCompareMessage message(false);
    message.valid = true;
    message.brs = ui->chBrs->checkState();
    message.fd = ui->chFd->checkState();
    message.ext = ui->chExt->checkState();
    message.rtr = ui->chRtr->checkState();
    const std::optional<uint> id = numberFrom(ui->edtCanId->text(), 0);
    message.id = {id.value_or(0), id.has_value()};
    const std::optional<uint> length = numberFrom(ui->cbLength->currentText(), 10);
    message.length = {static_cast<quint8>(length.value_or(0)), length.has_value()};
    if (hexEdit) {
        message.consideration = hexEdit->getConsiderBitArray();
        message.data = hexEdit->data();
    }
    return message;
}

void CanRawMessageEditor::setMessage(CANRAW::CanRawCompareMessage const &message)
{
    ui->chBrs->setCheckState(checkState(message.brs));
    // Ahead of the length, since it brings the list that the length is looked for in.
    ui->chFd->setCheckState(checkState(message.fd));
    ui->chExt->setCheckState(checkState(message.ext));
    ui->chRtr->setCheckState(checkState(message.rtr));
    ui->edtCanId->setText(message.id.isSet ? QStringLiteral("0x%1").arg(message.id.value, 0, 16) : QString());
    if (message.length.isSet)
        ui->cbLength->setCurrentText(QString::number(message.length.value));
    else
        ui->cbLength->setCurrentIndex(0);
    if (!hexEdit)
        return;
    hexEdit->setConsiderBitArray(message.consideration);
    hexEdit->setData(message.data);
}

void CanRawMessageEditor::setConsideration(bool on)
{
    if (hexEdit) {
        hexEdit->setConsideration(on);
        hexEdit->setHighlighting(on);
    }
    ui->btnConsiderAll->setVisible(on);
    ui->btnConsiderNone->setVisible(on);
}

void CanRawMessageEditor::setTriState(bool on)
{
    for (QCheckBox *box : {ui->chFd, ui->chBrs, ui->chRtr, ui->chExt})
        box->setTristate(on);
}

void CanRawMessageEditor::changeLengthCombobox(bool fd)
{
    const QString text = ui->cbLength->currentText();
    ui->cbLength->clear();
    ui->cbLength->insertItems(0, fd ? fdLengthList : nonFdLengthList);
    ui->cbLength->setCurrentText(text);
    // As if the user had chosen the length again: the number of bytes in view follows.
    emit ui->cbLength->textActivated(text);
}

void CanRawMessageEditor::on_chFd_stateChanged(int state)
{
    // A frame that may be CAN FD or not may have any length of either.
    changeLengthCombobox(state != Qt::Unchecked);
}

void CanRawMessageEditor::on_btnConsiderNone_clicked()
{
    if (hexEdit)
        hexEdit->setBytesHighlighted(false);
}

void CanRawMessageEditor::on_btnConsiderAll_clicked()
{
    if (hexEdit)
        hexEdit->setBytesHighlighted(true);
}

void CanRawMessageEditor::on_cbLength_textActivated(QString const &text)
{
    if (!hexEdit)
        return;
    const bool isClassic = ui->chFd->checkState() == Qt::Unchecked;
    const int longest = isClassic ? CAN::maxClassicDataLength : CAN::maxDataLength;
    hexEdit->setByteCountEnabled(static_cast<int>(numberFrom(text, 10).value_or(longest)));
}

void CanRawMessageEditor::createHexEdit()
{
    hexEdit = new QHexEdit(this);
    ui->layoutHexData->insertWidget(0, hexEdit);
    hexEdit->setBytesPerLine(bytesPerLine);
    hexEdit->setAsciiArea(false);
    hexEdit->setAddressArea(false);
    hexEdit->setData(QByteArray(CAN::maxDataLength, '\0'));
    // With room for the longest frame: nobody has to scroll to see a message whole.
    const int frame = 2 * hexEdit->frameWidth();
    hexEdit->setMinimumSize(hexEdit->widget()->minimumSize() + QSize(frame, frame));
}
