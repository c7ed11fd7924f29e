#include "controllerstates.h"

void ControllerStates::follow(AbstractCanAdapter *adapter)
{
    if (m_states.contains(adapter))
        return;
    m_states.insert(adapter, CAN::CanStateUnknown);
    connect(adapter, &AbstractCanAdapter::newCanState, this,
            [this, adapter](CAN::CanState state) { m_states[adapter] = state; });
    connect(adapter, &AbstractCanAdapter::runningChanged, this, [this, adapter](bool running) {
        if (!running)
            m_states[adapter] = CAN::CanStateUnknown;
    });
    connect(adapter, &QObject::destroyed, this, [this](const QObject *gone) { m_states.remove(gone); });
}

CAN::CanState ControllerStates::stateOf(const AbstractCanAdapter *adapter) const
{
    return m_states.value(adapter, CAN::CanStateUnknown);
}
