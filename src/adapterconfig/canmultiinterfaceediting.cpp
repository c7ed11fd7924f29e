// What the user does to the saved adapters by way of the form, and what is asked about edits that wait there.

#include "canmultiinterfacedialog.h"
#include "ui_canmultiinterfacedialog.h"

#include "adaptertype.h"
#include "adapterupdate.h"
#include "canmultiinterfacemodel.h"
#include "editingplace.h"
#include "editquestions.h"
#include "updaterequests.h"

#include <QDebug>

namespace {
/// Deletes an adapter that the collection has refused, and gives false. The pointer is a guarded one, since whoever
/// hears of a new adapter may remove it again.
bool takenElseDeleted(const QPointer<AbstractCanAdapter> &adapter, MultiCanAdapterHandler &collection)
{
    const bool taken = adapter && collection.getAdapterMap()->values().contains(adapter);
    if (!taken)
        delete adapter;
    return taken;
}
} // namespace

std::unique_ptr<AbstractCanAdapter> CanMultiInterfaceDialog::adapterFromForm() const
{
    return std::unique_ptr<AbstractCanAdapter>(interfaceWidget->createAdapterFromSettings().data());
}

CanMultiInterfaceDialog::Edits CanMultiInterfaceDialog::edits() const
{
    if (!selectedAdapter)
        return Edits::None;
    const std::unique_ptr<AbstractCanAdapter> edited = adapterFromForm();
    if (edited == nullptr)
        return Edits::Unknown;
    return *edited == *selectedAdapter ? Edits::None : Edits::Some;
}

bool CanMultiInterfaceDialog::updateSelectedAdapter()
{
    if (edits() != Edits::Some)
        return false;
    const UpdateRequests::Hold hold(*updateRequests);
    const EditChoice choice = askBeforeSelectionChange(this);
    // It was for the adapter that the form is about to leave.
    updateRequests->dropKept();
    return choice == EditChoice::Apply;
}

void CanMultiInterfaceDialog::updateAdapterForRow(int row)
{
    std::unique_ptr<AbstractCanAdapter> edited = adapterFromForm();
    AbstractCanAdapter *saved = adapterAt(row);
    if (edited == nullptr || saved == nullptr)
        return;
    const quint16 identifier = identifierOf(*saved);
    copyAdapterOption(AbstractCanAdapter::OptionPrimary, saved, edited.get());
    copyAdapterOption(AbstractCanAdapter::OptionActive, saved, edited.get());
    const QPointer<AbstractCanAdapter> given = edited.release();
    adapterHandler->updateAdapter(identifier, given);
    if (takenElseDeleted(given, *adapterHandler))
        model->updateData();
}

void CanMultiInterfaceDialog::copyAdapterOption(AbstractCanAdapter::AdapterOption option, AbstractCanAdapter *from,
                                                AbstractCanAdapter *to)
{
    to->setCanAdapterOption(option, from->getCanAdapterOption(option));
}

void CanMultiInterfaceDialog::onUpdateAdapterRequest()
{
    qDebug() << Q_FUNC_INFO << currentRow();
    if (updateRequests->comeIn())
        answerUpdateRequest();
}

void CanMultiInterfaceDialog::answerUpdateRequest()
{
    // To replace an adapter that stays the same would do nothing but end its connection.
    if (!wouldUpdateChange())
        return;
    const UpdateRequests::Hold hold(*updateRequests);
    const EditingPlace place(*this);
    on_btnUpdateInterface_clicked();
    place.comeBack();
    // The form was filled from what it said itself.
    updateRequests->dropKept();
}

bool CanMultiInterfaceDialog::wouldUpdateChange() const
{
    const AbstractCanAdapter *saved = adapterAt(currentRow());
    const std::unique_ptr<AbstractCanAdapter> edited = adapterFromForm();
    return saved != nullptr && edited != nullptr && updateWouldChange(*saved, *edited);
}

void CanMultiInterfaceDialog::on_btnAddInterface_clicked()
{
    std::unique_ptr<AbstractCanAdapter> added = adapterFromForm();
    if (added == nullptr)
        return;
    const QPointer<AbstractCanAdapter> given = added.release();
    const quint16 identifier = adapterHandler->addNewCanAdapter(given, false, false, false);
    if (!takenElseDeleted(given, *adapterHandler))
        return;
    // What the form says is saved now, so the selection has nothing to ask.
    selectedAdapter = given;
    selectRowOfAdapter(identifier);
}

void CanMultiInterfaceDialog::on_btnUpdateInterface_clicked()
{
    const int row = currentRow();
    if (row < 0)
        return;
    updateAdapterForRow(row);
    selectRow(row);
}

void CanMultiInterfaceDialog::on_btnClearInterfaces_clicked()
{
    emptyForm();
    adapterHandler->removeAllAdapters();
    selectedAdapter.clear();
}

void CanMultiInterfaceDialog::on_btnRemoveSelected_clicked()
{
    const int row = currentRow();
    if (row < 0)
        return;
    emptyForm();
    adapterHandler->removeAdapterAt(static_cast<quint16>(row));
    selectRow(row);
}

void CanMultiInterfaceDialog::on_btnUp_clicked()
{
    moveSelected(MultiCanAdapterHandler::Up);
}

void CanMultiInterfaceDialog::on_btnDown_clicked()
{
    moveSelected(MultiCanAdapterHandler::Down);
}

void CanMultiInterfaceDialog::moveSelected(MultiCanAdapterHandler::Direction direction)
{
    if (!selectedAdapter)
        return;
    const quint16 before = identifierOf(*selectedAdapter);
    const quint16 identifier = adapterHandler->moveAdapter(selectedAdapter, direction);
    // A row that moved is chosen anew, with the question about edits.
    if (identifier != before)
        ui->tableView->selectionModel()->reset();
    selectRowOfAdapter(identifier);
}

void CanMultiInterfaceDialog::on_btnUpdateCloseConnect_clicked()
{
    if (adapterHandler->getAdapterCount() == 0)
        on_btnAddInterface_clicked();
    on_btnUpdateInterface_clicked();
    on_btnClose_clicked();
    connectRequest = true;
}

bool CanMultiInterfaceDialog::canDialogBeClosed()
{
    const Edits found = edits();
    if (found != Edits::Some)
        return found == Edits::None;
    EditChoice choice = EditChoice::Cancel;
    {
        const UpdateRequests::Hold hold(*updateRequests);
        choice = askBeforeClosing(this);
    }
    const bool hasRequest = updateRequests->takeKept();
    switch (choice) {
    case EditChoice::Apply:
        on_btnUpdateInterface_clicked();
        return true;
    case EditChoice::AddAsNew:
        on_btnAddInterface_clicked();
        return false;
    case EditChoice::Discard:
        return true;
    case EditChoice::Cancel:
        break;
    }
    if (hasRequest)
        answerUpdateRequest();
    return false;
}
