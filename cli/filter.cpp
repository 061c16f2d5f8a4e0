#include "cli/commands.h"
#include "cli/cube_look.h"
#include "cli/jobs.h"
#include "cli/nil_reasons.h"
#include "cli/outputs.h"
#include "cli/progress.h"
#include "cli/suggestions.h"
#include "script/files.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <iostream>
#include <optional>

namespace cli
{

using standin::Error;
using standin::Type;

namespace
{

constexpr const char* filterNotes = R"(
FILES are the source picture and the result, or with --to any number of source pictures.

--cube fills the table of PictureLut3DQVR from a .cube file, one for each channel or one for all three or both, and tells
how far the class's results are from it. --code prints a program that fills the table likewise, and takes no FILES.
)";

constexpr const char* filterExamples = R"(
Examples:
  pictureqvr filter PictureSepiaQVR --set SepiaRed=40 --set SepiaGreen=20 photo.jpg out.png
  pictureqvr filter PictureLut3DQVR --set 'Table(0, 0, 0, 0)=12.5' photo.jpg out.png
  pictureqvr filter PictureLut3DQVR --cube look.cube photo.jpg out.jpg
  pictureqvr filter PictureLut3DQVR --cube look.cube --code > look.bas
  pictureqvr filter PictureSepiaQVR *.jpg --to 'sepia/{name}.jpg' --quality 90
)";

/// What a user asks for with `pictureqvr filter`.
struct FilterRequest
{
    std::string className;
    std::vector<std::string> settings; ///< "Property=value" or "Method(arguments)=value"
    std::string cube;                  ///< file with the table; empty: none
    bool printsCode = false;           ///< in place of filtering
    std::vector<std::string> files;
    OutputChoice output;
};

/// What the command itself puts in and takes out.
constexpr const char* sourceName = "SourcePicture";
constexpr const char* resultName = "DestinationPicture";

/// Throws Error for what is no setting of a class.
script::Program settingOf(const std::string& text)
{
    script::Program setting = script::parseCall(text);
    const auto* assignment = std::get_if<script::Assignment>(&setting.block.front().node);
    if (assignment == nullptr)
        throw Error("\"" + text + "\" needs a value: " + text + "=VALUE");
    for (const char* own : {sourceName, resultName})
        if (standin::sameName(script::lastNameIn(assignment->target), own))
            throw Error(std::string(own) + " is a file of the command, and no setting");
    return setting;
}

std::vector<Task> tasksOf(const FilterRequest& request)
{
    const std::vector<std::string>& files = request.files;
    if (!request.output.pattern.empty())
        return tasksFor(files, request.output.pattern, {});
    if (files.size() != 2)
        throw Error("filter reads one file and writes one, " + std::to_string(files.size()) +
                    " given; --to takes many");
    return {{{files.front()}, files.back(), {}}};
}

/// The class with its settings, and pictures to try it on.
class Filter
{
public:
    Filter(const HostChoice& hostChoice, const FilterRequest& filterRequest, standin::Host& filterHost,
           const std::optional<CubeLook>& look)
        : choice(hostChoice),
          request(filterRequest),
          host(filterHost),
          instance(host.newInstance(request.className)),
          context{"filter", instance, [this](const std::string& name, Type type) {
                      return script::loadFile(host, name, type, choice.storage);
                  }}
    {
        environment.storage = choice.storage;
        if (standin::methodsNamed(instance.definition().methods, "Run").empty())
            throw Error(instance.definition().name + " has no method Run");
        if (look)
            look->putInto(instance);
        for (const std::string& setting : request.settings)
            script::call(settingOf(setting), host, environment, context);
    }

    void run(const Task& task)
    {
        const Source source = readSource(host, task.inputs.front(), choice.storage, request.output.quiet);
        instance.set(sourceName, source.picture);
        {
            const Phase phase("running " + request.className, request.output.quiet);
            if (!script::call(script::parseCall("Run"), host, environment, context).result.boolean())
                fail(".Run gave false", source);
        }
        const standin::Picture result = instance.get(resultName).picture();
        if (result.isNil())
            fail("." + std::string(resultName) + " is nil", source);
        writePicture(request.output, task.output, result, &source);
    }

private:
    [[noreturn]] void fail(const std::string& what, const Source& source) const
    {
        const std::string reason = faultOfSize(source.picture.width(), source.picture.height());
        throw Error(instance.definition().name + what + (reason.empty() ? "" : ": " + reason));
    }

    const HostChoice& choice;
    const FilterRequest& request;
    standin::Host& host;
    standin::Instance instance;
    script::CallContext context;
    script::Environment environment;
};

std::optional<CubeLook> lookOf(const FilterRequest& request)
{
    if (request.cube.empty())
    {
        if (request.printsCode)
            throw Error("--code prints the table of a file that --cube names");
        return std::nullopt;
    }
    if (!standin::sameName(request.className, CubeLook::className))
        throw Error("--cube goes with " + std::string(CubeLook::className));
    if (request.printsCode && !request.files.empty())
        throw Error("--code prints a program, and takes no files");
    return CubeLook(request.cube);
}

void filter(const HostChoice& choice, const FilterRequest& request)
{
    standin::Host host(choice.options());
    if (host.registered().findClass(request.className) == nullptr)
        throw Error(unknownName("class", request.className, classNames(host.registered())));
    const std::optional<CubeLook> look = lookOf(request);
    if (request.printsCode)
    {
        std::cout << look->program();
        return;
    }
    const std::vector<Task> tasks = tasksOf(request);
    checkOutputs(tasks, request.output, true);
    if (look && !request.output.quiet)
    {
        const Phase phase("comparing with " + request.cube, false);
        std::cerr << look->accuracy(host) << "\n";
    }
    const auto run = [&](const Task& task) {
        Filter(choice, request, host, look).run(task);
        checkLedger(host);
    };
    if (request.output.pattern.empty())
        return run(tasks.front());
    // Settings that are wrong are so for all.
    {
        const Filter trial(choice, request, host, look);
    }
    std::vector<Job> jobs;
    for (const Task& task : tasks)
        jobs.push_back({task.inputs.front(), [&run, &task] { run(task); }});
    runJobs(jobs, request.output.jobs, request.output.quiet);
}

} // namespace

void addFilter(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<FilterRequest>();
    CLI::App& command = *app.add_subcommand("filter", "Run a filter class on picture files");
    command.footer(std::string(filterNotes) + outputNotes + filterExamples);
    command.add_option("CLASS", request->className, "Name of the class")->required()->type_name("");
    command
        .add_option("FILES", request->files, "The source picture and the result, or with --to many sources")
        ->type_name("");
    addRepeatable(command, "--set", request->settings, "NAME=VALUE",
                  "Set a property or an assignable method");
    command.add_option("--cube", request->cube, "Fill the table of PictureLut3DQVR from a .cube file")
        ->type_name("FILE");
    command.add_flag("--code", request->printsCode,
                     "Print a program of the host's language that fills the table");
    request->output.addOptions(command);
    command.callback([request, &choice] {
        if (request->files.empty() && !request->printsCode)
            throw CLI::RequiredError("FILES");
        filter(choice, *request);
    });
}

} // namespace cli
