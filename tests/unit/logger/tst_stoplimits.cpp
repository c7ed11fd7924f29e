#include "stoplimits.h"

#include <QtTest>

#include <limits>

class TestStopLimits : public QObject
{
    Q_OBJECT

private slots:
    void sizeIsReachedWithTheLastByte_data();
    void sizeIsReachedWithTheLastByte();
    void countIsReachedWithTheLastMessage_data();
    void countIsReachedWithTheLastMessage();
};

void TestStopLimits::sizeIsReachedWithTheLastByte_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<qint32>("limit");
    QTest::addColumn<bool>("reached");

    const qint32 most = std::numeric_limits<qint32>::max();
    QTest::newRow("no limit worth the name") << 0LL << 0 << true;
    QTest::newRow("one byte less") << 1023999LL << 1 << false;
    QTest::newRow("one megabyte") << 1024000LL << 1 << true;
    QTest::newRow("one of 10^6 bytes") << 1000000LL << 1 << false;
    QTest::newRow("just below a hundred") << 102399999LL << 100 << false;
    QTest::newRow("a hundred") << 102400000LL << 100 << true;
    QTest::newRow("just below the largest limit") << 1024000LL * most - 1 << most << false;
    QTest::newRow("the largest limit") << 1024000LL * most << most << true;
}

void TestStopLimits::sizeIsReachedWithTheLastByte()
{
    QFETCH(qint64, bytes);
    QFETCH(qint32, limit);
    QTEST(isFileSizeReached(bytes, limit), "reached");
}

void TestStopLimits::countIsReachedWithTheLastMessage_data()
{
    QTest::addColumn<quint32>("messages");
    QTest::addColumn<int>("limit");
    QTest::addColumn<bool>("reached");

    QTest::newRow("nothing to wait for") << 0U << 0 << true;
    QTest::newRow("one missing") << 9U << 10 << false;
    QTest::newRow("the last one") << 10U << 10 << true;
    QTest::newRow("more than fit a signed number") << 0x80000000U << 10 << true;
}

void TestStopLimits::countIsReachedWithTheLastMessage()
{
    QFETCH(quint32, messages);
    QFETCH(int, limit);
    QTEST(isCountReached(messages, limit), "reached");
}

QTEST_APPLESS_MAIN(TestStopLimits)
#include "tst_stoplimits.moc"
