#include "media/image.h"

#include "host/error.h"
#include "host/file.h"
#include "host/names.h"
#include "media/metadata.h"
#include "media/png.h"
#include "media/pnm.h"

#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string_view>

namespace media
{

using standin::Error;

namespace
{

using Bytes = std::vector<std::uint8_t>;

void collect(void* context, void* data, int size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    auto& file = *static_cast<Bytes*>(context);
    file.insert(file.end(), bytes, bytes + size);
}

struct FormatName
{
    std::string_view name;
    Format format;
};

constexpr std::array<FormatName, 8> formatNames{{{"png", Format::png},
                                                 {"jpg", Format::jpeg},
                                                 {"jpeg", Format::jpeg},
                                                 {"bmp", Format::bmp},
                                                 {"tga", Format::tga},
                                                 {"ppm", Format::ppm},
                                                 {"pgm", Format::pgm},
                                                 {"pnm", Format::pnm}}};

std::size_t byteCount(int width, int height, int channels)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels);
}

bool hasTranslucentPixel(const Image& image)
{
    constexpr std::size_t rgba = 4;
    constexpr std::uint8_t opaque = 255;
    for (std::size_t alpha = rgba - 1; alpha < image.bytes.size(); alpha += rgba)
        if (image.bytes[alpha] != opaque)
            return true;
    return false;
}

/// The image as it is looked at when its file says that it lies so.
Image upright(const Image& image, int orientation)
{
    // EXIF's numbers: 2 to 4 are turned or mirrored, and 5 to 8 lie on their side, too.
    const bool onSide = orientation >= 5;
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    Image result{onSide ? image.height : image.width,
                 onSide ? image.width : image.height,
                 image.channels,
                 {},
                 image.hasAlpha,
                 image.frames};
    result.bytes.resize(image.bytes.size());
    std::uint8_t* target = result.bytes.data();
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x, target += image.channels)
        {
            const int column = onSide ? y : x;
            const int row = onSide ? x : y;
            const std::size_t source =
                byteCount(image.width, fromBottom ? image.height - 1 - row : row, image.channels) +
                byteCount(fromRight ? image.width - 1 - column : column, 1, image.channels);
            std::copy_n(image.bytes.data() + source, image.channels, target);
        }
    return result;
}

/// With one or three channels made four.
Image withAlpha(const Image& image)
{
    constexpr std::uint8_t opaque = 255;
    Image result{image.width, image.height, 4, {}};
    result.bytes.reserve(byteCount(image.width, image.height, result.channels));
    const auto channels = static_cast<std::size_t>(image.channels);
    for (std::size_t at = 0; at < image.bytes.size(); at += channels)
        result.bytes.insert(result.bytes.end(), {image.bytes[at], image.bytes[at + channels / 2],
                                                 image.bytes[at + channels - 1], opaque});
    return result;
}

/// The pixels of an image file with four channels.
Image pixelsOf(std::span<const std::uint8_t> file)
{
    if (isPnm(file))
        return withAlpha(decodedPnm(file));
    if (!hasSoundTables(file))
        throw Error("damaged code tables");
    Image image{0, 0, 4, {}};
    int stored = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &image.width, &image.height,
                              &stored, image.channels),
        stbi_image_free);
    if (pixels == nullptr)
        throw Error(stbi_failure_reason());
    image.bytes.assign(pixels.get(), pixels.get() + byteCount(image.width, image.height, image.channels));
    // Levels of grey or colours, and alpha.
    image.hasAlpha = stored % 2 == 0 && hasTranslucentPixel(image);
    return image;
}

/// The message of an error, with more in front of it.
template <class Action>
auto withContext(const std::string& front, const std::string& back, Action action)
{
    try
    {
        return action();
    }
    catch (const Error& error)
    {
        throw Error(front + error.what() + back);
    }
}

} // namespace

Image readImage(const std::string& path, int channels)
{
    return decoded(standin::readFile(path), path, channels);
}

Image decoded(std::span<const std::uint8_t> file, const std::string& path, int channels)
{
    Image image =
        withContext(path + ": not an image that can be read (", ")", [&] { return pixelsOf(file); });
    const Metadata metadata = metadataOf(file);
    image.frames = metadata.frames;
    if (channels != image.channels)
        image = channelsOf(image, 0, channels);
    return metadata.orientation == 1 ? image : upright(image, metadata.orientation);
}

std::optional<Format> formatNamed(std::string_view name)
{
    const auto* const found =
        std::find_if(formatNames.begin(), formatNames.end(),
                     [&](const FormatName& entry) { return standin::sameName(entry.name, name); });
    return found == formatNames.end() ? std::nullopt : std::optional(found->format);
}

