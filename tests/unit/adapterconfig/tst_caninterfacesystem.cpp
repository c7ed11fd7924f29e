#include "interfaceform.h"

#include <QSignalSpy>

// The CAN links of the system, whose settings are not the user's.
class TestCanInterfaceSystem : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void bitrateIsTheSystems();
    void unknownBitrateIsNoValue();
    void dataBitrateIsTheSystems();
    void linkWithoutCanFdKeepsTheDataBitrates();
    void dataBitrateIsNotEdited();
    void canFdIsTheSystems();
    void autoBusOnIsTheSystems_data();
    void autoBusOnIsTheSystems();
    void autoBusOnOfAnAdapterIsIgnored();
    void otherTypeIsTheUsersAgain();
    void selectedTypeAsksForAnUpdate();
    void shownFormAsksForAnUpdate();
    void selectedDeviceShowsItsSettings();
    void selectedDeviceAsksForNoUpdate();
    void selectedDeviceMovesTheLock();
    void nextTypeIsNotLocked();
    void nextTypeShowsTheLinksCanFdAtFirst();
    void deviceOfTheNextTypeShowsWhatItRemembers();
    void nextAdapterShowsItsCanFd();
    void adapterThatAgreesAsksForNoUpdate();
    void adapterThatDiffersShowsTheSystem_data();
    void adapterThatDiffersShowsTheSystem();
    void linkWithoutAnswerChangesNothing();
    void noticeShowsTheNewSettings();
    void noticeAsksForAnUpdate();
    void rowsOfBothKindsAreNoEdits();

private:
    using Adapter = AbstractCanAdapter;
    static constexpr auto linkType = Adapter::CanAdapterSocketCan;
    static constexpr auto plainType = Adapter::CanAdapterPcanBasic;

    static Adapter::SocketCANProps fdLink()
    {
        Adapter::SocketCANProps props;
        props.canFd = true;
        props.bitrate = 500;
        props.fdBitrate = 4000;
        props.restartMs = 100;
        return props;
    }
    static Adapter::SocketCANProps classicLink()
    {
        Adapter::SocketCANProps props;
        props.bitrate = 250;
        props.fdBitrate = 0;
        return props;
    }
    static std::unique_ptr<FakeAdapter> adapterOf(const QString &device, const Adapter::SocketCANProps &props)
    {
        auto adapter = std::make_unique<FakeAdapter>(linkType, device);
        adapter->setCanAdapterOption(Adapter::OptionUseCanFd, props.canFd);
        adapter->setCanAdapterOption(Adapter::OptionBitrate, QVariant::fromValue(props));
        adapter->setCanAdapterOption(Adapter::OptionFdBitrate, QVariant::fromValue(props));
        return adapter;
    }

    std::unique_ptr<InterfaceForm> m_form;
};

namespace {
const QString first = QStringLiteral("First");
const QString second = QStringLiteral("Second");
} // namespace

void TestCanInterfaceSystem::init()
{
    m_form = std::make_unique<InterfaceForm>();
    InterfaceForm::family(linkType)->props = {{first, fdLink()}, {second, classicLink()}};
    InterfaceForm::family(linkType)->deviceMap[second] = InterfaceForm::mostFeatures;
    InterfaceForm::family(linkType)->baudrateChangeable = false;
    m_form->selectType(plainType);
}

void TestCanInterfaceSystem::bitrateIsTheSystems()
{
    m_form->selectType(linkType);
    QCOMPARE(InterfaceForm::texts(m_form->list("cbBitrate")), QStringList(QStringLiteral("500 kbit/s")));
    QCOMPARE(m_form->list("cbBitrate")->currentData(), QVariant::fromValue(fdLink()));
    QVERIFY(!m_form->list("cbBitrate")->isEnabled());
}

