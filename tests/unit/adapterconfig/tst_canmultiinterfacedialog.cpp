#include "overviewform.h"

#include "adapterflagsdelegate.h"
#include "canmultiinterfacemodel.h"
#include "checkboxdelegate.h"

#include <QAction>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QRegularExpression>
#include <QToolTip>

using Adapter = AbstractCanAdapter;
constexpr Adapter::CanAdapterType demo = Adapter::CanAdapterDemo;

/// The window, its table and its buttons. What becomes of edits, and of links that the system sets up, is tested by
/// others.
class TestCanMultiInterfaceDialog : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_form = std::make_unique<OverviewForm>(); }
    void cleanup() { m_form.reset(); }

    void formIsAsApplicationsKnowIt();
    void buttonsSayWhatTheyDo_data();
    void buttonsSayWhatTheyDo();
    void theConnectButtonIsOptional();
    void theTableIsAsApplicationsKnowIt();
    void columnsHaveTheirWidths();
    void columnsHaveTheirDelegates();
    void withoutAdaptersCloseHasTheFocus();
    void theConnectRequestStartsFalse();
    void thePrimaryAdapterIsSelectedFirst();
    void withoutAPrimaryAdapterTheFirstRowIsSelected();
    void aRowShowsItsAdapterInTheForm();
    void aWindowThatComesBackStaysAsItIs();
    void theDefaultBitrateGoesToTheForm();
    void updateNeedsASelection();
    void updateReplacesTheSelectedAdapter();
    void updateKeepsIdentifierAndRoles();
    void updateWithoutASelectionDoesNothing();
    void addTakesTheFormAsANewAdapter();
    void addWithoutAnAdapterDoesNothing();
    void removeSelectsTheNext();
    void removingTheLastRowSelectsNothing();
    void clearAllAsksNothing();
    void upAndDownMoveTheSelectedAdapter();
    void theEndsOfTheTableStopAMove();
    void closeCloses();
    void updateCloseConnectAsksForAConnection();
    void updateCloseConnectAddsTheFirstAdapter();
    void nothingIsLeftBehind();
    void whatAFullCollectionRefusesIsNotLeftBehind();
    void whatAClosingAdapterRefusesIsNotLeftBehind();
    void geometryAndColumnsComeBack();
    void checkColumnsComeBackInTheirWidth();
    void aHiddenActiveColumnStaysHidden();
    void aStateOfSomethingElseIsIgnored();
    void theActiveColumnExplainsItselfAtOnce();
    void aCellWithNothingToSayHidesTheToolTip();
    void theFlagsExplainThemselves();
    void noEventIsKeptFromTheTable();
    void keysReachTheCheckColumns();
    void keysLeaveAHiddenColumnAlone();
    void aMenuNamesTheKeys();
    void theMenuLeavesOutAHiddenColumn();
    void theTabKeyWalksThroughTheWindow();
    void enterUpdates();

private:
    /// What the dialog alone does, and not the table, which in the end would show the same.
    void showToolTipAt(int row, int column)
    {
        QWidget *viewport = m_form->table()->viewport();
        const QPoint place = m_form->table()->visualRect(m_form->table()->model()->index(row, column)).center();
        QHelpEvent event(QEvent::ToolTip, place, viewport->mapToGlobal(place));
        m_form->dialog->eventFilter(viewport, &event);
    }

    QStringList menu() const
    {
        QStringList entries;
        for (const QAction *action : m_form->table()->actions()) {
            if (action->isVisible())
                entries.append(action->text() + QLatin1Char('|')
                               + action->shortcut().toString(QKeySequence::PortableText));
        }
        return entries;
    }

    std::unique_ptr<OverviewForm> m_form;
};

