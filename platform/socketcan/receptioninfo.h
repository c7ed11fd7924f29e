#pragma once

#include "canrecords.h"

#include <sys/socket.h>

#include <optional>

/// What the kernel says beside a frame.
struct ReceptionInfo
{
    /// Enough for all that is asked for, per frame.
    static constexpr std::size_t controlSize = 128;

    qint64 systemTime = 0;   ///< ns since 1970; 0 if not given
    qint64 hardwareTime = 0; ///< ns by the controller's own clock; 0 if it has none
    bool own = false;        ///< sent through the same socket
    /// Frames that found the queue full since the socket was made; the counter wraps.
    std::optional<quint32> dropped;
};

ReceptionInfo readReceptionInfo(const msghdr &header);

/// Turns the kernel's times into the stamps of one connection.
class FrameClock
{
public:
    enum Mode {
        ControllerTime, ///< the controller's own clock where it has one, otherwise that of the system since 1970
        TimeOfDay,      ///< the system's, since local midnight
        ContinuousTime, ///< the system's, since the local midnight before the first stamp
    };

    void start(Mode mode);
    /// @param systemTime ns since 1970
    CanTimeStamp stamp(qint64 systemTime, qint64 hardwareTime = 0);

private:
    Mode m_mode = ControllerTime;
    qint64 m_hardwareAhead = 0; // ns
    qint64 m_dayBegin = 0;      // s since 1970
    qint64 m_dayEnd = 0;
};

/// ns since 1970.
qint64 systemTimeNow();
