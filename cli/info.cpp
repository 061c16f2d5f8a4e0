#include "cli/commands.h"
#include "cli/fitting_arguments.h"
#include "host/file.h"
#include "host/loaders/plugin_file.h"

#include <nlohmann/json.hpp>
#include <rapidxml/rapidxml.hpp>

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>

#include "build_info.h"

namespace cli
{

namespace
{

using nlohmann::ordered_json;

using Names = std::vector<std::string>;

/// What a bundle's property list calls its version; nothing where there is none.
std::optional<std::string> versionOf(const standin::PluginFile& file)
{
    const std::filesystem::path list =
        std::filesystem::path(file.path).parent_path().parent_path() / "Info.plist";
    if (file.artefact != standin::Artefact::MacBundle || !std::filesystem::exists(list))
        return std::nullopt;
    std::string text = standin::readText(list);
    rapidxml::xml_document<> document;
    try
    {
        document.parse<0>(text.data());
    }
    catch (const rapidxml::parse_error& error)
    {
        throw standin::Error(list.string() + ": " + error.what());
    }
    const rapidxml::xml_node<>* node = document.first_node("plist");
    node = node == nullptr ? nullptr : node->first_node("dict");
    if (node == nullptr)
        return std::nullopt;
    for (const auto* key = node->first_node("key"); key != nullptr; key = key->next_sibling("key"))
        if (const auto* value = key->next_sibling();
            value != nullptr && std::string_view(key->value()) == "CFBundleShortVersionString")
            return value->value();
    return std::nullopt;
}

/// Everything that the command tells.
struct Info
{
    standin::PluginFile file;
    std::optional<std::string> version;
    std::vector<int> layouts;
    std::size_t methods = 0;
    std::size_t globals = 0;
    std::size_t classes = 0;
    Names found;
    Names missing;
    std::optional<int> lanes; ///< nothing where the file's symbols have been removed
};

/// A plug-in asks for most of its host's functions when it needs them first.
void callEverything(standin::Host& host)
{
    for (const standin::Storage storage : standin::all<standin::Storage>)
        for (const standin::RegisteredCall& call : standin::everyCall(host.registered()))
        {
            FittingArguments arguments(host, storage);
            call.prepare(host, std::ref(arguments)).run();
        }
}

std::optional<int> lanesIn(standin::Host& host)
{
    const std::int32_t* limit = host.pluginVariable("qvrLaneLimit");
    if (limit == nullptr)
        return std::nullopt;
    constexpr int narrow = 4;
    constexpr int wide = 8;
    return *limit >= wide && __builtin_cpu_supports("avx2") ? wide : narrow;
}

Info infoOf(const standin::Options& options)
{
    Info info;
    info.file = standin::readPluginFile(options.plugin.empty() ? standin::defaultPluginPath(options.artefact)
                                                               : options.plugin);
    info.version = versionOf(info.file);
    standin::Host host(options);
    const standin::Registered& registered = host.registered();
    info.layouts = registered.announcedVersions;
    for (const standin::RegisteredClass& extension : registered.extensions)
        info.methods += extension.methods.size();
    info.globals = registered.globals.size();
    info.classes = registered.classes.size();
    callEverything(host);
    for (const std::string& name : host.lookups())
        (host.lacks(name) ? info.missing : info.found).push_back(name);
    info.lanes = lanesIn(host);
    return info;
}

void printNames(const Names& names)
{
    for (const std::string& name : names)
        std::cout << "                    " << name << "\n";
}

void print(const Info& info, const standin::Options& options, bool verbose)
{
    const auto row = [](const char* title) -> std::ostream& {
        constexpr int column = 20;
        return std::cout << std::left << std::setw(column) << title;
    };
    const bool isBundle = info.file.artefact == standin::Artefact::MacBundle;
    row("Artefact") << (isBundle ? "Mac bundle" : "Linux shared object") << "\n";
    row("File") << info.file.path << "\n";
    row("Version") << info.version.value_or("not told by the file") << "\n";
    row("Architecture") << "i386, " << (isBundle ? "Mach-O bundle" : "ELF shared object") << "\n";
    row("Size") << info.file.size << " bytes\n";
    row("Record layout") << (info.layouts.empty() ? "none" : std::to_string(info.layouts.front()))
                         << ", for a " << nameOf(options.kind) << " host of version " << std::setprecision(10)
                         << options.version << "\n";
    row("Registers") << info.methods << " methods of Picture, " << info.globals << " global methods, "
                     << info.classes << " classes\n";
    row("Host functions") << info.found.size() + info.missing.size() << " asked for, " << info.found.size()
                          << " found\n";
    if (verbose)
        printNames(info.found);
    if (!info.missing.empty())
        row("  missing") << info.missing.size() << "\n";
    printNames(info.missing);
    row("Exports") << CLI::detail::join(info.file.exports, ", ") << "\n";
    row("Imports") << info.file.imports.size() << "\n";
    if (verbose)
        printNames(info.file.imports);
    row("Processor path");
    if (info.lanes)
        std::cout << *info.lanes << " pixels at a time (" << (*info.lanes > 4 ? "AVX2" : "SSE2") << ")\n";
    else
        std::cout << "not told: the file has no symbols\n";
    row("Program") << "pictureqvr " << build::version << "\n";
}

ordered_json jsonOf(const Info& info, const standin::Options& options)
{
    const auto orNull = [](const auto& value) { return value ? ordered_json(*value) : ordered_json(); };
    return {{"artefact", nameOf(info.file.artefact)},
            {"file", info.file.path},
            {"version", orNull(info.version)},
            {"architecture", "i386"},
            {"size", info.file.size},
            {"host", {{"kind", nameOf(options.kind)}, {"version", options.version}}},
            {"layout", info.layouts.empty() ? ordered_json() : ordered_json(info.layouts.front())},
            {"methods", info.methods},
            {"globals", info.globals},
            {"classes", info.classes},
            {"hostFunctions", {{"found", info.found}, {"missing", info.missing}}},
            {"exports", info.file.exports},
            {"imports", info.file.imports},
            {"lanes", orNull(info.lanes)},
            {"program", build::version}};
}

} // namespace

void addInfo(CLI::App& app, const HostChoice& choice)
{
    struct Request
    {
        bool json = false;
        bool verbose = false;
    };
    const auto request = std::make_shared<Request>();
    CLI::App& command =
        *app.add_subcommand("info", "Tell what the plug-in is, what it needs and what it uses");
    command.add_flag("--json", request->json, "As JSON, with all names");
    command.add_flag("--verbose", request->verbose, "With the names of all functions that it asks for");
    command.callback([request, &choice] {
        const standin::Options options = choice.options();
        const Info info = infoOf(options);
        if (!request->json)
            return print(info, options, request->verbose);
        constexpr int indent = 2;
        std::cout << jsonOf(info, options).dump(indent) << "\n";
    });
}

} // namespace cli
