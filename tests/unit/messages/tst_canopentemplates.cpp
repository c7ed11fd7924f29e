#include "canopentemplates.h"
#include "comparedrecords.h"

Q_DECLARE_METATYPE(CANRAW::CanRawCompareMessage)

using CANRAW::CanRawCompareMessage;

class TestCanOpenTemplates : public QObject
{
    Q_OBJECT

private slots:
    void templateAsksForWhatTheMessageHolds_data();
    void templateAsksForWhatTheMessageHolds();
    void openPdoConsidersNothing_data();
    void openPdoConsidersNothing();
    void everyTemplateTakesPlainFramesOnly();
};

void TestCanOpenTemplates::templateAsksForWhatTheMessageHolds_data()
{
    QTest::addColumn<CanRawCompareMessage>("message");
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("considered");
    using namespace CanOpenTemplates;
    using CanOpenChoices::ObjectAddress;
    const auto hex = [](const char *text) { return QByteArray::fromHex(text); };
    QTest::newRow("NMT") << nmt(4, 5) << 0u << hex("8105") << 2;
    QTest::newRow("NMT of no command") << nmt(-1, 5) << 0u << hex("0005") << 2;
    QTest::newRow("NMT node of nine bits") << nmt(1, 0x1FE) << 0u << hex("01fe") << 2;
    const ObjectAddress heartbeatTime(QStringLiteral("1017"), QStringLiteral("0"));
    QTest::newRow("SDO request") << sdo(1, 0, heartbeatTime) << 0x581u << hex("0017100000000000") << 4;
    QTest::newRow("SDO response") << sdo(127, 1, heartbeatTime) << 0x67Fu << hex("0017100000000000") << 4;
    QTest::newRow("SDO subindex of nine bits")
        << sdo(1, 0, {QStringLiteral("12345"), QStringLiteral("1FE")}) << 0x581u << hex("004523fe00000000") << 4;
    QTest::newRow("heartbeat") << heartbeat(127, 3) << 0x77Fu << hex("7f") << 1;
    QTest::newRow("EMCY") << emergency(0x10) << 0u << hex("1000000000000000") << 1;
}

void TestCanOpenTemplates::templateAsksForWhatTheMessageHolds()
{
    QFETCH(CanRawCompareMessage, message);
    QFETCH(int, considered);
    QVERIFY(message.id.isSet);
    QTEST(message.id.value, "id");
    QTEST(message.data, "data");
    QVERIFY(message.length.isSet);
    QCOMPARE(int(message.length.value), message.data.size());
    QCOMPARE(message.consideration, setBits(considered));
}

void TestCanOpenTemplates::openPdoConsidersNothing_data()
{
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("no length") << -1 << 255 << QByteArray();
    QTest::newRow("no bytes") << 0 << 0 << QByteArray();
    QTest::newRow("one byte") << 1 << 1 << QByteArray(1, '\0');
    QTest::newRow("all bytes") << 8 << 8 << QByteArray(8, '\0');
}

void TestCanOpenTemplates::openPdoConsidersNothing()
{
    QFETCH(int, given);
    const CanRawCompareMessage message = CanOpenTemplates::pdo(0x181, given);
    QCOMPARE(message.id.value, 0x181u);
    QTEST(int(message.length.value), "length");
    QTEST(message.data, "data");
    QCOMPARE(message.data.isNull(), given <= 0);
    QCOMPARE(message.consideration, QBitArray(64));
}

void TestCanOpenTemplates::everyTemplateTakesPlainFramesOnly()
{
    using namespace CanOpenTemplates;
    for (const CanRawCompareMessage &message :
         {nmt(0, 1), pdo(0x181, 1), sdo(1, 0, {QString(), QString()}), heartbeat(1, 0), emergency(0)}) {
        QVERIFY(message.valid);
        QCOMPARE(message.rtr + message.ext + message.fd + message.brs, 4 * int(Qt::Unchecked));
    }
}

QTEST_GUILESS_MAIN(TestCanOpenTemplates)
#include "tst_canopentemplates.moc"
