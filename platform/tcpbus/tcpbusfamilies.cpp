#include "tcpbusfamilies.h"

#include "bitrateentry.h"
#include "tcpbusadapter.h"

namespace {
struct Bitrate
{
    quint16 kiloBitsPerSecond;
    double samplePoint;
};

// What a bus of nodes from several makers is usually set to.
constexpr Bitrate classicBitrates[] = {{10, 0.875},  {20, 0.875},  {50, 0.875},  {125, 0.875},
                                       {250, 0.875}, {500, 0.875}, {800, 0.875}, {1000, 0.875}};
constexpr Bitrate arbitrationBitrates[] = {{250, 0.8}, {500, 0.8}, {1000, 0.8}};
constexpr Bitrate dataBitrates[] = {{1000, 0.8}, {2000, 0.8}, {4000, 0.8}, {5000, 0.75}, {8000, 0.8}};

template <std::size_t count>
QList<CAN::CANBitrateDesc> toList(const Bitrate (&bitrates)[count])
{
    QList<CAN::CANBitrateDesc> list;
    for (const Bitrate &entry : bitrates)
        list.append(bitrateEntry(entry.kiloBitsPerSecond, entry.samplePoint));
    return list;
}

class TcpBusFamily : public CanAdapterFamily
{
public:
    QList<CAN::CANBitrateDesc> bitrates(bool fd) const override { return tcpBusBitrates(fd); }
    QList<CAN::CANBitrateDesc> fdBitrates() const override { return tcpBusFdBitrates(); }
    /// The port, and the address of a gateway.
    bool hasAdditionalConfig() const override { return true; }
    bool isFd(const QString &) const override { return true; }
    AbstractCanAdapter *createAdapter(const QString &device) const override
    {
        return new TcpBusAdapter(type(), device);
    }
};

class DemoFamily : public TcpBusFamily
{
public:
    AbstractCanAdapter::CanAdapterType type() const override { return AbstractCanAdapter::CanAdapterDemo; }
    QString name() const override { return QStringLiteral("Demo"); }
    bool hasClassicBitTiming() const override { return true; }
    bool hasFdBitTiming() const override { return true; }
    QMap<QString, unsigned int> devices() const override
    {
        constexpr int deviceCount = 4;
        QMap<QString, unsigned int> all;
        for (int number = 1; number <= deviceCount; ++number)
            all.insert(QStringLiteral("Demo %1").arg(number), tcpBusFeatures);
        return all;
    }
};

class TcpFamily : public TcpBusFamily
{
public:
    AbstractCanAdapter::CanAdapterType type() const override { return AbstractCanAdapter::CanAdapterFixedNetwork20; }
    QString name() const override { return QStringLiteral("CAN over TCP"); }
    /// It is set at the gateway.
    bool isBaudrateChangeable() const override { return false; }
    QMap<QString, unsigned int> devices() const override { return {{QStringLiteral("TCP gateway"), tcpBusFeatures}}; }
};
} // namespace

std::unique_ptr<CanAdapterFamily> makeDemoFamily()
{
    return std::make_unique<DemoFamily>();
}

std::unique_ptr<CanAdapterFamily> makeTcpFamily()
{
    return std::make_unique<TcpFamily>();
}

QList<CAN::CANBitrateDesc> tcpBusBitrates(bool fd)
{
    return fd ? toList(arbitrationBitrates) : toList(classicBitrates);
}

QList<CAN::CANBitrateDesc> tcpBusFdBitrates()
{
    return toList(dataBitrates);
}
