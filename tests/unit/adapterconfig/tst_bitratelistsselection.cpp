#include "bitratebench.h"

#include <memory>

// What is selected: after the lists were filled anew, and after an adapter was read.
class TestBitrateListsSelection : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void lastEntryOfTheDefaultBitrateIsSelected();
    void defaultBitrateCanBeSet();
    void unknownDefaultBitrateSelectsTheFirstEntry();
    void emptyListShowsNothing();
    void bitrateOfAnAdapterReplacesTheDefault();
    void bitrateOfAnAdapterCountsForOtherTypes();
    void textStaysSelected();
    void textStaysSelectedAmongOthers();
    void dataListFallsBackOnTheIndexOfTheOther();
    void shorterDataListShowsNothing();
    void userBitrateStaysSelected();
    void userBitrateOfTheDataPhaseStaysSelected();
    void userBitrateGoesWithItsEntry();
    void userBitrateGivesWayToTheRegisterEntryOfThatText();
    void registerEntryGivesWayToTheUserBitrate();
    void lowSpeedTakesTheUserBitrateAway();
    void bitrateIsMatched_data();
    void bitrateIsMatched();
    void nameOfABitrateIsNeverMatched();
    void entriesWithoutBitrateAreNotMatched();
    void numberOfTheRegisterEntrySelectsIt();
    void numberOfTheUserBitrateIsNoDefault();
    void withoutMatchNothingChanges();
    void dataBitrateIsMatched();
    void dataBitrateIsNoDefault();
    void stateOfALinkIsMatchedByNoBitrate();

private:
    void fill() { m_bench->lists.updateBitrates(BitrateBench::type, false); }
    QString classic() const { return m_bench->classic.currentText(); }
    QString data() const { return m_bench->data.currentText(); }

    std::unique_ptr<BitrateBench> m_bench;
    FakeFamily *m_family = nullptr;
};

void TestBitrateListsSelection::init()
{
    m_bench = std::make_unique<BitrateBench>();
    m_family = BitrateBench::installFamily();
}

void TestBitrateListsSelection::cleanup()
{
    m_bench.reset();
}

void TestBitrateListsSelection::lastEntryOfTheDefaultBitrateIsSelected()
{
    fill();
    QCOMPARE(m_bench->classic.currentIndex(), 3);
}

void TestBitrateListsSelection::defaultBitrateCanBeSet()
{
    m_bench->lists.setDefaultBitrate(125);
    fill();
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
}

void TestBitrateListsSelection::unknownDefaultBitrateSelectsTheFirstEntry()
{
    m_bench->lists.setDefaultBitrate(333);
    fill();
    QCOMPARE(m_bench->classic.currentIndex(), 0);
}

void TestBitrateListsSelection::emptyListShowsNothing()
{
    m_family->classicBitrates.clear();
    m_family->classicBitTiming = false;
    fill();
    QCOMPARE(m_bench->classic.currentIndex(), -1);
    QCOMPARE(m_bench->data.currentIndex(), 0);
}

void TestBitrateListsSelection::bitrateOfAnAdapterReplacesTheDefault()
{
    fill();
    m_bench->lists.setBitrateInUi({QString(), 125});
    m_bench->lists.setDefaultBitrate(50);
    m_bench->classic.clear();
    fill();
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
}

void TestBitrateListsSelection::bitrateOfAnAdapterCountsForOtherTypes()
{
    fill();
    m_bench->lists.setBitrateInUi({QString(), 500});
    FakeFamily *other = BitrateBench::installFamily(BitrateBench::systec);
    other->classicBitrates = {{QStringLiteral("Slow"), 250, 0.0}, {QStringLiteral("Fast"), 500, 0.0}};
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    QCOMPARE(classic(), QStringLiteral("Fast"));
}

