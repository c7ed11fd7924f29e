#include "settingsdatabase.h"

#include "childprocess.h"
#include "settingshome.h"

#include <QBitArray>
#include <QColor>
#include <QDate>
#include <QEasingCurve>
#include <QFont>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLine>
#include <QLocale>
#include <QPolygonF>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QUuid>
#include <QtTest>

#include <memory>

namespace {
QString name(const char *text)
{
    return QString::fromLatin1(text);
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
} // namespace

class TestSettingsValues : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void textComesBackAsItWas_data();
    void textComesBackAsItWas();
    void textWithANulIsRefusedAndChangesNothing();
    void anyOtherTypeComesBackAsItWas_data();
    void anyOtherTypeComesBackAsItWas();
    void dateComesBackAsText();
    void integerIsNoText();
    void numberWinsOverAnEarlierText();
    void textDoesNotReachBehindANumber();
    void unknownItemGivesTheDefault();
    void invalidVariantComesBackAsItsBytes();
    void blobIsOneVariantOfStreamVersion17();
    void ordinaryItemsOfAnyScriptWork_data();
    void ordinaryItemsOfAnyScriptWork();
    void placeMarkInAnItemIsReplacedInTheTextTable();
    void apostropheInAnItemFailsAndChangesNothing_data();
    void apostropheInAnItemFailsAndChangesNothing();
    void boundItemMayHoldAnApostrophe();
    void everythingComesInOneHash();
    void missingTablesReadAsEmpty();
    void damagedBlobComesBackAsItsBytes_data();
    void damagedBlobComesBackAsItsBytes();
    void listThatIsCutIsEmpty();
    void damagedBlobNeverCrashes();

private:
    int rows(const char *table) const;
    void putBlob(const QByteArray &bytes);

    std::unique_ptr<SettingsHome> m_home;
    std::unique_ptr<SettingsDatabase> m_store;
};

void TestSettingsValues::init()
{
    m_home = std::make_unique<SettingsHome>();
    m_store = std::make_unique<SettingsDatabase>(nullptr);
    QVERIFY(m_store->openDatabase({}));
    m_store->reset(); // takes the records of the tool away
}

void TestSettingsValues::cleanup()
{
    m_store.reset();
    m_home.reset();
}

void TestSettingsValues::putBlob(const QByteArray &bytes)
{
    QSqlQuery query(m_store->getDatabase());
    query.prepare(QStringLiteral("insert or replace into GenericSettings values('item', :value)"));
    query.bindValue(QStringLiteral(":value"), bytes);
    QVERIFY(query.exec());
}

int TestSettingsValues::rows(const char *table) const
{
    QSqlQuery query(m_store->getDatabase());
    query.exec(QStringLiteral("select count(*) from ") + name(table));
    return query.next() ? query.value(0).toInt() : -1;
}

void TestSettingsValues::textComesBackAsItWas_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("empty") << QString();
    QTest::newRow("plain") << name("plain text");
    QTest::newRow("apostrophe") << name("it's");
    QTest::newRow("only apostrophes") << name("'''");
    QTest::newRow("quotation marks") << name("\"quoted\"");
    QTest::newRow("per cent signs") << name("%1 %2 %% %99");
    QTest::newRow("statement") << name("'); drop table MiscSettings; --");
    QTest::newRow("lines") << name("one\ntwo\r\nthree\ttabbed");
    QTest::newRow("many scripts") << text("\xC3\x84pfel \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x9A\x8C");
    QTest::newRow("1 MiB of UTF-8") << QString(512 * 1024, QChar(0x00E4));
}

void TestSettingsValues::textComesBackAsItWas()
{
    QFETCH(QString, value);
    QVERIFY(m_store->setValue(name("item"), value));
    QCOMPARE(m_store->value(name("item"), 7), QVariant(value));
    QCOMPARE(m_store->getMiscSettingsValue(name("item")), value);
    QVERIFY(m_store->existMiscSettingsValue(name("item")));
    QCOMPARE(rows("MiscSettings"), 1);
    QCOMPARE(rows("GenericSettings"), 0);
}

