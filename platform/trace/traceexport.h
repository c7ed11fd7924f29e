#pragma once

#include "tracestore.h"

class QIODevice;

/// Writes all frames that a store holds now, with their notes.
class TraceExport
{
public:
    enum Outcome {
        Complete,
        WriteFailed,    ///< the device says why
        TraceUnreadable ///< cleared meanwhile, or its temporary file cannot be read
    };

    static Outcome run(const TraceStore &store, QIODevice &device);
};
