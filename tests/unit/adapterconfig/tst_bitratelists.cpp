#include "bitratebench.h"

#include <memory>

// What the lists offer, and what their entries do to the controls around them.
class TestBitrateLists : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void classicEntryHasItsText_data();
    void classicEntryHasItsText();
    void dataEntryAlwaysNamesItsSamplePoint();
    void entryHoldsItsBitrate();
    void fdBusHasItsOwnArbitrationBitrates();
    void userEntryFollowsTheFamily_data();
    void userEntryFollowsTheFamily();
    void emptyDataListStaysEmpty();
    void toggleAddsAndRemovesTheUserEntry_data();
    void toggleAddsAndRemovesTheUserEntry();
    void listedBitrateIsNeverTakenForTheUserEntry();
    void registerEntryIsThereForItsTypeOnly();
    void registerEntryIsAddedOnce();
    void registerEntryTakesOneOfTheOtherListWhenItGoes();
    void userEntryEnablesItsButton();
    void userEntryOfTheDataPhaseEnablesItsButton();
    void registerEntryEnablesItsField();
    void samplePointIsTheToolTip_data();
    void samplePointIsTheToolTip();
    void lowSpeedLeavesWhatItCanDo();
    void lowSpeedKeepsTheStateOfALink();
    void endOfLowSpeedFillsTheList_data();
    void endOfLowSpeedFillsTheList();

private:
    QString classic() const { return BitrateBench::shown(m_bench->classic); }
    QString data() const { return BitrateBench::shown(m_bench->data); }

    std::unique_ptr<BitrateBench> m_bench;
    FakeFamily *m_family = nullptr;
};

void TestBitrateLists::init()
{
    m_bench = std::make_unique<BitrateBench>();
    m_family = BitrateBench::installFamily();
}

void TestBitrateLists::cleanup()
{
    m_bench.reset();
}

void TestBitrateLists::classicEntryHasItsText_data()
{
    QTest::addColumn<double>("samplePoint");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0.0 << "Fast";
    QTest::newRow("three decimals") << 0.875 << "Fast (0.875)";
    QTest::newRow("one decimal") << 0.8 << "Fast (0.8)";
    QTest::newRow("whole") << 1.0 << "Fast (1)";
    QTest::newRow("tiny") << 0.00001 << "Fast (1e-05)";
}

void TestBitrateLists::classicEntryHasItsText()
{
    QFETCH(double, samplePoint);
    m_family->classicBitrates = {{QStringLiteral("Fast"), 500, samplePoint}};
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QTEST(m_bench->classic.itemText(0), "text");
}

void TestBitrateLists::dataEntryAlwaysNamesItsSamplePoint()
{
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QCOMPARE(m_bench->data.itemText(0), QStringLiteral("1000 kBit/s (0.75)"));
    QCOMPARE(m_bench->data.itemText(3), QStringLiteral("4000 kBit/s (0)"));
}

void TestBitrateLists::entryHoldsItsBitrate()
{
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QCOMPARE(m_bench->classic.itemData(3), QVariant::fromValue(m_family->classicBitrates.at(3)));
    QCOMPARE(m_bench->data.itemData(1), QVariant::fromValue(m_family->fdDataBitrates.at(1)));
}

void TestBitrateLists::fdBusHasItsOwnArbitrationBitrates()
{
    m_family->fdArbitrationBitrates = {{QStringLiteral("Arbitration"), 500, 0.8}};
    m_family->classicBitTiming = false;
    m_bench->lists.updateBitrates(BitrateBench::type, true);
    QCOMPARE(classic(), QStringLiteral("[Arbitration (0.8)]"));
}

void TestBitrateLists::userEntryFollowsTheFamily_data()
{
    QTest::addColumn<bool>("classicTiming");
    QTest::addColumn<bool>("dataTiming");
    QTest::newRow("neither") << false << false;
    QTest::newRow("classic") << true << false;
    QTest::newRow("data phase") << false << true;
    QTest::newRow("both") << true << true;
}

