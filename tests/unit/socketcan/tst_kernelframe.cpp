#include "kernelframe.h"

#include <QtTest>
#include <linux/can/error.h>

#include <cstring>

Q_DECLARE_METATYPE(CAN::CanMessage)
Q_DECLARE_METATYPE(canfd_frame)
Q_DECLARE_METATYPE(CAN::CanState)

namespace {
canfd_frame kernelFrame(quint32 id, const QByteArray &data = {}, quint8 flags = 0)
{
    canfd_frame frame = {};
    frame.can_id = id;
    frame.len = static_cast<quint8>(data.size());
    frame.flags = flags;
    std::copy(data.begin(), data.end(), frame.data);
    return frame;
}

CAN::CanMessage message(quint32 id, const QByteArray &data = {})
{
    CAN::CanMessage made;
    made.id = id;
    made.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), made.data);
    return made;
}

template <typename Change>
CAN::CanMessage changed(CAN::CanMessage message, Change change)
{
    change(message);
    return message;
}

void addPairs()
{
    using M = CAN::CanMessage;
    QTest::addColumn<CAN::CanMessage>("ours");
    QTest::addColumn<canfd_frame>("kernels");
    QTest::addColumn<int>("size");
    const int classic = CAN_MTU;
    const int fd = CANFD_MTU;
    const QByteArray eight = QByteArray::fromHex("0001027F80FEFF00");
    const QByteArray longest(64, '\xA5');
    QTest::newRow("no data") << message(0) << kernelFrame(0) << classic;
    QTest::newRow("eight bytes") << message(0x7FF, eight) << kernelFrame(0x7FF, eight) << classic;
    QTest::newRow("extended") << changed(message(0x1FFFFFFF, eight), [](M &m) { m.ext = true; })
                              << kernelFrame(0x9FFFFFFF, eight) << classic;
    QTest::newRow("extended with a small id")
        << changed(message(1), [](M &m) { m.ext = true; }) << kernelFrame(0x80000001) << classic;
    QTest::newRow("remote") << changed(message(5), [](M &m) { m.rtr = true; }) << kernelFrame(0x40000005) << classic;
    QTest::newRow("extended remote with a length")
        << changed(message(5, QByteArray(3, '\0')), [](M &m) { m.rtr = m.ext = true; })
        << kernelFrame(0xC0000005, QByteArray(3, '\0')) << classic;
    QTest::newRow("CAN FD") << changed(message(5, longest), [](M &m) { m.fd = true; }) << kernelFrame(5, longest) << fd;
    QTest::newRow("bit rate switch") << changed(message(5, eight), [](M &m) { m.fd = m.brs = true; })
                                     << kernelFrame(5, eight, CANFD_BRS) << fd;
    QTest::newRow("error state indicator") << changed(message(5, eight), [](M &m) { m.fd = m.extraFlag = true; })
                                           << kernelFrame(5, eight, CANFD_ESI) << fd;
}
} // namespace

class TestKernelFrame : public QObject
{
    Q_OBJECT

private slots:
    void framesOfTheKernelAreRead_data() { addPairs(); }
    void framesOfTheKernelAreRead();
    void messagesAreWritten_data() { addPairs(); }
    void messagesAreWritten();
    void everyFdLengthIsWritten();
    void unsendableMessageIsNotWritten_data();
    void unsendableMessageIsNotWritten();
    void errorFrameIsMarkedAsSuch();
    void brokenFrameIsNotRead_data();
    void brokenFrameIsNotRead();
    void flagsOfAClassicFrameMeanNothing();
    void bytesBeyondAClassicFrameStayAway();
    void errorFrameTellsTheControllersState_data();
    void errorFrameTellsTheControllersState();
};

void TestKernelFrame::framesOfTheKernelAreRead()
{
    QFETCH(CAN::CanMessage, ours);
    QFETCH(canfd_frame, kernels);
    QFETCH(int, size);
    CAN::CanMessage read;
    QVERIFY(fromKernelFrame(kernels, std::size_t(size), read));
    QVERIFY(read == ours);
}

void TestKernelFrame::messagesAreWritten()
{
    QFETCH(CAN::CanMessage, ours);
    QFETCH(canfd_frame, kernels);
    QFETCH(int, size);
    canfd_frame written;
    std::memset(&written, 0xEE, sizeof written);
    QCOMPARE(toKernelFrame(ours, written), std::size_t(size));
    QCOMPARE(std::memcmp(&written, &kernels, std::size_t(size)), 0);
}

void TestKernelFrame::everyFdLengthIsWritten()
{
    QList<int> written;
    for (int length = 0; length <= 255; ++length) {
        CAN::CanMessage fd;
        fd.fd = true;
        fd.length = static_cast<quint8>(length);
        canfd_frame frame;
        if (toKernelFrame(fd, frame) == CANFD_MTU)
            written.append(length);
    }
    QCOMPARE(written, (QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64}));
}

void TestKernelFrame::unsendableMessageIsNotWritten_data()
{
    using M = CAN::CanMessage;
    QTest::addColumn<CAN::CanMessage>("ours");
    QTest::newRow("standard id of 12 bits") << message(0x800);
    QTest::newRow("extended id of 30 bits") << changed(message(0x20000000), [](M &m) { m.ext = true; });
    QTest::newRow("nine classic bytes") << changed(message(1), [](M &m) { m.length = 9; });
    QTest::newRow("remote frame of CAN FD") << changed(message(1), [](M &m) { m.fd = m.rtr = true; });
    QTest::newRow("error frame") << changed(message(1), [](M &m) { m.errorFrame = true; });
}

