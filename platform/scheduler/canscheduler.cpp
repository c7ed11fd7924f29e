#include "canscheduler.h"

#include "cyclicsender.h"

class CanSchedulerPrivate
{
public:
    QPointer<AbstractCanAdapter> adapter;
    /// Shared with the connections, which may be delivering from another thread while the scheduler goes.
    std::shared_ptr<CyclicSender> sender = std::make_shared<CyclicSender>();
    QMetaObject::Connection runningChanged;
    QMetaObject::Connection destroyed;
};

CanScheduler::CanScheduler(AbstractCanAdapter *adapter)
    : d(std::make_unique<CanSchedulerPrivate>())
{
    d->adapter = adapter;
}

CanScheduler::~CanScheduler()
{
    connectToAdapter(false);
    d->sender->finish();
}

void CanScheduler::connectToAdapter(bool connect)
{
    const bool wanted = connect && d->adapter;
    if (wanted && d->runningChanged)
        return;
    d->sender->drop();
    disconnect(d->runningChanged);
    disconnect(d->destroyed);
    // Again: an adapter of another thread may have begun to run in between.
    d->sender->drop();
    if (!wanted)
        return;
    // Direct: the adapter must not go on stopping before the frame that is on its way has ended.
    AbstractCanAdapter *const adapter = d->adapter;
    d->runningChanged = QObject::connect(
        adapter, &AbstractCanAdapter::runningChanged, this,
        [adapter, sender = d->sender](bool running) { running ? sender->use(adapter) : sender->drop(); },
        Qt::DirectConnection);
    d->destroyed = QObject::connect(
        adapter, &QObject::destroyed, this, [sender = d->sender] { sender->drop(); }, Qt::DirectConnection);
    d->sender->setLifeline(d->runningChanged);
    d->sender->use(adapter);
}

AbstractCanAdapter *CanScheduler::canAdapter() const
{
    return d->adapter;
}

quint32 CanScheduler::addCyclicMessage(const CAN::CanMessage &message, qint64 periodMicroseconds)
{
    return d->sender->add(message, periodMicroseconds);
}

bool CanScheduler::changeCyclicMessage(quint32 handle, const CAN::CanMessage &message, qint64 periodMicroseconds)
{
    return d->sender->change(handle, message, periodMicroseconds);
}

bool CanScheduler::removeCyclicMessage(quint32 handle)
{
    return d->sender->remove(handle);
}

void CanScheduler::removeAllCyclicMessages()
{
    d->sender->removeAll();
}

int CanScheduler::cyclicMessageCount() const
{
    return d->sender->count();
}
