#include "canmultiinterfacemodel.h"

namespace {
// At load, so that a view finds it by its name before a model has given one.
void registerFlags()
{
    qRegisterMetaType<CanMultiInterfaceModel::AdapterModelFlags>();
}
Q_CONSTRUCTOR_FUNCTION(registerFlags)
} // namespace

CanMultiInterfaceModel::CanMultiInterfaceModel(MultiCanAdapterHandler *adapterHandler, QObject *parent)
    : QAbstractTableModel(parent)
    , adapterHandler(adapterHandler)
{
    connect(adapterHandler, &MultiCanAdapterHandler::adapterMapChanged, this, &CanMultiInterfaceModel::updateData);
}

CanMultiInterfaceModel::~CanMultiInterfaceModel() = default;

void CanMultiInterfaceModel::setModelType(CanMultiInterfaceModel::ModelType type)
{
    modelType = type;
}

int CanMultiInterfaceModel::findRowOfId(unsigned short id) const
{
    const int rows = rowCount();
    for (int row = 0; row < rows; ++row) {
        if (data(index(row, ColumnId)).toUInt() == id)
            return row;
    }
    return -1;
}

int CanMultiInterfaceModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : adapterHandler->getAdapterCount();
}

int CanMultiInterfaceModel::columnCount(const QModelIndex &) const
{
    return numberOfColumns;
}

QVariant CanMultiInterfaceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    switch (section) {
    case ColumnId:
        return QStringLiteral("ID");
    case ColumnName:
        return tr("Name");
    case ColumnPrimary:
        return tr("Primary");
    case ColumnActive:
        return modelType == ModelTypeAdopt ? tr("Adopt") : tr("Active");
    case ColumnFlags:
        return tr("Flags");
    default:
        return tr("Not handled correctly");
    }
}

Qt::ItemFlags CanMultiInterfaceModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags plain = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    switch (index.column()) {
    case ColumnPrimary:
        return plain | Qt::ItemIsUserCheckable;
    case ColumnActive: {
        const bool isFree = modelType != ModelTypeActive
            || adapterHandler->couldActiveChanged(index.row()) == MultiCanAdapterHandler::ActiveCanChange;
        return isFree ? plain | Qt::ItemIsUserCheckable : plain;
    }
    default:
        return plain;
    }
}

QVariant CanMultiInterfaceModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return getDisplayRoleValue(index);
    case Qt::ToolTipRole:
        return getToolTip(index);
    case Qt::CheckStateRole:
        return checkState(index);
    case flagsRole:
        return getAdapterFlags(index);
    default:
        return {};
    }
}

bool CanMultiInterfaceModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (index.row() >= rowCount() || role != Qt::CheckStateRole)
        return false;
    switch (index.column()) {
    case ColumnPrimary:
        adapterHandler->handlePrimaryChanged(index.row(), value.toBool());
        reportColumn(ColumnPrimary);
        // Who becomes primary becomes active, and may end that of another.
        reportColumn(ColumnActive);
        return true;
    case ColumnActive:
        adapterHandler->handleActiveChanged(index.row(), value.toBool());
        // Of all rows: which others may become active hangs on this one.
        reportColumn(ColumnActive);
        return true;
    default:
        return false;
    }
}

QVariant CanMultiInterfaceModel::getDisplayRoleValue(const QModelIndex &index) const
{
    switch (index.column()) {
    case ColumnId:
        return option(index, AbstractCanAdapter::OptionAdapterId);
    case ColumnName:
        return nameWithDescription(index);
    case ColumnPrimary:
    case ColumnActive:
    case ColumnFlags:
        return {};
    default:
        return tr("unhandled column %1, fix me").arg(index.column());
    }
}

QString CanMultiInterfaceModel::getToolTip(const QModelIndex &index) const
{
    if (index.column() != ColumnActive || modelType != ModelTypeActive)
        return {};
    switch (adapterHandler->couldActiveChanged(index.row())) {
    case MultiCanAdapterHandler::SameAdapterActive:
        return tr("Set active not possible, same active adapter already exists.");
    case MultiCanAdapterHandler::PrimaryStaysActive:
        return tr("Adapter is set as primary, cannot unset active state.");
    default:
        return {};
    }
}

QVariant CanMultiInterfaceModel::getAdapterFlags(const QModelIndex &index) const
{
    AdapterModelFlags flags;
    const AbstractCanAdapter *adapter = adapterAt(index);
    if (adapter != nullptr) {
        flags.canFd = adapter->getCanAdapterOption(AbstractCanAdapter::OptionUseCanFd).toBool();
        flags.listenOnly = adapter->getCanAdapterOption(AbstractCanAdapter::OptionListenOnly).toBool();
        flags.autoBusOn = adapter->getCanAdapterOption(AbstractCanAdapter::OptionAutoBusOn).toBool();
        flags.errorFrames = adapter->getCanAdapterOption(AbstractCanAdapter::OptionLogErrorFrames).toBool();
        flags.lowSpeed = adapter->getCanAdapterOption(AbstractCanAdapter::OptionLowSpeed).toBool();
        flags.linked = adapter->getCanAdapterOption(AbstractCanAdapter::OptionLinkedAdapter).toUInt() != 0;
    }
    return QVariant::fromValue(flags);
}

void CanMultiInterfaceModel::updateData()
{
    beginResetModel();
    endResetModel();
}

const AbstractCanAdapter *CanMultiInterfaceModel::adapterAt(const QModelIndex &index) const
{
    return adapterHandler->adapterAt(static_cast<quint16>(index.row()));
}

QVariant CanMultiInterfaceModel::option(const QModelIndex &index, AbstractCanAdapter::AdapterOption option) const
{
    const AbstractCanAdapter *adapter = adapterAt(index);
    return adapter != nullptr ? adapter->getCanAdapterOption(option) : QVariant();
}

QString CanMultiInterfaceModel::nameWithDescription(const QModelIndex &index) const
{
    const QString name = option(index, AbstractCanAdapter::OptionAdapterName).toString();
    const QString description = option(index, AbstractCanAdapter::OptionDescription).toString();
    return description.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, description);
}

QVariant CanMultiInterfaceModel::checkState(const QModelIndex &index) const
{
    switch (index.column()) {
    case ColumnPrimary:
        return int(option(index, AbstractCanAdapter::OptionPrimary).toBool() ? Qt::Checked : Qt::Unchecked);
    case ColumnActive:
        return int(option(index, AbstractCanAdapter::OptionActive).toBool() ? Qt::Checked : Qt::Unchecked);
    default:
        return {};
    }
}

void CanMultiInterfaceModel::reportColumn(int column)
{
    emit dataChanged(index(0, column), index(rowCount() - 1, column));
}
