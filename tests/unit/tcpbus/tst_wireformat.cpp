#include "wireformat.h"

#include <QRandomGenerator>
#include <QtTest>

Q_DECLARE_METATYPE(CAN::CanMessage)
Q_DECLARE_METATYPE(WireFormat::Fault)

using WireFormat::Fault;
using Status = StreamDecoder::Status;

namespace {
const QByteArray greetingBytes = QByteArrayLiteral("CANNELLONIv1");

enum Kind { Standard = 0, Extended = 1, Remote = 2, Fd = 4, BitRateSwitch = 8, ErrorState = 16, Error = 32 };

CAN::CanMessage makeFrame(quint32 id, const QByteArray &data, int kind = Standard)
{
    CAN::CanMessage message;
    message.id = id;
    message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), message.data);
    message.ext = (kind & Extended) != 0;
    message.rtr = (kind & Remote) != 0;
    message.fd = (kind & Fd) != 0;
    message.brs = (kind & BitRateSwitch) != 0;
    message.extraFlag = (kind & ErrorState) != 0;
    message.errorFrame = (kind & Error) != 0;
    return message;
}

CAN::CanMessage makeRemote(quint32 id, quint8 length, int kind = Standard)
{
    CAN::CanMessage message = makeFrame(id, {}, kind | Remote);
    message.length = length;
    return message;
}

CAN::CanMessage makeLength(int length, int kind = Standard)
{
    CAN::CanMessage message = makeFrame(0x123, {}, kind);
    message.length = static_cast<quint8>(length);
    return message;
}

QByteArray encoded(const CAN::CanMessage &message)
{
    quint8 bytes[WireFormat::largestFrameSize];
    const std::size_t size = WireFormat::encodeFrame(message, bytes);
    return QByteArray(reinterpret_cast<const char *>(bytes), static_cast<int>(size));
}

/// Feeds a decoder in pieces, and keeps what it gives out.
class Reader
{
public:
    StreamDecoder decoder;
    QList<CAN::CanMessage> frames;
    Status status = Status::NeedsMore;

    void feed(const QByteArray &bytes, int pieceSize)
    {
        for (int from = 0; from < bytes.size(); from += pieceSize) {
            const QByteArray piece = bytes.mid(from, pieceSize);
            quint8 *room = decoder.room();
            QVERIFY(decoder.roomSize() >= std::size_t(piece.size()));
            std::copy(piece.begin(), piece.end(), room);
            decoder.advance(static_cast<std::size_t>(piece.size()));
            CAN::CanMessage message;
            while ((status = decoder.next(message)) == Status::Frame)
                frames.append(message);
        }
    }
};
} // namespace

class TestWireFormat : public QObject
{
    Q_OBJECT

private slots:
    void frameHasItsBytes_data();
    void frameHasItsBytes();
    void validityDependsOnKind_data();
    void validityDependsOnKind();
    void streamInPiecesOfAnySizeGivesItsFrames_data();
    void streamInPiecesOfAnySizeGivesItsFrames();
    void truncatedFrameIsWaitedFor();
    void foreignBytesHaveAReason_data();
    void foreignBytesHaveAReason();
    void framesBeforeForeignBytesAreHandedOut();
    void nothingFollowsForeignBytes();
    void unknownFlagsOfCanFdAreIgnored();
    void takenFramesAreTheBytesThatCameIn();
    void takenFramesEndBeforeForeignBytes();
    void randomBytesNeitherCrashNorGrow_data();
    void randomBytesNeitherCrashNorGrow();
    void wholeFramesAreCounted();
    void everyFaultHasASentence();
};

