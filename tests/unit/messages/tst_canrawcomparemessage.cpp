#include "comparedrecords.h"

#include <QtTest>

using CANRAW::CanRawCompareMessage;

class TestCanRawCompareMessage : public QObject
{
    Q_OBJECT

private slots:
    void newRecordIsAsStrictAsAsked_data();
    void newRecordIsAsStrictAsAsked();
    void recordIsStrictUnlessToldOtherwise();
    void copyOwnsItsContents();
    void textShowsIdentifierLengthAndData_data();
    void textShowsIdentifierLengthAndData();
    void longestLengthPrints();
};

void TestCanRawCompareMessage::newRecordIsAsStrictAsAsked_data()
{
    QTest::addColumn<bool>("considerAll");
    QTest::addColumn<QString>("fields");
    const QString openBits(64, QLatin1Char('0'));
    const QString fields = QStringLiteral("valid %1\n"
                                          "id 0x0 set %1\n"
                                          "length 0 set 1\n"
                                          "data null\n"
                                          "consideration %3\n"
                                          "rtr %2 ext %2 fd %2 brs %2\n"
                                          "extra 0 0 0 0 0 0 0 0\n"
                                          "ids ");
    QTest::newRow("strict") << true << fields.arg(1).arg(0).arg(openBits);
    QTest::newRow("open") << false << fields.arg(0).arg(1).arg(openBits);
}

void TestCanRawCompareMessage::newRecordIsAsStrictAsAsked()
{
    QFETCH(bool, considerAll);
    QFETCH(QString, fields);
    QCOMPARE(allFields(CanRawCompareMessage(considerAll)), fields);
}

void TestCanRawCompareMessage::recordIsStrictUnlessToldOtherwise()
{
    QCOMPARE(allFields(CanRawCompareMessage()), allFields(CanRawCompareMessage(true)));
}

void TestCanRawCompareMessage::copyOwnsItsContents()
{
    CanRawCompareMessage original;
    original.data = "ab";
    original.extraIds = {1};
    const CanRawCompareMessage copy = original;
    original.data[0] = 'x';
    original.consideration.setBit(0);
    original.extraIds[0] = 2;
    QCOMPARE(copy.data, QByteArray("ab"));
    QVERIFY(!copy.consideration.testBit(0));
    QCOMPARE(copy.extraIds, QList<unsigned int>{1});
}

void TestCanRawCompareMessage::textShowsIdentifierLengthAndData_data()
{
    QTest::addColumn<bool>("idIsSet");
    QTest::addColumn<quint32>("id");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    const auto bytes = [](const char *hex) { return QByteArray::fromHex(hex); };
    QTest::newRow("two bytes") << true << 0x181u << 2 << bytes("0105") << "0x181 2 1 5";
    QTest::newRow("nothing set") << false << 0u << -1 << bytes("0105") << "0x0 -1";
    QTest::newRow("value of an unset identifier") << false << 0x7ABu << 0 << bytes("") << "0x7ab 0";
    QTest::newRow("largest identifier") << true << 0xFFFFFFFFu << 0 << bytes("01") << "0xffffffff 0";
    QTest::newRow("bytes missing from the data") << true << 1u << 4 << bytes("0a0b") << "0x1 4 a b 0 0";
    QTest::newRow("data beyond the length") << true << 1u << 1 << bytes("0a0b") << "0x1 1 a";
    QTest::newRow("last byte without a sign") << true << 1u << 1 << bytes("7f") << "0x1 1 7f";
    QTest::newRow("first byte with a sign") << true << 1u << 1 << bytes("80") << "0x1 1 ffffffffffffff80";
    QTest::newRow("last byte with a sign") << true << 1u << 1 << bytes("ff") << "0x1 1 ffffffffffffffff";
}

void TestCanRawCompareMessage::textShowsIdentifierLengthAndData()
{
    QFETCH(bool, idIsSet);
    QFETCH(quint32, id);
    QFETCH(int, length);
    QFETCH(QByteArray, data);
    QFETCH(QString, text);
    CanRawCompareMessage message(false);
    message.id = {id, idIsSet};
    message.length = {static_cast<quint8>(qMax(length, 0)), length >= 0};
    message.data = data;
    message.consideration.setBit(0);
    message.fd = Qt::Checked;
    message.extraIds = {7};
    QCOMPARE(message.toString(), text);
}

void TestCanRawCompareMessage::longestLengthPrints()
{
    CanRawCompareMessage message;
    message.length.value = 127;
    QCOMPARE(message.toString(), QStringLiteral("0x0 127") + QStringLiteral(" 0").repeated(127));
    message.length.value = 255;
    QCOMPARE(message.toString(), QStringLiteral("0x0 255") + QStringLiteral(" 0").repeated(255));
}

QTEST_GUILESS_MAIN(TestCanRawCompareMessage)
#include "tst_canrawcomparemessage.moc"
