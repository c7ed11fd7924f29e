#include "canlinks.h"

#include "session.h"

namespace {
/// Behind the name of the link stands what kind of controller it has.
QString linkName(const QString &device)
{
    return device.section(QLatin1Char('|'), 0, 0);
}

bool worksOn(const AbstractCanAdapter &adapter, const QString &link)
{
    return adapter.getCanAdapterOption(AbstractCanAdapter::OptionAdapterType).toUInt()
        == AbstractCanAdapter::CanAdapterSocketCan
        && linkName(adapter.getCanAdapterOption(AbstractCanAdapter::OptionDeviceName).toString()) == link;
}
} // namespace

CanLinks::CanLinks(Session *session, QObject *parent)
    : QObject(parent)
    , m_session(session)
{
    readDevices();
    connect(CanAdapterFactory::notifier(), &CanAdapterNotifier::devicesChanged, this,
            [this](AbstractCanAdapter::CanAdapterType type) {
                if (type != AbstractCanAdapter::CanAdapterSocketCan)
                    return;
                const QStringList before = unused();
                readDevices();
                emit changed();
                const QStringList now = unused();
                for (const QString &link : now) {
                    if (!before.contains(link))
                        emit remark(tr("There is a new CAN link: %1.").arg(link));
                }
            });
}

QStringList CanLinks::unused() const
{
    QStringList links;
    const auto adapters = m_session->adapters()->getAdapterMap()->values();
    for (const QString &device : m_devices) {
        const QString link = linkName(device);
        const bool isUsed = std::any_of(adapters.cbegin(), adapters.cend(),
                                        [&link](const auto &adapter) { return worksOn(*adapter, link); });
        if (!isUsed)
            links.append(link);
    }
    return links;
}

void CanLinks::addInterfaces()
{
    const QStringList links = unused();
    for (const QString &device : qAsConst(m_devices)) {
        if (!links.contains(linkName(device)))
            continue;
        AbstractCanAdapter *adapter = CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterSocketCan,
                                                                          device);
        if (adapter == nullptr)
            continue;
        m_session->adapters()->addNewCanAdapter(adapter, !m_session->hasInterfaces(), true, false);
    }
}

void CanLinks::readDevices()
{
    m_devices = CanAdapterFactory::getAdvInterfaceList(AbstractCanAdapter::CanAdapterSocketCan).keys();
}
