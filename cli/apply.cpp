#include "cli/commands.h"
#include "cli/jobs.h"
#include "cli/nil_reasons.h"
#include "cli/outputs.h"
#include "cli/plan.h"
#include "cli/progress.h"
#include "cli/saves.h"
#include "host/names.h"
#include "script/files.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <iostream>

namespace cli
{

using script::CallOutcome;
using standin::Error;
using standin::Type;

namespace
{

constexpr const char* applyNotes = R"(
CALL is one call, or one assignment, of the host's language (docs/language.md), in which @FILE stands for a file as
whatever is declared there: an image as picture; the samples of a sound (.wav, PCM) as memoryblock, or the bytes of a file
named .raw, .dat or .bin; bytes as string. @raw:FILE takes the bytes of any file.
FILES are the picture that the method belongs to, which CALL can name "photo" (none for global methods), and what the call
names as @1, @2 ...; one more is the output: the resulting picture or string, or the picture itself as the call has left
it. With --to all files are inputs, each of a call of its own. Booleans, numbers and byref variables are printed; such
calls take any number of files too, and no output.

--save gives the bytes of a block; FILE.csv a line for each of its 32-bit numbers, FILE.png and FILE.svg a histogram.
)";

constexpr const char* applyExamples = R"(
Examples:
  pictureqvr apply 'InvertQVR(10, 10, 200, 100)' photo.jpg out.png
  pictureqvr apply 'InvertQVR.ChangeContrastQVR(0.3)' *.jpg --to 'small/{name}.png'
  pictureqvr apply 'CountColorQVR(&cFFFFFF)' *.jpg
  pictureqvr apply 'ReplaceRedChannelQVR(@2)' photo.jpg other.jpg out.png
  pictureqvr apply 'ReplaceRedChannelQVR(photo.InvertQVR)' photo.jpg out.png
  pictureqvr apply 'MergePictureQVR(@1, @2)' one.png two.png out.png
  pictureqvr apply 'FindPictureQVR(@crop.png, x, y)' photo.png
  pictureqvr apply 'CountColorsQVR(red, blue, green, count)' photo.jpg --save red=red.csv
  pictureqvr apply 'EmbeddedMaskQVR(false) = @mask.png' photo.jpg out.png
  pictureqvr apply 'ScrollQVR(100, 50, true, false)' photo.jpg out.png
  curl https://example.org/photo.jpg | pictureqvr apply InvertQVR - - --format png > out.png
  pictureqvr apply 'RenderSamplesQVR(@sound.wav, 0, 1, 800, 300, 1, &c88B5C4, &c274C5A, &c203F4E, 15)' wave.png
)";

/// What a user asks for with `pictureqvr apply`.
struct ApplyRequest
{
    std::string call;
    /// The receiver of Picture methods, what the call names as @1, @2 ..., and behind them, if anywhere, the
    /// output.
    std::vector<std::string> files;
    std::string mask;               ///< file that becomes the receiver's mask; empty: none
    std::vector<std::string> saves; ///< "NAME=FILE": where the byref memory block NAME goes
    OutputChoice output;
};

/// One call, on the files of one task.
class Application
{
public:
    Application(const HostChoice& hostChoice, const ApplyRequest& applyRequest, const Plan& callPlan,
                standin::Host& callHost, const Task& callTask, bool isOneOfMany)
        : choice(hostChoice),
          request(applyRequest),
          plan(callPlan),
          host(callHost),
          task(callTask),
          // What is a file shall hold nothing but the picture.
          lines(writesToStandardOutput(task) ? std::cerr : std::cout),
          prefix(isOneOfMany ? task.inputs.front() + ": " : "")
    {
    }

    void run()
    {
        if (plan.onPicture)
        {
            source = read(task.inputs.front());
            if (!request.mask.empty())
                source->picture.setMask(script::loadPicture(host, request.mask, choice.storage));
        }
        const CallOutcome outcome = call();
        checkLedger(host);
        deliver(outcome);
        printVariables(outcome);
    }

private:
    Source read(const std::string& argument)
    {
        return readSource(host, argument, choice.storage, request.output.quiet);
    }

    CallOutcome call()
    {
        script::CallContext context;
        context.receiverName = receiverName;
        if (source)
            context.receiver = source->picture;
        context.read = [this](const std::string& name, Type type) { return contents(name, type); };
        script::Environment environment;
        environment.storage = choice.storage;
        environment.watch = [this](const script::PluginCall& made) { return watch(made); };
        const Phase phase("calling " + plan.name, request.output.quiet);
        return script::call(plan.call, host, environment, context);
    }

    standin::Value contents(const std::string& name, Type type)
    {
        const auto number = fileNumber(name);
        const std::string& argument = number ? task.inputs.at(*number - 1) : name;
        if (type != Type::Picture)
            return script::loadFile(host, pathOf(argument), type, choice.storage);
        Source picture = read(argument);
        // What global methods make is like the first picture that they are given.
        if (!source)
            source = picture;
        return picture.picture;
    }