void TestCanMultiInterfaceDialog::formIsAsApplicationsKnowIt()
{
    m_form->make();
    QCOMPARE(m_form->dialog->windowTitle(), QStringLiteral("CAN Interface Overview"));
    QCOMPARE(m_form->dialog->size(), QSize(1243, 594));
    QCOMPARE(m_form->find<QLabel>("label")->text(), QStringLiteral("Saved interfaces"));
    QCOMPARE(m_form->find<QLabel>("label_2")->text(), QStringLiteral("Current interface"));
    QCOMPARE(m_form->find<QFrame>("frame"), m_form->find<CanInterfaceWidget>("widget")->parentWidget());
}

void TestCanMultiInterfaceDialog::buttonsSayWhatTheyDo_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("text");

    QTest::newRow("clear") << QByteArray("btnClearInterfaces") << QStringLiteral("Clear all");
    QTest::newRow("remove") << QByteArray("btnRemoveSelected") << QStringLiteral("Remove selected");
    QTest::newRow("up") << QByteArray("btnUp") << QStringLiteral("Up");
    QTest::newRow("down") << QByteArray("btnDown") << QStringLiteral("Down");
    QTest::newRow("add") << QByteArray("btnAddInterface") << QStringLiteral("Add new interface");
    QTest::newRow("update") << QByteArray("btnUpdateInterface") << QStringLiteral("Update selected interface");
    QTest::newRow("connect") << QByteArray("btnUpdateCloseConnect") << QStringLiteral("Update - Close - Connect");
    QTest::newRow("close") << QByteArray("btnClose") << QStringLiteral("Close");
}

void TestCanMultiInterfaceDialog::buttonsSayWhatTheyDo()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, text);
    m_form->make();
    const auto *button = m_form->find<QPushButton>(name.constData());
    QCOMPARE(button->text(), text);
    // Enter in a field must not end in what cannot be taken back.
    QCOMPARE(button->autoDefault(), name != "btnClearInterfaces");
    QCOMPARE(button->isDefault(), name == "btnUpdateInterface");
}

void TestCanMultiInterfaceDialog::theConnectButtonIsOptional()
{
    QVERIFY(m_form->show(true));
    QVERIFY(m_form->find<QPushButton>("btnUpdateCloseConnect")->isVisible());
    QVERIFY(m_form->show(false));
    QVERIFY(!m_form->find<QPushButton>("btnUpdateCloseConnect")->isVisible());
}

void TestCanMultiInterfaceDialog::theTableIsAsApplicationsKnowIt()
{
    m_form->make();
    const QTableView *table = m_form->table();
    QVERIFY(table->alternatingRowColors());
    QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
    QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table->verticalScrollMode(), QAbstractItemView::ScrollPerPixel);
    QCOMPARE(table->horizontalScrollMode(), QAbstractItemView::ScrollPerPixel);
    QCOMPARE(table->horizontalHeader()->minimumSectionSize(), 20);
    QVERIFY(table->horizontalHeader()->stretchLastSection());
    QVERIFY(table->verticalHeader()->isHidden());
    QCOMPARE(table->verticalHeader()->minimumSectionSize(), 31);
    QCOMPARE(table->verticalHeader()->defaultSectionSize(), 31);
    QCOMPARE(table->viewport()->property("fastTooltip"), QVariant(true));
}

void TestCanMultiInterfaceDialog::columnsHaveTheirWidths()
{
    QVERIFY(m_form->show());
    const QHeaderView *header = m_form->table()->horizontalHeader();
    QList<int> widths;
    for (int column = 0; column < 4; ++column)
        widths.append(header->sectionSize(column));
    QCOMPARE(widths, (QList<int>{20, 160, 55, 45}));
    // The last one has what is left.
    QVERIFY(header->sectionSize(4) >= 160);
    for (const int column : {2, 3, 4})
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::Fixed);
    for (const int column : {0, 1})
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::Interactive);
}

