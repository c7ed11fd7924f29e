#include "datachunkhandler.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "identifiermodel.h"
#include "messages.h"
#include "messagetemplate.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QSignalSpy>
#include <QTest>

class TestIdentifierModel : public QObject
{
    Q_OBJECT

private slots:
    void oneRowForEachIdentifier();
    void rowsStayWithTheirIdentifierWhenOthersComeInBetween();
    void repeatedFramesChangeTheirRowsOnly();
    void refreshReadsABoundedNumberOfFrames();
    void manyNewIdentifiersAtOnceAreTakenIn();
    void clearedStoreStartsAgain();
    void resetStartsAgain();
    void cycleTimeHasItsExtremesAsToolTip();
    void storeThatIsGoneLeavesNoRows();
    void rowTellsTheColourOfItsLastFrame();
    void rowGivesItsLastFrame();
    void everyColumnHasAHeader();

private:
    static QString row(const IdentifierModel &model, int row)
    {
        QStringList cells;
        for (int column = 0; column < IdentifierModel::ColumnCount; ++column)
            cells.append(model.index(row, column).data().toString());
        return cells.join(QLatin1Char('|'));
    }
};

void TestIdentifierModel::oneRowForEachIdentifier()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(model.refresh());
    QCOMPARE(model.rowCount(), 0);
    store.appendCanMessage(at(0, dataFrame(0x705, "7F")));
    store.appendCanMessage(at(100, dataFrame(0x080)));
    store.appendCanMessage(at(1'000'250, dataFrame(0x705, "05")));
    QVERIFY(model.refresh());
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(row(model, 0), QStringLiteral("080|CAN|1||0||SYNC"));
    QCOMPARE(row(model, 1), QStringLiteral("705|CAN|2|1000.250|1|05|Heartbeat, node 5: operational"));
}

void TestIdentifierModel::rowsStayWithTheirIdentifierWhenOthersComeInBetween()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (quint32 id : {0x100u, 0x300u})
        store.appendCanMessage(at(0, dataFrame(id)));
    model.refresh();
    const QPersistentModelIndex chosen = model.index(1, 0);
    QSignalSpy inserted(&model, &IdentifierModel::rowsInserted);
    for (quint32 id : {0x210u, 0x400u, 0x200u, 0x050u, 0x100u})
        store.appendCanMessage(at(0, dataFrame(id)));
    model.refresh();
    QCOMPARE(chosen.data().toString(), QStringLiteral("300"));
    QCOMPARE(chosen.row(), 4);
    QCOMPARE(inserted.count(), 3);
    QCOMPARE(model.rowCount(), 6);
}

void TestIdentifierModel::repeatedFramesChangeTheirRowsOnly()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    for (quint32 id = 0; id < 10; ++id)
        store.appendCanMessage(at(0, dataFrame(id)));
    model.refresh();
    QSignalSpy changed(&model, &IdentifierModel::dataChanged);
    QSignalSpy inserted(&model, &IdentifierModel::rowsInserted);
    model.refresh();
    QCOMPARE(changed.count(), 0);
    store.appendCanMessage(at(5, dataFrame(4, "01")));
    store.appendCanMessage(at(5, dataFrame(6, "01")));
    model.refresh();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed[0][0].toModelIndex().row(), 4);
    QCOMPARE(changed[0][1].toModelIndex().row(), 6);
    QCOMPARE(inserted.count(), 0);
}

void TestIdentifierModel::refreshReadsABoundedNumberOfFrames()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    const unsigned int frames = IdentifierModel::framesPerRefresh + 1;
    for (unsigned int i = 0; i < frames; ++i)
        store.appendCanMessage(at(i, dataFrame(1)));
    QVERIFY(!model.refresh());
    QCOMPARE(model.index(0, IdentifierModel::CountColumn).data().toUInt(), IdentifierModel::framesPerRefresh);
    QVERIFY(model.refresh());
    QCOMPARE(model.index(0, IdentifierModel::CountColumn).data().toUInt(), frames);
}

