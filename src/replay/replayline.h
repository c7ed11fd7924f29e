#pragma once

#include "canrecords.h"

#include <QStringView>

/// What one line of a recording says.
struct ReplayLine
{
    enum Kind {
        Frame,      ///< `message` holds it
        Foreign,    ///< a comment, or text of another kind
        BrokenTime, ///< the line of a frame, but its time is not two numbers with a point between them
    };

    Kind kind = Foreign;
    CAN::CanRxMessage message;
    bool tabbed = false; ///< the variant with tabs between its columns
    QStringView tabData; ///< the data column of that variant, within the line that was read
};

/// Reads a line of a log file or of its variant with tabs. A number that is none counts as 0, and data beyond 64 bytes
/// is left out, while the length stays as the line says.
ReplayLine parseReplayLine(QStringView line);
