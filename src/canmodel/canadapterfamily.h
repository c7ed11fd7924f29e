#pragma once

#include "adaptercontract.h"

/// One kind of adapters, as CanAdapterFactory knows it. A small family says its type and name and makes adapters;
/// for everything else the defaults stand: no devices, empty lists, bitrate changeable, all else false.
class KESTRUNE_PLATFORM_EXPORT CanAdapterFamily
{
public:
    CanAdapterFamily();
    virtual ~CanAdapterFamily();

    virtual AbstractCanAdapter::CanAdapterType type() const = 0;
    /// As the type list shows it.
    virtual QString name() const = 0;
    /// The caller owns the adapter; null: it cannot be made.
    virtual AbstractCanAdapter *createAdapter(const QString &device) const = 0;

    /// Device text to feature word, for the devices now present.
    virtual QMap<QString, unsigned int> devices() const;
    virtual QList<CAN::CANBitrateDesc> bitrates(bool fd) const;
    virtual QList<CAN::CANBitrateDesc> fdBitrates() const;
    virtual bool isBaudrateChangeable() const;
    virtual bool hasAdditionalConfig() const;
    virtual bool hasClassicBitTiming() const;
    virtual bool hasFdBitTiming() const;
    virtual bool isFd(const QString &device) const;
    virtual bool isLowSpeed(const QString &device) const;
    virtual bool canDisableAutoBusOn(const QString &device) const;
    /// What the system says of a network interface; asked of the family of type 1 only. Default: nothing.
    virtual AbstractCanAdapter::SocketCANProps socketCanProps(const QString &device) const;

private:
    Q_DISABLE_COPY(CanAdapterFamily)
};
