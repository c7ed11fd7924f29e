#include "interfacename.h"

#include "adaptercontract.h"

QString interfaceName(const AbstractCanAdapter &adapter)
{
    const QString name = adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterName).toString();
    return name.isEmpty() ? adapter.getCanAdapterOption(AbstractCanAdapter::OptionDeviceName).toString() : name;
}