void TestSettingsValues::textWithANulIsRefusedAndChangesNothing()
{
    QVERIFY(m_store->setValue(name("item"), name("before")));
    // SQL ends at it. Better no value than the first half of one.
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^bool SettingsDatabase::setMiscValue\\(")));
    QVERIFY(!m_store->setValue(name("item"), QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"))));
    QCOMPARE(m_store->value(name("item"), {}), QVariant(name("before")));
    QCOMPARE(rows("MiscSettings"), 1);
}

void TestSettingsValues::anyOtherTypeComesBackAsItWas_data()
{
    QTest::addColumn<QVariant>("value");
    int number = 0;
    const auto add = [&number](const QVariant &value) { QTest::addRow("%d %s", ++number, value.typeName()) << value; };
    add(true);
    add(-5);
    add(5U);
    add(std::numeric_limits<qint64>::min());
    add(std::numeric_limits<quint64>::max());
    add(0.1);
    add(0.25F);
    add(QVariant::fromValue<short>(-3));
    add(QVariant::fromValue<ushort>(3));
    add(QVariant::fromValue<char>('c'));
    add(QVariant::fromValue<signed char>(-1));
    add(QVariant::fromValue<uchar>(200));
    add(QVariant::fromValue<long>(-70));
    add(QVariant::fromValue<ulong>(70));
    add(QChar(0x00E4));
    add(QByteArray("\x00\xFF'\"%1", 6));
    add(QStringList{name("a"), QString(), name("it's")});
    add(QVariantList{1, name("two"), QVariantList{3.0}});
    add(QVariantMap{{name("a"), 1}, {name("b"), name("c")}});
    add(QVariantHash{{name("a"), 1}});
    add(QVariantList{QVariantList()});
    add(QVariantMap{{name("list"), QVariantList{QVariantMap{{name("deep"), QVariantHash{{name("x"), QVariant()}}}}}}});
    add(QPolygon(QVector<QPoint>{{1, 2}, {3, 4}}));
    add(QPolygonF(QVector<QPointF>{{1.5, 2}, {3, 4.5}}));
    QBitArray bits(11);
    bits.setBit(3);
    add(bits);
    add(QTime(23, 59, 59, 999));
    add(QDateTime(QDate(2026, 2, 28), QTime(1, 2, 3, 4), Qt::UTC));
    add(QUrl(name("https://example.org/a?b=c#d")));
    add(QLocale(QLocale::German, QLocale::Austria));
    add(QRect(1, 2, 3, 4));
    add(QRectF(0.5, 1.5, 2.5, 3.5));
    add(QSize(1, 2));
    add(QSizeF(1.5, 2.5));
    add(QLine(1, 2, 3, 4));
    add(QLineF(1, 2, 3, 4.5));
    add(QPoint(-1, 2));
    add(QPointF(-1.5, 2.5));
    add(QRegularExpression(name("a+'b"), QRegularExpression::CaseInsensitiveOption));
    add(QEasingCurve(QEasingCurve::OutBack));
    add(QUuid(name("{01234567-89ab-cdef-0123-456789abcdef}")));
    add(QColor(1, 2, 3, 4));
    add(QFont(name("Sans"), 13));
}

void TestSettingsValues::anyOtherTypeComesBackAsItWas()
{
    QFETCH(QVariant, value);
    QVERIFY(m_store->setValue(name("item"), value));
    const QVariant back = m_store->value(name("item"), {});
    QCOMPARE(back.userType(), value.userType());
    QCOMPARE(back, value);
    QCOMPARE(rows("GenericSettings"), 1);
    QCOMPARE(rows("MiscSettings"), 0);
}

void TestSettingsValues::dateComesBackAsText()
{
    QVERIFY(m_store->setValue(name("item"), QDate(2026, 2, 28)));
    QCOMPARE(m_store->value(name("item"), {}), QVariant(name("2026-02-28")));
    QCOMPARE(rows("GenericSettings"), 0);
}

void TestSettingsValues::integerIsNoText()
{
    QVERIFY(m_store->setValue(name("item"), 500));
    QCOMPARE(m_store->value(name("item"), {}).type(), QVariant::Int);
    QVERIFY(!m_store->existMiscSettingsValue(name("item")));
}

void TestSettingsValues::numberWinsOverAnEarlierText()
{
    QVERIFY(m_store->setValue(name("item"), name("five")));
    QVERIFY(m_store->setValue(name("item"), 5));
    QCOMPARE(m_store->value(name("item"), {}), QVariant(5));
    QVERIFY(m_store->existMiscSettingsValue(name("item")));
    QCOMPARE(m_store->getAllSettings().value(name("item")), QVariant(5));
}

void TestSettingsValues::textDoesNotReachBehindANumber()
{
    QVERIFY(m_store->setValue(name("item"), 5));
    QVERIFY(m_store->setValue(name("item"), name("five")));
    QCOMPARE(m_store->value(name("item"), {}), QVariant(5));
    QCOMPARE(m_store->getMiscSettingsValue(name("item")), name("five"));
}

void TestSettingsValues::unknownItemGivesTheDefault()
{
    QCOMPARE(m_store->value(name("nothing"), 42), QVariant(42));
    QVERIFY(m_store->getMiscSettingsValue(name("nothing")).isNull());
    QVERIFY(!m_store->existMiscSettingsValue(name("nothing")));
}

void TestSettingsValues::invalidVariantComesBackAsItsBytes()
{
    QVERIFY(m_store->setValue(name("item"), QVariant()));
    const QVariant back = m_store->value(name("item"), 42);
    // Type number 0 and the mark of a null value.
    QCOMPARE(back, QVariant(QByteArray::fromHex("0000000001")));
}

void TestSettingsValues::blobIsOneVariantOfStreamVersion17()
{
    QVERIFY(m_store->setGenericSetting(name("item"), 258));
    QSqlQuery query(m_store->getDatabase());
    QVERIFY(query.exec(QStringLiteral("select value from GenericSettings")) && query.next());
    QCOMPARE(query.value(0).toByteArray(), QByteArray::fromHex("000000020000000102"));
}

void TestSettingsValues::ordinaryItemsOfAnyScriptWork_data()
{
    QTest::addColumn<QString>("item");
    QTest::newRow("blank") << name("an item");
    QTest::newRow("empty") << name("");
    QTest::newRow("quotation mark") << name("\"item\"");
    QTest::newRow("other place marks") << name("%3 %L5");
    QTest::newRow("other script") << text("\xE4\xB8\xAD\xE6\x96\x87");
    QTest::newRow("comment") << name("a -- b /* c");
}

void TestSettingsValues::ordinaryItemsOfAnyScriptWork()
{
    QFETCH(QString, item);
    QVERIFY(m_store->setValue(item, name("text")));
    QCOMPARE(m_store->value(item, {}), QVariant(name("text")));
    QVERIFY(m_store->existMiscSettingsValue(item));
    QVERIFY(m_store->setValue(item, 1));
    QCOMPARE(m_store->value(item, {}), QVariant(1));
}

void TestSettingsValues::placeMarkInAnItemIsReplacedInTheTextTable()
{
    QVERIFY(m_store->setValue(name("a%2b"), name("X")));
    QVERIFY(!m_store->existMiscSettingsValue(name("a%2b")));
    QCOMPARE(m_store->getMiscSettingsValue(name("aXb")), name("X"));

    QVERIFY(m_store->setValue(name("a%2b"), 5));
    QCOMPARE(m_store->value(name("a%2b"), {}), QVariant(5));
}

void TestSettingsValues::apostropheInAnItemFailsAndChangesNothing_data()
{
    QTest::addColumn<QString>("item");
    QTest::newRow("alone") << name("it's");
    QTest::newRow("two rows") << name("k1','v1'),('k2");
    QTest::newRow("always true") << name("' or '1'='1");
    QTest::newRow("doubled") << name("it''s");
}

void TestSettingsValues::apostropheInAnItemFailsAndChangesNothing()
{
    QFETCH(QString, item);
    QVERIFY(m_store->setValue(name("kept"), name("value")));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^bool SettingsDatabase::setMiscValue\\(.*")));
    QVERIFY(!m_store->setValue(item, name("text")));
    QCOMPARE(rows("MiscSettings"), 1);

    const QRegularExpression read(QStringLiteral("^QVariant SettingsDatabase::value\\(.*"));
    QTest::ignoreMessage(QtDebugMsg, read);
    QTest::ignoreMessage(QtDebugMsg, read);
    QCOMPARE(m_store->value(item, 42), QVariant(42));
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("^bool SettingsDatabase::existMiscSettingsValue\\(.*")));
    QVERIFY(!m_store->existMiscSettingsValue(item));
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("^QString SettingsDatabase::getMiscSettingsValue\\(.*")));
    QVERIFY(m_store->getMiscSettingsValue(item).isNull());
}

