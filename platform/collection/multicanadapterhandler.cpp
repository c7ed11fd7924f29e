#include "multicanadapterhandler.h"

#include <algorithm>
#include <limits>

namespace {
using Adapter = AbstractCanAdapter;
using AdapterPointer = QPointer<AbstractCanAdapter>;
using AdapterMap = QMap<quint16, AdapterPointer>;

constexpr quint16 noIdentifier = 0;
constexpr quint16 highestIdentifier = std::numeric_limits<quint16>::max();

// The pointers of a map may be null for as long as the death of an adapter takes, so each question has an answer
// for null.

bool isPrimary(const Adapter *adapter)
{
    return adapter != nullptr && adapter->getCanAdapterOption(Adapter::OptionPrimary).toBool();
}

bool isActive(const Adapter *adapter)
{
    return adapter != nullptr && adapter->isActiveAdapter();
}

bool isRunning(const Adapter *adapter)
{
    return adapter != nullptr && adapter->getRunning();
}

void setRoles(Adapter *adapter, bool primary, bool active)
{
    adapter->setCanAdapterOption(Adapter::OptionPrimary, primary);
    adapter->setCanAdapterOption(Adapter::OptionActive, active);
}

void setIdentifier(Adapter *adapter, quint16 identifier)
{
    adapter->setCanAdapterOption(Adapter::OptionAdapterId, QVariant::fromValue(identifier));
}

/// Who reads a link keeps its low 16 bits.
quint16 linkOf(const Adapter *adapter)
{
    return static_cast<quint16>(adapter->getCanAdapterOption(Adapter::OptionLinkedAdapter).toUInt());
}

void setLink(Adapter *adapter, quint16 identifier)
{
    adapter->setCanAdapterOption(Adapter::OptionLinkedAdapter, uint(identifier));
}

/// The hardware that an adapter opens. Read once to be looked for among many.
struct Device
{
    explicit Device(const Adapter *adapter)
        : type(adapter->getCanAdapterOption(Adapter::OptionAdapterType).toUInt())
        , name(adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString())
        , address(adapter->getCanAdapterOption(Adapter::OptionIpAddress).toString())
        , port(adapter->getCanAdapterOption(Adapter::OptionPort).toString())
    {
    }

    bool isOpenedBy(const Adapter *adapter) const
    {
        // First what differs most often where there are many adapters of one type.
        return adapter->getCanAdapterOption(Adapter::OptionPort).toString() == port
            && adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString() == name
            && adapter->getCanAdapterOption(Adapter::OptionIpAddress).toString() == address
            && adapter->getCanAdapterOption(Adapter::OptionAdapterType).toUInt() == type;
    }

    uint type;
    QString name;
    QString address;
    QString port;
};

class AdapterGuard;
AdapterGuard *guardOf(const Adapter *adapter);
} // namespace

class MultiCanAdapterHandlerPrivate
{
public:
    explicit MultiCanAdapterHandlerPrivate(MultiCanAdapterHandler *collection)
        : q(collection)
    {
    }

    MultiCanAdapterHandler *const q;
    AdapterMap map;

    Adapter *atRow(int row) const;
    quint16 identifierOf(const Adapter *adapter) const;
    quint16 chooseIdentifier(const Adapter *adapter, bool keep) const;
    void takeUp(Adapter *adapter, quint16 identifier);

    AdapterPointer primary() const;
    bool hasActiveTwin(const Adapter *adapter) const;
    void makePrimary(Adapter *adapter);
    void giveRoles(Adapter *adapter, bool primary, bool active);
    void ensurePrimary();

    void restoreRoles(quint16 identifier);
    void endRestoring();

    void moveLinks(quint16 from, quint16 to);
    void endLinks(const QList<quint16> &gone);

    bool isClosing(Adapter *adapter) const { return m_closing.contains(adapter); }
    bool closeRunning(Adapter *adapter);
    void abandon();
    QList<quint16> discard(const QList<AdapterPointer> &leaving);
    void remove(const QList<AdapterPointer> &leaving);
    void dropDead();

private:
    void tellRemoved(const QList<quint16> &identifiers);

