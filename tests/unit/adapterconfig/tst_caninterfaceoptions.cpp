#include "bitratelists.h"
#include "interfaceform.h"
#include "optionrecords.h"

// The options of an adapter, from the form's controls and into them.
class TestCanInterfaceOptions : public QObject
{
    Q_OBJECT

private slots:
    void controlIsTheValue_data();
    void controlIsTheValue();
    void valueSetsTheControl_data();
    void valueSetsTheControl();
    void optionWithoutControlIsIgnored_data();
    void optionWithoutControlIsIgnored();
    void everyOptionIsTested();

    void nameIsTypeAndDevice_data();
    void nameIsTypeAndDevice();
    void nameIsOnlyRead();
    void deviceDataIsOnlyRead();
    void typeRunsItsSelection();
    void deviceIsSelectedOrMissing();
    void withoutProtocolItIsUdp();
    void protocolSelectsItsButton_data();
    void protocolSelectsItsButton();
    void unlistedSerialBaudrateStaysInTheField();
    void parityIsOnlyRead();
    void unknownStopBitsSelectNothing();
    void disabledBoxReadsFalse_data();
    void disabledBoxReadsFalse();
    void disabledAutoBusOnReadsAsItShows();
    void disabledBoxRemembersItsValue_data();
    void disabledBoxRemembersItsValue();
    void disabledListenOnlyIsCheckedAllTheSame();
    void disabledCanFdGroupRemembersItsValue();
    void autoBusOnIsWrittenWhereItIsChangeable();
    void registerReadsInItsBase_data();
    void registerReadsInItsBase();
    void linkedAdapterIsSelectedByItsIdentifier();
    void unknownLinkedAdapterChangesNothing();
};

