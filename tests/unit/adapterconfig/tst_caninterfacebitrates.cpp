#include "interfaceform.h"
#include "optionrecords.h"

// The options that select a bitrate.
class TestCanInterfaceBitrates : public QObject
{
    Q_OBJECT

private slots:
    void classicTimingSelectsTheUserEntry_data();
    void classicTimingSelectsTheUserEntry();
    void dataTimingSelectsTheUserEntry_data();
    void dataTimingSelectsTheUserEntry();
    void bitrateSelectsItsEntry();
    void bitrateKeepsTheUserEntry();
    void numberSelectsNoBitrate();
    void defaultBitrateIsSelectedAtFirst();
};

namespace {
using Adapter = AbstractCanAdapter;
} // namespace

void TestCanInterfaceBitrates::classicTimingSelectsTheUserEntry_data()
{
    QTest::addColumn<bool>("userDefined");
    QTest::addColumn<QString>("text");
    QTest::newRow("user-defined") << true << "User bitrate - odd";
    QTest::newRow("only named") << false << "250 kBit/s";
}

void TestCanInterfaceBitrates::classicTimingSelectsTheUserEntry()
{
    QFETCH(bool, userDefined);
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    CAN::CANClassicBusParameter parameter = classicTiming();
    parameter.userDefined = userDefined;
    form.setValue(Adapter::OptionClassicBusParameter, QVariant::fromValue(parameter));
    QTEST(form.list("cbBitrate")->currentText(), "text");
}

void TestCanInterfaceBitrates::dataTimingSelectsTheUserEntry_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("named") << "fast"
                           << "User bitrate - fast";
    QTest::newRow("without a name") << ""
                                    << "2000 kBit/s (0.8)";
}

void TestCanInterfaceBitrates::dataTimingSelectsTheUserEntry()
{
    QFETCH(QString, name);
    const InterfaceForm form;
    InterfaceForm::family(2)->fdBitTiming = true;
    form.selectType(2);
    CAN::CANFDBusParameter parameter = dataTiming();
    parameter.name = name;
    form.setValue(Adapter::OptionFdBusParameter, QVariant::fromValue(parameter));
    QTEST(form.list("cbCanFdDataBitrate")->currentText(), "text");
}

void TestCanInterfaceBitrates::bitrateSelectsItsEntry()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionBitrate, QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("any name"), 125)));
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("125 kBit/s"));
}

void TestCanInterfaceBitrates::bitrateKeepsTheUserEntry()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    CAN::CANClassicBusParameter parameter = classicTiming();
    parameter.userDefined = true;
    form.setValue(Adapter::OptionClassicBusParameter, QVariant::fromValue(parameter));
    const QVariant marker = form.value(Adapter::OptionBitrate);
    QCOMPARE(marker, QVariant(BitrateLists::UserBitrateMarker));
    form.setValue(Adapter::OptionBitrate, marker);
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("User bitrate - odd"));
}

void TestCanInterfaceBitrates::numberSelectsNoBitrate()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionBitrate, 125);
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("250 kBit/s"));
}

void TestCanInterfaceBitrates::defaultBitrateIsSelectedAtFirst()
{
    const InterfaceForm form;
    form->setDefaultBitrate(125);
    form.selectType(2);
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("125 kBit/s"));
}

QTEST_MAIN(TestCanInterfaceBitrates)
#include "tst_caninterfacebitrates.moc"
