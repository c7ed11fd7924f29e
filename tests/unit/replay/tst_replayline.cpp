#include "logline.h"
#include "plainreplayline.h"
#include "randomframes.h"

#include <QtTest>

class TestReplayLine : public QObject
{
    Q_OBJECT

private slots:
    void logLineIsAFrame();
    void logStampIsTwoNumbers_data();
    void logStampIsTwoNumbers();
    void timeWithoutExactlyOnePointIsBroken_data();
    void timeWithoutExactlyOnePointIsBroken();
    void logIdentifierIsHexadecimal_data();
    void logIdentifierIsHexadecimal();
    void logLengthStandsBetweenTheBrackets_data();
    void logLengthStandsBetweenTheBrackets();
    void logDataReachAsFarAsLengthAndLineDo_data();
    void logDataReachAsFarAsLengthAndLineDo();
    void remoteFrameHasALengthAndNoData_data();
    void remoteFrameHasALengthAndNoData();
    void flagsStandBehindTheSemicolon_data();
    void flagsStandBehindTheSemicolon();
    void tabLineIsAFrame();
    void tabColumnsAreReadAsTheyStand_data();
    void tabColumnsAreReadAsTheyStand();
    void longTabDataFillTheFrame();
    void otherLinesAreForeign_data();
    void otherLinesAreForeign();
    void everyFrameSurvivesItsLogLine();
    void anyLineReadsAsThePlainWayReadsIt();
};

namespace {
ReplayLine parse(const QString &line)
{
    const ReplayLine result = parseReplayLine(line);
    // Whatever a test looks at: the whole result is that of the plain way.
    if (!PlainReplayLine::agrees(result, PlainReplayLine::parse(line)))
        QTest::qFail(qPrintable(QStringLiteral("not as the plain way reads it: ") + line), __FILE__, __LINE__);
    return result;
}

QByteArray dataOf(const ReplayLine &line)
{
    return line.message.message.dataToByteArray().toHex(' ');
}

/// What is shown of a line: its kind, and the frame in the form of the log.
QString summary(const QString &line)
{
    const ReplayLine result = parse(line);
    if (result.kind == ReplayLine::Foreign)
        return QStringLiteral("foreign");
    if (result.kind == ReplayLine::BrokenTime)
        return QStringLiteral("broken time");
    return QString::fromLatin1(logMessageLine(result.message).trimmed());
}
} // namespace

void TestReplayLine::logLineIsAFrame()
{
    const ReplayLine line = parse(QStringLiteral(" 1.000002 0x123/291  (2): 0a 0b;0"));
    QCOMPARE(line.kind, ReplayLine::Frame);
    QCOMPARE(line.message.timeStamp.seconds, 1);
    QCOMPARE(line.message.timeStamp.microseconds, 2);
    QCOMPARE(line.message.message.id, 0x123U);
    QCOMPARE(line.message.message.length, quint8(2));
    QCOMPARE(dataOf(line), QByteArray("0a 0b"));
    QVERIFY(!line.tabbed);
}

void TestReplayLine::logStampIsTwoNumbers_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<qint32>("seconds");
    QTest::addColumn<qint32>("microseconds");

    QTest::newRow("zeros before") << "001.000002" << 1 << 2;
    QTest::newRow("microseconds are a number, not a fraction") << "1.5" << 1 << 5;
    QTest::newRow("negative") << "-1.-00002" << -1 << -2;
    QTest::newRow("largest") << "2147483647.2147483647" << 2147483647 << 2147483647;
    QTest::newRow("too large") << "2147483648.2147483648" << 0 << 0;
    QTest::newRow("nothing before the point") << ".7" << 0 << 7;
    QTest::newRow("nothing behind the point") << "7." << 7 << 0;
    QTest::newRow("a point alone") << "." << 0 << 0;
    QTest::newRow("no numbers") << "one.two" << 0 << 0;
    QTest::newRow("hexadecimal digits") << "1a.2b" << 0 << 0;
}

void TestReplayLine::logStampIsTwoNumbers()
{
    QFETCH(QString, time);
    QFETCH(qint32, seconds);
    QFETCH(qint32, microseconds);
    const ReplayLine line = parse(time + QStringLiteral(" 0x1/1 (0): ;0"));
    QCOMPARE(line.kind, ReplayLine::Frame);
    QCOMPARE(line.message.timeStamp.seconds, seconds);
    QCOMPARE(line.message.timeStamp.microseconds, microseconds);
}

