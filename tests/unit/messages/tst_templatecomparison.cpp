#include "comparedrecords.h"
#include "templatecomparison.h"

#include <QRandomGenerator>
#include <QtTest>

using CAN::CanRxMessage;
using CANRAW::CanRawCompareMessage;

namespace {
CanRxMessage frame(quint32 id, const QByteArray &data)
{
    CanRxMessage received;
    received.message.id = id;
    received.message.length = static_cast<quint8>(data.size());
    std::copy(data.cbegin(), data.cend(), received.message.data);
    return received;
}

/// Asks for nothing but what a test adds.
CanRawCompareMessage openTemplate()
{
    CanRawCompareMessage wanted(false);
    wanted.valid = true;
    wanted.length = {};
    return wanted;
}

struct Flag
{
    const char *name;
    qint32 CanRawCompareMessage::*wanted;
    bool CAN::CanMessage::*received;
};

const Flag flags[] = {
    {"fd", &CanRawCompareMessage::fd, &CAN::CanMessage::fd},
    {"brs", &CanRawCompareMessage::brs, &CAN::CanMessage::brs},
    {"ext", &CanRawCompareMessage::ext, &CAN::CanMessage::ext},
    {"rtr", &CanRawCompareMessage::rtr, &CAN::CanMessage::rtr},
};

int asSignedByte(int number)
{
    const int low = number & 0xFF;
    return low > 127 ? low - 256 : low;
}

/// One step after the other, with plain numbers.
bool matchesStepByStep(const CanRawCompareMessage &wanted, const CAN::CanMessage &received)
{
    if (!wanted.valid)
        return false;
    for (const Flag &flag : flags) {
        const int state = wanted.*flag.wanted;
        if (state == 2 && !(received.*flag.received))
            return false;
        if (state != 1 && state != 2 && received.*flag.received)
            return false;
    }
    if (wanted.id.isSet && wanted.id.value != received.id)
        return false;
    int count = asSignedByte(wanted.consideration.size());
    if (wanted.length.isSet) {
        if (wanted.length.value != received.length)
            return false;
        const int length = asSignedByte(wanted.length.value);
        count = length < count ? length : count;
    }
    for (int i = 0; i < count; ++i) {
        if (!wanted.consideration.at(i))
            continue;
        if (received.length <= i || i >= 64)
            return false;
        const int expected = i < wanted.data.size() ? wanted.data.at(i) & 0xFF : 0;
        if (expected != received.data[i])
            return false;
    }
    return true;
}

/// Few values for each field, so that records and frames meet often.
CanRawCompareMessage randomTemplate(QRandomGenerator &random)
{
    static const quint8 lengths[] = {0, 1, 2, 8, 12, 64, 65, 127, 128, 200, 255};
    CanRawCompareMessage wanted(random.bounded(2) != 0);
    wanted.valid = random.bounded(20) != 0;
    wanted.id = {random.bounded(2u), random.bounded(2) != 0};
    wanted.length = {lengths[random.bounded(int(std::size(lengths)))], random.bounded(3) == 0};
    wanted.data.resize(random.bounded(80));
    for (char &byte : wanted.data)
        byte = random.bounded(10) == 0 ? 1 : 0;
    // Thousands of rounds with millions of bits take minutes; what they are for shows in a few.
    wanted.consideration.resize(random.bounded(5000) == 0 ? 16777215 : random.bounded(301));
    const int considered = wanted.consideration.isEmpty() ? 0 : random.bounded(6);
    for (int i = 0; i < considered; ++i)
        wanted.consideration.setBit(random.bounded(std::min(wanted.consideration.size(), 300)));
    for (const Flag &flag : flags)
        wanted.*flag.wanted = random.bounded(8) == 0 ? random.bounded(-1, 4) : Qt::PartiallyChecked;
    return wanted;
}

CanRxMessage randomFrame(QRandomGenerator &random)
{
    static const quint8 lengths[] = {0, 1, 2, 8, 12, 64, 65, 127, 128, 200, 255};
    CanRxMessage received;
    received.message.id = random.bounded(2u);
    received.message.length = lengths[random.bounded(int(std::size(lengths)))];
    for (quint8 &byte : received.message.data)
        byte = random.bounded(10) == 0 ? 1 : 0;
    for (const Flag &flag : flags)
        received.message.*flag.received = random.bounded(2) != 0;
    return received;
}
} // namespace

