#include "datachunkhandler.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "frameview.h"
#include "identifiermodel.h"
#include "markcolor.h"
#include "messages.h"
#include "messagetemplate.h"
#include "tracemodel.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QHelpEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <limits>

namespace {
/// As many rows as a model can have, without content.
class EndlessModel : public QAbstractTableModel
{
public:
    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : std::numeric_limits<int>::max();
    }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 3; }
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override
    {
        return role == Qt::DisplayRole ? QVariant(index.row()) : QVariant();
    }
};
} // namespace

class TestFrameView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void newRowsComeIntoSightWhileFollowing();
    void scrollingUpEndsFollowing();
    void scrollingToTheEndFollowsAgain();
    void keysScrollAndFollow();
    void rowsStayInSightWhenNotFollowing();
    void clearedTraceIsFollowedAgain();
    void rowsThatComeInAboveDoNotPush();
    void viewThatMayNotFollowDoesNot();
    void indexAndRectangleFitTogether();
    void copyTakesTheSelectedRowsInTheirOrder();
    void dragSelectsRows();
    void columnsFollowTheFont();
    void toolTipOfACutTextShowsAllOfIt();
    void markedRowHasItsColourAcrossTheView();
    void mostRowsOfAllWork();
    void viewWithoutModelPaints();

private:
    void append(int frames)
    {
        for (int i = 0; i < frames; ++i) {
            m_time += 1000;
            m_store->appendCanMessage(at(m_time, dataFrame(static_cast<quint32>(m_time / 1000 % 0x800), "0102")));
        }
        m_model->refresh();
    }
    bool isAtEnd() const { return m_view->verticalScrollBar()->value() == m_view->verticalScrollBar()->maximum(); }

    qint64 m_time = 0;
    std::unique_ptr<DatachunkHandler> m_store;
    std::unique_ptr<TraceModel> m_model;
    std::unique_ptr<FrameView> m_view;
};

void TestFrameView::init()
{
    m_time = 0;
    m_store = std::make_unique<DatachunkHandler>();
    m_model = std::make_unique<TraceModel>(m_store.get());
    m_view = std::make_unique<FrameView>();
    m_view->resize(1000, 400);
    m_view->setModel(m_model.get());
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void TestFrameView::cleanup()
{
    m_view.reset();
    m_model.reset();
    m_store.reset();
}

void TestFrameView::newRowsComeIntoSightWhileFollowing()
{
    append(500);
    QVERIFY(m_view->isFollowing());
    QVERIFY(m_view->verticalScrollBar()->maximum() > 400);
    QVERIFY(isAtEnd());
    append(1);
    QVERIFY(isAtEnd());
    const QRect last = m_view->visualRect(m_model->index(500, 0));
    QVERIFY(m_view->viewport()->rect().contains(last.bottomLeft()));
}

void TestFrameView::scrollingUpEndsFollowing()
{
    append(500);
    QSignalSpy changed(m_view.get(), &FrameView::followingChanged);
    m_view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
    QVERIFY(!m_view->isFollowing());
    QCOMPARE(changed.count(), 1);
    const int top = m_view->firstVisibleRow();
    append(100);
    QCOMPARE(m_view->firstVisibleRow(), top);
}

void TestFrameView::scrollingToTheEndFollowsAgain()
{
    append(500);
    m_view->verticalScrollBar()->setValue(10);
    QVERIFY(!m_view->isFollowing());
    m_view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
    QVERIFY(m_view->isFollowing());
    append(10);
    QVERIFY(isAtEnd());
}

void TestFrameView::keysScrollAndFollow()
{
    append(500);
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    QCOMPARE(m_view->firstVisibleRow(), 0);
    QVERIFY(!m_view->isFollowing());
    QTest::keyClick(m_view.get(), Qt::Key_Down);
    QCOMPARE(m_view->currentIndex().row(), 1);
    QTest::keyClick(m_view.get(), Qt::Key_PageDown);
    QVERIFY(m_view->currentIndex().row() > 5);
    QTest::keyClick(m_view.get(), Qt::Key_Right);
    QCOMPARE(m_view->currentIndex().column(), 1);
    QTest::keyClick(m_view.get(), Qt::Key_End);
    QCOMPARE(m_view->currentIndex().row(), 499);
    QVERIFY(m_view->isFollowing());
}

void TestFrameView::rowsStayInSightWhenNotFollowing()
{
    append(500);
    m_view->setFollowing(false);
    const int top = m_view->firstVisibleRow();
    append(50);
    QCOMPARE(m_view->firstVisibleRow(), top);
    m_view->setFollowing(true);
    QVERIFY(isAtEnd());
}

void TestFrameView::clearedTraceIsFollowedAgain()
{
    append(500);
    m_view->verticalScrollBar()->setValue(3);
    m_store->clear();
    m_model->reset();
    QVERIFY(m_view->isFollowing());
    QCOMPARE(m_view->firstVisibleRow(), -1);
    append(300);
    QVERIFY(isAtEnd());
}

void TestFrameView::rowsThatComeInAboveDoNotPush()
{
    DatachunkHandler store;
    IdentifierModel model(&store);
    FrameView view;
    view.resize(800, 200);
    view.setModel(&model);
    view.setFollowAllowed(false);
    for (quint32 id = 0x100; id < 0x180; ++id)
        store.appendCanMessage(at(0, dataFrame(id)));
    model.refresh();
    QCOMPARE(view.firstVisibleRow(), 0);
    view.verticalScrollBar()->setValue(20);
    for (quint32 id = 0; id < 5; ++id)
        store.appendCanMessage(at(0, dataFrame(id)));
    model.refresh();
    QCOMPARE(view.firstVisibleRow(), 25);
    view.verticalScrollBar()->setValue(0);
    store.appendCanMessage(at(0, dataFrame(0x50)));
    model.refresh();
    QCOMPARE(view.firstVisibleRow(), 0);
}

void TestFrameView::viewThatMayNotFollowDoesNot()
{
    m_view->setFollowAllowed(false);
    append(500);
    QCOMPARE(m_view->firstVisibleRow(), 0);
    m_view->setFollowing(true);
    QVERIFY(!m_view->isFollowing());
    QCOMPARE(m_view->firstVisibleRow(), 0);
}

void TestFrameView::indexAndRectangleFitTogether()
{
    append(500);
    m_view->verticalScrollBar()->setValue(100);
    for (int row : {100, 105}) {
        for (int column : {0, 3, 5}) {
            const QModelIndex index = m_model->index(row, column);
            QCOMPARE(m_view->indexAt(m_view->visualRect(index).center()), index);
        }
    }
    QVERIFY(!m_view->indexAt(QPoint(5, -5)).isValid());
    QVERIFY(m_view->visualRect(m_model->index(99, 0)).bottom() < 0);
    QCOMPARE(m_view->visualRect({}), QRect());
}

void TestFrameView::copyTakesTheSelectedRowsInTheirOrder()
{
    append(5);
    m_view->selectionModel()->select(m_model->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    m_view->selectionModel()->select(m_model->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    m_view->copySelection();
    QCOMPARE(QApplication::clipboard()->text(),
             QStringLiteral("2\t1.000\tCAN\t002\t2\t01 02\n"
                            "4\t3.000\tCAN\t004\t2\t01 02\n"));
}

void TestFrameView::dragSelectsRows()
{
    append(10);
    const auto middle = [this](int row) { return m_view->visualRect(m_model->index(row, 1)).center(); };
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middle(2));
    QCOMPARE(m_view->selectionModel()->selectedRows().size(), 1);
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, Qt::ShiftModifier, middle(6));
    QCOMPARE(m_view->selectionModel()->selectedRows().size(), 5);
    QVERIFY(m_view->selectionModel()->isRowSelected(4, {}));
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middle(9));
    QCOMPARE(m_view->selectionModel()->selectedRows().size(), 1);
}

