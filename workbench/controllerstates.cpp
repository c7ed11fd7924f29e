#include "controllerstates.h"

void ControllerStates::follow(AbstractCanAdapter *adapter)
{
    const auto once = static_cast<Qt::ConnectionType>(Qt::AutoConnection | Qt::UniqueConnection);
    connect(adapter, &AbstractCanAdapter::newCanState, this, &ControllerStates::takeState, once);
    connect(adapter, &AbstractCanAdapter::runningChanged, this, &ControllerStates::forgetClosed, once);
    connect(adapter, &QObject::destroyed, this, &ControllerStates::forget, once);
}

CAN::CanState ControllerStates::stateOf(const AbstractCanAdapter *adapter) const
{
    return m_states.value(adapter, CAN::CanStateUnknown);
}

void ControllerStates::takeState(CAN::CanState state)
{
    m_states.insert(sender(), state);
}

void ControllerStates::forgetClosed(bool running)
{
    if (!running)
        forget(sender());
}

void ControllerStates::forget(const QObject *adapter)
{
    m_states.remove(adapter);
}
