#include "tourfamily.h"

namespace {
/// Keeps every setting that the form has.
class TourAdapter : public AbstractCanAdapter
{
public:
    using AbstractCanAdapter::AbstractCanAdapter;

    int open() override { return OpenInvalidDevice; }
    void close() override {}
    void setBitrate(quint16) override {}
    void setFdBitrate(quint16) override {}
    int getDeviceNumber() override { return 1; }
    void setRunning(bool) override {}
    CAN::CANBitTimingThresholds getThresholds(bool) override { return {}; }
    WriteResult write(CAN::CanMessage *) override { return WriteNotOpen; }

    QList<AdapterOption> getSupportedOptions() override
    {
        QList<AdapterOption> options;
        for (unsigned int option = 0; option < optionCount; ++option) {
            // The collection keeps these.
            if (option != OptionAdapterId && option != OptionActive && option != OptionPrimary)
                options.append(static_cast<AdapterOption>(option));
        }
        return options;
    }
};
} // namespace

TourFamily::TourFamily(AbstractCanAdapter::CanAdapterType type, const QString &name)
    : m_type(type)
    , m_name(name)
{
}

AbstractCanAdapter *TourFamily::createAdapter(const QString &device) const
{
    return new TourAdapter(m_type, device);
}

QMap<QString, unsigned int> TourFamily::devices() const
{
    return {{QStringLiteral("Device 1"),
             AbstractCanAdapter::FeatureListenOnly | AbstractCanAdapter::FeatureLowSpeedSelectable
                 | AbstractCanAdapter::FeatureCanFd | AbstractCanAdapter::FeatureErrorFrames
                 | AbstractCanAdapter::FeatureAutoBusOnChangeable}};
}

QList<CAN::CANBitrateDesc> TourFamily::bitrates(bool fd) const
{
    return CanAdapterFactory::getSupportedBitrates(AbstractCanAdapter::CanAdapterDemo, fd);
}

QList<CAN::CANBitrateDesc> TourFamily::fdBitrates() const
{
    return CanAdapterFactory::getSupportedFDBitrates(AbstractCanAdapter::CanAdapterDemo);
}