void TestReplayLine::timeWithoutExactlyOnePointIsBroken_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("log, no point") << "1 0x1/1 (0): ;0";
    QTest::newRow("log, two points") << "1.2.3 0x1/1 (0): ;0";
    QTest::newRow("log, a comma") << "1,2 0x1/1 (0): ;0";
    QTest::newRow("tabs, no point") << "1\t1\t\t\t00";
    QTest::newRow("tabs, two points") << "1.2.3\t1\t\t\t00";
    QTest::newRow("tabs, no time") << "\t1\t\t\t00";
}

void TestReplayLine::timeWithoutExactlyOnePointIsBroken()
{
    QFETCH(QString, line);
    QCOMPARE(parse(line).kind, ReplayLine::BrokenTime);
}

void TestReplayLine::logIdentifierIsHexadecimal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("id");

    QTest::newRow("with prefix") << "0x123/291" << 0x123U;
    QTest::newRow("without prefix") << "123/291" << 0x123U;
    QTest::newRow("in capitals") << "0XABC/2748" << 0xABCU;
    QTest::newRow("without the second form") << "7ff" << 0x7FFU;
    QTest::newRow("the second form does not count") << "0x7ff/1" << 0x7FFU;
    QTest::newRow("up to the first slash") << "0x12/34/56" << 0x12U;
    QTest::newRow("largest extended one") << "0x1fffffff/536870911" << 0x1FFFFFFFU;
    QTest::newRow("32 bits") << "0xffffffff/4294967295" << 0xFFFFFFFFU;
    QTest::newRow("33 bits") << "0x100000000/4294967296" << 0U;
    QTest::newRow("nothing before the slash") << "/291" << 0U;
    QTest::newRow("prefix alone") << "0x/291" << 0U;
    QTest::newRow("no number") << "xyz/291" << 0U;
    QTest::newRow("negative") << "-1/1" << 0U;
}

void TestReplayLine::logIdentifierIsHexadecimal()
{
    QFETCH(QString, text);
    QFETCH(quint32, id);
    QCOMPARE(parse(QStringLiteral("1.0 %1 (0): ;0").arg(text)).message.message.id, id);
}

void TestReplayLine::logLengthStandsBetweenTheBrackets_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint8>("length");

    QTest::newRow("zero") << "(0):" << quint8(0);
    QTest::newRow("one digit") << "(8):" << quint8(8);
    QTest::newRow("two digits") << "(64):" << quint8(64);
    QTest::newRow("hexadecimal") << "(0x10):" << quint8(16);
    QTest::newRow("hexadecimal with a sign") << "(+0x10):" << quint8(16);
    QTest::newRow("octal") << "(010):" << quint8(8);
    QTest::newRow("more than a frame holds") << "(200):" << quint8(200);
    QTest::newRow("nine bits") << "(257):" << quint8(1);
    QTest::newRow("33 bits") << "(4294967297):" << quint8(0);
    QTest::newRow("nothing") << "():" << quint8(0);
    QTest::newRow("the end alone") << "):" << quint8(0);
    QTest::newRow("closed too early") << ")8):" << quint8(0);
    QTest::newRow("closed twice") << "(3)5):" << quint8(3);
    QTest::newRow("the first character is not looked at") << "[8):" << quint8(8);
    QTest::newRow("no number") << "(few):" << quint8(0);
    QTest::newRow("negative") << "(-1):" << quint8(0);
}

void TestReplayLine::logLengthStandsBetweenTheBrackets()
{
    QFETCH(QString, text);
    QFETCH(quint8, length);
    const ReplayLine line = parse(QStringLiteral("1.0 0x1/1 %1 ;0").arg(text));
    QCOMPARE(line.kind, ReplayLine::Frame);
    QCOMPARE(line.message.message.length, length);
}

