#pragma once

#include "adaptercontract.h"

inline AbstractCanAdapter::CanAdapterType typeOf(const AbstractCanAdapter &adapter)
{
    const QVariant type = adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterType);
    return static_cast<AbstractCanAdapter::CanAdapterType>(type.toUInt());
}