void TestCanMultiInterfaceDialog::columnsHaveTheirDelegates()
{
    m_form->make();
    const QTableView *table = m_form->table();
    QVERIFY(qobject_cast<AdapterFlagsDelegate *>(table->itemDelegateForColumn(4)) != nullptr);
    QVERIFY(qobject_cast<CheckboxDelegate *>(table->itemDelegateForColumn(3)) != nullptr);
    QVERIFY(qobject_cast<CheckboxDelegate *>(table->itemDelegateForColumn(2)) != nullptr);
    QVERIFY(table->itemDelegateForColumn(2) != table->itemDelegateForColumn(3));
}

void TestCanMultiInterfaceDialog::withoutAdaptersCloseHasTheFocus()
{
    QVERIFY(m_form->show());
    QCOMPARE(QApplication::focusWidget(), m_form->find<QPushButton>("btnClose"));
    QVERIFY(!m_form->find<QPushButton>("btnUpdateInterface")->isEnabled());
}

void TestCanMultiInterfaceDialog::theConnectRequestStartsFalse()
{
    m_form->connectRequest = true;
    m_form->make();
    QVERIFY(!m_form->connectRequest);
}

void TestCanMultiInterfaceDialog::thePrimaryAdapterIsSelectedFirst()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_form->collection.handlePrimaryChanged(1, true);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("selectRowOfAdapter.* 2$")));
    QVERIFY(m_form->show());
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    QCOMPARE(QApplication::focusWidget(), m_form->table());
}

void TestCanMultiInterfaceDialog::withoutAPrimaryAdapterTheFirstRowIsSelected()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->adapterAt(0)->setCanAdapterOption(Adapter::OptionPrimary, false);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("initSelection")));
    QVERIFY(m_form->show());
    QCOMPARE(m_form->selectedRows(), QList<int>{0});
}

void TestCanMultiInterfaceDialog::aRowShowsItsAdapterInTheForm()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    QCOMPARE(m_form->shownDescription(), QStringLiteral("1"));
    m_form->clickRow(2);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("3"));
    QTest::keyClick(m_form->table(), Qt::Key_Up);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("2"));
    QVERIFY(m_form->dialog->updatesEnabled());
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::aWindowThatComesBackStaysAsItIs()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->clickRow(1);
    m_form->dialog->resize(1400, 700);
    // As the window system tells it of one that was iconified.
    QShowEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(m_form->dialog.get(), &event);
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    QCOMPARE(m_form->dialog->size(), QSize(1400, 700));
}

void TestCanMultiInterfaceDialog::theDefaultBitrateGoesToTheForm()
{
    m_form->make();
    m_form->dialog->setDefaultBitrate(125);
    m_form->describe(demo, QStringLiteral("East"), QString());
    QCOMPARE(m_form->find<QComboBox>("cbBitrate")->currentText(), QStringLiteral("125 kBit/s (0.875)"));
}

void TestCanMultiInterfaceDialog::updateNeedsASelection()
{
    QVERIFY(m_form->show());
    const auto *update = m_form->find<QPushButton>("btnUpdateInterface");
    QVERIFY(!update->isEnabled());
    m_form->describe(demo, QStringLiteral("East"), QString());
    m_form->press("btnAddInterface");
    QVERIFY(update->isEnabled());
    m_form->press("btnRemoveSelected");
    QVERIFY(!update->isEnabled());
}

void TestCanMultiInterfaceDialog::updateReplacesTheSelectedAdapter()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("left door"));
    m_form->press("btnUpdateInterface");
    QCOMPARE(m_form->savedDescriptions(),
             (QStringList{QStringLiteral("1"), QStringLiteral("left door"), QStringLiteral("3")}));
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    QCOMPARE(QApplication::focusWidget(), m_form->table());
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::updateKeepsIdentifierAndRoles()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_form->press("btnRemoveSelected");
    m_form->collection.handlePrimaryChanged(1, true);
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("left door"));
    m_form->press("btnUpdateInterface");
    QCOMPARE(m_form->savedDescription(1), QStringLiteral("left door"));
    QCOMPARE(m_form->saved(1, Adapter::OptionAdapterId).toUInt(), 3u);
    QVERIFY(m_form->saved(1, Adapter::OptionPrimary).toBool());
    QVERIFY(m_form->saved(1, Adapter::OptionActive).toBool());
}

