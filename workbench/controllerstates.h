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

    /// Listens to the adapter from now on, until that goes; again and again is harmless.
    void follow(AbstractCanAdapter *adapter);
    CAN::CanState stateOf(const AbstractCanAdapter *adapter) const;

private:
    QHash<const QObject *, CAN::CanState> m_states; ///< of all that are followed
};
