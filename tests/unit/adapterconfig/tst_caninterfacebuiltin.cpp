#include "bitratelists.h"
#include "caninterfacewidget.h"

#include <QtTest>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

// The form with the adapters of this system: what one of them is set to comes back from the form as it was.
class TestCanInterfaceBuiltIn : public QObject
{
    Q_OBJECT

private slots:
    void newAdapterIsNoEdit_data();
    void newAdapterIsNoEdit();
    void adapterOfTheFormIsNoEdit_data();
    void adapterOfTheFormIsNoEdit();
    void userTimingIsNoEdit();
    void gatewayHasItsPort();

private:
    using Adapter = AbstractCanAdapter;

    static void addFamilies()
    {
        QTest::addColumn<unsigned int>("type");
        QTest::addColumn<QString>("device");
        QTest::newRow("embedded bus") << unsigned(Adapter::CanAdapterDemo) << "Demo 2";
        QTest::newRow("gateway") << unsigned(Adapter::CanAdapterFixedNetwork20) << "TCP gateway";
        QTest::newRow("link") << unsigned(Adapter::CanAdapterSocketCan) << "can0";
    }
    static std::unique_ptr<Adapter> make(unsigned int type, const QString &device)
    {
        return std::unique_ptr<Adapter>(
            CanAdapterFactory::createCanAdapter(static_cast<Adapter::CanAdapterType>(type), device));
    }
    /// Shown after one of another type, as when rows of a table are selected.
    static void show(CanInterfaceWidget &form, Adapter *adapter)
    {
        const std::unique_ptr<Adapter> other = make(Adapter::CanAdapterDemo, QStringLiteral("Demo 1"));
        form.setCurrentAdapter(other.get());
        form.updateValues();
        form.setCurrentAdapter(adapter);
        form.updateValues();
    }
    static bool isEdit(CanInterfaceWidget &form, const Adapter &adapter)
    {
        const std::unique_ptr<Adapter> fromForm(form.createAdapterFromSettings());
        return !fromForm || *fromForm != adapter;
    }
};

void TestCanInterfaceBuiltIn::newAdapterIsNoEdit_data()
{
    addFamilies();
}

void TestCanInterfaceBuiltIn::newAdapterIsNoEdit()
{
    QFETCH(unsigned int, type);
    QFETCH(QString, device);
    const std::unique_ptr<Adapter> adapter = make(type, device);
    CanInterfaceWidget form;
    show(form, adapter.get());
    const std::unique_ptr<Adapter> fromForm(form.createAdapterFromSettings());
    QVERIFY(fromForm != nullptr);
    for (const Adapter::AdapterOption option : adapter->getSupportedOptions()) {
        // Of a link the system says CAN FD, bus on and bitrates.
        const bool system = type == Adapter::CanAdapterSocketCan
            && (option == Adapter::OptionUseCanFd || option == Adapter::OptionAutoBusOn
                || option == Adapter::OptionBitrate || option == Adapter::OptionFdBitrate);
        if (!system)
            QCOMPARE(fromForm->getCanAdapterOption(option), adapter->getCanAdapterOption(option));
    }
    QVERIFY(!isEdit(form, *adapter));
}

void TestCanInterfaceBuiltIn::adapterOfTheFormIsNoEdit_data()
{
    addFamilies();
}

void TestCanInterfaceBuiltIn::adapterOfTheFormIsNoEdit()
{
    QFETCH(unsigned int, type);
    CanInterfaceWidget form;
    // Only then it lists that no adapter is linked.
    form.updateValues();
    form.show();
    auto *types = form.findChild<QComboBox *>(QStringLiteral("cbCanInterfaceType"));
    types->setCurrentIndex(types->findData(type));
    const std::unique_ptr<Adapter> adapter(form.createAdapterFromSettings());
    show(form, adapter.get());
    QVERIFY(!isEdit(form, *adapter));
}

void TestCanInterfaceBuiltIn::userTimingIsNoEdit()
{
    const std::unique_ptr<Adapter> adapter = make(Adapter::CanAdapterDemo, QStringLiteral("Demo 2"));
    CAN::CANClassicBusParameter classic;
    classic.bitrate = 333;
    classic.name = QStringLiteral("odd");
    classic.userDefined = true;
    CAN::CANFDBusParameter data;
    data.bitrate = 3333;
    data.name = QStringLiteral("fast");
    data.userDefined = true;
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    adapter->setCanAdapterOption(Adapter::OptionClassicBusParameter, QVariant::fromValue(classic));
    adapter->setCanAdapterOption(Adapter::OptionFdBusParameter, QVariant::fromValue(data));
    adapter->setCanAdapterOption(Adapter::OptionBitrate, BitrateLists::UserBitrateMarker);
    adapter->setCanAdapterOption(Adapter::OptionFdBitrate, BitrateLists::UserBitrateMarker);
    CanInterfaceWidget form;
    show(form, adapter.get());
    const std::unique_ptr<Adapter> fromForm(form.createAdapterFromSettings());
    for (const Adapter::AdapterOption option : adapter->getSupportedOptions())
        QCOMPARE(fromForm->getCanAdapterOption(option), adapter->getCanAdapterOption(option));
}

void TestCanInterfaceBuiltIn::gatewayHasItsPort()
{
    CanInterfaceWidget form;
    auto *types = form.findChild<QComboBox *>(QStringLiteral("cbCanInterfaceType"));
    auto *port = form.findChild<QLineEdit *>(QStringLiteral("le_port"));
    form.show();
    types->setCurrentIndex(types->findData(unsigned(Adapter::CanAdapterDemo)));
    QVERIFY(port->isVisible());
    types->setCurrentIndex(types->findData(unsigned(Adapter::CanAdapterFixedNetwork20)));
    QVERIFY(port->isVisible());
}

QTEST_MAIN(TestCanInterfaceBuiltIn)
#include "tst_caninterfacebuiltin.moc"
