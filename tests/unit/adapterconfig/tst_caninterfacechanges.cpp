#include "bitratelists.h"
#include "interfaceform.h"

#include <QSignalSpy>

// The current adapter: how the form shows it, and how it tells of edits that are not taken over yet.
class TestCanInterfaceChanges : public QObject
{
    Q_OBJECT

private slots:
    void formSaysWhatTheAdapterSays_data();
    void formSaysWhatTheAdapterSays();
    void currentAdapterShowsWithTheNextUpdate();
    void valuesAreTakenFromTheLowestOptionOn();
    void adapterOfAMissingDeviceShowsIt();
    void deviceNumberIsShownForOneType();
    void updateIsPaintedOnceItIsDone();
    void updateOfANewFormSelectsTheFirstType();
    void valuesOfAPageComeWithTheirType_data();
    void valuesOfAPageComeWithTheirType();
    void watchRunsWhileThereIsAnAdapter();
    void withoutAdapterTheControlsStay();
    void editIsTold();
    void withdrawnEditIsForgotten();
    void adapterAsItIsIsNoEdit();
    void otherTypeIsAnEdit();
    void withoutAdapterNothingIsTold();
    void formWithoutAdapterToMakeTellsNothing();
    void adapterThatDiesIsForgotten();
    void formerAdapterMayDie();
    void formLeavesTheCurrentAdapterAlive();
    void editOfALinkIsAppliedAtOnce();
    void appliedEditIsNotAppliedAgain();
    void appliedEditIsMadeOnce();
    void latestAppliedEditIsKept();
    void nextAdapterTakesThePlaceOfTheAppliedEdit();
    void appliedAdapterDiesWithTheForm();
    void linkThatBecomesAnotherTypeIsAnEdit();
    void answerMayPutAnotherAdapterInPlace();
    void answerMayTakeTheAdapterAway();
};

namespace {
using Adapter = AbstractCanAdapter;

constexpr auto plainType = Adapter::CanAdapterPcanBasic;
constexpr auto linkType = Adapter::CanAdapterSocketCan;

/// Supports all that a form has a control for and the same adapter keeps.
QList<Adapter::AdapterOption> allOptions()
{
    QList<Adapter::AdapterOption> options;
    for (unsigned int option = 0; option < Adapter::optionCount; ++option)
        options.append(static_cast<Adapter::AdapterOption>(option));
    for (const auto option : {Adapter::OptionAdapterId, Adapter::OptionActive, Adapter::OptionPrimary})
        options.removeOne(option);
    return options;
}

FakeAdapter *makeFullAdapter(Adapter::CanAdapterType type, const QString &device)
{
    auto *adapter = new FakeAdapter(type, device);
    adapter->supportedOptions = allOptions();
    return adapter;
}

/// An adapter as the form makes it, whose family makes all with all options from now on.
std::unique_ptr<Adapter> adapterFromForm(const InterfaceForm &form, Adapter::CanAdapterType type)
{
    InterfaceForm::family(type)->create = [type](const QString &device) { return makeFullAdapter(type, device); };
    form.selectTypeAnew(type);
    form->updateLinkedAdapterList();
    return std::unique_ptr<Adapter>(form->createAdapterFromSettings());
}

void show(const InterfaceForm &form, Adapter *adapter)
{
    form->setCurrentAdapter(adapter);
    form->updateValues();
}

bool tellsOfAnEdit(const InterfaceForm &form)
{
    return form.isShown("lblAdapterChanged");
}

/// A link that a form shows, and the adapters that the form makes of it from then on.
struct MadeLinks
{
    explicit MadeLinks(const InterfaceForm &linkForm)
        : form(linkForm)
        , shown(adapterFromForm(form, linkType))
    {
        show(form, shown.get());
        InterfaceForm::family(linkType)->create = [this](const QString &device) {
            made.append(makeFullAdapter(linkType, device));
            return made.last();
        };
    }

    /// Lets the form notice it.
    void edit(const char *description)
    {
        form.edit("leDescription")->setText(QString::fromLatin1(description));
        form->checkForChanges();
    }
    int living() const
    {
        return static_cast<int>(std::count_if(made.begin(), made.end(), [](const auto &link) { return link; }));
    }

    const InterfaceForm &form;
    std::unique_ptr<Adapter> shown;
    QList<QPointer<Adapter>> made;
};
} // namespace

void TestCanInterfaceChanges::formSaysWhatTheAdapterSays_data()
{
    QTest::addColumn<unsigned int>("type");
    for (unsigned int type = 1; type <= InterfaceForm::highestType; ++type)
        QTest::newRow(qPrintable(QStringLiteral("type %1").arg(type))) << type;
}

