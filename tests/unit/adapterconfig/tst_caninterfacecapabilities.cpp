#include "interfaceform.h"

// What a device offers, and what becomes of the user's choices where it does not.
class TestCanInterfaceCapabilities : public QObject
{
    Q_OBJECT

private slots:
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
    void canFdShowsItsGroup_data();
    void canFdShowsItsGroup();
    void canFdGroupShowsTheRememberedState();
    void canFdFillsTheListsForItsBus();
    void prohibitedCanFdIsHiddenByName();
    void prohibitedCanFdIsOfferedByAFeatureWord();
    void typeAnswersForDevicesWithoutFeatureWord();
    void deviceAnswersForItselfOnceItIsSelected();
    void withoutFeatureWordErrorFramesAndListenOnlyAreNotOffered();
    void withoutFeatureWordTheFactorySaysAutoBusOn();
    void toggledGroupEnablesTheDataBitrate_data();
    void toggledGroupEnablesTheDataBitrate();
    void uncheckedGroupKeepsTheDataBitrateVisible();
    void clickedGroupFillsTheBitrates();
    void clickedGroupOfTheSystemFillsNothing();
    void lockedGroupStaysAsItIs_data();
    void lockedGroupStaysAsItIs();
    void newLockTakesThePlaceOfTheOldOne();
    void shownFormShowsTheDataBitrate();
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

void TestCanInterfaceCapabilities::canFdShowsItsGroup_data()
{
    QTest::addColumn<unsigned int>("features");
    QTest::addColumn<bool>("shown");
    QTest::newRow("CAN FD") << 0x80U << true;
    QTest::newRow("no CAN FD") << ~0x80U << false;
}

void TestCanInterfaceCapabilities::canFdShowsItsGroup()
{
    QFETCH(unsigned int, features);
    QFETCH(bool, shown);
    const InterfaceForm form;
    offer(form, unsigned(Adapter::FeatureCanFd));
    offer(form, features);
    for (const char *name : {"cbCanfdConfig", "lbCanFdDataBitrate", "cbCanFdDataBitrate"})
        QVERIFY2(form.isShown(name) == shown, name);
}

void TestCanInterfaceCapabilities::canFdGroupShowsTheRememberedState()
{
    const InterfaceForm form;
    form.setValue(Adapter::OptionUseCanFd, true);
    offer(form, 0);
    QVERIFY(!form.fdGroup()->isChecked());
    offer(form, Adapter::FeatureCanFd);
    QVERIFY(form.fdGroup()->isChecked());
    form.setValue(Adapter::OptionUseCanFd, false);
    offer(form, 0);
    offer(form, Adapter::FeatureCanFd);
    QVERIFY(!form.fdGroup()->isChecked());
}

void TestCanInterfaceCapabilities::canFdFillsTheListsForItsBus()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->fdArbitrationBitrates = {{QStringLiteral("500 kBit/s"), 500}};
    form.setValue(Adapter::OptionUseCanFd, true);
    offer(form, Adapter::FeatureCanFd);
    QCOMPARE(InterfaceForm::texts(form.list("cbBitrate")), QStringList(QStringLiteral("500 kBit/s")));
    offer(form, 0);
    QCOMPARE(form.list("cbBitrate")->count(), 2);
}

void TestCanInterfaceCapabilities::prohibitedCanFdIsHiddenByName()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->deviceMap = {{QStringLiteral("Leaf"), unsigned(Adapter::FeaturesUnknown)}};
    InterfaceForm::family(plainType)->fdDevices = {QStringLiteral("Type 2"), QStringLiteral("Leaf")};
    form.selectType(plainType);
    QVERIFY(form.isShown("cbCanfdConfig"));
    form->prohibitCanFd();
    form.selectTypeAnew(plainType);
    QVERIFY(!form.isShown("cbCanfdConfig"));
}

