#include "canmultiinterfacedialog.h"
#include "ui_canmultiinterfacedialog.h"

#include "adapterflagsdelegate.h"
#include "adaptertableactions.h"
#include "adaptertype.h"
#include "checkboxdelegate.h"
#include "updaterequests.h"

#include <QCloseEvent>
#include <QDebug>
#include <QHelpEvent>
#include <QScopedValueRollback>
#include <QSettings>
#include <QToolTip>

#include <algorithm>
#include <iterator>

namespace {
using Model = CanMultiInterfaceModel;

constexpr int columnWidths[] = {20, 160, 55, 45, 160};
static_assert(std::size(columnWidths) == Model::numberOfColumns);

/// The caller's windows are stored by version, as its other settings are.
QSettings windowSettings()
{
    return QSettings(QCoreApplication::organizationName(), qApp->property("AppNameWithVersion").toString());
}
} // namespace

CanMultiInterfaceDialog::CanMultiInterfaceDialog(MultiCanAdapterHandler *adapterHandler, bool &connectRequest,
                                                 bool showConnectButton, QWidget *parent)
    : QDialog(parent)
    , connectRequest(connectRequest)
    , ui(std::make_unique<Ui_CanMultiInterfaceDialog>())
    , adapterHandler(adapterHandler)
    , updateRequests(std::make_unique<UpdateRequests>())
{
    ui->setupUi(this);
    ui->btnUpdateInterface->setEnabled(false);
    ui->btnUpdateCloseConnect->setVisible(showConnectButton);
    interfaceWidget = ui->widget;
    connect(interfaceWidget.data(), &CanInterfaceWidget::sigUpdateAdapter, this,
            &CanMultiInterfaceDialog::onUpdateAdapterRequest);
    // So that the first adapter that is added says what the form says of it later: that it is linked with none.
    emptyForm();
    setupTableView();
    ui->btnClose->setFocus();
    connectRequest = false;
}

CanMultiInterfaceDialog::~CanMultiInterfaceDialog() = default;

void CanMultiInterfaceDialog::setDefaultBitrate(unsigned short bitrate)
{
    interfaceWidget->setDefaultBitrate(bitrate);
}

void CanMultiInterfaceDialog::hideActiveColumn(bool hide)
{
    activeColumnHidden = hide;
    ui->tableView->setColumnHidden(Model::ColumnActive, hide);
    offerActionsOfShownColumns(*ui->tableView);
}

bool CanMultiInterfaceDialog::eventFilter(QObject *object, QEvent *event)
{
    const auto *view = qobject_cast<QAbstractItemView *>(object->parent());
    if (event->type() != QEvent::ToolTip || view == nullptr)
        return false;
    const auto *help = static_cast<QHelpEvent *>(event);
    const QModelIndex index = view->indexAt(help->pos());
    // The delegate of the flags has tool tips of its own.
    if (index.isValid() && index.column() != Model::ColumnFlags)
        QToolTip::showText(help->globalPos(), index.data(Qt::ToolTipRole).toString());
    return false;
}

void CanMultiInterfaceDialog::setupTableView()
{
    model = new Model(adapterHandler, this);
    ui->tableView->setModel(model);
    for (int column = 0; column < Model::numberOfColumns; ++column)
        ui->tableView->setColumnWidth(column, columnWidths[column]);
    ui->tableView->viewport()->installEventFilter(this);
    ui->tableView->viewport()->setProperty("fastTooltip", true);
    for (const int column : {Model::ColumnPrimary, Model::ColumnActive, Model::ColumnFlags})
        ui->tableView->horizontalHeader()->setSectionResizeMode(column, QHeaderView::Fixed);

    flagsDelegate = new AdapterFlagsDelegate;
    flagsDelegate->setParent(this);
    activeDelegate = new CheckboxDelegate(QStyle::CE_CheckBox, this);
    primaryDelegate = new CheckboxDelegate(QStyle::CE_RadioButton, this);
    ui->tableView->setItemDelegateForColumn(Model::ColumnFlags, flagsDelegate);
    ui->tableView->setItemDelegateForColumn(Model::ColumnActive, activeDelegate);
    ui->tableView->setItemDelegateForColumn(Model::ColumnPrimary, primaryDelegate);
    addAdapterTableActions(ui->tableView);

    connect(ui->tableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &CanMultiInterfaceDialog::adapterTableSelectionChanged);
    connect(adapterHandler.data(), &MultiCanAdapterHandler::adapterMapChanged, this,
            &CanMultiInterfaceDialog::adapterCountChanged);
    selectedAdapter.clear();
}

void CanMultiInterfaceDialog::showEvent(QShowEvent *event)
{
    // A window that only comes back from the task bar stays as the user left it.
    if (!event->spontaneous()) {
        restoreSettings();
        selectPrimaryAdapter();
    }
    QDialog::showEvent(event);
}

void CanMultiInterfaceDialog::selectPrimaryAdapter()
{
    const AbstractCanAdapter *primary = adapterHandler->getPrimaryAdapter();
    if (primary != nullptr)
        selectRowOfAdapter(identifierOf(*primary));
    else
        initSelection();
}

