#pragma once

#include "adaptercontract.h"

#include <QHash>
#include <QObject>

/// What the controllers of the interfaces say of themselves. An interface that is closed has no state, and neither has
/// one without a controller, as on a virtual bus.
class ControllerStates : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Listens to the adapter from now on, until that goes or all its connections are cut, as at the end of each
    /// connection to the bus. To follow again is harmless.
    void follow(AbstractCanAdapter *adapter);
    CAN::CanState stateOf(const AbstractCanAdapter *adapter) const;

private:
    void takeState(CAN::CanState state);
    void forgetClosed(bool running);
    void forget(const QObject *adapter);

    QHash<const QObject *, CAN::CanState> m_states; ///< of those that told one
};
