#include "bushub.h"
#include "rawpeer.h"

#include <QtTest>

#include <sys/resource.h>

using namespace std::chrono_literals;

namespace {
BusHub::Limits smallLimits()
{
    BusHub::Limits limits;
    limits.backlog = 64 * 1024;
    limits.connections = 3;
    return limits;
}

BusHub::Limits impatient()
{
    BusHub::Limits limits;
    limits.greetingTime = 50ms;
    return limits;
}

std::unique_ptr<BusHub> makeHub(const BusHub::Limits &limits = {})
{
    int error = 0;
    return BusHub::create(0, limits, error);
}

/// Announces the one warning that the test is about to cause.
void expectNotice(const char *ending)
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^Port \\d+: the connection of "
                                                           "127\\.0\\.0\\.1:\\d+ was closed\\. .*%1$")
                                                .arg(QLatin1String(ending))));
}

QByteArray frames(quint32 from, quint32 count)
{
    QByteArray bytes;
    for (quint32 number = from; number < from + count; ++number)
        bytes += encodedFrame(numberedFrame(number));
    return bytes;
}
} // namespace

class TestBusHub : public QObject
{
    Q_OBJECT

private slots:
    void greetsWhoeverConnects();
    void frameReachesEveryoneButItsSender();
    void orderOfASenderIsKept();
    void framesInPiecesArriveWhole();
    void framesRightBehindTheGreetingCount();
    void whoeverHeardTheGreetingIsOnTheBus();
    void foreignBytesEndTheConnection_data();
    void foreignBytesEndTheConnection();
    void framesBeforeForeignBytesAreForwarded();
    void connectionThatSaysNothingIsClosed();
    void halfAGreetingIsNone();
    void brokenOffFrameIsNotForwarded();
    void oneThatOnlyLooksInIsNoTrouble();
    void stalledReaderIsDisconnectedAndHoldsUpNobody();
    void slowReaderWithinTheBoundGetsEverything();
    void connectionsAreBounded();
    void placeOfOneThatLeftIsFree();
    void survivesTheEndOfFileDescriptors();
    void noticesAreBounded();
    void listensOnLoopbackOnly();
    void portOfAnotherIsRefused();
    void portIsFreeAgainAfterTheHub();
    void processServesAPortOnce();
};

void TestBusHub::greetsWhoeverConnects()
{
    const auto hub = makeHub();
    RawPeer peer(hub->port());
    QCOMPARE(peer.receive(12), greetingBytes());
}

void TestBusHub::frameReachesEveryoneButItsSender()
{
    const auto hub = makeHub();
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    RawPeer c(hub->port());
    QVERIFY(a.greet() && b.greet() && c.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(3));

    const QByteArray first = frames(1, 1);
    const QByteArray second = frames(2, 1);
    QVERIFY(a.send(first));
    QCOMPARE(b.receive(first.size()), first);
    QCOMPARE(c.receive(first.size()), first);
    // What comes first at the sender is the other's frame, and so its own did not come.
    QVERIFY(b.send(second));
    QCOMPARE(a.receive(second.size()), second);
}

void TestBusHub::orderOfASenderIsKept()
{
    const auto hub = makeHub();
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    RawPeer reader(hub->port());
    QVERIFY(a.greet() && b.greet() && reader.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(3));

    constexpr quint32 count = 2000;
    for (quint32 number = 0; number < count; number += 10) {
        QVERIFY(a.send(frames(number, 10)));
        QVERIFY(b.send(frames(100000 + number, 10)));
    }
    const QByteArray received = reader.receive(2 * frames(0, count).size());
    StreamDecoder decoder;
    QByteArray fromA;
    QByteArray fromB;
    const int frameSize = frames(0, 1).size();
    for (int at = 0; at < received.size(); at += frameSize) {
        const QByteArray frame = received.mid(at, frameSize);
        // Numbers from 100000 on have a byte that those below 2000 have not.
        (frame.at(7) != 0 ? fromB : fromA).append(frame);
    }
    QVERIFY(fromA == frames(0, count));
    QVERIFY(fromB == frames(100000, count));
}

