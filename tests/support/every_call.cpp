#include "tests/support/every_call.h"

#include "tests/reference/binary_string.h"
#include "tests/support/pictures.h"

#include <variant>

namespace
{

using standin::Host;
using standin::Picture;
using standin::Type;
using standin::Value;

} // namespace

TellingArguments::TellingArguments(reference::Picture source, PictureMaker pictureMaker)
    : pixels(std::move(source)),
      makePicture(std::move(pictureMaker))
{
    if (!makePicture)
        makePicture = [](Host& host, const reference::Picture& picture, int) {
            return upload(host, picture);
        };
}

Value TellingArguments::operator()(Host& host, const std::string& name, Type type, int position) const
{
    switch (type)
    {
    case Type::Colour:
        return position == 0 ? colourOf(pixels.at(5, 3)) : 0x30C0F0U;
    case Type::Picture:
        // The sepia filter gives up no old one.
        if (name == "DestinationPicture")
            return nullptr;
        if (name == "pic")
            return makePicture(host, reference::Picture(2, 2, pixels.at(0, 0)), position);
        return makePicture(host, pixels, position);
    case Type::String:
        return host.newString(reference::toBinaryString(pixels), standin::encodingNone);
    default:
        return standin::tellingArgument(host, name, type, position);
    }
}

std::string outcomeText(const reference::Picture& picture)
{
    std::string text = sizeText(picture.width, picture.height) + ":";
    for (const reference::Pixel& pixel : picture.pixels)
        for (const std::uint8_t byte : {pixel.red, pixel.green, pixel.blue, pixel.alpha})
            text += ' ' + std::to_string(byte);
    return text;
}

std::string outcomeText(const Value& value)
{
    if (value.isNil())
        return "nil";
    if (const auto* picture = std::get_if<Picture>(&value.held()))
    {
        if (picture->isNil())
            return "nil";
        return outcomeText(download(*picture));
    }
    if (const auto* block = std::get_if<standin::MemoryBlock>(&value.held()))
        return block->isNil() ? "nil" : std::string(block->bytes().begin(), block->bytes().end());
    if (const auto* string = std::get_if<standin::String>(&value.held()))
        return string->isNil() ? "nil" : string->bytes();
    return value.describe();
}

std::vector<std::pair<std::string, std::string>>
outcomesOfEveryCall(TestHost& host, const reference::Picture& source, const AroundCall& around)
{
    std::vector<std::pair<std::string, std::string>> outcomes;
    for (const RegisteredCall& call : everyCall(host.registered()))
    {
        const PreparedCall prepared = call.prepare(host, TellingArguments{source});
        const std::string result = outcomeText(around(call.text, prepared.run));
        outcomes.emplace_back(call.text, result);
        // What is called only to be told that something is missing shows little of the code.
        const bool isProperty = call.text.find('.') != std::string::npos;
        if ((call.result == Type::Picture && !isProperty) || call.text.ends_with(".Run as boolean"))
            EXPECT_TRUE(result != "nil" && result != "false") << call.text;
        for (const auto& [name, value] : prepared.leavings())
            outcomes.emplace_back(call.text + ", " + name, outcomeText(value));
    }
    return outcomes;
}