void TestBitrateListsSelection::textStaysSelected()
{
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("125 kBit/s (0.875)"));
    m_bench->choose(m_bench->data, QStringLiteral("4000 kBit/s (0)"));
    fill();
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
    QCOMPARE(data(), QStringLiteral("4000 kBit/s (0)"));
}

void TestBitrateListsSelection::textStaysSelectedAmongOthers()
{
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("125 kBit/s (0.875)"));
    m_family->classicBitrates.removeFirst();
    fill();
    QCOMPARE(m_bench->classic.currentIndex(), 0);
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
}

void TestBitrateListsSelection::dataListFallsBackOnTheIndexOfTheOther()
{
    fill();
    QCOMPARE(m_bench->data.currentIndex(), 3);
}

void TestBitrateListsSelection::shorterDataListShowsNothing()
{
    m_family->fdDataBitrates = {{QStringLiteral("2000 kBit/s"), 2000, 0.8}};
    m_family->fdBitTiming = false;
    fill();
    QCOMPARE(m_bench->data.count(), 1);
    QCOMPARE(m_bench->data.currentIndex(), -1);
}

void TestBitrateListsSelection::userBitrateStaysSelected()
{
    m_bench->lists.setClassicParameter({500, 80.0, {}, QStringLiteral("Rig"), false});
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    fill();
    QCOMPARE(classic(), QStringLiteral("User bitrate - Rig"));
    QVERIFY(m_bench->lists.classicParameter().userDefined);
    m_family->classicBitrates.removeFirst();
    fill();
    QCOMPARE(classic(), QStringLiteral("User bitrate - Rig"));
}

void TestBitrateListsSelection::userBitrateOfTheDataPhaseStaysSelected()
{
    m_bench->lists.setFdParameter({2000, QStringLiteral("Rig"), 80.0, {}, 0, false});
    fill();
    m_bench->choose(m_bench->data, QStringLiteral("User bitrate"));
    fill();
    QCOMPARE(data(), QStringLiteral("User bitrate - Rig"));
    QVERIFY(m_bench->lists.fdParameter().userDefined);
}

void TestBitrateListsSelection::userBitrateGoesWithItsEntry()
{
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    m_family->classicBitTiming = false;
    fill();
    QCOMPARE(classic(), QStringLiteral("250 kBit/s (0.875)"));
    QVERIFY(!m_bench->lists.classicParameter().userDefined);
}

void TestBitrateListsSelection::userBitrateGivesWayToTheRegisterEntryOfThatText()
{
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    BitrateBench::installFamily(BitrateBench::systec)->classicBitTiming = false;
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    QCOMPARE(m_bench->classic.currentData(), QVariant(65450));
}

void TestBitrateListsSelection::registerEntryGivesWayToTheUserBitrate()
{
    BitrateBench::installFamily(BitrateBench::systec);
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    m_bench->classic.setCurrentIndex(6);
    QCOMPARE(m_bench->classic.currentData(), QVariant(65450));
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    QCOMPARE(m_bench->classic.currentData(), QVariant(65535));
}

void TestBitrateListsSelection::lowSpeedTakesTheUserBitrateAway()
{
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    m_bench->lists.updateLSBitrates(true, BitrateBench::type, false);
    QCOMPARE(m_bench->classic.findText(QStringLiteral("User bitrate")), -1);
    QVERIFY(!m_bench->lists.classicParameter().userDefined);
    m_bench->lists.updateLSBitrates(false, BitrateBench::type, false);
    QVERIFY(m_bench->classic.findText(QStringLiteral("User bitrate")) > 0);
}

void TestBitrateListsSelection::bitrateIsMatched_data()
{
    QTest::addColumn<int>("bitrate");
    QTest::addColumn<double>("samplePoint");
    QTest::addColumn<int>("index");
    QTest::newRow("no sample point matches the first") << 250 << 0.0 << 2;
    QTest::newRow("a sample point matches its own") << 250 << 0.875 << 3;
    QTest::newRow("an entry without sample point matches any") << 500 << 0.7 << 4;
    QTest::newRow("another sample point matches nothing") << 250 << 0.7 << 0;
    QTest::newRow("another bitrate matches nothing") << 251 << 0.0 << 0;
}

