#include "receptioninfo.h"

#include <QtTest>
#include <linux/errqueue.h>

#include <cstring>
#include <ctime>

namespace {
constexpr qint64 second = 1000000000;
constexpr qint64 hour = 3600 * second;

/// What the kernel lays beside a frame, piece by piece.
class Control
{
public:
    template <typename Value>
    Control &with(int type, const Value &value, int level = SOL_SOCKET)
    {
        auto *control = reinterpret_cast<cmsghdr *>(m_bytes + m_size);
        control->cmsg_level = level;
        control->cmsg_type = type;
        control->cmsg_len = CMSG_LEN(sizeof value);
        std::memcpy(CMSG_DATA(control), &value, sizeof value);
        m_size += CMSG_SPACE(sizeof value);
        return *this;
    }
    Control &withTimes(timespec system, timespec hardware)
    {
        scm_timestamping times = {};
        times.ts[0] = system;
        times.ts[2] = hardware;
        return with(SCM_TIMESTAMPING, times);
    }
    ReceptionInfo read(int flags = 0)
    {
        msghdr header = {};
        header.msg_control = m_size > 0 ? m_bytes : nullptr;
        header.msg_controllen = m_size;
        header.msg_flags = flags;
        return readReceptionInfo(header);
    }

private:
    alignas(cmsghdr) char m_bytes[256] = {};
    std::size_t m_size = 0;
};

CanTimeStamp stampOf(FrameClock::Mode mode, qint64 systemTime, qint64 hardwareTime = 0)
{
    FrameClock clock;
    clock.start(mode);
    return clock.stamp(systemTime, hardwareTime);
}
} // namespace

class TestReceptionInfo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingIsKnownOfABareFrame();
    void timesAndDropsAreRead();
    void fullControlDataFitsItsRoom();
    void foreignAndShortPiecesAreSteppedOver();
    void confirmedFrameIsOurOwn();
    void systemTimeIsCutToMicroseconds();
    void controllersTimeGoesFirst();
    void frameWithoutHardwareTimeJoinsTheControllersClock();
    void controllersTimeDoesNotCountForTheTimeOfDay();
    void timeOfDayStartsAgainAtMidnight();
    void continuousTimeGoesOnOverMidnight();
    void continuousTimeStaysOverTheChangeOfClocks();
    void eachStartForgetsTheLastConnection();
};

void TestReceptionInfo::initTestCase()
{
    // Two hours ahead of UTC in summer, one in winter.
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    ::tzset();
}

void TestReceptionInfo::nothingIsKnownOfABareFrame()
{
    const ReceptionInfo info = Control().read();
    QCOMPARE(info.systemTime, qint64(0));
    QCOMPARE(info.hardwareTime, qint64(0));
    QVERIFY(!info.dropped && !info.own);
}

void TestReceptionInfo::timesAndDropsAreRead()
{
    const ReceptionInfo info = Control().withTimes({7, 9}, {8, 10}).with(SO_RXQ_OVFL, quint32(11)).read();
    QCOMPARE(info.systemTime, 7 * second + 9);
    QCOMPARE(info.hardwareTime, 8 * second + 10);
    QCOMPARE(info.dropped.value_or(0), quint32(11));
}

void TestReceptionInfo::fullControlDataFitsItsRoom()
{
    QVERIFY(CMSG_SPACE(sizeof(scm_timestamping)) + CMSG_SPACE(sizeof(quint32)) <= ReceptionInfo::controlSize);
}

void TestReceptionInfo::foreignAndShortPiecesAreSteppedOver()
{
    const ReceptionInfo info = Control()
                                   .with(SO_RXQ_OVFL, quint32(1), SOL_SOCKET + 1)
                                   .with(SCM_TIMESTAMPING, quint32(1))
                                   .with(SO_RXQ_OVFL, quint32(5))
                                   .read();
    QCOMPARE(info.systemTime, qint64(0));
    QCOMPARE(info.dropped.value_or(0), quint32(5));
}

void TestReceptionInfo::confirmedFrameIsOurOwn()
{
    QVERIFY(Control().read(MSG_CONFIRM).own);
    QVERIFY(!Control().read(MSG_DONTROUTE).own);
}

void TestReceptionInfo::systemTimeIsCutToMicroseconds()
{
    QCOMPARE(stampOf(FrameClock::ControllerTime, 5 * second + 999999999), CanTimeStamp(5, 999999));
    QCOMPARE(stampOf(FrameClock::ControllerTime, 6 * second), CanTimeStamp(6, 0));
}

void TestReceptionInfo::controllersTimeGoesFirst()
{
    QCOMPARE(stampOf(FrameClock::ControllerTime, 1000 * second, 2 * second + 3000), CanTimeStamp(2, 3));
}

void TestReceptionInfo::frameWithoutHardwareTimeJoinsTheControllersClock()
{
    FrameClock clock;
    clock.start(FrameClock::ControllerTime);
    clock.stamp(1000 * second, 2 * second);
    QCOMPARE(clock.stamp(1001 * second), CanTimeStamp(3, 0));
}

void TestReceptionInfo::controllersTimeDoesNotCountForTheTimeOfDay()
{
    // The day began at 23:00 UTC.
    QCOMPARE(stampOf(FrameClock::TimeOfDay, 2 * hour, 77 * second), CanTimeStamp(3 * 3600, 0));
}

void TestReceptionInfo::timeOfDayStartsAgainAtMidnight()
{
    FrameClock clock;
    clock.start(FrameClock::TimeOfDay);
    QCOMPARE(clock.stamp(23 * hour - 1000), CanTimeStamp(24 * 3600 - 1, 999999));
    QCOMPARE(clock.stamp(23 * hour), CanTimeStamp(0, 0));
    QCOMPARE(clock.stamp(47 * hour), CanTimeStamp(0, 0));
    // Whoever sets the system's clock back finds the day before again.
    QCOMPARE(clock.stamp(hour), CanTimeStamp(2 * 3600, 0));
}

void TestReceptionInfo::continuousTimeGoesOnOverMidnight()
{
    FrameClock clock;
    clock.start(FrameClock::ContinuousTime);
    QCOMPARE(clock.stamp(22 * hour), CanTimeStamp(23 * 3600, 0));
    QCOMPARE(clock.stamp(23 * hour), CanTimeStamp(24 * 3600, 0));
    QCOMPARE(clock.stamp(71 * hour + 5000), CanTimeStamp(72 * 3600, 5));
}

void TestReceptionInfo::continuousTimeStaysOverTheChangeOfClocks()
{
    constexpr qint64 eveningBefore = 1711839600 * second; // 2024-03-31 00:00 in summer-to-be
    FrameClock clock;
    clock.start(FrameClock::ContinuousTime);
    QCOMPARE(clock.stamp(eveningBefore), CanTimeStamp(0, 0));
    QCOMPARE(clock.stamp(eveningBefore + 23 * hour), CanTimeStamp(23 * 3600, 0));
}

void TestReceptionInfo::eachStartForgetsTheLastConnection()
{
    FrameClock clock;
    clock.start(FrameClock::ControllerTime);
    clock.stamp(1000 * second, 2 * second);
    clock.start(FrameClock::ControllerTime);
    QCOMPARE(clock.stamp(1001 * second), CanTimeStamp(1001, 0));
}

QTEST_APPLESS_MAIN(TestReceptionInfo)
#include "tst_receptioninfo.moc"
