#include "cli/host_choice.h"

#include "host/loaders/plugin_file.h"

#include <CLI/CLI.hpp>

#include <filesystem>

namespace cli
{

namespace
{

using standin::Artefact;

/// An option that takes one of an enumeration's names, in any case.
template <class Enum, class Target>
CLI::Option& addNamed(CLI::App& app, const std::string& name, Target& target, const std::string& description)
{
    return *app.add_option_function<std::string>(
                   name,
                   [&target](const std::string& text) {
                       try
                       {
                           target = standin::valueNamed<Enum>(text);
                       }
                       catch (const standin::Error& error)
                       {
                           throw CLI::ValidationError(error.what());
                       }
                   },
                   description)
                ->type_name(CLI::detail::join(standin::allNames<Enum>(), "|"));
}

} // namespace

void HostChoice::addOptions(CLI::App& app)
{
    const std::string group = "Host";
    app.add_option("--plugin", plugin,
                   "Plug-in to load: a bundle or shared object (default: the one that came with it)")
        ->envname(pluginVariable)
        ->type_name("FILE")
        ->group(group);
    addNamed<Artefact>(app, "--artefact", artefact, "Which build to load (default: mac if it is there)")
        .group(group);
    addNamed<standin::Kind>(app, "--host", kind, "What kind of application it is in (default: desktop)")
        .group(group);
    app.add_option("--host-version", version, "Version that the host reports")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->group(group);
    addNamed<standin::Storage>(app, "--storage", storage,
                               "How loaded pictures are stored (default: as the host stores new ones)")
        .group(group);
}

standin::Options HostChoice::options() const
{
    standin::Options options;
    if (artefact)
        options.artefact = *artefact;
    else if (!plugin.empty())
        options.artefact = standin::artefactOf(plugin);
    else
        options.artefact = std::filesystem::exists(standin::defaultPluginPath(Artefact::MacBundle))
                               ? Artefact::MacBundle
                               : Artefact::SharedObject;
    options.plugin = plugin;
    options.kind = kind;
    options.version = version;
    options.memory = standin::Memory::Plain;
    options.logCalls = false;
    return options;
}

void checkLedger(const standin::Host& host)
{
    const standin::Ledger ledger = host.ledger();
    if (!ledger.balanced())
        throw standin::Error("the plug-in did not clean up: " + ledger.describe());
}

} // namespace cli