void CanMultiInterfaceDialog::initSelection()
{
    qDebug() << Q_FUNC_INFO;
    ui->tableView->selectRow(0);
}

void CanMultiInterfaceDialog::selectRowOfAdapter(unsigned short id)
{
    qDebug() << Q_FUNC_INFO << id;
    const int row = model->findRowOfId(id);
    if (row >= 0)
        selectRow(row);
}

void CanMultiInterfaceDialog::selectRow(int row)
{
    ui->tableView->selectRow(row);
    // For any other reason a table without a current row would make its first one current.
    ui->tableView->setFocus(Qt::MouseFocusReason);
}

int CanMultiInterfaceDialog::currentRow() const
{
    return ui->tableView->currentIndex().row();
}

int CanMultiInterfaceDialog::rowOf(const AbstractCanAdapter *adapter) const
{
    const auto &map = *adapterHandler->getAdapterMap();
    const auto position = std::find(map.cbegin(), map.cend(), adapter);
    const bool isThere = adapter != nullptr && position != map.cend();
    return isThere ? static_cast<int>(std::distance(map.cbegin(), position)) : -1;
}

/// For a row whose adapter the form shows, or is about to: there is nothing to ask.
void CanMultiInterfaceDialog::markRow(int row)
{
    const QScopedValueRollback<bool> marking(isMarkingRow, true);
    ui->tableView->selectRow(row);
}

void CanMultiInterfaceDialog::markCurrentRowAlone()
{
    ui->tableView->clearSelection();
    markRow(currentRow());
}

void CanMultiInterfaceDialog::adapterTableSelectionChanged(QModelIndex current, QModelIndex previous)
{
    Q_UNUSED(previous)
    if (isMarkingRow)
        return;
    setUpdatesEnabled(false);
    ui->btnUpdateInterface->setEnabled(true);
    // While the question stands others may add and remove adapters: a row from before it would be another one's.
    const QPointer<AbstractCanAdapter> chosen = adapterAt(current.row());
    const bool isApplied = updateSelectedAdapter();
    const int row = rowOf(chosen);
    if (isApplied)
        updateAdapterForRow(rowOf(selectedAdapter));
    // The update has reset the table, and one that gets the focus by the tab key makes a row current without
    // selecting it.
    markRow(row);
    AbstractCanAdapter *adapter = adapterAt(row);
    if (adapter != nullptr)
        fillForm(adapter);
    // The click that chose the row goes on to select what is in its place now.
    if (row != current.row())
        QMetaObject::invokeMethod(this, &CanMultiInterfaceDialog::markCurrentRowAlone, Qt::QueuedConnection);
    setUpdatesEnabled(true);
}

void CanMultiInterfaceDialog::fillForm(AbstractCanAdapter *adapter)
{
    selectedAdapter = adapter;
    {
        const UpdateRequests::Hold hold(*updateRequests);
        interfaceWidget->setCurrentAdapter(adapter);
        interfaceWidget->setAdapterMap(adapterHandler->getAdapterMap());
        interfaceWidget->updateValues();
    }
    if (updateRequests->takeKept())
        answerUpdateRequest();
}

void CanMultiInterfaceDialog::emptyForm()
{
    // The form's timer compares no adapter that is about to die.
    interfaceWidget->setCurrentAdapter(nullptr);
    interfaceWidget->updateValues();
}

AbstractCanAdapter *CanMultiInterfaceDialog::adapterAt(int row) const
{
    return row < 0 ? nullptr : adapterHandler->adapterAt(static_cast<quint16>(row));
}

void CanMultiInterfaceDialog::adapterCountChanged()
{
    if (model->rowCount() == 0)
        ui->btnUpdateInterface->setEnabled(false);
    // The table has forgotten its rows, but the form has not, and what the user edits there is for this one.
    markRow(rowOf(selectedAdapter));
}

void CanMultiInterfaceDialog::on_btnClose_clicked()
{
    close();
}

void CanMultiInterfaceDialog::reject()
{
    close();
}

void CanMultiInterfaceDialog::closeEvent(QCloseEvent *event)
{
    saveSettings();
    const bool canClose = canDialogBeClosed();
    event->setAccepted(canClose);
    if (canClose)
        QDialog::reject();
}

void CanMultiInterfaceDialog::saveSettings()
{
    QSettings settings = windowSettings();
    settings.beginGroup(QStringLiteral("CanMultiInterfaceDialog"));
    settings.setValue(QStringLiteral("Geometry"), saveGeometry());
    settings.setValue(QStringLiteral("TVState"), ui->tableView->horizontalHeader()->saveState());
}

void CanMultiInterfaceDialog::restoreSettings()
{
    QSettings settings = windowSettings();
    settings.beginGroup(QStringLiteral("CanMultiInterfaceDialog"));
    restoreGeometry(settings.value(QStringLiteral("Geometry")).toByteArray());
    ui->tableView->horizontalHeader()->restoreState(settings.value(QStringLiteral("TVState")).toByteArray());
    hideActiveColumn(activeColumnHidden);
    for (const int column : {Model::ColumnPrimary, Model::ColumnActive})
        ui->tableView->setColumnWidth(column, columnWidths[column]);
}
