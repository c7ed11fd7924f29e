#include "linkedadapters.h"

#include "adaptertype.h"

#include <QComboBox>

namespace {
using Adapter = AbstractCanAdapter;

QString linkedAdapterText(unsigned int identifier, const Adapter &adapter)
{
    const QString name = adapter.getCanAdapterOption(Adapter::OptionAdapterName).toString();
    const QString description = adapter.getCanAdapterOption(Adapter::OptionDescription).toString();
    const QString text = QStringLiteral("%1 - ").arg(identifier) + name;
    return description.isEmpty() ? text : text + QStringLiteral(" (%1 - %2)").arg(identifier).arg(description);
}
} // namespace

void fillLinkedAdapters(QComboBox &list, const AbstractCanAdapter *current,
                        const QMap<unsigned short, QPointer<AbstractCanAdapter>> *adapters)
{
    list.clear();
    list.addItem(QStringLiteral("- - -"), 0U);
    if (current == nullptr || adapters == nullptr)
        return;
    for (auto entry = adapters->cbegin(); entry != adapters->cend(); ++entry) {
        const Adapter *adapter = *entry;
        if (adapter != nullptr && identifierOf(*adapter) != identifierOf(*current))
            list.addItem(linkedAdapterText(entry.key(), *adapter), static_cast<unsigned int>(entry.key()));
    }
}