namespace {
using Adapter = AbstractCanAdapter;

const QList<unsigned int> optionsWithoutControl = {7, 18, 19, 20, 25, 30, 31, 32, 34, 35};

/// A value of an option, and how a control shows it. Of lists it is the text that is selected.
struct Row
{
    Adapter::AdapterOption option;
    const char *control;
    const char *property;
    QVariant shown;
    QVariant value;
    unsigned int type = 2;
};

/// One for each option that goes both ways.
QList<Row> rows()
{
    return {
        {Adapter::OptionUseCanFd, "cbCanfdConfig", "checked", true, true},
        {Adapter::OptionAdapterType, "cbCanInterfaceType", "currentText", QStringLiteral("Type 12"), 12U},
        {Adapter::OptionDeviceName, "cbCanDevice", "currentText", QStringLiteral("Second"), QStringLiteral("Second")},
        {Adapter::OptionIpAddress, "le_ipAddress", "text", QStringLiteral("10.0.0.7"), QStringLiteral("10.0.0.7")},
        {Adapter::OptionPort, "le_port", "text", QStringLiteral("4711"), QStringLiteral("4711")},
        {Adapter::OptionHardwareFlowControl, "ch_HardwareFlowControl", "checked", true, true},
        {Adapter::OptionSerialBaudrate, "cb_Baudrate", "currentText", QStringLiteral("57600"), 57600U},
        {Adapter::OptionDataBits, "cb_Databits", "currentText", QStringLiteral("7"), 7U},
        {Adapter::OptionStopBits, "cb_Stopbits", "currentText", QStringLiteral("1.5"), 3U},
        {Adapter::OptionInternExtern, "cb_internExtern", "currentText", QStringLiteral("Extern"), 1},
        {Adapter::OptionReconnectTimeout, "sb_reconnectTimeout", "value", 999999999, 999999999},
        {Adapter::OptionConnectTimeout, "sb_connectTimeout", "value", 250, 250},
        {Adapter::OptionDisconnectTimeout, "sb_disconnectTimeout", "value", 300, 300},
        {Adapter::OptionIpProtocol, "rb_tcp", "checked", true, 0},
        {Adapter::OptionResetDevice, "cb_ResetDevice", "checked", true, true},
        {Adapter::OptionSingleWire, "cb_velmorSingleWire", "checked", true, true},
        {Adapter::OptionLowSpeed, "cbLowSpeed", "checked", true, true},
        {Adapter::OptionAutoBusOn, "cbAutoBusOn", "checked", true, true},
        {Adapter::OptionLogErrorFrames, "chLogErrorFrames", "checked", true, true},
        {Adapter::OptionContinuousSystemTime, "cbContSystemTime", "checked", true, true},
        {Adapter::OptionSystemTimestamp, "cbSystemTime", "checked", true, true},
        {Adapter::OptionListenOnly, "cbListenOnly", "checked", true, true},
        {Adapter::OptionBtrExt, "edtBtr", "text", QStringLiteral("0x1c00ff"), 0x1C00FFU},
        {Adapter::OptionDescription, "leDescription", "text", QStringLiteral("left of it"),
         QStringLiteral("left of it")},
        {Adapter::OptionUsdoNodeId, "sbUsdoId", "value", 127, 127},
        {Adapter::OptionFdBitrate, "cbCanFdDataBitrate", "currentText", QStringLiteral("1000 kBit/s (0.75)"),
         QVariant::fromValue(InterfaceForm::dataBitrates()[0])},
        {Adapter::OptionBitrate, "cbBitrate", "currentText", QStringLiteral("125 kBit/s"),
         QVariant::fromValue(InterfaceForm::bitrates()[0])},
        {Adapter::OptionForcedEcho, "cbForcedEcho", "checked", true, true},
        {Adapter::OptionPeakAdvValues, "comboBox_peakFreq", "currentText", QStringLiteral("60 MHz"),
         QVariant::fromValue(timing()), 16},
        {Adapter::OptionXm3AdvValues, "xm3leCanId_1", "text", QStringLiteral("0x1abcdef"),
         QVariant::fromValue(filter()), 21},
        {Adapter::OptionClassicBusParameter, "cbBitrate", "currentText", QStringLiteral("250 kBit/s"),
         QVariant::fromValue(classicTiming())},
        {Adapter::OptionFdBusParameter, "cbCanFdDataBitrate", "currentText", QStringLiteral("2000 kBit/s (0.8)"),
         QVariant::fromValue(dataTiming())},
        {Adapter::OptionLinkedAdapter, "cbLinkedAdapter", "currentText", QStringLiteral("- - -"), 0U},
    };
}

const QList<Adapter::AdapterOption> optionsOfOneDirection = {Adapter::OptionAdapterName, Adapter::OptionDeviceData,
                                                             Adapter::OptionParity};

/// Those that several controls, or none, make up; tested by what is written.
const QList<Adapter::AdapterOption> optionsOfSeveralControls = {
    Adapter::OptionPeakAdvValues, Adapter::OptionXm3AdvValues, Adapter::OptionClassicBusParameter,
    Adapter::OptionFdBusParameter, Adapter::OptionLinkedAdapter};

void addRows(bool singleControls)
{
    QTest::addColumn<int>("index");
    const QList<Row> all = rows();
    for (int index = 0; index < all.size(); ++index) {
        if (!singleControls || !optionsOfSeveralControls.contains(all[index].option))
            QTest::newRow(qPrintable(QStringLiteral("option %1").arg(all[index].option))) << index;
    }
}

void show(QWidget *control, const char *property, const QVariant &value)
{
    // A list finds its text only where that may be typed.
    auto *list = qobject_cast<QComboBox *>(control);
    if (list != nullptr)
        list->setCurrentText(value.toString());
    else
        control->setProperty(property, value);
}
} // namespace

void TestCanInterfaceOptions::controlIsTheValue_data()
{
    addRows(true);
}

void TestCanInterfaceOptions::controlIsTheValue()
{
    QFETCH(int, index);
    const Row row = rows()[index];
    const InterfaceForm form;
    form.selectType(row.type);
    show(form.find<QWidget>(row.control), row.property, row.shown);
    const QVariant value = form.value(row.option);
    QCOMPARE(value, row.value);
    QCOMPARE(value.userType(), row.value.userType());
}