void TestFrameView::columnsFollowTheFont()
{
    append(500);
    const int width = m_view->header()->sectionSize(TraceModel::DataColumn);
    const int height = m_view->visualRect(m_model->index(0, 0)).height();
    QFont large = m_view->font();
    large.setPointSizeF(large.pointSizeF() * 2);
    m_view->setFont(large);
    QVERIFY(m_view->header()->sectionSize(TraceModel::DataColumn) > width * 3 / 2);
    QVERIFY(m_view->visualRect(m_model->index(0, 0)).height() > height * 3 / 2);
    QVERIFY(isAtEnd());
}

void TestFrameView::toolTipOfACutTextShowsAllOfIt()
{
    CAN::CanMessage message = dataFrame(1, QByteArray(128, 'A'));
    message.fd = true;
    m_store->appendCanMessage(at(0, message));
    m_model->refresh();
    const QModelIndex index = m_model->index(0, TraceModel::DataColumn);
    const QPoint position = m_view->visualRect(index).center();
    QHelpEvent help(QEvent::ToolTip, position, m_view->viewport()->mapToGlobal(position));
    QVERIFY(QApplication::sendEvent(m_view->viewport(), &help));
    QTRY_COMPARE_WITH_TIMEOUT(QToolTip::text(), index.data().toString(), 5000);
    QToolTip::hideText();
}

void TestFrameView::markedRowHasItsColourAcrossTheView()
{
    FrameMarks marks;
    m_model->setMarks(&marks);
    append(3);
    marks.add(MessageTemplate::forIdentifier(dataFrame(2)));
    // Between two cells, where no text stands.
    const auto ground = [this](int row) {
        const QRect rect = m_view->visualRect(m_model->index(row, TraceModel::DataColumn));
        return m_view->viewport()->grab().toImage().pixelColor(rect.left() + 1, rect.center().y());
    };
    const QColor color = markColor(m_view->palette(), marks.colorAt(0));
    QCOMPARE(ground(1), color);
    QVERIFY(ground(0) != color);
    QVERIFY(ground(2) != color);
    m_view->selectionModel()->select(m_model->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QVERIFY(ground(1) != color); // a selection is seen on marked rows too
    m_view->clearSelection();
    marks.clear();
    QVERIFY(ground(1) != color);
}

void TestFrameView::mostRowsOfAllWork()
{
    EndlessModel model;
    m_view->setModel(&model);
    m_view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
    const int last = std::numeric_limits<int>::max() - 1;
    QVERIFY(m_view->viewport()->rect().contains(m_view->visualRect(model.index(last, 0)).topLeft()));
    QVERIFY(m_view->visualRect(model.index(0, 0)).bottom() < 0);
    m_view->viewport()->grab();
    m_view->setCurrentIndex(model.index(last, 0));
    QTest::keyClick(m_view.get(), Qt::Key_PageDown);
    QCOMPARE(m_view->currentIndex().row(), last);
    QTest::keyClick(m_view.get(), Qt::Key_A, Qt::ControlModifier);
    QVERIFY(m_view->selectionModel()->isRowSelected(last / 2, {}));
    m_view->viewport()->grab();
    m_view->setModel(m_model.get());
}

void TestFrameView::viewWithoutModelPaints()
{
    FrameView view;
    view.resize(200, 100);
    QVERIFY(!view.grab().isNull());
    QVERIFY(!view.indexAt(QPoint(5, 5)).isValid());
}

QTEST_MAIN(TestFrameView)
#include "tst_frameview.moc"