void TestBusHub::framesInPiecesArriveWhole()
{
    const auto hub = makeHub();
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    QVERIFY(a.greet() && b.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    const QByteArray bytes = frames(1, 3);
    for (const char byte : bytes)
        QVERIFY(a.send(QByteArray(1, byte)));
    QCOMPARE(b.receive(bytes.size()), bytes);
}

void TestBusHub::framesRightBehindTheGreetingCount()
{
    const auto hub = makeHub();
    RawPeer b(hub->port());
    QVERIFY(b.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(1));
    RawPeer a(hub->port());
    QVERIFY(a.send(greetingBytes() + frames(1, 2)));
    QCOMPARE(b.receive(frames(1, 2).size()), frames(1, 2));
}

void TestBusHub::whoeverHeardTheGreetingIsOnTheBus()
{
    const auto hub = makeHub();
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    QVERIFY(a.greet());
    QCOMPARE(b.receive(12), greetingBytes());
    QVERIFY(a.send(frames(1, 1)));
    QCOMPARE(b.receive(13), frames(1, 1));
}

void TestBusHub::foreignBytesEndTheConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("greeting") << QByteArray("GET / HTTP/1.1\r\n") << QByteArray("does not speak CAN over TCP.");
    QTest::newRow("length") << greetingBytes() + QByteArray::fromHex("00000123 0F")
                            << QByteArray("a classic frame with more than 8 data bytes.");
    QTest::newRow("length of CAN FD") << greetingBytes() + QByteArray::fromHex("00000123 FF")
                                      << QByteArray("of a length that CAN FD does not have.");
    QTest::newRow("identifier") << greetingBytes() + QByteArray::fromHex("00000800 00")
                                << QByteArray("with an identifier of more than 11 bits.");
}

void TestBusHub::foreignBytesEndTheConnection()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, reason);
    expectNotice(reason.constData());
    const auto hub = makeHub();
    RawPeer peer(hub->port());
    QVERIFY(peer.send(bytes));
    QVERIFY(peer.waitForEnd());
    QTRY_COMPARE(hub->notices().size(), 1);
    QVERIFY(hub->notices().first().endsWith(QString::fromLatin1(reason)));
    QCOMPARE(hub->memberCount(), std::size_t(0));
}

