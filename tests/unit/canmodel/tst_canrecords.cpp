#include "adaptercontract.h"

#include <QDataStream>
#include <QMetaEnum>
#include <QtTest>

#include <limits>

namespace {
CAN::CanMessage message(quint32 id, const QByteArray &data)
{
    CAN::CanMessage result;
    result.id = id;
    result.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), reinterpret_cast<char *>(result.data));
    return result;
}

template <typename Record>
Record throughStream(const Record &record)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << record;
    Record result;
    QDataStream in(bytes);
    in >> result;
    return result;
}

/// Refuses every conversion to a bitrate record.
struct Unwilling
{
    CAN::CANBitrateDesc toBitrate(bool *ok) const
    {
        *ok = false;
        return {QStringLiteral("never seen"), 1, 1.0};
    }
};
} // namespace
Q_DECLARE_METATYPE(Unwilling)

class TestCanRecords : public QObject
{
    Q_OBJECT

private slots:
    void timeOfDayWrapsAtMidnight_data();
    void timeOfDayWrapsAtMidnight();
    void differenceIsOtherMinusThis_data();
    void differenceIsOtherMinusThis();
    void payloadIsCutToItsLength_data();
    void payloadIsCutToItsLength();
    void shallowPayloadRefersToTheRecord();
    void defaultRecordsAreEmpty();
    void framesCompareByWhatCounts();
    void equalRecordsAreEqualInsideVariants();
    void numberBecomesBitrate_data();
    void numberBecomesBitrate();
    void recordInsideVariantIsTakenWhole();
    void failedConversionGivesTheEmptyRecord();
    void bitrateRecordReadsAsNumber();
    void metaTypesHaveTheirExactNames_data();
    void metaTypesHaveTheirExactNames();
    void recordsSurviveAStream();
    void busStateBelongsToTheMetaObjectOfItsNamespace();
    void tablesHoldTheirValues();
    void thresholdsPrintOneLine();
    void socketCanAnswerIsInvalidWithoutBitrate();
    void hardwareFilterLetsEverythingThroughAtFirst();
    void handMadeTimingIsOffAtFirst();
};

void TestCanRecords::timeOfDayWrapsAtMidnight_data()
{
    QTest::addColumn<qint32>("seconds");
    QTest::addColumn<qint32>("microseconds");
    QTest::addColumn<QTime>("time");

    QTest::newRow("nothing") << 0 << 0 << QTime(0, 0);
    QTest::newRow("cut to milliseconds") << 3661 << 1999 << QTime(1, 1, 1, 1);
    QTest::newRow("last of the day") << 86399 << 999999 << QTime(23, 59, 59, 999);
    QTest::newRow("first of the next day") << 86400 << 0 << QTime(0, 0);
    QTest::newRow("negative") << -5 << 0 << QTime(0, 0);
    QTest::newRow("latest") << std::numeric_limits<qint32>::max() << 999999 << QTime(3, 14, 7, 999);
}

void TestCanRecords::timeOfDayWrapsAtMidnight()
{
    QFETCH(qint32, seconds);
    QFETCH(qint32, microseconds);
    QTEST(CanTimeStamp(seconds, microseconds).toQTime(), "time");
}

void TestCanRecords::differenceIsOtherMinusThis_data()
{
    constexpr qint32 lowest = std::numeric_limits<qint32>::min();
    constexpr qint32 highest = std::numeric_limits<qint32>::max();
    QTest::addColumn<CanTimeStamp>("from");
    QTest::addColumn<CanTimeStamp>("to");
    QTest::addColumn<CanTimeStamp>("difference");

    QTest::newRow("same") << CanTimeStamp(7, 8) << CanTimeStamp(7, 8) << CanTimeStamp(0, 0);
    QTest::newRow("later") << CanTimeStamp(1, 900000) << CanTimeStamp(3, 100000) << CanTimeStamp(1, 200000);
    QTest::newRow("earlier") << CanTimeStamp(3, 100000) << CanTimeStamp(1, 900000) << CanTimeStamp(-1, -200000);
    QTest::newRow("a little earlier") << CanTimeStamp(3, 0) << CanTimeStamp(2, 999999) << CanTimeStamp(0, -1);
    QTest::newRow("farthest") << CanTimeStamp(lowest, 0) << CanTimeStamp(highest, 0) << CanTimeStamp(highest, 999999);
    QTest::newRow("farthest back") << CanTimeStamp(highest, 0) << CanTimeStamp(lowest, 0)
                                   << CanTimeStamp(-highest, -999999);
}

