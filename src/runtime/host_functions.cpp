#include "runtime/host_functions.h"

namespace qvr
{

REALresolver gResolver = nullptr;
double hostVersion = 0;
constinit HostFunctions host;

void* HostResolver::find(Name name)
{
    return gResolver == nullptr ? nullptr : gResolver(name);
}

int32_t REALGetPropValueInt32(REALobject object, const char* name)
{
    int32_t value = 0;
    return host.REALGetPropValueInt(object, name, &value) ? value : 0;
}

} // namespace qvr
