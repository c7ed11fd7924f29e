#include "adapterupdate.h"

#include "adaptertype.h"

#include <algorithm>

namespace {
using Adapter = AbstractCanAdapter;

bool isSame(const Adapter &a, const Adapter &b, Adapter::AdapterOption option)
{
    const QVariant valueOfA = a.getCanAdapterOption(option);
    const QVariant valueOfB = b.getCanAdapterOption(option);
    switch (option) {
    case Adapter::OptionFdBitrate:
        if (!a.getCanAdapterOption(Adapter::OptionUseCanFd).toBool()
            && !b.getCanAdapterOption(Adapter::OptionUseCanFd).toBool())
            return true;
        [[fallthrough]];
    case Adapter::OptionBitrate:
        return CAN::CANBitrateDesc(valueOfA).bitrate == CAN::CANBitrateDesc(valueOfB).bitrate;
    default:
        return valueOfA == valueOfB;
    }
}

/// A virtual link has no bitrate, and one that is gone has none any more.
bool isLinkWithoutBitrate(const Adapter &adapter)
{
    const QString device = adapter.getCanAdapterOption(Adapter::OptionDeviceName).toString();
    return typeOf(adapter) == Adapter::CanAdapterSocketCan && CanAdapterFactory::getSocketCanProps(device).bitrate == 0;
}
} // namespace

bool updateWouldChange(const AbstractCanAdapter &saved, AbstractCanAdapter &edited)
{
    // The form then shows the default of its list, which nobody has chosen.
    if (isLinkWithoutBitrate(edited))
        return edited != saved;
    const auto isKept = [&](Adapter::AdapterOption option) { return isSame(saved, edited, option); };
    const QList<Adapter::AdapterOption> options = edited.getSupportedOptions();
    return !isKept(Adapter::OptionAdapterType) || !isKept(Adapter::OptionDeviceName)
        || !std::all_of(options.begin(), options.end(), isKept);
}
