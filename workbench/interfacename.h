#pragma once

#include <QString>

class AbstractCanAdapter;

/// What the user calls an interface: its device where the name says no more than that and the type, otherwise the name.
QString interfaceName(const AbstractCanAdapter &adapter);
