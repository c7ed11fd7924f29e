#pragma once

#include "canrecords.h"

#include <random>

/// Random frames that a bus can carry, of every kind: standard and extended, data and remote, classic and CAN FD. The
/// same ones in every run.
class RandomFrames
{
public:
    CAN::CanRxMessage next()
    {
        CAN::CanRxMessage record;
        record.timeStamp = {number<qint32>(0, 2147483647), number<qint32>(0, 999999)};
        CAN::CanMessage &frame = record.message;
        frame.ext = flip();
        frame.id = number<quint32>(0, frame.ext ? 0x1FFFFFFF : 0x7FF);
        frame.fd = flip();
        frame.brs = frame.fd && flip();
        frame.extraFlag = frame.fd && flip();
        frame.rtr = !frame.fd && flip();
        frame.length = frame.fd ? fdLength() : number<quint8>(0, CAN::maxClassicDataLength);
        if (!frame.rtr)
            fill(frame);
        return record;
    }

    template <typename Number>
    Number number(Number least, Number most)
    {
        return static_cast<Number>(std::uniform_int_distribution<qint64>(least, most)(m_generator));
    }

    bool flip() { return number(0, 1) == 1; }

private:
    quint8 fdLength()
    {
        const int choice = number(0, CAN::maxClassicDataLength + canFdDataLengths.size());
        return choice <= CAN::maxClassicDataLength ? static_cast<quint8>(choice)
                                                   : canFdDataLengths.at(choice - CAN::maxClassicDataLength - 1);
    }

    void fill(CAN::CanMessage &frame)
    {
        for (int i = 0; i < frame.length; ++i)
            frame.data[i] = number<quint8>(0, 255);
    }

    std::mt19937 m_generator{20};
};
