#include "identifiertexts.h"

#include <QtTest>

class TestIdentifierTexts : public QObject
{
    Q_OBJECT

private slots:
    void listHoldsWhatIsANumber_data();
    void listHoldsWhatIsANumber();
    void filterLetsThrough_data();
    void filterLetsThrough();
    void rangeIsOrderedByItsNumbers_data();
    void rangeIsOrderedByItsNumbers();
    void filterOfAllIdentifiersIsOneRange_data();
    void filterOfAllIdentifiersIsOneRange();
};

namespace {
using Ids = QList<quint32>;
const QString minusSign = QString(QChar(0x2212));
} // namespace

void TestIdentifierTexts::listHoldsWhatIsANumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Ids>("ids");

    QTest::newRow("nothing") << QString() << Ids{};
    QTest::newRow("hexadecimal, blanks and a word") << QStringLiteral("0x100, 0x200,abc") << Ids{0x100, 0x200};
    QTest::newRow("decimal") << QStringLiteral("385") << Ids{385};
    QTest::newRow("octal") << QStringLiteral("010") << Ids{8};
    QTest::newRow("no octal digit") << QStringLiteral("08") << Ids{};
    QTest::newRow("hexadecimal without prefix") << QStringLiteral("181h,18F") << Ids{};
    QTest::newRow("upper case") << QStringLiteral("0X1AB") << Ids{0x1AB};
    QTest::newRow("empty parts") << QStringLiteral(",,5,") << Ids{5};
    QTest::newRow("order and repetition stay") << QStringLiteral("3,1,3") << Ids{3, 1, 3};
    QTest::newRow("blanks around") << QStringLiteral(" 7 \t, 8") << Ids{7, 8};
    QTest::newRow("blanks within") << QStringLiteral("1 2") << Ids{};
    QTest::newRow("other separators") << QStringLiteral("1;2") << Ids{};
    QTest::newRow("a range") << QStringLiteral("1-2") << Ids{};
    QTest::newRow("negative") << QStringLiteral("-1") << Ids{0xFFFFFFFF};
    QTest::newRow("largest") << QStringLiteral("0x7FFFFFFF") << Ids{0x7FFFFFFF};
    QTest::newRow("too large") << QStringLiteral("0x80000000") << Ids{};
}

void TestIdentifierTexts::listHoldsWhatIsANumber()
{
    QFETCH(QString, text);
    QTEST(listedIdentifiers(text), "ids");
}

void TestIdentifierTexts::filterLetsThrough_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Ids>("ids");

    const auto row = [](const char *text, const Ids &ids) { QTest::newRow(text) << QString::fromLatin1(text) << ids; };
    row("", {});
    row("0x10,17;18\n19", {16, 17, 18, 19});
    row("0x100-0x103", {0x100, 0x101, 0x102, 0x103});
    row(" 2 - 4 ", {2, 3, 4});
    row("7-7", {7});
    row("4-2", {});
    row("5-", {});
    row("-2", {0, 1, 2});
    row("-", {0});
    row("abc", {});
    row("abc-1", {0, 1});
    row("1-abc", {});
    row("1-9-3", {1, 2, 3});
    row("1-x-3", {1, 2, 3});
    row("--", {0});
    row(";;,\n", {});
    row("0x80000000-1", {0, 1});
    row("010", {8});
    row("1:3", {});
    row("0x7FX", {});
}

void TestIdentifierTexts::filterLetsThrough()
{
    QFETCH(QString, text);
    QFETCH(Ids, ids);
    const IdentifierSet set = filteredIdentifiers(text);
    Ids contained;
    for (quint32 id = 0; id < 0x1000; ++id) {
        if (set.contains(id))
            contained.append(id);
    }
    QCOMPARE(contained, ids);
    QCOMPARE(set.size(), quint64(ids.size()));
}

void TestIdentifierTexts::rangeIsOrderedByItsNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Ids>("ids");
    QTest::addColumn<quint64>("size");
    QTest::newRow("down to a negative number") << QStringLiteral("1-") + minusSign + QLatin1Char('3') << Ids{} << 0ULL;
    QTest::newRow("up from a negative number")
        << minusSign + QStringLiteral("3-1") << Ids{0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF, 0, 1} << 5ULL;
    QTest::newRow("between negative numbers")
        << minusSign + QStringLiteral("3-") + minusSign + QLatin1Char('2') << Ids{0xFFFFFFFD, 0xFFFFFFFE} << 2ULL;
}

void TestIdentifierTexts::rangeIsOrderedByItsNumbers()
{
    QFETCH(QString, text);
    QFETCH(Ids, ids);
    const IdentifierSet set = filteredIdentifiers(text);
    for (const quint32 id : ids)
        QVERIFY2(set.contains(id), qPrintable(QString::number(id, 16)));
    QTEST(set.size(), "size");
}

void TestIdentifierTexts::filterOfAllIdentifiersIsOneRange_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint64>("size");

    QTest::newRow("a range and an identifier") << QStringLiteral("0x100-0x10F;0x200") << 17ULL;
    QTest::newRow("all standard ones") << QStringLiteral("0-0x7FF") << 0x800ULL;
    QTest::newRow("all extended ones") << QStringLiteral("0-0x1FFFFFFF") << 0x20000000ULL;
    QTest::newRow("all numbers that can be entered") << QStringLiteral("0-0x7FFFFFFF") << 0x80000000ULL;
    QTest::newRow("all, a thousand times") << QStringLiteral("0-0x7FFFFFFF;").repeated(1000) << 0x80000000ULL;
    QTest::newRow("of a sign that only looks like it") << QStringLiteral("1") + minusSign + QLatin1Char('3') << 0ULL;
}

void TestIdentifierTexts::filterOfAllIdentifiersIsOneRange()
{
    QFETCH(QString, text);
    QTEST(filteredIdentifiers(text).size(), "size");
}

QTEST_APPLESS_MAIN(TestIdentifierTexts)
#include "tst_identifiertexts.moc"
