#include "demonetwork.h"

#include <algorithm>
#include <tuple>

DemoNetwork::DemoNetwork(quint32 seed)
{
    for (const DemoNodeProfile &profile : demoNodeProfiles())
        m_nodes.emplace_back(profile, seed);
}

bool DemoNetwork::concerns(const CAN::CanMessage &message)
{
    if (!CanOpen::isClassicDataFrame(message))
        return false;
    const std::vector<DemoNodeProfile> &profiles = demoNodeProfiles();
    return message.id == CanOpen::cobNmt
        || std::any_of(profiles.cbegin(), profiles.cend(), [&message](const DemoNodeProfile &profile) {
               return message.id == CanOpen::cobSdoRequest + profile.nodeId;
           });
}

qint64 DemoNetwork::nextDue() const
{
    qint64 next = Rhythm::never;
    for (const DemoNode &node : m_nodes)
        next = std::min(next, node.nextDue());
    return next;
}

std::vector<CAN::CanMessage> DemoNetwork::advanceTo(qint64 time)
{
    std::vector<DueFrame> due;
    for (DemoNode &node : m_nodes)
        node.advanceTo(time, due);
    std::sort(due.begin(), due.end(), [](const DueFrame &a, const DueFrame &b) {
        return std::tie(a.due, a.message.id) < std::tie(b.due, b.message.id);
    });

    std::vector<CAN::CanMessage> frames;
    frames.reserve(due.size());
    for (const DueFrame &frame : due)
        frames.push_back(frame.message);
    return frames;
}

std::vector<CAN::CanMessage> DemoNetwork::handle(const CAN::CanMessage &message)
{
    std::vector<CAN::CanMessage> answers;
    for (DemoNode &node : m_nodes)
        node.handle(message, answers);
    return answers;
}
