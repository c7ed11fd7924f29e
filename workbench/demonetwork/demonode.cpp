#include "demonode.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {
using CanOpen::NmtState;

constexpr qint64 microsecondsPerMillisecond = 1000;
constexpr qint64 microsecondsPerSecond = 1000000;

// How long a node does well, and how long it does not.
constexpr qint64 shortestHealth = 8 * microsecondsPerSecond;
constexpr qint64 longestHealth = 40 * microsecondsPerSecond;
constexpr qint64 shortestError = 2 * microsecondsPerSecond;
constexpr qint64 longestError = 6 * microsecondsPerSecond;

ObjectEntry deviceName(const char *name)
{
    ObjectEntry entry = {CanOpen::objectDeviceName, 0, 0, 0, false};
    entry.size = static_cast<quint8>(std::min<std::size_t>(std::strlen(name), 4));
    for (int i = 0; i < entry.size; ++i)
        entry.value |= static_cast<quint32>(static_cast<quint8>(name[i])) << (8 * i);
    return entry;
}

ObjectDictionary makeObjects(const DemoNodeProfile &profile)
{
    constexpr quint32 noVendor = 0; // vendors get their numbers from CiA, and this is none
    constexpr quint32 identityEntries = 4;
    return {
        {CanOpen::objectDeviceType, 0, 4, profile.deviceType, false},
        {CanOpen::objectErrorRegister, 0, 1, 0, false},
        deviceName(profile.name),
        {CanOpen::objectHeartbeatTime, 0, 2, profile.heartbeatTime, true},
        {CanOpen::objectIdentity, 0, 1, identityEntries, false},
        {CanOpen::objectIdentity, 1, 4, noVendor, false},
        {CanOpen::objectIdentity, 2, 4, profile.productCode, false},
        {CanOpen::objectIdentity, 3, 4, profile.revision, false},
        {CanOpen::objectIdentity, 4, 4, profile.serialNumber, false},
    };
}
} // namespace

DemoNode::DemoNode(DemoNodeProfile profile, quint32 seed)
    : m_profile(std::move(profile))
    , m_noise(seed + m_profile.nodeId)
    , m_objects(makeObjects(m_profile))
    , m_pdoRhythms(m_profile.pdos.size())
    , m_pdoCounts(m_profile.pdos.size())
{
}

qint64 DemoNode::nextDue() const
{
    if (m_state == NmtState::BootUp)
        return m_profile.bootTime;
    qint64 next = std::min(m_heartbeat.due(), emcyDue());
    for (const Rhythm &rhythm : m_pdoRhythms)
        next = std::min(next, rhythm.due());
    return next;
}

void DemoNode::advanceTo(qint64 time, std::vector<DueFrame> &frames)
{
    m_now = std::max(m_now, time);
    if (m_state == NmtState::BootUp) {
        if (m_now < m_profile.bootTime)
            return;
        resetApplication();
        frames.push_back({m_profile.bootTime, bootUp()});
        return;
    }
    const qint64 heartbeatDue = m_heartbeat.due();
    if (m_heartbeat.take(m_now))
        frames.push_back({heartbeatDue, heartbeat(m_state)});
    for (std::size_t number = 0; number < m_pdoRhythms.size(); ++number) {
        const qint64 pdoDue = m_pdoRhythms[number].due();
        if (m_pdoRhythms[number].take(m_now))
            frames.push_back({pdoDue, pdo(number)});
    }
    const qint64 errorDue = emcyDue();
    if (errorDue <= m_now)
        frames.push_back({errorDue, changeError()});
}

void DemoNode::handle(const CAN::CanMessage &message, std::vector<CAN::CanMessage> &answers)
{
    constexpr quint8 nmtLength = 2;
    if (m_state == NmtState::BootUp || !CanOpen::isClassicDataFrame(message))
        return;
    if (message.id != CanOpen::cobNmt) {
        handleSdo(message, answers);
        return;
    }
    if (message.length != nmtLength)
        return;
    const quint8 addressed = message.data[1];
    if (addressed == CanOpen::broadcastNodeId || addressed == nodeId())
        handleNmt(message.data[0], answers);
}