    /// Notes the first call that gives nil, and why.
    std::function<void(const standin::Value&)> watch(const script::PluginCall& made)
    {
        const std::string& name = made.method.declaration.name;
        const std::string reason = reasonForNil(made, choice.kind);
        const bool givesObject = made.assigned == nullptr && isObject(made.method.declaration.result);
        return [this, name, reason, givesObject](const standin::Value& result) {
            if (givesObject && result.isNil() && whyNil.empty())
                whyNil = name + " gave nil" +
                         (reason.empty() ? "; \"pictureqvr help " + name + "\" tells when it does"
                                         : ": " + reason);
        };
    }

    static bool isObject(Type type)
    {
        return type == Type::Picture || type == Type::String || type == Type::MemoryBlock;
    }

    /// Writes or prints what the call gave.
    void deliver(const CallOutcome& outcome)
    {
        const bool makesFile = outcome.type == Type::Picture || outcome.type == Type::String;
        if (makesFile && outcome.result.isNil())
            throw Error(whyNil.empty() ? outcome.name + " gave nil" : whyNil);
        if (makesFile && task.output.empty())
            throw Error(outcome.name + " needs an output file");
        if (outcome.type == Type::Picture)
            return writePicture(request.output, task.output, outcome.result.picture(),
                                source && plan.keepsAlpha ? &*source : nullptr);
        if (outcome.type == Type::String)
            return writeBytes(task.output, script::bytesOf(outcome.result.string().bytes()));
        if (outcome.type != Type::Nothing)
            lines << prefix << outcome.result.describe() << "\n";
        if (task.output.empty())
            return;
        if (!plan.onPicture)
            throw Error(outcome.name + " has nothing to write to " + task.output);
        writePicture(request.output, task.output, source->picture, &*source);
    }

    void printVariables(const CallOutcome& outcome)
    {
        std::vector<script::NamedValue> printed;
        std::map<std::string, std::string> saves = task.saves;
        for (const script::NamedValue& variable : outcome.variables)
        {
            const auto wanted = std::find_if(saves.begin(), saves.end(), [&](const auto& save) {
                return standin::sameName(save.first, variable.name);
            });
            if (wanted == saves.end())
            {
                printed.push_back(variable);
                continue;
            }
            save(variable, wanted->second);
            saves.erase(wanted);
        }
        if (!saves.empty())
            throw Error("cannot save " + saves.begin()->first + ": the call has no such byref argument");
        // What was not found has no place.
        if (outcome.type == Type::Boolean && !outcome.result.boolean())
            return;
        for (const script::NamedValue& variable : printed)
            lines << prefix << variable.name << " = " << variable.value.describe() << "\n";
    }

    static void save(const script::NamedValue& variable, const std::string& path)
    {
        const standin::MemoryBlock block = variable.value.memoryBlock();
        if (block.isNil())
            throw Error("cannot save " + variable.name + ": it is nil");
        writeBytes(path, savedBlock(variable.name, block.bytes(), path));
    }

    const HostChoice& choice;
    const ApplyRequest& request;
    const Plan& plan;
    standin::Host& host;
    const Task& task;
    std::ostream& lines;
    const std::string prefix;
    std::optional<Source> source;
    std::string whyNil;
};

std::map<std::string, std::string> savesOf(const std::vector<std::string>& entries)
{
    std::map<std::string, std::string> saves;
    for (const std::string& entry : entries)
    {
        const std::size_t end = entry.find('=');
        if (end == std::string::npos)
            throw Error("--save takes NAME=FILE, not \"" + entry + "\"");
        if (!saves.emplace(entry.substr(0, end), entry.substr(end + 1)).second)
            throw Error("--save names " + entry.substr(0, end) + " twice");
    }
    return saves;
}

void apply(const HostChoice& choice, const ApplyRequest& request)
{
    const std::map<std::string, std::string> saves = savesOf(request.saves);
    standin::Host host(choice.options());
    const Plan plan(request.call, host.registered());
    if (!plan.onPicture && !request.mask.empty())
        throw Error("--mask goes with methods of Picture");
    const std::vector<Task> tasks = plan.tasks(request.files, request.output.pattern, saves);
    checkOutputs(tasks, request.output, plan.gives == Gives::Picture);
    const bool many = tasks.size() > 1 || !request.output.pattern.empty();
    std::vector<Job> jobs;
    for (const Task& task : tasks)
        jobs.push_back({task.inputs.empty() ? "" : task.inputs.front(),
                        [&] { Application(choice, request, plan, host, task, many).run(); }});
    if (many)
        runJobs(jobs, request.output.jobs, request.output.quiet);
    else
        jobs.front().work();
}

} // namespace

void addApply(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<ApplyRequest>();
    CLI::App& command = *app.add_subcommand("apply", "Call methods on picture files");
    command.footer(std::string(applyNotes) + outputNotes + applyExamples);
    command.add_option("CALL", request->call, "The call, such as 'InvertQVR(10, 10, 200, 100)'")
        ->required()
        ->type_name("");
    command
        .add_option("FILES", request->files, "Input files, then the output file; with --to input files alone")
        ->type_name("");
    addRepeatable(command, "--save", request->saves, "NAME=FILE",
                  "Write the byref memory block NAME to FILE");
    command.add_option("--mask", request->mask, "Give the picture a mask before the call")->type_name("FILE");
    request->output.addOptions(command);
    command.callback([request, &choice] { apply(choice, *request); });
}

} // namespace cli
