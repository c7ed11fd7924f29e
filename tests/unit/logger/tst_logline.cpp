#include "logline.h"
#include "plainlogtext.h"
#include "randomframes.h"

#include <QtTest>

#include <functional>
#include <limits>

class TestLogLine : public QObject
{
    Q_OBJECT

private slots:
    void headerNamesTheColumns();
    void stampIsRightAlignedInItsColumns_data();
    void stampIsRightAlignedInItsColumns();
    void identifierStandsInBothBases_data();
    void identifierStandsInBothBases();
    void dataFollowInLowerCase_data();
    void dataFollowInLowerCase();
    void remoteFrameShowsItsLengthAndNoData();
    void eachFlagHasItsBit_data();
    void eachFlagHasItsBit();
    void anyRecordMakesTheLineOfThePlainWay();
    void stopIdentifierIsNamed_data();
    void stopIdentifierIsNamed();
    void endsAreTold();
};

namespace {
CAN::CanRxMessage frame(quint32 id, const QByteArray &data = {})
{
    CAN::CanRxMessage record;
    record.message.id = id;
    record.message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), record.message.data);
    return record;
}
} // namespace

void TestLogLine::headerNamesTheColumns()
{
    QCOMPARE(logHeaderLine(), QByteArray("# timestamp id (dlc): data\n"));
}

void TestLogLine::stampIsRightAlignedInItsColumns_data()
{
    QTest::addColumn<qint32>("seconds");
    QTest::addColumn<qint32>("microseconds");
    QTest::addColumn<QByteArray>("head");

    const qint32 most = std::numeric_limits<qint32>::max();
    const qint32 least = std::numeric_limits<qint32>::min();
    QTest::newRow("zero") << 0 << 0 << QByteArray("   0.000000 0x");
    QTest::newRow("one digit each") << 1 << 2 << QByteArray("   1.000002 0x");
    QTest::newRow("columns just filled") << 999 << 999999 << QByteArray(" 999.999999 0x");
    QTest::newRow("seconds widen their column") << 1000 << 1 << QByteArray(" 1000.000001 0x");
    QTest::newRow("microseconds widen their column") << 1 << 1000000 << QByteArray("   1.1000000 0x");
    QTest::newRow("negative") << -1 << -2 << QByteArray("  -1.-00002 0x");
    QTest::newRow("negative, columns just filled") << -99 << -99999 << QByteArray(" -99.-99999 0x");
    QTest::newRow("largest") << most << most << QByteArray(" 2147483647.2147483647 0x");
    QTest::newRow("smallest") << least << least << QByteArray(" -2147483648.-2147483648 0x");
}

void TestLogLine::stampIsRightAlignedInItsColumns()
{
    QFETCH(qint32, seconds);
    QFETCH(qint32, microseconds);
    QFETCH(QByteArray, head);
    CAN::CanRxMessage record = frame(0);
    record.timeStamp = {seconds, microseconds};
    QCOMPARE(logMessageLine(record), head + "000/0    (0): ;0\n");
}

void TestLogLine::identifierStandsInBothBases_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("zero") << 0x0U << QByteArray("0x000/0    (");
    QTest::newRow("short") << 0x5U << QByteArray("0x005/5    (");
    QTest::newRow("largest standard one") << 0x7FFU << QByteArray("0x7ff/2047 (");
    QTest::newRow("one that outgrows the columns") << 0x2710U << QByteArray("0x2710/10000 (");
    QTest::newRow("largest extended one") << 0x1FFFFFFFU << QByteArray("0x1fffffff/536870911 (");
    QTest::newRow("largest number") << 0xFFFFFFFFU << QByteArray("0xffffffff/4294967295 (");
}

void TestLogLine::identifierStandsInBothBases()
{
    QFETCH(quint32, id);
    QFETCH(QByteArray, text);
    QCOMPARE(logMessageLine(frame(id)), "   0.000000 " + text + "0): ;0\n");
}

