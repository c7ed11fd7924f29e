#include "builtinfamilies.h"

#include "socketcanfamily.h"
#include "tcpbusfamilies.h"

std::vector<std::unique_ptr<CanAdapterFamily>> makeBuiltInFamilies()
{
    std::vector<std::unique_ptr<CanAdapterFamily>> families;
    families.push_back(makeSocketCanFamily());
    families.push_back(makeDemoFamily());
    families.push_back(makeTcpFamily());
    return families;
}
