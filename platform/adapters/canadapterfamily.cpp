#include "canadapterfamily.h"

CanAdapterFamily::CanAdapterFamily() = default;
CanAdapterFamily::~CanAdapterFamily() = default;

QMap<QString, unsigned int> CanAdapterFamily::devices() const
{
    return {};
}

QList<CAN::CANBitrateDesc> CanAdapterFamily::bitrates(bool) const
{
    return {};
}

QList<CAN::CANBitrateDesc> CanAdapterFamily::fdBitrates() const
{
    return {};
}

bool CanAdapterFamily::isBaudrateChangeable() const
{
    return true;
}

bool CanAdapterFamily::hasAdditionalConfig() const
{
    return false;
}

bool CanAdapterFamily::hasClassicBitTiming() const
{
    return false;
}

bool CanAdapterFamily::hasFdBitTiming() const
{
    return false;
}

bool CanAdapterFamily::isFd(const QString &) const
{
    return false;
}

bool CanAdapterFamily::isLowSpeed(const QString &) const
{
    return false;
}

bool CanAdapterFamily::canDisableAutoBusOn(const QString &) const
{
    return false;
}

AbstractCanAdapter::SocketCANProps CanAdapterFamily::socketCanProps(const QString &) const
{
    AbstractCanAdapter::SocketCANProps nothing;
    nothing.bitrate = 0;
    nothing.fdBitrate = 0;
    return nothing;
}
