#include <Kestrune/adaptercontract.h>

int numberOfAdapterTypes()
{
    return CanAdapterFactory::getImplementedAdapters().size();
}