void TestReplayLine::logDataReachAsFarAsLengthAndLineDo_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("data");

    const QString many = QStringLiteral("11 ").repeated(70);
    QTest::newRow("all there") << "(2): 0a 0b;0" << QByteArray("0a 0b");
    QTest::newRow("fewer than the length says") << "(3): 0a 0b;0" << QByteArray("0a 0b 00");
    QTest::newRow("more than the length says") << "(1): 0a 0b;0" << QByteArray("0a");
    QTest::newRow("none") << "(2): ;0" << QByteArray("00 00");
    QTest::newRow("capitals, one digit, prefix") << "(3): AB c 0xd;0" << QByteArray("ab 0c 0d");
    QTest::newRow("only the low byte of a larger number") << "(2): 1ff 100;0" << QByteArray("ff 00");
    QTest::newRow("no number") << "(3): 01 zz 03;0" << QByteArray("01 00 03");
    QTest::newRow("number without an end") << "(1): 111111111;0" << QByteArray("00");
    QTest::newRow("more than a frame holds")
        << QStringLiteral("(70): %1;2").arg(many) << QByteArray("11 ").repeated(64).trimmed();
    QTest::newRow("a semicolon without flags sticks to the last byte") << "(2): 0a 0b;" << QByteArray("0a 00");
    QTest::newRow("so do two semicolons") << "(2): 0a 0b;0;1" << QByteArray("0a 00");
}

void TestReplayLine::logDataReachAsFarAsLengthAndLineDo()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, data);
    QCOMPARE(dataOf(parse(QStringLiteral("1.0 0x1/1 ") + text)), data);
}

void TestReplayLine::remoteFrameHasALengthAndNoData_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("remote");

    QTest::newRow("as the log says it") << "Remote Transmission Request;0" << true;
    QTest::newRow("the first word alone") << "Remote;0" << true;
    QTest::newRow("behind data") << "01 02 Remote;0" << true;
    QTest::newRow("behind more data than the length says") << "01 02 03 04 05 Remote;0" << true;
    QTest::newRow("in other letters") << "remote Transmission Request;0" << false;
    QTest::newRow("as a part of a word") << "Remotely;0" << false;
    QTest::newRow("with the semicolon sticking to it") << "Remote;" << false;
}

void TestReplayLine::remoteFrameHasALengthAndNoData()
{
    QFETCH(QString, text);
    QFETCH(bool, remote);
    const CAN::CanMessage frame = parse(QStringLiteral("1.0 0x1/1 (4): ") + text).message.message;
    QCOMPARE(frame.rtr, remote);
    QCOMPARE(frame.length, quint8(4));
    QCOMPARE(frame.dataToByteArray(), QByteArray(4, '\0'));
}

void TestReplayLine::flagsStandBehindTheSemicolon_data()
{
    QTest::addColumn<QString>("end");
    QTest::addColumn<int>("flags");

    for (int flags = 0; flags < 16; ++flags)
        QTest::newRow(qPrintable(QString::number(flags))) << QStringLiteral(";%1").arg(flags) << flags;
    QTest::newRow("bits beyond the four") << ";18" << 2;
    QTest::newRow("no semicolon") << "" << 0;
    QTest::newRow("nothing behind the semicolon") << ";" << 0;
    QTest::newRow("the last of several") << ";1;2" << 2;
    QTest::newRow("empty parts do not count") << ";;7;;" << 7;
    QTest::newRow("with blanks") << "; 5 " << 5;
    QTest::newRow("hexadecimal") << ";0x1" << 0;
    QTest::newRow("negative") << ";-1" << 0;
    QTest::newRow("no number") << ";flags" << 0;
}

void TestReplayLine::flagsStandBehindTheSemicolon()
{
    QFETCH(QString, end);
    QFETCH(int, flags);
    const CAN::CanMessage frame = parse(QStringLiteral("1.0 0x1/1 (0): ") + end).message.message;
    QCOMPARE(int(frame.ext) + 2 * int(frame.fd) + 4 * int(frame.brs) + 8 * int(frame.extraFlag), flags);
}

void TestReplayLine::tabLineIsAFrame()
{
    const QString text = QStringLiteral("12.000345\t291/0x123\tRx\tignored\t 0a  FF ");
    const ReplayLine line = parse(text);
    QCOMPARE(line.kind, ReplayLine::Frame);
    QCOMPARE(line.message.timeStamp, CanTimeStamp(12, 345));
    QCOMPARE(line.message.message.id, 291U);
    QCOMPARE(line.message.message.length, quint8(2));
    QCOMPARE(dataOf(line), QByteArray("0a ff"));
    QVERIFY(line.tabbed);
    QCOMPARE(line.tabData.toString(), QStringLiteral(" 0a  FF "));
}

