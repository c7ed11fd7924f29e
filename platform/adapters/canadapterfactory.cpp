#include "adaptercontract.h"

#include "builtinfamilies.h"

#include <algorithm>

const QMap<unsigned int, AbstractCanAdapter::CanAdapterType> usbVendorAdapterTypes = {
    {0x0403, AbstractCanAdapter::CanAdapterJanzTec},   {0x0878, AbstractCanAdapter::CanAdapterSystecUsb},
    {0x08D8, AbstractCanAdapter::CanAdapterIxxatVci3}, {0x0AB4, AbstractCanAdapter::CanAdapterUsbVendor18},
    {0x0BFD, AbstractCanAdapter::CanAdapterKvaser},    {0x0C72, AbstractCanAdapter::CanAdapterPcanAdvanced},
    {0x12D6, AbstractCanAdapter::CanAdapterEmsCpc},
};

namespace {
/// Stands in for a type that nobody registered, so that each question has one answer path.
class NoFamily : public CanAdapterFamily
{
public:
    AbstractCanAdapter::CanAdapterType type() const override { return AbstractCanAdapter::CanAdapterNone; }
    QString name() const override { return {}; }
    AbstractCanAdapter *createAdapter(const QString &) const override { return nullptr; }
};

struct Registry
{
    // First, and so the last to go: a family may notice devices on a thread of its own up to its end.
    CanAdapterNotifier notifier;
    std::vector<std::unique_ptr<CanAdapterFamily>> families = makeBuiltInFamilies();
    NoFamily noFamily;

    auto position(AbstractCanAdapter::CanAdapterType type)
    {
        return std::find_if(families.begin(), families.end(),
                            [type](const auto &family) { return family->type() == type; });
    }
};

Registry &registry()
{
    static Registry instance;
    return instance;
}

const CanAdapterFamily &familyOf(AbstractCanAdapter::CanAdapterType type)
{
    Registry &all = registry();
    const auto position = all.position(type);
    return position == all.families.end() ? all.noFamily : **position;
}

QString displayName(const QString &typeName, const QString &device)
{
    const QString shortDevice = device.section(QLatin1Char('|'), 0, 0);
    return device.isEmpty() ? typeName : QStringLiteral("%1 - %2").arg(typeName, shortDevice);
}
} // namespace

AbstractCanAdapter *CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterType type, QString device)
{
    const CanAdapterFamily &family = familyOf(type);
    AbstractCanAdapter *adapter = family.createAdapter(device);
    if (adapter != nullptr && !adapter->getCanAdapterOption(AbstractCanAdapter::OptionAdapterName).isValid())
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionAdapterName, displayName(family.name(), device));
    return adapter;
}

QList<QPair<QString, AbstractCanAdapter::CanAdapterType>> CanAdapterFactory::getImplementedAdapters()
{
    QList<QPair<QString, AbstractCanAdapter::CanAdapterType>> adapters;
    for (const auto &family : registry().families)
        adapters.append({family->name(), family->type()});
    return adapters;
}

QMap<QString, unsigned int> CanAdapterFactory::getAdvInterfaceList(AbstractCanAdapter::CanAdapterType type)
{
    return familyOf(type).devices();
}

QList<CAN::CANBitrateDesc> CanAdapterFactory::getSupportedBitrates(AbstractCanAdapter::CanAdapterType type, bool fd)
{
    return familyOf(type).bitrates(fd);
}

QList<CAN::CANBitrateDesc> CanAdapterFactory::getSupportedFDBitrates(AbstractCanAdapter::CanAdapterType type)
{
    return familyOf(type).fdBitrates();
}

bool CanAdapterFactory::isBaudrateChangeable(AbstractCanAdapter::CanAdapterType type)
{
    return familyOf(type).isBaudrateChangeable();
}

bool CanAdapterFactory::isAdditionalConfigAvailable(AbstractCanAdapter::CanAdapterType type)
{
    return familyOf(type).hasAdditionalConfig();
}

bool CanAdapterFactory::isCANClassicBaudrateSettingAvailable(AbstractCanAdapter::CanAdapterType type)
{
    return familyOf(type).hasClassicBitTiming();
}

bool CanAdapterFactory::isCANFDBaudrateSettingAvailable(AbstractCanAdapter::CanAdapterType type)
{
    return familyOf(type).hasFdBitTiming();
}

bool CanAdapterFactory::isInterfaceFd(AbstractCanAdapter::CanAdapterType type, QString device)
{
    return familyOf(type).isFd(device);
}

bool CanAdapterFactory::isInterfaceLowSpeed(AbstractCanAdapter::CanAdapterType type, QString device)
{
    return familyOf(type).isLowSpeed(device);
}

bool CanAdapterFactory::canDisableAutoBusOn(AbstractCanAdapter::CanAdapterType type, QString device)
{
    return familyOf(type).canDisableAutoBusOn(device);
}

AbstractCanAdapter::SocketCANProps CanAdapterFactory::getSocketCanProps(QString device)
{
    return familyOf(AbstractCanAdapter::CanAdapterSocketCan).socketCanProps(device);
}

void CanAdapterFactory::registerFamily(std::unique_ptr<CanAdapterFamily> family)
{
    if (family == nullptr)
        return;
    Registry &all = registry();
    const auto position = all.position(family->type());
    if (position == all.families.end())
        all.families.push_back(std::move(family));
    else
        *position = std::move(family);
}

void CanAdapterFactory::unregisterFamily(AbstractCanAdapter::CanAdapterType type)
{
    Registry &all = registry();
    const auto position = all.position(type);
    if (position != all.families.end())
        all.families.erase(position);
}

CanAdapterNotifier *CanAdapterFactory::notifier()
{
    // A family may notice a device on a thread of its own; the form then hears of it by a queued call.
    static const int registered = qRegisterMetaType<AbstractCanAdapter::CanAdapterType>();
    Q_UNUSED(registered)
    return &registry().notifier;
}