    /// Which adapters are to be active, by what they said when they came back, kept until all came: one that was
    /// primary and active only because it was the first gives both back when the real primary one follows, and
    /// so makes room for another.
    QMap<quint16, bool> m_restoring;

    /// Adapters within their close(), which may call back: nobody may delete them under it.
    QList<Adapter *> m_closing;
};

namespace {
/// Sees the death of the adapter that is its parent. The connections of an adapter may be cut as a whole at any
/// time, and destroyed() with them; a child always goes with its parent.
class AdapterGuard : public QObject
{
public:
    AdapterGuard(Adapter *adapter, MultiCanAdapterHandlerPrivate *collection)
        : QObject(adapter)
        , m_owner(collection->q)
        , m_collection(collection)
    {
        // Comes before the children go: as long as this connection stands, other slots on destroyed() find a map
        // without the adapter.
        connect(adapter, &QObject::destroyed, this, &AdapterGuard::report);
    }
    ~AdapterGuard() override { report(); }

    MultiCanAdapterHandlerPrivate *collection() const { return m_owner ? m_collection : nullptr; }

private:
    void report()
    {
        if (m_owner)
            m_collection->dropDead();
    }

    QPointer<MultiCanAdapterHandler> m_owner;
    MultiCanAdapterHandlerPrivate *m_collection;
};

/// Null for an adapter that no collection owns.
AdapterGuard *guardOf(const Adapter *adapter)
{
    for (QObject *child : adapter->children()) {
        if (auto *guard = dynamic_cast<AdapterGuard *>(child))
            return guard;
    }
    return nullptr;
}
} // namespace

Adapter *MultiCanAdapterHandlerPrivate::atRow(int row) const
{
    return row >= 0 && row < map.size() ? std::next(map.cbegin(), row)->data() : nullptr;
}

quint16 MultiCanAdapterHandlerPrivate::identifierOf(const Adapter *adapter) const
{
    if (adapter == nullptr)
        return noIdentifier;
    // Not by the adapter's option, which anybody can write.
    const auto position = std::find(map.cbegin(), map.cend(), adapter);
    return position == map.cend() ? noIdentifier : position.key();
}

quint16 MultiCanAdapterHandlerPrivate::chooseIdentifier(const Adapter *adapter, bool keep) const
{
    const uint own = adapter->getCanAdapterOption(Adapter::OptionAdapterId).toUInt();
    if (keep && own > noIdentifier && own <= highestIdentifier && !map.contains(static_cast<quint16>(own)))
        return static_cast<quint16>(own);
    if (map.isEmpty())
        return 1;
    if (map.lastKey() < highestIdentifier)
        return static_cast<quint16>(map.lastKey() + 1);
    // The lowest free one. The keys ascend from at least 1, so the first gap is where the key runs ahead of the count.
    quint16 free = 1;
    for (auto entry = map.cbegin(); entry != map.cend() && entry.key() == free; ++entry)
        ++free; // ends in 0 if there is no gap
    return free;
}

void MultiCanAdapterHandlerPrivate::takeUp(Adapter *adapter, quint16 identifier)
{
    // Out of the hands of a parent that would delete it. It gets no new one: a parent deletes its children once
    // more when it dies in a slot on destroyed() of one of them.
    adapter->setParent(nullptr);
    new AdapterGuard(adapter, this);
    setIdentifier(adapter, identifier);
    map.insert(identifier, adapter);
}

AdapterPointer MultiCanAdapterHandlerPrivate::primary() const
{
    const auto position = std::find_if(map.cbegin(), map.cend(), isPrimary);
    return position == map.cend() ? nullptr : *position;
}

bool MultiCanAdapterHandlerPrivate::hasActiveTwin(const Adapter *adapter) const
{
    const Device device(adapter);
    return std::any_of(map.cbegin(), map.cend(), [&](const Adapter *other) {
        return other != adapter && isActive(other) && device.isOpenedBy(other);
    });
}

