#include "frameparser.h"
#include "frametext.h"

#include <QTest>

Q_DECLARE_METATYPE(FrameInput)

namespace {
FrameInput classic(const char *identifier, const char *data)
{
    FrameInput input;
    input.identifier = QString::fromLatin1(identifier);
    input.data = QString::fromLatin1(data);
    return input;
}

FrameInput extended(const char *identifier, const char *data)
{
    FrameInput input = classic(identifier, data);
    input.extended = true;
    return input;
}

FrameInput remote(const char *identifier, const char *data)
{
    FrameInput input = classic(identifier, data);
    input.remote = true;
    return input;
}

FrameInput fd(const QByteArray &data, bool bitRateSwitch = false)
{
    FrameInput input = classic("1", data.constData());
    input.fd = true;
    input.bitRateSwitch = bitRateSwitch;
    return input;
}
} // namespace

class TestFrameParser : public QObject
{
    Q_OBJECT

private slots:
    void goodInputGivesItsFrame_data();
    void goodInputGivesItsFrame();
    void flagsReachTheFrame();
    void badInputSaysWhatToChange_data();
    void badInputSaysWhatToChange();
};

void TestFrameParser::goodInputGivesItsFrame_data()
{
    QTest::addColumn<FrameInput>("input");
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QString>("data");
    QTest::newRow("spaced bytes") << classic("123", "01 a0 FF") << 0x123u << "01 A0 FF";
    QTest::newRow("without spaces") << classic("123", "01a0ff") << 0x123u << "01 A0 FF";
    QTest::newRow("single digits are bytes") << classic("123", "1 2 a") << 0x123u << "01 02 0A";
    QTest::newRow("commas and prefixes") << classic("0x123", "0x01, 0xA0") << 0x123u << "01 A0";
    QTest::newRow("colons, points and dashes") << classic("123h", "01:02.03-04") << 0x123u << "01 02 03 04";
    QTest::newRow("surrounding space") << classic("  7FF ", "  01  ") << 0x7FFu << "01";
    QTest::newRow("no data") << classic("0", "") << 0u << "";
    QTest::newRow("eight bytes") << classic("1", "0102030405060708") << 1u << "01 02 03 04 05 06 07 08";
    QTest::newRow("lowest identifier of 29 bits") << extended("0", "") << 0u << "";
    QTest::newRow("highest identifier of 29 bits") << extended("1FFFFFFF", "") << 0x1FFFFFFFu << "";
    QTest::newRow("as the trace writes 29 bits") << extended("00000123x", "") << 0x123u << "";
    QTest::newRow("leading zeros do not count") << extended("000000000001", "") << 1u << "";
    QTest::newRow("remote") << remote("123", " ") << 0x123u << "";
    QTest::newRow("12 bytes of CAN FD") << fd("000000000000000000000000") << 1u
                                        << "00 00 00 00 00 00 00 00 00 00 00 00";
}

void TestFrameParser::goodInputGivesItsFrame()
{
    QFETCH(FrameInput, input);
    const FrameParse parse = parseFrame(input);
    QCOMPARE(parse.error, QString());
    QCOMPARE(parse.field, FrameParse::NoField);
    QTEST(parse.message.id, "id");
    QTEST(FrameText::data(parse.message), "data");
}

void TestFrameParser::flagsReachTheFrame()
{
    const CAN::CanMessage plain = parseFrame(classic("1", "")).message;
    QVERIFY(!plain.ext && !plain.rtr && !plain.fd && !plain.brs && !plain.extraFlag && !plain.errorFrame);
    QVERIFY(parseFrame(extended("1", "")).message.ext);
    QVERIFY(parseFrame(remote("1", "")).message.rtr);
    QVERIFY(parseFrame(fd("")).message.fd);
    QVERIFY(!parseFrame(fd("")).message.brs);
    QVERIFY(parseFrame(fd("", true)).message.brs);
}

