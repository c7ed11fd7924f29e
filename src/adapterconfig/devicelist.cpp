#include "devicelist.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QStyle>

namespace {
// What tells the entry of a missing device from those that came from the adapter layer.
constexpr int markerRole = Qt::UserRole + 1;
constexpr int missingDeviceMarker = 85;

QString noDeviceText()
{
    return QCoreApplication::translate("CanInterfaceWidget", "No device found");
}

QIcon warningIcon(const QComboBox &list)
{
    return list.style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, &list);
}

bool isMissingDevice(const QComboBox &list, int index)
{
    return list.itemData(index, markerRole).toInt() == missingDeviceMarker;
}
} // namespace

void fillDeviceList(QComboBox &list, const QMap<QString, unsigned int> &devices)
{
    if (devices.isEmpty())
        list.addItem(warningIcon(list), noDeviceText(), 0U);
    for (auto device = devices.cbegin(); device != devices.cend(); ++device) {
        list.addItem(device.key(), *device);
        if (device.key().contains(QLatin1String("could not"), Qt::CaseInsensitive))
            list.setItemIcon(list.count() - 1, warningIcon(list));
    }
}

bool isNoDeviceSelected(const QComboBox &list)
{
    return list.currentText() == noDeviceText() && list.currentData().toUInt() == 0 && !isMissingDeviceSelected(list);
}

bool isMissingDeviceSelected(const QComboBox &list)
{
    return isMissingDevice(list, list.currentIndex());
}

int addMissingDevice(QComboBox &list, const QString &name, unsigned int features)
{
    list.addItem(warningIcon(list), name, features);
    const int index = list.count() - 1;
    list.setItemData(index, QCoreApplication::translate("CanInterfaceWidget", "Device is not connected"),
                     Qt::ToolTipRole);
    list.setItemData(index, missingDeviceMarker, markerRole);
    return index;
}

void removeMissingDevices(QComboBox &list)
{
    for (int index = list.count() - 1; index >= 0; --index) {
        if (isMissingDevice(list, index))
            list.removeItem(index);
    }
}
