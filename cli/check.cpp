#include "cli/commands.h"
#include "cli/progress.h"
#include "cli/trial.h"
#include "host/loaders/plugin.h"
#include "host/loaders/plugin_file.h"

#include <algorithm>
#include <iostream>
#include <sstream>

#include "catalogue_text.h"

namespace cli
{

namespace
{

constexpr const char* checkFooter = R"(
The plug-in is registered on hosts of every kind and of the versions at which something changes, compared with the
catalogue that this program was built with, and everything that it has is called once on pictures of every storage.
Each finding is a line: what is missing, superfluous or wrong in what is registered; what is asked of the system that a
host need not have; calls that crash, hang, give nil or raise exceptions; objects, locks and memory that are kept; bytes
written outside of pictures and blocks; sources that are changed. The exit code is 1 when there are findings. --host
and --host-version check on one kind of host or version only.

What is checked runs, in processes of its own, with your rights: do not check what you would not start.

Examples:
  pictureqvr check PictureQVR.bundle
  pictureqvr check --host console PictureQVR.so
)";

/// Right below and at every version from which on hosts are told something else.
constexpr double tellingVersions[] = {2010.0289, 2010.029, 2011.999, 2012.0,
                                      2012.999,  2013.0,   2013.029, 2013.03};

std::vector<std::string> catalogue()
{
    std::vector<std::string> lines;
    std::istringstream text(catalogueText);
    for (std::string line; std::getline(text, line);)
        if (!line.empty() && !line.starts_with('#'))
            lines.push_back(line);
    return lines;
}

/// One kind or version only where the user has chosen one.
std::vector<standin::Options> hostsOf(const HostChoice& choice, bool oneKind, bool oneVersion)
{
    std::vector<standin::Kind> kinds{choice.kind};
    if (!oneKind)
        kinds.assign(standin::all<standin::Kind>.begin(), standin::all<standin::Kind>.end());
    std::vector<double> versions{choice.version};
    if (!oneVersion)
        versions.assign(std::begin(tellingVersions), std::end(tellingVersions));

    std::vector<standin::Options> hosts;
    standin::Options options = choice.options();
    // What is written elsewhere is noticed, and rows begin at all addresses.
    options.memory = standin::Memory::Guarded;
    options.padding = 12;
    options.furtherPaddings = {0, 1, 3};
    for (const standin::Kind kind : kinds)
        for (const double version : versions)
        {
            options.kind = kind;
            options.version = version;
            hosts.push_back(options);
        }
    return hosts;
}

/// What the file asks of the system beyond what hosts have.
void addImports(TrialResult& result, const standin::PluginFile& file)
{
    for (const std::string& name : file.imports)
        if (standin::findImport(name) == nullptr)
            result.findings.push_back({"the file", "imports " + name + ", which a host need not have", {}});
    for (const std::string& name : file.exports)
        if (name != "REALPluginMain")
            result.findings.push_back({"the file", "exports " + name + " beside REALPluginMain", {}});
}

/// "on desktop 2013.03, bitmap and in 17 other places".
std::string placesText(const std::vector<std::string>& places)
{
    if (places.empty())
        return "";
    const std::size_t others = places.size() - 1;
    return " on " + places.front() +
           (others == 0   ? ""
            : others == 1 ? " and in another place"
                          : " and in " + std::to_string(others) + " other places");
}

std::string counted(std::size_t count, const char* what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// What a user asks for with `pictureqvr check`.
struct CheckRequest
{
    std::string path;
    unsigned seconds = 10;
    bool oneKind = false; ///< of the host, and of its version: the chosen one
    bool oneVersion = false;
};

void check(const HostChoice& choice, const CheckRequest& request)
{
    HostChoice own = choice;
    own.plugin = request.path;
    own.artefact.reset();
    const standin::PluginFile file = standin::readPluginFile(request.path);
    const TrialPlan plan{hostsOf(own, request.oneKind, request.oneVersion), catalogue(), request.seconds};
    TrialResult result;
    {
        const ProgressBar bar(plan.hosts.size(), false);
        result = tryPlugin(plan, [&](std::size_t done) { bar.show(done); });
    }
    addImports(result, file);
    for (const Finding& finding : result.findings)
        std::cout << finding.subject << placesText(finding.places) << ": " << finding.fault << "\n";
    const std::string summary = request.path + ": " + counted(result.findings.size(), "finding") + " in " +
                                counted(static_cast<std::size_t>(result.calls), "call") + " on " +
                                counted(static_cast<std::size_t>(result.hosts), "host");
    if (!result.findings.empty())
        throw standin::Error(summary);
    std::cout << summary << "\n";
}

} // namespace

void addCheck(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<CheckRequest>();
    CLI::App& command = *app.add_subcommand("check", "Tell what is wrong with a build of the plug-in");
    command.footer(checkFooter);
    command.add_option("FILE", request->path, "The plug-in: a bundle, its binary, or a shared object")
        ->required()
        ->type_name("");
    command.add_option("--seconds", request->seconds, "How long a call may take")
        ->check(CLI::PositiveNumber.description(""))
        ->type_name("NUMBER")
        ->capture_default_str();
    command.callback([request, &app, &choice] {
        request->oneKind = app.count("--host") != 0;
        request->oneVersion = app.count("--host-version") != 0;
        check(choice, *request);
    });
}

} // namespace cli
