#include "cli/commands.h"

#include "script/files.h"
#include "script/interpreter.h"
#include "script/parser.h"

namespace cli
{

using standin::Error;
using standin::Type;

namespace
{

constexpr const char* filterExamples = R"(
Examples:
  pictureqvr filter PictureSepiaQVR --set SepiaRed=40 --set SepiaGreen=20 photo.jpg out.png
  pictureqvr filter PictureLut3DQVR --set 'Table(0, 0, 0, 0)=12.5' photo.jpg out.png
)";

/// What a user asks for with `pictureqvr filter`.
struct FilterRequest
{
    std::string className;
    std::vector<std::string> settings; ///< "Property=value" or "Method(arguments)=value"
    std::string input;
    std::string output;
    bool alpha = false;
};

void filter(const HostChoice& choice, const FilterRequest& request)
{
    media::formatOf(request.output);
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
    media::writeImage(request.output, script::imageOf(result, request.alpha));
    context = {};
    instance = {};
    checkLedger(host);
}

} // namespace

void addFilter(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<FilterRequest>();
    CLI::App& command = *app.add_subcommand("filter", "Run a filter class on a picture file");
    command.footer(filterExamples);
    command.add_option("CLASS", request->className, "Name of the class")->required()->type_name("");
    command.add_option("IN", request->input, "The source picture")->required()->type_name("");
    command.add_option("OUT", request->output, "Where the result goes")->required()->type_name("");
    addRepeatable(command, "--set", request->settings, "NAME=VALUE",
                  "Set a property or an assignable method");
    command.add_flag("--alpha", request->alpha, "Save the alpha bytes too (default: opaque)");
    command.callback([request, &choice] { filter(choice, *request); });
}

} // namespace cli