void TestCanRecords::differenceIsOtherMinusThis()
{
    QFETCH(CanTimeStamp, from);
    QFETCH(CanTimeStamp, to);
    QFETCH(CanTimeStamp, difference);
    QCOMPARE(from.timeDifference(to).seconds, difference.seconds);
    QCOMPARE(from.timeDifference(to).microseconds, difference.microseconds);
}

void TestCanRecords::payloadIsCutToItsLength_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("whole") << 4 << 0 << -1 << QByteArray("\x00\x01\x02\x03", 4);
    QTest::newRow("empty") << 0 << 0 << -1 << QByteArray();
    QTest::newRow("middle") << 4 << 1 << 2 << QByteArray("\x01\x02", 2);
    QTest::newRow("more than there is") << 4 << 2 << 9 << QByteArray("\x02\x03", 2);
    QTest::newRow("last byte") << 4 << 3 << -1 << QByteArray("\x03", 1);
    QTest::newRow("behind the last byte") << 4 << 4 << -1 << QByteArray();
    QTest::newRow("before the first byte") << 4 << -1 << -1 << QByteArray();
    QTest::newRow("no such count") << 4 << 0 << -2 << QByteArray();
    QTest::newRow("length beyond the record") << 255 << 62 << -1 << QByteArray("\x3e\x3f", 2);
}

void TestCanRecords::payloadIsCutToItsLength()
{
    QFETCH(int, length);
    QFETCH(int, start);
    QFETCH(int, count);
    QFETCH(QByteArray, bytes);
    CAN::CanMessage frame;
    frame.length = static_cast<quint8>(length);
    for (int i = 0; i < CAN::maxDataLength; ++i)
        frame.data[i] = static_cast<quint8>(i);
    QCOMPARE(frame.dataToByteArray(start, count, true), bytes);
    QCOMPARE(frame.dataToByteArray(start, count, false), bytes);
}

void TestCanRecords::shallowPayloadRefersToTheRecord()
{
    CAN::CanMessage frame = message(1, "ab");
    const QByteArray shallow = frame.dataToByteArray(0, -1, false);
    const QByteArray deep = frame.dataToByteArray(0, -1, true);
    frame.data[0] = 'z';
    QCOMPARE(shallow, QByteArray("zb"));
    QCOMPARE(deep, QByteArray("ab"));
}

void TestCanRecords::defaultRecordsAreEmpty()
{
    QCOMPARE(CanTimeStamp().seconds, 0);
    QCOMPARE(CanTimeStamp().microseconds, 0);
    QVERIFY(CAN::CanMessage() == message(0, {}));
    QVERIFY(CAN::CANBitrateDesc() == CAN::CANBitrateDesc(QString(), 0, 0.0));
    const CAN::CANClassicBusParameter classic;
    QVERIFY(classic.bitrate == 0 && classic.samplePoint == 0.0 && classic.name.isEmpty() && !classic.userDefined);
    const CAN::CANFDBusParameter fd;
    QVERIFY(fd.bitrate == 0 && fd.samplePoint == 0.0 && fd.name.isEmpty() && fd.tdco == 0 && !fd.userDefined);
    const AbstractCanAdapter::SocketCANProps props;
    QVERIFY(!props.canFd && props.bitrate == 500 && props.fdBitrate == 2000 && props.restartMs == 0);
}

void TestCanRecords::framesCompareByWhatCounts()
{
    const CAN::CanMessage frame = message(0x123, "abcd");
    CAN::CanMessage other = frame;
    other.data[4] = 0xFF; // behind the payload
    QVERIFY(frame == other);

    const auto differs = [&frame](auto change) {
        CAN::CanMessage changed = frame;
        change(changed);
        return frame != changed;
    };
    QVERIFY(differs([](CAN::CanMessage &m) { m.id = 0x124; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.length = 3; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.data[3] = 'x'; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.rtr = true; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.ext = true; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.fd = true; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.extraFlag = true; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.brs = true; }));
    QVERIFY(differs([](CAN::CanMessage &m) { m.errorFrame = true; }));
}

