#include "threadedadapter.h"

ThreadedAdapter::ThreadedAdapter(CanAdapterType type, const QString &device, QObject *parent)
    : AbstractCanAdapter(type, device, parent)
{
    setCanAdapterOption(OptionUseCanFd, false);
    setCanAdapterOption(OptionListenOnly, false);
    setCanAdapterOption(OptionDescription, QString());
    setCanAdapterOption(OptionLinkedAdapter, 0u);
    setCanAdapterOption(OptionClassicBusParameter, QVariant::fromValue(CAN::CANClassicBusParameter()));
    setCanAdapterOption(OptionFdBusParameter, QVariant::fromValue(CAN::CANFDBusParameter()));
    setCanAdapterOption(OptionForcedEcho, false);
}

int ThreadedAdapter::open()
{
    if (isOpen())
        return OpenOk;
    close();
    resetCounters();
    setErrorText({});
    return openLink();
}

void ThreadedAdapter::close()
{
    m_running = false;
    if (isReceiveThread()) {
        m_closesLater = true;
        // Whoever opens the adapter before that has closed it too, and must not lose the new link.
        const auto closeIfWanted = [this] {
            if (m_closesLater)
                close();
        };
        QMetaObject::invokeMethod(this, closeIfWanted, Qt::QueuedConnection);
        return;
    }
    m_closesLater = false;
    // Before the link goes: who sends by the clock must not count what comes now as lost.
    setRunningState(false);
    endLink();
}

int ThreadedAdapter::getDeviceNumber()
{
    return 0;
}

void ThreadedAdapter::setRunning(bool running)
{
    // A link that was lost before this call stays lost; one that is lost from here on is noticed later, and last.
    const bool runs = running && isLinked();
    if (runs)
        readSendSettings();
    setRunningState(runs);
    // Frames come from here on, when all who listen for the state have had their turn.
    m_running = runs && isLinked();
}

void ThreadedAdapter::readSendSettings()
{
    m_canFd = getCanAdapterOption(OptionUseCanFd).toBool();
    m_silent = listenOnly || getCanAdapterOption(OptionListenOnly).toBool();
}

AbstractCanAdapter::WriteResult ThreadedAdapter::write(CAN::CanMessage *message)
{
    const WriteResult result = message == nullptr ? WriteInvalidFrame : sendIfAllowed(*message);
    if (result == WriteOk)
        countSent();
    else
        countLost();
    return result;
}

AbstractCanAdapter::WriteResult ThreadedAdapter::sendIfAllowed(const CAN::CanMessage &message)
{
    if (!m_running)
        return WriteNotOpen;
    if (m_silent)
        return WriteListenOnly;
    // Only a controller reports errors; a node cannot send them.
    if (message.errorFrame || (message.fd && !m_canFd))
        return WriteInvalidFrame;
    return send(message);
}

int ThreadedAdapter::refuse(OpenResult result, const QString &text)
{
    setErrorText(text);
    return result;
}

int ThreadedAdapter::refuseForLackOfResources()
{
    return refuse(OpenBusy, tr("The system has no resources left for another connection."));
}

void ThreadedAdapter::tellLoss(const QString &text)
{
    setErrorText(text);
    // The adapter's state belongs to its own thread. By name, for no argument has to travel.
    QMetaObject::invokeMethod(this, "noticeLoss", Qt::QueuedConnection);
    emit interfaceError();
}

void ThreadedAdapter::noticeLoss()
{
    // The adapter may be open again by now.
    if (isLinked())
        return;
    m_running = false;
    setRunningState(false);
}