void TestCanInterfaceOptions::valueSetsTheControl_data()
{
    addRows(false);
}

void TestCanInterfaceOptions::valueSetsTheControl()
{
    QFETCH(int, index);
    const Row row = rows()[index];
    const InterfaceForm form;
    form.selectType(row.type);
    form->updateLinkedAdapterList();
    form.setValue(row.option, row.value);
    QCOMPARE(form.find<QWidget>(row.control)->property(row.property), row.shown);
    QCOMPARE(form.value(row.option), row.value);
}

void TestCanInterfaceOptions::optionWithoutControlIsIgnored_data()
{
    QTest::addColumn<unsigned int>("option");
    QList<unsigned int> options = optionsWithoutControl;
    options << 46 << 47 << 255 << 0xFFFFFFFF;
    for (const unsigned int option : options)
        QTest::newRow(qPrintable(QStringLiteral("option %1").arg(option))) << option;
}

void TestCanInterfaceOptions::optionWithoutControlIsIgnored()
{
    QFETCH(unsigned int, option);
    const InterfaceForm form;
    form.selectType(2);
    const auto key = static_cast<Adapter::AdapterOption>(option);
    form.setValue(key, 1);
    QVERIFY(!form.value(key).isValid());
}

void TestCanInterfaceOptions::everyOptionIsTested()
{
    QSet<unsigned int> tested;
    for (const Row &row : rows())
        tested.insert(row.option);
    for (const Adapter::AdapterOption option : optionsOfOneDirection)
        tested.insert(option);
    for (const unsigned int option : optionsWithoutControl)
        tested.insert(option);
    for (unsigned int option = 0; option < Adapter::optionCount; ++option)
        QVERIFY2(tested.contains(option), qPrintable(QString::number(option)));
}

// ---- Single options.

void TestCanInterfaceOptions::nameIsTypeAndDevice_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "First"
                           << "Type 2 - First";
    QTest::newRow("up to the bar") << "Leaf|serial 7|channel 1"
                                   << "Type 2 - Leaf";
    QTest::newRow("nothing before the bar") << "|7"
                                            << "Type 2 - ";
}

void TestCanInterfaceOptions::nameIsTypeAndDevice()
{
    QFETCH(QString, device);
    const InterfaceForm form;
    form.selectType(2);
    form->setDeviceName(device);
    QTEST(form.value(Adapter::OptionAdapterName).toString(), "name");
}

void TestCanInterfaceOptions::nameIsOnlyRead()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionAdapterName, QStringLiteral("mine"));
    QCOMPARE(form.value(Adapter::OptionAdapterName).toString(), QStringLiteral("Type 2 - First"));
    form.list("cbCanDevice")->setCurrentIndex(-1);
    QCOMPARE(form.value(Adapter::OptionAdapterName).toString(), QStringLiteral("Type 2"));
}

void TestCanInterfaceOptions::deviceDataIsOnlyRead()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionDeviceData, 1U);
    QCOMPARE(form.value(Adapter::OptionDeviceData), QVariant(unsigned(InterfaceForm::mostFeatures)));
}

void TestCanInterfaceOptions::typeRunsItsSelection()
{
    const InterfaceForm form;
    form.setValue(Adapter::OptionAdapterType, 8U);
    QCOMPARE(form.page(), QStringLiteral("page_2"));
}

void TestCanInterfaceOptions::deviceIsSelectedOrMissing()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionDeviceName, QStringLiteral("Gone"));
    QCOMPARE(form.value(Adapter::OptionDeviceName), QVariant(QStringLiteral("Gone")));
    QCOMPARE(form.list("cbCanDevice")->count(), 3);
}

void TestCanInterfaceOptions::withoutProtocolItIsUdp()
{
    const InterfaceForm form;
    QCOMPARE(form.value(Adapter::OptionIpProtocol), QVariant(1));
}

