#include "xbytearray.h"

#include <QtTest>

#include <limits>

namespace {
constexpr int largest = std::numeric_limits<int>::max();
constexpr int smallest = std::numeric_limits<int>::min();

/// The flags of all bytes as a text of 0 and 1.
QString flags(XByteArray &array)
{
    QString text;
    for (const char flag : array.dataChanged(0, array.data().size()))
        text += QLatin1Char(flag == 0 ? '0' : '1');
    return text;
}
} // namespace

class TestXByteArray : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyAndUnlimitedAtFirst();
    void loadedBytesAreUnchanged();
    void bytesBeyondTheEnabledCountAreHiddenNotLost();
    void missingBytesAreAddedAsUnchangedZeros();
    void negativeCountShowsNothing();
    void hugeCountAddsNoMoreThanAnEditorShows();
    void limitIsTheSmallerOfBoth();
    void loweredLimitCutsNothing();
    void addressWidthTakesZeroToSix_data();
    void addressWidthTakesZeroToSix();
    void addressTakesTheDigitsOfTheLargest_data();
    void addressTakesTheDigitsOfTheLargest();
    void newBytesAreChanged();
    void removingTakesTheFlagsAlong();
    void replacedBytesAreChanged();
    void replacingEndsWithTheBytes();
    void replacingTakesTheFirstOfTheBytes();
    void replacingByFewerShortens();
    void flagsAreWrittenInPlace();
    void flagsBeyondTheEndAreDropped();
    void flagOfOneByteIsSetAndCleared();
    void ownBytesAreInserted();
    void ownBytesReplaceFewer();
    void characterIsADotUnlessPrintable_data();
    void characterIsADotUnlessPrintable();
    void positionOutsideChangesNothing_data();
    void positionOutsideChangesNothing();
    void dumpHasAddressDigitsAndCharacters();
    void dumpLineIsEquallyLongForAnyBytes();
    void dumpShowsNoHiddenBytes();
    void dumpLinesBeginWhereTheRangeBegins();
    void dumpBeyondTheBytesHasEmptyLinesUpToTheLimit();
    void dumpAddressesWrapAt32Bits();
};

void TestXByteArray::isEmptyAndUnlimitedAtFirst()
{
    XByteArray array;
    QCOMPARE(array.size(), 0);
    QCOMPARE(array.data(), QByteArray());
    QCOMPARE(array.bytesEnabled(), 16777215);
    QCOMPARE(array.maxSize(), 16777215);
    QCOMPARE(array.addressWidth(), 4);
    QCOMPARE(array.addressOffset(), 0);
}

void TestXByteArray::loadedBytesAreUnchanged()
{
    XByteArray array;
    array.setData("ab");
    array.replace(0, 'x');
    array.setData("abc");
    QCOMPARE(flags(array), QStringLiteral("000"));
}

void TestXByteArray::bytesBeyondTheEnabledCountAreHiddenNotLost()
{
    XByteArray array;
    array.setData(QByteArray(64, 'x'));
    array.setBytesEnabled(4);
    QCOMPARE(array.size(), 4);
    QCOMPARE(array.data(), QByteArray(64, 'x'));
    array.setBytesEnabled(64);
    QCOMPARE(array.size(), 64);
}

void TestXByteArray::missingBytesAreAddedAsUnchangedZeros()
{
    XByteArray array;
    array.setData(QByteArray(64, 'x'));
    array.setBytesEnabled(70);
    QCOMPARE(array.size(), 70);
    QCOMPARE(array.data(), QByteArray(64, 'x') + QByteArray(6, '\0'));
    QCOMPARE(flags(array), QString(70, QLatin1Char('0')));
}

void TestXByteArray::negativeCountShowsNothing()
{
    XByteArray array;
    array.setData("abc");
    for (const int count : {-5, smallest}) {
        array.setBytesEnabled(count);
        QCOMPARE(array.size(), 0);
        QCOMPARE(array.data(), QByteArray("abc"));
    }
}

void TestXByteArray::hugeCountAddsNoMoreThanAnEditorShows()
{
    XByteArray array;
    array.setBytesEnabled(largest);
    QCOMPARE(array.bytesEnabled(), largest);
    QCOMPARE(array.size(), 16777215);
}

void TestXByteArray::limitIsTheSmallerOfBoth()
{
    XByteArray array;
    array.setMaximumSize(8);
    QCOMPARE(array.maxSize(), 8);
    array.setBytesEnabled(4);
    QCOMPARE(array.maxSize(), 4);
}

void TestXByteArray::loweredLimitCutsNothing()
{
    XByteArray array;
    array.setData("abcdef");
    array.setMaximumSize(2);
    QCOMPARE(array.size(), 6);
}