void TestWireFormat::frameHasItsBytes_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray sixtyFour(64, '\x5A');
    QTest::newRow("standard") << makeFrame(0x123, "\x01\x02\x03") << QByteArray::fromHex("00000123 03 010203");
    QTest::newRow("no data") << makeFrame(0x000, "") << QByteArray::fromHex("00000000 00");
    QTest::newRow("eight bytes") << makeFrame(0x7FF, "\x11\x22\x33\x44\x55\x66\x77\x88")
                                 << QByteArray::fromHex("000007FF 08 1122334455667788");
    QTest::newRow("extended") << makeFrame(0x1ABCDEF0, "\xFF", Extended) << QByteArray::fromHex("9ABCDEF0 01 FF");
    QTest::newRow("remote says a length and has no data") << makeRemote(0x701, 8) << QByteArray::fromHex("40000701 08");
    QTest::newRow("extended remote") << makeRemote(0x1FFFFFFF, 0, Extended) << QByteArray::fromHex("DFFFFFFF 00");
    QTest::newRow("error") << makeFrame(0x1FFFFFFF, "\x01", Error) << QByteArray::fromHex("3FFFFFFF 01 01");
    QTest::newRow("CAN FD") << makeFrame(0x123, "\xAA\xBB", Fd) << QByteArray::fromHex("00000123 82 00 AABB");
    QTest::newRow("CAN FD, bit rate switch")
        << makeFrame(0x123, "\xAA", Fd | BitRateSwitch) << QByteArray::fromHex("00000123 81 01 AA");
    QTest::newRow("CAN FD, error state indicator")
        << makeFrame(0x123, "\xAA", Fd | ErrorState) << QByteArray::fromHex("00000123 81 02 AA");
    QTest::newRow("CAN FD, extended, both flags, 64 bytes")
        << makeFrame(0x00000001, sixtyFour, Fd | Extended | BitRateSwitch | ErrorState)
        << QByteArray::fromHex("80000001 C0 03") + sixtyFour;
}

void TestWireFormat::frameHasItsBytes()
{
    QFETCH(CAN::CanMessage, message);
    QFETCH(QByteArray, bytes);
    QCOMPARE(encoded(message).toHex(), bytes.toHex());

    Reader reader;
    reader.feed(greetingBytes + bytes, 1000);
    QCOMPARE(reader.frames.size(), 1);
    QVERIFY(reader.frames.first() == message);
    QCOMPARE(reader.status, Status::NeedsMore);
}

void TestWireFormat::validityDependsOnKind_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    QTest::addColumn<bool>("valid");
    const auto row = [](const char *name, const CAN::CanMessage &message, bool valid) {
        QTest::newRow(name) << message << valid;
    };
    row("largest standard id", makeFrame(0x7FF, {}), true);
    row("too large standard id", makeFrame(0x800, {}), false);
    row("largest extended id", makeFrame(0x1FFFFFFF, {}, Extended), true);
    row("too large extended id", makeFrame(0x20000000, {}, Extended), false);
    row("id of 32 bits", makeFrame(0xFFFFFFFF, {}, Extended), false);
    row("error report with 29 bits", makeFrame(0x1FFFFFFF, {}, Error), true);
    row("error report with 30 bits", makeFrame(0x20000000, {}, Error), false);
    row("classic 8", makeLength(8), true);
    row("classic 9", makeLength(9), false);
    row("classic 255", makeLength(255), false);
    row("remote 8", makeLength(8, Remote), true);
    row("remote 9", makeLength(9, Remote), false);
    row("remote CAN FD", makeLength(0, Remote | Fd), false);
    row("error CAN FD", makeLength(0, Error | Fd), false);
    row("remote error", makeLength(0, Error | Remote), false);
    row("flags of CAN FD in a classic frame", makeLength(0, BitRateSwitch | ErrorState), true);
    const QList<int> fdLengths = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
    for (int length = 0; length <= 255; ++length)
        row(qPrintable(QStringLiteral("CAN FD %1").arg(length)), makeLength(length, Fd), fdLengths.contains(length));
}

void TestWireFormat::validityDependsOnKind()
{
    QFETCH(CAN::CanMessage, message);
    QFETCH(bool, valid);
    QCOMPARE(WireFormat::isValidFrame(message), valid);
    QCOMPARE(!encoded(message).isEmpty(), valid);
}

void TestWireFormat::streamInPiecesOfAnySizeGivesItsFrames_data()
{
    QTest::addColumn<int>("pieceSize");
    for (const int size : {1, 2, 3, 4, 5, 7, 11, 12, 13, 17, 64, 70, 71, 1000, 60000})
        QTest::newRow(qPrintable(QString::number(size))) << size;
}

