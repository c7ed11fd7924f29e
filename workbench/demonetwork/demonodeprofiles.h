#pragma once

#include "canrecords.h"

#include <random>
#include <vector>

/// A source of noise that gives the same numbers from the same seed.
using NoiseGenerator = std::mt19937;

/// What the content of a PDO depends on.
struct ProcessSample
{
    qint64 time;   ///< µs since the application of the node started
    quint32 count; ///< how often this PDO was sent before
    NoiseGenerator &noise;
};

struct PdoProfile
{
    quint32 cobBase; ///< COB-ID without the node-ID
    qint64 period;   ///< µs
    void (*fill)(CAN::CanMessage &pdo, const ProcessSample &sample);
};

/// The error that befalls a node now and then.
struct EmcyProfile
{
    quint16 errorCode;
    quint8 errorRegister;
};

/// What makes a node the node it is.
struct DemoNodeProfile
{
    quint8 nodeId;
    const char *name; ///< ASCII; of the device name, the first four letters fit into an expedited transfer
    quint32 deviceType;
    quint32 productCode;
    quint32 revision;
    quint32 serialNumber;
    quint16 heartbeatTime; ///< ms
    qint64 bootTime;       ///< µs from power-on to the boot-up message
    EmcyProfile emcy;
    std::vector<PdoProfile> pdos;
};

/// The five nodes of the simulated network, in the order of their node-IDs.
const std::vector<DemoNodeProfile> &demoNodeProfiles();
