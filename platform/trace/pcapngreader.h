#pragma once

#include "byteorder.h"
#include "capturereader.h"
#include "capturetime.h"

#include <vector>

/// Reads pcapng: any number of sections in either byte order, with any number of interfaces.
///
/// A packet without a time of its own gets that of the frame before it. Comments of a packet are the notes of its
/// frame.
class PcapngReader : public CaptureReader
{
public:
    /// Null if the input does not begin with the header of a section.
    static std::unique_ptr<CaptureReader> make(CaptureInput &input);

    Step next(CAN::CanRxMessage &frame, QStringList &notes) override;
    bool isForeign() const override { return m_hasOther && !m_hasCan; }

private:
    struct Interface
    {
        bool can;
        quint32 snapLength; ///< 0: no limit
        CaptureClock clock;
    };
    /// The inside of a block.
    struct Body
    {
        const uchar *bytes;
        quint32 size;
    };

    explicit PcapngReader(CaptureInput &input);

    Step readSection();
    Step skipUnknown();
    Step readBody(quint32 type, Body body, CAN::CanRxMessage &frame, QStringList &notes);
    Step readInterface(Body body);
    Step readSimplePacket(Body body, CAN::CanRxMessage &frame);
    Step readPacket(quint32 interface, Body body, CAN::CanRxMessage &frame, QStringList &notes);
    Step readStatistics(Body body, QStringList &notes) const;
    const Interface *canInterface(quint32 number) const;

    template <typename Take>
    void eachOption(Body options, Take take) const;
    void takeComments(Body options, QStringList &notes) const;

    CaptureInput &m_input;
    ByteOrder m_order;
    /// Whether this program wrote the section.
    bool m_own = false;
    std::vector<Interface> m_interfaces;
    CanTimeStamp m_lastStamp;
    /// Of a block that is being passed over, or 0: its length, and how much of it is still to come.
    quint32 m_unknownLength = 0;
    quint32 m_unknownLeft = 0;
    bool m_hasCan = false;
    bool m_hasOther = false;
};
