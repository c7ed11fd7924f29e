#include "editquestions.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace {
/// Translators find the texts at the dialog that asks.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(CanMultiInterfaceDialog)
};

void fillQuestion(QMessageBox &box, const QString &informativeText)
{
    box.setModal(true);
    box.setIcon(QMessageBox::Question);
    box.setWindowTitle(QCoreApplication::applicationName());
    box.setText(Texts::tr("The current interface was changed but not updated."));
    box.setInformativeText(informativeText);
    box.addButton(Texts::tr("Discard changes"), QMessageBox::RejectRole);
    box.setDefaultButton(box.addButton(Texts::tr("Apply changes"), QMessageBox::ApplyRole));
}

EditChoice ask(QMessageBox &box)
{
    box.exec();
    // A box that ended by itself has no clicked button: nothing is done that cannot be taken back.
    switch (box.clickedButton() != nullptr ? box.buttonRole(box.clickedButton()) : QMessageBox::ResetRole) {
    case QMessageBox::ApplyRole:
        return EditChoice::Apply;
    case QMessageBox::YesRole:
        return EditChoice::AddAsNew;
    case QMessageBox::RejectRole:
        return EditChoice::Discard;
    default:
        return EditChoice::Cancel;
    }
}
} // namespace

EditChoice askBeforeSelectionChange(QWidget *parent)
{
    QMessageBox box(parent);
    fillQuestion(box, Texts::tr("You can discard or apply the changes."));
    return ask(box) == EditChoice::Apply ? EditChoice::Apply : EditChoice::Discard;
}

EditChoice askBeforeClosing(QWidget *parent)
{
    QMessageBox box(parent);
    // No button in the title bar: one of the four is to be taken.
    box.setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    fillQuestion(
        box,
        Texts::tr("You can discard the changes, update the interface, add it as new interface or just cancel to "
                  "review your settings."));
    box.addButton(Texts::tr("Add as new interface"), QMessageBox::YesRole);
    QPushButton *cancel = box.addButton(Texts::tr("Cancel"), QMessageBox::ResetRole);
    // By the roles it would be "Discard changes".
    box.setEscapeButton(cancel);
    return ask(box);
}