void TestLogLine::dataFollowInLowerCase_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("none") << QByteArray() << QByteArray("(0): ;0\n");
    QTest::newRow("one byte") << QByteArray("\x0a", 1) << QByteArray("(1): 0a;0\n");
    QTest::newRow("two bytes") << QByteArray("\xAB\x00", 2) << QByteArray("(2): ab 00;0\n");
    QTest::newRow("the longest payload") << QByteArray(64, '\x11')
                                         << "(64): 11" + QByteArray(" 11").repeated(63) + ";0\n";
    QTest::newRow("more than there is room for")
        << QByteArray(64, '\x11') + QByteArray(3, '\0') << "(67): 11" + QByteArray(" 11").repeated(63) + ";0\n";
}

void TestLogLine::dataFollowInLowerCase()
{
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, text);
    CAN::CanRxMessage record = frame(1, data.left(CAN::maxDataLength));
    record.message.length = static_cast<quint8>(data.size());
    QCOMPARE(logMessageLine(record), "   0.000000 0x001/1    " + text);
}

void TestLogLine::remoteFrameShowsItsLengthAndNoData()
{
    CAN::CanRxMessage record = frame(0x123, QByteArray(4, '\xFF'));
    record.message.rtr = true;
    QCOMPARE(logMessageLine(record), QByteArray("   0.000000 0x123/291  (4): Remote Transmission Request;0\n"));
}

void TestLogLine::eachFlagHasItsBit_data()
{
    QTest::addColumn<int>("flags");
    for (int flags = 0; flags < 16; ++flags)
        QTest::newRow(qPrintable(QString::number(flags))) << flags;
}

void TestLogLine::eachFlagHasItsBit()
{
    QFETCH(int, flags);
    CAN::CanRxMessage record = frame(1);
    record.message.ext = (flags & 1) != 0;
    record.message.fd = (flags & 2) != 0;
    record.message.brs = (flags & 4) != 0;
    record.message.extraFlag = (flags & 8) != 0;
    QCOMPARE(logMessageLine(record), "   0.000000 0x001/1    (0): ;" + QByteArray::number(flags) + '\n');
}

void TestLogLine::anyRecordMakesTheLineOfThePlainWay()
{
    RandomFrames random;
    const auto anyNumber = [&random] {
        return static_cast<qint32>(random.number<qint64>(-2147483648LL, 2147483647LL)) >> random.number(0, 31);
    };
    for (int i = 0; i < 100000; ++i) {
        CAN::CanRxMessage record = random.next();
        QCOMPARE(logMessageLine(record), PlainLogText::messageLine(record));
        // Now one that no adapter makes.
        record.timeStamp = {anyNumber(), anyNumber()};
        record.message.id = static_cast<quint32>(anyNumber());
        record.message.length = random.number<quint8>(0, 255);
        record.message.rtr = random.flip();
        QCOMPARE(logMessageLine(record), PlainLogText::messageLine(record));
    }
}

void TestLogLine::stopIdentifierIsNamed_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("short") << 0x5U << QByteArray("# Stop CAN ID (0x005) detected\n");
    QTest::newRow("standard") << 0x7ABU << QByteArray("# Stop CAN ID (0x7ab) detected\n");
    QTest::newRow("extended") << 0x1FFFFFFFU << QByteArray("# Stop CAN ID (0x1fffffff) detected\n");
}

void TestLogLine::stopIdentifierIsNamed()
{
    QFETCH(quint32, id);
    QTEST(logStopIdentifierLine(id), "line");
}

void TestLogLine::endsAreTold()
{
    QCOMPARE(logStopMessageLine(), QByteArray("# Stop CAN Message detected\n"));
    QCOMPARE(logConnectionLostLine(), QByteArray("CAN connection lost\n"));
}

QTEST_APPLESS_MAIN(TestLogLine)
#include "tst_logline.moc"
