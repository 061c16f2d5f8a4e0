#include "cli/commands.h"

#include "host/file.h"
#include "host/names.h"
#include "script/files.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <algorithm>
#include <charconv>
#include <iostream>

namespace cli
{

using script::CallOutcome;
using standin::Error;
using standin::Type;
using standin::Value;

namespace
{

constexpr const char* applyExamples = R"(
CALL is one call, or one assignment, of the host's language (docs/language.md), in which @FILE stands for a file as
whatever is declared there: an image as picture, a sound (.wav, PCM) or raw bytes as memoryblock, bytes as string.
FILES are the picture that the method belongs to, which CALL can name "photo" (none for global methods), and what the call
names as @1, @2 ...; one more is the output: the resulting picture or string, or the picture itself as the call has left
it. Booleans, numbers and byref variables are printed.

Examples:
  pictureqvr apply 'InvertQVR(10, 10, 200, 100)' photo.jpg out.png
  pictureqvr apply 'InvertQVR.ChangeContrastQVR(0.3)' photo.jpg out.png
  pictureqvr apply 'ReplaceRedChannelQVR(@2)' photo.jpg other.jpg out.png
  pictureqvr apply 'ReplaceRedChannelQVR(photo.InvertQVR)' photo.jpg out.png
  pictureqvr apply 'MergePictureQVR(@1, @2)' one.png two.png out.png
  pictureqvr apply 'FindPictureQVR(@crop.png, x, y)' photo.png
  pictureqvr apply 'CountColorsQVR(red, blue, green, count)' photo.jpg --save red=red.dat
  pictureqvr apply 'EmbeddedMaskQVR(false) = @mask.png' photo.jpg out.png --alpha
  pictureqvr apply 'ScrollQVR(100, 50, true, false)' photo.jpg out.png
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
    bool alpha = false;             ///< save the alpha byte too
};

/// What calls name the picture that they are made on.
constexpr const char* receiverName = "photo";

/// 2 for "2", nothing for a name that is no number.
std::optional<std::size_t> fileNumber(const std::string& name)
{
    std::size_t number = 0;
    const char* end = name.data() + name.size();
    const auto [stopped, error] = std::from_chars(name.data(), end, number);
    if (error != std::errc() || stopped != end)
        return std::nullopt;
    return number;
}

/// The highest number that a call names as "@NUMBER".
std::size_t highestFileNumber(const script::Program& call)
{
    std::size_t highest = 0;
    for (const script::NamedPlace& file : call.fileNames)
        highest = std::max(highest, fileNumber(file.name).value_or(0));
    return highest;
}

/// Files of the command line: those that the call reads, and the one that it writes.
struct Files
{
    std::vector<std::string> inputs;
    std::string output; ///< empty: none

    Files(const std::vector<std::string>& files, std::size_t inputCount) : inputs(files)
    {
        if (files.size() < inputCount)
            throw Error("the call needs " + std::to_string(inputCount) + " input file" +
                        (inputCount == 1 ? "" : "s") + ", " + std::to_string(files.size()) + " given");
        if (files.size() > inputCount + 1)
            throw Error("too many files: the call reads " + std::to_string(inputCount) +
                        " and writes at most one, " + std::to_string(files.size()) + " given");
        if (files.size() == inputCount)
            return;
        output = files.back();
        inputs.pop_back();
    }
};

void printVariables(const CallOutcome& outcome, std::vector<std::string> saves)
{
    for (const script::NamedValue& variable : outcome.variables)
    {
        const auto wanted = std::find_if(saves.begin(), saves.end(), [&](const std::string& entry) {
            return standin::sameName(entry.substr(0, entry.find('=')), variable.name);
        });
        if (wanted == saves.end())
        {
            std::cout << variable.name << " = " << variable.value.describe() << "\n";
            continue;
        }
        const standin::MemoryBlock block = variable.value.memoryBlock();
        if (block.isNil())
            throw Error("cannot save " + variable.name + ": it is nil");
        standin::writeFile(wanted->substr(wanted->find('=') + 1), block.bytes());
        saves.erase(wanted);
    }
    if (!saves.empty())
        throw Error("cannot save " + saves.front() + ": the call has no such byref argument");
}

/// Writes or prints what a call gave.
void deliver(const CallOutcome& outcome, const standin::Picture& receiver, const Files& files, bool alpha)
{
    const bool makesFile = outcome.type == Type::Picture || outcome.type == Type::String;
    if (makesFile && outcome.result.isNil())
        throw Error(outcome.name + " gave nil");
    if (outcome.type == Type::Picture)
        return media::writeImage(files.output, script::imageOf(outcome.result.picture(), alpha));
    if (outcome.type == Type::String)
        return standin::writeFile(files.output, script::bytesOf(outcome.result.string().bytes()));
    if (outcome.type != Type::Nothing)
        std::cout << outcome.result.describe() << "\n";
    // A method without a picture to give may have changed its own.
    if (!files.output.empty() && !receiver.isNil())
        media::writeImage(files.output, script::imageOf(receiver, alpha));
}

/// What is known of a call before it is made.
struct Plan
{
    bool onPicture = false; ///< it needs a picture that it is made on
    bool assigns = false;
    std::string name; ///< what gives the result, as declared
    Type type = Type::Nothing;