void TestWireFormat::streamInPiecesOfAnySizeGivesItsFrames()
{
    QFETCH(int, pieceSize);
    QList<CAN::CanMessage> sent;
    for (quint32 i = 0; i < 500; ++i) {
        sent << makeFrame(i, QByteArray(static_cast<int>(i % 9), char(i))) << makeRemote(i, quint8(i % 9))
             << makeFrame(i, QByteArray(64, char(i)), Fd | Extended);
    }
    QByteArray bytes = greetingBytes;
    for (const CAN::CanMessage &message : qAsConst(sent))
        bytes += encoded(message);

    Reader reader;
    reader.feed(bytes, pieceSize);
    QCOMPARE(reader.frames.size(), sent.size());
    QVERIFY(reader.frames == sent);
    QCOMPARE(reader.status, Status::NeedsMore);
    QCOMPARE(reader.decoder.pending(), std::size_t(0));
}

void TestWireFormat::truncatedFrameIsWaitedFor()
{
    const CAN::CanMessage message = makeFrame(0x123, QByteArray(64, 'x'), Fd);
    const QByteArray bytes = greetingBytes + encoded(message);
    for (int length = 0; length < bytes.size(); ++length) {
        Reader reader;
        reader.feed(bytes.left(length), 1000);
        QCOMPARE(reader.status, Status::NeedsMore);
        QVERIFY(reader.frames.isEmpty());
        reader.feed(bytes.mid(length), 1000);
        QVERIFY(reader.frames == QList<CAN::CanMessage>{message});
    }
}

void TestWireFormat::foreignBytesHaveAReason_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Fault>("fault");
    const auto afterGreeting = [](const char *hex) { return greetingBytes + QByteArray::fromHex(hex); };
    QTest::newRow("other protocol") << QByteArray("HTTP/1.1 400 Bad Request\r\n") << Fault::Greeting;
    QTest::newRow("other first byte alone") << QByteArray("S") << Fault::Greeting;
    QTest::newRow("other version") << QByteArray("CANNELLONIv2") << Fault::Greeting;
    QTest::newRow("standard id of 12 bits") << afterGreeting("00000800 00") << Fault::Identifier;
    QTest::newRow("remote id of 12 bits") << afterGreeting("40000800 00") << Fault::Identifier;
    QTest::newRow("classic 9") << afterGreeting("00000123 09") << Fault::ClassicLength;
    QTest::newRow("classic 127") << afterGreeting("00000123 7F") << Fault::ClassicLength;
    QTest::newRow("remote 9") << afterGreeting("40000123 09") << Fault::ClassicLength;
    QTest::newRow("CAN FD 9") << afterGreeting("00000123 89") << Fault::FdLength;
    QTest::newRow("CAN FD 63") << afterGreeting("00000123 BF") << Fault::FdLength;
    QTest::newRow("CAN FD 65") << afterGreeting("00000123 C1") << Fault::FdLength;
    QTest::newRow("CAN FD 127") << afterGreeting("00000123 FF") << Fault::FdLength;
    QTest::newRow("remote CAN FD") << afterGreeting("40000123 80") << Fault::FdRemote;
    QTest::newRow("error CAN FD") << afterGreeting("20000123 80") << Fault::FdError;
    QTest::newRow("remote error") << afterGreeting("60000123 00") << Fault::RemoteError;
    QTest::newRow("all ones") << afterGreeting("FFFFFFFF FF") << Fault::FdRemote;
}

void TestWireFormat::foreignBytesHaveAReason()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Fault, fault);
    for (const int pieceSize : {1, 1000}) {
        Reader reader;
        reader.feed(bytes, pieceSize);
        QCOMPARE(reader.status, Status::Foreign);
        QCOMPARE(reader.decoder.fault(), fault);
        QVERIFY(reader.frames.isEmpty());
    }
}

void TestWireFormat::framesBeforeForeignBytesAreHandedOut()
{
    Reader reader;
    reader.feed(greetingBytes + QByteArray::fromHex("00000001 00 00000002 00 00000003 0F 00"), 1000);
    QCOMPARE(reader.frames.size(), 2);
    QCOMPARE(reader.frames.last().id, 2u);
    QCOMPARE(reader.decoder.fault(), Fault::ClassicLength);
}

void TestWireFormat::nothingFollowsForeignBytes()
{
    Reader reader;
    reader.feed(greetingBytes + QByteArray::fromHex("00000003 0F"), 1000);
    reader.feed(QByteArray::fromHex("00000001 00"), 1000);
    QCOMPARE(reader.status, Status::Foreign);
    QVERIFY(reader.frames.isEmpty());
}

