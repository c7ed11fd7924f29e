#include "applicationinterfacehandler.h"

#include "fakefamily.h"
#include "settingshome.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlQuery>
#include <QtTest>

#include <memory>

using Adapter = AbstractCanAdapter;

namespace {
// A type that no built-in family has, so that the fake one answers.
constexpr Adapter::CanAdapterType fakeType = Adapter::CanAdapterKvaser;

/// A store on a fresh file and a collection.
struct Tool
{
    Tool() { opened = store.openDatabase({}); }

    FakeAdapter *add(const QString &device, bool primary = false)
    {
        auto *adapter = new FakeAdapter(fakeType, device);
        adapter->setCanAdapterOption(Adapter::OptionDescription, device + QStringLiteral("'s description"));
        collection.addNewCanAdapter(adapter, primary, true, false);
        return adapter;
    }

    bool execute(const QString &statement)
    {
        QSqlQuery query(store.getDatabase());
        return query.exec(statement);
    }

    /// The first column of all rows.
    QStringList read(const QString &statement)
    {
        QSqlQuery query(store.getDatabase());
        query.exec(statement);
        QStringList values;
        while (query.next())
            values.append(query.value(0).toString());
        return values;
    }

    QStringList devices() const
    {
        QStringList names;
        for (quint16 row = 0; row < collection.getAdapterCount(); ++row)
            names.append(collection.adapterAt(row)->getCanAdapterOption(Adapter::OptionDeviceName).toString());
        return names;
    }

    SettingsDatabase store{nullptr};
    MultiCanAdapterHandler collection;
    bool opened = false;
};

void ignoreRemovalOfNothing()
{
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Failed to remove")));
}
} // namespace

class TestAdapterPersistence : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void savedAdaptersComeBackWithIdentifiersAndRoles();
    void rowsAreInTheOrderOfIdentifiers();
    void savingAgainRewritesTheTable();
    void emptyMapLeavesAnEmptyTable();
    void fileWithoutAdaptersGivesALine();
    void resultOfRestoringIsAlwaysFalse();
    void rowWithoutBytesIsSkipped();
    void rowOfAnUnknownTypeLeavesTheOthersAlone();
    void damagedBytesRestoreWhatTheyCan();
    void saveOnAClosedStoreFailsWithALine();
    void aThousandAdaptersComeBack();

    void removalCleansTheTablesOfTheApplication();
    void tableWithoutTheColumnGivesALine();
    void tableNameIsNeverTakenForAStatement_data();
    void tableNameIsNeverTakenForAStatement();

    void openingRestoresTheAdapters();
    void openingListensForRemovedAdapters();
    void openingTwiceListensTwice();
    void openingADamagedFileGoesOnWithoutAdapters();

private:
    std::unique_ptr<SettingsHome> m_home;
};

void TestAdapterPersistence::initTestCase()
{
    FakeFamily::install(fakeType);
}

void TestAdapterPersistence::cleanupTestCase()
{
    CanAdapterFactory::unregisterFamily(fakeType);
}

void TestAdapterPersistence::init()
{
    m_home = std::make_unique<SettingsHome>();
}

void TestAdapterPersistence::cleanup()
{
    m_home.reset();
}

void TestAdapterPersistence::savedAdaptersComeBackWithIdentifiersAndRoles()
{
    {
        Tool tool;
        QVERIFY(tool.opened);
        tool.add(QStringLiteral("A"));
        FakeAdapter *second = tool.add(QStringLiteral("B"), true);
        tool.add(QStringLiteral("C"))->setCanAdapterOption(Adapter::OptionLinkedAdapter, 2U);
        tool.collection.removeAdapterAt(0);
        QCOMPARE(tool.collection.getPrimaryAdapter(), second);
        QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
        ignoreRemovalOfNothing();
        QVERIFY(tool.store.saveDatabase());
    }
    Tool tool;
    QVERIFY(tool.opened);
    tool.store.restoreAdapters(&tool.collection);
    QCOMPARE(tool.collection.getAdapterMap()->keys(), (QList<quint16>{2, 3}));
    QCOMPARE(tool.devices(), (QStringList{QStringLiteral("B"), QStringLiteral("C")}));
    const AbstractCanAdapter *primary = tool.collection.getPrimaryAdapter();
    QCOMPARE(primary, tool.collection.adapterAt(0));
    QCOMPARE(primary->getCanAdapterOption(Adapter::OptionDescription).toString(), QStringLiteral("B's description"));
    QCOMPARE(tool.collection.adapterAt(1)->getCanAdapterOption(Adapter::OptionLinkedAdapter).toUInt(), 2U);
}

