#pragma once

#include "canrawcomparemessage.h"
#include "canrecords.h"

#include <algorithm>

// Inline, since every received frame passes here, and so that a program beside the library compares by the same rules
// without the library exporting more than its classes.

namespace CANRAW {

/// Whether a frame's flag is what a template asks for.
inline bool flagMatches(qint32 wanted, bool received)
{
    return wanted == Qt::PartiallyChecked || (wanted == Qt::Checked) == received;
}

/// Number of bytes to look at; 0 or less for none.
///
/// It is a signed number of 8 bits, as stored templates have always been read: counts of bits beyond it wrap, so that
/// the 16777215 bits of an editor without a limit make -1, and leave all bytes open.
inline qint8 comparedByteCount(const CanRawCompareMessage &wanted)
{
    const auto bits = static_cast<qint8>(wanted.consideration.size());
    return wanted.length.isSet ? std::min(static_cast<qint8>(wanted.length.value), bits) : bits;
}

inline bool dataMatches(const CanRawCompareMessage &wanted, const CAN::CanMessage &received)
{
    const int receivedLength = std::min<int>(received.length, CAN::maxDataLength);
    const qint8 count = comparedByteCount(wanted);
    for (int i = 0; i < count; ++i) {
        if (!wanted.consideration.testBit(i))
            continue;
        const char expected = i < wanted.data.size() ? wanted.data.at(i) : '\0';
        if (i >= receivedLength || static_cast<quint8>(expected) != received.data[i])
            return false;
    }
    return true;
}

/// Whether the frame is one that the template describes. Neither allocates nor copies; from any thread.
///
/// With an unset length, a considered byte asks for a frame that is long enough to have it.
inline bool matches(const CanRawCompareMessage &wanted, const CAN::CanRxMessage &received)
{
    const CAN::CanMessage &message = received.message;
    return wanted.valid && flagMatches(wanted.fd, message.fd) && flagMatches(wanted.brs, message.brs)
        && flagMatches(wanted.ext, message.ext) && flagMatches(wanted.rtr, message.rtr)
        && (!wanted.id.isSet || wanted.id.value == message.id)
        && (!wanted.length.isSet || wanted.length.value == message.length) && dataMatches(wanted, message);
}

} // namespace CANRAW
