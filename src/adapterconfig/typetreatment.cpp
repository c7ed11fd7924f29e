#include "typetreatment.h"

#include "adaptercontract.h"

#include <algorithm>
#include <iterator>

namespace {
using Adapter = AbstractCanAdapter;

constexpr TypeTreatment treatments[] = {
    {Adapter::CanAdapterDemo, PortPage,
     OpensPage | NoListenOnly | FixedBitrate | PortOnPortPage | DefaultPort | ShowsTimeouts},
    {Adapter::CanAdapterSystecUsb, CommonPage, ExtendedBtr},
    {Adapter::CanAdapterSystecEthernet, NetworkPage,
     OpensPage | NoListenOnly | FixedBitrate | BitrateFromFile | PortOnNetworkPage | ShowsTimeouts | ChecksAddress},
    {Adapter::CanAdapterKvaser, CommonPage, NoBtrRow},
    {Adapter::CanAdapterJanzTec, CommonPage, NoListenOnly | Terminator},
    {Adapter::CanAdapterSerialInternExtern, SerialPage, OpensPage | InternExtern},
    {Adapter::CanAdapterVelmorSerial, SerialPage, OpensPage},
    {Adapter::CanAdapterPcanAdvanced, TimingPage, 0},
    {Adapter::CanAdapterIxxatVci3, CommonPage, NoBtrRow},
    {Adapter::CanAdapterNoBtrRow19, CommonPage, NoBtrRow},
    // Reached by an address and a port, whose row may have been left on the page of another type.
    {Adapter::CanAdapterFixedNetwork20, NetworkPage,
     OpensPage | NoListenOnly | PortOnNetworkPage | HidesTimeouts | ChecksAddress | NoDeviceChoice},
    {Adapter::CanAdapterSystecXm3, FilterPage, OpensPage},
};
} // namespace

TypeTreatment treatmentOf(unsigned int adapterType)
{
    const auto *found = std::find_if(std::begin(treatments), std::end(treatments),
                                     [adapterType](const TypeTreatment &entry) { return entry.type == adapterType; });
    return found != std::end(treatments) ? *found : TypeTreatment{adapterType, CommonPage, 0};
}
