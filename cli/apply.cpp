#include "cli/apply.h"

#include "cli/method_call.h"
#include "host/file.h"
#include "script/files.h"

#include <algorithm>
#include <charconv>
#include <iostream>

namespace cli
{

using standin::Error;
using standin::Type;
using standin::Value;

namespace
{

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
std::size_t highestFileNumber(const CallText& text)
{
    std::size_t highest = 0;
    const auto look = [&](const Term& term) {
        if (const auto* file = std::get_if<FileName>(&term))
            highest = std::max(highest, fileNumber(file->name).value_or(0));
    };
    std::for_each(text.arguments.begin(), text.arguments.end(), look);
    if (text.assigned)
        look(*text.assigned);
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

void printVariables(const MethodCall& call, std::vector<std::string> saves)
{
    for (const Variable& variable : call.variables())
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
void deliver(const MethodCall& call, const Value& result, const standin::Picture& receiver,
             const Files& files, bool alpha)
{
    const standin::Declaration& declaration = call.method().declaration;
    const Type type = call.isAssignment() ? Type::Nothing : declaration.result;
    const bool makesFile = type == Type::Picture || type == Type::String;
    if (makesFile && result.isNil())
        throw Error(declaration.name + " gave nil");
    if (type == Type::Picture)
        return save(result.picture(), files.output, alpha);
    if (type == Type::String)
        return standin::writeFile(files.output, script::bytesOf(result.string().bytes()));
    if (type != Type::Nothing)
        std::cout << result.describe() << "\n";
    // A method without a picture to give may have changed its own.
    if (!files.output.empty())
        save(receiver, files.output, alpha);
}

/// Refuses outputs that cannot work before anything is computed.
void checkOutput(const MethodCall& call, bool onPicture, const std::string& output)
{
    const standin::Declaration& declaration = call.method().declaration;
    const Type type = call.isAssignment() ? Type::Nothing : declaration.result;
    const bool makesPicture = type == Type::Picture || (onPicture && type != Type::String);
    if (output.empty() && (type == Type::Picture || type == Type::String || call.isAssignment()))
        throw Error(declaration.name + " needs an output file");
    if (!output.empty() && !onPicture && type != Type::Picture && type != Type::String)
        throw Error(declaration.name + " has nothing to write to " + output);
    if (!output.empty() && makesPicture)
        media::checkImageName(output);
}

} // namespace

void apply(const HostChoice& choice, const ApplyRequest& request)
{
    const CallText text = parseCall(request.call);
    for (const std::string& entry : request.saves)
        if (entry.find('=') == std::string::npos)
            throw Error("--save takes NAME=FILE, not \"" + entry + "\"");
    standin::Host host(choice.options());
    auto methods = host.registered().pictureMethods(text.name);
    const bool onPicture = !methods.empty();
    if (!onPicture)
        methods = host.registered().globalMethods(text.name);
    if (methods.empty())
        throw Error("there is no method " + text.name + "; \"pictureqvr list\" shows all");

    const Files files(request.files, std::max<std::size_t>(onPicture ? 1 : 0, highestFileNumber(text)));
    const MethodCall call(methods, text, [&](const std::string& name, Type type) {
        const auto number = fileNumber(name);
        if (number && *number == 0)
            throw Error("the files of the command line are numbered from @1");
        return script::loadFile(host, number ? files.inputs[*number - 1] : name, type, choice.storage);
    });
    checkOutput(call, onPicture, files.output);

    standin::Picture receiver;
    if (onPicture)
    {
        receiver = script::loadPicture(host, files.inputs.front(), choice.storage);
        if (!request.mask.empty())
            receiver.setMask(script::loadPicture(host, request.mask, choice.storage));
    }
    else if (!request.mask.empty())
        throw Error("--mask goes with methods of Picture");
    const Value result = onPicture ? call.onPicture(host, receiver) : call.global(host);
    checkLedger(host);
    deliver(call, result, receiver, files, request.alpha);
    printVariables(call, request.saves);
}

void filter(const HostChoice& choice, const FilterRequest& request)
{
    media::checkImageName(request.output);
    standin::Host host(choice.options());
    if (host.registered().findClass(request.className) == nullptr)
        throw Error("there is no class " + request.className + "; \"pictureqvr list\" shows all");
    standin::Instance instance = host.newInstance(request.className);
    const FileReader read = [&](const std::string& name, Type type) {
        return script::loadFile(host, name, type, choice.storage);
    };
    for (const std::string& setting : request.settings)
        assignTo(instance, parseCall(setting), read);
    instance.set("SourcePicture", script::loadPicture(host, request.input, choice.storage));

    const std::vector<const standin::RegisteredMethod*> run =
        standin::methodsNamed(instance.definition().methods, "Run");
    if (run.empty())
        throw Error(request.className + " has no method Run");
    if (!MethodCall(run, {"Run", {}, {}}, read).onInstance(instance).boolean())
        throw Error(request.className + ".Run gave false");
    const standin::Picture result = instance.get("DestinationPicture").picture();
    if (result.isNil())
        throw Error(request.className + ".DestinationPicture is nil");
    save(result, request.output, request.alpha);
    instance = {};
    checkLedger(host);
}

} // namespace cli