void TestBitrateListsSelection::bitrateIsMatched()
{
    fill();
    m_bench->classic.setCurrentIndex(0);
    QFETCH(int, bitrate);
    QFETCH(double, samplePoint);
    m_bench->lists.setBitrateInUi({QString(), static_cast<quint16>(bitrate), samplePoint});
    QTEST(m_bench->classic.currentIndex(), "index");
}

void TestBitrateListsSelection::nameOfABitrateIsNeverMatched()
{
    fill();
    m_bench->lists.setBitrateInUi({QStringLiteral("500 kBit/s"), 125, 0.875});
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
}

void TestBitrateListsSelection::entriesWithoutBitrateAreNotMatched()
{
    m_bench->classic.addItem(QStringLiteral("First"));
    m_bench->lists.toggleCANUserBitrate(true);
    for (const quint16 bitrate : {0, 65535}) {
        m_bench->lists.setBitrateInUi({QString(), bitrate});
        QCOMPARE(classic(), QStringLiteral("First"));
    }
}

void TestBitrateListsSelection::numberOfTheRegisterEntrySelectsIt()
{
    BitrateBench::installFamily(BitrateBench::systec);
    m_bench->lists.updateBitrates(BitrateBench::systec, false);
    m_bench->lists.setBitrateInUi(QVariant(65450));
    QCOMPARE(m_bench->classic.currentData(), QVariant(65450));
    QVERIFY(m_bench->edtBtr.isEnabled());
}

void TestBitrateListsSelection::numberOfTheUserBitrateIsNoDefault()
{
    fill();
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    m_bench->lists.setBitrateInUi(QVariant(65535));
    QCOMPARE(classic(), QStringLiteral("User bitrate"));
    m_family->classicBitTiming = false;
    fill();
    QCOMPARE(classic(), QStringLiteral("250 kBit/s (0.875)"));
}

void TestBitrateListsSelection::withoutMatchNothingChanges()
{
    fill();
    m_bench->lists.setBitrateInUi({QString(), 125});
    m_bench->lists.setBitrateInUi({QString(), 333});
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
    m_bench->classic.clear();
    fill();
    QCOMPARE(classic(), QStringLiteral("125 kBit/s (0.875)"));
}

void TestBitrateListsSelection::dataBitrateIsMatched()
{
    fill();
    m_bench->lists.setFdBitrateInUi({QString(), 2000, 0.75});
    QCOMPARE(m_bench->data.currentIndex(), 2);
    m_bench->lists.setFdBitrateInUi({QString(), 2000});
    QCOMPARE(m_bench->data.currentIndex(), 1);
    m_bench->lists.setFdBitrateInUi({QString(), 3000});
    QCOMPARE(m_bench->data.currentIndex(), 1);
}

void TestBitrateListsSelection::dataBitrateIsNoDefault()
{
    m_family->fdDataBitrates.append({QStringLiteral("125 kBit/s"), 125, 0.0});
    fill();
    m_bench->lists.setFdBitrateInUi({QString(), 125});
    m_bench->classic.clear();
    fill();
    QCOMPARE(classic(), QStringLiteral("250 kBit/s (0.875)"));
}

void TestBitrateListsSelection::stateOfALinkIsMatchedByNoBitrate()
{
    m_bench->classic.addItem(QStringLiteral("First"));
    m_bench->classic.addItem(QStringLiteral("500 kbit/s"), AbstractCanAdapter::SocketCANProps().toQVariant());
    m_bench->lists.setBitrateInUi({QString(), 500});
    QCOMPARE(classic(), QStringLiteral("First"));
}

QTEST_MAIN(TestBitrateListsSelection)
#include "tst_bitratelistsselection.moc"
