#include "canopentext.h"

#include "canrecords.h"

#include <QCoreApplication>

namespace {
constexpr quint32 maxStandardIdentifier = 0x7FF;
constexpr quint32 nodeMask = 0x7F;
constexpr quint32 functionMask = 0x780;

enum Function : quint32 {
    Nmt = 0x000,
    SyncOrEmergency = 0x080,
    Time = 0x100,
    SdoAnswer = 0x580,
    SdoRequest = 0x600,
    Heartbeat = 0x700,
};

QString tr(const char *text)
{
    return QCoreApplication::translate("CanOpenText", text);
}

QString hex(quint32 number, int digits)
{
    return QStringLiteral("%1h")
        .arg(number, digits, 16, QLatin1Char('0'))
        .toUpper()
        .replace(QLatin1Char('H'), QLatin1Char('h'));
}

quint32 littleEndian16(const quint8 *bytes)
{
    return bytes[0] | quint32(bytes[1]) << 8;
}

struct Named
{
    quint32 value;
    const char *name;
};

constexpr Named nmtCommands[] = {
    {0x01, QT_TRANSLATE_NOOP("CanOpenText", "start")},
    {0x02, QT_TRANSLATE_NOOP("CanOpenText", "stop")},
    {0x80, QT_TRANSLATE_NOOP("CanOpenText", "enter pre-operational")},
    {0x81, QT_TRANSLATE_NOOP("CanOpenText", "reset node")},
    {0x82, QT_TRANSLATE_NOOP("CanOpenText", "reset communication")},
};

constexpr Named nodeStates[] = {
    {0x00, QT_TRANSLATE_NOOP("CanOpenText", "boot-up")},
    {0x04, QT_TRANSLATE_NOOP("CanOpenText", "stopped")},
    {0x05, QT_TRANSLATE_NOOP("CanOpenText", "operational")},
    {0x7F, QT_TRANSLATE_NOOP("CanOpenText", "pre-operational")},
};

// The identifiers of process data, by function code: the name alone says what there is to say.
constexpr Named processData[] = {
    {0x180, "TPDO1"}, {0x200, "RPDO1"}, {0x280, "TPDO2"}, {0x300, "RPDO2"},
    {0x380, "TPDO3"}, {0x400, "RPDO3"}, {0x480, "TPDO4"}, {0x500, "RPDO4"},
};

template <std::size_t size>
const char *nameOf(const Named (&table)[size], quint32 value)
{
    for (const Named &entry : table) {
        if (entry.value == value)
            return entry.name;
    }
    return nullptr;
}

QString nmtMeaning(const CAN::CanMessage &message)
{
    if (message.length < 2)
        return QStringLiteral("NMT");
    const char *name = nameOf(nmtCommands, message.data[0]);
    const QString command = name != nullptr ? tr(name) : hex(message.data[0], 2);
    if (message.data[1] == 0)
        return tr(QT_TRANSLATE_NOOP("CanOpenText", "NMT %1, all nodes")).arg(command);
    return tr(QT_TRANSLATE_NOOP("CanOpenText", "NMT %1, node %2")).arg(command).arg(message.data[1]);
}

QString emergencyMeaning(const CAN::CanMessage &message, quint32 node)
{
    if (message.length < 2)
        return tr(QT_TRANSLATE_NOOP("CanOpenText", "EMCY, node %1")).arg(node);
    const quint32 code = littleEndian16(message.data);
    if (code == 0)
        return tr(QT_TRANSLATE_NOOP("CanOpenText", "EMCY, node %1: error reset")).arg(node);
    return tr(QT_TRANSLATE_NOOP("CanOpenText", "EMCY, node %1: error %2")).arg(node).arg(hex(code, 4));
}

/// The object that an SDO names, empty for segments, which name none.
QString sdoObject(const CAN::CanMessage &message)
{
    // The command specifier, the upper three bits: 1 and 2 start a transfer from either side, 3 answers a download,
    // 4 aborts. As an answer, 1 confirms a segment, and as a request so does 3.
    const quint8 specifier = message.data[0] >> 5;
    const bool answer = (message.id & functionMask) == SdoAnswer;
    const bool namesObject = specifier == 2 || specifier == 4 || specifier == (answer ? 3 : 1);
    if (message.length < 4 || !namesObject)
        return {};
    return QStringLiteral("%1:%2").arg(hex(littleEndian16(message.data + 1), 4), hex(message.data[3], 2));
}

QString sdoMeaning(const CAN::CanMessage &message, quint32 node)
{
    const bool answer = (message.id & functionMask) == SdoAnswer;
    const QString object = sdoObject(message);
    if (object.isEmpty()) {
        return answer ? tr(QT_TRANSLATE_NOOP("CanOpenText", "SDO answer, node %1")).arg(node)
                      : tr(QT_TRANSLATE_NOOP("CanOpenText", "SDO request, node %1")).arg(node);
    }
    if (message.data[0] >> 5 == 4)
        return tr(QT_TRANSLATE_NOOP("CanOpenText", "SDO abort, node %1: %2")).arg(node).arg(object);
    return answer ? tr(QT_TRANSLATE_NOOP("CanOpenText", "SDO answer, node %1: %2")).arg(node).arg(object)
                  : tr(QT_TRANSLATE_NOOP("CanOpenText", "SDO request, node %1: %2")).arg(node).arg(object);
}

QString heartbeatMeaning(const CAN::CanMessage &message, quint32 node)
{
    if (message.rtr)
        return tr(QT_TRANSLATE_NOOP("CanOpenText", "Node guarding request, node %1")).arg(node);
    if (message.length != 1)
        return tr(QT_TRANSLATE_NOOP("CanOpenText", "Heartbeat, node %1")).arg(node);
    // The top bit toggles in answers to node guarding.
    return tr(QT_TRANSLATE_NOOP("CanOpenText", "Heartbeat, node %1: %2"))
        .arg(node)
        .arg(CanOpenText::nodeState(message.data[0] & 0x7F));
}

QString nodeMeaning(const CAN::CanMessage &message, quint32 function, quint32 node)
{
    if (function == Heartbeat)
        return heartbeatMeaning(message, node);
    if (message.rtr)
        return {};
    switch (function) {
    case SyncOrEmergency:
        return emergencyMeaning(message, node);
    case SdoAnswer:
    case SdoRequest:
        return sdoMeaning(message, node);
    default:
        break;
    }
    const char *pdo = nameOf(processData, function);
    return pdo == nullptr ? QString()
                          : tr(QT_TRANSLATE_NOOP("CanOpenText", "%1, node %2")).arg(QLatin1String(pdo)).arg(node);
}
} // namespace

namespace CanOpenText {

QString meaning(const CAN::CanMessage &message)
{
    if (message.ext || message.errorFrame || message.id > maxStandardIdentifier)
        return {};
    const quint32 node = message.id & nodeMask;
    const quint32 function = message.id & functionMask;
    if (node != 0)
        return function == Nmt || function == Time ? QString() : nodeMeaning(message, function, node);
    if (message.rtr)
        return {};
    switch (function) {
    case Nmt:
        return nmtMeaning(message);
    case SyncOrEmergency:
        return QStringLiteral("SYNC");
    case Time:
        return QStringLiteral("TIME");
    default:
        return {};
    }
}

QString nodeState(quint8 state)
{
    const char *name = nameOf(nodeStates, state);
    return name != nullptr ? tr(name) : hex(state, 2);
}

} // namespace CanOpenText
