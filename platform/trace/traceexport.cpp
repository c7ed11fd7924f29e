#include "traceexport.h"

#include "tracepieces.h"

#include <QIODevice>

namespace {
/// A full disk may take a part first, and tell its error only then.
bool writeAll(QIODevice &device, const QByteArray &bytes)
{
    qint64 written = 0;
    while (written < bytes.size()) {
        const qint64 step = device.write(bytes.constData() + written, bytes.size() - written);
        if (step <= 0)
            return false;
        written += step;
    }
    return true;
}
} // namespace

TraceExport::Outcome TraceExport::run(const TraceStore &store, QIODevice &device)
{
    const quint64 generation = store.generation();
    const unsigned end = store.count();
    TracePieces pieces(store, 0);
    do {
        if (pieces.encodeNext(end) == TracePieces::Unreadable)
            return TraceUnreadable;
        if (!writeAll(device, pieces.bytes()))
            return WriteFailed;
        pieces.clearBytes();
    } while (pieces.next() < end);
    return store.generation() == generation ? Complete : TraceUnreadable;
}
