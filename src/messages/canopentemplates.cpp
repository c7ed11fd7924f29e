#include "canopentemplates.h"

#include <algorithm>
#include <initializer_list>

namespace {
/// @param bytes those that must match; zeros follow up to `length`, and are open
CANRAW::CanRawCompareMessage classicTemplate(quint32 id, quint8 length, std::initializer_list<quint8> bytes)
{
    CANRAW::CanRawCompareMessage message;
    message.id.value = id;
    message.length.value = length;
    message.data = QByteArray(length, '\0');
    std::copy(bytes.begin(), bytes.end(), message.data.begin());
    message.consideration = QBitArray(static_cast<int>(bytes.size()), true);
    return message;
}
} // namespace

namespace CanOpenTemplates {

CANRAW::CanRawCompareMessage nmt(int commandIndex, int nodeId)
{
    const quint8 command = CanOpenChoices::nmtCommandSpecifier(commandIndex).value_or(0);
    return classicTemplate(0, 2, {command, static_cast<quint8>(nodeId)});
}

CANRAW::CanRawCompareMessage pdo(int cobId, int length)
{
    CANRAW::CanRawCompareMessage message;
    message.id.value = static_cast<quint32>(cobId);
    message.length.value = static_cast<quint8>(length);
    if (length > 0)
        message.data = QByteArray(length, '\0');
    return message;
}

CANRAW::CanRawCompareMessage sdo(int nodeId, int typeIndex, const CanOpenChoices::ObjectAddress &object)
{
    return classicTemplate(CanOpenChoices::sdoIdentifier(nodeId, typeIndex), 8,
                           {0, object.indexLow, object.indexHigh, static_cast<quint8>(object.subindex)});
}

CANRAW::CanRawCompareMessage heartbeat(int nodeId, int stateIndex)
{
    return classicTemplate(CanOpenChoices::heartbeatIdentifier(nodeId), 1,
                           {CanOpenChoices::heartbeatState(stateIndex)});
}

CANRAW::CanRawCompareMessage emergency(quint8 errorClass)
{
    return classicTemplate(0, 8, {errorClass});
}

} // namespace CanOpenTemplates