void TestCanMultiInterfaceDialog::updateWithoutASelectionDoesNothing()
{
    QVERIFY(m_form->showWith({demo}));
    const QList<QByteArray> before = m_form->savedBytes();
    m_form->table()->selectionModel()->reset();
    m_form->editDescription(QStringLiteral("nobody's"));
    m_form->press("btnUpdateInterface");
    m_form->press("btnRemoveSelected");
    QCOMPARE(m_form->savedBytes(), before);
}

void TestCanMultiInterfaceDialog::addTakesTheFormAsANewAdapter()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->editDescription(QStringLiteral("left door"));
    m_form->press("btnAddInterface");
    QCOMPARE(m_form->savedDescriptions(),
             (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("left door")}));
    QCOMPARE(m_form->selectedRows(), QList<int>{2});
    QVERIFY(!m_form->saved(2, Adapter::OptionPrimary).toBool());
    QVERIFY(!m_form->saved(2, Adapter::OptionActive).toBool());
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::addWithoutAnAdapterDoesNothing()
{
    QVERIFY(m_form->showWith({demo}));
    m_form->makesNothing = true;
    m_form->press("btnAddInterface");
    QCOMPARE(m_form->collection.getAdapterCount(), quint16(1));
}

void TestCanMultiInterfaceDialog::removeSelectsTheNext()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("edited in vain"));
    m_form->press("btnRemoveSelected");
    QCOMPARE(m_form->savedDescriptions(), (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    QCOMPARE(m_form->shownDescription(), QStringLiteral("3"));
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::removingTheLastRowSelectsNothing()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->clickRow(1);
    m_form->press("btnRemoveSelected");
    QCOMPARE(m_form->selectedRows(), QList<int>());
    // Without a current adapter the form compares nothing, and nobody asks about what it says.
    m_form->editDescription(QStringLiteral("edited"));
    m_form->form()->checkForChanges();
    QVERIFY(!m_form->find<QLabel>("lblAdapterChanged")->isVisible());
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::clearAllAsksNothing()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->editDescription(QStringLiteral("edited in vain"));
    m_form->press("btnClearInterfaces");
    QCOMPARE(m_form->collection.getAdapterCount(), quint16(0));
    QVERIFY(!m_form->find<QPushButton>("btnUpdateInterface")->isEnabled());
    m_form->press("btnClose");
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::upAndDownMoveTheSelectedAdapter()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_form->press("btnDown");
    QCOMPARE(m_form->savedDescriptions(), (QStringList{QStringLiteral("2"), QStringLiteral("1"), QStringLiteral("3")}));
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    m_form->press("btnDown");
    m_form->press("btnUp");
    QCOMPARE(m_form->savedDescriptions(), (QStringList{QStringLiteral("2"), QStringLiteral("1"), QStringLiteral("3")}));
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
    QCOMPARE(m_form->shownDescription(), QStringLiteral("1"));
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::theEndsOfTheTableStopAMove()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->press("btnUp");
    QCOMPARE(m_form->selectedRows(), QList<int>{0});
    m_form->press("btnClearInterfaces");
    m_form->press("btnUp");
    m_form->press("btnDown");
    QCOMPARE(m_form->collection.getAdapterCount(), quint16(0));
}

void TestCanMultiInterfaceDialog::closeCloses()
{
    QVERIFY(m_form->showWith({demo}));
    QSignalSpy finished(m_form->dialog.get(), &QDialog::finished);
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(finished.count(), 1);
    QVERIFY(!m_form->connectRequest);
}

void TestCanMultiInterfaceDialog::updateCloseConnectAsksForAConnection()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("left door"));
    m_form->press("btnUpdateCloseConnect");
    QCOMPARE(m_form->savedDescriptions(), (QStringList{QStringLiteral("1"), QStringLiteral("left door")}));
    QVERIFY(!m_form->dialog->isVisible());
    QVERIFY(m_form->connectRequest);
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestCanMultiInterfaceDialog::updateCloseConnectAddsTheFirstAdapter()
{
    QVERIFY(m_form->show());
    m_form->describe(demo, QStringLiteral("West"), QStringLiteral("first"));
    m_form->press("btnUpdateCloseConnect");
    QCOMPARE(m_form->savedDescriptions(), QStringList{QStringLiteral("first")});
    QVERIFY(!m_form->dialog->isVisible());
    QVERIFY(m_form->connectRequest);
}

