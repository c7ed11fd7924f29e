// Whether the overview of the adapters opens, scrolls and follows a click without a pause that a user notices, beside the
// least that the same windows could cost: one with a single adapter, and a table with ready texts.

#include "canmultiinterfacedialog.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableView>

#include <benchmark/benchmark.h>

#include <memory>

namespace {
/// A collection as one finds it where every device of a plant is listed: adapters of one type, each a port of its own
/// and active, so that each question for twins has to look at all others.
std::unique_ptr<MultiCanAdapterHandler> manyAdapters(int count)
{
    auto collection = std::make_unique<MultiCanAdapterHandler>();
    for (int i = 0; i < count; ++i) {
        AbstractCanAdapter *adapter = CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo,
                                                                          QStringLiteral("Demo"));
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, QString::number(40000 + i));
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionDescription, QStringLiteral("Station %1").arg(i));
        collection->addNewCanAdapter(adapter, false, i % 2 == 0, false);
    }
    return collection;
}

/// The overview on the screen.
struct ShownOverview
{
    explicit ShownOverview(MultiCanAdapterHandler &collection)
        : dialog(&collection, connectRequest, true, nullptr)
    {
        dialog.show();
        QCoreApplication::processEvents();
    }

    QTableView *table() const { return dialog.findChild<QTableView *>(QStringLiteral("tableView")); }

    bool connectRequest = false;
    CanMultiInterfaceDialog dialog;
};

/// Down by a row, until the end and from the start again.
void scrollOn(QTableView &table)
{
    QScrollBar *bar = table.verticalScrollBar();
    bar->setValue(bar->value() == bar->maximum() ? 0 : bar->value() + bar->singleStep());
    table.viewport()->repaint();
}

void openOverview(benchmark::State &state)
{
    const auto collection = manyAdapters(static_cast<int>(state.range(0)));
    for (auto _ : state)
        const ShownOverview overview(*collection);
}
BENCHMARK(openOverview)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond);

void scrollByARow(benchmark::State &state)
{
    const auto collection = manyAdapters(static_cast<int>(state.range(0)));
    const ShownOverview overview(*collection);
    for (auto _ : state)
        scrollOn(*overview.table());
}
BENCHMARK(scrollByARow)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void selectTheNextRow(benchmark::State &state)
{
    const int rows = static_cast<int>(state.range(0));
    const auto collection = manyAdapters(rows);
    const ShownOverview overview(*collection);
    int row = 0;
    for (auto _ : state) {
        row = (row + 1) % rows;
        overview.table()->selectRow(row);
    }
}
BENCHMARK(selectTheNextRow)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void updateTheLastAdapter(benchmark::State &state)
{
    const int rows = static_cast<int>(state.range(0));
    const auto collection = manyAdapters(rows);
    ShownOverview overview(*collection);
    overview.table()->selectRow(rows - 1);
    for (auto _ : state)
        overview.dialog.on_btnUpdateInterface_clicked();
}
BENCHMARK(updateTheLastAdapter)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

/// The table alone, with texts and check states that stand ready.
void scrollPlainTable(benchmark::State &state)
{
    const int rows = static_cast<int>(state.range(0));
    QStandardItemModel model(rows, 5);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < 5; ++column)
            model.setItem(row, column, new QStandardItem(QStringLiteral("Station %1").arg(row)));
    }
    QTableView table;
    table.setModel(&model);
    table.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table.resize(600, 500);
    table.show();
    QCoreApplication::processEvents();
    for (auto _ : state)
        scrollOn(table);
}
BENCHMARK(scrollPlainTable)->Arg(1000)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char *argv[])
{
    QStandardPaths::setTestModeEnabled(true);
    const QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    benchmark::AddCustomContext("goal", "1000 adapters: open within 500 ms, scroll by a row within 16 ms");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
