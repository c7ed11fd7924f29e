#include "demosession.h"

#include "demonetworkrunner.h"
#include "session.h"

#include <QTimer>

#include <algorithm>

namespace {
// The simulated nodes send several times in this time; a bus that stays silent for so long has none.
constexpr int listenMilliseconds = 300;
constexpr quint16 demoBitrate = 500;

/// As the list of bitrates has it, in which the user finds it again.
QVariant arbitrationBitrate()
{
    const auto bitrates = CanAdapterFactory::getSupportedBitrates(AbstractCanAdapter::CanAdapterDemo, true);
    const auto found = std::find_if(bitrates.begin(), bitrates.end(),
                                    [](const auto &entry) { return entry.bitrate == demoBitrate; });
    return found == bitrates.end() ? QVariant() : QVariant::fromValue(*found);
}

bool isDemo(const AbstractCanAdapter &adapter)
{
    return adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterType).toUInt()
        == AbstractCanAdapter::CanAdapterDemo;
}
} // namespace

DemoSession::DemoSession(Session *session, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_network(std::make_unique<DemoNetworkRunner>())
{
    connect(m_network.get(), &DemoNetworkRunner::stopped, this,
            [this](const QString &reason) { emit remark(tr("The demo network stopped: %1").arg(reason)); });
}

DemoSession::~DemoSession() = default;

void DemoSession::addInterfaces()
{
    m_wanted = true;
    if (m_session->hasInterfaces()) {
        moveInterfacesToPort();
        return;
    }
    for (const QString &name : {QStringLiteral("Demo 1"), QStringLiteral("Demo 2")}) {
        AbstractCanAdapter *adapter = CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, name);
        if (adapter == nullptr)
            continue;
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionUseCanFd, true);
        if (!m_port.isEmpty())
            adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, m_port);
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionBitrate, arbitrationBitrate());
        const bool isPrimary = name.endsWith(QLatin1Char('1'));
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionForcedEcho, isPrimary);
        const quint16 identifier = m_session->adapters()->addNewCanAdapter(adapter, isPrimary, true, false);
        m_session->setTraced(identifier, isPrimary);
    }
}

void DemoSession::joinNetwork()
{
    const AbstractCanAdapter *neighbour = connectedDemoInterface();
    if (!m_wanted || neighbour == nullptr || isNetworkRunning())
        return;
    m_heardBefore = neighbour->framesReceived();
    QTimer::singleShot(listenMilliseconds, this, &DemoSession::startNetworkOnSilentBus);
}

bool DemoSession::isPossible() const
{
    const auto adapters = m_session->adapters()->getAdapterMap()->values();
    return adapters.isEmpty()
        || std::any_of(adapters.cbegin(), adapters.cend(), [](const auto &adapter) { return isDemo(*adapter); });
}

AbstractCanAdapter *DemoSession::connectedDemoInterface() const
{
    const auto connected = m_session->adapters()->getConnectedAdapters();
    const auto found = std::find_if(connected.cbegin(), connected.cend(),
                                    [](const auto &adapter) { return isDemo(*adapter); });
    return found == connected.cend() ? nullptr : found->data();
}

void DemoSession::moveInterfacesToPort()
{
    if (m_port.isEmpty() || m_session->isConnected())
        return;
    const auto adapters = m_session->adapters()->getAdapterMap()->values();
    for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
        if (isDemo(*adapter))
            adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, m_port);
    }
}

bool DemoSession::isNetworkRunning() const
{
    return m_network->isRunning();
}

void DemoSession::startNetworkOnSilentBus()
{
    const AbstractCanAdapter *neighbour = connectedDemoInterface();
    if (neighbour == nullptr || isNetworkRunning())
        return;
    // Not the trace: it may hold the interface's own frames, which are sent again as soon as that is connected.
    if (neighbour->framesReceived() > m_heardBefore)
        emit remark(tr("Somebody already talks on the demo bus, so this window starts no network of its own."));
    else if (!m_network->start(neighbour->getCanAdapterOption(AbstractCanAdapter::OptionPort).toString()))
        emit remark(tr("The demo network could not be started: %1").arg(m_network->errorText()));
}