void TestIdentifierModel::manyNewIdentifiersAtOnceAreTakenIn()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    store.appendCanMessage(at(0, dataFrame(1000, "", true)));
    model.refresh();
    QSignalSpy resets(&model, &IdentifierModel::modelReset);
    for (quint32 id = 0; id < 2000; ++id)
        store.appendCanMessage(at(0, dataFrame(id, "", true)));
    model.refresh();
    QCOMPARE(model.rowCount(), 2000);
    QCOMPARE(resets.count(), 1);
    QCOMPARE(model.index(1000, IdentifierModel::CountColumn).data().toInt(), 2);
}

void TestIdentifierModel::clearedStoreStartsAgain()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    for (quint32 id = 0; id < 10; ++id)
        store.appendCanMessage(at(0, dataFrame(id)));
    model.refresh();
    store.clear();
    store.appendCanMessage(at(0, dataFrame(0x55)));
    model.refresh();
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(row(model, 0), QStringLiteral("055|CAN|1||0||"));
}

void TestIdentifierModel::resetStartsAgain()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    store.appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    store.clear();
    store.appendCanMessage(at(0, dataFrame(2)));
    model.reset();
    QCOMPARE(model.rowCount(), 0);
    model.refresh();
    QCOMPARE(row(model, 0), QStringLiteral("002|CAN|1||0||"));
}

void TestIdentifierModel::cycleTimeHasItsExtremesAsToolTip()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    store.appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    const auto toolTip = [&model] {
        return model.index(0, IdentifierModel::PeriodColumn).data(Qt::ToolTipRole).toString();
    };
    QCOMPARE(toolTip(), QString());
    for (qint64 microseconds : {10'000, 22'000})
        store.appendCanMessage(at(microseconds, dataFrame(1)));
    model.refresh();
    QCOMPARE(toolTip(), QStringLiteral("Shortest 10.000 ms\nAverage 11.000 ms\nLongest 12.000 ms"));
}

void TestIdentifierModel::storeThatIsGoneLeavesNoRows()
{
    auto store = std::make_unique<DatachunkHandler>();
    IdentifierModel model(store.get());
    store->appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    store.reset();
    model.refresh();
    QCOMPARE(model.rowCount(), 0);
}

void TestIdentifierModel::rowTellsTheColourOfItsLastFrame()
{
    DatachunkHandler store;
    FrameMarks marks;
    IdentifierModel model(&store);
    model.setMarks(&marks);
    marks.add(MessageTemplate::fromFrame(dataFrame(0x701, "05")));
    store.appendCanMessage(at(0, dataFrame(0x701, "05")));
    model.refresh();
    QCOMPARE(model.index(0, 0).data(FrameRoles::MarkRole).toInt(), marks.colorAt(0));
    store.appendCanMessage(at(1, dataFrame(0x701, "7F")));
    model.refresh();
    QCOMPARE(model.index(0, 0).data(FrameRoles::MarkRole).toInt(), -1);
    const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    marks.clear();
    QCOMPARE(changed.count(), 1);
}

void TestIdentifierModel::rowGivesItsLastFrame()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    store.appendCanMessage(at(0, dataFrame(0x701, "05")));
    store.appendCanMessage(at(1, dataFrame(0x701, "7F")));
    model.refresh();
    QVERIFY(model.index(0, 0).data(FrameRoles::FrameRole).value<CAN::CanRxMessage>().message == dataFrame(0x701, "7F"));
}

void TestIdentifierModel::everyColumnHasAHeader()
{
    const IdentifierModel model(nullptr);
    for (int column = 0; column < IdentifierModel::ColumnCount; ++column) {
        QVERIFY(!model.headerData(column, Qt::Horizontal).toString().isEmpty());
        QVERIFY(!model.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty());
        QVERIFY(!model.headerData(column, Qt::Horizontal, FrameRoles::SampleTextRole).toString().isEmpty());
    }
    QVERIFY(!model.headerData(IdentifierModel::ColumnCount, Qt::Horizontal).isValid());
}

QTEST_GUILESS_MAIN(TestIdentifierModel)
#include "tst_identifiermodel.moc"
