#include "overviewform.h"

using Adapter = AbstractCanAdapter;
constexpr Adapter::CanAdapterType demo = Adapter::CanAdapterDemo;
constexpr Adapter::CanAdapterType link = Adapter::CanAdapterSocketCan;

/// Links of which the system says no bitrate, since they are virtual or gone. What the form shows in its place nobody
/// has chosen, and so it takes the place of nothing.
class TestLinksWithoutBitrate : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_form = std::make_unique<OverviewForm>(); }
    void cleanup() { m_form.reset(); }

    void selectingUpAndDownSavesNothing_data() { virtualLinks(); }
    void selectingUpAndDownSavesNothing();
    void aRunningLinkStaysConnected_data() { virtualLinks(); }
    void aRunningLinkStaysConnected();
    void aLinkThatIsGoneKeepsWhatWasSaved();
    void aBitrateThatIsSetAtLastIsSaved();
    void editsAreSavedAtTheNextTick();

private:
    static void virtualLinks()
    {
        QTest::addColumn<bool>("canFd");

        QTest::newRow("classic frames") << false;
        QTest::newRow("CAN FD") << true;
    }

    /// Rows 1 and 3 are a virtual link that was connected before.
    bool showConnected(bool canFd)
    {
        Adapter::SocketCANProps props;
        props.bitrate = 0;
        props.fdBitrate = 0;
        props.canFd = canFd;
        m_form->link->props.insert(QStringLiteral("can0"), props);
        if (!m_form->showWith({demo, link, demo, link}))
            return false;
        for (const int row : {1, 3}) {
            // What a connection writes.
            Adapter *adapter = m_form->adapterAt(row);
            const QVariant none = QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("250 kBit/s"), 0, 0.875));
            adapter->setCanAdapterOption(Adapter::OptionBitrate, none);
            adapter->setCanAdapterOption(Adapter::OptionFdBitrate, none);
            adapter->setCanAdapterOption(Adapter::OptionUseCanFd, canFd);
        }
        return true;
    }

    quint16 savedBitrate(int row) const
    {
        return CAN::CANBitrateDesc(m_form->saved(row, Adapter::OptionBitrate)).bitrate;
    }

    std::unique_ptr<OverviewForm> m_form;
};

void TestLinksWithoutBitrate::selectingUpAndDownSavesNothing()
{
    QFETCH(bool, canFd);
    QVERIFY(showConnected(canFd));
    const QList<QByteArray> before = m_form->savedBytes();
    QSignalSpy changes(&m_form->collection, &MultiCanAdapterHandler::adapterMapChanged);
    for (int round = 0; round < 100; ++round) {
        for (int step = 0; step < 3; ++step)
            QTest::keyClick(m_form->table(), Qt::Key_Down);
        emit CanAdapterFactory::notifier()->devicesChanged(link);
        for (int step = 0; step < 3; ++step)
            QTest::keyClick(m_form->table(), Qt::Key_Up);
    }
    QCOMPARE(m_form->savedBytes(), before);
    QCOMPARE(changes.count(), 0);
    QVERIFY(m_form->boxes.shown.isEmpty());
}

void TestLinksWithoutBitrate::aRunningLinkStaysConnected()
{
    QFETCH(bool, canFd);
    QVERIFY(showConnected(canFd));
    const QPointer<FakeAdapter> adapter = static_cast<FakeAdapter *>(m_form->adapterAt(1));
    adapter->setRunning(true);
    for (const int row : {1, 3, 1}) {
        m_form->clickRow(row);
        emit CanAdapterFactory::notifier()->devicesChanged(link);
        m_form->form()->checkForChanges();
    }
    QVERIFY(adapter);
    QVERIFY(adapter->getRunning());
}

void TestLinksWithoutBitrate::aLinkThatIsGoneKeepsWhatWasSaved()
{
    m_form->setLink(33, true);
    m_form->link->classicBitrates.append({QStringLiteral("33 kBit/s"), 33, 0.0});
    QVERIFY(m_form->showWith({demo, link}));
    m_form->clickRow(0);
    const QList<QByteArray> before = m_form->savedBytes();
    QCOMPARE(savedBitrate(1), quint16(33));
    m_form->link->props.clear();
    m_form->link->deviceMap.clear();
    m_form->link->classicBitrates.removeLast();
    QVERIFY(m_form->show());
    m_form->clickRow(1);
    emit CanAdapterFactory::notifier()->devicesChanged(link);
    QCOMPARE(m_form->find<QComboBox>("cbCanDevice")->currentText(), QStringLiteral("can0"));
    QCOMPARE(m_form->savedBytes(), before);
}

void TestLinksWithoutBitrate::aBitrateThatIsSetAtLastIsSaved()
{
    QVERIFY(showConnected(false));
    m_form->clickRow(1);
    m_form->setLink(500);
    emit CanAdapterFactory::notifier()->devicesChanged(link);
    QCOMPARE(savedBitrate(1), quint16(500));
}

void TestLinksWithoutBitrate::editsAreSavedAtTheNextTick()
{
    QVERIFY(showConnected(false));
    m_form->clickRow(1);
    m_form->editDescription(QStringLiteral("left door"));
    m_form->form()->checkForChanges();
    QCOMPARE(m_form->savedDescription(1), QStringLiteral("left door"));
}

QTEST_MAIN(TestLinksWithoutBitrate)
#include "tst_linkswithoutbitrate.moc"