void TestAdapterPersistence::rowsAreInTheOrderOfIdentifiers()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    FakeAdapter *second = tool.add(QStringLiteral("B"));
    tool.collection.moveAdapter(second, MultiCanAdapterHandler::Up);
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    QCOMPARE(tool.read(QStringLiteral("select devicename from CanAdapters order by rowid")),
             (QStringList{QStringLiteral("B"), QStringLiteral("A")}));
    QCOMPARE(tool.read(QStringLiteral("select type from CanAdapters")),
             (QStringList{QString::number(fakeType), QString::number(fakeType)}));
    QCOMPARE(
        tool.read(QStringLiteral("select sql from sqlite_master where name = 'CanAdapters'")),
        QStringList(QStringLiteral("CREATE TABLE CanAdapters (type integer, devicename text, adaptersettings blob)")));
}

void TestAdapterPersistence::savingAgainRewritesTheTable()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    QCOMPARE(tool.read(QStringLiteral("select devicename from CanAdapters")), QStringList(QStringLiteral("A")));
}

void TestAdapterPersistence::emptyMapLeavesAnEmptyTable()
{
    Tool tool;
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    QCOMPARE(tool.read(QStringLiteral("select count(*) from CanAdapters")), QStringList(QStringLiteral("0")));
    QVERIFY(!tool.store.restoreAdapters(&tool.collection));
    QCOMPARE(tool.collection.getAdapterCount(), quint16(0));
}

void TestAdapterPersistence::fileWithoutAdaptersGivesALine()
{
    Tool tool;
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("^bool SettingsDatabase::restoreAdapters\\(.*"
                                                           "CanAdapters")));
    QVERIFY(!tool.store.restoreAdapters(&tool.collection));
    QCOMPARE(tool.collection.getAdapterCount(), quint16(0));
}

void TestAdapterPersistence::resultOfRestoringIsAlwaysFalse()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    tool.collection.removeAllAdapters();
    QVERIFY(!tool.store.restoreAdapters(&tool.collection));
    QCOMPARE(tool.devices(), QStringList(QStringLiteral("A")));
}

void TestAdapterPersistence::rowWithoutBytesIsSkipped()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    QVERIFY(tool.execute(QStringLiteral("insert into CanAdapters values(%1, 'B', x'')").arg(fakeType)));
    QVERIFY(tool.execute(QStringLiteral("insert into CanAdapters values(%1, 'C', null)").arg(fakeType)));
    tool.collection.removeAllAdapters();
    tool.store.restoreAdapters(&tool.collection);
    QCOMPARE(tool.devices(), QStringList(QStringLiteral("A")));
}

void TestAdapterPersistence::rowOfAnUnknownTypeLeavesTheOthersAlone()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    tool.add(QStringLiteral("B"));
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    QVERIFY(tool.execute(QStringLiteral("update CanAdapters set type = 999 where devicename = 'A'")));
    tool.collection.removeAllAdapters();
    tool.store.restoreAdapters(&tool.collection);
    QCOMPARE(tool.devices(), QStringList(QStringLiteral("B")));
    // The row itself goes only with the next rewriting.
    QCOMPARE(tool.read(QStringLiteral("select count(*) from CanAdapters")), QStringList(QStringLiteral("2")));
}

void TestAdapterPersistence::damagedBytesRestoreWhatTheyCan()
{
    Tool tool;
    FakeAdapter *adapter = tool.add(QStringLiteral("A"));
    const QByteArray whole = adapter->getValuesAsByteArray();
    const auto restoreFrom = [&tool](const QByteArray &bytes) {
        tool.collection.removeAllAdapters();
        QSqlQuery query(tool.store.getDatabase());
        query.exec(QStringLiteral("delete from CanAdapters"));
        query.prepare(QStringLiteral("insert into CanAdapters values(:type, 'A', :bytes)"));
        query.bindValue(QStringLiteral(":type"), uint(fakeType));
        query.bindValue(QStringLiteral(":bytes"), bytes);
        query.exec();
        tool.store.restoreAdapters(&tool.collection);
    };
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    for (int length = 1; length <= whole.size(); ++length) {
        restoreFrom(whole.left(length));
        QCOMPARE(tool.devices(), QStringList(QStringLiteral("A")));
    }
    QRandomGenerator random(20261121);
    for (int round = 0; round < 200; ++round) {
        QByteArray bytes = round % 2 == 0 ? whole : QByteArray(1 + int(random.bounded(300)), '\0');
        for (int i = 0; i < bytes.size(); ++i) {
            if (round % 2 == 1 || random.bounded(10) == 0)
                bytes[i] = static_cast<char>(random.bounded(256));
        }
        restoreFrom(bytes);
        QCOMPARE(tool.devices(), QStringList(QStringLiteral("A")));
    }
}