void TestSettingsValues::boundItemMayHoldAnApostrophe()
{
    QVERIFY(m_store->setGenericSetting(name("it's"), 5));
    QCOMPARE(m_store->getAllSettings().value(name("it's")), QVariant(5));
}

void TestSettingsValues::everythingComesInOneHash()
{
    QVERIFY(m_store->setValue(name("text"), name("a")));
    QVERIFY(m_store->setValue(name("number"), 2));
    QVERIFY(m_store->setValue(name("both"), name("text")));
    QVERIFY(m_store->setValue(name("both"), 3));
    const QHash<QString, QVariant> expected = {{name("text"), name("a")}, {name("number"), 2}, {name("both"), 3}};
    QCOMPARE(m_store->getAllSettings(), expected);
}

void TestSettingsValues::missingTablesReadAsEmpty()
{
    QSqlQuery query(m_store->getDatabase());
    QVERIFY(query.exec(QStringLiteral("drop table GenericSettings")));
    QVERIFY(m_store->setValue(name("item"), name("text")));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("SettingsDatabase::value.*GenericSettings")));
    QCOMPARE(m_store->value(name("item"), {}), QVariant(name("text")));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("getAllSettings.*GenericSettings")));
    QCOMPARE(m_store->getAllSettings().size(), 1);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("setGenericSetting.*GenericSettings")));
    QVERIFY(!m_store->setValue(name("item"), 5));
}

