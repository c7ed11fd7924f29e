#include "childprocess.h"
#include "goldenrecords.h"
#include "recordreader.h"

#include <QRandomGenerator>
#include <QtTest>

#include <functional>
#include <new>
#include <sys/resource.h>

using CANRAW::CanRawCompareMessage;

namespace {
CanRawCompareMessage nothingRead()
{
    CanRawCompareMessage message(false);
    message.data = QByteArray("");
    message.consideration = QBitArray();
    for (qint32 *flag : {&message.rtr, &message.ext, &message.fd, &message.brs})
        *flag = 0;
    return message;
}

/// Where a field of the record GoldenRecords::allDifferent() ends, and how it gets there.
struct FieldEnd
{
    int end;
    std::function<void(CanRawCompareMessage &, const CanRawCompareMessage &)> copy;
};

template <typename T>
FieldEnd fieldEnd(int end, T CanRawCompareMessage::*field)
{
    return {end, [field](CanRawCompareMessage &to, const CanRawCompareMessage &from) { to.*field = from.*field; }};
}

using Record = CanRawCompareMessage;
const FieldEnd fieldEnds[] = {
    fieldEnd(1, &Record::valid),
    {5, [](Record &to, const Record &from) { to.id.value = from.id.value; }},
    fieldEnd(6, &Record::id),
    fieldEnd(7, &Record::length),
    // Bytes that are announced and do not come leave no array.
    {11, [](Record &to, const Record &) { to.data = QByteArray(); }},
    {14,
     [](Record &to, const Record &from) {
         to.data = from.data;
         to.consideration = QBitArray(from.data.size());
     }},
    fieldEnd(20, &Record::consideration),
    fieldEnd(24, &Record::rtr),
    fieldEnd(28, &Record::ext),
    fieldEnd(32, &Record::fd),
    fieldEnd(36, &Record::brs),
    fieldEnd(40, &Record::extraInt1),
    fieldEnd(48, &Record::extraReal1),
    fieldEnd(52, &Record::extraInt2),
    fieldEnd(60, &Record::extraReal2),
    fieldEnd(64, &Record::extraInt3),
    fieldEnd(72, &Record::extraReal3),
    fieldEnd(80, &Record::extraReal4),
    fieldEnd(88, &Record::extraReal5),
    fieldEnd(104, &Record::extraIds),
};

QByteArray mutated(QByteArray bytes, QRandomGenerator &random)
{
    static const char *const counts[] = {"ffffffff", "fffffffe", "fffffff9", "80000000", "7fffffff",
                                         "00ffffff", "00000041", "00000009", "00000001", "00000000"};
    for (int changes = random.bounded(1, 5); changes > 0 && !bytes.isEmpty(); --changes) {
        const int at = random.bounded(bytes.size());
        switch (random.bounded(5)) {
        case 0:
            bytes[at] = static_cast<char>(random.bounded(256));
            break;
        case 1:
            bytes.replace(at, 4, QByteArray::fromHex(counts[random.bounded(int(std::size(counts)))]));
            break;
        case 2:
            bytes.truncate(at);
            break;
        case 3:
            bytes.insert(at, static_cast<char>(random.bounded(256)));
            break;
        default:
            bytes.remove(at, random.bounded(1, 9));
        }
    }
    return bytes;
}
} // namespace

class TestCanRawCompareMessageBytes : public QObject
{
    Q_OBJECT

private slots:
    void bytesAreThoseOfTheLayout_data();
    void bytesAreThoseOfTheLayout();
    void bytesReadAsTheRecord_data();
    void bytesReadAsTheRecord();
    void roundTripKeepsEveryField_data();
    void roundTripKeepsEveryField();
    void classicRecordTakes103Bytes();
    void negativeLengthReadsAsUnset_data();
    void negativeLengthReadsAsUnset();
    void anyByteButZeroReadsAsTrue();
    void considerationGrowsToTheData();
    void moreBitsThanBytesAreLeftAlone();
    void bitsBehindTheLastMakeTheArrayEmpty();
    void trailingBytesAreIgnored();
    void truncatedBytesReadAsZerosFromThereOn_data();
    void truncatedBytesReadAsZerosFromThereOn();
    void lostIdentifierEmptiesTheList();
    void claimedCountTakesNoMemory_data();
    void claimedCountTakesNoMemory();
    void damagedBytesReadAsTheLayoutSays();
};

