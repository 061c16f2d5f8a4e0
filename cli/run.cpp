#include "cli/commands.h"

#include "cli/progress.h"
#include "host/file.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <map>

namespace cli
{

namespace
{

constexpr const char* runExamples = R"(
The program is written in the host's language, of which docs/language.md tells what there is. It finds its files in the
current folder; ARGUMENTS are what args(1), args(2) ... give. What goes wrong is told as FILE:LINE:COLUMN: MESSAGE.

Examples:
  pictureqvr run examples/InvertQVR.bas
  pictureqvr run examples/InvertQVR.bas --file photo.jpg=holiday/beach.jpg
)";

/// What a user asks for with `pictureqvr run`.
struct RunRequest
{
    std::string program; ///< its file
    std::vector<std::string> arguments;
    std::vector<std::string> files; ///< "NAME=PATH": where the file lies that the program calls NAME
    std::uint64_t steps = 0;        ///< after which it is stopped; 0: never
};

std::map<std::string, std::string> placesOf(const std::vector<std::string>& files)
{
    std::map<std::string, std::string> places;
    for (const std::string& entry : files)
    {
        const std::size_t end = entry.find('=');
        if (end == std::string::npos)
            throw standin::Error("--file takes NAME=PATH, not \"" + entry + "\"");
        places[entry.substr(0, end)] = entry.substr(end + 1);
    }
    return places;
}

void run(const HostChoice& choice, const RunRequest& request)
{
    const std::map<std::string, std::string> places = placesOf(request.files);
    const script::Program program = script::parseProgram(standin::readText(request.program), request.program);

    script::Environment environment;
    environment.path = [&places](const std::string& name) {
        const auto place = places.find(name);
        return place == places.end() ? name : place->second;
    };
    Phase phase("running " + request.program, false);
    environment.print = [&phase](const std::string& line) { phase.print(line); };
    environment.arguments = request.arguments;
    environment.arguments.insert(environment.arguments.begin(), request.program);
    environment.storage = choice.storage;
    environment.steps = request.steps;

    standin::Host host(choice.options());
    script::run(program, host, environment);
    checkLedger(host);
}

} // namespace

void addRun(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<RunRequest>();
    CLI::App& command = *app.add_subcommand("run", "Run a program of the host's language");
    command.footer(runExamples);
    command.add_option("FILE", request->program, "The program")->required()->type_name("");
    command.add_option("ARGUMENTS", request->arguments, "What the program is started with")->type_name("");
    addRepeatable(command, "--file", request->files, "NAME=PATH",
                  "The file that the program calls NAME lies at PATH");
    command
        .add_option("--steps", request->steps,
                    "Stop after so many statements and rounds of loops (default: never)")
        ->type_name("NUMBER");
    command.callback([request, &choice] { run(choice, *request); });
}

} // namespace cli
