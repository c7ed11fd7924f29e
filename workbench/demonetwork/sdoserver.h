#pragma once

#include "canopen.h"

#include <optional>
#include <vector>

/// One entry of an object dictionary, small enough for an expedited transfer.
struct ObjectEntry
{
    quint16 index = 0;
    quint8 subindex = 0;
    quint8 size = 4; ///< bytes, 1 to 4
    quint32 value = 0;
    bool writable = false;
};

using ObjectDictionary = std::vector<ObjectEntry>;

/// The entry, or null.
ObjectEntry *findObject(ObjectDictionary &objects, quint16 index, quint8 subindex);

/// The response of an SDO server that knows expedited transfers only; a download changes `objects`. Nothing for a
/// frame that a server does not answer: one that is not an SDO request to this node, and an abort by the client.
std::optional<CAN::CanMessage> answerSdo(ObjectDictionary &objects, quint8 nodeId, const CAN::CanMessage &request);
