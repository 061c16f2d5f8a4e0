#include "cli/nil_reasons.h"

#include <vector>

namespace cli
{

using standin::Picture;
using standin::sizeText;

namespace
{

constexpr int largestSide = 32767;

std::string faultOf(const standin::Parameter& parameter, const standin::Value& argument)
{
    if (std::holds_alternative<standin::VariableArgument>(argument.held()))
        return "";
    const bool isObject = parameter.type == standin::Type::Picture ||
                          parameter.type == standin::Type::MemoryBlock ||
                          parameter.type == standin::Type::String;
    if (isObject && argument.isNil())
        return parameter.name + " is nil";
    const bool isSide =
        standin::sameName(parameter.name, "width") || standin::sameName(parameter.name, "height");
    const auto* number = std::get_if<std::int32_t>(&argument.held());
    if (isSide && number != nullptr && *number > largestSide)
        return parameter.name + " is " + std::to_string(*number) + ", and a side has at most " +
               std::to_string(largestSide) + " pixels";
    return "";
}

} // namespace

std::string faultOfSize(int width, int height)
{
    if (width < 1 || height < 1)
        return "a picture of " + sizeText(width, height) + " has no pixels";
    if (width > largestSide || height > largestSide)
        return "the picture has " + sizeText(width, height) + " pixels, and a side at most " +
               std::to_string(largestSide);
    return "";
}

std::string reasonForNil(const script::PluginCall& call, standin::Kind kind)
{
    const standin::Declaration& declaration = call.method.declaration;
    std::vector<Picture> pictures;
    if (!call.picture.isNil())
        pictures.push_back(call.picture);
    for (std::size_t index = 0; index < call.arguments.size(); ++index)
    {
        const standin::Value& argument = call.arguments[index];
        if (const std::string fault = faultOf(declaration.parameters[index], argument); !fault.empty())
            return fault;
        if (const auto* picture = std::get_if<Picture>(&argument.held()))
            pictures.push_back(*picture);
    }
    for (const Picture& picture : pictures)
        if (const std::string fault = faultOfSize(picture.width(), picture.height()); !fault.empty())
            return fault;
    for (const Picture& picture : pictures)
        if (picture.width() != pictures.front().width() || picture.height() != pictures.front().height())
            return "the pictures have different sizes, " +
                   sizeText(pictures.front().width(), pictures.front().height()) + " and " +
                   sizeText(picture.width(), picture.height());
    if (kind != standin::Kind::Desktop && call.method.flags == 0)
        return declaration.name + " is for desktop applications";
    return "";
}

} // namespace cli
