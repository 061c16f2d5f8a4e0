#include "frame/registration.h"
#include "runtime/host_functions.h"

namespace qvr
{

namespace
{

/// The newest record layout that a host of this version understands.
int32_t layoutFor(double version)
{
    if (version >= 2013.03)
        return 12;
    if (version >= 2013.0)
        return 11;
    return version >= 2012.0 ? 10 : 9;
}

} // namespace

} // namespace qvr

/// The entry point: the host calls it once, when it loads the plug-in.
extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver)
{
    using namespace qvr;

    gResolver = resolver;
    if (host.REALGetRBVersion.available())
        hostVersion = host.REALGetRBVersion();
    CurrentREALControlVersion = layoutFor(hostVersion);
    host.RegisterPluginVersion(CurrentREALControlVersion);
    registerCatalogue();
}
