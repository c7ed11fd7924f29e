#pragma once

#include "byteorder.h"
#include "capturereader.h"

/// Reads classic pcap, with micro- or nanoseconds.
class PcapReader : public CaptureReader
{
public:
    /// Null if that is not what the input begins with.
    static std::unique_ptr<CaptureReader> make(CaptureInput &input);

    Step next(CAN::CanRxMessage &frame, QStringList &notes) override;
    bool isForeign() const override { return !m_can; }

private:
    PcapReader(CaptureInput &input, ByteOrder order, bool nanoseconds, bool can);

    CaptureInput &m_input;
    const ByteOrder m_order;
    const bool m_nanoseconds;
    const bool m_can;
};