class TestTemplateComparison : public QObject
{
    Q_OBJECT

private slots:
    void invalidTemplateNeverMatches();
    void openTemplateMatchesOnceItIsValid();
    void flagDecides_data();
    void flagDecides();
    void strictTemplateTakesPlainFramesOnly_data();
    void strictTemplateTakesPlainFramesOnly();
    void identifierIsComparedWhole();
    void unsetIdentifierMatchesAny();
    void lengthMustAgreeIfSet();
    void lengthZeroComparesNoBytes();
    void noBitsMatchAnyData();
    void consideredByteMustAgree_data();
    void consideredByteMustAgree();
    void openBytesNeverLimitTheLength();
    void consideredByteMissingFromTheDataIsZero();
    void frameThatClaimsMoreThanItHoldsDoesNotMatch();
    void countOfBytesIsASignedByte_data();
    void countOfBytesIsASignedByte();
    void agreesWithTheStepsOneByOne();
};

void TestTemplateComparison::invalidTemplateNeverMatches()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.valid = false;
    QVERIFY(!matches(wanted, frame(1, "a")));
    QVERIFY(!matches(CanRawCompareMessage(false), frame(0, "")));
    QVERIFY(!matches(CanRawCompareMessage::fromByteArray({}), frame(0, "")));
}

void TestTemplateComparison::openTemplateMatchesOnceItIsValid()
{
    CanRawCompareMessage wanted(false);
    wanted.valid = true;
    QVERIFY(matches(wanted, frame(0x123, "")));
}

void TestTemplateComparison::flagDecides_data()
{
    QTest::addColumn<int>("flag");
    QTest::addColumn<int>("wanted");
    QTest::addColumn<bool>("clearMatches");
    QTest::addColumn<bool>("setMatches");
    for (int i = 0; i < int(std::size(flags)); ++i) {
        QTest::addRow("%s must be clear", flags[i].name) << i << 0 << true << false;
        QTest::addRow("%s does not matter", flags[i].name) << i << 1 << true << true;
        QTest::addRow("%s must be set", flags[i].name) << i << 2 << false << true;
        QTest::addRow("%s of a damaged record", flags[i].name) << i << 3 << true << false;
        QTest::addRow("%s negative", flags[i].name) << i << -1 << true << false;
    }
}

void TestTemplateComparison::flagDecides()
{
    QFETCH(int, flag);
    QFETCH(int, wanted);
    QFETCH(bool, clearMatches);
    QFETCH(bool, setMatches);
    CanRawCompareMessage record = openTemplate();
    record.*flags[flag].wanted = wanted;
    CanRxMessage received = frame(1, "a");
    QCOMPARE(matches(record, received), clearMatches);
    received.message.*flags[flag].received = true;
    QCOMPARE(matches(record, received), setMatches);
}

void TestTemplateComparison::strictTemplateTakesPlainFramesOnly_data()
{
    QTest::addColumn<int>("flag");
    for (int i = 0; i < int(std::size(flags)); ++i)
        QTest::newRow(flags[i].name) << i;
}

void TestTemplateComparison::strictTemplateTakesPlainFramesOnly()
{
    QFETCH(int, flag);
    CanRxMessage received = frame(0, "");
    QVERIFY(matches(CanRawCompareMessage(true), received));
    received.message.*flags[flag].received = true;
    QVERIFY(!matches(CanRawCompareMessage(true), received));
}

void TestTemplateComparison::identifierIsComparedWhole()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.id = {0x181, true};
    QVERIFY(matches(wanted, frame(0x181, "")));
    QVERIFY(!matches(wanted, frame(0x182, "")));
    QVERIFY(!matches(wanted, frame(0x80000181, "")));
}

void TestTemplateComparison::unsetIdentifierMatchesAny()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.id = {0x181, false};
    QVERIFY(matches(wanted, frame(0x182, "")));
}

void TestTemplateComparison::lengthMustAgreeIfSet()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.length = {2, true};
    QVERIFY(!matches(wanted, frame(1, "a")));
    QVERIFY(matches(wanted, frame(1, "ab")));
    QVERIFY(!matches(wanted, frame(1, "abc")));
}

void TestTemplateComparison::lengthZeroComparesNoBytes()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.length = {0, true};
    wanted.data = "abc";
    wanted.consideration = setBits(3);
    QVERIFY(matches(wanted, frame(1, "")));
    QVERIFY(!matches(wanted, frame(1, "abc")));
}