void TestCanInterfaceSystem::unknownBitrateIsNoValue()
{
    InterfaceForm::family(linkType)->props.clear();
    m_form->selectType(linkType);
    QCOMPARE(InterfaceForm::texts(m_form->list("cbBitrate")), QStringList(QStringLiteral("0 kbit/s")));
    QVERIFY(!m_form->list("cbBitrate")->currentData().isValid());
}

void TestCanInterfaceSystem::dataBitrateIsTheSystems()
{
    m_form->selectType(linkType);
    QCOMPARE(InterfaceForm::texts(m_form->list("cbCanFdDataBitrate")), QStringList(QStringLiteral("4000 kbit/s")));
    QCOMPARE(m_form->list("cbCanFdDataBitrate")->currentData(), QVariant::fromValue(fdLink()));
}

void TestCanInterfaceSystem::linkWithoutCanFdKeepsTheDataBitrates()
{
    InterfaceForm::family(linkType)->props[first] = classicLink();
    m_form->selectType(linkType);
    QCOMPARE(m_form->list("cbCanFdDataBitrate")->count(), 2);
}

void TestCanInterfaceSystem::dataBitrateIsNotEdited()
{
    InterfaceForm::family(linkType)->fdBitTiming = true;
    m_form->selectType(linkType);
    QVERIFY(!m_form->list("cbCanFdDataBitrate")->isEnabled());
    QVERIFY(!m_form->find<QPushButton>("btnEdtFDBitrate")->isEnabled());
}

void TestCanInterfaceSystem::canFdIsTheSystems()
{
    m_form->selectType(linkType);
    QVERIFY(m_form->fdGroup()->isChecked());
    m_form->fdGroup()->setChecked(false);
    QVERIFY(m_form->fdGroup()->isChecked());
    m_form->setValue(Adapter::OptionUseCanFd, false);
    QCOMPARE(m_form->value(Adapter::OptionUseCanFd), QVariant(true));
}

void TestCanInterfaceSystem::autoBusOnIsTheSystems_data()
{
    QTest::addColumn<unsigned int>("restartMs");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<QString>("toolTip");
    QTest::newRow("off") << 0U << false << "Auto bus on is deactivated";
    QTest::newRow("at once") << 1U << true << "Auto bus on is activated with a value of 1 ms";
    QTest::newRow("late") << 65535U << true << "Auto bus on is activated with a value of 65535 ms";
}

void TestCanInterfaceSystem::autoBusOnIsTheSystems()
{
    QFETCH(unsigned int, restartMs);
    InterfaceForm::family(linkType)->props[first].restartMs = quint16(restartMs);
    m_form->selectType(linkType);
    QTEST(m_form->box("cbAutoBusOn")->isChecked(), "checked");
    QTEST(m_form->box("cbAutoBusOn")->toolTip(), "toolTip");
}

void TestCanInterfaceSystem::autoBusOnOfAnAdapterIsIgnored()
{
    m_form->selectType(linkType);
    QCOMPARE(m_form->box("cbAutoBusOn")->property("changeable"), QVariant(false));
    m_form->setValue(Adapter::OptionAutoBusOn, false);
    QVERIFY(m_form->box("cbAutoBusOn")->isChecked());
}

void TestCanInterfaceSystem::otherTypeIsTheUsersAgain()
{
    m_form->selectType(linkType);
    m_form->selectType(plainType);
    QCOMPARE(m_form->box("cbAutoBusOn")->property("changeable"), QVariant(true));
    QVERIFY(m_form->fdGroup()->isEnabled());
    QCOMPARE(m_form->list("cbBitrate")->count(), 2);
    QVERIFY(m_form->list("cbBitrate")->isEnabled());
}

void TestCanInterfaceSystem::selectedTypeAsksForAnUpdate()
{
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    m_form->selectType(3);
    QCOMPARE(requests.size(), 0);
    m_form->selectType(linkType);
    QCOMPARE(requests.size(), 1);
}

void TestCanInterfaceSystem::shownFormAsksForAnUpdate()
{
    m_form->selectType(linkType);
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    (*m_form)->show();
    QCOMPARE(requests.size(), 1);
}