void TestCanMultiInterfaceDialog::nothingIsLeftBehind()
{
    QVERIFY(m_form->showWith({demo, demo, demo}));
    m_form->clickRow(2);
    m_form->editDescription(QStringLiteral("edited"));
    m_form->press("btnUpdateInterface");
    m_form->press("btnRemoveSelected");
    m_form->press("btnUp");
    m_form->press("btnClose");
    m_form->dialog.reset();
    QCOMPARE(m_form->livingAdapters(), int(m_form->collection.getAdapterCount()));
}

void TestCanMultiInterfaceDialog::whatAFullCollectionRefusesIsNotLeftBehind()
{
    QVERIFY(m_form->showWith({demo}));
    // Every identifier in use, though not by an adapter each.
    for (int identifier = 2; identifier <= 65535; ++identifier)
        m_form->collection.getAdapterMap()->insert(static_cast<quint16>(identifier), m_form->adapterAt(0));
    m_form->press("btnAddInterface");
    QCOMPARE(m_form->collection.getAdapterCount(), quint16(65535));
    QCOMPARE(m_form->livingAdapters(), 1);
}

void TestCanMultiInterfaceDialog::whatAClosingAdapterRefusesIsNotLeftBehind()
{
    QVERIFY(m_form->showWith({demo}));
    auto *adapter = static_cast<FakeAdapter *>(m_form->adapterAt(0));
    adapter->setRunning(true);
    int refused = 0;
    // As a slot may do it that runs an event loop.
    adapter->onClose = [&] {
        m_form->press("btnUpdateInterface");
        refused += int(m_form->adapterAt(0) == adapter);
    };
    m_form->editDescription(QStringLiteral("edited"));
    m_form->press("btnUpdateInterface");
    QCOMPARE(refused, 1);
    QCOMPARE(m_form->savedDescriptions(), QStringList{QStringLiteral("edited")});
    QCOMPARE(m_form->livingAdapters(), 1);
}

void TestCanMultiInterfaceDialog::geometryAndColumnsComeBack()
{
    QVERIFY(m_form->show());
    m_form->dialog->resize(1300, 740);
    m_form->table()->setColumnWidth(1, 222);
    m_form->press("btnClose");
    QSettings settings(QStringLiteral("Harrier"), QStringLiteral("Falcon 2.4.1"));
    settings.beginGroup(QStringLiteral("CanMultiInterfaceDialog"));
    QCOMPARE(settings.childKeys(), (QStringList{QStringLiteral("Geometry"), QStringLiteral("TVState")}));
    QVERIFY(m_form->show());
    QCOMPARE(m_form->dialog->size(), QSize(1300, 740));
    QCOMPARE(m_form->table()->columnWidth(1), 222);
}

void TestCanMultiInterfaceDialog::checkColumnsComeBackInTheirWidth()
{
    QVERIFY(m_form->show());
    m_form->table()->setColumnWidth(2, 222);
    m_form->table()->setColumnWidth(3, 111);
    m_form->press("btnClose");
    QVERIFY(m_form->show());
    QCOMPARE(m_form->table()->columnWidth(2), 55);
    QCOMPARE(m_form->table()->columnWidth(3), 45);
}

