#pragma once

#include "demonode.h"

/// The five simulated nodes together: pure logic, that neither waits nor looks at a clock. Not for several threads
/// at once, but for concerns().
///
/// Times are µs since power-on; all nodes are on the air after the first tenth of a second.
class DemoNetwork
{
public:
    /// @param seed equal seeds and equal calls give equal frames
    explicit DemoNetwork(quint32 seed = 0);

    /// Whether handle() could do anything with the frame, for a caller that has to choose what to keep.
    static bool concerns(const CAN::CanMessage &message);

    const std::vector<DemoNode> &nodes() const { return m_nodes; }

    /// When advanceTo() has the next frame, as things stand.
    qint64 nextDue() const;
    /// Goes to that time and gives the frames that are due, the earliest first and, of those due together, the one with
    /// the lowest identifier, as a bus arbitrates. However far the step, a rhythm gives one frame at most.
    std::vector<CAN::CanMessage> advanceTo(qint64 time);
    /// The nodes' reactions, at the time of the last advanceTo().
    std::vector<CAN::CanMessage> handle(const CAN::CanMessage &message);

private:
    std::vector<DemoNode> m_nodes;
};
