#pragma once

#include <QVariant>

/// What the models of frames tell their view beyond Qt's own roles.
namespace FrameRoles {
enum Role {
    FixedWidthRole = Qt::UserRole, ///< bool, of a cell or header section: digits line up
    SampleTextRole,                ///< string, of a header section: a text as wide as the column's usual content
    ErrorRole,                     ///< bool, of a cell: it reports an error on the bus
    MarkRole,                      ///< int, of a cell: the colour of its row, see markColor(); -1 for none
    FrameRole,                     ///< CAN::CanRxMessage, of any cell: the frame of its row
    ClipboardRole,                 ///< string, of any cell: its row as a line of text
};
} // namespace FrameRoles

/// One column of a model of frames. Title and tool tip are still to be translated.
struct FrameColumn
{
    const char *title;
    const char *toolTip;
    const char *sample;
    Qt::AlignmentFlag alignment;
    bool fixedWidth;

    /// What the header says in the roles that need no translation.
    QVariant header(int role) const;
    /// What every cell says in the roles that belong to the column; invalid for others.
    QVariant cell(int role) const;
};
