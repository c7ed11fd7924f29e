#include "overviewform.h"

#include <QPointer>

using Adapter = AbstractCanAdapter;
constexpr Adapter::CanAdapterType demo = Adapter::CanAdapterDemo;

/// What becomes of edits that the user has not taken over, when another adapter is selected and when the window closes.
class TestOverviewEdits : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_form.reset(); }

    void theSelectionAsksAboutEdits();
    void aSelectionWithoutEditsAsksNothing();
    void discardedEditsAreGone();
    void appliedEditsGoToTheRowThatWasLeft();
    void aClickSelectsOneRowWhateverWasApplied();
    void editsStayWithAnAdapterThatMoves();
    void aMoveThatMovesNothingAsksNothing();
    void whatTheFormCannotBuildIsNoEdit();
    void editsFindTheirAdapterAfterTheQuestion();
    void anAdapterThatGoesDuringTheQuestionTakesItsEditsAlong();
    void anAdapterThatGoesAfterItsMoveTakesItsEditsAlong();
    void theChosenAdapterIsShownAfterTheQuestion_data();
    void theChosenAdapterIsShownAfterTheQuestion();
    void aChosenAdapterThatGoesLeavesTheEditsApplied();
    void othersThatComeAndGoLeaveTheSelection();
    void editsAreAppliedAtTheEndWhoeverCame();
    void editsAreAppliedAtTheEndWhoeverComesMeanwhile();
    void closingAsksAboutEdits();
    void closingWithoutEditsAsksNothing();
    void discardCloses();
    void applyUpdatesAndCloses();
    void addAsNewKeepsTheWindowOpen();
    void cancelLeavesAllAsItIs();
    void theEscapeKeyCancelsTheQuestion();
    void theEscapeKeyAsksAsTheButtonDoes();
    void theWindowsOwnButtonAsksToo();
    void theWindowStaysWhileTheFormBuildsNothing();
    void aRefusedCloseSavesTheGeometry();
    void aQuestionThatGoesByItselfChangesNothing();

private:
    QStringList descriptions() const { return m_form->savedDescriptions(); }
    void addAdapter()
    {
        m_form->collection.addNewCanAdapter(new FakeAdapter(demo, QStringLiteral("West")), false, false, false);
    }

    std::unique_ptr<OverviewForm> m_form;
    QStringList m_before;
};

void TestOverviewEdits::init()
{
    m_form = std::make_unique<OverviewForm>();
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_before = descriptions();
}

void TestOverviewEdits::theSelectionAsksAboutEdits()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Discard changes")};
    m_form->clickRow(1);
    QCOMPARE(m_form->boxes.shown.count(), 1);
    const MessageBoxes::Box &box = m_form->boxes.shown.first();
    QCOMPARE(box.title, QStringLiteral("Falcon"));
    QCOMPARE(box.text, QStringLiteral("The current interface was changed but not updated."));
    QCOMPARE(box.informativeText, QStringLiteral("You can discard or apply the changes."));
    QCOMPARE(box.icon, QMessageBox::Question);
    QVERIFY(box.isModal);
    QCOMPARE(box.buttonTexts, (QStringList{QStringLiteral("Apply changes"), QStringLiteral("Discard changes")}));
}

void TestOverviewEdits::aSelectionWithoutEditsAsksNothing()
{
    for (const int row : {1, 2, 0, 2})
        m_form->clickRow(row);
    QVERIFY(m_form->boxes.shown.isEmpty());
    QCOMPARE(descriptions(), m_before);
}

void TestOverviewEdits::discardedEditsAreGone()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Discard changes")};
    m_form->clickRow(1);
    QCOMPARE(descriptions(), m_before);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("2"));
    QVERIFY(m_form->dialog->updatesEnabled());
}

void TestOverviewEdits::appliedEditsGoToTheRowThatWasLeft()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->clickRow(2);
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("edited"), QStringLiteral("2"), QStringLiteral("3")}));
    QCOMPARE(m_form->shownDescription(), QStringLiteral("3"));
    QCOMPARE(m_form->boxes.shown.count(), 1);
    QVERIFY(m_form->dialog->updatesEnabled());
}