void TestCanRecords::equalRecordsAreEqualInsideVariants()
{
    const auto behaves = [](const auto &record, const auto &different) {
        return QVariant::fromValue(record) == QVariant::fromValue(record)
            && QVariant::fromValue(record) != QVariant::fromValue(different);
    };
    QVERIFY(behaves(CanTimeStamp(1, 2), CanTimeStamp(1, 3)));
    QVERIFY(behaves(CAN::CanStateBusOff, CAN::CanStateStopped));
    QVERIFY(behaves(CAN::CanRxMessage{{1, 2}, message(1, "a")}, CAN::CanRxMessage{{1, 2}, message(1, "b")}));
    QVERIFY(behaves(CAN::CANBitrateDesc(QStringLiteral("a"), 500, 0.8), CAN::CANBitrateDesc({}, 500, 0.8)));
    QVERIFY(behaves(CAN::CANClassicBusParameter{500, 80.0, {1, 2, 3, 4, 5}, {}, true},
                    CAN::CANClassicBusParameter{500, 80.0, {1, 2, 3, 4, 6}, {}, true}));
    QVERIFY(behaves(CAN::CANFDBusParameter{500, {}, 80.0, {}, 7, true},
                    CAN::CANFDBusParameter{500, {}, 80.0, {}, 8, true}));
    QVERIFY(
        behaves(AbstractCanAdapter::SocketCANProps{true, 1, 2, 3}, AbstractCanAdapter::SocketCANProps{true, 1, 2, 4}));
    QVERIFY(behaves(AbstractCanAdapter::PeakAdvValues{true, 80, 1, 2, 3, 4},
                    AbstractCanAdapter::PeakAdvValues{true, 80, 1, 2, 3, 5}));
    QVERIFY(behaves(AbstractCanAdapter::SystecXM3AdvValues{1, 2, 3, 4, 5, 6, 7},
                    AbstractCanAdapter::SystecXM3AdvValues{1, 2, 3, 4, 5, 6, 8}));
}

void TestCanRecords::numberBecomesBitrate_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("bitrate");

    QTest::newRow("number") << QVariant(250) << 250;
    QTest::newRow("unsigned short") << QVariant::fromValue<ushort>(800) << 800;
    QTest::newRow("text of a number") << QVariant(QStringLiteral("125")) << 125;
    QTest::newRow("zero") << QVariant(0) << 0;
    QTest::newRow("largest") << QVariant(65535) << 65535;
    QTest::newRow("cut to 16 bits") << QVariant(65536 + 7) << 7;
    QTest::newRow("nothing") << QVariant() << 0;
    QTest::newRow("other type") << QVariant(QPoint(1, 2)) << 0;
}

void TestCanRecords::numberBecomesBitrate()
{
    QFETCH(QVariant, value);
    const CAN::CANBitrateDesc description(value);
    QTEST(int(description.bitrate), "bitrate");
    QVERIFY(description.name.isEmpty());
    QCOMPARE(description.samplePoint, 0.0);
}

void TestCanRecords::recordInsideVariantIsTakenWhole()
{
    const CAN::CANBitrateDesc description(QStringLiteral("500 kBit/s"), 500, 0.875);
    QVERIFY(CAN::CANBitrateDesc(QVariant::fromValue(description)) == description);
}

void TestCanRecords::failedConversionGivesTheEmptyRecord()
{
    QMetaType::registerConverter<Unwilling, CAN::CANBitrateDesc>(&Unwilling::toBitrate);
    QVERIFY(CAN::CANBitrateDesc(QVariant::fromValue(Unwilling())) == CAN::CANBitrateDesc());
}

void TestCanRecords::bitrateRecordReadsAsNumber()
{
    const QVariant variant = QVariant::fromValue(CAN::CANBitrateDesc({}, 1000, 0.75));
    QCOMPARE(variant.toInt(), 1000);
    QCOMPARE(variant.toUInt(), 1000U);
    QCOMPARE(variant.toULongLong(), 1000ULL);
    QCOMPARE(variant.toDouble(), 1000.0);
    QCOMPARE(variant.toFloat(), 1000.0F);
    QCOMPARE(variant.value<short>(), short(1000));
    QCOMPARE(variant.value<ulong>(), 1000UL);
    QCOMPARE(variant.value<ushort>(), ushort(1000));
}

void TestCanRecords::metaTypesHaveTheirExactNames_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("CanTimeStamp") << qMetaTypeId<CanTimeStamp>();
    QTest::newRow("CAN::CanState") << qMetaTypeId<CAN::CanState>();
    QTest::newRow("CAN::CanRxMessage") << qMetaTypeId<CAN::CanRxMessage>();
    QTest::newRow("CAN::CANBitrateDesc") << qMetaTypeId<CAN::CANBitrateDesc>();
    QTest::newRow("CAN::CANClassicBusParameter") << qMetaTypeId<CAN::CANClassicBusParameter>();
    QTest::newRow("CAN::CANFDBusParameter") << qMetaTypeId<CAN::CANFDBusParameter>();
    QTest::newRow("AbstractCanAdapter::SocketCANProps") << qMetaTypeId<AbstractCanAdapter::SocketCANProps>();
    QTest::newRow("AbstractCanAdapter::PeakAdvValues") << qMetaTypeId<AbstractCanAdapter::PeakAdvValues>();
    QTest::newRow("AbstractCanAdapter::SystecXM3AdvValues") << qMetaTypeId<AbstractCanAdapter::SystecXM3AdvValues>();
}