void MultiCanAdapterHandlerPrivate::makePrimary(Adapter *adapter)
{
    const Device device(adapter);
    for (Adapter *other : qAsConst(map)) {
        if (other == nullptr || other == adapter)
            continue;
        setRoles(other, false, isActive(other) && !device.isOpenedBy(other));
    }
    setRoles(adapter, true, true);
}

void MultiCanAdapterHandlerPrivate::giveRoles(Adapter *adapter, bool primary, bool active)
{
    // What it says of itself so far counts for nothing.
    setRoles(adapter, false, false);
    if (primary)
        makePrimary(adapter);
    else
        setRoles(adapter, false, active && !hasActiveTwin(adapter));
    ensurePrimary();
}

void MultiCanAdapterHandlerPrivate::ensurePrimary()
{
    if (primary())
        return;
    auto heir = std::find_if(map.cbegin(), map.cend(), isActive);
    if (heir == map.cend())
        heir = std::find_if(map.cbegin(), map.cend(), [](const Adapter *adapter) { return adapter != nullptr; });
    if (heir != map.cend())
        makePrimary(*heir);
}

/// Gives the adapter that just came back the roles that it brings along, as far as the rules allow.
void MultiCanAdapterHandlerPrivate::restoreRoles(quint16 identifier)
{
    dropDead();
    Adapter *restored = map.value(identifier);
    if (restored == nullptr) // a slot has removed it
        return;
    const bool claimsPrimary = isPrimary(restored);
    const bool claimsActive = isActive(restored);
    giveRoles(restored, false, claimsActive && !claimsPrimary);
    if (m_restoring.isEmpty()) {
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
            m_restoring.insert(entry.key(), isActive(*entry));
    }
    m_restoring.insert(identifier, claimsActive);
    if (!claimsPrimary)
        return;

    // The primary one goes first, then all others get what they asked for when they came.
    for (Adapter *adapter : qAsConst(map))
        setRoles(adapter, false, false);
    makePrimary(restored);
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        if (*entry != restored && m_restoring.value(entry.key()) && !hasActiveTwin(*entry))
            setRoles(*entry, false, true);
    }
}

/// From here on the roles are what they are. A link to an adapter that did not come back ends, so that it does not
/// lead to a stranger who gets the number later.
void MultiCanAdapterHandlerPrivate::endRestoring()
{
    if (m_restoring.isEmpty())
        return;
    for (auto entry = m_restoring.cbegin(); entry != m_restoring.cend(); ++entry) {
        Adapter *adapter = map.value(entry.key());
        if (adapter != nullptr && linkOf(adapter) != noIdentifier && !map.contains(linkOf(adapter)))
            setLink(adapter, noIdentifier);
    }
    m_restoring.clear();
}

/// After two adapters swapped their identifiers.
void MultiCanAdapterHandlerPrivate::moveLinks(quint16 from, quint16 to)
{
    for (Adapter *adapter : qAsConst(map)) {
        const quint16 link = adapter == nullptr ? noIdentifier : linkOf(adapter);
        if (link != noIdentifier && (link == from || link == to))
            setLink(adapter, link == from ? to : from);
    }
}

void MultiCanAdapterHandlerPrivate::endLinks(const QList<quint16> &gone)
{
    for (Adapter *adapter : qAsConst(map)) {
        const quint16 link = adapter == nullptr ? noIdentifier : linkOf(adapter);
        if (link != noIdentifier && gone.contains(link))
            setLink(adapter, noIdentifier);
    }
}

/// False if the collection did not live through it.
bool MultiCanAdapterHandlerPrivate::closeRunning(Adapter *adapter)
{
    if (!isRunning(adapter))
        return true;
    const QPointer<MultiCanAdapterHandler> alive(q);
    m_closing.append(adapter);
    adapter->close();
    if (alive)
        m_closing.removeOne(adapter);
    return !alive.isNull();
}

