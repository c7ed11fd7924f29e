#pragma once

#include "adaptercontract.h"

class MultiCanAdapterHandlerPrivate;

/// The collection of configured adapters. It owns them, keyed by identifier; rows count the map in its order.
///
/// The rules that it keeps:
/// - identifiers start at 1, and none is given twice while it is in use;
/// - among adapters that the collection took up, exactly one is primary, and the primary one is active;
/// - two active adapters never have the same type, device text, address and port;
/// - an adapter that is replaced or removed while it runs is closed first, and leaves the map before it dies;
/// - links follow an adapter that moves, and end with the one that goes.
///
/// All functions are called from the GUI thread.
class KESTRUNE_PLATFORM_EXPORT MultiCanAdapterHandler : public QObject
{
    Q_OBJECT

public:
    enum Direction { Up = 0, Down = 1 };
    Q_ENUM(Direction)

    /// What couldActiveChanged() answers.
    enum ActiveChange { ActiveCanChange = 0, SameAdapterActive = 1, PrimaryStaysActive = 2 };

    explicit MultiCanAdapterHandler(QObject *parent = nullptr);
    ~MultiCanAdapterHandler() override;

    /// The live map, owned by the collection. It never holds a null pointer.
    QMap<quint16, QPointer<AbstractCanAdapter>> *getAdapterMap();
    quint16 getAdapterCount() const;
    quint16 getActiveAdapterCount() const;
    /// Null for a row that does not exist.
    AbstractCanAdapter *adapterAt(quint16 row) const;
    /// The adapter with OptionPrimary set, or null.
    AbstractCanAdapter *getPrimaryAdapter() const;
    /// The adapters that run now, in the order of their identifiers.
    QList<QPointer<AbstractCanAdapter>> getConnectedAdapters() const;

    /// Takes the adapter over and gives its identifier: one above the highest, or the adapter's own OptionAdapterId
    /// if `keepIdentifier` is set and that number is free. The first adapter becomes primary, and so active, in any
    /// case. Gives 0, and leaves the adapter with the caller, for null and when all 65535 identifiers are in use.
    quint16 addNewCanAdapter(AbstractCanAdapter *adapter, bool primary, bool active, bool keepIdentifier);
    /// Makes an adapter from what AbstractCanAdapter::getValuesAsByteArray() gave, with its identifier, roles and
    /// link as far as the rules allow, and takes it up. Null if the type cannot be made.
    AbstractCanAdapter *addAdapterFromByteArray(AbstractCanAdapter::CanAdapterType type, QString device,
                                                QByteArray bytes);
    /// Puts `adapter` in the place of the one with that identifier, which is deleted. An unknown identifier
    /// changes nothing, and the adapter stays the caller's.
    void updateAdapter(quint16 identifier, AbstractCanAdapter *adapter);
    void removeAdapterAt(quint16 row);
    void removeAllAdapters();
    /// Swaps the identifiers of the adapter and its neighbour; gives the adapter's identifier after that, or 0 for
    /// one that is not in the collection.
    quint16 moveAdapter(AbstractCanAdapter *adapter, MultiCanAdapterHandler::Direction direction);

    /// Does what couldActiveChanged() allows, and nothing else.
    void handleActiveChanged(int row, bool active);
    /// Makes the row primary and active. An identical active adapter is set inactive. The primary state of a row
    /// cannot be taken away, only given to another.
    void handlePrimaryChanged(int row, bool primary);
    /// An ActiveChange.
    int couldActiveChanged(int row) const;

signals:
    // Spelled out: connections by name compare the words.
    void adapterRemoved(unsigned short identifier);
    /// After any change of the map.
    void adapterMapChanged();

private:
    std::unique_ptr<MultiCanAdapterHandlerPrivate> d;
};