void TestCanRawCompareMessageBytes::bytesAreThoseOfTheLayout_data()
{
    QTest::addColumn<int>("index");
    const std::vector<GoldenRecord> records = GoldenRecords::all();
    for (std::size_t i = 0; i < records.size(); ++i)
        QTest::newRow(records[i].name) << int(i);
}

void TestCanRawCompareMessageBytes::bytesAreThoseOfTheLayout()
{
    QFETCH(int, index);
    const GoldenRecord golden = GoldenRecords::all()[std::size_t(index)];
    QCOMPARE(golden.message.toByteArray().toHex(), golden.bytes.toHex());
}

void TestCanRawCompareMessageBytes::bytesReadAsTheRecord_data()
{
    bytesAreThoseOfTheLayout_data();
}

void TestCanRawCompareMessageBytes::bytesReadAsTheRecord()
{
    QFETCH(int, index);
    const GoldenRecord golden = GoldenRecords::all()[std::size_t(index)];
    QCOMPARE(allFields(CanRawCompareMessage::fromByteArray(golden.bytes)), allFields(golden.message));
}

void TestCanRawCompareMessageBytes::roundTripKeepsEveryField_data()
{
    bytesAreThoseOfTheLayout_data();
}

void TestCanRawCompareMessageBytes::roundTripKeepsEveryField()
{
    QFETCH(int, index);
    const GoldenRecord golden = GoldenRecords::all()[std::size_t(index)];
    QCOMPARE(allFields(CanRawCompareMessage::fromByteArray(golden.message.toByteArray())), allFields(golden.message));
}

void TestCanRawCompareMessageBytes::classicRecordTakes103Bytes()
{
    CanRawCompareMessage message;
    message.data = QByteArray(8, '\0');
    QCOMPARE(message.toByteArray().size(), 103);
}

void TestCanRawCompareMessageBytes::negativeLengthReadsAsUnset_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("isSet");
    QTest::newRow("largest positive") << 127 << true;
    QTest::newRow("most negative") << 128 << false;
    QTest::newRow("-2") << 254 << false;
    QTest::newRow("-1") << 255 << false;
}

void TestCanRawCompareMessageBytes::negativeLengthReadsAsUnset()
{
    QFETCH(int, length);
    QFETCH(bool, isSet);
    CanRawCompareMessage message;
    message.length.value = static_cast<quint8>(length);
    const CanRawCompareMessage read = CanRawCompareMessage::fromByteArray(message.toByteArray());
    QCOMPARE(read.length.isSet, isSet);
    QCOMPARE(int(read.length.value), isSet ? length : 0);
}

void TestCanRawCompareMessageBytes::anyByteButZeroReadsAsTrue()
{
    QByteArray bytes = GoldenRecords::openDefault().bytes;
    bytes[0] = 2;
    bytes[5] = '\x80';
    const CanRawCompareMessage read = CanRawCompareMessage::fromByteArray(bytes);
    QVERIFY(read.valid);
    QVERIFY(read.id.isSet);
}

void TestCanRawCompareMessageBytes::considerationGrowsToTheData()
{
    CanRawCompareMessage message;
    message.data = "abc";
    message.consideration = bitsOf("11");
    QCOMPARE(CanRawCompareMessage::fromByteArray(message.toByteArray()).consideration, bitsOf("110"));
}

void TestCanRawCompareMessageBytes::moreBitsThanBytesAreLeftAlone()
{
    CanRawCompareMessage message;
    message.data = "a";
    message.consideration = bitsOf("111");
    QCOMPARE(CanRawCompareMessage::fromByteArray(message.toByteArray()).consideration, bitsOf("111"));
}

void TestCanRawCompareMessageBytes::bitsBehindTheLastMakeTheArrayEmpty()
{
    QByteArray bytes = GoldenRecords::allDifferent().bytes;
    bytes[19] = '\x42'; // of the second byte, two bits count
    CanRawCompareMessage expected = GoldenRecords::allDifferent().message;
    expected.consideration = bitsOf("000");
    QCOMPARE(allFields(CanRawCompareMessage::fromByteArray(bytes)), allFields(expected));
}

void TestCanRawCompareMessageBytes::trailingBytesAreIgnored()
{
    const GoldenRecord golden = GoldenRecords::allDifferent();
    QCOMPARE(allFields(CanRawCompareMessage::fromByteArray(golden.bytes + "more")), allFields(golden.message));
}

