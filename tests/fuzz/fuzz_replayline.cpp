// Any bytes as a line of a recording: whatever they are, the reader agrees with the plain way of reading.

#include "plainreplayline.h"
#include "replayline.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    const QString line = QString::fromUtf8(reinterpret_cast<const char *>(bytes), static_cast<int>(size));
    if (!PlainReplayLine::agrees(parseReplayLine(line), PlainReplayLine::parse(line)))
        std::abort();
    return 0;
}
