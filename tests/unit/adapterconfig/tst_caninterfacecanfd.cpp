#include "interfaceform.h"

// The group of CAN FD: when it is offered, what it fills, and who may change it.
class TestCanInterfaceCanFd : public QObject
{
    Q_OBJECT

private slots:
    void canFdShowsItsGroup_data();
    void canFdShowsItsGroup();
    void canFdGroupShowsTheRememberedState();
    void canFdFillsTheListsForItsBus();
    void prohibitedCanFdIsHiddenByName();
    void prohibitedCanFdIsOfferedByAFeatureWord();
    void toggledGroupEnablesTheDataBitrate_data();
    void toggledGroupEnablesTheDataBitrate();
    void uncheckedGroupKeepsTheDataBitrateVisible();
    void clickedGroupFillsTheBitrates();
    void clickedGroupOfTheSystemFillsNothing();
    void lockedGroupStaysAsItIs_data();
    void lockedGroupStaysAsItIs();
    void newLockTakesThePlaceOfTheOldOne();
    void shownFormShowsTheDataBitrate();
    void shownFormForgetsACheckOfCanFd();
};

namespace {
using Adapter = AbstractCanAdapter;

constexpr auto plainType = Adapter::CanAdapterPcanBasic;

void offer(const InterfaceForm &form, unsigned int features)
{
    form->handleDeviceFeatures(features, plainType);
}
} // namespace

void TestCanInterfaceCanFd::canFdShowsItsGroup_data()
{
    QTest::addColumn<unsigned int>("features");
    QTest::addColumn<bool>("shown");
    QTest::newRow("CAN FD") << 0x80U << true;
    QTest::newRow("no CAN FD") << ~0x80U << false;
}

void TestCanInterfaceCanFd::canFdShowsItsGroup()
{
    QFETCH(unsigned int, features);
    QFETCH(bool, shown);
    const InterfaceForm form;
    offer(form, unsigned(Adapter::FeatureCanFd));
    offer(form, features);
    for (const char *name : {"cbCanfdConfig", "lbCanFdDataBitrate", "cbCanFdDataBitrate"})
        QVERIFY2(form.isShown(name) == shown, name);
}

void TestCanInterfaceCanFd::canFdGroupShowsTheRememberedState()
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

void TestCanInterfaceCanFd::canFdFillsTheListsForItsBus()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->fdArbitrationBitrates = {{QStringLiteral("500 kBit/s"), 500}};
    form.setValue(Adapter::OptionUseCanFd, true);
    offer(form, Adapter::FeatureCanFd);
    QCOMPARE(InterfaceForm::texts(form.list("cbBitrate")), QStringList(QStringLiteral("500 kBit/s")));
    offer(form, 0);
    QCOMPARE(form.list("cbBitrate")->count(), 2);
}

void TestCanInterfaceCanFd::prohibitedCanFdIsHiddenByName()
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

void TestCanInterfaceCanFd::prohibitedCanFdIsOfferedByAFeatureWord()
{
    const InterfaceForm form;
    form->prohibitCanFd();
    offer(form, Adapter::FeatureCanFd);
    QVERIFY(form.isShown("cbCanfdConfig"));
}

void TestCanInterfaceCanFd::toggledGroupEnablesTheDataBitrate_data()
{
    QTest::addColumn<bool>("checked");
    QTest::addColumn<bool>("changeable");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("checked") << true << true << true;
    QTest::newRow("checked, fixed") << true << false << false;
    QTest::newRow("unchecked") << false << true << false;
}

void TestCanInterfaceCanFd::toggledGroupEnablesTheDataBitrate()
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

void TestCanInterfaceCanFd::uncheckedGroupKeepsTheDataBitrateVisible()
{
    const InterfaceForm form;
    form.selectType(plainType);
    form.fdGroup()->setChecked(true);
    form.fdGroup()->setChecked(false);
    QVERIFY(form.isShown("lbCanFdDataBitrate"));
    QVERIFY(form.isShown("cbCanFdDataBitrate"));
}

void TestCanInterfaceCanFd::clickedGroupFillsTheBitrates()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->fdArbitrationBitrates = {{QStringLiteral("500 kBit/s"), 500}};
    form.selectType(plainType);
    form->on_cbCanfdConfig_clicked(true);
    QCOMPARE(InterfaceForm::texts(form.list("cbBitrate")), QStringList(QStringLiteral("500 kBit/s")));
    form->on_cbCanfdConfig_clicked(false);
    QCOMPARE(form.list("cbBitrate")->count(), 2);
}

void TestCanInterfaceCanFd::clickedGroupOfTheSystemFillsNothing()
{
    const InterfaceForm form;
    form.selectTypeAnew(Adapter::CanAdapterSocketCan);
    form->on_cbCanfdConfig_clicked(true);
    QCOMPARE(form.list("cbBitrate")->count(), 1);
}

void TestCanInterfaceCanFd::lockedGroupStaysAsItIs_data()
{
    QTest::addColumn<bool>("state");
    QTest::newRow("checked") << true;
    QTest::newRow("unchecked") << false;
}

void TestCanInterfaceCanFd::lockedGroupStaysAsItIs()
{
    QFETCH(bool, state);
    const InterfaceForm form;
    form.selectType(plainType);
    form->disableFDCheckbox(state);
    QCOMPARE(form.fdGroup()->isChecked(), state);
    form.fdGroup()->setChecked(!state);
    QCOMPARE(form.fdGroup()->isChecked(), state);
}

void TestCanInterfaceCanFd::newLockTakesThePlaceOfTheOldOne()
{
    const InterfaceForm form;
    form.selectType(plainType);
    form->disableFDCheckbox(false);
    form->disableFDCheckbox(true);
    // Until its end the old lock has its way.
    QVERIFY(!form.fdGroup()->isChecked());
    form.fdGroup()->setChecked(true);
    QVERIFY(form.fdGroup()->isChecked());
    form.fdGroup()->setChecked(false);
    QVERIFY(form.fdGroup()->isChecked());
}

void TestCanInterfaceCanFd::shownFormShowsTheDataBitrate()
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

void TestCanInterfaceCanFd::shownFormForgetsACheckOfCanFd()
{
    const InterfaceForm form;
    form.selectType(plainType);
    form.fdGroup()->setChecked(true);
    form->show();
    QVERIFY(!form.fdGroup()->isChecked());
}

QTEST_MAIN(TestCanInterfaceCanFd)
#include "tst_caninterfacecanfd.moc"
