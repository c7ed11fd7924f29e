#include "frametext.h"
#include "messages.h"

#include <QTest>

#include <limits>

class TestFrameText : public QObject
{
    Q_OBJECT

private slots:
    void identifierHasAllItsDigits_data();
    void identifierHasAllItsDigits();
    void kindNamesWhatIsSpecial_data();
    void kindNamesWhatIsSpecial();
    void dataAreSpacedUpperCaseBytes_data();
    void dataAreSpacedUpperCaseBytes();
    void millisecondsKeepTheMicroseconds_data();
    void millisecondsKeepTheMicroseconds();
    void timeOfDayWrapsAtMidnight_data();
    void timeOfDayWrapsAtMidnight();
    void noteReadsAsWords_data();
    void noteReadsAsWords();
    void lineHasTabsBetweenItsCells();
};

void TestFrameText::identifierHasAllItsDigits_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<bool>("extended");
    QTest::addColumn<QString>("text");
    QTest::newRow("lowest of 11 bits") << 0u << false << "000";
    QTest::newRow("highest of 11 bits") << 0x7FFu << false << "7FF";
    QTest::newRow("lowest of 29 bits") << 0u << true << "00000000x";
    QTest::newRow("highest of 29 bits") << 0x1FFFFFFFu << true << "1FFFFFFFx";
}

void TestFrameText::identifierHasAllItsDigits()
{
    QFETCH(quint32, id);
    QFETCH(bool, extended);
    QTEST(FrameText::identifier(id, extended), "text");
}

void TestFrameText::kindNamesWhatIsSpecial_data()
{
    QTest::addColumn<bool>("rtr");
    QTest::addColumn<bool>("fd");
    QTest::addColumn<bool>("brs");
    QTest::addColumn<bool>("esi");
    QTest::addColumn<bool>("errorFrame");
    QTest::addColumn<QString>("text");
    QTest::newRow("classic") << false << false << false << false << false << "CAN";
    QTest::newRow("remote") << true << false << false << false << false << "CAN remote";
    QTest::newRow("FD") << false << true << false << false << false << "CAN FD";
    QTest::newRow("FD with switch") << false << true << true << false << false << "CAN FD BRS";
    QTest::newRow("FD from a passive node") << false << true << false << true << false << "CAN FD ESI";
    QTest::newRow("FD with both") << false << true << true << true << false << "CAN FD BRS ESI";
    QTest::newRow("error") << false << false << false << false << true << "Error";
    QTest::newRow("flags of FD on a classic frame say nothing") << false << false << true << true << false << "CAN";
}

void TestFrameText::kindNamesWhatIsSpecial()
{
    QFETCH(bool, rtr);
    QFETCH(bool, fd);
    QFETCH(bool, brs);
    QFETCH(bool, esi);
    QFETCH(bool, errorFrame);
    CAN::CanMessage message;
    message.rtr = rtr;
    message.fd = fd;
    message.brs = brs;
    message.extraFlag = esi;
    message.errorFrame = errorFrame;
    QTEST(FrameText::kind(message), "text");
}

void TestFrameText::dataAreSpacedUpperCaseBytes_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<bool>("rtr");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << QByteArray() << false << "";
    QTest::newRow("one") << QByteArray("0a") << false << "0A";
    QTest::newRow("eight") << QByteArray("00010203deadbeef") << false << "00 01 02 03 DE AD BE EF";
    QTest::newRow("remote frames have none") << QByteArray("0102") << true << "";
}

void TestFrameText::dataAreSpacedUpperCaseBytes()
{
    QFETCH(QByteArray, hex);
    QFETCH(bool, rtr);
    CAN::CanMessage message = dataFrame(1, hex);
    message.rtr = rtr;
    QTEST(FrameText::data(message), "text");
}

void TestFrameText::millisecondsKeepTheMicroseconds_data()
{
    QTest::addColumn<qint64>("microseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << qint64(0) << "0.000";
    QTest::newRow("one") << qint64(1) << "0.001";
    QTest::newRow("just below a millisecond") << qint64(999) << "0.999";
    QTest::newRow("a millisecond") << qint64(1000) << "1.000";
    QTest::newRow("a day") << qint64(86400000000) << "86400000.000";
    QTest::newRow("backwards") << qint64(-1500) << "-1.500";
    QTest::newRow("farthest back") << std::numeric_limits<qint64>::min() << "-9223372036854775.808";
}

void TestFrameText::millisecondsKeepTheMicroseconds()
{
    QFETCH(qint64, microseconds);
    QTEST(FrameText::milliseconds(microseconds), "text");
}

void TestFrameText::timeOfDayWrapsAtMidnight_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("microseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("midnight") << 0 << 0 << "00:00:00.000000";
    QTest::newRow("some time") << 3 * 3600 + 25 * 60 + 7 << 42 << "03:25:07.000042";
    QTest::newRow("last moment of a day") << 86399 << 999999 << "23:59:59.999999";
    QTest::newRow("next midnight") << 86400 << 0 << "00:00:00.000000";
    QTest::newRow("before midnight") << -1 << 0 << "23:59:59.000000";
}

void TestFrameText::timeOfDayWrapsAtMidnight()
{
    QFETCH(int, seconds);
    QFETCH(int, microseconds);
    QTEST(FrameText::timeOfDay(CanTimeStamp(seconds, microseconds)), "text");
}

void TestFrameText::noteReadsAsWords_data()
{
    QTest::addColumn<QString>("note");
    QTest::addColumn<QString>("text");
    QTest::newRow("connection") << "Connect:Demo 1:500"
                                << "Connected to Demo 1 at 500 kBit/s";
    QTest::newRow("device with a colon") << "Connect:usb:3:250"
                                         << "Connected to usb:3 at 250 kBit/s";
    QTest::newRow("without bitrate") << "Connect:Gateway:0"
                                     << "Connected to Gateway";
    QTest::newRow("disconnection") << "Disconnected"
                                   << "Disconnected";
    QTest::newRow("the user's own") << "Motor was switched on"
                                    << "Motor was switched on";
    QTest::newRow("no device and bitrate") << "Connect:"
                                           << "Connect:";
    QTest::newRow("no bitrate") << "Connect:Demo 1:"
                                << "Connect:Demo 1:";
    QTest::newRow("only one colon") << "Connect:500"
                                    << "Connect:500";
    QTest::newRow("empty") << ""
                           << "";
}

void TestFrameText::noteReadsAsWords()
{
    QFETCH(QString, note);
    QTEST(FrameText::note(note), "text");
}

void TestFrameText::lineHasTabsBetweenItsCells()
{
    QCOMPARE(FrameText::line(7, 1234567, dataFrame(0x123, "0102")), QStringLiteral("7\t1234.567\tCAN\t123\t2\t01 02"));
}

QTEST_APPLESS_MAIN(TestFrameText)
#include "tst_frametext.moc"
