#include "interfaceform.h"

// The adapter that the form makes of what its controls say.
class TestCanInterfaceAdapter : public QObject
{
    Q_OBJECT

private slots:
    void adapterGetsItsTypeAndDevice();
    void adapterGetsOnlyWhatItSupports();
    void adapterGetsEveryOptionThatItSupports();
    void adapterGetsListenOnlyWithoutTheOption();
    void withoutAdapterThereIsNone();
    void madeAdapterHidesTheChange();
    void madeAdapterBelongsToTheCaller();
};

namespace {
using Adapter = AbstractCanAdapter;
} // namespace

void TestCanInterfaceAdapter::adapterGetsItsTypeAndDevice()
{
    const InterfaceForm form;
    const QString device = QStringLiteral("Leaf|serial 7");
    InterfaceForm::family(9)->deviceMap = {{device, 0}};
    form.selectType(9);
    const std::unique_ptr<Adapter> adapter(form->createAdapterFromSettings());
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionAdapterType), QVariant(9U));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionDeviceName), QVariant(device));
}

void TestCanInterfaceAdapter::adapterGetsOnlyWhatItSupports()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->create = [](const QString &device) {
        auto *adapter = new FakeAdapter(Adapter::CanAdapterPcanBasic, device);
        adapter->supportedOptions = {Adapter::OptionDescription, Adapter::OptionAdapterName};
        return adapter;
    };
    form.selectType(2);
    form.edit("leDescription")->setText(QStringLiteral("mine"));
    form.edit("le_port")->setText(QStringLiteral("7"));
    const std::unique_ptr<Adapter> adapter(form->createAdapterFromSettings());
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionDescription), QVariant(QStringLiteral("mine")));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionAdapterName), QVariant(QStringLiteral("Type 2 - First")));
    QVERIFY(!adapter->getCanAdapterOption(Adapter::OptionPort).isValid());
}

void TestCanInterfaceAdapter::adapterGetsEveryOptionThatItSupports()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->create = [](const QString &device) {
        auto *adapter = new FakeAdapter(Adapter::CanAdapterPcanBasic, device);
        adapter->supportedOptions.clear();
        for (unsigned int option = 0; option < Adapter::optionCount; ++option)
            adapter->supportedOptions.prepend(static_cast<Adapter::AdapterOption>(option));
        return adapter;
    };
    const std::unique_ptr<Adapter> adapter(form->createAdapterFromSettings());
    for (unsigned int option = 0; option < Adapter::optionCount; ++option) {
        const auto key = static_cast<Adapter::AdapterOption>(option);
        QCOMPARE(adapter->getCanAdapterOption(key), form.value(key));
    }
}

void TestCanInterfaceAdapter::adapterGetsListenOnlyWithoutTheOption()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->create = [](const QString &device) {
        auto *adapter = new FakeAdapter(Adapter::CanAdapterPcanBasic, device);
        adapter->supportedOptions.clear();
        return adapter;
    };
    form.selectType(2);
    form.box("cbListenOnly")->setEnabled(false);
    form.box("cbListenOnly")->setChecked(true);
    const std::unique_ptr<Adapter> adapter(form->createAdapterFromSettings());
    QVERIFY(adapter->listenOnly);
    QVERIFY(!adapter->getCanAdapterOption(Adapter::OptionListenOnly).isValid());
}

void TestCanInterfaceAdapter::withoutAdapterThereIsNone()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->create = [](const QString &) { return nullptr; };
    form.selectType(2);
    QVERIFY(form->createAdapterFromSettings().isNull());
}

void TestCanInterfaceAdapter::madeAdapterHidesTheChange()
{
    const InterfaceForm form;
    form.selectType(2);
    form.label("lblAdapterChanged")->show();
    const std::unique_ptr<Adapter> adapter(form->createAdapterFromSettings());
    QVERIFY(!form.isShown("lblAdapterChanged"));
}

void TestCanInterfaceAdapter::madeAdapterBelongsToTheCaller()
{
    const InterfaceForm form;
    form.selectType(2);
    const QPointer<Adapter> adapter = form->createAdapterFromSettings();
    QCOMPARE(adapter->parent(), nullptr);
    delete adapter;
}

QTEST_MAIN(TestCanInterfaceAdapter)
#include "tst_caninterfaceadapter.moc"
