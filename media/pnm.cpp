#include "media/pnm.h"

#include "host/error.h"

#include <algorithm>
#include <limits>

namespace media
{

namespace
{

using standin::Error;

constexpr std::string_view greySignature = "P5";
constexpr std::string_view colourSignature = "P6";
constexpr std::uint32_t largestLevel = 255;

bool isSpace(std::uint8_t byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// The next number of a header, with the byte behind it. In front of it may stand spaces, and comments to the
/// ends of their lines.
std::uint32_t headerNumber(Reader& rest)
{
    constexpr std::uint32_t base = 10;
    constexpr std::uint32_t most = 1U << 24;
    bool inComment = false;
    std::uint8_t byte = 0;
    do
    {
        byte = rest.byte();
        inComment = byte == '#' || (inComment && byte != '\n');
    }
    while ((inComment || isSpace(byte)) && !rest.atEnd());
    std::uint32_t number = 0;
    for (; !inComment && byte >= '0' && byte <= '9' && number < most; byte = rest.byte())
        number = number * base + (byte - '0');
    if (number == 0 || number >= most)
        throw Error("a header with impossible numbers");
    return number;
}

} // namespace

bool isPnm(ByteView file)
{
    return startsWith(file, greySignature) || startsWith(file, colourSignature);
}

Image decodedPnm(ByteView file)
{
    constexpr int colours = 3;
    Reader rest(file.subspan(greySignature.size()), std::endian::big);
    const std::uint32_t width = headerNumber(rest);
    const std::uint32_t height = headerNumber(rest);
    const std::uint32_t largest = headerNumber(rest);
    if (largest > std::numeric_limits<std::uint16_t>::max())
        throw Error("levels of more than 16 bits");
    const bool isWide = largest > largestLevel;
    Image image{static_cast<int>(width),
                static_cast<int>(height),
                startsWith(file, colourSignature) ? colours : 1,
                {}};
    const std::uint64_t levels = std::uint64_t{width} * height * static_cast<unsigned>(image.channels);
    if (levels * (isWide ? 2 : 1) > rest.remainder().size())
        throw Error("fewer pixels than its header says");
    image.bytes.reserve(static_cast<std::size_t>(levels));
    while (image.bytes.size() < levels)
    {
        const std::uint32_t level =
            std::min<std::uint32_t>(isWide ? rest.number<std::uint16_t>() : rest.byte(), largest);
        image.bytes.push_back(static_cast<std::uint8_t>((level * largestLevel + largest / 2) / largest));
    }
    return image;
}

std::vector<std::uint8_t> encodedPnm(const Image& image, Format format)
{
    const bool grey = format != Format::ppm && isGrey(image);
    if (format == Format::pgm && !grey)
        throw Error("PGM holds levels of grey, and the picture has colours");
    const std::string header = std::string(grey ? greySignature : colourSignature) + "\n" +
                               std::to_string(image.width) + " " + std::to_string(image.height) + "\n" +
                               std::to_string(largestLevel) + "\n";
    const Image levels = channelsOf(image, 0, grey ? 1 : 3);
    std::vector<std::uint8_t> file(header.begin(), header.end());
    file.insert(file.end(), levels.bytes.begin(), levels.bytes.end());
    return file;
}

} // namespace media
