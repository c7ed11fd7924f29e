#pragma once

#include "captureinput.h"

#include "canrecords.h"

#include <QStringList>

#include <memory>

/// Reads the frames of a capture one by one. Whatever the bytes are, each step goes on in the file and takes memory for
/// a block of at most 16 MiB.
class CaptureReader
{
public:
    /// What a step came past.
    enum Step {
        Frame,       ///< and its notes
        LateNotes,   ///< notes for the frame before
        OtherPacket, ///< no frame: another link type, or a packet that no frame makes
        NoPacket,    ///< something that does not matter to a trace
        End,
        CutOff,  ///< the file ends within a block
        Damaged, ///< what follows makes no sense
    };

    virtual ~CaptureReader() = default;

    /// A reader for what the input holds, by its first bytes; null if that is no capture whose form is known.
    static std::unique_ptr<CaptureReader> make(CaptureInput &input);

    /// Goes one step. No further steps after one of the last three.
    /// @param frame for Frame
    /// @param notes for Frame and LateNotes; empty before, and to be emptied by whoever calls
    virtual Step next(CAN::CanRxMessage &frame, QStringList &notes) = 0;

    /// Whether all of the interfaces so far, and at least one, are for something else than CAN.
    virtual bool isForeign() const = 0;

protected:
    CaptureReader() = default;

private:
    Q_DISABLE_COPY(CaptureReader)
};
