#pragma once

#include <QHash>
#include <QString>

#include <optional>

class QComboBox;

/// What the entries of the two message builders stand for on a CANopen network.
namespace CanOpenChoices {

/// The command byte of an entry of the NMT commands, or nothing for an index beyond them.
std::optional<quint8> nmtCommandSpecifier(int index);

/// The state byte of an entry of the device states; 0 for an index beyond them.
quint8 heartbeatState(int index);

/// @param typeIndex 0 for "Request"; anything else is a response
quint32 sdoIdentifier(int nodeId, int typeIndex);
quint32 heartbeatIdentifier(int nodeId);

/// Index and subindex of an object, as typed in hexadecimal. Text that is no number counts as 0.
struct ObjectAddress
{
    ObjectAddress(const QString &indexText, const QString &subindexText);

    quint8 indexLow;
    quint8 indexHigh; ///< the second byte; an index of more is cut
    uint subindex;    ///< as typed, also above 0xFF
};

/// Texts of the device error classes by the high byte of the emergency error code, not translated: the map may be made
/// before the application has its translators.
QHash<unsigned char, QString> emergencyClasses();

/// Appends one entry for each class, in the order of the hash: the text in the application's language, with the key as
/// an int in its Qt::UserRole.
void fillEmergencyBox(QComboBox *box, const QHash<unsigned char, QString> &classes);

} // namespace CanOpenChoices
