#pragma once

#include "canadapterfamily.h"
#include "fakeadapter.h"

#include <QSet>

/// A family whose answers are its public members. The factory owns a registered one; a test keeps the plain pointer
/// to change an answer:
///
///     FakeFamily *family = FakeFamily::install(AbstractCanAdapter::CanAdapterKvaser);
///     family->deviceMap.insert(QStringLiteral("Leaf"), AbstractCanAdapter::FeatureCanFd);
///     ...
///     CanAdapterFactory::unregisterFamily(AbstractCanAdapter::CanAdapterKvaser);
class FakeFamily : public CanAdapterFamily
{
public:
    explicit FakeFamily(AbstractCanAdapter::CanAdapterType type, const QString &name = QStringLiteral("Fake"))
        : familyType(type)
        , familyName(name)
    {
    }

    /// Makes and registers one, in the place of the family of its type if there is one.
    static FakeFamily *install(AbstractCanAdapter::CanAdapterType type, const QString &name = QStringLiteral("Fake"))
    {
        auto family = std::make_unique<FakeFamily>(type, name);
        FakeFamily *raw = family.get();
        CanAdapterFactory::registerFamily(std::move(family));
        return raw;
    }

    AbstractCanAdapter::CanAdapterType familyType;
    QString familyName;
    /// Makes the adapters; a FakeAdapter of the family's type where it is empty.
    std::function<AbstractCanAdapter *(const QString &device)> create;
    QMap<QString, unsigned int> deviceMap;
    QList<CAN::CANBitrateDesc> classicBitrates;
    QList<CAN::CANBitrateDesc> fdArbitrationBitrates;
    QList<CAN::CANBitrateDesc> fdDataBitrates;
    bool baudrateChangeable = true;
    bool additionalConfig = false;
    bool classicBitTiming = false;
    bool fdBitTiming = false;
    QSet<QString> fdDevices;
    QSet<QString> lowSpeedDevices;
    QSet<QString> autoBusOnDevices;
    QMap<QString, AbstractCanAdapter::SocketCANProps> props;

    AbstractCanAdapter::CanAdapterType type() const override { return familyType; }
    QString name() const override { return familyName; }
    AbstractCanAdapter *createAdapter(const QString &device) const override
    {
        return create ? create(device) : new FakeAdapter(familyType, device);
    }
    QMap<QString, unsigned int> devices() const override { return deviceMap; }
    QList<CAN::CANBitrateDesc> bitrates(bool fd) const override { return fd ? fdArbitrationBitrates : classicBitrates; }
    QList<CAN::CANBitrateDesc> fdBitrates() const override { return fdDataBitrates; }
    bool isBaudrateChangeable() const override { return baudrateChangeable; }
    bool hasAdditionalConfig() const override { return additionalConfig; }
    bool hasClassicBitTiming() const override { return classicBitTiming; }
    bool hasFdBitTiming() const override { return fdBitTiming; }
    bool isFd(const QString &device) const override { return fdDevices.contains(device); }
    bool isLowSpeed(const QString &device) const override { return lowSpeedDevices.contains(device); }
    bool canDisableAutoBusOn(const QString &device) const override { return autoBusOnDevices.contains(device); }
    AbstractCanAdapter::SocketCANProps socketCanProps(const QString &device) const override
    {
        AbstractCanAdapter::SocketCANProps unknown;
        unknown.bitrate = 0;
        return props.value(device, unknown);
    }
};
