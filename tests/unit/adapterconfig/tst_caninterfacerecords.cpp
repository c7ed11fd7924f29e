#include "interfaceform.h"
#include "optionrecords.h"

// The two options whose values have a page of their own.
class TestCanInterfaceRecords : public QObject
{
    Q_OBJECT

private slots:
    void timingOfAnotherTypeChangesNothing();
    void timingOpensItsPage_data();
    void timingOpensItsPage();
    void unlistedClockChangesNoClock();
    void filterOfAnotherTypeChangesNothing();
    void filterOpensItsPage();
    void filterShowsLowerCaseHexadecimal();
    void filterWithoutValueIsTheDefault();
    void filterTextThatIsNoNumberReadsZero();
    void filterModeOutOfRangeReadsZero();
};

namespace {
using Adapter = AbstractCanAdapter;
} // namespace

void TestCanInterfaceRecords::timingOfAnotherTypeChangesNothing()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionPeakAdvValues, QVariant::fromValue(timing()));
    QCOMPARE(form.value(Adapter::OptionPeakAdvValues).value<Adapter::PeakAdvValues>().preScaler, quint8(1));
    QVERIFY(!form.box("cbAdvancedConfig")->isChecked());
}

void TestCanInterfaceRecords::timingOpensItsPage_data()
{
    QTest::addColumn<bool>("inUse");
    QTest::newRow("in use") << true;
    QTest::newRow("not in use") << false;
}

void TestCanInterfaceRecords::timingOpensItsPage()
{
    QFETCH(bool, inUse);
    const InterfaceForm form;
    form.selectType(16);
    form.box("cbAdvancedConfig")->setChecked(!inUse);
    Adapter::PeakAdvValues values = timing();
    values.useAdvanced = inUse;
    form.setValue(Adapter::OptionPeakAdvValues, QVariant::fromValue(values));
    QCOMPARE(form.isShown("stackedWidget"), inUse);
    QCOMPARE(form.list("cbBitrate")->isEnabled(), !inUse);
    QCOMPARE(form.box("cbAdvancedConfig")->text(), QStringLiteral("User defined bitrate settings"));
}

void TestCanInterfaceRecords::unlistedClockChangesNoClock()
{
    const InterfaceForm form;
    form.selectType(16);
    Adapter::PeakAdvValues values = timing();
    form.setValue(Adapter::OptionPeakAdvValues, QVariant::fromValue(values));
    values.clockMHz = 61;
    form.setValue(Adapter::OptionPeakAdvValues, QVariant::fromValue(values));
    QCOMPARE(form.value(Adapter::OptionPeakAdvValues).value<Adapter::PeakAdvValues>().clockMHz, 60U);
}

void TestCanInterfaceRecords::filterOfAnotherTypeChangesNothing()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionXm3AdvValues, QVariant::fromValue(filter()));
    QCOMPARE(form.edit("xm3leCanId_1")->text(), QString());
    QVERIFY(!form.box("cbAdvancedConfig")->isChecked());
}

void TestCanInterfaceRecords::filterOpensItsPage()
{
    const InterfaceForm form;
    form.selectType(21);
    form.box("cbAdvancedConfig")->click();
    QVERIFY(!form.isShown("stackedWidget"));
    form.setValue(Adapter::OptionXm3AdvValues, QVariant::fromValue(filter()));
    QVERIFY(form.isShown("stackedWidget"));
    QVERIFY(form.box("cbAdvancedConfig")->isChecked());
    QCOMPARE(form.find<QStackedWidget>("xm3swFilter")->currentIndex(), 1);
}

void TestCanInterfaceRecords::filterShowsLowerCaseHexadecimal()
{
    const InterfaceForm form;
    form.selectType(21);
    form.setValue(Adapter::OptionXm3AdvValues, QVariant::fromValue(filter()));
    QStringList texts;
    for (const char *name :
         {"xm3leCanId_1", "xm3leCanId_2", "xm3leCanId_3", "xm3leCanId_4", "xm3leFilterAMR", "xm3leFilterACR"})
        texts.append(form.edit(name)->text());
    QCOMPARE(texts.join(QLatin1Char(' ')), QStringLiteral("0x1abcdef 0x20 0x0 0xffffffff 0xff 0xa0"));
}

void TestCanInterfaceRecords::filterWithoutValueIsTheDefault()
{
    const InterfaceForm form;
    form.selectType(21);
    form.setValue(Adapter::OptionXm3AdvValues, QVariant::fromValue(filter()));
    form.setValue(Adapter::OptionXm3AdvValues, QStringLiteral("no record"));
    QCOMPARE(form.value(Adapter::OptionXm3AdvValues), QVariant::fromValue(Adapter::SystecXM3AdvValues()));
}

void TestCanInterfaceRecords::filterTextThatIsNoNumberReadsZero()
{
    const InterfaceForm form;
    form.selectType(21);
    form.edit("xm3leCanId_1")->setText(QStringLiteral("first"));
    QCOMPARE(form.value(Adapter::OptionXm3AdvValues).value<Adapter::SystecXM3AdvValues>().canId1, 0U);
}

void TestCanInterfaceRecords::filterModeOutOfRangeReadsZero()
{
    const InterfaceForm form;
    form.selectType(21);
    for (const quint32 mode : {3U, 0xFFFFFFFFU}) {
        Adapter::SystecXM3AdvValues values = filter();
        values.filterMode = mode;
        form.setValue(Adapter::OptionXm3AdvValues, QVariant::fromValue(values));
        QCOMPARE(form.value(Adapter::OptionXm3AdvValues).value<Adapter::SystecXM3AdvValues>().filterMode, 0U);
    }
}

QTEST_MAIN(TestCanInterfaceRecords)
#include "tst_caninterfacerecords.moc"