void TestCanRecords::metaTypesHaveTheirExactNames()
{
    QFETCH(int, type);
    QCOMPARE(QMetaType::typeName(type), QTest::currentDataTag());
    QCOMPARE(QMetaType::type(QTest::currentDataTag()), type);
}

void TestCanRecords::recordsSurviveAStream()
{
    const CAN::CanRxMessage frame = {{-1, 5}, message(0x1ABCDEF0, "payload")};
    QVERIFY(throughStream(frame) == frame);
    const CAN::CANBitrateDesc bitrate(QStringLiteral("näme"), 500, 0.875);
    QVERIFY(throughStream(bitrate) == bitrate);
    const CAN::CANClassicBusParameter classic = {500, 87.5, {1, 2, 3, 4, 5}, QStringLiteral("n"), true};
    QVERIFY(throughStream(classic) == classic);
    const CAN::CANFDBusParameter fd = {2000, QStringLiteral("n"), 75.0, {1, 2, 3, 4, 5}, 6, true};
    QVERIFY(throughStream(fd) == fd);
    const AbstractCanAdapter::SocketCANProps props = {true, 1, 2, 3};
    QVERIFY(throughStream(props) == props);
    const AbstractCanAdapter::PeakAdvValues peak = {true, 80, 1, 2, 3, 4};
    QVERIFY(throughStream(peak) == peak);
    const AbstractCanAdapter::SystecXM3AdvValues filter = {1, 2, 3, 4, 5, 6, 7};
    QVERIFY(throughStream(filter) == filter);
}

void TestCanRecords::busStateBelongsToTheMetaObjectOfItsNamespace()
{
    const int index = CAN::staticMetaObject.indexOfEnumerator("CanState");
    QVERIFY(index >= 0);
    QCOMPARE(CAN::staticMetaObject.enumerator(index).valueToKey(CAN::CanStateBusOff), "CanStateBusOff");
}

void TestCanRecords::tablesHoldTheirValues()
{
    const QStringList errors = canErrorNames.values();
    QCOMPARE(errors.join(QLatin1Char(',')),
             QStringLiteral("Stuff error,Form error,Acknowledgment error,Bit error,Fast data bit error,CRC error,"
                            "Data length error,unspecified error"));
    QCOMPARE(canErrorNames.firstKey(), quint8(1));
    QCOMPARE(canErrorNames.lastKey(), quint8(8));
    QCOMPARE(canFdDataLengths, (QList<quint8>{12, 16, 20, 24, 32, 48, 64}));
}

void TestCanRecords::thresholdsPrintOneLine()
{
    QCOMPARE(CAN::CANBitTimingThresholds().toString(),
             QStringLiteral("CANBitTimings(F: 0, Prescaler: 0 - 0, tSeg1: 0 - 0, tSeg2: 0 - 0, sjw: 0, Valid: 0)"));
    const CAN::CANBitTimingThresholds limits = {80, 1, 128, 3, 16, 2, 8, -4, true};
    QCOMPARE(
        limits.toString(),
        QStringLiteral("CANBitTimings(F: 80, Prescaler: 1 - 128, tSeg1: 3 - 16, tSeg2: 2 - 8, sjw: -4, Valid: 1)"));
}

void TestCanRecords::socketCanAnswerIsInvalidWithoutBitrate()
{
    AbstractCanAdapter::SocketCANProps props;
    QVERIFY(props.toQVariant().value<AbstractCanAdapter::SocketCANProps>() == props);
    props.canFd = true;
    props.fdBitrate = 2000;
    props.bitrate = 0;
    QVERIFY(!props.toQVariant().isValid());
}

void TestCanRecords::hardwareFilterLetsEverythingThroughAtFirst()
{
    const AbstractCanAdapter::SystecXM3AdvValues filter;
    QCOMPARE(filter.filterAMR, 0xFFFFFFFFU);
    QCOMPARE(filter.filterACR, 0U);
}

void TestCanRecords::handMadeTimingIsOffAtFirst()
{
    const AbstractCanAdapter::PeakAdvValues values;
    QVERIFY(values == (AbstractCanAdapter::PeakAdvValues{false, 0, 0, 0, 0, 0}));
}

QTEST_GUILESS_MAIN(TestCanRecords)
#include "tst_canrecords.moc"
