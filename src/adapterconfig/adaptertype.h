#pragma once

#include "adaptercontract.h"

inline AbstractCanAdapter::CanAdapterType typeOf(const AbstractCanAdapter &adapter)
{
    const QVariant type = adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterType);
    return static_cast<AbstractCanAdapter::CanAdapterType>(type.toUInt());
}

/// The key in the collection; 0 for an adapter that is in none.
inline quint16 identifierOf(const AbstractCanAdapter &adapter)
{
    return static_cast<quint16>(adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterId).toUInt());
}