void DemoNode::handleNmt(quint8 command, std::vector<CAN::CanMessage> &answers)
{
    switch (static_cast<CanOpen::NmtCommand>(command)) {
    case CanOpen::NmtCommand::Start:
        enter(NmtState::Operational);
        return;
    case CanOpen::NmtCommand::Stop:
        enter(NmtState::Stopped);
        return;
    case CanOpen::NmtCommand::EnterPreOperational:
        enter(NmtState::PreOperational);
        return;
    case CanOpen::NmtCommand::ResetNode:
        resetApplication();
        resetCommunication();
        answers.push_back(bootUp());
        return;
    case CanOpen::NmtCommand::ResetCommunication:
        resetCommunication();
        answers.push_back(bootUp());
        return;
    }
}

void DemoNode::handleSdo(const CAN::CanMessage &request, std::vector<CAN::CanMessage> &answers)
{
    if (m_state == NmtState::Stopped)
        return;
    const quint32 heartbeatTime = objectValue(CanOpen::objectHeartbeatTime);
    const std::optional<CAN::CanMessage> response = answerSdo(m_objects, nodeId(), request);
    if (response)
        answers.push_back(*response);
    if (objectValue(CanOpen::objectHeartbeatTime) != heartbeatTime)
        startHeartbeat();
}

void DemoNode::resetApplication()
{
    m_applicationStart = m_now;
    std::fill(m_pdoCounts.begin(), m_pdoCounts.end(), 0);
    m_error = false;
    m_errorCount = 0;
    m_errorChange = m_now + randomTime(shortestHealth, longestHealth);
    findObject(m_objects, CanOpen::objectErrorRegister, 0)->value = 0;
}

void DemoNode::resetCommunication()
{
    findObject(m_objects, CanOpen::objectHeartbeatTime, 0)->value = m_profile.heartbeatTime;
}

CAN::CanMessage DemoNode::bootUp()
{
    m_state = NmtState::Operational;
    startPdos();
    startHeartbeat();
    return heartbeat(NmtState::BootUp);
}

void DemoNode::enter(NmtState state)
{
    if (state == m_state)
        return;
    m_state = state;
    startPdos();
}

void DemoNode::startPdos()
{
    const bool sends = m_state == NmtState::Operational;
    for (std::size_t number = 0; number < m_pdoRhythms.size(); ++number)
        m_pdoRhythms[number].start(m_now, sends ? m_profile.pdos[number].period : 0);
}

void DemoNode::startHeartbeat()
{
    m_heartbeat.start(m_now, objectValue(CanOpen::objectHeartbeatTime) * microsecondsPerMillisecond);
}

CAN::CanMessage DemoNode::heartbeat(NmtState state) const
{
    CAN::CanMessage message;
    message.id = CanOpen::cobHeartbeat + nodeId();
    CanOpen::append(message, static_cast<quint8>(state));
    return message;
}

CAN::CanMessage DemoNode::pdo(std::size_t number)
{
    CAN::CanMessage message;
    message.id = m_profile.pdos[number].cobBase + nodeId();
    m_profile.pdos[number].fill(message, {m_now - m_applicationStart, m_pdoCounts[number]++, m_noise});
    return message;
}

CAN::CanMessage DemoNode::changeError()
{
    m_error = !m_error;
    m_errorChange = m_now
        + (m_error ? randomTime(shortestError, longestError) : randomTime(shortestHealth, longestHealth));
    const quint8 errorRegister = m_error ? m_profile.emcy.errorRegister : 0;
    findObject(m_objects, CanOpen::objectErrorRegister, 0)->value = errorRegister;

    CAN::CanMessage message;
    message.id = CanOpen::cobEmcy + nodeId();
    CanOpen::append<quint16>(message, m_error ? m_profile.emcy.errorCode : 0);
    CanOpen::append<quint8>(message, errorRegister);
    // The manufacturer's five bytes: which error of this node it is, and nothing more.
    CanOpen::append<quint16>(message, m_error ? ++m_errorCount : m_errorCount);
    CanOpen::append<quint16>(message, 0);
    CanOpen::append<quint8>(message, 0);
    return message;
}

qint64 DemoNode::emcyDue() const
{
    // A stopped node keeps its EMCY until it may speak again.
    return m_state == NmtState::Stopped ? Rhythm::never : m_errorChange;
}

qint64 DemoNode::randomTime(qint64 shortest, qint64 longest)
{
    return shortest + static_cast<qint64>(m_noise()) % (longest - shortest + 1);
}

quint32 DemoNode::objectValue(quint16 index)
{
    return findObject(m_objects, index, 0)->value;
}
