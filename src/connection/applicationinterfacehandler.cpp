#include "applicationinterfacehandler.h"

#include "canmultiinterfacedialog.h"
#include "guihelper.h"

#include <QCoreApplication>
#include <QDebug>

namespace {
constexpr unsigned int usualBitrate = 250; // kBit/s

/// What the settings of an adapter say of its bitrates.
struct BusSettings
{
    bool canFd;
    CAN::CANBitrateDesc bitrate;
    CAN::CANBitrateDesc fdBitrate;

    explicit BusSettings(const AbstractCanAdapter &adapter)
        : canFd(adapter.getCanAdapterOption(AbstractCanAdapter::OptionUseCanFd).toBool())
        , bitrate(adapter.getCanAdapterOption(AbstractCanAdapter::OptionBitrate))
        , fdBitrate(adapter.getCanAdapterOption(AbstractCanAdapter::OptionFdBitrate))
    {
    }
};

QString deviceName(const AbstractCanAdapter &adapter)
{
    return adapter.getCanAdapterOption(AbstractCanAdapter::OptionDeviceName).toString();
}

/// A SocketCAN link was configured with the system's tools: the system and not the settings decide.
void takeFromSystem(BusSettings &settings, AbstractCanAdapter &adapter)
{
    const AbstractCanAdapter::SocketCANProps props = CanAdapterFactory::getSocketCanProps(deviceName(adapter));
    settings.canFd = props.canFd;
    settings.bitrate.bitrate = props.bitrate;
    settings.fdBitrate.bitrate = props.fdBitrate;
    adapter.setCanAdapterOption(AbstractCanAdapter::OptionBitrate, QVariant::fromValue(settings.bitrate));
    adapter.setCanAdapterOption(AbstractCanAdapter::OptionFdBitrate, QVariant::fromValue(settings.fdBitrate));
    adapter.setCanAdapterOption(AbstractCanAdapter::OptionUseCanFd, settings.canFd);
}
} // namespace

ApplicationInterfaceHandler::ApplicationInterfaceHandler(SettingsDatabase *settingsDatabase,
                                                         QPointer<DatachunkHandler> &dataChunkHandler,
                                                         MultiCanAdapterHandler *adapterHandler,
                                                         QPointer<AbstractCanAdapter> &primaryAdapter,
                                                         QPointer<CanScheduler> &canScheduler, QObject *parent)
    : QObject(parent)
    , parentWidget(qobject_cast<QWidget *>(parent))
    , adapterHandler(adapterHandler)
    , dataChunkHandler(dataChunkHandler)
    , settingsDatabase(settingsDatabase)
    , primaryAdapter(primaryAdapter)
    , canScheduler(canScheduler)
{
}

ApplicationInterfaceHandler::~ApplicationInterfaceHandler() = default;

void ApplicationInterfaceHandler::openSettingsDatabase()
{
    if (!settingsDatabase || !adapterHandler)
        return;
    if (settingsDatabase->openDatabase(QString()))
        settingsDatabase->restoreAdapters(adapterHandler);
    connect(adapterHandler.data(), &MultiCanAdapterHandler::adapterRemoved, settingsDatabase.data(),
            &SettingsDatabase::handleRemovedAdapter);
}

quint16 ApplicationInterfaceHandler::addNewCanAdapter(AbstractCanAdapter *adapter, bool primary, bool active,
                                                      bool keepIdentifier)
{
    return adapterHandler ? adapterHandler->addNewCanAdapter(adapter, primary, active, keepIdentifier) : quint16(0);
}

void ApplicationInterfaceHandler::connectAdapters(bool withoutTrace, bool &usesCanFd)
{
    if (!adapterHandler)
        return;
    clearScheduler();
    // A copy: each box runs an event loop, in which adapters and the collection itself may go.
    const QList<QPointer<AbstractCanAdapter>> adapters = adapterHandler ? adapterHandler->getAdapterMap()->values()
                                                                        : QList<QPointer<AbstractCanAdapter>>();
    if (adapters.isEmpty()) {
        showBox(tr("There is no CAN adapter specified."),
                tr("You have to specify a CAN adapter you want connect to via the CAN interface settings."),
                QMessageBox::Warning);
    }
    for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
        if (!adapter || !adapterHandler || !adapter->isActiveAdapter())
            continue;
        const auto link = static_cast<quint16>(
            adapter->getCanAdapterOption(AbstractCanAdapter::OptionLinkedAdapter).toUInt());
        adapter->setLinkedAdapter(link != 0 ? adapterHandler->getAdapterMap()->value(link) : nullptr);
        connectToAdapter(adapter, withoutTrace, usesCanFd);
    }
    if (primaryAdapter)
        updateSchedulerForNewPrimaryAdapter();
}