void TestCanInterfaceOptions::protocolSelectsItsButton_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("udp");
    QTest::newRow("TCP") << QVariant(0) << false;
    QTest::newRow("UDP") << QVariant(1) << true;
    QTest::newRow("another number") << QVariant(2) << false;
    QTest::newRow("none") << QVariant() << false;
}

void TestCanInterfaceOptions::protocolSelectsItsButton()
{
    QFETCH(QVariant, value);
    QFETCH(bool, udp);
    const InterfaceForm form;
    form.setValue(Adapter::OptionIpProtocol, udp ? 0 : 1);
    form.setValue(Adapter::OptionIpProtocol, value);
    QCOMPARE(form.find<QRadioButton>("rb_udp")->isChecked(), udp);
    QCOMPARE(form.find<QRadioButton>("rb_tcp")->isChecked(), !udp);
}

void TestCanInterfaceOptions::unlistedSerialBaudrateStaysInTheField()
{
    const InterfaceForm form;
    form.setValue(Adapter::OptionSerialBaudrate, 31250U);
    QCOMPARE(form.list("cb_Baudrate")->currentText(), QStringLiteral("31250"));
    QCOMPARE(form.value(Adapter::OptionSerialBaudrate), QVariant(31250U));
}

void TestCanInterfaceOptions::parityIsOnlyRead()
{
    const InterfaceForm form;
    form.list("cb_Parity")->setCurrentIndex(2);
    form.setValue(Adapter::OptionParity, 1);
    QCOMPARE(form.list("cb_Parity")->currentText(), QStringLiteral("Odd parity"));
    QCOMPARE(form.value(Adapter::OptionParity), QVariant(2));
}

void TestCanInterfaceOptions::unknownStopBitsSelectNothing()
{
    const InterfaceForm form;
    form.setValue(Adapter::OptionStopBits, 4U);
    QCOMPARE(form.list("cb_Stopbits")->currentIndex(), -1);
    QVERIFY(!form.value(Adapter::OptionStopBits).isValid());
}

void TestCanInterfaceOptions::disabledBoxReadsFalse_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<unsigned int>("option");
    QTest::newRow("low speed") << "cbLowSpeed" << unsigned(Adapter::OptionLowSpeed);
    QTest::newRow("error frames") << "chLogErrorFrames" << unsigned(Adapter::OptionLogErrorFrames);
    QTest::newRow("listen only") << "cbListenOnly" << unsigned(Adapter::OptionListenOnly);
}

void TestCanInterfaceOptions::disabledBoxReadsFalse()
{
    QFETCH(QString, box);
    QFETCH(unsigned int, option);
    const InterfaceForm form;
    auto *control = form->findChild<QCheckBox *>(box);
    control->setEnabled(false);
    control->setChecked(true);
    QCOMPARE(form.value(static_cast<Adapter::AdapterOption>(option)), QVariant(false));
}

void TestCanInterfaceOptions::disabledAutoBusOnReadsAsItShows()
{
    const InterfaceForm form;
    form->handleDeviceFeatures(Adapter::FeatureAutoBusOnDefault, Adapter::CanAdapterPcanBasic);
    QVERIFY(!form.box("cbAutoBusOn")->isEnabled());
    QCOMPARE(form.value(Adapter::OptionAutoBusOn), QVariant(true));
}

void TestCanInterfaceOptions::disabledBoxRemembersItsValue_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<unsigned int>("option");
    QTest::newRow("low speed") << "cbLowSpeed" << unsigned(Adapter::OptionLowSpeed);
    QTest::newRow("error frames") << "chLogErrorFrames" << unsigned(Adapter::OptionLogErrorFrames);
}

