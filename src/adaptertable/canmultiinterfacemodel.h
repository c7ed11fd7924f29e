#pragma once

#include "kestrune_export.h"
#include "multicanadapterhandler.h"

#include <QAbstractTableModel>
#include <QPointer>

/// The saved adapters of a collection as a table, a row each. A change of a check column is a call on the collection.
///
/// Holds no copy: each cell asks the collection and the adapter at the moment it is drawn. Which adapter may be primary
/// or active is the collection's affair; the table shows what came of it.
///
/// The collection must outlive the model. Any change of its map resets the model, and so clears a view's selection.
/// GUI thread only.
class KESTRUNE_EXPORT CanMultiInterfaceModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum ModelType : int {
        ModelTypeActive = 0, ///< column 3 says what the collection lets be active
        ModelTypeAdopt = 1,  ///< column 3 says what to take over, and can always be checked
    };

    enum Column : int { ColumnId = 0, ColumnName = 1, ColumnPrimary = 2, ColumnActive = 3, ColumnFlags = 4 };
    static constexpr int numberOfColumns = 5;

    /// Gives AdapterModelFlags, in every column.
    static constexpr int flagsRole = Qt::UserRole + 1;

    /// What the flags column says of an adapter.
    struct AdapterModelFlags
    {
        bool canFd = false;
        bool listenOnly = false;
        bool autoBusOn = false;
        bool errorFrames = false;
        bool lowSpeed = false;
        bool linked = false; ///< to any identifier, also one that is gone
    };

    explicit CanMultiInterfaceModel(MultiCanAdapterHandler *adapterHandler, QObject *parent = nullptr);
    ~CanMultiInterfaceModel() override;

    /// Counts for the next question: a view that is up already needs an updateData() to see it.
    void setModelType(CanMultiInterfaceModel::ModelType type);
    /// -1 for an identifier that no row has.
    int findRowOfId(unsigned short id) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// Takes check states only. True says that the collection was asked, not that it agreed.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    // What data() gives for its roles. The row must exist.
    QVariant getDisplayRoleValue(const QModelIndex &index) const;
    /// Why the active state cannot be changed; empty if it can.
    QString getToolTip(const QModelIndex &index) const;
    QVariant getAdapterFlags(const QModelIndex &index) const;

public slots:
    /// Resets the model.
    void updateData();

private:
    const AbstractCanAdapter *adapterAt(const QModelIndex &index) const;
    QVariant option(const QModelIndex &index, AbstractCanAdapter::AdapterOption option) const;
    QString nameWithDescription(const QModelIndex &index) const;
    QVariant checkState(const QModelIndex &index) const;
    void reportColumn(int column);

    ModelType modelType = ModelTypeActive;
    QPointer<MultiCanAdapterHandler> adapterHandler;
};

Q_DECLARE_METATYPE(CanMultiInterfaceModel::AdapterModelFlags)
