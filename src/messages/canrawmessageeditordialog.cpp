#include "canrawmessageeditordialog.h"
#include "ui_canrawmessageeditordialog.h"

#include "canrawmessageeditor.h"

CanRawMessageEditorDialog::CanRawMessageEditorDialog(QWidget *parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::CanRawMessageEditorDialog>())
    , messageEditor(new CanRawMessageEditor(this))
{
    ui->setupUi(this);
    ui->layoutForEditorWidget->addWidget(messageEditor);
}

CanRawMessageEditorDialog::~CanRawMessageEditorDialog() = default;

bool CanRawMessageEditorDialog::getMessage(CANRAW::CanRawCompareMessage &message)
{
    if (!messageEditor)
        return false;
    message = messageEditor->getMessage();
    return true;
}

bool CanRawMessageEditorDialog::setMessage(CANRAW::CanRawCompareMessage const &message)
{
    if (messageEditor)
        messageEditor->setMessage(message);
    return true;
}

void CanRawMessageEditorDialog::setConsideration(bool on)
{
    if (messageEditor)
        messageEditor->setConsideration(on);
}

void CanRawMessageEditorDialog::setTriState(bool on)
{
    if (messageEditor)
        messageEditor->setTriState(on);
}
