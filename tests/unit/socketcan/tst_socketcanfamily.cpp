#include "socketcanfamily.h"

#include <QtTest>

using Adapter = AbstractCanAdapter;

namespace {
constexpr Adapter::CanAdapterType type = Adapter::CanAdapterSocketCan;
const QString noLink = QStringLiteral("nolink0");

QList<int> rates(const QList<CAN::CANBitrateDesc> &list)
{
    QList<int> numbers;
    for (const CAN::CANBitrateDesc &entry : list)
        numbers.append(entry.bitrate);
    return numbers;
}
} // namespace

/// What holds with and without CAN links.
class TestSocketCanFamily : public QObject
{
    Q_OBJECT

private slots:
    void familyIsTheFirstOfTheFactory();
    void systemSaysNothingOfALinkThatIsNotThere();
    void bitratesRiseWithoutRepetition();
    void administratorSetsTheBitrate();
    void adapterIsNamedAfterItsLink();
    void familyComesAndGoes();
};

void TestSocketCanFamily::familyIsTheFirstOfTheFactory()
{
    QCOMPARE(CanAdapterFactory::getImplementedAdapters().value(0).first, QStringLiteral("SocketCAN"));
    QCOMPARE(CanAdapterFactory::getImplementedAdapters().value(0).second, type);
}

void TestSocketCanFamily::systemSaysNothingOfALinkThatIsNotThere()
{
    for (const QString &device : {noLink, QString(), QString(1000, QLatin1Char('x'))}) {
        const Adapter::SocketCANProps props = CanAdapterFactory::getSocketCanProps(device);
        QVERIFY(props == (Adapter::SocketCANProps{false, 0, 0, 0}));
        QVERIFY(!props.toQVariant().isValid());
        QVERIFY(!CanAdapterFactory::isInterfaceFd(type, device));
    }
    QVERIFY(!CanAdapterFactory::getAdvInterfaceList(type).contains(noLink));
}

void TestSocketCanFamily::bitratesRiseWithoutRepetition()
{
    for (const QList<CAN::CANBitrateDesc> &list :
         {CanAdapterFactory::getSupportedBitrates(type, false), CanAdapterFactory::getSupportedBitrates(type, true),
          CanAdapterFactory::getSupportedFDBitrates(type)}) {
        const QList<int> numbers = rates(list);
        QVERIFY(numbers.contains(1000));
        QVERIFY(!numbers.contains(0));
        QVERIFY(std::is_sorted(numbers.begin(), numbers.end(), std::less_equal<>()));
        QCOMPARE(list.first().name, QStringLiteral("%1 kBit/s").arg(numbers.first()));
    }
}

void TestSocketCanFamily::administratorSetsTheBitrate()
{
    QVERIFY(!CanAdapterFactory::isBaudrateChangeable(type));
    QVERIFY(!CanAdapterFactory::isCANClassicBaudrateSettingAvailable(type));
    QVERIFY(!CanAdapterFactory::isCANFDBaudrateSettingAvailable(type));
    QVERIFY(!CanAdapterFactory::isAdditionalConfigAvailable(type));
    QVERIFY(!CanAdapterFactory::canDisableAutoBusOn(type, noLink));
    QVERIFY(!CanAdapterFactory::isInterfaceLowSpeed(type, noLink));
}

void TestSocketCanFamily::adapterIsNamedAfterItsLink()
{
    const std::unique_ptr<Adapter> adapter(CanAdapterFactory::createCanAdapter(type, QStringLiteral("can0|mcp251xfd")));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionAdapterName).toString(), QStringLiteral("SocketCAN - can0"));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString(), QStringLiteral("can0|mcp251xfd"));
}

void TestSocketCanFamily::familyComesAndGoes()
{
    for (int round = 0; round < 20; ++round) {
        const auto family = makeSocketCanFamily();
        QCOMPARE(family->type(), type);
    }
}

QTEST_GUILESS_MAIN(TestSocketCanFamily)
#include "tst_socketcanfamily.moc"
