#include "interfaceform.h"

// What a device offers, and what becomes of the user's choices where it does not.
class TestCanInterfaceCapabilities : public QObject
{
    Q_OBJECT

private slots:
    void newFormRemembersNoChoice();
    void featureEnablesItsBox_data();
    void featureEnablesItsBox();
    void toolTipSaysWhatIsNotOffered_data();
    void toolTipSaysWhatIsNotOffered();
    void choiceSurvivesADeviceThatDoesNotOfferIt_data();
    void choiceSurvivesADeviceThatDoesNotOfferIt();
    void boxThatIsNotOfferedIsUnchecked_data();
    void boxThatIsNotOfferedIsUnchecked();
    void enablingTwiceChangesNothing_data();
    void enablingTwiceChangesNothing();
    void autoBusOnShowsWhatTheDeviceDoes_data();
    void autoBusOnShowsWhatTheDeviceDoes();
    void autoBusOnComesBack();
    void autoBusOnRemembersWhatItLastShowed();
    void lowSpeedOnlyIsCheckedForGood();
    void selectableLowSpeedOutdoesLowSpeedOnly();
    void lowSpeedLeavesTheSlowBitrates();
    void endOfLowSpeedBringsTheBitratesBack();
    void typeAnswersForDevicesWithoutFeatureWord();
    void deviceAnswersForItselfOnceItIsSelected();
    void withoutFeatureWordErrorFramesAndListenOnlyAreNotOffered();
    void withoutFeatureWordTheFactorySaysAutoBusOn();
};

namespace {
using Adapter = AbstractCanAdapter;

constexpr auto plainType = Adapter::CanAdapterPcanBasic;

struct Box
{
    const char *name;
    unsigned int feature;
    void (OpenInterfaceForm::*enable)(bool);
    const char *enabledToolTip;
    const char *disabledToolTip;
};

// The operations of the form that share one behaviour.
const Box boxes[] = {
    {"chLogErrorFrames", Adapter::FeatureErrorFrames, &OpenInterfaceForm::enableErrorFramesCheckBox, "",
     "Error frames are not available within this adapter."},
    {"cbListenOnly", Adapter::FeatureListenOnly, &OpenInterfaceForm::enableListenOnlyCheckBox,
     "No transmission, no acknowledge", "Listen only is not changeable for this adapter."},
    {"cbLowSpeed", Adapter::FeatureLowSpeedSelectable, &OpenInterfaceForm::enableLowSpeedCheckBox, "",
     "CAN Low Speed is not available within this adapter."},
};

void addBoxes()
{
    QTest::addColumn<int>("number");
    for (int number = 0; number < 3; ++number)
        QTest::newRow(boxes[number].name) << number;
}

void offer(const InterfaceForm &form, unsigned int features)
{
    form->handleDeviceFeatures(features, plainType);
}
} // namespace

void TestCanInterfaceCapabilities::newFormRemembersNoChoice()
{
    const InterfaceForm form;
    offer(form, InterfaceForm::mostFeatures);
    for (const char *name : {"chLogErrorFrames", "cbListenOnly", "cbLowSpeed", "cbAutoBusOn"}) {
        QVERIFY2(form.box(name)->isEnabled(), name);
        QVERIFY2(!form.box(name)->isChecked(), name);
    }
}

void TestCanInterfaceCapabilities::featureEnablesItsBox_data()
{
    QTest::addColumn<unsigned int>("features");
    QTest::addColumn<QString>("enabled");
    QTest::newRow("none") << 0U << "";
    QTest::newRow("listen only") << 0x10U << "cbListenOnly";
    QTest::newRow("low speed") << 0x40U << "cbLowSpeed";
    QTest::newRow("error frames") << 0x100U << "chLogErrorFrames";
    QTest::newRow("auto bus on") << 0x200U << "cbAutoBusOn";
    QTest::newRow("low speed only") << 0x400U << "";
    QTest::newRow("auto bus on by default") << 0x800U << "";
    QTest::newRow("forced auto bus on") << 0x1000U << "";
    QTest::newRow("bits without meaning") << 0x2FU << "";
}

void TestCanInterfaceCapabilities::featureEnablesItsBox()
{
    QFETCH(unsigned int, features);
    const InterfaceForm form;
    form.selectType(plainType);
    offer(form, features);
    QStringList enabled;
    for (const char *name : {"chLogErrorFrames", "cbListenOnly", "cbLowSpeed", "cbAutoBusOn"}) {
        if (form.box(name)->isEnabled())
            enabled.append(QString::fromLatin1(name));
    }
    QTEST(enabled.join(QLatin1Char(' ')), "enabled");
}