void TestCanInterfaceSystem::selectedDeviceShowsItsSettings()
{
    m_form->selectType(linkType);
    m_form->selectDevice(second);
    QCOMPARE(InterfaceForm::texts(m_form->list("cbBitrate")), QStringList(QStringLiteral("250 kbit/s")));
    QVERIFY(!m_form->fdGroup()->isChecked());
    QVERIFY(!m_form->box("cbAutoBusOn")->isChecked());
}

void TestCanInterfaceSystem::selectedDeviceAsksForNoUpdate()
{
    m_form->selectType(linkType);
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    m_form->selectDevice(second);
    QCOMPARE(requests.size(), 0);
}

void TestCanInterfaceSystem::selectedDeviceMovesTheLock()
{
    m_form->selectType(linkType);
    for (int turn = 0; turn < 3; ++turn) {
        m_form->selectDevice(second);
        m_form->fdGroup()->setChecked(true);
        QVERIFY(!m_form->fdGroup()->isChecked());
        m_form->selectDevice(first);
        m_form->fdGroup()->setChecked(false);
        QVERIFY(m_form->fdGroup()->isChecked());
    }
}

void TestCanInterfaceSystem::nextTypeIsNotLocked()
{
    m_form->selectType(linkType);
    m_form->selectType(plainType);
    m_form->fdGroup()->setChecked(true);
    QVERIFY(m_form->fdGroup()->isChecked());
    m_form->fdGroup()->setChecked(false);
    QVERIFY(!m_form->fdGroup()->isChecked());
}

void TestCanInterfaceSystem::nextTypeShowsTheLinksCanFdAtFirst()
{
    m_form->selectType(linkType);
    m_form->setValue(Adapter::OptionUseCanFd, false);
    m_form->selectType(plainType);
    QVERIFY(m_form->fdGroup()->isChecked());
}

void TestCanInterfaceSystem::deviceOfTheNextTypeShowsWhatItRemembers()
{
    InterfaceForm::family(plainType)->deviceMap[second] = InterfaceForm::mostFeatures;
    m_form->selectType(linkType);
    m_form->setValue(Adapter::OptionUseCanFd, false);
    m_form->selectType(plainType);
    m_form->selectDevice(second);
    QVERIFY(!m_form->fdGroup()->isChecked());
}

void TestCanInterfaceSystem::nextAdapterShowsItsCanFd()
{
    FakeAdapter next(plainType, first);
    InterfaceForm::family(plainType)->fdArbitrationBitrates = {{QStringLiteral("500 kBit/s"), 500}};
    next.setCanAdapterOption(Adapter::OptionUseCanFd, false);
    m_form->selectType(linkType);
    QVERIFY(m_form->fdGroup()->isChecked());
    (*m_form)->setCurrentAdapter(&next);
    (*m_form)->updateValues();
    QVERIFY(!m_form->fdGroup()->isChecked());
    QCOMPARE(m_form->list("cbBitrate")->count(), 2);
}

void TestCanInterfaceSystem::adapterThatAgreesAsksForNoUpdate()
{
    const auto adapter = adapterOf(first, fdLink());
    m_form->selectType(linkType);
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    adapter->setCanAdapterOption(Adapter::OptionFdBitrate, QVariant::fromValue(CAN::CANBitrateDesc({}, 4000)));
    adapter->setCanAdapterOption(Adapter::OptionBitrate, QVariant::fromValue(CAN::CANBitrateDesc({}, 500)));
    (*m_form)->setCurrentAdapter(adapter.get());
    (*m_form)->updateValues();
    QCOMPARE(requests.size(), 0);
}

