#include "media/image.h"

#include "host/error.h"
#include "host/file.h"

#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <memory>
#include <string_view>

namespace media
{

using standin::Error;

namespace
{

/// Good enough that no block edges show, at a tenth of the size of a PNG.
constexpr int jpegQuality = 85;

void collect(void* context, void* data, int size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    auto& file = *static_cast<std::vector<std::uint8_t>*>(context);
    file.insert(file.end(), bytes, bytes + size);
}

bool encodePng(std::vector<std::uint8_t>& file, int width, int height, int channels, const std::uint8_t* rows)
{
    return stbi_write_png_to_func(collect, &file, width, height, channels, rows, width * channels) != 0;
}

bool encodeJpeg(std::vector<std::uint8_t>& file, int width, int height, int channels,
                const std::uint8_t* rows)
{
    return stbi_write_jpg_to_func(collect, &file, width, height, channels, rows, jpegQuality) != 0;
}

bool encodeBmp(std::vector<std::uint8_t>& file, int width, int height, int channels, const std::uint8_t* rows)
{
    return stbi_write_bmp_to_func(collect, &file, width, height, channels, rows) != 0;
}

bool encodeTga(std::vector<std::uint8_t>& file, int width, int height, int channels, const std::uint8_t* rows)
{
    return stbi_write_tga_to_func(collect, &file, width, height, channels, rows) != 0;
}

struct Format
{
    std::string_view extension;
    decltype(&encodePng) encode;
};

constexpr std::array<Format, 5> formats{{{".png", encodePng},
                                         {".jpg", encodeJpeg},
                                         {".jpeg", encodeJpeg},
                                         {".bmp", encodeBmp},
                                         {".tga", encodeTga}}};

const Format& formatOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto* const found = std::find_if(
        formats.begin(), formats.end(), [&](const Format& format) { return format.extension == extension; });
    if (found == formats.end())
        throw Error("cannot write " + path + ": a picture's name must end in .png, .jpg, .bmp or .tga");
    return *found;
}

std::vector<std::uint8_t> encoded(const std::string& path, const Format& format, int width, int height,
                                  int channels, const std::uint8_t* rows)
{
    std::vector<std::uint8_t> file;
    if (!format.encode(file, width, height, channels, rows))
        throw Error("cannot write " + path + ": the picture cannot be stored in this format");
    return file;
}

std::size_t byteCount(int width, int height, int channels)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels);
}

} // namespace

Image readImage(const std::string& path, int channels)
{
    return decoded(standin::readFile(path), path, channels);
}

Image decoded(std::span<const std::uint8_t> file, const std::string& path, int channels)
{
    Image image{0, 0, channels, {}};
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &image.width, &image.height,
                              nullptr, channels),
        stbi_image_free);
    if (pixels == nullptr)
        throw Error(path + ": not an image that can be read (" + stbi_failure_reason() + ")");
    image.bytes.assign(pixels.get(), pixels.get() + byteCount(image.width, image.height, channels));
    return image;
}

void checkImageName(const std::string& path)
{
    formatOf(path);
}

void writeImage(const std::string& path, const Image& image)
{
    standin::writeFile(path, encoded(path, image));
}

std::vector<std::uint8_t> encoded(const std::string& path, const Image& image)
{
    return encoded(path, formatOf(path), image.width, image.height, image.channels, image.bytes.data());
}

void writePng(const std::string& path, int width, int height, std::span<const std::uint8_t> rgba)
{
    constexpr int channels = 4;
    if (rgba.size() != byteCount(width, height, channels))
        throw Error("cannot write " + path + ": its size and the number of its bytes do not agree");
    standin::writeFile(path, encoded(path, formats.front(), width, height, channels, rgba.data()));
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