void TestCanInterfaceCapabilities::toolTipSaysWhatIsNotOffered_data()
{
    addBoxes();
}

void TestCanInterfaceCapabilities::toolTipSaysWhatIsNotOffered()
{
    QFETCH(int, number);
    const Box &box = boxes[number];
    const InterfaceForm form;
    ((*form).*box.enable)(true);
    QCOMPARE(form.box(box.name)->toolTip(), QString::fromLatin1(box.enabledToolTip));
    ((*form).*box.enable)(false);
    QCOMPARE(form.box(box.name)->toolTip(), QString::fromLatin1(box.disabledToolTip));
}

void TestCanInterfaceCapabilities::choiceSurvivesADeviceThatDoesNotOfferIt_data()
{
    addBoxes();
}

void TestCanInterfaceCapabilities::choiceSurvivesADeviceThatDoesNotOfferIt()
{
    QFETCH(int, number);
    const Box &box = boxes[number];
    const InterfaceForm form;
    for (const bool choice : {true, false}) {
        offer(form, box.feature);
        form.box(box.name)->setChecked(choice);
        offer(form, 0);
        offer(form, box.feature);
        QCOMPARE(form.box(box.name)->isChecked(), choice);
    }
}

void TestCanInterfaceCapabilities::boxThatIsNotOfferedIsUnchecked_data()
{
    addBoxes();
}

void TestCanInterfaceCapabilities::boxThatIsNotOfferedIsUnchecked()
{
    QFETCH(int, number);
    const Box &box = boxes[number];
    const InterfaceForm form;
    offer(form, box.feature);
    form.box(box.name)->setChecked(true);
    offer(form, 0);
    QVERIFY(!form.box(box.name)->isChecked());
}

void TestCanInterfaceCapabilities::enablingTwiceChangesNothing_data()
{
    addBoxes();
}

void TestCanInterfaceCapabilities::enablingTwiceChangesNothing()
{
    QFETCH(int, number);
    const Box &box = boxes[number];
    const InterfaceForm form;
    ((*form).*box.enable)(true);
    form.box(box.name)->setToolTip(QStringLiteral("kept"));
    ((*form).*box.enable)(true);
    QCOMPARE(form.box(box.name)->toolTip(), QStringLiteral("kept"));
    ((*form).*box.enable)(false);
    form.box(box.name)->setChecked(true);
    ((*form).*box.enable)(false);
    QVERIFY(form.box(box.name)->isChecked());
}

void TestCanInterfaceCapabilities::autoBusOnShowsWhatTheDeviceDoes_data()
{
    QTest::addColumn<unsigned int>("features");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<QString>("toolTip");
    const QString refused = QStringLiteral("Auto is not changeable within this adapter.");
    QTest::newRow("never") << 0U << false << refused;
    QTest::newRow("by default") << 0x800U << true << refused;
    QTest::newRow("by force") << 0x1000U << true << refused;
    QTest::newRow("the user's choice") << 0x200U << false << QString();
    QTest::newRow("the user's choice, but checked") << 0x1200U << true << QString();
}

void TestCanInterfaceCapabilities::autoBusOnShowsWhatTheDeviceDoes()
{
    QFETCH(unsigned int, features);
    const InterfaceForm form;
    offer(form, features);
    QTEST(form.box("cbAutoBusOn")->isChecked(), "checked");
    QTEST(form.box("cbAutoBusOn")->toolTip(), "toolTip");
}

void TestCanInterfaceCapabilities::autoBusOnComesBack()
{
    const InterfaceForm form;
    offer(form, Adapter::FeatureAutoBusOnChangeable);
    form.box("cbAutoBusOn")->setChecked(true);
    offer(form, 0);
    QVERIFY(!form.box("cbAutoBusOn")->isChecked());
    offer(form, Adapter::FeatureAutoBusOnChangeable);
    QVERIFY(form.box("cbAutoBusOn")->isChecked());
}

void TestCanInterfaceCapabilities::autoBusOnRemembersWhatItLastShowed()
{
    const InterfaceForm form;
    offer(form, Adapter::FeatureAutoBusOnChangeable);
    form.box("cbAutoBusOn")->setChecked(true);
    offer(form, 0);
    offer(form, 0);
    offer(form, Adapter::FeatureAutoBusOnChangeable);
    QVERIFY(!form.box("cbAutoBusOn")->isChecked());
}

