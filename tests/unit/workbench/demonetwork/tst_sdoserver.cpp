#include "sdoserver.h"

#include "frames.h"

#include <QtTest>

namespace {
constexpr quint8 nodeId = 0x05;

/// One object of each size, one that can be written, and one with subindices.
ObjectDictionary objects()
{
    return {{0x1000, 0, 4, 0x00020194, false}, {0x1001, 0, 1, 0x09, false}, {0x1008, 0, 3, 0x434241, false},
            {0x1017, 0, 2, 0x03E8, true},      {0x1018, 0, 1, 4, false},    {0x1018, 1, 4, 0x12345678, false}};
}
} // namespace

class TestSdoServer : public QObject
{
    Q_OBJECT

private slots:
    void requestGetsItsResponse_data();
    void requestGetsItsResponse();
    void frameThatIsNoRequestGetsNone_data();
    void frameThatIsNoRequestGetsNone();
    void downloadIsReadBack();
    void refusedDownloadLeavesTheValue_data();
    void refusedDownloadLeavesTheValue();
    void noCommandByteIsAnsweredWrongly();
    void canFdAndErrorFramesGetNoResponse();
};

void TestSdoServer::requestGetsItsResponse_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("response");

    const auto row = [](const char *name, const char *request, const char *response) {
        QTest::newRow(name) << QString::fromLatin1(request) << QString::fromLatin1(response);
    };
    row("upload of four bytes", "605#4000100000000000", "585#4300100094010200");
    row("upload of three bytes", "605#4008100000000000", "585#4708100041424300");
    row("upload of two bytes", "605#4017100000000000", "585#4B171000E8030000");
    row("upload of one byte", "605#4001100000000000", "585#4F01100009000000");
    row("upload of the number of subindices", "605#4018100000000000", "585#4F18100004000000");
    row("upload of a subindex", "605#4018100100000000", "585#4318100178563412");
    row("upload with rubbish in the reserved bytes", "605#5F001000DEADBEEF", "585#4300100094010200");
    row("upload of an unknown object", "605#4000200000000000", "585#8000200000000206");
    row("upload of a high unknown object", "605#40FFFFFF00000000", "585#80FFFFFF00000206");
    row("upload of an unknown subindex", "605#4018100500000000", "585#8018100511000906");
    row("upload of a subindex of a plain object", "605#4000100100000000", "585#8000100111000906");

    row("download with size", "605#2B171000D0070000", "585#6017100000000000");
    row("download without size", "605#22171000D0070000", "585#6017100000000000");
    row("download to a read-only object", "605#2300100001000000", "585#8000100002000106");
    row("download to a read-only subindex", "605#2318100101000000", "585#8018100102000106");
    row("download to an unknown object", "605#2300200001000000", "585#8000200000000206");
    row("download to an unknown subindex", "605#2B171001D0070000", "585#8017100111000906");
    row("download of four bytes instead of two", "605#23171000D0070000", "585#8017100010000706");
    row("download of three bytes instead of two", "605#27171000D0070000", "585#8017100010000706");
    row("download of one byte instead of two", "605#2F171000D0000000", "585#8017100010000706");
    row("segmented download", "605#2117100002000000", "585#8017100001000405");

    row("download of a segment that nobody announced", "605#0044332211000000", "585#8000000001000405");
    row("upload of a segment that nobody announced", "605#6000000000000000", "585#8000000001000405");
    row("block upload", "605#A008100004000000", "585#8008100001000405");
    row("block download", "605#C217100002000000", "585#8017100001000405");
    row("unknown command specifier", "605#E017100000000000", "585#8000000001000405");
}

void TestSdoServer::requestGetsItsResponse()
{
    QFETCH(QString, request);
    ObjectDictionary dictionary = objects();
    const std::optional<CAN::CanMessage> response = answerSdo(dictionary, nodeId, frame(request));
    QVERIFY(response.has_value());
    QTEST(frameText(*response), "response");
}

void TestSdoServer::frameThatIsNoRequestGetsNone_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("abort by the client") << QStringLiteral("605#8017100000000405");
    QTest::newRow("request to another node") << QStringLiteral("606#4000100000000000");
    QTest::newRow("response of another server") << QStringLiteral("585#4300100094010200");
    QTest::newRow("short request") << QStringLiteral("605#40001000000000");
    QTest::newRow("empty request") << QStringLiteral("605#");
    QTest::newRow("extended identifier") << QStringLiteral("00000605#4000100000000000");
    QTest::newRow("remote frame") << QStringLiteral("605#R");
}

void TestSdoServer::frameThatIsNoRequestGetsNone()
{
    QFETCH(QString, text);
    ObjectDictionary dictionary = objects();
    QVERIFY(!answerSdo(dictionary, nodeId, frame(text)).has_value());
}

void TestSdoServer::downloadIsReadBack()
{
    ObjectDictionary dictionary = objects();
    answerSdo(dictionary, nodeId, frame(QStringLiteral("605#2B171000D007FFFF")));
    QCOMPARE(findObject(dictionary, 0x1017, 0)->value, 0x07D0U);
    const auto response = answerSdo(dictionary, nodeId, frame(QStringLiteral("605#4017100000000000")));
    QCOMPARE(frameText(response.value()), QStringLiteral("585#4B171000D0070000"));
}

void TestSdoServer::refusedDownloadLeavesTheValue_data()
{
    QTest::addColumn<QString>("request");

    QTest::newRow("wrong length") << QStringLiteral("605#23171000D0070000");
    QTest::newRow("segmented") << QStringLiteral("605#2117100002000000");
    QTest::newRow("aborted") << QStringLiteral("605#8017100000000405");
}

void TestSdoServer::refusedDownloadLeavesTheValue()
{
    QFETCH(QString, request);
    ObjectDictionary dictionary = objects();
    answerSdo(dictionary, nodeId, frame(request));
    QCOMPARE(findObject(dictionary, 0x1017, 0)->value, 0x03E8U);
}

void TestSdoServer::noCommandByteIsAnsweredWrongly()
{
    for (int head = 0; head < 256; ++head) {
        CAN::CanMessage request = frame(QStringLiteral("605#0017100000000000"));
        request.data[0] = static_cast<quint8>(head);
        ObjectDictionary dictionary = objects();
        const std::optional<CAN::CanMessage> response = answerSdo(dictionary, nodeId, request);
        QCOMPARE(response.has_value(), head >> 5 != 4);
        if (!response)
            continue;
        QCOMPARE(response->id, 0x585U);
        QCOMPARE(response->length, quint8(8));
        const bool successful = response->data[0] != 0x80;
        QVERIFY2(!successful || head >> 5 == 1 || head >> 5 == 2, qPrintable(frameText(*response)));
    }
}

void TestSdoServer::canFdAndErrorFramesGetNoResponse()
{
    ObjectDictionary dictionary = objects();
    CAN::CanMessage request = frame(QStringLiteral("605#4000100000000000"));
    request.fd = true;
    QVERIFY(!answerSdo(dictionary, nodeId, request).has_value());
    request.fd = false;
    request.errorFrame = true;
    QVERIFY(!answerSdo(dictionary, nodeId, request).has_value());
}

QTEST_APPLESS_MAIN(TestSdoServer)
#include "tst_sdoserver.moc"