void TestXByteArray::addressWidthTakesZeroToSix_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("result");

    QTest::newRow("none") << 0 << 0;
    QTest::newRow("widest") << 6 << 6;
    QTest::newRow("too wide") << 7 << 4;
    QTest::newRow("negative") << -1 << 4;
}

void TestXByteArray::addressWidthTakesZeroToSix()
{
    QFETCH(int, width);
    XByteArray array;
    array.setAddressWidth(width);
    QTEST(array.addressWidth(), "result");
}

void TestXByteArray::addressTakesTheDigitsOfTheLargest_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("digits");

    QTest::newRow("width when it suffices") << 64 << 0 << 4 << 4;
    QTest::newRow("one for nothing") << 0 << 0 << 0 << 1;
    QTest::newRow("last of one digit") << 15 << 0 << 0 << 1;
    QTest::newRow("first of two digits") << 16 << 0 << 0 << 2;
    QTest::newRow("offset counts") << 1 << 0xFFFF << 4 << 5;
    QTest::newRow("wraps instead of growing") << 64 << largest << 4 << 8;
    QTest::newRow("below zero") << 1 << -16 << 4 << 8;
}

void TestXByteArray::addressTakesTheDigitsOfTheLargest()
{
    QFETCH(int, bytes);
    QFETCH(int, offset);
    QFETCH(int, width);
    XByteArray array;
    array.setData(QByteArray(bytes, 'x'));
    array.setAddressOffset(offset);
    array.setAddressWidth(width);
    QTEST(array.realAddressNumbers(), "digits");
}

void TestXByteArray::newBytesAreChanged()
{
    XByteArray array;
    array.setData("ad");
    array.insert(1, QByteArray("bc"));
    array.insert(4, 'e');
    QCOMPARE(array.data(), QByteArray("abcde"));
    QCOMPARE(flags(array), QStringLiteral("01101"));
}

void TestXByteArray::removingTakesTheFlagsAlong()
{
    XByteArray array;
    array.setData("abcd");
    array.replace(2, 'x');
    array.remove(0, 2);
    QCOMPARE(array.data(), QByteArray("xd"));
    QCOMPARE(flags(array), QStringLiteral("10"));
    array.remove(1, largest);
    QCOMPARE(flags(array), QStringLiteral("1"));
}

void TestXByteArray::replacedBytesAreChanged()
{
    XByteArray array;
    array.setData("abcdef");
    array.replace(0, 'a');
    array.replace(2, QByteArray("xy"));
    QCOMPARE(array.data(), QByteArray("abxyef"));
    QCOMPARE(flags(array), QStringLiteral("101100"));
}

void TestXByteArray::replacingEndsWithTheBytes()
{
    XByteArray array;
    array.setData("abcd");
    array.replace(2, largest, QByteArray("xyz"));
    QCOMPARE(array.data(), QByteArray("abxy"));
    QCOMPARE(flags(array), QStringLiteral("0011"));
}

void TestXByteArray::replacingTakesTheFirstOfTheBytes()
{
    XByteArray array;
    array.setData("abcd");
    array.replace(1, 2, QByteArray("xyz"));
    QCOMPARE(array.data(), QByteArray("axyd"));
}

void TestXByteArray::replacingByFewerShortens()
{
    XByteArray array;
    array.setData("abcdef");
    array.replace(1, 3, QByteArray("x"));
    QCOMPARE(array.data(), QByteArray("axef"));
    QCOMPARE(flags(array), QStringLiteral("0100"));
}

void TestXByteArray::flagsAreWrittenInPlace()
{
    XByteArray array;
    array.setData("abcd");
    array.setDataChanged(0, true);
    array.setDataChanged(2, QByteArray(2, 1));
    QCOMPARE(flags(array), QStringLiteral("1011"));
    QVERIFY(array.dataChanged(0));
    QVERIFY(!array.dataChanged(1));
    QCOMPARE(array.dataChanged(1, 2), QByteArray("\0\1", 2));
}

void TestXByteArray::flagsBeyondTheEndAreDropped()
{
    XByteArray array;
    array.setData("abcd");
    array.setDataChanged(3, QByteArray(20, 1));
    array.setDataChanged(4, QByteArray(20, 1));
    QCOMPARE(flags(array), QStringLiteral("0001"));
}

void TestXByteArray::characterIsADotUnlessPrintable_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QChar>("character");

    QTest::newRow("first printable") << QByteArray(" ") << QChar(0x20);
    QTest::newRow("last printable") << QByteArray("~") << QChar(0x7E);
    QTest::newRow("before the first") << QByteArray("\x1F") << QChar(u'.');
    QTest::newRow("after the last") << QByteArray("\x7F") << QChar(u'.');
    QTest::newRow("upper half") << QByteArray("\xE4") << QChar(u'.');
    QTest::newRow("beyond the end") << QByteArray() << QChar(u'.');
}