void TestFrameParser::badInputSaysWhatToChange_data()
{
    QTest::addColumn<FrameInput>("input");
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("error");
    const int identifier = FrameParse::IdentifierField;
    const int data = FrameParse::DataField;
    const int flags = FrameParse::FlagsField;

    QTest::newRow("no identifier") << classic(" ", "01") << identifier << "Enter an identifier, for example 123.";
    QTest::newRow("only a prefix") << classic("0x", "01") << identifier << "Enter an identifier, for example 123.";
    QTest::newRow("letters") << classic("12G", "") << identifier
                             << "The identifier takes hexadecimal digits only: 0 to 9 and A to F.";
    QTest::newRow("a sign") << classic("-1", "") << identifier
                            << "The identifier takes hexadecimal digits only: 0 to 9 and A to F.";
    QTest::newRow("first above 11 bits") << classic("800", "") << identifier
                                         << "Identifiers above 7FF need 29 bits: switch on \"Extended\".";
    QTest::newRow("first above 29 bits") << extended("20000000", "") << identifier
                                         << "The largest identifier is 1FFFFFFF.";
    QTest::newRow("beyond 32 bits") << extended("FFFFFFFFF", "") << identifier << "The largest identifier is 1FFFFFFF.";
    QTest::newRow("marked as 29 bits") << classic("123x", "") << identifier
                                       << "The x marks an identifier of 29 bits: switch on \"Extended\".";
    QTest::newRow("no bytes") << classic("1", "hello") << data
                              << "Data are bytes in hexadecimal, for example 01 A0 FF.";
    QTest::newRow("a prefix without digits")
        << classic("1", "0x") << data << "Data are bytes in hexadecimal, for example 01 A0 FF.";
    QTest::newRow("digits of another script") << [] {
        FrameInput input = classic("1", "");
        input.data = QStringLiteral("\u0661\u0662");
        return input;
    }() << data << "Data are bytes in hexadecimal, for example 01 A0 FF.";
    QTest::newRow("a digit too many") << classic("1", "01 023") << data
                                      << "\"023\" has a digit too many or too few: a byte has two.";
    QTest::newRow("nine bytes") << classic("1", "010203040506070809") << data
                                << "These are 9 bytes; a classic frame holds at most 8. Switch on \"CAN FD\" for more.";
    QTest::newRow("too many for any frame")
        << classic("1", QByteArray(130, '0').constData()) << data << "These are 65 bytes; a frame holds at most 8.";
    QTest::newRow("no length of CAN FD") << fd(QByteArray(18, '0')) << data
                                         << "CAN FD has no frames of 9 bytes: fill up to 12.";
    QTest::newRow("just too short") << fd(QByteArray(126, '0')) << data
                                    << "CAN FD has no frames of 63 bytes: fill up to 64.";
    QTest::newRow("too many for CAN FD") << fd(QByteArray(130, '0')) << data
                                         << "These are 65 bytes; a CAN FD frame holds at most 64.";
    QTest::newRow("remote with data") << remote("1", "01") << data
                                      << "A remote frame carries no data: clear the field.";
    FrameInput contradiction = remote("1", "");
    contradiction.fd = true;
    QTest::newRow("remote in CAN FD") << contradiction << flags
                                      << "CAN FD has no remote frames: switch off \"Remote\" or \"CAN FD\".";
    contradiction = classic("1", "");
    contradiction.bitRateSwitch = true;
    QTest::newRow("switch without CAN FD")
        << contradiction << flags << "Only CAN FD frames switch the bit rate: switch on \"CAN FD\".";
}

void TestFrameParser::badInputSaysWhatToChange()
{
    QFETCH(FrameInput, input);
    const FrameParse parse = parseFrame(input);
    QVERIFY(!parse.isValid());
    QTEST(static_cast<int>(parse.field), "field");
    QTEST(parse.error, "error");
}

QTEST_APPLESS_MAIN(TestFrameParser)
#include "tst_frameparser.moc"
