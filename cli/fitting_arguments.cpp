#include "cli/fitting_arguments.h"

namespace cli
{

using standin::Picture;
using standin::Type;
using standin::Value;

namespace
{

/// As wide as the loops' steps and a rest, so that all of them run.
constexpr int width = 45;
constexpr int height = 7;
constexpr int partSize = 2;

/// Pixels of all colours, the same each time.
Picture picture(standin::Host& host, int pictureWidth, int pictureHeight, standin::Storage storage)
{
    Picture result = host.newPicture(pictureWidth, pictureHeight, storage);
    for (int y = 0; y < pictureHeight; ++y)
        for (int x = 0; x < pictureWidth; ++x)
            result.setPixel(
                x, y,
                {static_cast<std::uint8_t>(x * 37 + y * 11), static_cast<std::uint8_t>(x * 5 + y * 71),
                 static_cast<std::uint8_t>(x * 101 + y * 3), static_cast<std::uint8_t>(x + y * 29)});
    return result;
}

std::uint32_t colourAt(const Picture& source, int x, int y)
{
    const standin::Pixel pixel = source.pixel(x, y);
    return std::uint32_t{pixel.red} << 16 | std::uint32_t{pixel.green} << 8 | pixel.blue;
}

std::vector<std::uint8_t> contentsOf(const Value& value)
{
    if (const auto* held = std::get_if<Picture>(&value.held()); held != nullptr && !held->isNil())
        return held->rgba();
    if (const auto* held = std::get_if<standin::MemoryBlock>(&value.held());
        held != nullptr && !held->isNil())
        return {held->bytes().begin(), held->bytes().end()};
    return {};
}

} // namespace

FittingArguments::FittingArguments(standin::Host& host, standin::Storage pictureStorage)
    : storage(pictureStorage),
      whole(picture(host, width, height, storage)),
      part(picture(host, partSize, partSize, storage))
{
    if (!host.registered().globalMethods("PicturetoBinaryStringQVR").empty())
        string = host.callGlobal("PicturetoBinaryStringQVR", {whole});
}

Value FittingArguments::operator()(standin::Host& host, const std::string& name, Type type, int position)
{
    Value value;
    switch (type)
    {
    case Type::Picture:
        // A filter gives up no old result.
        if (name != "DestinationPicture")
            value = (name == "pic" ? part : whole).clone();
        break;
    case Type::Colour:
        value = colourAt(whole, 1, 1) + static_cast<std::uint32_t>(position);
        break;
    case Type::String:
        value = string;
        break;
    default:
        value = standin::tellingArgument(host, name, type, position);
        break;
    }
    given.push_back({name, value, contentsOf(value)});
    return value;
}

std::vector<std::string> FittingArguments::changed() const
{
    std::vector<std::string> names;
    for (const Given& one : given)
        if (contentsOf(one.value) != one.held)
            names.push_back(one.name);
    return names;
}

} // namespace cli
