#include "cli/host_choice.h"

#include <CLI/CLI.hpp>

#include <array>
#include <filesystem>
#include <fstream>
#include <map>

namespace cli
{

namespace
{

using standin::Artefact;

const std::map<std::string, Artefact> artefacts{{"mac", Artefact::MacBundle},
                                                {"linux", Artefact::SharedObject}};
const std::map<std::string, standin::Kind> kinds{
    {"desktop", standin::Kind::Desktop}, {"console", standin::Kind::Console}, {"web", standin::Kind::Web}};
const std::map<std::string, standin::Storage> storages{{"gworld32", standin::Storage::GWorld32},
                                                       {"gworld24", standin::Storage::GWorld24},
                                                       {"bitmap", standin::Storage::Bitmap}};

/// What a file is, by its first bytes; what is no ELF file is left to the bundle's loader to judge.
Artefact artefactOf(const std::string& path)
{
    std::array<char, 4> magic{};
    std::ifstream(path, std::ios::binary).read(magic.data(), magic.size());
    return magic == std::array{'\x7F', 'E', 'L', 'F'} ? Artefact::SharedObject : Artefact::MacBundle;
}

/// Takes one of the names, in any case.
template <class Choice>
CLI::Validator oneOf(const std::map<std::string, Choice>& choices)
{
    return CLI::Validator(
        [&choices](std::string& text) -> std::string {
            const auto found = choices.find(CLI::detail::to_lower(text));
            if (found == choices.end())
                return "\"" + text + "\" is none of its values";
            text = std::to_string(static_cast<int>(found->second));
            return "";
        },
        "");
}

} // namespace

void HostChoice::addOptions(CLI::App& app)
{
    const std::string group = "Host";
    app.add_option("--plugin", plugin,
                   "Plug-in to load: a bundle or shared object (default: the one built beside)")
        ->envname("PICTUREQVR_PLUGIN")
        ->type_name("FILE")
        ->group(group);
    app.add_option("--artefact", artefact, "mac or linux (default: mac if it is built)")
        ->transform(oneOf(artefacts))
        ->type_name("NAME")
        ->group(group);
    app.add_option("--host", kind, "desktop, console or web (default: desktop)")
        ->transform(oneOf(kinds))
        ->type_name("KIND")
        ->group(group);
    app.add_option("--host-version", version, "Version that the host reports")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->group(group);
    app.add_option("--storage", storage,
                   "How loaded pictures are stored: gworld32, gworld24 or bitmap (default: as the host "
                   "stores new ones)")
        ->transform(oneOf(storages))
        ->type_name("NAME")
        ->group(group);
}

standin::Options HostChoice::options() const
{
    standin::Options options;
    if (artefact)
        options.artefact = *artefact;
    else if (!plugin.empty())
        options.artefact = artefactOf(plugin);
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
