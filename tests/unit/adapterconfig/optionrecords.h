#pragma once

#include "adaptercontract.h"

// Values of the options that hold a record, none of them the default.

inline AbstractCanAdapter::PeakAdvValues timing()
{
    AbstractCanAdapter::PeakAdvValues values;
    values.useAdvanced = true;
    values.clockMHz = 60;
    values.preScaler = 64;
    values.tSeg1 = 16;
    values.tSeg2 = 8;
    values.sjw = 4;
    return values;
}

inline AbstractCanAdapter::SystecXM3AdvValues filter()
{
    AbstractCanAdapter::SystecXM3AdvValues values;
    values.filterMode = 1;
    values.canId1 = 0x1ABCDEF;
    values.canId2 = 0x20;
    values.canId3 = 0;
    values.canId4 = 0xFFFFFFFF;
    values.filterAMR = 0xFF;
    values.filterACR = 0xA0;
    return values;
}

inline CAN::CANClassicBusParameter classicTiming()
{
    CAN::CANClassicBusParameter parameter;
    parameter.bitrate = 333;
    parameter.samplePoint = 81.5;
    parameter.timing.preScaler = 3;
    parameter.name = QStringLiteral("odd");
    return parameter;
}

inline CAN::CANFDBusParameter dataTiming()
{
    CAN::CANFDBusParameter parameter;
    parameter.bitrate = 3333;
    parameter.tdco = 7;
    parameter.name = QStringLiteral("fast");
    return parameter;
}
