#include "datachunkhandler.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "messages.h"
#include "messagetemplate.h"
#include "tracemodel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

namespace {
QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString::fromLatin1(text));
    return result;
}
} // namespace

class TestTraceModel : public QObject
{
    Q_OBJECT

private slots:
    void rowsAppearAtRefresh();
    void rowsAreAnnouncedOnceARefresh();
    void cellsShowTheFrame();
    void everyRowOfALongTraceCanBeRead();
    void growingLastBlockIsReadAnew();
    void timeFollowsItsMode_data();
    void timeFollowsItsMode();
    void changeOfTheModeIsAnnounced();
    void notesShowInTheirRow();
    void clearedStoreResetsTheModel();
    void resetFindsATraceThatGrewAgain();
    void storeThatIsGoneLeavesEmptyCells();
    void errorFramesAreMarked();
    void rowTellsTheColourOfItsMark();
    void changeOfTheMarksIsAnnounced();
    void rowGivesItsFrame();
    void clipboardHoldsTheLine();
    void everyColumnHasAHeader();

private:
    static QString cell(const TraceModel &model, int row, int column)
    {
        return model.index(row, column).data().toString();
    }
};

void TestTraceModel::rowsAppearAtRefresh()
{
    DatachunkHandler store;
    TraceModel model(&store);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.rowCount(), 0);
    model.refresh();
    QCOMPARE(model.rowCount(), 0);
    store.appendCanMessage(at(0, dataFrame(1)));
    store.appendCanMessage(at(0, dataFrame(2)));
    QCOMPARE(model.rowCount(), 0);
    model.refresh();
    QCOMPARE(model.rowCount(), 2);
    store.appendCanMessage(at(0, dataFrame(3)));
    model.refresh();
    QCOMPARE(model.rowCount(), 3);
}

void TestTraceModel::rowsAreAnnouncedOnceARefresh()
{
    DatachunkHandler store;
    TraceModel model(&store);
    for (int i = 0; i < 1000; ++i)
        store.appendCanMessage(at(i, dataFrame(1)));
    QSignalSpy inserted(&model, &TraceModel::rowsInserted);
    model.refresh();
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(inserted[0][1].toInt(), 0);
    QCOMPARE(inserted[0][2].toInt(), 999);
    model.refresh();
    QCOMPARE(inserted.count(), 1);
}

void TestTraceModel::cellsShowTheFrame()
{
    DatachunkHandler store;
    TraceModel model(&store);
    CAN::CanMessage message = dataFrame(0x705, "05");
    store.appendCanMessage(at(1'000'000, message));
    message = dataFrame(0x12345, "AABB", true);
    message.fd = true;
    message.brs = true;
    store.appendCanMessage(at(1'002'500, message));
    model.refresh();
    QStringList first;
    QStringList second;
    for (int column = 0; column < TraceModel::ColumnCount; ++column) {
        first.append(cell(model, 0, column));
        second.append(cell(model, 1, column));
    }
    QCOMPARE(first.join(QLatin1Char('|')), QStringLiteral("1|0.000|CAN|705|1|05|Heartbeat, node 5: operational|"));
    QCOMPARE(second.join(QLatin1Char('|')), QStringLiteral("2|2.500|CAN FD BRS|00012345x|2|AA BB||"));
}

void TestTraceModel::everyRowOfALongTraceCanBeRead()
{
    // Most of it lies on the disk.
    constexpr int frames = 30000;
    DatachunkHandler store(nullptr, 5000);
    TraceModel model(&store);
    for (int i = 0; i < frames; ++i)
        store.appendCanMessage(at(i * 1000LL, dataFrame(static_cast<quint32>(i), "", true)));
    model.refresh();
    QCOMPARE(model.rowCount(), frames);
    // To and fro, as a user scrolls.
    for (int step = 0; step < frames; step += 7) {
        for (int row : {step, frames - 1 - step}) {
            QCOMPARE(cell(model, row, TraceModel::IdentifierColumn),
                     QStringLiteral("%1x")
                         .arg(row, 8, 16, QLatin1Char('0'))
                         .toUpper()
                         .replace(QLatin1Char('X'), QLatin1Char('x')));
        }
    }
}

