#include "frame/registration.h"
#include "runtime/host_functions.h"

namespace qvr::frame
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

void registerPlugin()
{
    // Asked for before anything else is, though only used once the version is known.
    host.RegisterPluginVersion.available();
    if (host.REALGetRBVersion.available())
        hostVersion = host.REALGetRBVersion();
    CurrentREALControlVersion = layoutFor(hostVersion);
    host.RegisterPluginVersion(CurrentREALControlVersion);
    registerCatalogue();
}

} // namespace

} // namespace qvr::frame

/// The entry point: the host calls it once, when it loads the plug-in.
extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver)
{
    qvr::gResolver = resolver;
    qvr::frame::registerPlugin();
}
