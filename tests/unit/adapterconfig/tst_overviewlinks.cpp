#include "overviewform.h"

#include <QCheckBox>
#include <QRegularExpression>

using Adapter = AbstractCanAdapter;
constexpr Adapter::CanAdapterType demo = Adapter::CanAdapterDemo;
constexpr Adapter::CanAdapterType link = Adapter::CanAdapterSocketCan;

/// Links that the system sets up: what the form says of them is saved without a question, and at no moment anything but
/// what it says of them.
class TestOverviewLinks : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_form = std::make_unique<OverviewForm>(); }
    void cleanup() { m_form.reset(); }

    void selectingUpAndDownSavesNothing();
    void nothingIsRequestedAtRest();
    void aRunningLinkStaysConnected();
    void aLinkThatTheSystemChangedIsSavedOnce();
    void aLinkThatTheSystemChangedKeepsTheUsersSettings();
    void aClickOnALinkThatChangedSelectsOneRow();
    void editsOfALinkAreSavedAtTheNextTick();
    void typingGoesOnWhileALinkIsSaved();
    void theFocusStaysWhereItIsWhileALinkIsSaved();
    void aRequestIsLogged();
    void aRequestDuringTheQuestionIsNotTheNextRows();
    void aCancelledCloseAppliesWhatWasEdited();
    void aDiscardedCloseDoesNot();
    void aLinkThatIsChosenReplacesTheSelectedAdapter();
    void aLinkThatIsChosenWithoutASelectionReplacesNothing();
    void devicesThatCameSaveNothing();

private:
    bool showMixed() { return m_form->showWith({demo, link, demo, link}); }
    CAN::CANBitrateDesc savedBitrate(int row) { return m_form->saved(row, Adapter::OptionBitrate); }

    std::unique_ptr<OverviewForm> m_form;
};

void TestOverviewLinks::selectingUpAndDownSavesNothing()
{
    QVERIFY(showMixed());
    const QList<QByteArray> before = m_form->savedBytes();
    QSignalSpy changes(&m_form->collection, &MultiCanAdapterHandler::adapterMapChanged);
    for (int round = 0; round < 100; ++round) {
        for (int step = 0; step < 3; ++step)
            QTest::keyClick(m_form->table(), Qt::Key_Down);
        for (int step = 0; step < 3; ++step)
            QTest::keyClick(m_form->table(), Qt::Key_Up);
    }
    QCOMPARE(m_form->savedBytes(), before);
    QCOMPARE(changes.count(), 0);
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestOverviewLinks::nothingIsRequestedAtRest()
{
    QVERIFY(showMixed());
    for (const int row : {1, 0, 3, 1}) {
        m_form->clickRow(row);
        QSignalSpy requests(m_form->form(), &CanInterfaceWidget::sigUpdateAdapter);
        for (int tick = 0; tick < 5; ++tick)
            m_form->form()->checkForChanges();
        QCOMPARE(requests.count(), 0);
    }
}

void TestOverviewLinks::aRunningLinkStaysConnected()
{
    QVERIFY(showMixed());
    auto *adapter = static_cast<FakeAdapter *>(m_form->adapterAt(1));
    adapter->setRunning(true);
    m_form->clickRow(1);
    m_form->clickRow(3);
    m_form->clickRow(1);
    QVERIFY(m_form->adapterAt(1) == adapter);
    QVERIFY(adapter->getRunning());
}

void TestOverviewLinks::aLinkThatTheSystemChangedIsSavedOnce()
{
    QVERIFY(showMixed());
    m_form->setLink(125, true);
    QSignalSpy changes(&m_form->collection, &MultiCanAdapterHandler::adapterMapChanged);
    m_form->clickRow(1);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(savedBitrate(1).bitrate, quint16(125));
    QVERIFY(m_form->saved(1, Adapter::OptionUseCanFd).toBool());
    m_form->clickRow(0);
    m_form->clickRow(1);
    QCOMPARE(changes.count(), 1);
    // The other row of the same link is not selected yet.
    QCOMPARE(savedBitrate(3).bitrate, quint16(250));
}

void TestOverviewLinks::aLinkThatTheSystemChangedKeepsTheUsersSettings()
{
    QVERIFY(showMixed());
    const QList<QByteArray> before = m_form->savedBytes();
    m_form->setLink(125);
    m_form->clickRow(3);
    QCOMPARE(m_form->savedDescription(3), QStringLiteral("4"));
    QCOMPARE(m_form->saved(3, Adapter::OptionDeviceName).toString(), QStringLiteral("can0"));
    QCOMPARE(savedBitrate(3).bitrate, quint16(125));
    QCOMPARE(m_form->savedBytes().mid(0, 3), before.mid(0, 3));
}

void TestOverviewLinks::aClickOnALinkThatChangedSelectsOneRow()
{
    QVERIFY(showMixed());
    m_form->setLink(125);
    m_form->clickRow(3);
    QCOMPARE(m_form->selectedRows(), QList<int>{3});
    QCOMPARE(m_form->shownDescription(), QStringLiteral("4"));
    QVERIFY(m_form->dialog->updatesEnabled());
}

void TestOverviewLinks::editsOfALinkAreSavedAtTheNextTick()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("left door"));
    QTRY_COMPARE(m_form->savedDescription(1), QStringLiteral("left door"));
    QVERIFY(m_form->boxes.shown.isEmpty());
    m_form->clickRow(0);
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestOverviewLinks::typingGoesOnWhileALinkIsSaved()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    auto *description = m_form->find<QLineEdit>("leDescription");
    description->setFocus();
    description->setCursorPosition(0);
    QTest::keyClicks(description, QStringLiteral("door "));
    m_form->form()->checkForChanges();
    QCOMPARE(m_form->savedDescription(1), QStringLiteral("door 2"));
    QCOMPARE(QApplication::focusWidget(), description);
    QTest::keyClicks(description, QStringLiteral("no. "));
    m_form->form()->checkForChanges();
    QCOMPARE(m_form->savedDescription(1), QStringLiteral("door no. 2"));
}

