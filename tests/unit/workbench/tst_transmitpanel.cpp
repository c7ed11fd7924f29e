#include "canscheduler.h"
#include "cyclicframes.h"
#include "fakeadapter.h"
#include "transmitpanel.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

class TestTransmitPanel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void enterSendsTheFrame();
    void buttonSendsTheFrame();
    void flagsGoOutWithTheFrame();
    void withoutConnectionNothingCanBeSent();
    void wrongInputIsNamedWhileItIsTyped();
    void flagsThatExcludeEachOtherAreDisabled();
    void eachClickShowsThatItSent();
    void refusalIsSaidInWords_data();
    void refusalIsSaidInWords();
    void everyResultHasItsWords();
    void adapterThatDiedIsNotAsked();
    void cyclicFrameStartsWithItsPeriod();
    void selectedCyclicFrameCanBeStoppedAndResumed();
    void removeTakesTheSelectedFrameOffTheList();
    void stopAllIsThereWhileSomethingIsSent();
    void activatedRowComesBackToTheFields();
    void everyControlHasAToolTip();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_panel->findChild<Widget *>(QString::fromLatin1(name));
    }
    void type(const char *name, const QString &text) const { find<QLineEdit>(name)->setText(text); }
    QString hint() const { return find<QLabel>("lblTransmitHint")->text(); }
    void connectPanel()
    {
        m_adapter->setRunning(true);
        m_adapter->takeCalls();
        m_panel->setConnection(m_adapter.get(), m_scheduler.get());
    }

    std::unique_ptr<FakeAdapter> m_adapter;
    std::unique_ptr<CanScheduler> m_scheduler;
    std::unique_ptr<TransmitPanel> m_panel;
};

void TestTransmitPanel::init()
{
    m_adapter = std::make_unique<FakeAdapter>();
    m_adapter->setCanAdapterOption(AbstractCanAdapter::OptionAdapterName, QStringLiteral("Bench"));
    // Of no adapter, so that the fake's record holds what the panel itself writes.
    m_scheduler = std::make_unique<CanScheduler>(nullptr);
    m_panel = std::make_unique<TransmitPanel>();
}

void TestTransmitPanel::cleanup()
{
    m_panel.reset();
    m_scheduler.reset();
    m_adapter.reset();
}

void TestTransmitPanel::enterSendsTheFrame()
{
    connectPanel();
    type("edtIdentifier", QStringLiteral("7FF"));
    type("edtData", QStringLiteral("de ad"));
    QTest::keyClick(find<QLineEdit>("edtData"), Qt::Key_Return);
    QTest::keyClick(find<QLineEdit>("edtIdentifier"), Qt::Key_Enter);
    QCOMPARE(m_adapter->calls(), (QStringList{QStringLiteral("write 7FF#DEAD"), QStringLiteral("write 7FF#DEAD")}));
}

void TestTransmitPanel::buttonSendsTheFrame()
{
    connectPanel();
    type("edtIdentifier", QStringLiteral("1"));
    type("edtData", QString());
    find<QPushButton>("btnSend")->click();
    QCOMPARE(m_adapter->calls(), QStringList{QStringLiteral("write 001#")});
}

void TestTransmitPanel::flagsGoOutWithTheFrame()
{
    connectPanel();
    type("edtIdentifier", QStringLiteral("12345"));
    type("edtData", QStringLiteral("01"));
    find<QCheckBox>("cbExtended")->setChecked(true);
    find<QPushButton>("btnSend")->click();
    find<QCheckBox>("cbRemote")->setChecked(true);
    find<QPushButton>("btnSend")->click();
    find<QCheckBox>("cbFd")->setChecked(true);
    find<QPushButton>("btnSend")->click();
    find<QCheckBox>("cbBitRateSwitch")->setChecked(true);
    find<QPushButton>("btnSend")->click();
    QCOMPARE(m_adapter->calls(),
             (QStringList{QStringLiteral("write 00012345#01"), QStringLiteral("write 00012345#R"),
                          QStringLiteral("write 00012345##001"), QStringLiteral("write 00012345##101")}));
}