int ApplicationInterfaceHandler::connectToAdapter(AbstractCanAdapter *adapter, bool withoutTrace, bool &usesCanFd)
{
    if (adapter == nullptr) {
        showBox(tr("CAN interface cannot be opened."),
                tr("The CAN interface DLL was not found or the interface is not supported at all on this platform."),
                QMessageBox::Warning);
        return noAdapter;
    }
    if (adapter->getRunning())
        return AbstractCanAdapter::OpenOk;

    BusSettings settings(*adapter);
    const uint type = adapter->getCanAdapterOption(AbstractCanAdapter::OptionAdapterType).toUInt();
    if (type == AbstractCanAdapter::CanAdapterSocketCan)
        takeFromSystem(settings, *adapter);
    adapter->setBitrate(settings.bitrate.bitrate);
    if (settings.canFd)
        adapter->setFdBitrate(settings.fdBitrate.bitrate);

    listenForErrors(adapter);
    const int result = adapter->open();
    if (result != AbstractCanAdapter::OpenOk && result != AbstractCanAdapter::OpenOtherSettings) {
        showOpenFailure(result, *adapter);
        return result;
    }
    establish(adapter, withoutTrace, settings.bitrate.bitrate);
    if (settings.canFd)
        usesCanFd = true;
    const QPointer<AbstractCanAdapter> connected = adapter;
    emit newAdapter(adapter);
    if (result == AbstractCanAdapter::OpenOtherSettings && connected)
        showOtherSettings(*connected);
    return result;
}

void ApplicationInterfaceHandler::listenForErrors(AbstractCanAdapter *adapter)
{
    connect(adapter, &AbstractCanAdapter::interfaceError, this, &ApplicationInterfaceHandler::interfaceError,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection));
}

void ApplicationInterfaceHandler::establish(AbstractCanAdapter *adapter, bool withoutTrace, quint16 bitrate)
{
    // Placed for the next frame, and so before the connection that the first frame comes through.
    if (dataChunkHandler) {
        dataChunkHandler->addMessageNoteToNextMessage(
            QStringLiteral("Connect:%1:%2").arg(deviceName(*adapter), QString::number(bitrate)));
    }
    if (!withoutTrace) {
        connect(adapter, &AbstractCanAdapter::newCanMessage, this, &ApplicationInterfaceHandler::newCanMessage,
                Qt::DirectConnection);
        if (dataChunkHandler) {
            connect(this, &ApplicationInterfaceHandler::sigAppendCanMessage, dataChunkHandler.data(),
                    &DatachunkHandler::appendCanMessage,
                    static_cast<Qt::ConnectionType>(Qt::AutoConnection | Qt::UniqueConnection));
        }
    }
    if (adapter->getCanAdapterOption(AbstractCanAdapter::OptionPrimary).toBool())
        primaryAdapter = adapter;
    adapter->setRunning(true);
}

void ApplicationInterfaceHandler::disconnectFromAdapter()
{
    if (adapterHandler) {
        const auto adapters = adapterHandler->getAdapterMap()->values();
        for (const QPointer<AbstractCanAdapter> &adapter : adapters) {
            if (!adapter)
                continue;
            adapter->close();
            if (adapter)
                adapter->disconnect();
        }
        clearScheduler();
        primaryAdapter.clear();
        if (dataChunkHandler)
            dataChunkHandler->addMessageNoteToLastMessage(QStringLiteral("Disconnected"));
    }
    emit updateCanConnectionState();
}

void ApplicationInterfaceHandler::clearScheduler()
{
    if (!canScheduler)
        return;
    canScheduler->connectToAdapter(false);
    delete canScheduler;
    emit newCanScheduler(nullptr);
}

void ApplicationInterfaceHandler::updateSchedulerForNewPrimaryAdapter()
{
    clearScheduler();
    canScheduler = new CanScheduler(primaryAdapter);
    // Listeners see the new scheduler before it is attached to the adapter.
    emit newCanScheduler(canScheduler);
    // A listener may have ended the connection again.
    if (!canScheduler)
        return;
    canScheduler->connectToAdapter(true);
    if (primaryAdapter) {
        connect(primaryAdapter.data(), &AbstractCanAdapter::newCanState, this,
                &ApplicationInterfaceHandler::newCanState,
                static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::UniqueConnection));
        listenForErrors(primaryAdapter);
    }
    emit updateCanConnectionState();
}

