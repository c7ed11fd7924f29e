#include "hextext.h"

#include <QtTest>

class TestHexText : public QObject
{
    Q_OBJECT

private slots:
    void digitReplacesOneHalfOfTheByte_data();
    void digitReplacesOneHalfOfTheByte();
    void everyByteHasTwoLowerCaseDigits();
    void clipboardLineEndsWithTheSixteenthByteOfTheEditor_data();
    void clipboardLineEndsWithTheSixteenthByteOfTheEditor();
    void addressIsAtLeastAsWideAsTold();
};

void TestHexText::digitReplacesOneHalfOfTheByte_data()
{
    QTest::addColumn<bool>("high");
    QTest::addColumn<char>("digit");
    QTest::addColumn<int>("result");

    QTest::newRow("high, first") << true << '0' << 0x0B;
    QTest::newRow("high, last decimal") << true << '9' << 0x9B;
    QTest::newRow("high, first letter") << true << 'a' << 0xAB;
    QTest::newRow("high, last") << true << 'f' << 0xFB;
    QTest::newRow("low, first") << false << '0' << 0xA0;
    QTest::newRow("low, last") << false << 'f' << 0xAF;
}

void TestHexText::digitReplacesOneHalfOfTheByte()
{
    QFETCH(bool, high);
    QFETCH(char, digit);
    QTEST(int(uchar(withDigit('\xAB', high, digit))), "result");
}

void TestHexText::everyByteHasTwoLowerCaseDigits()
{
    for (int value = 0; value < 256; ++value)
        QCOMPARE(hexDigits(char(value)), QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')));
}

void TestHexText::clipboardLineEndsWithTheSixteenthByteOfTheEditor_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("firstIndex");
    QTest::addColumn<QString>("text");

    QTest::newRow("nothing") << 0 << 15 << QString();
    QTest::newRow("before the sixteenth") << 1 << 14 << QStringLiteral("78 ");
    QTest::newRow("the sixteenth") << 1 << 15 << QStringLiteral("78 \n");
    QTest::newRow("across") << 3 << 30 << QStringLiteral("78 78 \n78 ");
}

void TestHexText::clipboardLineEndsWithTheSixteenthByteOfTheEditor()
{
    QFETCH(int, bytes);
    QFETCH(int, firstIndex);
    QTEST(clipboardText(QByteArray(bytes, 'x'), firstIndex), "text");
}

void TestHexText::addressIsAtLeastAsWideAsTold()
{
    QCOMPARE(addressText(0x10, 0xA, 4), QStringLiteral("001a"));
    QCOMPARE(addressText(0x10, 0xA, 1), QStringLiteral("1a"));
}

QTEST_APPLESS_MAIN(TestHexText)
#include "tst_hextext.moc"