void TestCanInterfaceCapabilities::prohibitedCanFdIsOfferedByAFeatureWord()
{
    const InterfaceForm form;
    form->prohibitCanFd();
    offer(form, Adapter::FeatureCanFd);
    QVERIFY(form.isShown("cbCanfdConfig"));
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

void TestCanInterfaceCapabilities::toggledGroupEnablesTheDataBitrate_data()
{
    QTest::addColumn<bool>("checked");
    QTest::addColumn<bool>("changeable");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("checked") << true << true << true;
    QTest::newRow("checked, fixed") << true << false << false;
    QTest::newRow("unchecked") << false << true << false;
}

void TestCanInterfaceCapabilities::toggledGroupEnablesTheDataBitrate()
{
    QFETCH(bool, checked);
    QFETCH(bool, changeable);
    const InterfaceForm form;
    InterfaceForm::family(plainType)->baudrateChangeable = changeable;
    form.selectType(plainType);
    form.fdGroup()->setChecked(!checked);
    form.fdGroup()->setChecked(checked);
    QTEST(form.list("cbCanFdDataBitrate")->isEnabled(), "enabled");
}

void TestCanInterfaceCapabilities::uncheckedGroupKeepsTheDataBitrateVisible()
{
    const InterfaceForm form;
    form.selectType(plainType);
    form.fdGroup()->setChecked(true);
    form.fdGroup()->setChecked(false);
    QVERIFY(form.isShown("lbCanFdDataBitrate"));
    QVERIFY(form.isShown("cbCanFdDataBitrate"));
}

void TestCanInterfaceCapabilities::clickedGroupFillsTheBitrates()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->fdArbitrationBitrates = {{QStringLiteral("500 kBit/s"), 500}};
    form.selectType(plainType);
    form->on_cbCanfdConfig_clicked(true);
    QCOMPARE(InterfaceForm::texts(form.list("cbBitrate")), QStringList(QStringLiteral("500 kBit/s")));
    form->on_cbCanfdConfig_clicked(false);
    QCOMPARE(form.list("cbBitrate")->count(), 2);
}

void TestCanInterfaceCapabilities::clickedGroupOfTheSystemFillsNothing()
{
    const InterfaceForm form;
    form.selectTypeAnew(Adapter::CanAdapterSocketCan);
    form->on_cbCanfdConfig_clicked(true);
    QCOMPARE(form.list("cbBitrate")->count(), 1);
}

void TestCanInterfaceCapabilities::lockedGroupStaysAsItIs_data()
{
    QTest::addColumn<bool>("state");
    QTest::newRow("checked") << true;
    QTest::newRow("unchecked") << false;
}

void TestCanInterfaceCapabilities::lockedGroupStaysAsItIs()
{
    QFETCH(bool, state);
    const InterfaceForm form;
    form.selectType(plainType);
    form->disableFDCheckbox(state);
    QCOMPARE(form.fdGroup()->isChecked(), state);
    form.fdGroup()->setChecked(!state);
    QCOMPARE(form.fdGroup()->isChecked(), state);
}

void TestCanInterfaceCapabilities::newLockTakesThePlaceOfTheOldOne()
{
    const InterfaceForm form;
    form.selectType(plainType);
    form->disableFDCheckbox(false);
    form->disableFDCheckbox(true);
    QVERIFY(form.fdGroup()->isChecked());
    form.fdGroup()->setChecked(false);
    QVERIFY(form.fdGroup()->isChecked());
}

void TestCanInterfaceCapabilities::shownFormShowsTheDataBitrate()
{
    const InterfaceForm form;
    form.setValue(Adapter::OptionUseCanFd, true);
    form.selectType(plainType);
    form.list("cbCanFdDataBitrate")->hide();
    form.label("lbCanFdDataBitrate")->hide();
    form->show();
    QVERIFY(form.list("cbCanFdDataBitrate")->isVisible());
    QVERIFY(form.label("lbCanFdDataBitrate")->isVisible());
}

QTEST_MAIN(TestCanInterfaceCapabilities)
#include "tst_caninterfacecapabilities.moc"
