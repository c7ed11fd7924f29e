#include "canopenchoices.h"

#include <QComboBox>
#include <QCoreApplication>

#include <iterator>

namespace {
constexpr quint8 nmtCommandSpecifiers[] = {0x80, 0x01, 0x02, 0x82, 0x81};
constexpr quint8 heartbeatStates[] = {0x00, 0x04, 0x05, 0x7F};

// The reverse of CANopen's predefined connection set, where the client asks at 0x600. Users of the builders have
// templates that were made so.
constexpr quint32 sdoRequestBase = 0x580;
constexpr quint32 sdoResponseBase = 0x600;
constexpr quint32 heartbeatBase = 0x700;

struct EmergencyClass
{
    unsigned char key;
    const char *text;
};

constexpr char emergencyContext[] = "CanOpenChoices";
constexpr EmergencyClass emergencyTable[] = {
    {0x00, QT_TRANSLATE_NOOP("CanOpenChoices", "Error reset or no error")},
    {0x10, QT_TRANSLATE_NOOP("CanOpenChoices", "Generic error")},
    {0x20, QT_TRANSLATE_NOOP("CanOpenChoices", "Current")},
    {0x21, QT_TRANSLATE_NOOP("CanOpenChoices", "Current, CANopen device input side")},
    {0x22, QT_TRANSLATE_NOOP("CanOpenChoices", "Current inside the CANopen device")},
    {0x23, QT_TRANSLATE_NOOP("CanOpenChoices", "Current, CANopen device output side")},
    {0x30, QT_TRANSLATE_NOOP("CanOpenChoices", "Voltage")},
    {0x31, QT_TRANSLATE_NOOP("CanOpenChoices", "Mains voltage")},
    {0x32, QT_TRANSLATE_NOOP("CanOpenChoices", "Voltage inside the CANopen device")},
    {0x33, QT_TRANSLATE_NOOP("CanOpenChoices", "Output voltage")},
    {0x40, QT_TRANSLATE_NOOP("CanOpenChoices", "Temperature")},
    {0x41, QT_TRANSLATE_NOOP("CanOpenChoices", "Ambient temperature")},
    {0x42, QT_TRANSLATE_NOOP("CanOpenChoices", "CANopen device temperature")},
    {0x50, QT_TRANSLATE_NOOP("CanOpenChoices", "CANopen device hardware")},
    {0x60, QT_TRANSLATE_NOOP("CanOpenChoices", "CANopen device software")},
    {0x61, QT_TRANSLATE_NOOP("CanOpenChoices", "Internal software")},
    {0x62, QT_TRANSLATE_NOOP("CanOpenChoices", "User software")},
    {0x63, QT_TRANSLATE_NOOP("CanOpenChoices", "Data set")},
    {0x70, QT_TRANSLATE_NOOP("CanOpenChoices", "Additional modules")},
    {0x80, QT_TRANSLATE_NOOP("CanOpenChoices", "Monitoring")},
    {0x81, QT_TRANSLATE_NOOP("CanOpenChoices", "Communication")},
    {0x82, QT_TRANSLATE_NOOP("CanOpenChoices", "Protocol error")},
    {0x90, QT_TRANSLATE_NOOP("CanOpenChoices", "External error")},
    {0xF0, QT_TRANSLATE_NOOP("CanOpenChoices", "Additional functions")},
    {0xFF, QT_TRANSLATE_NOOP("CanOpenChoices", "CANopen device specific")},
};

template <typename Table>
bool isWithin(const Table &table, int index)
{
    return index >= 0 && index < int(std::size(table));
}

uint hexNumber(const QString &text)
{
    return text.toUInt(nullptr, 16);
}
} // namespace

namespace CanOpenChoices {

std::optional<quint8> nmtCommandSpecifier(int index)
{
    if (!isWithin(nmtCommandSpecifiers, index))
        return {};
    return nmtCommandSpecifiers[index];
}

quint8 heartbeatState(int index)
{
    return isWithin(heartbeatStates, index) ? heartbeatStates[index] : 0;
}

quint32 sdoIdentifier(int nodeId, int typeIndex)
{
    return static_cast<quint32>(nodeId) + (typeIndex == 0 ? sdoRequestBase : sdoResponseBase);
}

quint32 heartbeatIdentifier(int nodeId)
{
    return static_cast<quint32>(nodeId) + heartbeatBase;
}

ObjectAddress::ObjectAddress(const QString &indexText, const QString &subindexText)
    : indexLow(static_cast<quint8>(hexNumber(indexText)))
    , indexHigh(static_cast<quint8>(hexNumber(indexText) >> 8))
    , subindex(hexNumber(subindexText))
{
}

QHash<unsigned char, QString> emergencyClasses()
{
    QHash<unsigned char, QString> classes;
    for (const EmergencyClass &entry : emergencyTable)
        classes.insert(entry.key, QString::fromLatin1(entry.text));
    return classes;
}

void fillEmergencyBox(QComboBox *box, const QHash<unsigned char, QString> &classes)
{
    for (auto entry = classes.cbegin(); entry != classes.cend(); ++entry)
        box->addItem(QCoreApplication::translate(emergencyContext, entry.value().toLatin1()), int(entry.key()));
}

} // namespace CanOpenChoices
