#include "canopentext.h"
#include "messages.h"

#include <QTest>

class TestCanOpenText : public QObject
{
    Q_OBJECT

private slots:
    void meaningFollowsTheIdentifier_data();
    void meaningFollowsTheIdentifier();
    void onlyPlainFramesHaveAMeaning();
    void nodeGuardingAsksByRemoteFrame();
};

void TestCanOpenText::meaningFollowsTheIdentifier_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");

    QTest::newRow("NMT start") << 0x000u << QByteArray("0105") << "NMT start, node 5";
    QTest::newRow("NMT stop for all") << 0x000u << QByteArray("0200") << "NMT stop, all nodes";
    QTest::newRow("NMT pre-operational") << 0x000u << QByteArray("8001") << "NMT enter pre-operational, node 1";
    QTest::newRow("NMT reset node") << 0x000u << QByteArray("817F") << "NMT reset node, node 127";
    QTest::newRow("NMT reset communication") << 0x000u << QByteArray("8201") << "NMT reset communication, node 1";
    QTest::newRow("NMT unknown command") << 0x000u << QByteArray("4A01") << "NMT 4Ah, node 1";
    QTest::newRow("NMT cut short") << 0x000u << QByteArray("01") << "NMT";
    QTest::newRow("below the first EMCY") << 0x001u << QByteArray() << "";
    QTest::newRow("SYNC") << 0x080u << QByteArray() << "SYNC";
    QTest::newRow("first EMCY") << 0x081u << QByteArray("1081010000000000") << "EMCY, node 1: error 8110h";
    QTest::newRow("EMCY reset") << 0x082u << QByteArray("0000000000000000") << "EMCY, node 2: error reset";
    QTest::newRow("EMCY cut short") << 0x0FFu << QByteArray("10") << "EMCY, node 127";
    QTest::newRow("TIME") << 0x100u << QByteArray("000000000000") << "TIME";
    QTest::newRow("behind TIME") << 0x101u << QByteArray() << "";
    QTest::newRow("no TPDO of node 0") << 0x180u << QByteArray("01") << "";
    QTest::newRow("first TPDO1") << 0x181u << QByteArray("01") << "TPDO1, node 1";
    QTest::newRow("last TPDO1") << 0x1FFu << QByteArray("01") << "TPDO1, node 127";
    QTest::newRow("RPDO1") << 0x201u << QByteArray("01") << "RPDO1, node 1";
    QTest::newRow("TPDO2") << 0x281u << QByteArray("01") << "TPDO2, node 1";
    QTest::newRow("RPDO2") << 0x301u << QByteArray("01") << "RPDO2, node 1";
    QTest::newRow("TPDO3") << 0x381u << QByteArray("01") << "TPDO3, node 1";
    QTest::newRow("RPDO3") << 0x401u << QByteArray("01") << "RPDO3, node 1";
    QTest::newRow("TPDO4") << 0x481u << QByteArray("01") << "TPDO4, node 1";
    QTest::newRow("RPDO4") << 0x501u << QByteArray("01") << "RPDO4, node 1";
    QTest::newRow("SDO upload request") << 0x605u << QByteArray("4018100100000000") << "SDO request, node 5: 1018h:01h";
    QTest::newRow("SDO upload answer") << 0x585u << QByteArray("4300100091010200") << "SDO answer, node 5: 1000h:00h";
    QTest::newRow("SDO download request")
        << 0x605u << QByteArray("2B171000E8030000") << "SDO request, node 5: 1017h:00h";
    QTest::newRow("SDO download answer") << 0x585u << QByteArray("6017100000000000") << "SDO answer, node 5: 1017h:00h";
    QTest::newRow("SDO segment request names no object")
        << 0x605u << QByteArray("6000000000000000") << "SDO request, node 5";
    QTest::newRow("SDO segment answer names no object")
        << 0x585u << QByteArray("2041424344454647") << "SDO answer, node 5";
    QTest::newRow("SDO abort") << 0x585u << QByteArray("8000100000000206") << "SDO abort, node 5: 1000h:00h";
    QTest::newRow("SDO cut short") << 0x605u << QByteArray("40") << "SDO request, node 5";
    QTest::newRow("SDO without data") << 0x605u << QByteArray() << "SDO request, node 5";
    QTest::newRow("between SDO and heartbeat") << 0x680u << QByteArray() << "";
    QTest::newRow("no identifier of a function") << 0x6E1u << QByteArray() << "";
    QTest::newRow("no heartbeat of node 0") << 0x700u << QByteArray("05") << "";
    QTest::newRow("boot-up") << 0x701u << QByteArray("00") << "Heartbeat, node 1: boot-up";
    QTest::newRow("heartbeat stopped") << 0x702u << QByteArray("04") << "Heartbeat, node 2: stopped";
    QTest::newRow("heartbeat operational") << 0x77Fu << QByteArray("05") << "Heartbeat, node 127: operational";
    QTest::newRow("heartbeat pre-operational") << 0x705u << QByteArray("7F") << "Heartbeat, node 5: pre-operational";
    QTest::newRow("guarding answer with toggle bit") << 0x705u << QByteArray("85") << "Heartbeat, node 5: operational";
    QTest::newRow("heartbeat in an unknown state") << 0x705u << QByteArray("2A") << "Heartbeat, node 5: 2Ah";
    QTest::newRow("heartbeat of two bytes") << 0x705u << QByteArray("0500") << "Heartbeat, node 5";
    QTest::newRow("behind the last") << 0x780u << QByteArray() << "";
    QTest::newRow("highest") << 0x7FFu << QByteArray() << "";
}

void TestCanOpenText::meaningFollowsTheIdentifier()
{
    QFETCH(quint32, id);
    QFETCH(QByteArray, data);
    QTEST(CanOpenText::meaning(dataFrame(id, data)), "text");
}

void TestCanOpenText::onlyPlainFramesHaveAMeaning()
{
    CAN::CanMessage message = dataFrame(0x181, "01", true);
    QCOMPARE(CanOpenText::meaning(message), QString());
    message = dataFrame(0x181);
    message.rtr = true;
    QCOMPARE(CanOpenText::meaning(message), QString());
    message = dataFrame(0x181);
    message.errorFrame = true;
    QCOMPARE(CanOpenText::meaning(message), QString());
    message = dataFrame(0x080);
    message.rtr = true;
    QCOMPARE(CanOpenText::meaning(message), QString());
}

void TestCanOpenText::nodeGuardingAsksByRemoteFrame()
{
    CAN::CanMessage message = dataFrame(0x705);
    message.rtr = true;
    QCOMPARE(CanOpenText::meaning(message), QStringLiteral("Node guarding request, node 5"));
}

QTEST_APPLESS_MAIN(TestCanOpenText)
#include "tst_canopentext.moc"
