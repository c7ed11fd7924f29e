#include "traceexport.h"

#include "tracepieces.h"

#include <QIODevice>

TraceExport::Outcome TraceExport::run(const TraceStore &store, QIODevice &device)
{
    const quint64 generation = store.generation();
    const unsigned end = store.count();
    TracePieces pieces(store, 0);
    do {
        if (pieces.encodeNext(end) == TracePieces::Unreadable)
            return TraceUnreadable;
        if (device.write(pieces.bytes()) != pieces.bytes().size())
            return WriteFailed;
        pieces.clearBytes();
    } while (pieces.next() < end);
    return store.generation() == generation ? Complete : TraceUnreadable;
}