void TestCanInterfaceChanges::formSaysWhatTheAdapterSays()
{
    QFETCH(unsigned int, type);
    const InterfaceForm form;
    const std::unique_ptr<Adapter> other = adapterFromForm(
        form, type == 5 ? Adapter::CanAdapterSontheim : Adapter::CanAdapterEmsCpc);
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, static_cast<Adapter::CanAdapterType>(type));
    adapter->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("left"));
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    adapter->setCanAdapterOption(Adapter::OptionLogErrorFrames, true);
    adapter->setCanAdapterOption(Adapter::OptionAutoBusOn, type != linkType);
    adapter->setCanAdapterOption(Adapter::OptionBitrate, QVariant::fromValue(InterfaceForm::bitrates()[0]));
    adapter->setCanAdapterOption(Adapter::OptionUsdoNodeId, 3);
    show(form, other.get());
    show(form, adapter.get());
    const std::unique_ptr<Adapter> fromForm(form->createAdapterFromSettings());
    for (const Adapter::AdapterOption option : allOptions()) {
        // The bitrate and CAN FD of a link are the system's.
        const bool system = type == linkType
            && (option == Adapter::OptionUseCanFd || option == Adapter::OptionBitrate
                || option == Adapter::OptionFdBitrate);
        if (!system && adapter->getCanAdapterOption(option).isValid())
            QVERIFY2(fromForm->getCanAdapterOption(option) == adapter->getCanAdapterOption(option),
                     qPrintable(QString::number(option)));
    }
}

void TestCanInterfaceChanges::currentAdapterShowsWithTheNextUpdate()
{
    const InterfaceForm form;
    FakeAdapter adapter(plainType, QStringLiteral("First"));
    adapter.setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("left"));
    form->setCurrentAdapter(&adapter);
    QCOMPARE(form.edit("leDescription")->text(), QString());
    form->updateValues();
    QCOMPARE(form.edit("leDescription")->text(), QStringLiteral("left"));
}

void TestCanInterfaceChanges::valuesAreTakenFromTheLowestOptionOn()
{
    const InterfaceForm form;
    InterfaceForm::family(plainType)->classicBitTiming = true;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, plainType);
    CAN::CANClassicBusParameter parameter;
    parameter.name = QStringLiteral("odd");
    parameter.userDefined = true;
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    adapter->setCanAdapterOption(Adapter::OptionDeviceName, QStringLiteral("First"));
    adapter->setCanAdapterOption(Adapter::OptionClassicBusParameter, QVariant::fromValue(parameter));
    adapter->setCanAdapterOption(Adapter::OptionBitrate, BitrateLists::UserBitrateMarker);
    form.selectType(3);
    show(form, adapter.get());
    QVERIFY(form.fdGroup()->isChecked());
    QCOMPARE(form.list("cbCanDevice")->currentText(), QStringLiteral("First"));
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("User bitrate - odd"));
}

void TestCanInterfaceChanges::adapterOfAMissingDeviceShowsIt()
{
    const InterfaceForm form;
    FakeAdapter adapter(plainType, QStringLiteral("Gone"));
    FakeAdapter next(plainType, QStringLiteral("First"));
    show(form, &adapter);
    QCOMPARE(form.list("cbCanDevice")->currentText(), QStringLiteral("Gone"));
    show(form, &next);
    QCOMPARE(form.list("cbCanDevice")->currentText(), QStringLiteral("First"));
    QVERIFY(form.list("cbCanDevice")->findText(QStringLiteral("Gone")) < 0);
}

void TestCanInterfaceChanges::deviceNumberIsShownForOneType()
{
    const InterfaceForm form;
    FakeAdapter adapter(Adapter::CanAdapterIxxatVci3, QStringLiteral("First"));
    adapter.deviceNumber = 0x2A;
    show(form, &adapter);
    QCOMPARE(form.list("cbCanDevice")->toolTip(), QStringLiteral("2a"));
}

void TestCanInterfaceChanges::updateIsPaintedOnceItIsDone()
{
    const InterfaceForm form;
    form.selectType(plainType);
    FakeAdapter adapter(linkType, QStringLiteral("First"));
    QList<bool> painted;
    connect(&*form, &CanInterfaceWidget::sigUpdateAdapter, &*form, [&] { painted.append(form->updatesEnabled()); });
    show(form, &adapter);
    QCOMPARE(painted, QList<bool>{false});
    QVERIFY(form->updatesEnabled());
}