void TestTraceModel::growingLastBlockIsReadAnew()
{
    DatachunkHandler store;
    TraceModel model(&store);
    for (quint32 i = 0; i < 700; ++i) {
        store.appendCanMessage(at(i, dataFrame(i)));
        model.refresh();
        QCOMPARE(cell(model, static_cast<int>(i), TraceModel::IdentifierColumn),
                 QStringLiteral("%1").arg(i, 3, 16, QLatin1Char('0')).toUpper());
    }
}

void TestTraceModel::timeFollowsItsMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QStringList>("times");
    QTest::newRow("since start") << int(TraceModel::SinceStart) << texts({"0.000", "1.500", "4.000"});
    QTest::newRow("since previous") << int(TraceModel::SincePrevious) << texts({"", "1.500", "2.500"});
    QTest::newRow("time of day") << int(TraceModel::TimeOfDay)
                                 << texts({"00:01:00.000000", "00:01:00.001500", "00:01:00.004000"});
}

void TestTraceModel::timeFollowsItsMode()
{
    QFETCH(int, mode);
    DatachunkHandler store;
    TraceModel model(&store);
    for (qint64 microseconds : {60'000'000, 60'001'500, 60'004'000})
        store.appendCanMessage(at(microseconds, dataFrame(1)));
    model.refresh();
    model.setTimeMode(static_cast<TraceModel::TimeMode>(mode));
    QStringList times;
    for (int row = 0; row < 3; ++row)
        times.append(cell(model, row, TraceModel::TimeColumn));
    QTEST(times, "times");
}

void TestTraceModel::changeOfTheModeIsAnnounced()
{
    DatachunkHandler store;
    TraceModel model(&store);
    store.appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    qRegisterMetaType<Qt::Orientation>();
    QSignalSpy changed(&model, &TraceModel::dataChanged);
    QSignalSpy header(&model, &TraceModel::headerDataChanged);
    model.setTimeMode(TraceModel::SinceStart);
    QCOMPARE(changed.count(), 0);
    model.setTimeMode(TraceModel::TimeOfDay);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(header.count(), 1);
    QCOMPARE(model.headerData(TraceModel::TimeColumn, Qt::Horizontal).toString(), QStringLiteral("Time of day"));
}

void TestTraceModel::notesShowInTheirRow()
{
    DatachunkHandler store;
    TraceModel model(&store);
    store.addMessageNoteToNextMessage(QStringLiteral("Connect:Demo 1:500"));
    store.addMessageNoteToNextMessage(QStringLiteral("Mine"));
    store.appendCanMessage(at(0, dataFrame(1)));
    store.appendCanMessage(at(0, dataFrame(2)));
    model.refresh();
    QCOMPARE(cell(model, 0, TraceModel::NoteColumn), QStringLiteral("Connected to Demo 1 at 500 kBit/s, Mine"));
    QCOMPARE(model.index(0, TraceModel::NoteColumn).data(Qt::ToolTipRole).toString(),
             QStringLiteral("Connected to Demo 1 at 500 kBit/s\nMine"));
    QCOMPARE(cell(model, 1, TraceModel::NoteColumn), QString());
    store.addMessageNoteToLastMessage(QStringLiteral("Disconnected"));
    QCOMPARE(cell(model, 1, TraceModel::NoteColumn), QStringLiteral("Disconnected"));
}

void TestTraceModel::clearedStoreResetsTheModel()
{
    DatachunkHandler store;
    TraceModel model(&store);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (quint32 i = 0; i < 10; ++i)
        store.appendCanMessage(at(i, dataFrame(i)));
    model.refresh();
    QCOMPARE(cell(model, 0, TraceModel::IdentifierColumn), QStringLiteral("000"));
    store.clear();
    // Between the two the model still says what it said, and gives nothing that is not there.
    QCOMPARE(model.rowCount(), 10);
    store.appendCanMessage(at(5000, dataFrame(0x77)));
    model.refresh();
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(cell(model, 0, TraceModel::IdentifierColumn), QStringLiteral("077"));
    QCOMPARE(cell(model, 0, TraceModel::TimeColumn), QStringLiteral("0.000"));
}

void TestTraceModel::resetFindsATraceThatGrewAgain()
{
    DatachunkHandler store;
    TraceModel model(&store);
    store.appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    QCOMPARE(cell(model, 0, TraceModel::IdentifierColumn), QStringLiteral("001"));
    store.clear();
    store.appendCanMessage(at(0, dataFrame(2)));
    model.reset();
    model.refresh();
    QCOMPARE(cell(model, 0, TraceModel::IdentifierColumn), QStringLiteral("002"));
}