void TestOverviewEdits::aClickSelectsOneRowWhateverWasApplied()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->clickRow(2);
    QCOMPARE(m_form->selectedRows(), QList<int>{2});
    m_form->press("btnRemoveSelected");
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("edited"), QStringLiteral("2")}));
}

void TestOverviewEdits::editsStayWithAnAdapterThatMoves()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->press("btnDown");
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("2"), QStringLiteral("edited"), QStringLiteral("3")}));
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    QCOMPARE(m_form->shownDescription(), QStringLiteral("edited"));
}

void TestOverviewEdits::aMoveThatMovesNothingAsksNothing()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->press("btnUp");
    QVERIFY(m_form->boxes.shown.isEmpty());
    QCOMPARE(m_form->shownDescription(), QStringLiteral("edited"));
}

void TestOverviewEdits::editsFindTheirAdapterAfterTheQuestion()
{
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->collection.removeAdapterAt(0); };
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->clickRow(2);
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("edited"), QStringLiteral("3")}));
}

void TestOverviewEdits::anAdapterThatGoesDuringTheQuestionTakesItsEditsAlong()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->collection.removeAdapterAt(0); };
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->clickRow(2);
    QCOMPARE(m_form->boxes.shown.count(), 1);
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("2"), QStringLiteral("3")}));
}

void TestOverviewEdits::anAdapterThatGoesAfterItsMoveTakesItsEditsAlong()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->collection.removeAdapterAt(1); };
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->press("btnDown");
    QCOMPARE(m_form->boxes.shown.count(), 1);
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("2"), QStringLiteral("3")}));
}

void TestOverviewEdits::theChosenAdapterIsShownAfterTheQuestion_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("removedRow");

    QTest::newRow("apply") << QStringLiteral("Apply changes") << 0;
    QTest::newRow("discard") << QStringLiteral("Discard changes") << 0;
    QTest::newRow("apply to one that goes") << QStringLiteral("Apply changes") << 1;
    QTest::newRow("discard for one that goes") << QStringLiteral("Discard changes") << 1;
}

void TestOverviewEdits::theChosenAdapterIsShownAfterTheQuestion()
{
    QFETCH(QString, answer);
    QFETCH(int, removedRow);
    addAdapter();
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [&] { m_form->collection.removeAdapterAt(static_cast<quint16>(removedRow)); };
    m_form->boxes.answers = QStringList{answer};
    m_form->clickRow(2);
    QCOMPARE(m_form->boxes.shown.count(), 1);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("3"));
    QCOMPARE(m_form->table()->currentIndex().row(), 1);
    QTRY_COMPARE(m_form->selectedRows(), QList<int>{1});
    QVERIFY(m_form->dialog->updatesEnabled());
}

void TestOverviewEdits::aChosenAdapterThatGoesLeavesTheEditsApplied()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->collection.removeAdapterAt(1); };
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->clickRow(1);
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("edited"), QStringLiteral("3")}));
    // Nor is that one marked which has its place now.
    QTRY_COMPARE(m_form->selectedRows(), QList<int>());
    QVERIFY(m_form->dialog->updatesEnabled());
}

void TestOverviewEdits::othersThatComeAndGoLeaveTheSelection()
{
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("edited"));
    addAdapter();
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    m_form->collection.removeAdapterAt(0);
    QCOMPARE(m_form->selectedRows(), QList<int>{0});
    QCOMPARE(m_form->shownDescription(), QStringLiteral("edited"));
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestOverviewEdits::editsAreAppliedAtTheEndWhoeverCame()
{
    m_form->editDescription(QStringLiteral("edited"));
    addAdapter();
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(m_form->savedDescription(0), QStringLiteral("edited"));
}

void TestOverviewEdits::editsAreAppliedAtTheEndWhoeverComesMeanwhile()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { addAdapter(); };
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(m_form->savedDescription(0), QStringLiteral("edited"));
}

void TestOverviewEdits::whatTheFormCannotBuildIsNoEdit()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->makesNothing = true;
    m_form->clickRow(1);
    QVERIFY(m_form->boxes.shown.isEmpty());
    QCOMPARE(descriptions(), m_before);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("2"));
}