void TestAdapterPersistence::saveOnAClosedStoreFailsWithALine()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    tool.store.close();
    const QRegularExpression line(QStringLiteral("^bool SettingsDatabase::saveAdapters\\("));
    QTest::ignoreMessage(QtDebugMsg, line); // the table
    QTest::ignoreMessage(QtDebugMsg, line); // the end
    for (int statement = 0; statement < 2; ++statement)
        QTest::ignoreMessage(QtWarningMsg, "QSqlQuery::exec: database not open");
    QTest::ignoreMessage(QtWarningMsg, "QSqlQuery::prepare: database not open");
    QVERIFY(!tool.store.saveAdapters(tool.collection.getAdapterMap()));
}

void TestAdapterPersistence::aThousandAdaptersComeBack()
{
    Tool tool;
    for (int i = 0; i < 1000; ++i)
        tool.add(QString::number(i));
    const QList<quint16> identifiers = tool.collection.getAdapterMap()->keys();
    const QStringList devices = tool.devices();
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    tool.collection.removeAllAdapters();
    tool.store.restoreAdapters(&tool.collection);
    QCOMPARE(tool.collection.getAdapterMap()->keys(), identifiers);
    QCOMPARE(tool.devices(), devices);
}

void TestAdapterPersistence::removalCleansTheTablesOfTheApplication()
{
    Tool tool;
    const QStringList tables = {QStringLiteral("InterfaceSettings"), QStringLiteral("MyInterfaceSettingsTable"),
                                QStringLiteral("interfacesettings2"), QStringLiteral("Other")};
    for (const QString &table : tables) {
        QVERIFY(tool.execute(QStringLiteral("create table %1 (interface integer, value text)").arg(table)));
        QVERIFY(tool.execute(QStringLiteral("insert into %1 values(7, 'seven'), (8, 'eight')").arg(table)));
    }
    tool.store.handleRemovedAdapter(7);
    QStringList left;
    for (const QString &table : tables)
        left.append(tool.read(QStringLiteral("select value from %1").arg(table)).join(QLatin1Char(',')));
    QCOMPARE(left,
             (QStringList{QStringLiteral("eight"), QStringLiteral("eight"), QStringLiteral("seven,eight"),
                          QStringLiteral("seven,eight")}));
}

void TestAdapterPersistence::tableWithoutTheColumnGivesALine()
{
    Tool tool;
    QVERIFY(tool.execute(QStringLiteral("create table FooInterfaceSettings (value text)")));
    QVERIFY(tool.execute(QStringLiteral("insert into FooInterfaceSettings values('kept')")));
    QVERIFY(tool.execute(QStringLiteral("create table ZooInterfaceSettings (interface integer)")));
    QVERIFY(tool.execute(QStringLiteral("insert into ZooInterfaceSettings values(7)")));
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression(QStringLiteral("^void SettingsDatabase::removeIdFromInterfaceSettings\\(.*"
                                                           "FooInterfaceSettings.*interface")));
    tool.store.handleRemovedAdapter(7);
    QCOMPARE(tool.read(QStringLiteral("select value from FooInterfaceSettings")), QStringList(QStringLiteral("kept")));
    QCOMPARE(tool.read(QStringLiteral("select interface from ZooInterfaceSettings")), QStringList());
}