void TestKernelFrame::unsendableMessageIsNotWritten()
{
    QFETCH(CAN::CanMessage, ours);
    canfd_frame frame;
    QCOMPARE(toKernelFrame(ours, frame), std::size_t(0));
}

void TestKernelFrame::errorFrameIsMarkedAsSuch()
{
    CAN::CanMessage read;
    QVERIFY(
        fromKernelFrame(kernelFrame(CAN_ERR_FLAG | CAN_ERR_CNT | CAN_ERR_CRTL, QByteArray(8, '\x01')), CAN_MTU, read));
    QVERIFY(read.errorFrame && !read.ext && !read.rtr);
    QCOMPARE(read.id, quint32(CAN_ERR_CNT | CAN_ERR_CRTL));
    QCOMPARE(read.dataToByteArray(), QByteArray(8, '\x01'));
}

void TestKernelFrame::brokenFrameIsNotRead_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("size");
    QTest::newRow("nothing came") << 0 << 0;
    QTest::newRow("one byte short") << 0 << int(CAN_MTU) - 1;
    QTest::newRow("one byte more than classic") << 0 << int(CAN_MTU) + 1;
    QTest::newRow("one byte more than CAN FD") << 0 << int(CANFD_MTU) + 1;
    QTest::newRow("classic with nine bytes") << 9 << int(CAN_MTU);
    QTest::newRow("CAN FD with 65 bytes") << 65 << int(CANFD_MTU);
    QTest::newRow("255 bytes") << 255 << int(CANFD_MTU);
}

void TestKernelFrame::brokenFrameIsNotRead()
{
    QFETCH(int, length);
    QFETCH(int, size);
    canfd_frame frame = kernelFrame(1);
    frame.len = static_cast<quint8>(length);
    const CAN::CanMessage before = message(0x77, "x");
    CAN::CanMessage read = before;
    QVERIFY(!fromKernelFrame(frame, std::size_t(size), read));
    QVERIFY(read == before);
}

void TestKernelFrame::flagsOfAClassicFrameMeanNothing()
{
    CAN::CanMessage read;
    QVERIFY(fromKernelFrame(kernelFrame(1, {}, 0xFF), CAN_MTU, read));
    QVERIFY(!read.fd && !read.brs && !read.extraFlag);
}

void TestKernelFrame::bytesBeyondAClassicFrameStayAway()
{
    CAN::CanMessage read;
    canfd_frame frame = kernelFrame(1, QByteArray(64, '\x55'));
    frame.len = 8;
    QVERIFY(fromKernelFrame(frame, CAN_MTU, read));
    QCOMPARE(read.data[8], quint8(0));
}

void TestKernelFrame::errorFrameTellsTheControllersState_data()
{
    QTest::addColumn<canfd_frame>("frame");
    QTest::addColumn<CAN::CanState>("state"); // unknown: the frame tells none
    const auto controller = [](quint8 bits, quint32 more = 0) {
        return kernelFrame(CAN_ERR_FLAG | CAN_ERR_CRTL | more, QByteArray(1, '\0') + char(bits) + QByteArray(6, '\0'));
    };
    const auto plain = [](quint32 bits) { return kernelFrame(CAN_ERR_FLAG | bits, QByteArray(8, '\0')); };
    QTest::newRow("active") << controller(CAN_ERR_CRTL_ACTIVE) << CAN::CanStateErrorActive;
    QTest::newRow("warning, receiving") << controller(CAN_ERR_CRTL_RX_WARNING) << CAN::CanStateErrorWarning;
    QTest::newRow("warning, sending") << controller(CAN_ERR_CRTL_TX_WARNING) << CAN::CanStateErrorWarning;
    QTest::newRow("passive, receiving") << controller(CAN_ERR_CRTL_RX_PASSIVE) << CAN::CanStateErrorPassive;
    QTest::newRow("passive, sending") << controller(CAN_ERR_CRTL_TX_PASSIVE) << CAN::CanStateErrorPassive;
    QTest::newRow("warning here, passive there")
        << controller(CAN_ERR_CRTL_RX_WARNING | CAN_ERR_CRTL_TX_PASSIVE) << CAN::CanStateErrorPassive;
    QTest::newRow("overflow of the controller") << controller(CAN_ERR_CRTL_RX_OVERFLOW) << CAN::CanStateUnknown;
    QTest::newRow("bus off") << plain(CAN_ERR_BUSOFF) << CAN::CanStateBusOff;
    QTest::newRow("bus off beside others")
        << controller(CAN_ERR_CRTL_TX_PASSIVE, CAN_ERR_BUSOFF) << CAN::CanStateBusOff;
    QTest::newRow("restarted") << plain(CAN_ERR_RESTARTED) << CAN::CanStateErrorActive;
    QTest::newRow("restarted, with a warning")
        << controller(CAN_ERR_CRTL_TX_WARNING, CAN_ERR_RESTARTED) << CAN::CanStateErrorWarning;
    QTest::newRow("no acknowledgment") << plain(CAN_ERR_ACK) << CAN::CanStateUnknown;
    QTest::newRow("state bits of a frame of another class")
        << kernelFrame(CAN_ERR_FLAG | CAN_ERR_PROT, QByteArray(8, '\xFF')) << CAN::CanStateUnknown;
}

void TestKernelFrame::errorFrameTellsTheControllersState()
{
    QFETCH(canfd_frame, frame);
    QFETCH(CAN::CanState, state);
    QCOMPARE(controllerStateOf(frame).value_or(CAN::CanStateUnknown), state);
}

QTEST_APPLESS_MAIN(TestKernelFrame)
#include "tst_kernelframe.moc"