void TestReplayLine::tabColumnsAreReadAsTheyStand_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("frame");

    QTest::newRow("no data") << "1.2\t3\t\t\t"
                             << "1.000002 0x003/3    (0): ;0";
    QTest::newRow("more columns") << "1.2\t3\t\t\t01\t02\t03"
                                  << "1.000002 0x003/3    (1): 01;0";
    QTest::newRow("blanks around the time") << " 1.2 \t3\t\t\t01"
                                            << "1.000002 0x003/3    (1): 01;0";
    QTest::newRow("the identifier is decimal") << "1.2\t10\t\t\t01"
                                               << "1.000002 0x00a/10   (1): 01;0";
    QTest::newRow("hexadecimal is no identifier") << "1.2\t0x10\t\t\t01"
                                                  << "1.000002 0x000/0    (1): 01;0";
    QTest::newRow("no remote frames") << "1.2\t3\t\t\tRemote"
                                      << "1.000002 0x003/3    (1): 00;0";
    QTest::newRow("no flags") << "1.2\t3\t\t\t01 02;15"
                              << "1.000002 0x003/3    (2): 01 00;0";
}

void TestReplayLine::tabColumnsAreReadAsTheyStand()
{
    QFETCH(QString, line);
    QTEST(summary(line), "frame");
}

void TestReplayLine::longTabDataFillTheFrame()
{
    const ReplayLine line = parse(QStringLiteral("1.2\t3\t\t\t") + QStringLiteral("11 ").repeated(300));
    QCOMPARE(line.message.message.length, quint8(300 % 256));
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(line.message.message.data), CAN::maxDataLength),
             QByteArray(CAN::maxDataLength, '\x11'));
}

void TestReplayLine::otherLinesAreForeign_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("empty") << "";
    QTest::newRow("blanks") << "   ";
    QTest::newRow("semicolons") << ";;;";
    QTest::newRow("head of a log") << "# timestamp id (dlc): data";
    QTest::newRow("stop at an identifier") << "# Stop CAN ID (0x123) detected";
    QTest::newRow("stop at a message") << "# Stop CAN Message detected";
    QTest::newRow("lost connection") << "CAN connection lost";
    QTest::newRow("two words") << "1.0 (0):";
    QTest::newRow("no bracket") << "1.0 0x1/1 2: 0a 0b;0";
    QTest::newRow("no colon") << "1.0 0x1/1 (2) 0a 0b;0";
    QTest::newRow("the length is the second word") << "1.0 (2): 0x1/1 0a 0b;0";
    QTest::newRow("four columns") << "1.0\t1\t\t";
}

void TestReplayLine::otherLinesAreForeign()
{
    QFETCH(QString, line);
    QCOMPARE(parse(line).kind, ReplayLine::Foreign);
}

void TestReplayLine::everyFrameSurvivesItsLogLine()
{
    RandomFrames random;
    for (int i = 0; i < 200000; ++i) {
        const CAN::CanRxMessage record = random.next();
        const QByteArray text = logMessageLine(record);
        const ReplayLine line = parseReplayLine(QString::fromLatin1(text).chopped(1));
        QVERIFY2(line.kind == ReplayLine::Frame && line.message == record, text.constData());
    }
}

void TestReplayLine::anyLineReadsAsThePlainWayReadsIt()
{
    // Lines from the words that mean something, and some that nearly do.
    const QStringList words = {
        QStringLiteral(" "),      QStringLiteral("\t"),   QStringLiteral(";"),     QStringLiteral("."),
        QStringLiteral("/"),      QStringLiteral("("),    QStringLiteral("):"),    QStringLiteral(")"),
        QStringLiteral("0x"),     QStringLiteral("12"),   QStringLiteral("0"),     QStringLiteral("ff"),
        QStringLiteral("Remote"), QStringLiteral("-1"),   QStringLiteral("+2"),    QStringLiteral("1.000002"),
        QStringLiteral(" (2): "), QStringLiteral(" (8)"), QStringLiteral(" 0x1 "), QStringLiteral("99999999999"),
        QString(QChar(0x2212)),   QString(QChar(0xA0)),   QString(QChar(0)),       QStringLiteral("1,000"),
    };
    RandomFrames random;
    for (int i = 0; i < 200000; ++i) {
        QString line;
        for (int count = random.number(0, 20); count > 0; --count)
            line += words[random.number(0, words.size() - 1)];
        QVERIFY2(PlainReplayLine::agrees(parseReplayLine(line), PlainReplayLine::parse(line)), qPrintable(line));
    }
}

QTEST_APPLESS_MAIN(TestReplayLine)
#include "tst_replayline.moc"
