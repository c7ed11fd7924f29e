#include "receptioninfo.h"

#include <linux/errqueue.h>

#include <cstring>
#include <ctime>

namespace {
constexpr qint64 nanosecondsASecond = 1000000000;
// The kernel's places in a report of times: its own first, the device's last.
constexpr int systemPlace = 0;
constexpr int hardwarePlace = 2;

qint64 nanoseconds(const timespec &time)
{
    return qint64(time.tv_sec) * nanosecondsASecond + time.tv_nsec;
}

template <typename Value>
Value valueOf(const cmsghdr *control)
{
    Value value = {};
    if (control->cmsg_len >= CMSG_LEN(sizeof value))
        std::memcpy(&value, CMSG_DATA(control), sizeof value);
    return value;
}

/// Begin of the local day that lies `days` after that of `time`.
qint64 localMidnight(time_t time, int days)
{
    tm local = {};
    ::localtime_r(&time, &local);
    local.tm_hour = local.tm_min = local.tm_sec = 0;
    local.tm_mday += days;
    local.tm_isdst = -1;
    return ::mktime(&local);
}

/// Rounds down, so that the fraction stays within its second before 1970 too.
CanTimeStamp cutToMicroseconds(qint64 time)
{
    const qint64 fraction = ((time % nanosecondsASecond) + nanosecondsASecond) % nanosecondsASecond;
    return {static_cast<qint32>((time - fraction) / nanosecondsASecond), static_cast<qint32>(fraction / 1000)};
}
} // namespace

ReceptionInfo readReceptionInfo(const msghdr &header)
{
    ReceptionInfo info;
    info.own = (header.msg_flags & MSG_CONFIRM) != 0;
    // The macros want a header that may be changed.
    auto *all = const_cast<msghdr *>(&header);
    for (cmsghdr *control = CMSG_FIRSTHDR(all); control != nullptr; control = CMSG_NXTHDR(all, control)) {
        if (control->cmsg_level != SOL_SOCKET)
            continue;
        if (control->cmsg_type == SCM_TIMESTAMPING) {
            const auto times = valueOf<scm_timestamping>(control);
            info.systemTime = nanoseconds(times.ts[systemPlace]);
            info.hardwareTime = nanoseconds(times.ts[hardwarePlace]);
        } else if (control->cmsg_type == SO_RXQ_OVFL) {
            info.dropped = valueOf<quint32>(control);
        }
    }
    return info;
}

void FrameClock::start(Mode mode)
{
    *this = FrameClock();
    m_mode = mode;
}

CanTimeStamp FrameClock::stamp(qint64 systemTime, qint64 hardwareTime)
{
    if (m_mode == ControllerTime) {
        // What comes without a hardware stamp among frames that have one is put onto the same clock.
        if (hardwareTime != 0)
            m_hardwareAhead = hardwareTime - systemTime;
        return cutToMicroseconds(systemTime + m_hardwareAhead);
    }
    const qint64 seconds = systemTime / nanosecondsASecond;
    const bool isOtherDay = seconds < m_dayBegin || seconds >= m_dayEnd;
    if (m_dayEnd == 0 || (isOtherDay && m_mode == TimeOfDay)) {
        m_dayBegin = localMidnight(static_cast<time_t>(seconds), 0);
        m_dayEnd = localMidnight(static_cast<time_t>(seconds), 1);
    }
    return cutToMicroseconds(systemTime - m_dayBegin * nanosecondsASecond);
}

qint64 systemTimeNow()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return nanoseconds(time);
}