void TestSettingsValues::damagedBlobComesBackAsItsBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("cut") << QByteArray::fromHex("0000");
    QTest::newRow("more points than memory holds") << QByteArray::fromHex("00000047007fffffff");
    QTest::newRow("more elements than bytes") << QByteArray::fromHex("00000009003fffffff");
    QTest::newRow("lists in lists without end") << QByteArray::fromHex("000000090000000001").repeated(100000);
}

void TestSettingsValues::damagedBlobComesBackAsItsBytes()
{
    QFETCH(QByteArray, bytes);
    putBlob(bytes);
    QCOMPARE(m_store->value(name("item"), {}).toByteArray(), bytes);
}

void TestSettingsValues::listThatIsCutIsEmpty()
{
    putBlob(QByteArray::fromHex("0000000900000000020000000200000000010000000200"));
    QCOMPARE(m_store->value(name("item"), {}), QVariant(QVariantList()));
}

void TestSettingsValues::damagedBlobNeverCrashes()
{
    const QString failure = ChildProcess::run([this] {
        // Qt has a word to say on most of these.
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        // Every type that Qt reads by a count of its own, with counts that lie.
        for (int type = 1; type < 90; ++type) {
            for (const char *count : {"ffffffff", "7fffffff", "00ffffff", "80000000"}) {
                putBlob(QByteArray(3, '\0') + char(type) + char(0) + QByteArray::fromHex(count) + QByteArray(64, '\1'));
                m_store->value(name("item"), {});
            }
        }
        putBlob(QByteArray::fromHex("00000fff00")); // a type that Qt does not have
        m_store->value(name("item"), {});
        return QString();
    });
    QCOMPARE(failure, QString());
}

QTEST_MAIN(TestSettingsValues)
#include "tst_settingsvalues.moc"
