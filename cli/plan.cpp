#include "cli/plan.h"

#include "cli/suggestions.h"
#include "host/names.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>

namespace cli
{

using script::CallFailure;
using standin::Error;
using standin::Type;

namespace
{

/// Methods that change the picture that they are made on: no declaration tells it.
constexpr std::array<std::string_view, 3> changingMethods{"ScrollHorizontalQVR", "ScrollVerticalQVR",
                                                          "ScrollQVR"};
/// Its result is a picture of the alpha.
constexpr std::string_view alphaMethod = "EmbeddedMaskQVR";

bool isChanging(std::string_view name)
{
    return std::any_of(changingMethods.begin(), changingMethods.end(),
                       [name](std::string_view known) { return standin::sameName(known, name); });
}

bool isKnown(const standin::Registered& registered, const std::string& name)
{
    return standin::sameName(name, receiverName) || script::isPictureMember(registered, name) ||
           !registered.globalMethods(name).empty() || script::isFunction(name) ||
           script::hasClassMembers(name);
}

/// The highest number that a call names as "@NUMBER".
std::size_t highestFileNumber(const script::Program& call)
{
    std::size_t highest = 0;
    for (const script::NamedPlace& file : call.fileNames)
        if (const std::optional<std::size_t> number = fileNumber(file.name))
        {
            if (*number == 0)
                throw CallFailure("the files of the command line are numbered from @1", call.text,
                                  file.place.column);
            highest = std::max(highest, *number);
        }
    return highest;
}

Gives given(Type type)
{
    return type == Type::Picture ? Gives::Picture : type == Type::String ? Gives::Text : Gives::Lines;
}

std::string counted(std::size_t count)
{
    return std::to_string(count) + " input file" + (count == 1 ? "" : "s");
}

} // namespace

std::optional<std::size_t> fileNumber(const std::string& name)
{
    std::size_t number = 0;
    const char* end = name.data() + name.size();
    const auto [stopped, error] = std::from_chars(name.data(), end, number);
    if (error != std::errc() || stopped != end)
        return std::nullopt;
    return number;
}

Plan::Plan(const std::string& text, const standin::Registered& registered) : call(script::parseCall(text))
{
    const auto& node = call.block.front().node;
    const auto* assignment = std::get_if<script::Assignment>(&node);
    const script::Expression& target =
        assignment != nullptr ? assignment->target : std::get<script::Call>(node).call;
    const auto* path = std::get_if<script::Path>(&target.node);
    const script::Expression& base = path == nullptr ? target : *path->base;
    const std::string& first = std::get<script::Name>(base.node).name;
    if (!isKnown(registered, first))
        throw CallFailure(unknownName("method", first, methodNames(registered)), text, base.place.column);
    onPicture = std::any_of(call.freeNames.begin(), call.freeNames.end(), [&](const auto& free) {
        return standin::sameName(free.name, receiverName) || script::isPictureMember(registered, free.name);
    });

    name = script::lastNameIn(target);
    auto methods = registered.pictureMethods(name);
    if (methods.empty() && path == nullptr)
        methods = registered.globalMethods(name);
    if (!methods.empty())
        name = methods.front()->declaration.name;
    if (assignment != nullptr || isChanging(name) || standin::sameName(name, receiverName) ||
        standin::sameName(name, "Mask"))
        gives = Gives::Picture;
    else if (!methods.empty())
        gives = given(methods.front()->declaration.result);
    else if (script::isPictureMember(registered, name))
        gives = Gives::Lines;
    keepsAlpha = !methods.empty() && !standin::sameName(name, alphaMethod);
    needsOutput =
        assignment != nullptr || gives == Gives::Text || (gives == Gives::Picture && !isChanging(name));
}

std::size_t Plan::inputCount() const
{
    return std::max<std::size_t>(onPicture ? 1 : 0, highestFileNumber(call));
}

std::vector<Task> Plan::tasks(const std::vector<std::string>& files, const std::string& pattern,
                              const std::map<std::string, std::string>& saves) const
{
    const bool takesMany = gives == Gives::Lines && inputCount() == 1 && files.size() > 1;
    if (pattern.empty() && !takesMany)
    {
        Task task = single(files);
        task.saves = saves;
        return {task};
    }
    if (!pattern.empty())
        checkMany(files);
    // The last one may well be meant as an output.
    else if (files.size() == 2 && files.back() != standardStream && !std::filesystem::exists(files.back()))
        throw Error(name + " makes no picture that could be written to " + files.back());
    std::vector<Task> result = tasksFor(files, pattern, saves);
    for (Task& task : result)
        for (const script::NamedPlace& file : call.fileNames)
            if (!fileNumber(file.name))
                task.inputs.push_back(file.name);
    return result;
}

Task Plan::single(std::vector<std::string> files) const
{
    const std::size_t count = inputCount();
    if (files.size() < count)
        throw Error("the call needs " + counted(count) + ", " + std::to_string(files.size()) + " given");
    if (files.size() > count + 1)
        throw Error("too many files: the call reads " + std::to_string(count) + " and writes at most one, " +
                    std::to_string(files.size()) + " given; --to takes many");
    if (files.size() == count && needsOutput)
        throw Error(name + " needs an output file");
    Task task;
    if (files.size() > count)
    {
        task.output = files.back();
        files.pop_back();
        if (gives == Gives::Lines)
            throw Error(name + " makes no picture that could be written to " + task.output);
    }
    task.inputs = std::move(files);
    return task;
}

void Plan::checkMany(const std::vector<std::string>& files) const
{
    const std::size_t count = inputCount();
    if (gives == Gives::Lines)
        throw Error(name + " makes no picture that --to could name");
    if (count != 1)
        throw Error(count == 0 ? "the call reads none of the files that --to is for"
                               : "with --to each file has a call of its own, where it is @1; there is no @" +
                                     std::to_string(count));
    if (files.empty())
        throw Error("the call needs at least 1 input file");
}

} // namespace cli
