// Whether an editor that holds 8 MiB still answers within a frame, each duty beside the least that it could cost: the
// same bytes copied, moved or searched without an editor around them, and the same lines drawn without one.

#include "qhexedit.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPixmap>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace {
constexpr int size = 8 * 1024 * 1024;
constexpr int inserts = 1000;

QByteArray manyBytes()
{
    return QByteArray(size, 'x');
}

/// An editor on the screen, as large as a window.
struct ShownEditor
{
    explicit ShownEditor(const QByteArray &data = manyBytes())
    {
        edit.resize(800, 600);
        edit.setData(data);
        edit.show();
        QCoreApplication::processEvents();
    }

    void press(Qt::Key key, const QString &text = QString())
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(edit.widget(), &event);
    }

    QHexEdit edit;
};

void load(benchmark::State &state)
{
    ShownEditor editor{QByteArray()};
    const QByteArray data = manyBytes();
    for (auto _ : state)
        editor.edit.setData(data);
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

void loadAndPaint(benchmark::State &state)
{
    ShownEditor editor{QByteArray()};
    const QByteArray data = manyBytes();
    for (auto _ : state) {
        editor.edit.setData(data);
        QCoreApplication::processEvents();
    }
}
BENCHMARK(loadAndPaint)->Unit(benchmark::kMillisecond);

void loadByCopying(benchmark::State &state)
{
    const QByteArray data = manyBytes();
    QByteArray copy(size, '\0');
    for (auto _ : state) {
        std::memcpy(copy.data(), data.constData(), size);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(loadByCopying)->Unit(benchmark::kMillisecond);

/// @param bytes held; what is painted is as much in every case but the first
void paintAScreenAtTheEnd(benchmark::State &state)
{
    ShownEditor editor(QByteArray(int(state.range(0)), 'x'));
    QScrollBar *bar = editor.edit.verticalScrollBar();
    bar->setValue(bar->maximum());
    QWidget *view = editor.edit.widget();
    const QRect screen = view->visibleRegion().boundingRect();
    for (auto _ : state)
        benchmark::DoNotOptimize(view->grab(screen));
}
BENCHMARK(paintAScreenAtTheEnd)->Arg(64)->Arg(4096)->Arg(size)->Unit(benchmark::kMillisecond);

void paintAScreenOfPlainLines(benchmark::State &state)
{
    ShownEditor editor;
    QPixmap pixmap(editor.edit.viewport()->size());
    const QFont font = editor.edit.font();
    const int height = QFontMetrics(font).height();
    const QString line = QStringLiteral("0000 ") + QStringLiteral("78 ").repeated(16) + QString(16, QLatin1Char('x'));
    for (auto _ : state) {
        QPainter painter(&pixmap);
        painter.fillRect(pixmap.rect(), Qt::white);
        painter.setFont(font);
        for (int y = height; y < pixmap.height() + height; y += height)
            painter.drawText(0, y, line);
    }
}
BENCHMARK(paintAScreenOfPlainLines)->Unit(benchmark::kMillisecond);

void scrollByAPage(benchmark::State &state)
{
    ShownEditor editor;
    QScrollBar *bar = editor.edit.verticalScrollBar();
    for (auto _ : state) {
        bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
        QCoreApplication::processEvents();
    }
}
BENCHMARK(scrollByAPage)->Unit(benchmark::kMillisecond);

void typeAByte(benchmark::State &state)
{
    ShownEditor editor;
    editor.edit.setCursorPosition(size / 2);
    for (auto _ : state) {
        editor.press(Qt::Key_A, QStringLiteral("a"));
        editor.press(Qt::Key_B, QStringLiteral("b"));
        QCoreApplication::processEvents();
    }
}
BENCHMARK(typeAByte)->Unit(benchmark::kMillisecond);

void typeAByteAndUndo(benchmark::State &state)
{
    ShownEditor editor;
    for (auto _ : state) {
        editor.edit.setCursorPosition(size / 2);
        editor.press(Qt::Key_A, QStringLiteral("a"));
        editor.edit.undo();
        QCoreApplication::processEvents();
    }
}
BENCHMARK(typeAByteAndUndo)->Unit(benchmark::kMillisecond);

/// While someone else holds what data() gave, so that the next edit has to copy.
void typeAByteOfSharedData(benchmark::State &state)
{
    ShownEditor editor;
    for (auto _ : state) {
        const QByteArray held = editor.edit.data();
        editor.edit.setCursorPosition(size / 2);
        editor.press(Qt::Key_A, QStringLiteral("a"));
        QCoreApplication::processEvents();
    }
}
BENCHMARK(typeAByteOfSharedData)->Unit(benchmark::kMillisecond);

void replaceAByte(benchmark::State &state)
{
    ShownEditor editor;
    for (auto _ : state)
        editor.edit.replace(size / 2, 1, "y");
}
BENCHMARK(replaceAByte)->Iterations(10000)->Unit(benchmark::kMicrosecond);

void replaceAByteOfAPlainArray(benchmark::State &state)
{
    QByteArray data = manyBytes();
    for (auto _ : state) {
        data.replace(size / 2, 1, "y");
        benchmark::DoNotOptimize(data);
    }
}
BENCHMARK(replaceAByteOfAPlainArray)->Unit(benchmark::kMicrosecond);

void insertInTheMiddle(benchmark::State &state)
{
    ShownEditor editor;
    for (auto _ : state) {
        for (int i = 0; i < inserts; ++i)
            editor.edit.insert(size / 2, 'y');
    }
    state.SetItemsProcessed(state.iterations() * inserts);
}
BENCHMARK(insertInTheMiddle)->Iterations(1)->Unit(benchmark::kMillisecond);

/// Two arrays, as an editor has its flags beside the bytes.
void insertInTheMiddleOfPlainArrays(benchmark::State &state)
{
    QByteArray data = manyBytes();
    QByteArray flags = data;
    for (auto _ : state) {
        for (int i = 0; i < inserts; ++i) {
            data.insert(size / 2, 'y');
            flags.insert(size / 2, '\1');
        }
    }
    state.SetItemsProcessed(state.iterations() * inserts);
}
BENCHMARK(insertInTheMiddleOfPlainArrays)->Iterations(1)->Unit(benchmark::kMillisecond);

void search(benchmark::State &state)
{
    ShownEditor editor(manyBytes() + "needle");
    for (auto _ : state)
        benchmark::DoNotOptimize(editor.edit.indexOf("needle", 0));
}
BENCHMARK(search)->Unit(benchmark::kMillisecond);

void searchWithTheStandardLibrary(benchmark::State &state)
{
    const QByteArray data = manyBytes() + "needle";
    const QByteArray needle("needle");
    const std::boyer_moore_horspool_searcher searcher(needle.begin(), needle.end());
    for (auto _ : state)
        benchmark::DoNotOptimize(std::search(data.begin(), data.end(), searcher));
}
BENCHMARK(searchWithTheStandardLibrary)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::AddCustomContext("goal", "a frame of 16 ms for each of load, scroll, type and undo");
    benchmark::AddCustomContext("bytes", "8 MiB");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
