#include "socketcanfamily.h"

#include "bitrateentry.h"
#include "linkwatcher.h"
#include "rtnetlink.h"
#include "socketcanadapter.h"

#include <algorithm>

namespace {
using Type = AbstractCanAdapter::CanAdapterType;
using Props = AbstractCanAdapter::SocketCANProps;
using BitrateOf = quint16 Props::*;

// What administrators set links to; the rates of the links present join them.
constexpr quint16 commonBitrates[] = {10, 20, 50, 100, 125, 250, 500, 800, 1000};
constexpr quint16 commonFdBitrates[] = {1000, 2000, 4000, 5000, 8000};

template <std::size_t count>
QList<CAN::CANBitrateDesc> bitratesWithThoseOfLinks(const quint16 (&common)[count], BitrateOf bitrate)
{
    std::vector<quint16> all(std::begin(common), std::end(common));
    for (const LinkProperties &link : readCanLinks())
        all.push_back(link.props().*bitrate);
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    QList<CAN::CANBitrateDesc> list;
    for (const quint16 entry : all) {
        if (entry != 0)
            list.append(bitrateEntry(entry));
    }
    return list;
}

class SocketCanFamily : public CanAdapterFamily
{
public:
    Type type() const override { return AbstractCanAdapter::CanAdapterSocketCan; }
    QString name() const override { return QStringLiteral("SocketCAN"); }
    AbstractCanAdapter *createAdapter(const QString &device) const override { return new SocketCanAdapter(device); }
    /// The administrator sets it.
    bool isBaudrateChangeable() const override { return false; }

    QMap<QString, unsigned int> devices() const override
    {
        QMap<QString, unsigned int> all;
        for (const LinkProperties &link : readCanLinks())
            all.insert(link.deviceText(), link.features());
        return all;
    }
    QList<CAN::CANBitrateDesc> bitrates(bool) const override
    {
        return bitratesWithThoseOfLinks(commonBitrates, &Props::bitrate);
    }
    QList<CAN::CANBitrateDesc> fdBitrates() const override
    {
        return bitratesWithThoseOfLinks(commonFdBitrates, &Props::fdBitrate);
    }
    bool isFd(const QString &device) const override
    {
        const std::optional<LinkProperties> link = readCanLink(linkNameOf(device));
        return link && link->couldBeFd();
    }
    Props socketCanProps(const QString &device) const override
    {
        const std::optional<LinkProperties> link = readCanLink(linkNameOf(device));
        return link ? link->props() : CanAdapterFamily::socketCanProps(device);
    }

private:
    static void tellOfChange()
    {
        emit CanAdapterFactory::notifier()->devicesChanged(AbstractCanAdapter::CanAdapterSocketCan);
    }

    LinkWatcher m_watcher{tellOfChange};
};
} // namespace

std::unique_ptr<CanAdapterFamily> makeSocketCanFamily()
{
    return std::make_unique<SocketCanFamily>();
}
