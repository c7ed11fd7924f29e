#pragma once

#include "canadapterfamily.h"

// The adapters that need no hardware on this computer.

constexpr unsigned int tcpBusFeatures = AbstractCanAdapter::FeatureCanFd | AbstractCanAdapter::FeatureListenOnly;

/// Type 6, "Demo": nodes on the bus that is embedded in the programs of this computer.
std::unique_ptr<CanAdapterFamily> makeDemoFamily();
/// Type 20, "CAN over TCP": clients of a gateway in the network.
std::unique_ptr<CanAdapterFamily> makeTcpFamily();

/// The bitrates of both families, of a classic bus or of the arbitration phase.
QList<CAN::CANBitrateDesc> tcpBusBitrates(bool fd);
/// Those of the data phase.
QList<CAN::CANBitrateDesc> tcpBusFdBitrates();