void TestTransmitPanel::withoutConnectionNothingCanBeSent()
{
    QVERIFY(!find<QPushButton>("btnSend")->isEnabled());
    QVERIFY(!find<QPushButton>("btnSendCyclically")->isEnabled());
    QCOMPARE(hint(), QStringLiteral("Connect first to send frames: press F5."));
    QVERIFY(find<QLineEdit>("edtData")->isEnabled());
    connectPanel();
    QVERIFY(find<QPushButton>("btnSend")->isEnabled());
    QCOMPARE(hint(), QStringLiteral("Enter sends the frame through Bench."));
    m_panel->setConnection(nullptr, nullptr);
    QVERIFY(!find<QPushButton>("btnSend")->isEnabled());
    QTest::keyClick(find<QLineEdit>("edtData"), Qt::Key_Return);
    m_panel->sendCyclically();
    QCOMPARE(m_adapter->calls(), QStringList());
    QCOMPARE(m_panel->cyclicFrames()->rowCount(), 0);
}

void TestTransmitPanel::wrongInputIsNamedWhileItIsTyped()
{
    connectPanel();
    type("edtIdentifier", QStringLiteral("800"));
    QCOMPARE(hint(), QStringLiteral("Identifiers above 7FF need 29 bits: switch on \"Extended\"."));
    QVERIFY(!find<QPushButton>("btnSend")->isEnabled());
    QTest::keyClick(find<QLineEdit>("edtIdentifier"), Qt::Key_Return);
    QCOMPARE(m_adapter->calls(), QStringList());
    find<QCheckBox>("cbExtended")->setChecked(true);
    QCOMPARE(hint(), QStringLiteral("Enter sends the frame through Bench."));
    QVERIFY(find<QPushButton>("btnSend")->isEnabled());
}

void TestTransmitPanel::flagsThatExcludeEachOtherAreDisabled()
{
    QVERIFY(!find<QCheckBox>("cbBitRateSwitch")->isEnabled());
    find<QCheckBox>("cbFd")->setChecked(true);
    QVERIFY(find<QCheckBox>("cbBitRateSwitch")->isEnabled());
    QVERIFY(!find<QCheckBox>("cbRemote")->isEnabled());
    find<QCheckBox>("cbFd")->setChecked(false);
    find<QCheckBox>("cbRemote")->setChecked(true);
    QVERIFY(!find<QLineEdit>("edtData")->isEnabled());
    find<QCheckBox>("cbRemote")->setChecked(false);
    QVERIFY(find<QLineEdit>("edtData")->isEnabled());
}

void TestTransmitPanel::eachClickShowsThatItSent()
{
    connectPanel();
    find<QPushButton>("btnSend")->click();
    QCOMPARE(hint(), QStringLiteral("Sent 123."));
    find<QPushButton>("btnSend")->click();
    QCOMPARE(hint(), QStringLiteral("Sent 123, 2 times."));
    type("edtData", QStringLiteral("05"));
    find<QPushButton>("btnSend")->click();
    QCOMPARE(hint(), QStringLiteral("Sent 123."));
}

void TestTransmitPanel::refusalIsSaidInWords_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("part");
    QTest::newRow("closed") << int(AbstractCanAdapter::WriteNotOpen) << "Connect again (F5)";
    QTest::newRow("listens") << int(AbstractCanAdapter::WriteListenOnly) << "only listens";
    QTest::newRow("invalid") << int(AbstractCanAdapter::WriteInvalidFrame) << "does not take this kind of frame";
    QTest::newRow("lost") << int(AbstractCanAdapter::WriteLost) << "did not take the frame in time";
}

void TestTransmitPanel::refusalIsSaidInWords()
{
    QFETCH(int, result);
    QFETCH(QString, part);
    connectPanel();
    m_adapter->writeResult = static_cast<AbstractCanAdapter::WriteResult>(result);
    find<QPushButton>("btnSend")->click();
    QVERIFY2(hint().contains(part), qPrintable(hint()));
}

void TestTransmitPanel::everyResultHasItsWords()
{
    QCOMPARE(TransmitPanel::refusalText(AbstractCanAdapter::WriteOk), QString());
    QCOMPARE(TransmitPanel::refusalText(static_cast<AbstractCanAdapter::WriteResult>(99)),
             QStringLiteral("Not sent: the interface refused the frame (code 99)."));
}

void TestTransmitPanel::adapterThatDiedIsNotAsked()
{
    connectPanel();
    m_adapter.reset();
    m_panel->sendOnce();
    QCOMPARE(hint(), QStringLiteral("Connect first to send frames: press F5."));
}

