#include "tests/reference/binary_string.h"

namespace reference
{

namespace
{

constexpr std::uint32_t headerSize = 40;
constexpr std::uint32_t largestSide = 32767;

void appendNumber(std::string& text, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        text.push_back(static_cast<char>(number >> shift & 255));
}

std::uint8_t byteAt(const std::string& text, std::uint64_t position)
{
    return static_cast<std::uint8_t>(text.at(static_cast<std::size_t>(position)));
}

std::uint32_t numberAt(const std::string& text, std::uint64_t position)
{
    std::uint32_t number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 8 | byteAt(text, position + static_cast<unsigned>(i));
    return number;
}

} // namespace

std::string headerBytes(const BinaryStringHeader& header)
{
    std::string text = header.magic;
    for (const std::uint32_t number :
         {header.length, header.width, header.height, header.depth, header.dataOffset})
        appendNumber(text, number);
    text.append(16, '\0');
    return text;
}

std::string toBinaryString(const Picture& picture)
{
    const auto width = static_cast<std::uint32_t>(picture.width);
    const auto height = static_cast<std::uint32_t>(picture.height);
    std::string text =
        headerBytes({.length = headerSize + 3 * width * height, .width = width, .height = height});
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
        {
            const Pixel& pixel = picture.at(x, y);
            for (const std::uint8_t channel : {pixel.red, pixel.green, pixel.blue})
                text.push_back(static_cast<char>(channel));
        }
    return text;
}

std::optional<Picture> fromBinaryString(const std::string& text)
{
    if (text.size() < 24 || text.substr(0, 4) != "PPIC" || numberAt(text, 4) != text.size())
        return std::nullopt;
    const std::uint32_t width = numberAt(text, 8);
    const std::uint32_t height = numberAt(text, 12);
    if (width < 1 || height < 1 || width > largestSide || height > largestSide)
        return std::nullopt;
    std::uint64_t position = numberAt(text, 20);
    if (position + 3ULL * width * height > text.size())
        return std::nullopt;
    Picture picture{static_cast<int>(width), static_cast<int>(height)};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x, position += 3)
            picture.at(x, y) = {byteAt(text, position), byteAt(text, position + 1),
                                byteAt(text, position + 2)};
    return picture;
}

} // namespace reference