    Plan(const script::Program& call, const standin::Registered& registered)
        : assigns(std::holds_alternative<script::Assignment>(call.block.front().node))
    {
        const auto& node = call.block.front().node;
        const script::Expression& target =
            assigns ? std::get<script::Assignment>(node).target : std::get<script::Call>(node).call;
        const auto* path = std::get_if<script::Path>(&target.node);
        const std::string first =
            std::get<script::Name>(path == nullptr ? target.node : path->base->node).name;
        name = path == nullptr ? first : path->members.back().name;
        if (!isKnown(registered, first))
            throw Error("there is no method " + first + "; \"pictureqvr list\" shows all");
        onPicture = std::any_of(call.freeNames.begin(), call.freeNames.end(), [&](const auto& free) {
            return standin::sameName(free.name, receiverName) ||
                   script::isPictureMember(registered, free.name);
        });
        auto methods = registered.pictureMethods(name);
        if (methods.empty() && path == nullptr)
            methods = registered.globalMethods(name);
        if (methods.empty())
            return;
        name = methods.front()->declaration.name;
        if (!assigns)
            type = methods.front()->declaration.result;
    }

    /// Refuses outputs that cannot work before anything is computed.
    void checkOutput(const std::string& output) const
    {
        const bool makesPicture = type == Type::Picture || (onPicture && type != Type::String);
        if (output.empty() && (type == Type::Picture || type == Type::String || assigns))
            throw Error(name + " needs an output file");
        if (!output.empty() && !onPicture && type != Type::Picture && type != Type::String)
            throw Error(name + " has nothing to write to " + output);
        if (!output.empty() && makesPicture)
            media::formatOf(output);
    }

private:
    static bool isKnown(const standin::Registered& registered, const std::string& name)
    {
        return standin::sameName(name, receiverName) || script::isPictureMember(registered, name) ||
               !registered.globalMethods(name).empty() || script::isFunction(name) ||
               script::hasClassMembers(name);
    }
};

void apply(const HostChoice& choice, const ApplyRequest& request)
{
    const script::Program call = script::parseCall(request.call);
    for (const std::string& entry : request.saves)
        if (entry.find('=') == std::string::npos)
            throw Error("--save takes NAME=FILE, not \"" + entry + "\"");
    standin::Host host(choice.options());
    const Plan plan(call, host.registered());
    const Files files(request.files, std::max<std::size_t>(plan.onPicture ? 1 : 0, highestFileNumber(call)));
    plan.checkOutput(files.output);

    standin::Picture receiver;
    if (plan.onPicture)
    {
        receiver = script::loadPicture(host, files.inputs.front(), choice.storage);
        if (!request.mask.empty())
            receiver.setMask(script::loadPicture(host, request.mask, choice.storage));
    }
    else if (!request.mask.empty())
        throw Error("--mask goes with methods of Picture");

    script::CallContext context;
    context.receiverName = receiverName;
    if (!receiver.isNil())
        context.receiver = receiver;
    context.read = [&](const std::string& name, Type type) {
        const auto number = fileNumber(name);
        if (number && *number == 0)
            throw Error("the files of the command line are numbered from @1");
        return script::loadFile(host, number ? files.inputs[*number - 1] : name, type, choice.storage);
    };
    script::Environment environment;
    environment.storage = choice.storage;
    const CallOutcome outcome = script::call(call, host, environment, context);
    checkLedger(host);
    if (files.output.empty() && (outcome.type == Type::Picture || outcome.type == Type::String))
        throw Error(outcome.name + " needs an output file");
    deliver(outcome, receiver, files, request.alpha);
    printVariables(outcome, request.saves);
}

} // namespace

void addApply(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<ApplyRequest>();
    CLI::App& command = *app.add_subcommand("apply", "Call methods on picture files");
    command.footer(applyExamples);
    command.add_option("CALL", request->call, "The call, such as 'InvertQVR(10, 10, 200, 100)'")
        ->required()
        ->type_name("");
    command.add_option("FILES", request->files, "Input files, then the output file")->type_name("");
    addRepeatable(command, "--save", request->saves, "NAME=FILE",
                  "Write the byref memory block NAME to FILE");
    command.add_option("--mask", request->mask, "Give the picture a mask before the call")->type_name("FILE");
    command.add_flag("--alpha", request->alpha, "Save the alpha bytes too (default: opaque)");
    command.callback([request, &choice] { apply(choice, *request); });
}

} // namespace cli