Format formatOf(const std::string& path)
{
    const std::string extension = std::filesystem::path(path).extension();
    const std::optional<Format> format =
        formatNamed(std::string_view(extension).substr(extension.empty() ? 0 : 1));
    if (!format)
        throw Error("cannot write " + path +
                    ": a picture's name must end in .png, .jpg, .bmp, .tga, .ppm or .pgm");
    return *format;
}

bool holdsAlpha(Format format)
{
    return format == Format::png || format == Format::bmp || format == Format::tga;
}

std::vector<std::uint8_t> encoded(const Image& image, Format format, const Encoding& encoding)
{
    Bytes file;
    const auto check = [](int written) {
        if (written == 0)
            throw Error("the picture cannot be stored in this format");
    };
    switch (format)
    {
    case Format::png:
        return encodedPng(image, encoding.pngCompression);
    case Format::jpeg:
        check(stbi_write_jpg_to_func(collect, &file, image.width, image.height, image.channels,
                                     image.bytes.data(), encoding.jpegQuality));
        break;
    case Format::bmp:
        check(stbi_write_bmp_to_func(collect, &file, image.width, image.height, image.channels,
                                     image.bytes.data()));
        break;
    case Format::tga:
        check(stbi_write_tga_to_func(collect, &file, image.width, image.height, image.channels,
                                     image.bytes.data()));
        break;
    default:
        return encodedPnm(image, format);
    }
    return file;
}

void writeImage(const std::string& path, const Image& image, const Encoding& encoding)
{
    const Format format = formatOf(path);
    standin::writeFile(path, withContext("cannot write " + path + ": ", "",
                                         [&] { return encoded(image, format, encoding); }));
}

void writePng(const std::string& path, int width, int height, std::span<const std::uint8_t> rgba)
{
    constexpr int channels = 4;
    if (rgba.size() != byteCount(width, height, channels))
        throw Error("cannot write " + path + ": its size and the number of its bytes do not agree");
    standin::writeFile(path, encoded({width, height, channels, {rgba.begin(), rgba.end()}}, Format::png));
}

bool isGrey(const Image& image)
{
    const auto channels = static_cast<std::size_t>(image.channels);
    for (std::size_t at = 0; at < image.bytes.size(); at += channels)
        if (image.bytes[at] != image.bytes[at + 1] || image.bytes[at] != image.bytes[at + 2])
            return false;
    return true;
}

Image channelsOf(const Image& image, int first, int count)
{
    Image result{image.width, image.height, count, {}, image.hasAlpha, image.frames};
    result.bytes.resize(byteCount(image.width, image.height, count));
    const std::uint8_t* source = image.bytes.data() + first;
    for (auto target = result.bytes.begin(); target != result.bytes.end();
         target += count, source += image.channels)
        std::copy_n(source, count, target);
    return result;
}

Image scaled(const Image& image, int width, int height)
{
    if (width == image.width && height == image.height)
        return image;
    Image result{width, height, image.channels, {}};
    result.bytes.resize(byteCount(width, height, image.channels));
    if (stbir_resize_uint8(image.bytes.data(), image.width, image.height, 0, result.bytes.data(), width,
                           height, 0, image.channels) == 0)
        throw Error("no memory to scale a picture");
    return result;
}

std::array<double, 3> averageOf(const Image& image)
{
    std::array<double, 3> sum{};
    const auto channels = static_cast<std::size_t>(image.channels);
    for (std::size_t index = 0; index + 2 < image.bytes.size(); index += channels)
        for (std::size_t channel = 0; channel < sum.size(); ++channel)
            sum[channel] += image.bytes[index + channel];
    const std::size_t pixels = image.bytes.size() / channels;
    for (double& channel : sum)
        channel /= static_cast<double>(pixels);
    return sum;
}

Image overChequers(const Image& image)
{
    constexpr int fieldsAcross = 40;
    constexpr int opaque = 255;
    constexpr int dark = 200;
    constexpr int light = 235;
    const int field = std::max(1, image.width / fieldsAcross);
    Image result{image.width, image.height, 3, {}};
    result.bytes.reserve(image.bytes.size());
    const std::uint8_t* pixel = image.bytes.data();
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x, pixel += image.channels)
            for (int channel = 0; channel < result.channels; ++channel)
            {
                const int ground = (x / field + y / field) % 2 == 0 ? dark : light;
                const int alpha = pixel[3];
                result.bytes.push_back(
                    static_cast<std::uint8_t>((pixel[channel] * alpha + ground * (opaque - alpha)) / opaque));
            }
    return result;
}

} // namespace media