void TestCanInterfaceOptions::disabledBoxRemembersItsValue()
{
    QFETCH(QString, box);
    QFETCH(unsigned int, option);
    const InterfaceForm form;
    form->handleDeviceFeatures(0, Adapter::CanAdapterPcanBasic);
    form.setValue(static_cast<Adapter::AdapterOption>(option), true);
    QVERIFY(!form->findChild<QCheckBox *>(box)->isChecked());
    form->handleDeviceFeatures(InterfaceForm::mostFeatures, Adapter::CanAdapterPcanBasic);
    QVERIFY(form->findChild<QCheckBox *>(box)->isChecked());
}

void TestCanInterfaceOptions::disabledListenOnlyIsCheckedAllTheSame()
{
    const InterfaceForm form;
    form->handleDeviceFeatures(0, Adapter::CanAdapterPcanBasic);
    form.setValue(Adapter::OptionListenOnly, true);
    QVERIFY(form.box("cbListenOnly")->isChecked());
    QCOMPARE(form.value(Adapter::OptionListenOnly), QVariant(false));
}

void TestCanInterfaceOptions::disabledCanFdGroupRemembersItsValue()
{
    const InterfaceForm form;
    form.selectType(2);
    form.fdGroup()->setEnabled(false);
    form.setValue(Adapter::OptionUseCanFd, true);
    QVERIFY(!form.fdGroup()->isChecked());
    form->handleDeviceFeatures(InterfaceForm::mostFeatures, Adapter::CanAdapterPcanBasic);
    QVERIFY(form.fdGroup()->isChecked());
}

void TestCanInterfaceOptions::autoBusOnIsWrittenWhereItIsChangeable()
{
    const InterfaceForm form;
    form.selectType(2);
    form.box("cbAutoBusOn")->setProperty("changeable", false);
    form.setValue(Adapter::OptionAutoBusOn, true);
    QVERIFY(!form.box("cbAutoBusOn")->isChecked());
    form.box("cbAutoBusOn")->setProperty("changeable", true);
    form.setValue(Adapter::OptionAutoBusOn, true);
    QVERIFY(form.box("cbAutoBusOn")->isChecked());
}

void TestCanInterfaceOptions::registerReadsInItsBase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<unsigned int>("value");
    QTest::newRow("hexadecimal") << "0x1C" << 0x1CU;
    QTest::newRow("decimal") << "28" << 28U;
    QTest::newRow("octal") << "034" << 28U;
    QTest::newRow("highest") << "0xFFFFFFFF" << 0xFFFFFFFFU;
    QTest::newRow("too high") << "0x100000000" << 0U;
    QTest::newRow("no prefix") << "1C" << 0U;
    QTest::newRow("empty") << "" << 0U;
}

void TestCanInterfaceOptions::registerReadsInItsBase()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    form.edit("edtBtr")->setText(text);
    QTEST(form.value(Adapter::OptionBtrExt).toUInt(), "value");
}

void TestCanInterfaceOptions::linkedAdapterIsSelectedByItsIdentifier()
{
    const InterfaceForm form;
    form.list("cbLinkedAdapter")->addItem(QStringLiteral("none"), 0U);
    form.list("cbLinkedAdapter")->addItem(QStringLiteral("partner"), 7U);
    form.setValue(Adapter::OptionLinkedAdapter, 7U);
    QCOMPARE(form.list("cbLinkedAdapter")->currentText(), QStringLiteral("partner"));
    QCOMPARE(form.value(Adapter::OptionLinkedAdapter), QVariant(7U));
}

void TestCanInterfaceOptions::unknownLinkedAdapterChangesNothing()
{
    const InterfaceForm form;
    form.list("cbLinkedAdapter")->addItem(QStringLiteral("none"), 0U);
    form.list("cbLinkedAdapter")->addItem(QStringLiteral("partner"), 7U);
    form.setValue(Adapter::OptionLinkedAdapter, 7U);
    form.setValue(Adapter::OptionLinkedAdapter, 8U);
    QCOMPARE(form.list("cbLinkedAdapter")->currentText(), QStringLiteral("partner"));
}

QTEST_MAIN(TestCanInterfaceOptions)
#include "tst_caninterfaceoptions.moc"