void TestAdapterPersistence::tableNameIsNeverTakenForAStatement_data()
{
    QTest::addColumn<QString>("table");
    QTest::newRow("blank") << QStringLiteral("My InterfaceSettings");
    QTest::newRow("point") << QStringLiteral("Other.InterfaceSettings");
    QTest::newRow("quotation mark") << QStringLiteral("The \"InterfaceSettings\"");
    QTest::newRow("apostrophe") << QStringLiteral("Owner's InterfaceSettings");
    QTest::newRow("brackets") << QStringLiteral("[Other] InterfaceSettings");
    QTest::newRow("statement") << QStringLiteral("Other; delete from Other where 1 --InterfaceSettings");
    QTest::newRow("condition") << QStringLiteral("Other where 1 --InterfaceSettings");
    QTest::newRow("place mark") << QStringLiteral("%2 InterfaceSettings");
}

void TestAdapterPersistence::tableNameIsNeverTakenForAStatement()
{
    QFETCH(QString, table);
    Tool tool;
    QString quoted = table;
    quoted = QLatin1Char('"') + quoted.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
    QVERIFY(tool.execute(QStringLiteral("create table Other (interface integer)")));
    QVERIFY(tool.execute(QStringLiteral("insert into Other values(7), (8)")));
    QVERIFY(tool.execute(QStringLiteral("create table ") + quoted + QStringLiteral(" (interface integer)")));
    QVERIFY(tool.execute(QStringLiteral("insert into ") + quoted + QStringLiteral(" values(7), (8)")));
    tool.store.handleRemovedAdapter(7);
    QCOMPARE(tool.read(QStringLiteral("select interface from Other")),
             (QStringList{QStringLiteral("7"), QStringLiteral("8")}));
    QCOMPARE(tool.read(QStringLiteral("select interface from ") + quoted), QStringList(QStringLiteral("8")));
}

namespace {
/// What an application makes around the handler.
struct Application
{
    SettingsDatabase store{nullptr};
    MultiCanAdapterHandler collection;
    QPointer<DatachunkHandler> trace;
    QPointer<AbstractCanAdapter> primary;
    QPointer<CanScheduler> scheduler;
    ApplicationInterfaceHandler handler{&store, trace, &collection, primary, scheduler, nullptr};
};

void saveOneAdapter()
{
    Tool tool;
    tool.add(QStringLiteral("A"));
    tool.execute(QStringLiteral("create table PlotInterfaceSettings (interface integer)"));
    tool.execute(QStringLiteral("insert into PlotInterfaceSettings values(1)"));
    QVERIFY(tool.store.saveAdapters(tool.collection.getAdapterMap()));
    ignoreRemovalOfNothing();
    QVERIFY(tool.store.saveDatabase());
}
} // namespace

void TestAdapterPersistence::openingRestoresTheAdapters()
{
    saveOneAdapter();
    Application application;
    application.handler.openSettingsDatabase();
    QCOMPARE(application.collection.getAdapterCount(), quint16(1));
    QVERIFY(application.store.isOpen());
}

void TestAdapterPersistence::openingListensForRemovedAdapters()
{
    saveOneAdapter();
    Application application;
    application.handler.openSettingsDatabase();
    application.collection.removeAdapterAt(0);
    QSqlQuery query(application.store.getDatabase());
    QVERIFY(query.exec(QStringLiteral("select count(*) from PlotInterfaceSettings")) && query.next());
    QCOMPARE(query.value(0).toInt(), 0);
}

void TestAdapterPersistence::openingTwiceListensTwice()
{
    saveOneAdapter();
    Application application;
    application.handler.openSettingsDatabase();
    application.handler.openSettingsDatabase();
    QSqlQuery query(application.store.getDatabase());
    QVERIFY(query.exec(QStringLiteral("create table BadInterfaceSettings (value text)")));
    const QRegularExpression line(QStringLiteral("removeIdFromInterfaceSettings\\(.*BadInterfaceSettings"));
    QTest::ignoreMessage(QtDebugMsg, line);
    QTest::ignoreMessage(QtDebugMsg, line);
    application.collection.removeAdapterAt(0);
}

void TestAdapterPersistence::openingADamagedFileGoesOnWithoutAdapters()
{
    m_home->makeFolder();
    QFile file(m_home->standardFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, 'x'));
    file.close();
    Application application;
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("createMiscTable")));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("createGenericSettingsTable")));
    application.handler.openSettingsDatabase();
    QCOMPARE(application.collection.getAdapterCount(), quint16(0));
}

QTEST_MAIN(TestAdapterPersistence)
#include "tst_adapterpersistence.moc"