/// Closes and deletes adapters, and gives the identifiers that went. Slots that run on the way may call back, and
/// find the map in order at any time: an adapter leaves it before it dies, and one that left in between is let be.
QList<quint16> MultiCanAdapterHandlerPrivate::discard(const QList<AdapterPointer> &leaving)
{
    QList<AdapterPointer> stay;
    for (const AdapterPointer &adapter : leaving) {
        if (isClosing(adapter))
            stay.append(adapter);
        else if (!closeRunning(adapter))
            return {};
    }
    QList<quint16> gone;
    QList<AdapterPointer> dying;
    for (const AdapterPointer &adapter : leaving) {
        const quint16 identifier = stay.contains(adapter) ? noIdentifier : identifierOf(adapter);
        if (identifier == noIdentifier)
            continue;
        map.remove(identifier);
        gone.append(identifier);
        dying.append(adapter);
    }
    if (gone.isEmpty())
        return gone;
    endRestoring();
    endLinks(gone);
    ensurePrimary();
    // Nothing of this object is used from here on: a slot on destroyed() may end it.
    for (const AdapterPointer &adapter : qAsConst(dying))
        delete adapter;
    return gone;
}

/// The end of the collection.
void MultiCanAdapterHandlerPrivate::abandon()
{
    discard(map.values());
    // Those that are within their close() come back from it first.
    for (Adapter *adapter : qAsConst(m_closing))
        adapter->deleteLater();
}

void MultiCanAdapterHandlerPrivate::remove(const QList<AdapterPointer> &leaving)
{
    const QPointer<MultiCanAdapterHandler> alive(q);
    const QList<quint16> gone = discard(leaving);
    if (alive)
        tellRemoved(gone);
}

void MultiCanAdapterHandlerPrivate::tellRemoved(const QList<quint16> &identifiers)
{
    if (identifiers.isEmpty())
        return;
    const QPointer<MultiCanAdapterHandler> alive(q);
    for (const quint16 identifier : identifiers) {
        if (alive)
            emit alive->adapterRemoved(identifier);
    }
    if (alive)
        emit alive->adapterMapChanged();
}

/// Removes what others deleted.
void MultiCanAdapterHandlerPrivate::dropDead()
{
    QList<quint16> gone;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        if (entry->isNull())
            gone.append(entry.key());
    }
    if (gone.isEmpty())
        return;
    for (const quint16 identifier : qAsConst(gone))
        map.remove(identifier);
    endRestoring();
    endLinks(gone);
    ensurePrimary();
    tellRemoved(gone);
}

MultiCanAdapterHandler::MultiCanAdapterHandler(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<MultiCanAdapterHandlerPrivate>(this))
{
}

MultiCanAdapterHandler::~MultiCanAdapterHandler()
{
    // Without adapterRemoved(), at which listeners forget what they know of an adapter: these come back.
    d->abandon();
}

QMap<quint16, QPointer<AbstractCanAdapter>> *MultiCanAdapterHandler::getAdapterMap()
{
    return &d->map;
}

quint16 MultiCanAdapterHandler::getAdapterCount() const
{
    return static_cast<quint16>(d->map.size());
}

quint16 MultiCanAdapterHandler::getActiveAdapterCount() const
{
    return static_cast<quint16>(std::count_if(d->map.cbegin(), d->map.cend(), isActive));
}

AbstractCanAdapter *MultiCanAdapterHandler::adapterAt(quint16 row) const
{
    return d->atRow(row);
}

AbstractCanAdapter *MultiCanAdapterHandler::getPrimaryAdapter() const
{
    return d->primary();
}

QList<QPointer<AbstractCanAdapter>> MultiCanAdapterHandler::getConnectedAdapters() const
{
    QList<AdapterPointer> connected;
    std::copy_if(d->map.cbegin(), d->map.cend(), std::back_inserter(connected), isRunning);
    return connected;
}

quint16 MultiCanAdapterHandler::addNewCanAdapter(AbstractCanAdapter *adapter, bool primary, bool active,
                                                 bool keepIdentifier)
{
    if (adapter == nullptr)
        return noIdentifier;
    if (const AdapterGuard *guard = guardOf(adapter))
        return guard->collection() == d.get() ? d->identifierOf(adapter) : noIdentifier;
    const quint16 identifier = d->chooseIdentifier(adapter, keepIdentifier);
    if (identifier == noIdentifier)
        return noIdentifier;
    d->endRestoring();
    d->takeUp(adapter, identifier);
    d->giveRoles(adapter, primary, active);
    emit adapterMapChanged();
    return identifier;
}

