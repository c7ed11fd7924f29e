#include "interfaceform.h"

// The list of adapters that may be linked with the current one.
class TestCanInterfaceLinked : public QObject
{
    Q_OBJECT

private slots:
    void linkedAdaptersAreAllOthers();
    void withoutCurrentAdapterNoneIsLinked();
    void deadAdaptersAreNotLinked();
    void linkedAdapterIsShown();
};

namespace {
using Adapter = AbstractCanAdapter;

constexpr auto plainType = Adapter::CanAdapterPcanBasic;

void show(const InterfaceForm &form, Adapter *adapter)
{
    form->setCurrentAdapter(adapter);
    form->updateValues();
}
} // namespace

void TestCanInterfaceLinked::linkedAdaptersAreAllOthers()
{
    const InterfaceForm form;
    QMap<unsigned short, QPointer<Adapter>> map;
    for (const unsigned short id : {3, 1, 2}) {
        auto *adapter = new FakeAdapter(plainType, QStringLiteral("First"), &*form);
        adapter->setCanAdapterOption(Adapter::OptionAdapterId, QVariant::fromValue(id));
        adapter->setCanAdapterOption(Adapter::OptionAdapterName, QStringLiteral("Name %1").arg(id));
        map.insert(id, adapter);
    }
    map[3]->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("rear"));
    form->setAdapterMap(&map);
    form->setCurrentAdapter(map[1]);
    form->updateLinkedAdapterList();
    QCOMPARE(
        InterfaceForm::texts(form.list("cbLinkedAdapter")),
        QStringList({QStringLiteral("- - -"), QStringLiteral("2 - Name 2"), QStringLiteral("3 - Name 3 (3 - rear)")}));
    QCOMPARE(form.list("cbLinkedAdapter")->itemData(0), QVariant(0U));
    QCOMPARE(form.list("cbLinkedAdapter")->itemData(2), QVariant(3U));
}

void TestCanInterfaceLinked::withoutCurrentAdapterNoneIsLinked()
{
    const InterfaceForm form;
    FakeAdapter adapter;
    QMap<unsigned short, QPointer<Adapter>> map = {{1, &adapter}};
    form->setAdapterMap(&map);
    form->updateLinkedAdapterList();
    QCOMPARE(InterfaceForm::texts(form.list("cbLinkedAdapter")), QStringList(QStringLiteral("- - -")));
    form->setAdapterMap(nullptr);
    form->setCurrentAdapter(&adapter);
    form->updateLinkedAdapterList();
    QCOMPARE(form.list("cbLinkedAdapter")->count(), 1);
}

void TestCanInterfaceLinked::deadAdaptersAreNotLinked()
{
    const InterfaceForm form;
    FakeAdapter adapter;
    QMap<unsigned short, QPointer<Adapter>> map = {{1, nullptr}};
    form->setAdapterMap(&map);
    form->setCurrentAdapter(&adapter);
    form->updateLinkedAdapterList();
    QCOMPARE(form.list("cbLinkedAdapter")->count(), 1);
}

void TestCanInterfaceLinked::linkedAdapterIsShown()
{
    const InterfaceForm form;
    FakeAdapter adapter(plainType, QStringLiteral("First"));
    FakeAdapter partner(plainType, QStringLiteral("Second"));
    adapter.setCanAdapterOption(Adapter::OptionAdapterId, 1U);
    adapter.setCanAdapterOption(Adapter::OptionLinkedAdapter, 2U);
    partner.setCanAdapterOption(Adapter::OptionAdapterId, 2U);
    QMap<unsigned short, QPointer<Adapter>> map = {{1, &adapter}, {2, &partner}};
    form->setAdapterMap(&map);
    show(form, &adapter);
    QCOMPARE(form.value(Adapter::OptionLinkedAdapter), QVariant(2U));
    show(form, &partner);
    QCOMPARE(form.value(Adapter::OptionLinkedAdapter), QVariant(0U));
}

QTEST_MAIN(TestCanInterfaceLinked)
#include "tst_caninterfacelinked.moc"