void TestBitrateLists::userEntryFollowsTheFamily()
{
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QFETCH(bool, classicTiming);
    QFETCH(bool, dataTiming);
    m_family->classicBitTiming = classicTiming;
    m_family->fdBitTiming = dataTiming;
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QTEST(m_bench->classic.findText(QStringLiteral("User bitrate")) == 5, "classicTiming");
    QTEST(m_bench->data.findText(QStringLiteral("User bitrate")) == 4, "dataTiming");
}

void TestBitrateLists::emptyDataListStaysEmpty()
{
    m_family->fdDataBitrates.clear();
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QCOMPARE(data(), QString());
}

void TestBitrateLists::toggleAddsAndRemovesTheUserEntry_data()
{
    QTest::addColumn<bool>("dataPhase");
    QTest::newRow("classic") << false;
    QTest::newRow("data phase") << true;
}

void TestBitrateLists::toggleAddsAndRemovesTheUserEntry()
{
    QFETCH(bool, dataPhase);
    const QComboBox &list = dataPhase ? m_bench->data : m_bench->classic;
    const auto toggle = [&](bool on) {
        if (dataPhase)
            m_bench->lists.toggleCANFDUserBitrate(on);
        else
            m_bench->lists.toggleCANUserBitrate(on);
    };
    toggle(false);
    QCOMPARE(list.count(), 0);
    toggle(true);
    toggle(true);
    QCOMPARE(list.count(), 1);
    QCOMPARE(list.itemText(0), QStringLiteral("User bitrate"));
    QCOMPARE(list.itemData(0), QVariant(65535));
    toggle(false);
    QCOMPARE(list.count(), 0);
}

void TestBitrateLists::listedBitrateIsNeverTakenForTheUserEntry()
{
    m_family->classicBitrates = {{QStringLiteral("Absurd"), 65535, 0.0}};
    m_family->classicBitTiming = false;
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QCOMPARE(classic(), QStringLiteral("[Absurd]"));
    QVERIFY(!m_bench->editClassic.isEnabled());
}

void TestBitrateLists::registerEntryIsThereForItsTypeOnly()
{
    BitrateBench::installFamily(BitrateBench::systec);
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    QCOMPARE(m_bench->classic.itemText(6), QStringLiteral("User bitrate"));
    QCOMPARE(m_bench->classic.itemData(6), QVariant(65450));
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QCOMPARE(m_bench->classic.findData(65450), -1);
}

void TestBitrateLists::registerEntryIsAddedOnce()
{
    m_bench->lists.toggleSystecBtrExt(true);
    m_bench->lists.toggleSystecBtrExt(true);
    QCOMPARE(m_bench->classic.count(), 1);
}

void TestBitrateLists::registerEntryTakesOneOfTheOtherListWhenItGoes()
{
    m_family->classicBitrates = {{QStringLiteral("Slow"), 50, 0.0}};
    m_family->classicBitTiming = m_family->fdBitTiming = false;
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    m_bench->lists.toggleSystecBtrExt(true);
    m_bench->lists.toggleSystecBtrExt(false);
    QCOMPARE(classic(), QStringLiteral("[Slow], User bitrate"));
    QCOMPARE(data(), QStringLiteral("[1000 kBit/s (0.75)], 2000 kBit/s (0.75), 4000 kBit/s (0)"));
}

void TestBitrateLists::userEntryEnablesItsButton()
{
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QVERIFY(!m_bench->editClassic.isEnabled());
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    QVERIFY(m_bench->editClassic.isEnabled());
    QVERIFY(m_bench->lists.classicParameter().userDefined);
    m_bench->classic.setCurrentIndex(0);
    QVERIFY(!m_bench->editClassic.isEnabled());
    QVERIFY(!m_bench->lists.classicParameter().userDefined);
}

