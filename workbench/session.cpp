#include "session.h"

#include "interfacename.h"

#include <QDir>
#include <QStandardPaths>

namespace {
/// The interfaces that do not record, by identifier.
QString untracedItem()
{
    return QStringLiteral("untracedInterfaces");
}

quint16 identifierOf(const AbstractCanAdapter &adapter)
{
    return static_cast<quint16>(adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterId).toUInt());
}
} // namespace

Session::Session(QWidget *boxParent)
    : QObject(boxParent)
    , m_trace(new DatachunkHandler)
    , m_settings(nullptr)
    , m_handler(new ApplicationInterfaceHandler(&m_settings, m_trace, &m_adapters, m_primaryAdapter, m_scheduler,
                                                boxParent != nullptr ? static_cast<QObject *>(boxParent) : this))
{
    m_traceThread.setObjectName(QStringLiteral("trace"));
    m_trace->moveToThread(&m_traceThread);
    m_traceThread.start();

    connect(&m_adapters, &MultiCanAdapterHandler::adapterRemoved, this,
            [this](unsigned short identifier) { m_untraced.remove(identifier); });
    connect(m_handler, &ApplicationInterfaceHandler::newCanScheduler, this, &Session::schedulerChanged);
    connect(m_handler, &ApplicationInterfaceHandler::updateCanConnectionState, this, [this] {
        if (!m_disconnecting)
            collectFailures();
        emit connectionChanged();
    });
    connect(&m_adapters, &MultiCanAdapterHandler::adapterMapChanged, this, &Session::connectionChanged);
}

Session::~Session()
{
    // Listeners hear no more of what goes down here: they may be half gone themselves.
    blockSignals(true);
    m_handler->disconnectFromAdapter();
    delete m_handler;
    m_traceThread.quit();
    m_traceThread.wait();
    delete m_trace;
}

bool Session::openSettings()
{
    // The store itself makes one level of folders only, which is too little in a new home.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
    m_handler->openSettingsDatabase();
    // An open database whose tables cannot be read is a foreign or a damaged file.
    m_settingsOpened = m_settings.isOpen() && m_settings.getDatabase().tables().contains(QLatin1String("MiscSettings"));
    if (!m_settingsOpened) {
        emit settingsProblem(
            tr("The settings in \"%1\" cannot be read, so nothing is saved this time. Move the file away "
               "to start anew.")
                .arg(QDir::toNativeSeparators(m_settings.getSettingsFileBaseName())));
        return false;
    }
    const QVariantList untraced = m_settings.value(untracedItem(), QVariantList()).toList();
    for (const QVariant &identifier : untraced)
        m_untraced.insert(static_cast<quint16>(identifier.toUInt()));
    return true;
}

bool Session::saveSettings()
{
    if (!m_settingsOpened)
        return true;
    QVariantList untraced;
    for (const quint16 identifier : qAsConst(m_untraced)) {
        if (m_adapters.getAdapterMap()->contains(identifier))
            untraced.append(uint(identifier));
    }
    const bool valuesKept = m_settings.setValue(untracedItem(), untraced);
    const bool adaptersKept = m_settings.saveAdapters(m_adapters.getAdapterMap());
    if (m_settings.saveDatabase() && valuesKept && adaptersKept)
        return true;
    emit settingsProblem(
        tr("The settings could not be saved to \"%1\". See that the folder can be written and the disk "
           "is not full.")
            .arg(QDir::toNativeSeparators(m_settings.getSettingsFileBaseName())));
    return false;
}

bool Session::hasInterfaces() const
{
    return m_adapters.getAdapterCount() > 0;
}

bool Session::editInterfaces()
{
    m_handler->showCanMultiInterfaceSettings(false, true);
    // Once more, with what the workbench keeps beside the interfaces; and a failure is told.
    saveSettings();
    return m_handler->getDirectConnect();
}

bool Session::isConnected()
{
    return m_handler->isConnected();
}

void Session::setTraced(quint16 identifier, bool traced)
{
    if (traced)
        m_untraced.remove(identifier);
    else
        m_untraced.insert(identifier);
    const QPointer<AbstractCanAdapter> adapter = m_adapters.getAdapterMap()->value(identifier);
    if (!adapter || !adapter->getRunning())
        return;
    // Cut first in both cases, so that no frame ever comes twice.
    applyTraced(adapter);
    if (traced) {
        disconnect(adapter, &AbstractCanAdapter::newCanMessage, m_handler, &ApplicationInterfaceHandler::newCanMessage);
        connect(adapter, &AbstractCanAdapter::newCanMessage, m_handler, &ApplicationInterfaceHandler::newCanMessage,
                Qt::DirectConnection);
    }
}

bool Session::isTraced(quint16 identifier) const
{
    return !m_untraced.contains(identifier);
}

void Session::connectAdapters()
{
    if (isConnected())
        return;
    m_failure.clear();
    // By the signal of the first moment, so that no frame slips in; each disconnection cuts it.
    const auto adapters = m_adapters.getAdapterMap()->values();
    for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
        connect(adapter, &AbstractCanAdapter::runningChanged, this, &Session::cutUntraced,
                static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::UniqueConnection));
    }
    bool usesCanFd = false;
    m_handler->connectAdapters(false, usesCanFd);
    collectFailures();
    emit connectionChanged();
}

void Session::disconnectAdapters()
{
    m_failure.clear();
    m_disconnecting = true;
    m_handler->disconnectFromAdapter();
    m_disconnecting = false;
}

void Session::clearTrace()
{
    // On the thread of the trace, behind the frames that are on their way to it.
    QMetaObject::invokeMethod(
        m_trace, [this] { m_trace->clear(); }, Qt::BlockingQueuedConnection);
    emit traceCleared();
}

void Session::collectFailures()
{
    QStringList reasons;
    const auto adapters = m_adapters.getAdapterMap()->values();
    for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
        if (!adapter || !adapter->isActiveAdapter() || adapter->getRunning() || adapter->errorText().isEmpty())
            continue;
        reasons.append(tr("%1: %2", "interface and why it failed").arg(interfaceName(*adapter), adapter->errorText()));
    }
    m_failure = reasons.join(QLatin1Char('\n'));
}

void Session::cutUntraced()
{
    auto *adapter = qobject_cast<AbstractCanAdapter *>(sender());
    if (adapter != nullptr && adapter->getRunning())
        applyTraced(adapter);
}

void Session::applyTraced(AbstractCanAdapter *adapter)
{
    if (!isTraced(identifierOf(*adapter)))
        disconnect(adapter, &AbstractCanAdapter::newCanMessage, m_handler, &ApplicationInterfaceHandler::newCanMessage);
}
