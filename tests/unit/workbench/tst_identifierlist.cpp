#include "identifierlist.h"

#include <QTest>

class TestIdentifierList : public QObject
{
    Q_OBJECT

private slots:
    void goodTextGivesItsIdentifiers_data();
    void goodTextGivesItsIdentifiers();
    void badTextSaysWhatToChange_data();
    void badTextSaysWhatToChange();
    void longestListIsTaken();
};

void TestIdentifierList::goodTextGivesItsIdentifiers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("identifiers");
    QTest::newRow("nothing") << QString() << QList<int>();
    QTest::newRow("blanks and commas") << QStringLiteral(" , ;\t") << QList<int>();
    QTest::newRow("one") << QStringLiteral("701") << QList<int>{0x701};
    QTest::newRow("prefix") << QStringLiteral("0x7F 0Xff") << QList<int>{0x7F, 0xFF};
    QTest::newRow("several") << QStringLiteral("1,2;3 4") << QList<int>{1, 2, 3, 4};
    QTest::newRow("twice the same") << QStringLiteral("1 1") << QList<int>{1};
    QTest::newRow("range") << QStringLiteral("10-13") << QList<int>{0x10, 0x11, 0x12, 0x13};
    QTest::newRow("range with blanks") << QStringLiteral("10 - 11") << QList<int>{0x10, 0x11};
    QTest::newRow("range of one") << QStringLiteral("5-5") << QList<int>{5};
    QTest::newRow("largest") << QStringLiteral("1FFFFFFE-1FFFFFFF") << QList<int>{0x1FFFFFFE, 0x1FFFFFFF};
}

void TestIdentifierList::goodTextGivesItsIdentifiers()
{
    QFETCH(QString, text);
    QFETCH(QList<int>, identifiers);
    const IdentifierList list = parseIdentifierList(text);
    QVERIFY2(list.isValid(), qPrintable(list.error));
    QSet<quint32> expected;
    for (const int identifier : identifiers)
        expected.insert(static_cast<quint32>(identifier));
    QCOMPARE(list.identifiers, expected);
}

void TestIdentifierList::badTextSaysWhatToChange_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("words");
    QTest::newRow("no number") << QStringLiteral("701 xyz") << QStringLiteral("\"xyz\" is no identifier");
    QTest::newRow("half a range") << QStringLiteral("701-") << QStringLiteral("\"701-\" is no identifier");
    QTest::newRow("two dashes") << QStringLiteral("1-2-3") << QStringLiteral("is no identifier");
    QTest::newRow("prefix alone") << QStringLiteral("0x") << QStringLiteral("is no identifier");
    QTest::newRow("too large") << QStringLiteral("20000000") << QStringLiteral("too large");
    QTest::newRow("too many digits") << QStringLiteral("123456789") << QStringLiteral("is no identifier");
    QTest::newRow("backwards") << QStringLiteral("20-10") << QStringLiteral("runs backwards");
    QTest::newRow("too many") << QStringLiteral("0-10000") << QStringLiteral("up to 65536");
    QTest::newRow("all there are") << QStringLiteral("0-1FFFFFFF") << QStringLiteral("up to 65536");
    QTest::newRow("too many together") << QStringLiteral("0-FFFE, 20000-20001") << QStringLiteral("up to 65536");
}

void TestIdentifierList::badTextSaysWhatToChange()
{
    QFETCH(QString, text);
    QFETCH(QString, words);
    const IdentifierList list = parseIdentifierList(text);
    QVERIFY(!list.isValid());
    QVERIFY2(list.error.contains(words), qPrintable(list.error));
}

void TestIdentifierList::longestListIsTaken()
{
    QCOMPARE(parseIdentifierList(QStringLiteral("0-FFFF")).identifiers.size(), 65536);
}

QTEST_APPLESS_MAIN(TestIdentifierList)
#include "tst_identifierlist.moc"
