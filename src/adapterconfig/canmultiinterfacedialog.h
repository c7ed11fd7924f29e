#pragma once

#include "kestrune_export.h"
#include "multicanadapterhandler.h"

#include <QDialog>
#include <QModelIndex>
#include <QPointer>

#include <memory>

class AdapterFlagsDelegate;
class CanInterfaceWidget;
class CanMultiInterfaceModel;
class CheckboxDelegate;
class Ui_CanMultiInterfaceDialog;
class UpdateRequests;

/// The window in which a user manages the saved adapters: a table of them, and the form of the one that is selected.
///
/// Works on the live collection: what the user updates, adds, moves or removes is done at once, and closing the dialog
/// takes nothing back. Only edits in the form that were not taken over yet are asked about, when another adapter is
/// selected and when the dialog closes, and may keep it open.
///
/// Made for one showing, after which the connect request says whether the user wants the adapters connected. The
/// collection and the caller's bool must outlive the dialog. GUI thread only.
class KESTRUNE_EXPORT CanMultiInterfaceDialog : public QDialog
{
    Q_OBJECT

public:
    /// @param connectRequest set to false here, and to true when the user closes the dialog in order to connect
    /// @param showConnectButton offers to close the dialog in that way
    CanMultiInterfaceDialog(MultiCanAdapterHandler *adapterHandler, bool &connectRequest, bool showConnectButton,
                            QWidget *parent = nullptr);
    ~CanMultiInterfaceDialog() override;

    /// @param bitrate in kBit/s, for adapters of which none is known
    void setDefaultBitrate(unsigned short bitrate);
    /// For applications that connect one adapter only.
    void hideActiveColumn(bool hide);

    bool eventFilter(QObject *object, QEvent *event) override;

public slots:
    void adapterCountChanged();
    void adapterTableSelectionChanged(QModelIndex current, QModelIndex previous);
    /// The form's content has changed by itself. Taken over without a question; not while the form is filled or the user
    /// is asked something, but once afterwards.
    void onUpdateAdapterRequest();

    void on_btnAddInterface_clicked();
    void on_btnUpdateInterface_clicked();
    void on_btnClearInterfaces_clicked();
    void on_btnRemoveSelected_clicked();
    void on_btnClose_clicked();
    void on_btnUpdateCloseConnect_clicked();
    void on_btnUp_clicked();
    void on_btnDown_clicked();

    /// As the button "Close": the escape key loses no edits either.
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

    void setupTableView();
    void initSelection();
    void selectRowOfAdapter(unsigned short id);
    void selectPrimaryAdapter();
    void copyAdapterOption(AbstractCanAdapter::AdapterOption option, AbstractCanAdapter *from, AbstractCanAdapter *to);
    /// Puts what the form says in the place of the adapter of that row, which keeps its identifier and its roles.
    void updateAdapterForRow(int row);
    /// Asks about edits of the selected adapter, if there are any; true if the user wants them kept.
    bool updateSelectedAdapter();
    /// Asks about edits, if there are any, and does what the user wants with them.
    bool canDialogBeClosed();
    void saveSettings();
    void restoreSettings();

private:
    enum class Edits { None, Some, Unknown };

    AbstractCanAdapter *adapterAt(int row) const;
    std::unique_ptr<AbstractCanAdapter> adapterFromForm() const;
    Edits edits() const;
    bool wouldUpdateChange() const;
    int currentRow() const;
    int rowOf(const AbstractCanAdapter *adapter) const;
    void selectRow(int row);
    void markRow(int row);
    void markCurrentRowAlone();
    void fillForm(AbstractCanAdapter *adapter);
    void emptyForm();
    void answerUpdateRequest();
    void moveSelected(MultiCanAdapterHandler::Direction direction);

    bool &connectRequest;
    std::unique_ptr<Ui_CanMultiInterfaceDialog> ui;
    QPointer<CanInterfaceWidget> interfaceWidget;
    QPointer<CanMultiInterfaceModel> model;
    QPointer<MultiCanAdapterHandler> adapterHandler;
    QPointer<AdapterFlagsDelegate> flagsDelegate;
    QPointer<CheckboxDelegate> activeDelegate;
    QPointer<CheckboxDelegate> primaryDelegate;
    QPointer<AbstractCanAdapter> selectedAdapter;
    bool activeColumnHidden = false;
    bool isMarkingRow = false;
    const std::unique_ptr<UpdateRequests> updateRequests;
};