AbstractCanAdapter *MultiCanAdapterHandler::addAdapterFromByteArray(AbstractCanAdapter::CanAdapterType type,
                                                                    QString device, QByteArray bytes)
{
    std::unique_ptr<AbstractCanAdapter> made(CanAdapterFactory::createCanAdapter(type, device));
    if (made == nullptr)
        return nullptr;
    // Damaged bytes still give an adapter, with what could be read: better than one that is lost.
    made->restoreValues(bytes);
    const quint16 identifier = d->chooseIdentifier(made.get(), true);
    if (identifier == noIdentifier)
        return nullptr;
    const AdapterPointer adapter = made.release();
    d->takeUp(adapter, identifier);
    d->restoreRoles(identifier);
    emit adapterMapChanged();
    return adapter;
}

void MultiCanAdapterHandler::updateAdapter(quint16 identifier, AbstractCanAdapter *adapter)
{
    const AdapterPointer old = d->map.value(identifier);
    const AdapterPointer replacement = adapter;
    if (!old || !replacement || guardOf(replacement) != nullptr || d->isClosing(old))
        return;
    if (!d->closeRunning(old))
        return;
    // A slot on the way may have removed or moved the one, or given away or deleted the other.
    if (!old || !replacement || guardOf(replacement) != nullptr || d->map.value(identifier) != old)
        return;
    d->endRestoring();
    const bool wasPrimary = isPrimary(old);
    const bool wasActive = isActive(old);
    // A form writes only the options that the adapter supports.
    if (linkOf(old) != noIdentifier
        && !replacement->getCanAdapterOption(AbstractCanAdapter::OptionLinkedAdapter).isValid())
        setLink(replacement, linkOf(old));
    d->takeUp(replacement, identifier);
    d->giveRoles(replacement, wasPrimary, wasActive);

    const QPointer<MultiCanAdapterHandler> alive(this);
    delete old;
    if (alive)
        emit adapterMapChanged();
}

void MultiCanAdapterHandler::removeAdapterAt(quint16 row)
{
    d->remove({adapterAt(row)});
}

void MultiCanAdapterHandler::removeAllAdapters()
{
    d->remove(d->map.values());
}

quint16 MultiCanAdapterHandler::moveAdapter(AbstractCanAdapter *adapter, MultiCanAdapterHandler::Direction direction)
{
    const quint16 from = d->identifierOf(adapter);
    if (from == noIdentifier)
        return noIdentifier;
    const auto position = d->map.find(from);
    auto neighbour = position;
    if (direction == Up && position != d->map.begin())
        --neighbour;
    else if (direction == Down)
        ++neighbour;
    if (neighbour == position || neighbour == d->map.end() || neighbour->isNull())
        return from;

    d->endRestoring();
    const quint16 to = neighbour.key();
    position->swap(*neighbour);
    setIdentifier(*position, from);
    setIdentifier(*neighbour, to);
    d->moveLinks(from, to);
    emit adapterMapChanged();
    return to;
}

void MultiCanAdapterHandler::handleActiveChanged(int row, bool active)
{
    AbstractCanAdapter *adapter = d->atRow(row);
    if (adapter == nullptr || couldActiveChanged(row) != ActiveCanChange)
        return;
    d->endRestoring();
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionActive, active);
}

void MultiCanAdapterHandler::handlePrimaryChanged(int row, bool primary)
{
    AbstractCanAdapter *adapter = d->atRow(row);
    if (adapter == nullptr || !primary)
        return;
    d->endRestoring();
    d->makePrimary(adapter);
}

int MultiCanAdapterHandler::couldActiveChanged(int row) const
{
    const AbstractCanAdapter *adapter = d->atRow(row);
    if (adapter == nullptr)
        return ActiveCanChange;
    if (isPrimary(adapter))
        return PrimaryStaysActive;
    return !isActive(adapter) && d->hasActiveTwin(adapter) ? SameAdapterActive : ActiveCanChange;
}
