#include "identifierstatistics.h"
#include "messages.h"

#include <QTest>

namespace {
/// Takes in the frames as a model does.
void feed(IdentifierStatistics &statistics, const QVector<CAN::CanRxMessage> &frames)
{
    statistics.insert(statistics.newKeys(frames));
    for (const CAN::CanRxMessage &frame : frames)
        statistics.add(frame);
}

QVector<quint32> identifiers(const IdentifierStatistics &statistics)
{
    QVector<quint32> ids;
    for (int row = 0; row < statistics.rowCount(); ++row)
        ids.append(statistics.at(row).last.message.id);
    return ids;
}
} // namespace

class TestIdentifierStatistics : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreInOrderOfIdentifiers();
    void elevenAndTwentyNineBitsAreDifferentIdentifiers();
    void errorFramesShareTheLastRow();
    void rowsKeepTheirContentWhenOthersComeInBetween();
    void periodsAreMeasured();
    void periodIsNeverNegative();
    void identifiersBeyondTheLimitAreCountedOnly();
    void clearForgetsEverything();
};

void TestIdentifierStatistics::rowsAreInOrderOfIdentifiers()
{
    IdentifierStatistics statistics;
    feed(statistics,
         {at(0, dataFrame(0x300)), at(0, dataFrame(0x100)), at(0, dataFrame(0x200)), at(0, dataFrame(0x100))});
    feed(statistics, {at(0, dataFrame(0x050)), at(0, dataFrame(0x250)), at(0, dataFrame(0x400))});
    QCOMPARE(identifiers(statistics), (QVector<quint32>{0x050, 0x100, 0x200, 0x250, 0x300, 0x400}));
}

void TestIdentifierStatistics::elevenAndTwentyNineBitsAreDifferentIdentifiers()
{
    IdentifierStatistics statistics;
    feed(statistics, {at(0, dataFrame(0x1, "", true)), at(0, dataFrame(0x7FF)), at(0, dataFrame(0x1))});
    QCOMPARE(identifiers(statistics), (QVector<quint32>{0x1, 0x7FF, 0x1}));
    QVERIFY(!statistics.at(0).last.message.ext);
    QVERIFY(statistics.at(2).last.message.ext);
}

void TestIdentifierStatistics::errorFramesShareTheLastRow()
{
    CAN::CanMessage error = dataFrame(0x20000004);
    error.errorFrame = true;
    CAN::CanMessage otherError = dataFrame(0x1);
    otherError.errorFrame = true;
    IdentifierStatistics statistics;
    feed(statistics, {at(0, error), at(0, dataFrame(0x1FFFFFFF, "", true)), at(0, otherError)});
    QCOMPARE(statistics.rowCount(), 2);
    QVERIFY(statistics.at(1).last.message.errorFrame);
    QCOMPARE(statistics.at(1).count, 2ULL);
}

void TestIdentifierStatistics::rowsKeepTheirContentWhenOthersComeInBetween()
{
    IdentifierStatistics statistics;
    feed(statistics, {at(0, dataFrame(0x100, "01")), at(0, dataFrame(0x300, "03")), at(5, dataFrame(0x300, "33"))});
    feed(statistics, {at(9, dataFrame(0x200, "02"))});
    QCOMPARE(statistics.at(0).last.message.data[0], quint8(0x01));
    QCOMPARE(statistics.at(1).last.message.data[0], quint8(0x02));
    QCOMPARE(statistics.at(1).count, 1ULL);
    QCOMPARE(statistics.at(2).last.message.data[0], quint8(0x33));
    QCOMPARE(statistics.at(2).count, 2ULL);
}

void TestIdentifierStatistics::periodsAreMeasured()
{
    IdentifierStatistics statistics;
    feed(statistics, {at(999'000, dataFrame(1))});
    QCOMPARE(statistics.at(0).period, qint64(-1));
    QCOMPARE(statistics.at(0).averagePeriod(), qint64(-1));
    feed(statistics, {at(1'009'000, dataFrame(1)), at(1'021'000, dataFrame(1)), at(1'029'000, dataFrame(1))});
    QCOMPARE(statistics.at(0).period, qint64(8'000));
    QCOMPARE(statistics.at(0).minPeriod, qint64(8'000));
    QCOMPARE(statistics.at(0).maxPeriod, qint64(12'000));
    QCOMPARE(statistics.at(0).averagePeriod(), qint64(10'000));
}

void TestIdentifierStatistics::periodIsNeverNegative()
{
    IdentifierStatistics statistics;
    feed(statistics, {at(1000, dataFrame(1)), at(500, dataFrame(1))});
    QCOMPARE(statistics.at(0).period, qint64(0));
    QCOMPARE(statistics.at(0).averagePeriod(), qint64(0));
}

void TestIdentifierStatistics::identifiersBeyondTheLimitAreCountedOnly()
{
    IdentifierStatistics statistics;
    QVector<CAN::CanRxMessage> flood;
    for (int id = 0; id < IdentifierStatistics::maxIdentifiers + 3; ++id)
        flood.append(at(id, dataFrame(static_cast<quint32>(id), "", true)));
    feed(statistics, flood);
    QCOMPARE(statistics.rowCount(), IdentifierStatistics::maxIdentifiers);
    QCOMPARE(statistics.unlistedFrames(), 3ULL);
    QVERIFY(statistics.newKeys({at(0, dataFrame(0x1FFFFFFF, "", true))}).isEmpty());
    QCOMPARE(statistics.add(at(0, dataFrame(0x1FFFFFFF, "", true))), -1);
    QCOMPARE(statistics.add(at(0, dataFrame(5, "", true))), 5);
    QCOMPARE(statistics.at(5).count, 2ULL);
}

void TestIdentifierStatistics::clearForgetsEverything()
{
    IdentifierStatistics statistics;
    feed(statistics, {at(0, dataFrame(1)), at(0, dataFrame(2))});
    statistics.clear();
    QCOMPARE(statistics.rowCount(), 0);
    feed(statistics, {at(0, dataFrame(2))});
    QCOMPARE(statistics.at(0).count, 1ULL);
}

QTEST_APPLESS_MAIN(TestIdentifierStatistics)
#include "tst_identifierstatistics.moc"
