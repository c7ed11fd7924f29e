#pragma once

#include <QString>

class AbstractCanAdapter;

/// What the user calls an interface: its name or, without one, the device.
QString interfaceName(const AbstractCanAdapter &adapter);
