#include "datachunkhandler.h"
#include "emptystate.h"
#include "frameview.h"
#include "messages.h"
#include "tracemodel.h"
#include "tracepage.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

class TestTracePage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void emptyStateStandsUntilTheFirstFrame();
    void emptyStateOffersItsActionsByButtons();
    void wayBackAppearsWhenTheViewStandsStill();
    void actionSwitchesFollowing();
    void keysCopyTheSelectedFrames();

private:
    void append(quint32 frames)
    {
        for (quint32 i = 0; i < frames; ++i)
            m_store->appendCanMessage(at(i, dataFrame(i)));
        m_model->refresh();
    }

    std::unique_ptr<DatachunkHandler> m_store;
    std::unique_ptr<TraceModel> m_model;
    std::unique_ptr<TracePage> m_page;
};

void TestTracePage::init()
{
    m_store = std::make_unique<DatachunkHandler>();
    m_model = std::make_unique<TraceModel>(m_store.get());
    m_page = std::make_unique<TracePage>(m_model.get(), true);
    m_page->resize(800, 300);
}

void TestTracePage::cleanup()
{
    m_page.reset();
    m_model.reset();
    m_store.reset();
}

void TestTracePage::emptyStateStandsUntilTheFirstFrame()
{
    QVERIFY(m_page->showsEmptyState());
    append(1);
    QVERIFY(!m_page->showsEmptyState());
    m_store->clear();
    m_model->reset();
    QVERIFY(m_page->showsEmptyState());
}

void TestTracePage::emptyStateOffersItsActionsByButtons()
{
    QAction action(QStringLiteral("&Connect"));
    action.setShortcut(QKeySequence(Qt::Key_F5));
    int triggered = 0;
    connect(&action, &QAction::triggered, this, [&triggered] { ++triggered; });
    m_page->emptyState()->show(QStringLiteral("Title"), QStringLiteral("Text"), {&action});
    auto *button = m_page->findChild<QToolButton *>(QStringLiteral("btnEmptyAction"));
    QCOMPARE(m_page->emptyState()->title(), QStringLiteral("Title"));
    QCOMPARE(m_page->emptyState()->text(), QStringLiteral("Text"));
    QCOMPARE(button->text(), QStringLiteral("Connect (F5)"));
    button->click();
    QCOMPARE(triggered, 1);
    auto *other = m_page->findChild<QToolButton *>(QStringLiteral("btnEmptyOtherAction"));
    QVERIFY(other->isHidden());
    QAction second(QStringLiteral("&Demo"));
    m_page->emptyState()->show(QStringLiteral("Title"), QStringLiteral("Text"), {&action, &second});
    QVERIFY(!other->isHidden());
    QCOMPARE(other->text(), QStringLiteral("Demo"));
    m_page->emptyState()->show(QStringLiteral("Title"), QStringLiteral("Text"), {});
    QVERIFY(button->isHidden());
}

void TestTracePage::wayBackAppearsWhenTheViewStandsStill()
{
    auto *bar = m_page->findChild<QWidget *>(QStringLiteral("followBar"));
    append(500);
    QVERIFY(bar->isHidden());
    m_page->view()->verticalScrollBar()->setValue(0);
    QVERIFY(!bar->isHidden());
    QVERIFY(!m_page->followAction()->isChecked());
    m_page->findChild<QToolButton *>(QStringLiteral("btnFollow"))->click();
    QVERIFY(bar->isHidden());
    QVERIFY(m_page->view()->isFollowing());
    QVERIFY(m_page->followAction()->isChecked());
}

void TestTracePage::actionSwitchesFollowing()
{
    append(500);
    m_page->followAction()->trigger();
    QVERIFY(!m_page->view()->isFollowing());
    m_page->followAction()->trigger();
    QVERIFY(m_page->view()->isFollowing());
}

void TestTracePage::keysCopyTheSelectedFrames()
{
    append(3);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    m_page->view()->setFocus();
    m_page->view()->setCurrentIndex(m_model->index(1, 0));
    QTest::keySequence(m_page->view(), QKeySequence(QKeySequence::Copy));
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("2\t0.001\tCAN\t001\t0\t\n"));
}

QTEST_MAIN(TestTracePage)
#include "tst_tracepage.moc"