void TestWireFormat::unknownFlagsOfCanFdAreIgnored()
{
    Reader reader;
    reader.feed(greetingBytes + QByteArray::fromHex("00000123 81 FD AA"), 1000);
    QCOMPARE(reader.frames.size(), 1);
    QVERIFY(reader.frames.first().brs);
    QVERIFY(!reader.frames.first().extraFlag);
}

void TestWireFormat::takenFramesAreTheBytesThatCameIn()
{
    const QByteArray whole = QByteArray::fromHex("00000123 01 FF 00000124 82 FD AABB 40000125 08");
    const QByteArray bytes = greetingBytes + whole + QByteArray::fromHex("00000126 02 01");
    StreamDecoder decoder;
    std::copy(bytes.begin(), bytes.end(), decoder.room());
    decoder.advance(static_cast<std::size_t>(bytes.size()));
    const StreamDecoder::Bytes taken = decoder.takeFrames();
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(taken.begin), static_cast<int>(taken.size)), whole);
    QCOMPARE(decoder.pending(), std::size_t(6));
    QCOMPARE(decoder.takeFrames().size, std::size_t(0));

    *decoder.room() = 0x02;
    decoder.advance(1);
    QCOMPARE(decoder.takeFrames().size, std::size_t(7));
    QCOMPARE(decoder.pending(), std::size_t(0));
}

void TestWireFormat::takenFramesEndBeforeForeignBytes()
{
    const QByteArray bytes = greetingBytes + QByteArray::fromHex("00000123 01 FF 00000800 00");
    StreamDecoder decoder;
    std::copy(bytes.begin(), bytes.end(), decoder.room());
    decoder.advance(static_cast<std::size_t>(bytes.size()));
    QCOMPARE(decoder.takeFrames().size, std::size_t(6));
    QCOMPARE(decoder.fault(), Fault::Identifier);
}

void TestWireFormat::randomBytesNeitherCrashNorGrow_data()
{
    QTest::addColumn<bool>("greeted");
    QTest::newRow("from the start") << false;
    QTest::newRow("after a greeting") << true;
}

void TestWireFormat::randomBytesNeitherCrashNorGrow()
{
    QFETCH(bool, greeted);
    for (quint32 seed = 1; seed <= 2000; ++seed) {
        QRandomGenerator random(seed);
        QByteArray bytes = greeted ? greetingBytes : QByteArray();
        for (int i = 0; i < 400; ++i)
            bytes += char(random.bounded(256));
        Reader reader;
        reader.feed(bytes, 1 + random.bounded(100));
        for (const CAN::CanMessage &message : qAsConst(reader.frames))
            QVERIFY(WireFormat::isValidFrame(message));
        if (reader.status == Status::NeedsMore)
            QVERIFY(reader.decoder.pending() < WireFormat::largestFrameSize);
        else
            QVERIFY(reader.decoder.fault() != Fault::None);
    }
}

void TestWireFormat::wholeFramesAreCounted()
{
    const QByteArray bytes = QByteArray::fromHex("00000123 01 FF 00000124 82 FD AABB 40000125 08");
    const auto counted = [&](int size) {
        return WireFormat::countWholeFrames(reinterpret_cast<const quint8 *>(bytes.constData()),
                                            static_cast<std::size_t>(size));
    };
    for (int size = 0; size <= bytes.size(); ++size)
        QCOMPARE(counted(size), quint64(size < 6 ? 0 : size < 14 ? 1 : size < 19 ? 2 : 3));
}

void TestWireFormat::everyFaultHasASentence()
{
    QVERIFY(WireFormat::faultText(Fault::None).isEmpty());
    QSet<QString> texts;
    for (const Fault fault : {Fault::Greeting, Fault::Identifier, Fault::ClassicLength, Fault::FdLength,
                              Fault::FdRemote, Fault::FdError, Fault::RemoteError}) {
        const QString text = WireFormat::faultText(fault);
        QVERIFY(text.startsWith(QLatin1String("The other side ")) && text.endsWith(QLatin1Char('.')));
        texts.insert(text);
    }
    QCOMPARE(texts.size(), 7);
}

QTEST_APPLESS_MAIN(TestWireFormat)
#include "tst_wireformat.moc"
