#include "interfacename.h"

#include "adaptercontract.h"

QString interfaceName(const AbstractCanAdapter &adapter)
{
    const QString name = adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterName).toString();
    const QString device = adapter.getCanAdapterOption(AbstractCanAdapter::OptionDeviceName).toString();
    const QString shortDevice = device.section(QLatin1Char('|'), 0, 0);
    // The type in front of it is no news where a bus is known by its device.
    return name.isEmpty() || name.endsWith(QLatin1String(" - ") + shortDevice) ? shortDevice : name;
}
