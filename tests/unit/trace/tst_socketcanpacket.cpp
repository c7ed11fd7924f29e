#include "socketcanpacket.h"

#include <QtTest>

Q_DECLARE_METATYPE(CAN::CanMessage)

namespace {
CAN::CanMessage message(quint32 id, const QByteArray &data)
{
    CAN::CanMessage message;
    message.id = id;
    message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), message.data);
    return message;
}

template <typename Change>
CAN::CanMessage changed(CAN::CanMessage message, Change change)
{
    change(message);
    return message;
}

QByteArray encoded(const CAN::CanMessage &message)
{
    uchar packet[SocketCanPacket::maxBytes];
    const unsigned size = SocketCanPacket::encode(message, packet);
    return QByteArray(reinterpret_cast<const char *>(packet), static_cast<int>(size));
}

bool decode(const QByteArray &packet, CAN::CanMessage &message)
{
    return SocketCanPacket::decode(reinterpret_cast<const uchar *>(packet.constData()),
                                   static_cast<std::size_t>(packet.size()), message);
}
} // namespace

class TestSocketCanPacket : public QObject
{
    Q_OBJECT

private slots:
    void bytesOfAPacket_data();
    void bytesOfAPacket();
    void packetsGiveTheirFrameBack_data();
    void packetsGiveTheirFrameBack();
    void whatDoesNotFitIsCut_data();
    void whatDoesNotFitIsCut();
    void framesOfOtherSystems_data();
    void framesOfOtherSystems();
    void whatIsNoFrameIsRefused_data();
    void whatIsNoFrameIsRefused();
};

void TestSocketCanPacket::bytesOfAPacket_data()
{
    QTest::addColumn<CAN::CanMessage>("frame");
    QTest::addColumn<QByteArray>("hex");

    const CAN::CanMessage plain = message(0x123, "abc");
    QTest::newRow("standard") << plain << QByteArray("0000012303000000616263");
    QTest::newRow("no data") << message(0x7FF, {}) << QByteArray("000007ff00000000");
    QTest::newRow("extended") << changed(message(0x1FFFFFFF, "a"), [](auto &m) { m.ext = true; })
                              << QByteArray("9fffffff0100000061");
    QTest::newRow("remote") << changed(plain, [](auto &m) { m.rtr = true; }) << QByteArray("4000012303000000616263");
    QTest::newRow("error") << changed(plain, [](auto &m) { m.errorFrame = true; })
                           << QByteArray("2000012303000000616263");
    QTest::newRow("fd") << changed(plain, [](auto &m) { m.fd = true; }) << QByteArray("0000012303040000616263");
    QTest::newRow("fd with switched rate")
        << changed(plain, [](auto &m) { m.fd = m.brs = true; }) << QByteArray("0000012303050000616263");
    QTest::newRow("error state on fd") << changed(plain, [](auto &m) { m.fd = m.extraFlag = true; })
                                       << QByteArray("0000012303060000616263");
    QTest::newRow("error state on classic")
        << changed(plain, [](auto &m) { m.extraFlag = true; }) << QByteArray("0000012303020000616263");
}

void TestSocketCanPacket::bytesOfAPacket()
{
    QFETCH(CAN::CanMessage, frame);
    QTEST(encoded(frame).toHex(), "hex");
}

void TestSocketCanPacket::packetsGiveTheirFrameBack_data()
{
    bytesOfAPacket_data();
    const QByteArray full(CAN::maxDataLength, 'x');
    QTest::newRow("all there can be") << changed(message(0x1FFFFFFF, full), [](auto &m) {
        m.rtr = m.ext = m.fd = m.extraFlag = m.brs = m.errorFrame = true;
    }) << QByteArray();
    for (const int length : {0, 7, 8, 9, 63, 64})
        QTest::addRow("%d bytes", length)
            << changed(message(1, full.left(length)), [](auto &m) { m.fd = true; }) << QByteArray();
    QTest::newRow("classic, 8 bytes") << message(1, full.left(8)) << QByteArray();
}

void TestSocketCanPacket::packetsGiveTheirFrameBack()
{
    QFETCH(CAN::CanMessage, frame);
    CAN::CanMessage back;
    QVERIFY(decode(encoded(frame), back));
    QCOMPARE(back, frame);
}

void TestSocketCanPacket::whatDoesNotFitIsCut_data()
{
    QTest::addColumn<CAN::CanMessage>("frame");
    QTest::addColumn<CAN::CanMessage>("kept");

    const CAN::CanMessage full = changed(message(1, QByteArray(64, 'x')), [](auto &m) { m.fd = true; });
    QTest::newRow("65 bytes") << changed(full, [](auto &m) { m.length = 65; }) << full;
    QTest::newRow("255 bytes") << changed(full, [](auto &m) { m.length = 255; }) << full;
    QTest::newRow("id of 32 bits") << message(0xFFFFFFFF, "a") << message(0x1FFFFFFF, "a");
    QTest::newRow("9 bytes without the flag for fd")
        << message(1, "123456789") << changed(message(1, "123456789"), [](auto &m) { m.fd = true; });
}

void TestSocketCanPacket::whatDoesNotFitIsCut()
{
    QFETCH(CAN::CanMessage, frame);
    CAN::CanMessage back;
    QVERIFY(decode(encoded(frame), back));
    QTEST(back, "kept");
}

void TestSocketCanPacket::framesOfOtherSystems_data()
{
    QTest::addColumn<QByteArray>("packet");
    QTest::addColumn<CAN::CanMessage>("frame");

    const QByteArray head = QByteArray::fromHex("0000012302000000");
    const CAN::CanMessage frame = message(0x123, "ab");
    QTest::newRow("padded to the system's record") << head + "ab" + QByteArray(6, '\0') << frame;
    QTest::newRow("padded with anything") << head + "ab" + "cdef" << frame;
    QTest::newRow("fd by its size alone")
        << head + "ab" + QByteArray(62, '\0') << changed(frame, [](auto &m) { m.fd = true; });
    QTest::newRow("one byte less than that") << head + "ab" + QByteArray(61, '\0') << frame;
    QTest::newRow("remote without bytes")
        << QByteArray::fromHex("4000012308000000")
        << changed(message(0x123, QByteArray(8, '\0')), [](auto &m) { m.rtr = true; });
    QTest::newRow("raw length code") << QByteArray::fromHex("000001230200000f6162") << frame;
}

void TestSocketCanPacket::framesOfOtherSystems()
{
    QFETCH(QByteArray, packet);
    CAN::CanMessage back;
    QVERIFY(decode(packet, back));
    QTEST(back, "frame");
}

void TestSocketCanPacket::whatIsNoFrameIsRefused_data()
{
    QTest::addColumn<QByteArray>("packet");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("head cut off") << QByteArray::fromHex("00000123000000");
    QTest::newRow("data cut off") << QByteArray::fromHex("00000123020000000a");
    QTest::newRow("65 bytes") << QByteArray::fromHex("0000012341040000") + QByteArray(65, 'x');
    QTest::newRow("remote with 65 bytes") << QByteArray::fromHex("4000012341000000");
    QTest::newRow("CAN XL") << QByteArray::fromHex("000001238000000400000000") + QByteArray(4, 'x');
}

void TestSocketCanPacket::whatIsNoFrameIsRefused()
{
    QFETCH(QByteArray, packet);
    CAN::CanMessage back;
    QVERIFY(!decode(packet, back));
    QCOMPARE(back, CAN::CanMessage());
}

QTEST_APPLESS_MAIN(TestSocketCanPacket)
#include "tst_socketcanpacket.moc"
