#pragma once

#include <QIcon>

/// Simple pictures for commands, drawn in the text colour of the palette of the moment, so that they suit light and
/// dark ones, and sharp in any size.
namespace Icons {

enum Picture { Connect, Disconnect, Clear, Follow, Settings };

QIcon icon(Picture picture);

} // namespace Icons
