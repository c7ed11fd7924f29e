#pragma once

#include "comparedrecords.h"

#include <vector>

/// One record and its byte form, the bytes written by hand.
struct GoldenRecord
{
    const char *name;
    CANRAW::CanRawCompareMessage message;
    QByteArray bytes;
};

namespace GoldenRecords {
inline GoldenRecord strictDefault()
{
    return {"strict default", CANRAW::CanRawCompareMessage(true),
            QByteArray::fromHex("01 00000000 01 00 ffffffff"
                                "00000040 0000000000000000"
                                "00000000 00000000 00000000 00000000"
                                "00000000 0000000000000000 00000000 0000000000000000 00000000 0000000000000000"
                                "0000000000000000 0000000000000000 00000000")};
}

inline GoldenRecord openDefault()
{
    return {"open default", CANRAW::CanRawCompareMessage(false),
            QByteArray::fromHex("00 00000000 00 00 ffffffff"
                                "00000040 0000000000000000"
                                "00000001 00000001 00000001 00000001"
                                "00000000 0000000000000000 00000000 0000000000000000 00000000 0000000000000000"
                                "0000000000000000 0000000000000000 00000000")};
}

inline GoldenRecord classicWithData()
{
    CANRAW::CanRawCompareMessage message;
    message.id.value = 0x181;
    message.length.value = 8;
    message.data = QByteArray::fromHex("0001027f8081feff");
    message.consideration.setBit(0);
    message.consideration.setBit(2);
    message.consideration.setBit(7);
    message.consideration.setBit(9);
    message.rtr = Qt::PartiallyChecked;
    message.ext = Qt::Checked;
    return {"classic with data", message,
            QByteArray::fromHex("01 00000181 01 08 00000008 0001027f8081feff"
                                "00000040 8502000000000000"
                                "00000001 00000002 00000000 00000000"
                                "00000000 0000000000000000 00000000 0000000000000000 00000000 0000000000000000"
                                "0000000000000000 0000000000000000 00000000")};
}

inline GoldenRecord canFdWithAllBytes()
{
    CANRAW::CanRawCompareMessage message;
    message.id.value = 0x9FFFFFFF;
    message.length.value = 64;
    message.data = QByteArray(64, '\x5a');
    message.consideration = setBits(64);
    message.fd = Qt::Checked;
    message.brs = Qt::Checked;
    return {"CAN FD with all bytes", message,
            QByteArray::fromHex("01 9fffffff 01 40 00000040"
                                "5a5a5a5a5a5a5a5a 5a5a5a5a5a5a5a5a 5a5a5a5a5a5a5a5a 5a5a5a5a5a5a5a5a"
                                "5a5a5a5a5a5a5a5a 5a5a5a5a5a5a5a5a 5a5a5a5a5a5a5a5a 5a5a5a5a5a5a5a5a"
                                "00000040 ffffffffffffffff"
                                "00000000 00000000 00000002 00000002"
                                "00000000 0000000000000000 00000000 0000000000000000 00000000 0000000000000000"
                                "0000000000000000 0000000000000000 00000000")};
}

inline GoldenRecord unsetIdWithKeptValue()
{
    CANRAW::CanRawCompareMessage message;
    message.id = {0x12345678, false};
    message.data = QByteArray("");
    message.consideration = bitsOf("101");
    return {"unset identifier with a value", message,
            QByteArray::fromHex("01 12345678 00 00 00000000"
                                "00000003 05"
                                "00000000 00000000 00000000 00000000"
                                "00000000 0000000000000000 00000000 0000000000000000 00000000 0000000000000000"
                                "0000000000000000 0000000000000000 00000000")};
}

inline GoldenRecord unsetLength()
{
    CANRAW::CanRawCompareMessage message;
    message.length = {};
    message.consideration = QBitArray();
    return {"unset length, no bits", message,
            QByteArray::fromHex("01 00000000 01 ff ffffffff"
                                "00000000"
                                "00000000 00000000 00000000 00000000"
                                "00000000 0000000000000000 00000000 0000000000000000 00000000 0000000000000000"
                                "0000000000000000 0000000000000000 00000000")};
}

/// No two fields alike, so that two that change places are noticed.
inline GoldenRecord allDifferent()
{
    CANRAW::CanRawCompareMessage message;
    message.id.value = 0x01020304;
    message.length.value = 5;
    message.data = QByteArray::fromHex("a1a2a3");
    message.consideration = bitsOf("0110000001");
    message.rtr = 0x11121314;
    message.ext = 0x21222324;
    message.fd = 0x31323334;
    message.brs = -2;
    message.extraInt1 = 0x41424344;
    message.extraReal1 = 1.0;
    message.extraInt2 = -3;
    message.extraReal2 = -2.0;
    message.extraInt3 = 0x51525354;
    message.extraReal3 = 0.5;
    message.extraReal4 = 3.0;
    message.extraReal5 = 4.0;
    message.extraIds = {0x61626364, 0xFFFFFFFF, 0};
    return {"all fields different", message,
            QByteArray::fromHex("01 01020304 01 05 00000003 a1a2a3"
                                "0000000a 0602"
                                "11121314 21222324 31323334 fffffffe"
                                "41424344 3ff0000000000000 fffffffd c000000000000000 51525354 3fe0000000000000"
                                "4008000000000000 4010000000000000"
                                "00000003 61626364 ffffffff 00000000")};
}

inline std::vector<GoldenRecord> all()
{
    return {strictDefault(),        openDefault(), classicWithData(), canFdWithAllBytes(),
            unsetIdWithKeptValue(), unsetLength(), allDifferent()};
}
} // namespace GoldenRecords
