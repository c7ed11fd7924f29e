#pragma once

#include <QMap>
#include <QString>

class QComboBox;

// The list of devices. Each entry's data is the feature word of its device. Selecting is left to the form, which acts
// on each change of the selection.

/// Fills the cleared list. Texts of the adapter layer that tell of an error are marked as such, and an empty map gives
/// an entry without features that says so.
void fillDeviceList(QComboBox &list, const QMap<QString, unsigned int> &devices);
/// Whether the selected entry stands for there being no device.
bool isNoDeviceSelected(const QComboBox &list);
/// Whether the selected entry stands for a device that is not there.
bool isMissingDeviceSelected(const QComboBox &list);

/// Adds an entry for a device that an adapter is set to, but that is not there.
/// @return its index
int addMissingDevice(QComboBox &list, const QString &name, unsigned int features);
void removeMissingDevices(QComboBox &list);
