#include "cli/demo_run.h"

#include "host/names.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <array>
#include <cstring>
#include <memory>

namespace cli
{

using standin::MemoryBlock;

namespace
{

constexpr const char* photoName = "photo.jpg";
constexpr const char* soundName = "speech.wav";

/// The counters that a call has put into its variables; nothing if it has not.
std::vector<Curve> curvesIn(const standin::Arguments& arguments)
{
    constexpr std::array<const char*, 3> names{"red", "green", "blue"};
    std::vector<Curve> curves;
    for (const standin::Value& argument : arguments)
    {
        const auto* variable = std::get_if<standin::VariableArgument>(&argument.held());
        if (variable == nullptr || !std::holds_alternative<MemoryBlock>(variable->variable->held()))
            continue;
        const MemoryBlock block = variable->variable->memoryBlock();
        if (curves.size() == names.size() || block.bytes().size() != sizeof(Counters))
            return {};
        Curve& curve = curves.emplace_back(Curve{names[curves.size()], {}});
        std::memcpy(curve.counters.data(), block.data(), sizeof(Counters));
    }
    return curves.size() == names.size() ? curves : std::vector<Curve>();
}

} // namespace

DemoOutcome runExample(standin::Host& host, const DemoInputs& inputs, const std::string& name,
                       const Example& example, const TakePicture& take)
{
    DemoOutcome outcome;
    bool saves = false;
    script::Environment environment;
    environment.arguments = {example.file};
    environment.storage = inputs.storage;
    environment.path = [&](const std::string& file) { return file == soundName ? inputs.sound : file; };
    environment.readImage = [&](const std::string& file) {
        if (file != photoName)
            return media::readImage(file, inputs.photo.channels);
        outcome.opensPhoto = true;
        return inputs.photo;
    };
    environment.saveImage = [&](const std::string& file, const media::Image& image) {
        saves = true;
        take(file, image);
    };
    environment.print = [&](const std::string& line) { outcome.printed.push_back(line); };
    environment.watch =
        [&](const script::PluginCall& call) -> std::function<void(const standin::Value& result)> {
        const std::string method = call.method.declaration.name;
        if (!standin::sameName(call.instance.isNil() ? method : call.instance.definition().name, name))
            return nullptr;
        const auto timer = std::make_shared<standin::CallTimer>();
        return [&outcome, &call, method, timer](const standin::Value&) {
            outcome.calls.push_back({method, timer->times()});
            if (outcome.curves.empty())
                outcome.curves = curvesIn(call.arguments);
        };
    };
    script::run(script::parseProgram(example.text, example.file), host, environment);
    if (outcome.calls.empty())
        throw standin::Error(example.file + " never calls " + name);
    if (!saves && outcome.printed.empty())
        throw standin::Error(example.file + " shows nothing");
    return outcome;
}

} // namespace cli
