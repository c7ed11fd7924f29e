#include "messages.h"
#include "messagetemplate.h"
#include "templatecomparison.h"

#include <QTest>

Q_DECLARE_METATYPE(CANRAW::CanRawCompareMessage)

class TestMessageTemplate : public QObject
{
    Q_OBJECT

private slots:
    void templateOfAFrameMatchesOnlyThatFrame();
    void templateOfAnIdentifierMatchesWhateverItCarries();
    void templateOfEveryFrameMatchesAll();
    void frameComesBackToTheFields_data();
    void frameComesBackToTheFields();
    void openPartsAreClearInTheFields();
    void openIdentifierLeavesTheFieldEmpty();
    void openLengthReachesToTheLastByteThatIsNotZero();
    void missingBytesAreZero();
    void largeIdentifierMakesTheFrameExtended();
    void manyBytesMakeACanFdFrame();
    void textNamesWhatIsCompared_data();
    void textNamesWhatIsCompared();
};

void TestMessageTemplate::templateOfAFrameMatchesOnlyThatFrame()
{
    const CAN::CanMessage frame = dataFrame(0x181, "0105");
    const CANRAW::CanRawCompareMessage pattern = MessageTemplate::fromFrame(frame);
    QVERIFY(CANRAW::matches(pattern, at(0, frame)));
    QVERIFY(!CANRAW::matches(pattern, at(0, dataFrame(0x182, "0105"))));
    QVERIFY(!CANRAW::matches(pattern, at(0, dataFrame(0x181, "0106"))));
    QVERIFY(!CANRAW::matches(pattern, at(0, dataFrame(0x181, "01"))));
    QVERIFY(!CANRAW::matches(pattern, at(0, dataFrame(0x181, "0105", true))));
    CAN::CanMessage fd = frame;
    fd.fd = true;
    QVERIFY(!CANRAW::matches(pattern, at(0, fd)));
}

void TestMessageTemplate::templateOfAnIdentifierMatchesWhateverItCarries()
{
    const CANRAW::CanRawCompareMessage pattern = MessageTemplate::forIdentifier(dataFrame(0x181, "0105"));
    QVERIFY(CANRAW::matches(pattern, at(0, dataFrame(0x181))));
    QVERIFY(CANRAW::matches(pattern, at(0, dataFrame(0x181, "FFFFFFFFFFFFFFFF"))));
    CAN::CanMessage fd = dataFrame(0x181, "01");
    fd.fd = fd.brs = true;
    QVERIFY(CANRAW::matches(pattern, at(0, fd)));
    QVERIFY(!CANRAW::matches(pattern, at(0, dataFrame(0x180, "0105"))));
    QVERIFY(!CANRAW::matches(pattern, at(0, dataFrame(0x181, "0105", true))));
}

void TestMessageTemplate::templateOfEveryFrameMatchesAll()
{
    const CANRAW::CanRawCompareMessage pattern = MessageTemplate::forEveryFrame();
    QVERIFY(CANRAW::matches(pattern, at(0, dataFrame(0))));
    QVERIFY(CANRAW::matches(pattern, at(0, dataFrame(0x1FFFFFFF, "0102", true))));
}

void TestMessageTemplate::frameComesBackToTheFields_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<bool>("extended");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<bool>("fd");
    QTest::newRow("classic") << 0x123U << false << QByteArray("deadbeef") << false;
    QTest::newRow("no data") << 0U << false << QByteArray() << false;
    QTest::newRow("extended with a small identifier") << 0x12U << true << QByteArray("00") << false;
    QTest::newRow("CAN FD") << 0x7FFU << false << QByteArray("00").repeated(64) << true;
}

void TestMessageTemplate::frameComesBackToTheFields()
{
    QFETCH(quint32, id);
    QFETCH(bool, extended);
    QFETCH(QByteArray, hex);
    QFETCH(bool, fd);
    CAN::CanMessage frame = dataFrame(id, hex.constData(), extended);
    frame.fd = frame.brs = fd;
    const FrameParse parse = parseFrame(MessageTemplate::toInput(MessageTemplate::fromFrame(frame)));
    QVERIFY2(parse.isValid(), qPrintable(parse.error));
    QVERIFY(parse.message == frame);
}

