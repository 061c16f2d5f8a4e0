#pragma once

#include "host/host.h"

#include <optional>
#include <string>

namespace CLI
{
class App;
}

namespace cli
{

/// The environment variable that names a plug-in.
inline constexpr const char* pluginVariable = "PICTUREQVR_PLUGIN";

/// Which plug-in the stand-in host loads, and which host it stands in for.
struct HostChoice
{
    std::string plugin;
    std::optional<standin::Artefact> artefact;
    standin::Kind kind = standin::Kind::Desktop;
    double version = 2013.03;
    std::optional<standin::Storage>
        storage; ///< of pictures that are loaded; results are stored as the host likes

    void addOptions(CLI::App& app);
    standin::Options options() const;
};

/// Throws standin::Error when the plug-in has kept or broken something.
void checkLedger(const standin::Host& host);

} // namespace cli