void TestOverviewEdits::closingAsksAboutEdits()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Cancel")};
    m_form->press("btnClose");
    QCOMPARE(m_form->boxes.shown.count(), 1);
    const MessageBoxes::Box &box = m_form->boxes.shown.first();
    QCOMPARE(box.title, QStringLiteral("Falcon"));
    QCOMPARE(box.text, QStringLiteral("The current interface was changed but not updated."));
    QCOMPARE(box.informativeText,
             QStringLiteral("You can discard the changes, update the interface, add it as new interface or just cancel "
                            "to review your settings."));
    QCOMPARE(box.icon, QMessageBox::Question);
    QVERIFY(box.isModal);
    QCOMPARE(box.buttonTexts,
             (QStringList{QStringLiteral("Add as new interface"), QStringLiteral("Apply changes"),
                          QStringLiteral("Cancel"), QStringLiteral("Discard changes")}));
    QVERIFY(box.windowFlags.testFlag(Qt::CustomizeWindowHint));
    QVERIFY(box.windowFlags.testFlag(Qt::WindowTitleHint));
    QVERIFY(!box.windowFlags.testFlag(Qt::WindowCloseButtonHint));
}

void TestOverviewEdits::closingWithoutEditsAsksNothing()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->editDescription(QStringLiteral("1"));
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestOverviewEdits::discardCloses()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Discard changes")};
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(descriptions(), m_before);
}

void TestOverviewEdits::applyUpdatesAndCloses()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Apply changes")};
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(descriptions(), (QStringList{QStringLiteral("edited"), QStringLiteral("2"), QStringLiteral("3")}));
    QCOMPARE(m_form->boxes.shown.count(), 1);
}

void TestOverviewEdits::addAsNewKeepsTheWindowOpen()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Add as new interface")};
    m_form->press("btnClose");
    QVERIFY(m_form->dialog->isVisible());
    QCOMPARE(descriptions(), m_before + QStringList{QStringLiteral("edited")});
    QCOMPARE(m_form->selectedRows(), QList<int>{3});
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(m_form->boxes.shown.count(), 1);
}

void TestOverviewEdits::cancelLeavesAllAsItIs()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Cancel")};
    m_form->press("btnClose");
    QVERIFY(m_form->dialog->isVisible());
    QCOMPARE(descriptions(), m_before);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("edited"));
}

void TestOverviewEdits::theEscapeKeyCancelsTheQuestion()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); };
    m_form->press("btnClose");
    QVERIFY(m_form->dialog->isVisible());
    QCOMPARE(m_form->shownDescription(), QStringLiteral("edited"));
}

void TestOverviewEdits::theEscapeKeyAsksAsTheButtonDoes()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Cancel"), QStringLiteral("Discard changes")};
    QTest::keyClick(m_form->dialog.get(), Qt::Key_Escape);
    QVERIFY(m_form->dialog->isVisible());
    QTest::keyClick(m_form->dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(m_form->boxes.shown.count(), 2);
}

void TestOverviewEdits::theWindowsOwnButtonAsksToo()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Cancel")};
    QVERIFY(!m_form->dialog->close());
    QVERIFY(m_form->dialog->isVisible());
}

void TestOverviewEdits::theWindowStaysWhileTheFormBuildsNothing()
{
    m_form->makesNothing = true;
    m_form->press("btnClose");
    QVERIFY(m_form->dialog->isVisible());
    QVERIFY(m_form->boxes.shown.isEmpty());
    m_form->makesNothing = false;
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
}

void TestOverviewEdits::aRefusedCloseSavesTheGeometry()
{
    m_form->dialog->resize(1300, 900); // more than the form could ever ask for meanwhile
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.answers = QStringList{QStringLiteral("Cancel")};
    m_form->press("btnClose");
    const QSettings settings(QStringLiteral("Harrier"), QStringLiteral("Falcon 2.4.1"));
    QCOMPARE(settings.value(QStringLiteral("CanMultiInterfaceDialog/Geometry")).toByteArray(),
             m_form->dialog->saveGeometry());
}

void TestOverviewEdits::aQuestionThatGoesByItselfChangesNothing()
{
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [] { QApplication::activeModalWidget()->hide(); };
    m_form->press("btnClose");
    QVERIFY(m_form->dialog->isVisible());
    QCOMPARE(descriptions(), m_before);
}

QTEST_MAIN(TestOverviewEdits)
#include "tst_overviewedits.moc"
