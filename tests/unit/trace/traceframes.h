#pragma once

#include "canrecords.h"

#include <QVector>

/// A frame that tells its index in every field, so that one in a wrong place shows.
inline CAN::CanRxMessage numberedFrame(unsigned index)
{
    CAN::CanRxMessage frame;
    frame.timeStamp = CanTimeStamp(static_cast<qint32>(index / 1000000), static_cast<qint32>(index % 1000000));
    frame.message.id = index & 0x1FFFFFFF;
    frame.message.length = static_cast<quint8>(index % (CAN::maxDataLength + 1));
    for (unsigned i = 0; i < CAN::maxDataLength; ++i)
        frame.message.data[i] = static_cast<quint8>((index >> (i % 4 * 8)) + i);
    frame.message.rtr = (index & 1) != 0;
    frame.message.ext = (index & 2) != 0;
    frame.message.fd = (index & 4) != 0;
    frame.message.extraFlag = (index & 8) != 0;
    frame.message.brs = (index & 16) != 0;
    frame.message.errorFrame = (index & 32) != 0;
    return frame;
}

/// Whether `frames` are the numbered ones from `first` on.
inline bool areNumbered(const QVector<CAN::CanRxMessage> &frames, unsigned first)
{
    for (int i = 0; i < frames.size(); ++i) {
        if (frames[i] != numberedFrame(first + static_cast<unsigned>(i)))
            return false;
    }
    return true;
}
