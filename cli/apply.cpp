#include "cli/apply.h"

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

void save(const standin::Picture& picture, const std::string& path, bool alpha)
{
    media::writeImage(path, script::imageOf(picture, alpha));
}

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
        return save(outcome.result.picture(), files.output, alpha);
    if (outcome.type == Type::String)
        return standin::writeFile(files.output, script::bytesOf(outcome.result.string().bytes()));
    if (outcome.type != Type::Nothing)
        std::cout << outcome.result.describe() << "\n";
    // A method without a picture to give may have changed its own.
    if (!files.output.empty() && !receiver.isNil())
        save(receiver, files.output, alpha);
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
            media::checkImageName(output);
    }

private:
    static bool isKnown(const standin::Registered& registered, const std::string& name)
    {
        return standin::sameName(name, receiverName) || script::isPictureMember(registered, name) ||
               !registered.globalMethods(name).empty() || script::isFunction(name) ||
               script::hasClassMembers(name);
    }
};

} // namespace

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

void filter(const HostChoice& choice, const FilterRequest& request)
{
    media::checkImageName(request.output);
    standin::Host host(choice.options());
    if (host.registered().findClass(request.className) == nullptr)
        throw Error("there is no class " + request.className + "; \"pictureqvr list\" shows all");
    standin::Instance instance = host.newInstance(request.className);
    script::CallContext context{"filter", instance, [&](const std::string& name, Type type) {
                                    return script::loadFile(host, name, type, choice.storage);
                                }};
    script::Environment environment;
    environment.storage = choice.storage;
    for (const std::string& setting : request.settings)
    {
        const script::Program program = script::parseCall(setting);
        if (!std::holds_alternative<script::Assignment>(program.block.front().node))
            throw Error("\"" + setting + "\" needs a value: " + setting + "=VALUE");
        script::call(program, host, environment, context);
    }
    instance.set("SourcePicture", script::loadPicture(host, request.input, choice.storage));

    if (standin::methodsNamed(instance.definition().methods, "Run").empty())
        throw Error(request.className + " has no method Run");
    if (!script::call(script::parseCall("Run"), host, environment, context).result.boolean())
        throw Error(request.className + ".Run gave false");
    const standin::Picture result = instance.get("DestinationPicture").picture();
    if (result.isNil())
        throw Error(request.className + ".DestinationPicture is nil");
    save(result, request.output, request.alpha);
    context = {};
    instance = {};
    checkLedger(host);
}

} // namespace cli