void TestCanRawCompareMessageBytes::truncatedBytesReadAsZerosFromThereOn_data()
{
    QTest::addColumn<int>("kept");
    for (int kept = 0; kept <= GoldenRecords::allDifferent().bytes.size(); ++kept)
        QTest::addRow("%d bytes", kept) << kept;
}

void TestCanRawCompareMessageBytes::truncatedBytesReadAsZerosFromThereOn()
{
    QFETCH(int, kept);
    const GoldenRecord golden = GoldenRecords::allDifferent();
    CanRawCompareMessage expected = nothingRead();
    for (const FieldEnd &field : fieldEnds) {
        if (field.end <= kept)
            field.copy(expected, golden.message);
    }
    expected.length.isSet = true;
    QCOMPARE(allFields(CanRawCompareMessage::fromByteArray(golden.bytes.left(kept))), allFields(expected));
}

void TestCanRawCompareMessageBytes::lostIdentifierEmptiesTheList()
{
    QByteArray bytes = GoldenRecords::allDifferent().bytes;
    bytes[bytes.size() - 13] = 4;
    QCOMPARE(CanRawCompareMessage::fromByteArray(bytes).extraIds, QList<unsigned int>());
}

void TestCanRawCompareMessageBytes::claimedCountTakesNoMemory_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("count");
    const GoldenRecord golden = GoldenRecords::openDefault();
    const int idsOffset = golden.bytes.size() - 4;
    for (const char *count : {"ffffffff", "fffffffe", "fffffff9", "fffffff8", "80000000", "7fffffff", "10000000"}) {
        QTest::addRow("data %s", count) << 7 << QByteArray::fromHex(count);
        QTest::addRow("bits %s", count) << 11 << QByteArray::fromHex(count);
        QTest::addRow("identifiers %s", count) << idsOffset << QByteArray::fromHex(count);
    }
}

void TestCanRawCompareMessageBytes::claimedCountTakesNoMemory()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("Sanitizers need memory without limit.");
#endif
    QFETCH(int, offset);
    QFETCH(QByteArray, count);
    const QByteArray bytes = GoldenRecords::openDefault().bytes.replace(offset, 4, count);
    const QString read = ChildProcess::run([&bytes]() -> QString {
        // Less than any step in which Qt makes room. Of the data, since the address space has room that an allocator
        // has reserved for other threads.
        constexpr rlim_t limit = 512 << 10;
        constexpr int dataPages = 5;
        QFile sizes(QStringLiteral("/proc/self/statm"));
        sizes.open(QIODevice::ReadOnly);
        const rlim_t pages = sizes.readAll().split(' ').at(dataPages).toULong();
        const rlim_t allowed = pages * rlim_t(sysconf(_SC_PAGESIZE)) + limit;
        const rlimit dataSize = {allowed, allowed};
        if (setrlimit(RLIMIT_DATA, &dataSize) != 0)
            return QStringLiteral("no limit could be set");
        try {
            return allFields(CanRawCompareMessage::fromByteArray(bytes));
        } catch (const std::bad_alloc &) {
            return QStringLiteral("asked for more memory");
        }
    });
    QCOMPARE(read, allFields(RecordReader(bytes).read()));
}

void TestCanRawCompareMessageBytes::damagedBytesReadAsTheLayoutSays()
{
    constexpr int rounds = 300'000;
    const std::vector<GoldenRecord> records = GoldenRecords::all();
    QRandomGenerator random(20230817);
    for (int round = 0; round < rounds; ++round) {
        const QByteArray bytes = mutated(records[random.bounded(quint32(records.size()))].bytes, random);
        const CanRawCompareMessage read = CanRawCompareMessage::fromByteArray(bytes);
        const CanRawCompareMessage expected = RecordReader(bytes).read();
        // By the bytes, which tell one NaN from another and are quicker to make than a text.
        if (read.toByteArray() != expected.toByteArray())
            QFAIL(qPrintable(QStringLiteral("round %1: %2\n%3\nexpected\n%4")
                                 .arg(round)
                                 .arg(QLatin1String(bytes.toHex()), allFields(read), allFields(expected))));
    }
}

QTEST_GUILESS_MAIN(TestCanRawCompareMessageBytes)
#include "tst_canrawcomparemessagebytes.moc"