void TestCanInterfaceChanges::updateOfANewFormSelectsTheFirstType()
{
    const InterfaceForm world; // the families
    CanAdapterFactory::unregisterFamily(linkType);
    CanInterfaceWidget form;
    const auto *types = form.findChild<QComboBox *>(QStringLiteral("cbCanInterfaceType"));
    const auto *devices = form.findChild<QComboBox *>(QStringLiteral("cbCanDevice"));
    FakeAdapter adapter(static_cast<Adapter::CanAdapterType>(types->itemData(0).toUInt()), QStringLiteral("Second"));
    QSignalSpy requests(&form, &CanInterfaceWidget::sigUpdateAdapter);
    form.setCurrentAdapter(&adapter);
    form.updateValues();
    QCOMPARE(devices->count(), 2);
    QCOMPARE(devices->currentText(), QStringLiteral("Second"));
    form.show();
    QCOMPARE(devices->currentText(), QStringLiteral("Second"));
    QCOMPARE(requests.size(), 0);
}

void TestCanInterfaceChanges::valuesOfAPageComeWithTheirType_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<unsigned int>("option");
    QTest::addColumn<QVariant>("value");
    Adapter::PeakAdvValues timing;
    timing.useAdvanced = true;
    timing.clockMHz = 60;
    timing.preScaler = 64;
    timing.tSeg1 = 16;
    timing.tSeg2 = 8;
    timing.sjw = 4;
    Adapter::SystecXM3AdvValues filter;
    filter.filterMode = 1;
    filter.canId1 = 0x1ABCDEF;
    QTest::newRow("timing") << 16U << unsigned(Adapter::OptionPeakAdvValues) << QVariant::fromValue(timing);
    QTest::newRow("filter") << 21U << unsigned(Adapter::OptionXm3AdvValues) << QVariant::fromValue(filter);
}

void TestCanInterfaceChanges::valuesOfAPageComeWithTheirType()
{
    QFETCH(unsigned int, type);
    QFETCH(unsigned int, option);
    QFETCH(QVariant, value);
    const auto key = static_cast<Adapter::AdapterOption>(option);
    const InterfaceForm form;
    form.selectType(plainType);
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, static_cast<Adapter::CanAdapterType>(type));
    form.selectType(plainType);
    adapter->setCanAdapterOption(key, value);
    show(form, adapter.get());
    QCOMPARE(form.value(key), value);
}

void TestCanInterfaceChanges::watchRunsWhileThereIsAnAdapter()
{
    const InterfaceForm form;
    FakeAdapter adapter(plainType, QStringLiteral("First"));
    const auto *timer = form->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    show(form, &adapter);
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 250);
    show(form, nullptr);
    QVERIFY(!timer->isActive());
}

void TestCanInterfaceChanges::withoutAdapterTheControlsStay()
{
    const InterfaceForm form;
    FakeAdapter adapter(plainType, QStringLiteral("Second"));
    adapter.setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("left"));
    show(form, &adapter);
    show(form, nullptr);
    QCOMPARE(form.edit("leDescription")->text(), QStringLiteral("left"));
    QCOMPARE(form.list("cbCanDevice")->currentText(), QStringLiteral("Second"));
}

