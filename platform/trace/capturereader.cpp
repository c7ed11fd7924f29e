#include "capturereader.h"

#include "pcapngformat.h"
#include "pcapngreader.h"
#include "pcapreader.h"

#include <QtEndian>

std::unique_ptr<CaptureReader> CaptureReader::make(CaptureInput &input)
{
    const uchar *start = input.peek(sizeof(quint32));
    if (start == nullptr)
        return nullptr;
    // Reads the same in both byte orders.
    if (qFromLittleEndian<quint32>(start) == Pcapng::SectionBlock)
        return PcapngReader::make(input);
    return PcapReader::make(input);
}