void TestCanMultiInterfaceDialog::aHiddenActiveColumnStaysHidden()
{
    m_form->make();
    m_form->dialog->hideActiveColumn(true);
    QVERIFY(m_form->table()->isColumnHidden(3));
    // Whatever an earlier showing has saved.
    m_form->dialog->show();
    QVERIFY(m_form->table()->isColumnHidden(3));
    m_form->press("btnClose");
    QVERIFY(m_form->show());
    QVERIFY(!m_form->table()->isColumnHidden(3));
    m_form->dialog->hideActiveColumn(true);
    m_form->dialog->hideActiveColumn(false);
    QCOMPARE(m_form->table()->columnWidth(3), 45);
}

void TestCanMultiInterfaceDialog::aStateOfSomethingElseIsIgnored()
{
    {
        QSettings settings(QStringLiteral("Harrier"), QStringLiteral("Falcon 2.4.1"));
        settings.setValue(QStringLiteral("CanMultiInterfaceDialog/Geometry"), QByteArray("no geometry"));
        settings.setValue(QStringLiteral("CanMultiInterfaceDialog/TVState"), 17);
    }
    QVERIFY(m_form->show());
    QCOMPARE(m_form->dialog->width(), 1243);
    QCOMPARE(m_form->table()->columnWidth(1), 160);
}

void TestCanMultiInterfaceDialog::theActiveColumnExplainsItselfAtOnce()
{
    QVERIFY(m_form->showWith({demo}));
    showToolTipAt(0, 3);
    QCOMPARE(QToolTip::text(), QStringLiteral("Adapter is set as primary, cannot unset active state."));
    QToolTip::hideText();
}

void TestCanMultiInterfaceDialog::aCellWithNothingToSayHidesTheToolTip()
{
    QVERIFY(m_form->showWith({demo}));
    QToolTip::showText(QPoint(1, 1), QStringLiteral("old"));
    showToolTipAt(0, 1);
    QTRY_VERIFY(!QToolTip::isVisible());
}

void TestCanMultiInterfaceDialog::theFlagsExplainThemselves()
{
    QVERIFY(m_form->showWith({demo}));
    const QPoint place = m_form->table()->visualRect(m_form->table()->model()->index(0, 4)).topLeft();
    QHelpEvent event(QEvent::ToolTip, place, m_form->table()->viewport()->mapToGlobal(place));
    QToolTip::showText(QPoint(1, 1), QStringLiteral("old"));
    // By their delegate and not by the dialog.
    QVERIFY(!m_form->dialog->eventFilter(m_form->table()->viewport(), &event));
    QCOMPARE(QToolTip::text(), QStringLiteral("old"));
    QCoreApplication::sendEvent(m_form->table()->viewport(), &event);
    QCOMPARE(QToolTip::text(), QStringLiteral("CAN FD is not activated."));
    QToolTip::hideText();
}

void TestCanMultiInterfaceDialog::noEventIsKeptFromTheTable()
{
    QVERIFY(m_form->showWith({demo}));
    const QPoint place = m_form->table()->visualRect(m_form->table()->model()->index(0, 3)).center();
    QHelpEvent inCell(QEvent::ToolTip, place, place);
    QHelpEvent beside(QEvent::ToolTip, QPoint(5, 400), QPoint(5, 400));
    QEvent other(QEvent::Enter);
    QVERIFY(!m_form->dialog->eventFilter(m_form->table()->viewport(), &inCell));
    QVERIFY(!m_form->dialog->eventFilter(m_form->table()->viewport(), &beside));
    QVERIFY(!m_form->dialog->eventFilter(m_form->table()->viewport(), &other));
    QVERIFY(!m_form->dialog->eventFilter(m_form->dialog.get(), &inCell));
    QToolTip::hideText();
}