void TestTransmitPanel::cyclicFrameStartsWithItsPeriod()
{
    connectPanel();
    find<QDoubleSpinBox>("sbPeriod")->setValue(12.5);
    find<QPushButton>("btnSendCyclically")->click();
    QCOMPARE(m_panel->cyclicFrames()->rowCount(), 1);
    QCOMPARE(m_panel->cyclicFrames()->periodMicroseconds(0), qint64(12'500));
    QCOMPARE(m_panel->cyclicFrames()->message(0).id, 0x123u);
    QCOMPARE(m_scheduler->cyclicMessageCount(), 1);
}

void TestTransmitPanel::selectedCyclicFrameCanBeStoppedAndResumed()
{
    connectPanel();
    auto *toggle = find<QPushButton>("btnToggleCyclic");
    QVERIFY(!toggle->isEnabled());
    find<QPushButton>("btnSendCyclically")->click();
    QVERIFY(toggle->isEnabled());
    QCOMPARE(toggle->text(), QStringLiteral("St&op"));
    toggle->click();
    QVERIFY(!m_panel->cyclicFrames()->isSending(0));
    QCOMPARE(toggle->text(), QStringLiteral("Res&ume"));
    toggle->click();
    QVERIFY(m_panel->cyclicFrames()->isSending(0));
}

void TestTransmitPanel::removeTakesTheSelectedFrameOffTheList()
{
    connectPanel();
    find<QPushButton>("btnSendCyclically")->click();
    type("edtIdentifier", QStringLiteral("124"));
    find<QPushButton>("btnSendCyclically")->click();
    find<QTableView>("tblCyclic")->selectRow(0);
    find<QPushButton>("btnRemoveCyclic")->click();
    QCOMPARE(m_panel->cyclicFrames()->rowCount(), 1);
    QCOMPARE(m_panel->cyclicFrames()->message(0).id, 0x124u);
    QCOMPARE(m_scheduler->cyclicMessageCount(), 1);
}

void TestTransmitPanel::stopAllIsThereWhileSomethingIsSent()
{
    connectPanel();
    QVERIFY(!find<QPushButton>("btnStopAllCyclic")->isEnabled());
    find<QPushButton>("btnSendCyclically")->click();
    QVERIFY(find<QPushButton>("btnStopAllCyclic")->isEnabled());
    find<QPushButton>("btnStopAllCyclic")->click();
    QVERIFY(!find<QPushButton>("btnStopAllCyclic")->isEnabled());
    QCOMPARE(m_scheduler->cyclicMessageCount(), 0);
}

void TestTransmitPanel::activatedRowComesBackToTheFields()
{
    connectPanel();
    type("edtIdentifier", QStringLiteral("1ABCDEF0"));
    find<QCheckBox>("cbExtended")->setChecked(true);
    find<QCheckBox>("cbFd")->setChecked(true);
    find<QCheckBox>("cbBitRateSwitch")->setChecked(true);
    type("edtData", QStringLiteral("AA BB"));
    find<QDoubleSpinBox>("sbPeriod")->setValue(50);
    find<QPushButton>("btnSendCyclically")->click();
    type("edtIdentifier", QStringLiteral("1"));
    type("edtData", QString());
    for (const char *box : {"cbExtended", "cbFd", "cbBitRateSwitch"})
        find<QCheckBox>(box)->setChecked(false);
    find<QDoubleSpinBox>("sbPeriod")->setValue(1);

    emit find<QTableView>("tblCyclic")->activated(m_panel->cyclicFrames()->index(0, 0));
    QCOMPARE(find<QLineEdit>("edtIdentifier")->text(), QStringLiteral("1ABCDEF0"));
    QCOMPARE(find<QLineEdit>("edtData")->text(), QStringLiteral("AA BB"));
    for (const char *box : {"cbExtended", "cbFd", "cbBitRateSwitch"})
        QVERIFY2(find<QCheckBox>(box)->isChecked(), box);
    QCOMPARE(find<QDoubleSpinBox>("sbPeriod")->value(), 50.0);
}

void TestTransmitPanel::everyControlHasAToolTip()
{
    const auto check = [](const QWidget *widget) {
        QVERIFY2(!widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
    };
    const auto buttons = m_panel->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 6);
    for (const QPushButton *button : buttons)
        check(button);
    const auto boxes = m_panel->findChildren<QCheckBox *>();
    QCOMPARE(boxes.size(), 4);
    for (const QCheckBox *box : boxes)
        check(box);
    check(find<QLineEdit>("edtIdentifier"));
    check(find<QLineEdit>("edtData"));
    check(find<QDoubleSpinBox>("sbPeriod"));
}

QTEST_MAIN(TestTransmitPanel)
#include "tst_transmitpanel.moc"