void TestTemplateComparison::noBitsMatchAnyData()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.data = "abc";
    wanted.consideration = QBitArray();
    QVERIFY(matches(wanted, frame(1, "")));
    QVERIFY(matches(wanted, frame(1, QByteArray(64, 'x'))));
}

void TestTemplateComparison::consideredByteMustAgree_data()
{
    QTest::addColumn<QByteArray>("received");
    QTest::addColumn<bool>("matching");
    QTest::newRow("all alike") << QByteArray("abcd") << true;
    QTest::newRow("open byte differs") << QByteArray("xbxd") << true;
    QTest::newRow("considered byte differs") << QByteArray("axcd") << false;
    QTest::newRow("last considered byte differs") << QByteArray("abcx") << false;
    QTest::newRow("last considered byte is missing") << QByteArray("abc") << false;
    QTest::newRow("more bytes") << QByteArray("abcdefgh") << true;
}

void TestTemplateComparison::consideredByteMustAgree()
{
    QFETCH(QByteArray, received);
    QFETCH(bool, matching);
    CanRawCompareMessage wanted = openTemplate();
    wanted.data = "abcd";
    wanted.consideration = bitsOf("01010000");
    QCOMPARE(matches(wanted, frame(1, received)), matching);
}

void TestTemplateComparison::openBytesNeverLimitTheLength()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.data = "abcd";
    wanted.consideration = QBitArray(64);
    QVERIFY(matches(wanted, frame(1, "")));
}

void TestTemplateComparison::consideredByteMissingFromTheDataIsZero()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.data = "a";
    wanted.consideration = setBits(2);
    QVERIFY(matches(wanted, frame(1, QByteArray("a\0", 2))));
    QVERIFY(!matches(wanted, frame(1, "ab")));
}

void TestTemplateComparison::frameThatClaimsMoreThanItHoldsDoesNotMatch()
{
    CanRawCompareMessage wanted = openTemplate();
    wanted.consideration = QBitArray(65);
    wanted.consideration.setBit(64);
    CanRxMessage received = frame(1, QByteArray(64, '\0'));
    received.message.length = 255;
    QVERIFY(!matches(wanted, received));
    wanted.consideration.clearBit(64);
    wanted.consideration.setBit(63);
    QVERIFY(matches(wanted, received));
}

void TestTemplateComparison::countOfBytesIsASignedByte_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("looksAtFirstByte");
    QTest::newRow("1") << 1 << true;
    QTest::newRow("64") << 64 << true;
    QTest::newRow("127") << 127 << true;
    QTest::newRow("128 is negative") << 128 << false;
    QTest::newRow("255 is negative") << 255 << false;
    QTest::newRow("256 is zero") << 256 << false;
    QTest::newRow("257 is one") << 257 << true;
    QTest::newRow("an editor without a limit") << 16777215 << false;
    QTest::newRow("one bit more") << 16777217 << true;
}

void TestTemplateComparison::countOfBytesIsASignedByte()
{
    QFETCH(int, bits);
    QFETCH(bool, looksAtFirstByte);
    CanRawCompareMessage wanted = openTemplate();
    wanted.data = "a";
    wanted.consideration = QBitArray(bits);
    wanted.consideration.setBit(0);
    QCOMPARE(matches(wanted, frame(1, "x")), !looksAtFirstByte);
    wanted.length = {1, true};
    QCOMPARE(matches(wanted, frame(1, "x")), !looksAtFirstByte);
}

void TestTemplateComparison::agreesWithTheStepsOneByOne()
{
    constexpr int rounds = 300'000;
    QRandomGenerator random(4711);
    int matching = 0;
    for (int round = 0; round < rounds; ++round) {
        const CanRawCompareMessage wanted = randomTemplate(random);
        const CanRxMessage received = randomFrame(random);
        const bool expected = matchesStepByStep(wanted, received.message);
        matching += expected ? 1 : 0;
        if (matches(wanted, received) != expected)
            QFAIL(qPrintable(QStringLiteral("round %1").arg(round)));
    }
    QVERIFY2(matching > rounds / 50, "hardly any of the random frames matched");
}

QTEST_GUILESS_MAIN(TestTemplateComparison)
#include "tst_templatecomparison.moc"
