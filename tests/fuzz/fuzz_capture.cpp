// Any bytes as a capture: whatever comes of them goes into a trace file, and comes back from it unchanged.

#include "traceexport.h"
#include "traceimport.h"

#include <QBuffer>

#include <cstdlib>

namespace {
TraceImport::Result import(TraceStore &store, QByteArray &bytes)
{
    const std::atomic<bool> cancelled = false;
    TraceImport::Listener listener;
    listener.begins = [] {};
    listener.progressed = [](double) {};
    listener.storageFailed = [](const TraceStore::Failure &) {};
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return TraceImport(store, cancelled, listener).run(device);
}

bool haveSameNotes(const TraceStore &one, const TraceStore &other)
{
    for (unsigned i = 0; i < one.count(); ++i) {
        if (one.notes(i) != other.notes(i))
            return false;
    }
    return true;
}

void require(bool condition)
{
    if (!condition)
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    QByteArray capture(reinterpret_cast<const char *>(bytes), static_cast<int>(size));
    TraceStore store{TraceStore::Limits()};
    const TraceImport::Result result = import(store, capture);
    require(result.frames == store.count());
    require(result.position <= size);

    QByteArray file;
    QBuffer device(&file);
    device.open(QIODevice::WriteOnly);
    require(TraceExport::run(store, device) == TraceExport::Complete);
    TraceStore again{TraceStore::Limits()};
    require(import(again, file).outcome == TraceImport::Complete);
    require(again.readRange(0, again.count()) == store.readRange(0, store.count()));
    require(haveSameNotes(store, again));
    return 0;
}
