// What the interface form costs while it is open: four times a second it makes an adapter of what its controls say and
// compares that with the one that it shows. Beside it stands what no such watch can do without: the same adapter made,
// filled and compared without a form.
//
// showAnotherAdapter is what a user waits for who selects another row of the overview.

#include "caninterfacewidget.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLineEdit>

namespace {
using Adapter = AbstractCanAdapter;

std::unique_ptr<Adapter> makeAdapter(Adapter::CanAdapterType type, const char *device)
{
    std::unique_ptr<Adapter> adapter(CanAdapterFactory::createCanAdapter(type, QString::fromLatin1(device)));
    adapter->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("gateway at the rear axle"));
    return adapter;
}

/// A form on the screen that shows the adapter.
class OpenForm
{
public:
    explicit OpenForm(Adapter *adapter)
    {
        m_form.show();
        showAdapter(adapter);
    }

    void showAdapter(Adapter *adapter)
    {
        m_form.setCurrentAdapter(adapter);
        m_form.updateValues();
        QApplication::processEvents();
    }
    void tick() { m_form.checkForChanges(); }
    void edit() { m_form.findChild<QLineEdit *>(QStringLiteral("leDescription"))->setText(QStringLiteral("edited")); }
    bool tellsOfEdit() const { return m_form.findChild<QWidget *>(QStringLiteral("lblAdapterChanged"))->isVisible(); }

private:
    CanInterfaceWidget m_form;
};

void adapterWithoutForm(benchmark::State &state)
{
    const auto shown = makeAdapter(Adapter::CanAdapterDemo, "Demo 1");
    for (auto _ : state) {
        const std::unique_ptr<Adapter> adapter(
            CanAdapterFactory::createCanAdapter(Adapter::CanAdapterDemo, QStringLiteral("Demo 1")));
        for (const Adapter::AdapterOption option : adapter->getSupportedOptions())
            adapter->setCanAdapterOption(option, shown->getCanAdapterOption(option));
        if (*adapter != *shown)
            state.SkipWithError("the adapters differ");
    }
}
BENCHMARK(adapterWithoutForm)->Unit(benchmark::kMicrosecond);

void tick(benchmark::State &state, Adapter::CanAdapterType type, const char *device)
{
    const auto adapter = makeAdapter(type, device);
    OpenForm form(adapter.get());
    for (auto _ : state) {
        form.tick();
        QApplication::processEvents();
    }
    if (form.tellsOfEdit())
        state.SkipWithError("the form tells of an edit");
}
BENCHMARK_CAPTURE(tick, Demo, Adapter::CanAdapterDemo, "Demo 1")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tick, TCP, Adapter::CanAdapterFixedNetwork20, "TCP gateway")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tick, SocketCAN, Adapter::CanAdapterSocketCan, "can0")->Unit(benchmark::kMicrosecond);

void tickWithEdit(benchmark::State &state)
{
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, "Demo 1");
    OpenForm form(adapter.get());
    form.edit();
    for (auto _ : state) {
        form.tick();
        QApplication::processEvents();
    }
    if (!form.tellsOfEdit())
        state.SkipWithError("the form tells of no edit");
}
BENCHMARK(tickWithEdit)->Unit(benchmark::kMicrosecond);

void showAnotherAdapter(benchmark::State &state)
{
    const auto first = makeAdapter(Adapter::CanAdapterDemo, "Demo 1");
    const auto second = makeAdapter(Adapter::CanAdapterFixedNetwork20, "TCP gateway");
    OpenForm form(first.get());
    for (auto _ : state) {
        form.showAdapter(second.get());
        form.showAdapter(first.get());
    }
    state.SetItemsProcessed(2 * state.iterations());
}
BENCHMARK(showAnotherAdapter)->Unit(benchmark::kMicrosecond);
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    benchmark::AddCustomContext("goal", "a tick below 1000 us");
    benchmark::AddCustomContext("baseline", "adapterWithoutForm");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
