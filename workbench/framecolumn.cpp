#include "framecolumn.h"

QVariant FrameColumn::header(int role) const
{
    return role == FrameRoles::SampleTextRole ? QString::fromLatin1(sample) : cell(role);
}

QVariant FrameColumn::cell(int role) const
{
    switch (role) {
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::Alignment(alignment) | Qt::AlignVCenter);
    case FrameRoles::FixedWidthRole:
        return fixedWidth;
    default:
        return {};
    }
}