void TestXByteArray::characterIsADotUnlessPrintable()
{
    QFETCH(QByteArray, data);
    XByteArray array;
    array.setData(data);
    QTEST(array.asciiChar(0), "character");
}

void TestXByteArray::positionOutsideChangesNothing_data()
{
    QTest::addColumn<int>("position");

    QTest::newRow("before the first") << -1;
    QTest::newRow("far before") << smallest;
    QTest::newRow("two behind the last") << 5;
    QTest::newRow("far behind") << largest;
}

void TestXByteArray::positionOutsideChangesNothing()
{
    QFETCH(int, position);
    XByteArray array;
    array.setData("abcd");
    array.insert(position, 'x');
    array.insert(position, QByteArray("xyz"));
    array.remove(position, 2);
    array.replace(position, 'x');
    array.replace(position, QByteArray("xyz"));
    array.replace(position, largest, QByteArray("xyz"));
    array.setDataChanged(position, true);
    array.setDataChanged(position, QByteArray(3, 1));
    QCOMPARE(array.data(), QByteArray("abcd"));
    QCOMPARE(flags(array), QStringLiteral("0000"));
    QVERIFY(!array.dataChanged(position));
    QCOMPARE(array.dataChanged(position, largest), QByteArray());
    QCOMPARE(array.asciiChar(position), QChar(u'.'));
}

void TestXByteArray::dumpHasAddressDigitsAndCharacters()
{
    XByteArray array;
    array.setData("0123456789abcdef\x7Fg");
    array.setAddressOffset(0x20);
    QCOMPARE(array.toRedableString(0, -1),
             QStringLiteral("0020  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef \n"
                            "0030  7f 67                                            .g               \n"));
}

void TestXByteArray::dumpLineIsEquallyLongForAnyBytes()
{
    XByteArray one;
    one.setData("x");
    XByteArray full;
    full.setData(QByteArray(16, 'x'));
    QCOMPARE(one.toRedableString(0, -1).length(), full.toRedableString(0, -1).length());
    QCOMPARE(one.toRedableString(0, -1).length(), 4 + 1 + 48 + 2 + 17 + 1);
}

void TestXByteArray::dumpShowsNoHiddenBytes()
{
    XByteArray array;
    array.setData("abc");
    array.setBytesEnabled(1);
    QCOMPARE(array.toRedableString(0, -1).simplified(), QStringLiteral("0000 61 a"));
}

void TestXByteArray::dumpLinesBeginWhereTheRangeBegins()
{
    XByteArray array;
    array.setData("abc");
    QCOMPARE(array.toRedableString(1, 2).simplified(), QStringLiteral("0001 62 63 bc"));
    QCOMPARE(array.toRedableString(smallest, 1).simplified(), QStringLiteral("0000 61 62 63 abc"));
    QCOMPARE(array.toRedableString(2, 2), QString());
}

void TestXByteArray::dumpBeyondTheBytesHasEmptyLinesUpToTheLimit()
{
    XByteArray array;
    array.setData("a");
    array.setMaximumSize(40);
    QCOMPARE(array.toRedableString(0, 32).simplified(), QStringLiteral("0000 61 a 0010"));
    QCOMPARE(array.toRedableString(0, largest).simplified(), QStringLiteral("0000 61 a 0010 0020"));
}

void TestXByteArray::dumpAddressesWrapAt32Bits()
{
    XByteArray array;
    array.setData("a");
    array.setAddressOffset(-1);
    QCOMPARE(array.toRedableString(0, -1).simplified(), QStringLiteral("ffffffff 61 a"));
}

void TestXByteArray::flagOfOneByteIsSetAndCleared()
{
    XByteArray array;
    array.setData("abc");
    array.replace(0, QByteArray("xyz"));
    array.setDataChanged(1, false);
    QCOMPARE(flags(array), QStringLiteral("101"));
    array.setDataChanged(1, true);
    QCOMPARE(flags(array), QStringLiteral("111"));
}

void TestXByteArray::ownBytesAreInserted()
{
    XByteArray array;
    array.setData("abcd");
    array.insert(0, array.data());
    QCOMPARE(array.data(), QByteArray("abcdabcd"));
    QCOMPARE(array.dataChanged(0, 100), QByteArray("\1\1\1\1\0\0\0\0", 8));
}

void TestXByteArray::ownBytesReplaceFewer()
{
    XByteArray array;
    array.setData("abcd");
    array.replace(1, 3, array.data());
    QCOMPARE(array.data(), QByteArray("aabc"));
    QCOMPARE(flags(array), QStringLiteral("0111"));
}

QTEST_GUILESS_MAIN(TestXByteArray)
#include "tst_xbytearray.moc"