void TestCanInterfaceSystem::adapterThatDiffersShowsTheSystem_data()
{
    QTest::addColumn<bool>("canFd");
    QTest::addColumn<unsigned int>("bitrate");
    QTest::addColumn<unsigned int>("fdBitrate");
    QTest::newRow("CAN FD") << false << 500U << 4000U;
    QTest::newRow("bitrate") << true << 250U << 4000U;
    QTest::newRow("data bitrate") << true << 500U << 2000U;
}

void TestCanInterfaceSystem::adapterThatDiffersShowsTheSystem()
{
    QFETCH(bool, canFd);
    QFETCH(unsigned int, bitrate);
    QFETCH(unsigned int, fdBitrate);
    const auto adapter = adapterOf(first, fdLink());
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, canFd);
    adapter->setCanAdapterOption(Adapter::OptionBitrate,
                                 QVariant::fromValue(CAN::CANBitrateDesc({}, quint16(bitrate))));
    adapter->setCanAdapterOption(Adapter::OptionFdBitrate,
                                 QVariant::fromValue(CAN::CANBitrateDesc({}, quint16(fdBitrate))));
    m_form->selectType(linkType);
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    (*m_form)->setCurrentAdapter(adapter.get());
    (*m_form)->updateValues();
    QCOMPARE(requests.size(), 1);
    QCOMPARE(m_form->list("cbBitrate")->currentText(), QStringLiteral("500 kbit/s"));
    QCOMPARE(m_form->list("cbCanFdDataBitrate")->currentText(), QStringLiteral("4000 kbit/s"));
    QVERIFY(m_form->fdGroup()->isChecked());
    QVERIFY((*m_form)->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->isActive());
}

void TestCanInterfaceSystem::linkWithoutAnswerChangesNothing()
{
    InterfaceForm::family(linkType)->props.clear();
    const auto adapter = adapterOf(first, fdLink());
    m_form->selectType(linkType);
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    (*m_form)->setCurrentAdapter(adapter.get());
    (*m_form)->updateValues();
    QCOMPARE(requests.size(), 0);
}

void TestCanInterfaceSystem::noticeShowsTheNewSettings()
{
    m_form->selectType(linkType);
    InterfaceForm::family(linkType)->props[first] = classicLink();
    emit CanAdapterFactory::notifier()->devicesChanged(linkType);
    QCOMPARE(m_form->list("cbBitrate")->currentText(), QStringLiteral("250 kbit/s"));
    QVERIFY(!m_form->fdGroup()->isChecked());
}

void TestCanInterfaceSystem::noticeAsksForAnUpdate()
{
    m_form->selectType(linkType);
    QSignalSpy requests(&**m_form, &CanInterfaceWidget::sigUpdateAdapter);
    emit CanAdapterFactory::notifier()->devicesChanged(linkType);
    QCOMPARE(requests.size(), 1);
}

void TestCanInterfaceSystem::rowsOfBothKindsAreNoEdits()
{
    constexpr auto demoType = Adapter::CanAdapterDemo;
    const QVector<QPair<Adapter::CanAdapterType, QString>> places = {
        {demoType, first}, {linkType, first}, {demoType, second}, {linkType, second}};
    (*m_form)->updateValues();
    std::vector<std::unique_ptr<Adapter>> rows;
    for (const auto &[type, device] : places) {
        m_form->selectType(type);
        m_form->selectDevice(device);
        rows.emplace_back((*m_form)->createAdapterFromSettings());
    }
    for (const int row : {0, 1, 2, 3, 2, 1, 0, 3, 0}) {
        (*m_form)->setCurrentAdapter(rows[row].get());
        (*m_form)->updateValues();
        const std::unique_ptr<Adapter> fromForm((*m_form)->createAdapterFromSettings());
        // Of a link the system says the rest.
        if (places[row].first == demoType)
            QCOMPARE(fromForm->getValuesAsByteArray(), rows[row]->getValuesAsByteArray());
        else
            QVERIFY(*fromForm == *rows[row]);
    }
}

QTEST_MAIN(TestCanInterfaceSystem)
#include "tst_caninterfacesystem.moc"
