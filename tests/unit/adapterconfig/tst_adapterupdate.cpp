#include "adapterupdate.h"

#include "fakefamily.h"

#include <QtTest>

using Adapter = AbstractCanAdapter;

namespace {
QVariant bitrate(const char *name, quint16 rate, double samplePoint)
{
    return QVariant::fromValue(CAN::CANBitrateDesc(QLatin1String(name), rate, samplePoint));
}

FakeAdapter *makeLink(QObject *parent)
{
    auto *adapter = new FakeAdapter(Adapter::CanAdapterSocketCan, QStringLiteral("can0"), parent);
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, false);
    adapter->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("left door"));
    adapter->setCanAdapterOption(Adapter::OptionBitrate, bitrate("250 kBit/s", 250, 0.875));
    adapter->setCanAdapterOption(Adapter::OptionFdBitrate, bitrate("2000 kBit/s", 2000, 0.8));
    return adapter;
}
} // namespace

class TestAdapterUpdate : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { CanAdapterFactory::unregisterFamily(Adapter::CanAdapterSocketCan); }

    void valuesDecide_data();
    void valuesDecide();
    void theDataBitrateCountsWithCanFd();
    void typeAndDeviceDecide();
    void whatTheFormDoesNotSetIsKept();
    void withoutABitrateTheSystemDictatesNothing_data();
    void withoutABitrateTheSystemDictatesNothing();

private:
    FakeFamily *m_family = nullptr;
};

void TestAdapterUpdate::init()
{
    Adapter::SocketCANProps props;
    props.bitrate = 250;
    m_family = FakeFamily::install(Adapter::CanAdapterSocketCan);
    m_family->props.insert(QStringLiteral("can0"), props);
}

void TestAdapterUpdate::valuesDecide_data()
{
    QTest::addColumn<int>("option");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("changes");

    QTest::newRow("same text") << int(Adapter::OptionDescription) << QVariant(QStringLiteral("left door")) << false;
    QTest::newRow("other text") << int(Adapter::OptionDescription) << QVariant(QStringLiteral("Left door")) << true;
    QTest::newRow("what the system dictates") << int(Adapter::OptionUseCanFd) << QVariant(true) << true;
    QTest::newRow("same bitrate of another list") << int(Adapter::OptionBitrate) << bitrate("250", 250, 0.0) << false;
    QTest::newRow("other bitrate") << int(Adapter::OptionBitrate) << bitrate("250 kBit/s", 125, 0.875) << true;
    QTest::newRow("no bitrate") << int(Adapter::OptionBitrate) << QVariant() << true;
    QTest::newRow("data bitrate without CAN FD") << int(Adapter::OptionFdBitrate) << bitrate("", 500, 0.0) << false;
}

void TestAdapterUpdate::valuesDecide()
{
    QFETCH(int, option);
    QFETCH(QVariant, value);
    QFETCH(bool, changes);
    QObject owner;
    const FakeAdapter *saved = makeLink(&owner);
    FakeAdapter *edited = makeLink(&owner);
    edited->setCanAdapterOption(static_cast<Adapter::AdapterOption>(option), value);
    QCOMPARE(updateWouldChange(*saved, *edited), changes);
}

void TestAdapterUpdate::theDataBitrateCountsWithCanFd()
{
    QObject owner;
    FakeAdapter *saved = makeLink(&owner);
    FakeAdapter *edited = makeLink(&owner);
    for (FakeAdapter *adapter : {saved, edited})
        adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    QVERIFY(!updateWouldChange(*saved, *edited));
    edited->setCanAdapterOption(Adapter::OptionFdBitrate, bitrate("", 500, 0.0));
    QVERIFY(updateWouldChange(*saved, *edited));
}

void TestAdapterUpdate::typeAndDeviceDecide()
{
    QObject owner;
    const FakeAdapter *saved = makeLink(&owner);
    FakeAdapter otherDevice(Adapter::CanAdapterSocketCan, QStringLiteral("can1"), nullptr);
    FakeAdapter otherType(Adapter::CanAdapterDemo, QStringLiteral("can0"), nullptr);
    for (FakeAdapter *edited : {&otherDevice, &otherType}) {
        edited->supportedOptions.clear();
        QVERIFY(updateWouldChange(*saved, *edited));
    }
}

void TestAdapterUpdate::whatTheFormDoesNotSetIsKept()
{
    QObject owner;
    FakeAdapter *saved = makeLink(&owner);
    FakeAdapter *edited = makeLink(&owner);
    saved->setCanAdapterOption(Adapter::OptionAdapterId, 7);
    saved->setCanAdapterOption(Adapter::OptionPrimary, true);
    QVERIFY(!updateWouldChange(*saved, *edited));
}

void TestAdapterUpdate::withoutABitrateTheSystemDictatesNothing_data()
{
    QTest::addColumn<int>("option");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("changes");

    QTest::newRow("CAN FD") << int(Adapter::OptionUseCanFd) << QVariant(false) << false;
    QTest::newRow("auto bus on") << int(Adapter::OptionAutoBusOn) << QVariant(true) << false;
    QTest::newRow("bitrate") << int(Adapter::OptionBitrate) << bitrate("", 0, 0.0) << false;
    QTest::newRow("data bitrate") << int(Adapter::OptionFdBitrate) << bitrate("", 0, 0.0) << false;
    QTest::newRow("text") << int(Adapter::OptionDescription) << QVariant(QStringLiteral("right door")) << true;
    QTest::newRow("device") << int(Adapter::OptionDeviceName) << QVariant(QStringLiteral("can1")) << true;
    QTest::newRow("type") << int(Adapter::OptionAdapterType) << QVariant(uint(Adapter::CanAdapterDemo)) << true;
}

void TestAdapterUpdate::withoutABitrateTheSystemDictatesNothing()
{
    QFETCH(int, option);
    QFETCH(QVariant, value);
    QFETCH(bool, changes);
    m_family->props.clear();
    QObject owner;
    FakeAdapter *saved = makeLink(&owner);
    FakeAdapter *edited = makeLink(&owner);
    for (FakeAdapter *adapter : {saved, edited}) {
        adapter->supportedOptions.append(Adapter::OptionAutoBusOn);
        adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    }
    saved->setCanAdapterOption(static_cast<Adapter::AdapterOption>(option), value);
    QCOMPARE(updateWouldChange(*saved, *edited), changes);
}

QTEST_APPLESS_MAIN(TestAdapterUpdate)
#include "tst_adapterupdate.moc"