void TestMessageTemplate::openPartsAreClearInTheFields()
{
    const FrameInput input = MessageTemplate::toInput(MessageTemplate::forEveryFrame());
    QVERIFY(!input.extended);
    QVERIFY(!input.remote);
    QVERIFY(!input.fd);
    QVERIFY(!input.bitRateSwitch);
    QCOMPARE(input.data, QString());
}

void TestMessageTemplate::openIdentifierLeavesTheFieldEmpty()
{
    CANRAW::CanRawCompareMessage pattern;
    pattern.id = {0x123, false};
    QCOMPARE(MessageTemplate::toInput(pattern).identifier, QString());
}

void TestMessageTemplate::openLengthReachesToTheLastByteThatIsNotZero()
{
    CANRAW::CanRawCompareMessage pattern = MessageTemplate::forEveryFrame();
    pattern.data[0] = 1;
    pattern.data[2] = 3;
    QCOMPARE(MessageTemplate::toInput(pattern).data, QStringLiteral("01 00 03"));
}

void TestMessageTemplate::missingBytesAreZero()
{
    CANRAW::CanRawCompareMessage pattern;
    pattern.length = {3, true};
    pattern.data = QByteArray(1, '\x11');
    QCOMPARE(MessageTemplate::toInput(pattern).data, QStringLiteral("11 00 00"));
}

void TestMessageTemplate::largeIdentifierMakesTheFrameExtended()
{
    CANRAW::CanRawCompareMessage pattern;
    pattern.id = {0x800, true};
    const FrameInput input = MessageTemplate::toInput(pattern);
    QVERIFY(input.extended);
    QCOMPARE(input.identifier, QStringLiteral("00000800"));
}

void TestMessageTemplate::manyBytesMakeACanFdFrame()
{
    CANRAW::CanRawCompareMessage pattern;
    pattern.length = {12, true};
    QVERIFY(MessageTemplate::toInput(pattern).fd);
}

void TestMessageTemplate::textNamesWhatIsCompared_data()
{
    QTest::addColumn<CANRAW::CanRawCompareMessage>("pattern");
    QTest::addColumn<QString>("text");
    QTest::newRow("everything") << MessageTemplate::forEveryFrame() << QStringLiteral("any identifier");
    QTest::newRow("one frame") << MessageTemplate::fromFrame(dataFrame(0x181, "01F5"))
                               << QStringLiteral("181, 2 bytes, 01 F5");
    QTest::newRow("an identifier") << MessageTemplate::forIdentifier(dataFrame(0x12, "01", true))
                                   << QStringLiteral("00000012x");
    CANRAW::CanRawCompareMessage third = MessageTemplate::forIdentifier(dataFrame(0x181, "010203"));
    third.consideration.setBit(2);
    QTest::newRow("one byte") << third << QStringLiteral("181, XX XX 03");
    CANRAW::CanRawCompareMessage remote = MessageTemplate::forEveryFrame();
    remote.rtr = Qt::Checked;
    QTest::newRow("remote frames") << remote << QStringLiteral("any identifier, remote");
    CANRAW::CanRawCompareMessage fd = MessageTemplate::forEveryFrame();
    fd.fd = fd.brs = Qt::Checked;
    fd.length = {1, true};
    QTest::newRow("CAN FD") << fd << QStringLiteral("any identifier, CAN FD BRS, 1 byte");
}

void TestMessageTemplate::textNamesWhatIsCompared()
{
    QFETCH(CANRAW::CanRawCompareMessage, pattern);
    QTEST(MessageTemplate::text(pattern), "text");
}

QTEST_APPLESS_MAIN(TestMessageTemplate)
#include "tst_messagetemplate.moc"