void TestOverviewLinks::theFocusStaysWhereItIsWhileALinkIsSaved()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    auto *close = m_form->find<QPushButton>("btnClose");
    close->setFocus();
    m_form->setLink(125);
    emit CanAdapterFactory::notifier()->devicesChanged(link);
    QCOMPARE(savedBitrate(1).bitrate, quint16(125));
    QCOMPARE(QApplication::focusWidget(), close);
}

void TestOverviewLinks::aRequestIsLogged()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("onUpdateAdapterRequest\\(\\) 1$")));
    m_form->dialog->onUpdateAdapterRequest();
}

void TestOverviewLinks::aRequestDuringTheQuestionIsNotTheNextRows()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->form()->checkForChanges(); };
    m_form->boxes.answers = QStringList{QStringLiteral("Discard changes")};
    const QList<QByteArray> before = m_form->savedBytes();
    m_form->clickRow(3);
    QCOMPARE(m_form->boxes.shown.count(), 1);
    QCOMPARE(m_form->savedBytes(), before);
    QCOMPARE(m_form->shownDescription(), QStringLiteral("4"));
}

void TestOverviewLinks::aCancelledCloseAppliesWhatWasEdited()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->form()->checkForChanges(); };
    m_form->boxes.answers = QStringList{QStringLiteral("Cancel")};
    m_form->press("btnClose");
    QVERIFY(m_form->dialog->isVisible());
    QCOMPARE(m_form->savedDescription(1), QStringLiteral("edited"));
}

void TestOverviewLinks::aDiscardedCloseDoesNot()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    const QList<QByteArray> before = m_form->savedBytes();
    m_form->editDescription(QStringLiteral("edited"));
    m_form->boxes.whileShown = [this] { m_form->form()->checkForChanges(); };
    m_form->boxes.answers = QStringList{QStringLiteral("Discard changes")};
    m_form->press("btnClose");
    QVERIFY(!m_form->dialog->isVisible());
    QCOMPARE(m_form->savedBytes(), before);
}

void TestOverviewLinks::aLinkThatIsChosenReplacesTheSelectedAdapter()
{
    QVERIFY(showMixed());
    m_form->clickRow(2);
    m_form->describe(link, QStringLiteral("can0"), QStringLiteral("3"));
    QCOMPARE(m_form->saved(2, Adapter::OptionAdapterType).toUInt(), uint(link));
    QCOMPARE(m_form->savedDescription(2), QStringLiteral("3"));
    QCOMPARE(m_form->saved(0, Adapter::OptionAdapterType).toUInt(), uint(demo));
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestOverviewLinks::aLinkThatIsChosenWithoutASelectionReplacesNothing()
{
    QVERIFY(showMixed());
    m_form->table()->selectionModel()->reset();
    const QList<QByteArray> before = m_form->savedBytes();
    m_form->describe(link, QStringLiteral("can0"), QString());
    QCOMPARE(m_form->savedBytes(), before);
}

void TestOverviewLinks::devicesThatCameSaveNothing()
{
    QVERIFY(showMixed());
    m_form->clickRow(1);
    const QList<QByteArray> before = m_form->savedBytes();
    m_form->link->deviceMap.insert(QStringLiteral("can1"), 0);
    emit CanAdapterFactory::notifier()->devicesChanged(link);
    QCOMPARE(m_form->savedBytes(), before);
    QCOMPARE(m_form->find<QComboBox>("cbCanDevice")->count(), 2);
}

QTEST_MAIN(TestOverviewLinks)
#include "tst_overviewlinks.moc"
