#include "identifierset.h"

#include <QSet>
#include <QtTest>

#include <random>

using Ranges = QVector<IdentifierSet::Range>;
Q_DECLARE_METATYPE(Ranges)

class TestIdentifierSet : public QObject
{
    Q_OBJECT

private slots:
    void newSetIsEmpty();
    void sizeCountsEachIdentifierOnce_data();
    void sizeCountsEachIdentifierOnce();
    void bothEndsBelongToARange();
    void lastIdentifierOfAllHasNoSuccessor();
    void answersAsASetOfSingleIdentifiersDoes();
};

void TestIdentifierSet::newSetIsEmpty()
{
    QVERIFY(IdentifierSet().isEmpty());
    QCOMPARE(IdentifierSet().size(), 0U);
    QVERIFY(!IdentifierSet().contains(0));
}

void TestIdentifierSet::sizeCountsEachIdentifierOnce_data()
{
    QTest::addColumn<Ranges>("ranges");
    QTest::addColumn<quint64>("size");

    QTest::newRow("none") << Ranges{} << 0ULL;
    QTest::newRow("one identifier") << Ranges{{5, 5}} << 1ULL;
    QTest::newRow("ends in the wrong order") << Ranges{{5, 4}} << 0ULL;
    QTest::newRow("neighbours") << Ranges{{1, 3}, {4, 6}} << 6ULL;
    QTest::newRow("with a gap") << Ranges{{1, 3}, {5, 6}} << 5ULL;
    QTest::newRow("one within another") << Ranges{{1, 100}, {5, 6}} << 100ULL;
    QTest::newRow("overlapping, the later first") << Ranges{{5, 9}, {1, 6}} << 9ULL;
    QTest::newRow("the same twice") << Ranges{{7, 8}, {7, 8}} << 2ULL;
    QTest::newRow("all extended identifiers") << Ranges{{0, 0x1FFFFFFF}} << 0x20000000ULL;
    QTest::newRow("all numbers") << Ranges{{0, 0xFFFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}} << 0x100000000ULL;
}

void TestIdentifierSet::sizeCountsEachIdentifierOnce()
{
    QFETCH(Ranges, ranges);
    const IdentifierSet set(ranges);
    QTEST(set.size(), "size");
    QCOMPARE(set.isEmpty(), set.size() == 0);
}

void TestIdentifierSet::bothEndsBelongToARange()
{
    const IdentifierSet set({{0x100, 0x10F}});
    QVERIFY(!set.contains(0xFF));
    QVERIFY(set.contains(0x100));
    QVERIFY(set.contains(0x10F));
    QVERIFY(!set.contains(0x110));
}

void TestIdentifierSet::lastIdentifierOfAllHasNoSuccessor()
{
    const IdentifierSet set({{0, 1}, {5, 0xFFFFFFFF}});
    QVERIFY(set.contains(0xFFFFFFFF));
    QVERIFY(!set.contains(4));
}

void TestIdentifierSet::answersAsASetOfSingleIdentifiersDoes()
{
    constexpr quint32 largest = 60;
    std::mt19937 random(7);
    const auto number = [&random](quint32 most) { return std::uniform_int_distribution<quint32>(0, most)(random); };
    for (int round = 0; round < 5000; ++round) {
        Ranges ranges;
        QSet<quint32> singles;
        for (quint32 count = number(8); count > 0; --count) {
            const quint32 first = number(largest);
            // One in four ends before it begins.
            const quint32 last = std::max(first + number(6), 2U) - 2;
            ranges.append({first, last});
            for (quint32 id = first; id <= last; ++id)
                singles.insert(id);
        }
        const IdentifierSet set(ranges);
        QSet<quint32> contained;
        for (quint32 id = 0; id <= 2 * largest; ++id) {
            if (set.contains(id))
                contained.insert(id);
        }
        QCOMPARE(contained, singles);
        QCOMPARE(set.size(), quint64(singles.size()));
        QCOMPARE(set.isEmpty(), singles.isEmpty());
    }
}

QTEST_APPLESS_MAIN(TestIdentifierSet)
#include "tst_identifierset.moc"