void TestCanInterfaceChanges::editIsTold()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, plainType);
    show(form, adapter.get());
    form.edit("leDescription")->setText(QStringLiteral("new"));
    QTRY_VERIFY(tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::withdrawnEditIsForgotten()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, plainType);
    show(form, adapter.get());
    form.edit("leDescription")->setText(QStringLiteral("new"));
    form->checkForChanges();
    QVERIFY(tellsOfAnEdit(form));
    form.edit("leDescription")->clear();
    QTRY_VERIFY(!tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::adapterAsItIsIsNoEdit()
{
    const InterfaceForm form;
    for (unsigned int type = 1; type <= InterfaceForm::highestType; ++type) {
        const std::unique_ptr<Adapter> adapter = adapterFromForm(form, static_cast<Adapter::CanAdapterType>(type));
        show(form, adapter.get());
        form->checkForChanges();
        QVERIFY2(!tellsOfAnEdit(form), qPrintable(QString::number(type)));
    }
}

void TestCanInterfaceChanges::otherTypeIsAnEdit()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, plainType);
    show(form, adapter.get());
    form.selectType(3);
    form->checkForChanges();
    QVERIFY(tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::withoutAdapterNothingIsTold()
{
    const InterfaceForm form;
    form.selectType(plainType);
    form->checkForChanges();
    QVERIFY(!tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::formWithoutAdapterToMakeTellsNothing()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, plainType);
    show(form, adapter.get());
    form.edit("leDescription")->setText(QStringLiteral("new"));
    form->checkForChanges();
    InterfaceForm::family(plainType)->create = [](const QString &) { return nullptr; };
    form->checkForChanges();
    QVERIFY(!tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::adapterThatDiesIsForgotten()
{
    const InterfaceForm form;
    std::unique_ptr<Adapter> adapter = adapterFromForm(form, plainType);
    show(form, adapter.get());
    adapter.reset();
    form.edit("leDescription")->setText(QStringLiteral("new"));
    form->checkForChanges();
    form->updateValues();
    form.selectType(16);
    form->setDeviceName(QStringLiteral("Gone"));
    QVERIFY(!tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::formerAdapterMayDie()
{
    const InterfaceForm form;
    std::unique_ptr<Adapter> former = adapterFromForm(form, plainType);
    const std::unique_ptr<Adapter> current(form->createAdapterFromSettings());
    show(form, former.get());
    show(form, current.get());
    former.reset();
    form.edit("leDescription")->setText(QStringLiteral("new"));
    form->checkForChanges();
    QVERIFY(tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::formLeavesTheCurrentAdapterAlive()
{
    const auto record = std::make_shared<CallRecord>();
    FakeAdapter adapter(plainType, QStringLiteral("First"));
    adapter.record = record;
    {
        const InterfaceForm form;
        show(form, &adapter);
    }
    QCOMPARE(record->lines(), QStringList());
}

void TestCanInterfaceChanges::editOfALinkIsAppliedAtOnce()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, linkType);
    show(form, adapter.get());
    QSignalSpy requests(&*form, &CanInterfaceWidget::sigUpdateAdapter);
    form->checkForChanges();
    QCOMPARE(requests.size(), 0);
    form.edit("leDescription")->setText(QStringLiteral("new"));
    QVERIFY(requests.wait());
    QVERIFY(!tellsOfAnEdit(form));
}

void TestCanInterfaceChanges::appliedEditIsNotAppliedAgain()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, linkType);
    show(form, adapter.get());
    form.edit("leDescription")->setText(QStringLiteral("new"));
    QSignalSpy requests(&*form, &CanInterfaceWidget::sigUpdateAdapter);
    for (int tick = 0; tick < 10; ++tick)
        form->checkForChanges();
    QCOMPARE(requests.size(), 1);
}

void TestCanInterfaceChanges::appliedEditIsMadeOnce()
{
    const InterfaceForm form;
    MadeLinks links(form);
    links.edit("one");
    QCOMPARE(links.made.size(), 1);
}

void TestCanInterfaceChanges::latestAppliedEditIsKept()
{
    const InterfaceForm form;
    MadeLinks links(form);
    for (const char *text : {"one", "two", "three"})
        links.edit(text);
    QCOMPARE(links.made.size(), 3);
    QCOMPARE(links.living(), 1);
    QVERIFY(!links.made.last().isNull());
}

void TestCanInterfaceChanges::nextAdapterTakesThePlaceOfTheAppliedEdit()
{
    const InterfaceForm form;
    MadeLinks links(form);
    links.edit("one");
    form->setCurrentAdapter(links.shown.get());
    QCOMPARE(links.living(), 0);
}

void TestCanInterfaceChanges::appliedAdapterDiesWithTheForm()
{
    auto form = std::make_unique<const InterfaceForm>();
    MadeLinks links(*form);
    links.edit("one");
    QCOMPARE(links.living(), 1);
    form.reset();
    QCOMPARE(links.living(), 0);
}

void TestCanInterfaceChanges::linkThatBecomesAnotherTypeIsAnEdit()
{
    const InterfaceForm form;
    const std::unique_ptr<Adapter> adapter = adapterFromForm(form, linkType);
    show(form, adapter.get());
    form.selectType(plainType);
    QSignalSpy requests(&*form, &CanInterfaceWidget::sigUpdateAdapter);
    form->checkForChanges();
    QVERIFY(tellsOfAnEdit(form));
    QCOMPARE(requests.size(), 0);
}

void TestCanInterfaceChanges::answerMayPutAnotherAdapterInPlace()
{
    const InterfaceForm form;
    std::unique_ptr<Adapter> adapter = adapterFromForm(form, linkType);
    std::unique_ptr<Adapter> replacement(form->createAdapterFromSettings());
    replacement->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("replacement"));
    form.selectType(plainType);
    connect(&*form, &CanInterfaceWidget::sigUpdateAdapter, &*form, [&] {
        form->setCurrentAdapter(replacement.get());
        adapter.reset();
    });
    show(form, adapter.get());
    QCOMPARE(form.edit("leDescription")->text(), QStringLiteral("replacement"));
}

void TestCanInterfaceChanges::answerMayTakeTheAdapterAway()
{
    const InterfaceForm form;
    std::unique_ptr<Adapter> adapter = adapterFromForm(form, linkType);
    form.selectType(plainType);
    connect(&*form, &CanInterfaceWidget::sigUpdateAdapter, &*form, [&] { adapter.reset(); });
    show(form, adapter.get());
    QVERIFY(!form->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->isActive());
}

QTEST_MAIN(TestCanInterfaceChanges)
#include "tst_caninterfacechanges.moc"
