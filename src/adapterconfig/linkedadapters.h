#pragma once

#include "adaptercontract.h"

#include <QMap>

class QComboBox;

/// Fills the list of adapters that may be linked: none, and all but `current`. An entry's data is an identifier, 0 for
/// none.
/// @param current may be null, and then there is none to link
/// @param adapters may be null
void fillLinkedAdapters(QComboBox &list, const AbstractCanAdapter *current,
                        const QMap<unsigned short, QPointer<AbstractCanAdapter>> *adapters);
