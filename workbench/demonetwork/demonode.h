#pragma once

#include "demonodeprofiles.h"
#include "rhythm.h"
#include "sdoserver.h"

/// A frame and the moment it was to be sent, in µs.
struct DueFrame
{
    qint64 due;
    CAN::CanMessage message;
};

/// One simulated CANopen node: pure logic, that neither waits nor looks at a clock.
///
/// Times are µs since power-on. The node starts by itself: its boot-up message takes it to the state operational, as
/// that of a reset does.
class DemoNode
{
public:
    explicit DemoNode(DemoNodeProfile profile, quint32 seed = 0);

    quint8 nodeId() const { return m_profile.nodeId; }
    /// BootUp as long as the node was not heard of.
    CanOpen::NmtState state() const { return m_state; }

    /// When advanceTo() has the next frame, as things stand; Rhythm::never for one that stays silent.
    qint64 nextDue() const;
    /// Goes to that time and appends what is due. Each rhythm gives one frame at most: missed ones are skipped.
    /// A time before the present one counts as the present.
    void advanceTo(qint64 time, std::vector<DueFrame> &frames);
    /// Reacts, at the time of the last advanceTo(), and appends the answer if there is one. Frames that are not for
    /// this node, malformed ones and all that come before boot-up are ignored.
    void handle(const CAN::CanMessage &message, std::vector<CAN::CanMessage> &answers);

private:
    void resetApplication();
    void resetCommunication();
    /// Ends an initialisation.
    CAN::CanMessage bootUp();
    void enter(CanOpen::NmtState state);
    void startPdos();
    void startHeartbeat();
    void handleNmt(quint8 command, std::vector<CAN::CanMessage> &answers);
    void handleSdo(const CAN::CanMessage &request, std::vector<CAN::CanMessage> &answers);

    CAN::CanMessage heartbeat(CanOpen::NmtState state) const;
    CAN::CanMessage pdo(std::size_t number);
    CAN::CanMessage changeError();
    qint64 emcyDue() const;
    qint64 randomTime(qint64 shortest, qint64 longest);
    quint32 objectValue(quint16 index);

    DemoNodeProfile m_profile;
    NoiseGenerator m_noise;
    ObjectDictionary m_objects;
    CanOpen::NmtState m_state = CanOpen::NmtState::BootUp;
    qint64 m_now = 0;
    qint64 m_applicationStart = 0;
    Rhythm m_heartbeat;
    std::vector<Rhythm> m_pdoRhythms;
    std::vector<quint32> m_pdoCounts;
    qint64 m_errorChange = Rhythm::never; ///< when the error comes or, while it is there, goes
    bool m_error = false;
    quint16 m_errorCount = 0;
};