void TestBusHub::framesBeforeForeignBytesAreForwarded()
{
    expectNotice("more than 8 data bytes.");
    const auto hub = makeHub();
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    QVERIFY(a.greet() && b.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    QVERIFY(a.send(frames(1, 1) + QByteArray::fromHex("00000123 0F") + frames(2, 1)));
    QVERIFY(a.waitForEnd());
    QCOMPARE(b.receive(13), frames(1, 1));
    QVERIFY(!b.waitForInput(0));
}

void TestBusHub::connectionThatSaysNothingIsClosed()
{
    expectNotice("It said no greeting in time.");
    const auto hub = makeHub(impatient());
    RawPeer peer(hub->port());
    QVERIFY(peer.waitForEnd());
    QTRY_COMPARE(hub->notices().size(), 1);
}

void TestBusHub::halfAGreetingIsNone()
{
    expectNotice("It said no greeting in time.");
    const auto hub = makeHub(impatient());
    RawPeer peer(hub->port());
    QVERIFY(peer.send(greetingBytes().left(11)));
    QVERIFY(peer.waitForEnd());
    QTRY_COMPARE(hub->notices().size(), 1);
}

void TestBusHub::brokenOffFrameIsNotForwarded()
{
    expectNotice("broke off in the middle of a frame.");
    const auto hub = makeHub();
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    QVERIFY(a.greet() && b.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
    QVERIFY(a.send(frames(1, 2).left(25)));
    a.close();
    QTRY_COMPARE(hub->notices().size(), 1);
    QCOMPARE(b.receive(13), frames(1, 1));
    QVERIFY(!b.waitForInput(0));
}

void TestBusHub::oneThatOnlyLooksInIsNoTrouble()
{
    const auto hub = makeHub();
    for (int i = 0; i < 10; ++i) {
        RawPeer peer(hub->port());
        QCOMPARE(peer.receive(12), greetingBytes());
    }
    RawPeer peer(hub->port());
    QVERIFY(peer.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(1));
    QVERIFY(hub->notices().isEmpty());
}

void TestBusHub::stalledReaderIsDisconnectedAndHoldsUpNobody()
{
    expectNotice("This reader fell more than 65536 bytes behind the traffic of the bus.");
    const auto hub = makeHub(smallLimits());
    RawPeer sender(hub->port());
    RawPeer stalled(hub->port(), 4096);
    RawPeer reader(hub->port());
    QVERIFY(sender.greet() && stalled.greet() && reader.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(3));

    const QByteArray bytes = frames(0, 100);
    int rounds = 0;
    while (hub->memberCount() == 3 && rounds < 10000) {
        QVERIFY(sender.send(bytes));
        // The reader is served as ever, while the other's share grows.
        QVERIFY(reader.receive(bytes.size()) == bytes);
        ++rounds;
    }
    QCOMPARE(hub->memberCount(), std::size_t(2));
    QTRY_COMPARE(hub->notices().size(), 1);
    QVERIFY(stalled.waitForEnd());
    QVERIFY(sender.send(bytes));
    QVERIFY(reader.receive(bytes.size()) == bytes);
}

void TestBusHub::slowReaderWithinTheBoundGetsEverything()
{
    BusHub::Limits limits;
    limits.backlog = 4 * 1024 * 1024;
    const auto hub = makeHub(limits);
    RawPeer sender(hub->port());
    RawPeer slow(hub->port(), 4096);
    RawPeer reader(hub->port());
    QVERIFY(sender.greet() && slow.greet() && reader.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(3));

    // More than the system keeps for a reader, so that part of it waits in the hub.
    const QByteArray bytes = frames(0, 150000);
    const int chunk = 13000;
    for (int at = 0; at < bytes.size(); at += chunk) {
        QVERIFY(sender.send(bytes.mid(at, chunk)));
        QVERIFY(reader.receive(chunk) == bytes.mid(at, chunk));
    }
    QVERIFY(slow.receive(bytes.size()) == bytes);
    QVERIFY(hub->notices().isEmpty());
}

void TestBusHub::connectionsAreBounded()
{
    expectNotice("The bus already has 3 connections, which is as many as it takes.");
    const auto hub = makeHub(smallLimits());
    RawPeer a(hub->port());
    RawPeer b(hub->port());
    RawPeer c(hub->port());
    QVERIFY(a.greet() && b.greet() && c.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(3));
    RawPeer tooMany(hub->port());
    QVERIFY(tooMany.waitForEnd());
    QCOMPARE(hub->memberCount(), std::size_t(3));
    QTRY_COMPARE(hub->notices().size(), 1);
}

void TestBusHub::placeOfOneThatLeftIsFree()
{
    const auto hub = makeHub(smallLimits());
    for (int i = 0; i < 20; ++i) {
        RawPeer peer(hub->port());
        QVERIFY(peer.greet());
        QTRY_COMPARE(hub->memberCount(), std::size_t(1));
        peer.close();
        QTRY_COMPARE(hub->memberCount(), std::size_t(0));
    }
    QVERIFY(hub->notices().isEmpty());
}

void TestBusHub::survivesTheEndOfFileDescriptors()
{
    const auto hub = makeHub();
    RawPeer member(hub->port());
    QVERIFY(member.greet());
    FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
    sockaddr_in address = loopbackAddress(hub->port());
    const int connected = ::connect(socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address);
    RawPeer late(std::move(socket));
    const bool answered = late.waitForInput(200);
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);

    QCOMPARE(connected, 0);
    QVERIFY(!answered);
    QVERIFY(late.greet());
    QTRY_COMPARE(hub->memberCount(), std::size_t(2));
}

void TestBusHub::noticesAreBounded()
{
    const auto hub = makeHub();
    for (int i = 0; i < 120; ++i) {
        expectNotice("does not speak CAN over TCP.");
        RawPeer peer(hub->port());
        QVERIFY(peer.send("x"));
        QVERIFY(peer.waitForEnd());
    }
    QTRY_COMPARE(hub->notices().size(), 100);
}

void TestBusHub::listensOnLoopbackOnly()
{
    const auto hub = makeHub();
    QFile table(QStringLiteral("/proc/net/tcp"));
    QVERIFY(table.open(QIODevice::ReadOnly));
    const QByteArray port = QByteArray::number(hub->port(), 16).toUpper().rightJustified(4, '0');
    const QByteArray listening = " 00000000:0000 0A ";
    const QByteArray content = table.readAll();
    QVERIFY(content.contains(" 0100007F:" + port + listening));
    QVERIFY(!content.contains(" 00000000:" + port + listening));
}

void TestBusHub::portOfAnotherIsRefused()
{
    const RawServer other;
    int error = 0;
    QVERIFY(BusHub::create(other.port(), {}, error) == nullptr);
    QCOMPARE(error, EADDRINUSE);
}

void TestBusHub::portIsFreeAgainAfterTheHub()
{
    auto hub = makeHub();
    const quint16 port = hub->port();
    RawPeer peer(port);
    QVERIFY(peer.greet());
    // The hub closes first, so that the system keeps the connection's rest at its port.
    hub.reset();
    QVERIFY(peer.waitForEnd());
    int error = 0;
    hub = BusHub::create(port, {}, error);
    QCOMPARE(error, 0);
    QVERIFY(hub != nullptr);
}

void TestBusHub::processServesAPortOnce()
{
    const quint16 port = freePort();
    QCOMPARE(BusHub::serveUntilExit(port), 0);
    QCOMPARE(BusHub::serveUntilExit(port), 0);
    RawPeer peer(port);
    QVERIFY(peer.greet());
    const RawServer other;
    QCOMPARE(BusHub::serveUntilExit(other.port()), EADDRINUSE);
}

QTEST_GUILESS_MAIN(TestBusHub)
#include "tst_bushub.moc"