void TestCanMultiInterfaceDialog::keysReachTheCheckColumns()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->adapterAt(1)->setCanAdapterOption(Adapter::OptionPort, QStringLiteral("4711"));
    m_form->clickRow(1);
    QTest::keyClick(m_form->table(), Qt::Key_Space);
    QVERIFY(m_form->adapterAt(1)->isActiveAdapter());
    QTest::keyClick(m_form->table(), Qt::Key_Space);
    QVERIFY(!m_form->adapterAt(1)->isActiveAdapter());
    QTest::keyClick(m_form->table(), Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(m_form->collection.getPrimaryAdapter(), m_form->adapterAt(1));
    // Which one is primary ends by making another one so, and a primary one stays active.
    QTest::keyClick(m_form->table(), Qt::Key_Space, Qt::ControlModifier);
    QTest::keyClick(m_form->table(), Qt::Key_Space);
    QCOMPARE(m_form->collection.getPrimaryAdapter(), m_form->adapterAt(1));
    QVERIFY(m_form->adapterAt(1)->isActiveAdapter());
}

void TestCanMultiInterfaceDialog::keysLeaveAHiddenColumnAlone()
{
    QVERIFY(m_form->showWith({demo, demo}));
    m_form->adapterAt(1)->setCanAdapterOption(Adapter::OptionPort, QStringLiteral("4711"));
    m_form->dialog->hideActiveColumn(true);
    m_form->clickRow(1);
    QTest::keyClick(m_form->table(), Qt::Key_Space);
    QVERIFY(!m_form->adapterAt(1)->isActiveAdapter());
    QCOMPARE(m_form->selectedRows(), QList<int>{1});
}

void TestCanMultiInterfaceDialog::aMenuNamesTheKeys()
{
    m_form->make();
    QCOMPARE(m_form->table()->contextMenuPolicy(), Qt::ActionsContextMenu);
    QCOMPARE(menu(),
             (QStringList{QStringLiteral("Set active or not|Space"), QStringLiteral("Make primary|Ctrl+Space")}));
}

void TestCanMultiInterfaceDialog::theMenuLeavesOutAHiddenColumn()
{
    m_form->make();
    m_form->dialog->hideActiveColumn(true);
    QCOMPARE(menu(), QStringList{QStringLiteral("Make primary|Ctrl+Space")});
    m_form->dialog->show();
    QCOMPARE(menu(), QStringList{QStringLiteral("Make primary|Ctrl+Space")});
    m_form->dialog->hideActiveColumn(false);
    QCOMPARE(menu().count(), 2);
}

void TestCanMultiInterfaceDialog::theTabKeyWalksThroughTheWindow()
{
    QVERIFY(m_form->showWith({demo, demo}));
    QStringList visited;
    do {
        visited.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    } while (QApplication::focusWidget() != m_form->table() && visited.count() < 100);
    QCOMPARE(
        visited.mid(0, 7).join(QLatin1Char(' ')),
        QStringLiteral("tableView btnClearInterfaces btnRemoveSelected btnUp btnDown cbCanInterfaceType cbCanDevice"));
    QCOMPARE(visited.mid(visited.count() - 4).join(QLatin1Char(' ')),
             QStringLiteral("btnAddInterface btnUpdateInterface btnUpdateCloseConnect btnClose"));
}

void TestCanMultiInterfaceDialog::enterUpdates()
{
    QVERIFY(m_form->showWith({demo, demo}));
    auto *description = m_form->find<QLineEdit>("leDescription");
    description->setFocus();
    description->selectAll();
    QTest::keyClicks(description, QStringLiteral("left door"));
    QTest::keyClick(description, Qt::Key_Return);
    QCOMPARE(m_form->savedDescriptions(), (QStringList{QStringLiteral("left door"), QStringLiteral("2")}));
}

QTEST_MAIN(TestCanMultiInterfaceDialog)
#include "tst_canmultiinterfacedialog.moc"