void ApplicationInterfaceHandler::showCanMultiInterfaceSettings(bool hideActiveColumn, bool showConnectButton)
{
    if (!adapterHandler || !settingsDatabase)
        return;
    CanMultiInterfaceDialog dialog(adapterHandler, directConnect, showConnectButton, nullptr);
    const QVariant bitrate = settingsDatabase->value(QStringLiteral("defaultBitrate"), usualBitrate);
    dialog.setDefaultBitrate(static_cast<unsigned short>(bitrate.toUInt()));
    dialog.hideActiveColumn(hideActiveColumn);
    dialog.exec();
    // The dialog has worked on the live collection: there is nothing that its end could take back.
    if (!adapterHandler || !settingsDatabase)
        return;
    settingsDatabase->saveAdapters(adapterHandler->getAdapterMap());
    if (!settingsDatabase->saveDatabase())
        qDebug() << Q_FUNC_INFO << "saveDatabase failed — settings may not be persisted";
}

bool ApplicationInterfaceHandler::isConnected()
{
    return !getConnectedAdapters().isEmpty();
}

QList<QPointer<AbstractCanAdapter>> ApplicationInterfaceHandler::getConnectedAdapters()
{
    return adapterHandler ? adapterHandler->getConnectedAdapters() : QList<QPointer<AbstractCanAdapter>>();
}

AbstractCanAdapter *ApplicationInterfaceHandler::getPrimaryAdapter()
{
    return adapterHandler ? adapterHandler->getPrimaryAdapter() : nullptr;
}

bool ApplicationInterfaceHandler::getDirectConnect()
{
    return directConnect;
}

void ApplicationInterfaceHandler::appendCanMessage(CAN::CanRxMessage message)
{
    if (dataChunkHandler)
        emit sigAppendCanMessage(message);
}

void ApplicationInterfaceHandler::interfaceError()
{
    QString name;
    if (const auto *adapter = qobject_cast<AbstractCanAdapter *>(sender()))
        name = adapter->getCanAdapterOption(AbstractCanAdapter::OptionAdapterName).toString().simplified();
    disconnectFromAdapter();
    showBox(tr("CAN interface has been closed."),
            tr("The interface \"%1\" has been disconnected or another interface error occured.").arg(name),
            QMessageBox::Warning);
}

void ApplicationInterfaceHandler::newCanMessage(CAN::CanRxMessage *pCanMessage)
{
    if (pCanMessage != nullptr)
        appendCanMessage(*pCanMessage);
}

void ApplicationInterfaceHandler::showBox(const QString &text, const QString &informativeText,
                                          QMessageBox::Icon icon) const
{
    GuiHelper::showMessageBox(parentWidget, QCoreApplication::applicationName(), text, informativeText, QMessageBox::Ok,
                              icon);
}

void ApplicationInterfaceHandler::showOpenFailure(int openResult, const AbstractCanAdapter &adapter) const
{
    if (openResult == AbstractCanAdapter::OpenInvalidDevice) {
        showBox(tr("Invalid device error."),
                tr("There is no valid device found or an error with the selected device occured."),
                QMessageBox::Warning);
        return;
    }
    const QString name = adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterName).toString();
    showBox(tr("%1 cannot be opened.").arg(name),
            openResult == AbstractCanAdapter::OpenInvalidBitrate ? tr("The configured bitrate is faulty.")
                                                                 : tr("The CAN interface does not exist or is busy."),
            QMessageBox::Warning);
}

void ApplicationInterfaceHandler::showOtherSettings(const AbstractCanAdapter &adapter) const
{
    // Read afresh: the adapter may have taken over what the device runs with.
    const BusSettings settings(adapter);
    const QString informativeText = settings.canFd
        ? tr("The device is set with CAN FD enabled and a nominal bitrate of %1 kBit/s and a databitrate of "
             "%2 kBit/s.")
              .arg(settings.bitrate.bitrate)
              .arg(settings.fdBitrate.bitrate)
        : tr("The device is set with CAN FD disabled and a bitrate of %1 kBit/s.").arg(settings.bitrate.bitrate);
    showBox(tr("The device is already initialized with other settings."), informativeText, QMessageBox::Information);
}