void TestTraceModel::storeThatIsGoneLeavesEmptyCells()
{
    auto store = std::make_unique<DatachunkHandler>();
    TraceModel model(store.get());
    store->appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    store.reset();
    QCOMPARE(cell(model, 0, TraceModel::IdentifierColumn), QString());
    QCOMPARE(cell(model, 0, TraceModel::NoteColumn), QString());
    model.refresh();
    QCOMPARE(model.rowCount(), 0);
}

void TestTraceModel::errorFramesAreMarked()
{
    DatachunkHandler store;
    TraceModel model(&store);
    CAN::CanMessage error = dataFrame(0x20000004, "00");
    error.errorFrame = true;
    store.appendCanMessage(at(0, error));
    store.appendCanMessage(at(0, dataFrame(1)));
    model.refresh();
    QVERIFY(model.index(0, 0).data(FrameRoles::ErrorRole).toBool());
    QVERIFY(!model.index(1, 0).data(FrameRoles::ErrorRole).toBool());
    QCOMPARE(cell(model, 0, TraceModel::IdentifierColumn), QString());
}

void TestTraceModel::rowTellsTheColourOfItsMark()
{
    DatachunkHandler store;
    FrameMarks marks;
    TraceModel model(&store);
    store.appendCanMessage(at(0, dataFrame(1)));
    store.appendCanMessage(at(0, dataFrame(2)));
    model.refresh();
    QCOMPARE(model.index(1, 0).data(FrameRoles::MarkRole).toInt(), -1);
    model.setMarks(&marks);
    marks.add(MessageTemplate::forIdentifier(dataFrame(2)));
    QCOMPARE(model.index(0, TraceModel::DataColumn).data(FrameRoles::MarkRole).toInt(), -1);
    QCOMPARE(model.index(1, TraceModel::DataColumn).data(FrameRoles::MarkRole).toInt(), marks.colorAt(0));
}

void TestTraceModel::changeOfTheMarksIsAnnounced()
{
    DatachunkHandler store;
    FrameMarks marks;
    TraceModel model(&store);
    model.setMarks(&marks);
    const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    marks.add(MessageTemplate::forEveryFrame());
    QCOMPARE(changed.count(), 0); // there is no row yet
    store.appendCanMessage(at(0, dataFrame(1)));
    store.appendCanMessage(at(0, dataFrame(2)));
    model.refresh();
    marks.clear();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().at(0).toModelIndex(), model.index(0, 0));
    QCOMPARE(changed.first().at(1).toModelIndex(), model.index(1, TraceModel::ColumnCount - 1));
}

void TestTraceModel::rowGivesItsFrame()
{
    DatachunkHandler store;
    TraceModel model(&store);
    const CAN::CanRxMessage frame = at(5, dataFrame(0x123, "0102"));
    store.appendCanMessage(frame);
    model.refresh();
    QVERIFY(model.index(0, 3).data(FrameRoles::FrameRole).value<CAN::CanRxMessage>().message == frame.message);
}

void TestTraceModel::clipboardHoldsTheLine()
{
    DatachunkHandler store;
    TraceModel model(&store);
    store.appendCanMessage(at(1000, dataFrame(1)));
    store.appendCanMessage(at(3000, dataFrame(0x123, "01")));
    model.refresh();
    QCOMPARE(model.index(1, 0).data(FrameRoles::ClipboardRole).toString(), QStringLiteral("2\t2.000\tCAN\t123\t1\t01"));
}

void TestTraceModel::everyColumnHasAHeader()
{
    const TraceModel model(nullptr);
    for (int column = 0; column < TraceModel::ColumnCount; ++column) {
        QVERIFY(!model.headerData(column, Qt::Horizontal).toString().isEmpty());
        QVERIFY(!model.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty());
        QVERIFY(!model.headerData(column, Qt::Horizontal, FrameRoles::SampleTextRole).toString().isEmpty());
    }
    QVERIFY(!model.headerData(TraceModel::ColumnCount, Qt::Horizontal).isValid());
    QVERIFY(!model.headerData(-1, Qt::Horizontal).isValid());
    QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
}

QTEST_GUILESS_MAIN(TestTraceModel)
#include "tst_tracemodel.moc"