void TestCanInterfaceCapabilities::lowSpeedOnlyIsCheckedForGood()
{
    const InterfaceForm form;
    offer(form, Adapter::FeatureLowSpeedOnly);
    QVERIFY(form.box("cbLowSpeed")->isChecked());
    QVERIFY(!form.box("cbLowSpeed")->isEnabled());
    QVERIFY(form.isShown("cbLowSpeed"));
    QCOMPARE(form.value(Adapter::OptionLowSpeed), QVariant(false));
}

void TestCanInterfaceCapabilities::selectableLowSpeedOutdoesLowSpeedOnly()
{
    const InterfaceForm form;
    offer(form, Adapter::FeatureLowSpeedOnly | Adapter::FeatureLowSpeedSelectable);
    QVERIFY(form.box("cbLowSpeed")->isEnabled());
    QVERIFY(!form.box("cbLowSpeed")->isChecked());
}

void TestCanInterfaceCapabilities::lowSpeedLeavesTheSlowBitrates()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->classicBitTiming = true;
    form.selectType(plainType);
    QCOMPARE(form.list("cbBitrate")->count(), 3);
    form.box("cbLowSpeed")->setChecked(true);
    QCOMPARE(InterfaceForm::texts(form.list("cbBitrate")), QStringList(QStringLiteral("125 kBit/s")));
}

void TestCanInterfaceCapabilities::endOfLowSpeedBringsTheBitratesBack()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->classicBitTiming = true;
    form.selectType(plainType);
    form.box("cbLowSpeed")->setChecked(true);
    form.box("cbLowSpeed")->setChecked(false);
    QCOMPARE(InterfaceForm::texts(form.list("cbBitrate")),
             QStringList({QStringLiteral("125 kBit/s"), QStringLiteral("250 kBit/s"), QStringLiteral("User bitrate")}));
}

void TestCanInterfaceCapabilities::typeAnswersForDevicesWithoutFeatureWord()
{
    const InterfaceForm form;
    FakeFamily *family = InterfaceForm::family(plainType);
    family->deviceMap = {{QStringLiteral("Leaf"), unsigned(Adapter::FeaturesUnknown)}};
    family->fdDevices = family->lowSpeedDevices = {QStringLiteral("Type 2")};
    form.selectType(plainType);
    QVERIFY(form.isShown("cbCanfdConfig"));
    QVERIFY(form.box("cbLowSpeed")->isEnabled());
    QVERIFY(!form.box("cbAutoBusOn")->isEnabled());
}

void TestCanInterfaceCapabilities::deviceAnswersForItselfOnceItIsSelected()
{
    const InterfaceForm form;
    FakeFamily *family = InterfaceForm::family(plainType);
    family->deviceMap = {{QStringLiteral("Leaf"), unsigned(Adapter::FeaturesUnknown)},
                         {QStringLiteral("Light"), unsigned(Adapter::FeaturesUnknown)}};
    family->fdDevices = family->lowSpeedDevices = {QStringLiteral("Light")};
    form.selectType(plainType);
    QVERIFY(!form.isShown("cbCanfdConfig"));
    form.selectDevice(QStringLiteral("Light"));
    QVERIFY(form.isShown("cbCanfdConfig"));
    QVERIFY(form.box("cbLowSpeed")->isEnabled());
    form.selectDevice(QStringLiteral("Leaf"));
    QVERIFY(!form.isShown("cbCanfdConfig"));
    QVERIFY(!form.box("cbLowSpeed")->isEnabled());
}

void TestCanInterfaceCapabilities::withoutFeatureWordErrorFramesAndListenOnlyAreNotOffered()
{
    const InterfaceForm form;
    form.selectType(3);
    InterfaceForm::family(plainType)->deviceMap = {{QStringLiteral("Leaf"), unsigned(Adapter::FeaturesUnknown)}};
    form.selectType(plainType);
    QVERIFY(!form.box("chLogErrorFrames")->isEnabled());
    QVERIFY(!form.box("cbListenOnly")->isEnabled());
}

void TestCanInterfaceCapabilities::withoutFeatureWordTheFactorySaysAutoBusOn()
{
    const InterfaceForm form;
    FakeFamily *family = InterfaceForm::family(plainType);
    family->deviceMap = {{QStringLiteral("Leaf"), unsigned(Adapter::FeaturesUnknown)}};
    family->autoBusOnDevices = {QStringLiteral("Type 2")};
    form.selectType(plainType);
    QVERIFY(form.box("cbAutoBusOn")->isEnabled());
}

QTEST_MAIN(TestCanInterfaceCapabilities)
#include "tst_caninterfacecapabilities.moc"