void TestBitrateLists::userEntryOfTheDataPhaseEnablesItsButton()
{
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    QVERIFY(!m_bench->editData.isEnabled());
    m_bench->choose(m_bench->data, QStringLiteral("User bitrate"));
    QVERIFY(m_bench->editData.isEnabled());
    QVERIFY(m_bench->lists.fdParameter().userDefined);
    QVERIFY(!m_bench->lists.classicParameter().userDefined);
    m_bench->data.setCurrentIndex(0);
    QVERIFY(!m_bench->editData.isEnabled());
    QVERIFY(!m_bench->lists.fdParameter().userDefined);
}

void TestBitrateLists::registerEntryEnablesItsField()
{
    BitrateBench::installFamily(BitrateBench::systec);
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    QVERIFY(!m_bench->lblBtr.isEnabled());
    QVERIFY(!m_bench->edtBtr.isEnabled());
    m_bench->classic.setCurrentIndex(6);
    QVERIFY(m_bench->lblBtr.isEnabled());
    QVERIFY(m_bench->edtBtr.isEnabled());
    QVERIFY(!m_bench->editClassic.isEnabled());
    m_bench->classic.setCurrentIndex(5);
    QVERIFY(!m_bench->lblBtr.isEnabled());
    QVERIFY(!m_bench->edtBtr.isEnabled());
}

void TestBitrateLists::samplePointIsTheToolTip_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("toolTip");
    QTest::newRow("a sample point") << 0 << "0.75 %";
    QTest::newRow("no sample point") << 3 << "";
    QTest::newRow("the user's entry") << 4 << "";
    QTest::newRow("nothing selected") << -1 << "";
}

void TestBitrateLists::samplePointIsTheToolTip()
{
    QFETCH(int, index);
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    m_bench->data.setCurrentIndex(1);
    QCOMPARE(m_bench->data.toolTip(), QStringLiteral("0.8 %"));
    m_bench->data.setCurrentIndex(index);
    QTEST(m_bench->data.toolTip(), "toolTip");
}

void TestBitrateLists::lowSpeedLeavesWhatItCanDo()
{
    m_family->classicBitrates.append({QStringLiteral("126 kBit/s"), 126, 0.875});
    m_bench->lists.updateBitrates(BitrateBench::type, false);
    m_bench->lists.toggleSystecBtrExt(true);
    m_bench->lists.updateLSBitrates(true, BitrateBench::type, false);
    QCOMPARE(classic(), QStringLiteral("50 kBit/s (0.875), [125 kBit/s (0.875)]"));
}

void TestBitrateLists::lowSpeedKeepsTheStateOfALink()
{
    m_bench->classic.addItem(QStringLiteral("500 kbit/s"), AbstractCanAdapter::SocketCANProps().toQVariant());
    m_bench->classic.addItem(QStringLiteral("0 kbit/s"), QVariant());
    m_bench->lists.updateLSBitrates(true, BitrateBench::type, false);
    QCOMPARE(m_bench->classic.count(), 2);
}

void TestBitrateLists::endOfLowSpeedFillsTheList_data()
{
    QTest::addColumn<bool>("fdBus");
    QTest::addColumn<QString>("shown");
    QTest::newRow("classic bus") << false
                                 << "50 kBit/s (0.875), 125 kBit/s (0.875), 250 kBit/s (0.8), "
                                    "[250 kBit/s (0.875)], 500 kBit/s, User bitrate";
    QTest::newRow("CAN FD bus") << true << "[Arbitration (0.8)], User bitrate";
}

void TestBitrateLists::endOfLowSpeedFillsTheList()
{
    QFETCH(bool, fdBus);
    m_family->fdArbitrationBitrates = {{QStringLiteral("Arbitration"), 500, 0.8}};
    m_bench->lists.updateLSBitrates(true, BitrateBench::type, fdBus);
    m_bench->lists.updateLSBitrates(false, BitrateBench::type, fdBus);
    QTEST(classic(), "shown");
}

QTEST_MAIN(TestBitrateLists)
#include "tst_bitratelists.moc"
