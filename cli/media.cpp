#include "cli/media.h"

#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>

namespace cli
{

using standin::Error;

namespace
{

/// Good enough that no block edges show, at a tenth of the size of a PNG.
constexpr int jpegQuality = 85;

std::string extensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

std::span<const std::uint8_t> asBytes(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A little-endian number at the start of `bytes`, which must hold it.
template <class Number>
Number numberAt(std::string_view bytes)
{
    Number number{};
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

/// Finds the sample data among the chunks of a RIFF file.
std::string_view samplesOf(std::string_view file, const std::string& path)
{
    constexpr std::size_t riffHeaderSize = 12;
    constexpr std::size_t chunkHeaderSize = 8;
    constexpr std::uint16_t pcm = 1;
    if (file.size() < riffHeaderSize || !file.starts_with("RIFF") || file.substr(8, 4) != "WAVE")
        throw Error(path + ": not a WAV file");
    bool isPcm = false;
    for (std::string_view rest = file.substr(riffHeaderSize); rest.size() >= chunkHeaderSize;)
    {
        const std::string_view name = rest.substr(0, 4);
        const auto size = numberAt<std::uint32_t>(rest.substr(4));
        const std::string_view content = rest.substr(chunkHeaderSize, size);
        if (name == "fmt " && content.size() >= sizeof pcm)
            isPcm = numberAt<std::uint16_t>(content) == pcm;
        if (name == "data")
        {
            if (!isPcm)
                throw Error(path + ": only uncompressed (PCM) sound can be read");
            return content;
        }
        // Chunks start at even offsets.
        const std::size_t step = chunkHeaderSize + content.size() + content.size() % 2;
        rest.remove_prefix(std::min(step, rest.size()));
    }
    throw Error(path + ": the WAV file holds no samples");
}

} // namespace

std::string readBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path))
        throw Error("cannot read " + path + (errno != 0 ? ": " + std::string(std::strerror(errno)) : ""));
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, std::span<const std::uint8_t> bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw Error("cannot write " + path + ": " + std::strerror(errno));
}

standin::Picture loadPicture(standin::Host& host, const std::string& path,
                             std::optional<standin::Storage> storage)
{
    constexpr int rgba = 4;
    const std::string file = readBytes(path);
    int width = 0;
    int height = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load_from_memory(asBytes(file).data(), static_cast<int>(file.size()), &width, &height, nullptr,
                              rgba),
        stbi_image_free);
    if (pixels == nullptr)
        throw Error(path + ": not an image that can be read (" + stbi_failure_reason() + ")");
    standin::Picture picture = host.newPicture(width, height, storage);
    picture.setRgba(
        {pixels.get(), static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * rgba});
    return picture;
}

bool isPictureName(const std::string& path)
{
    const std::string extension = extensionOf(path);
    return extension == ".png" || extension == ".jpg" || extension == ".jpeg" || extension == ".bmp" ||
           extension == ".tga";
}

Image imageOf(const standin::Picture& picture, bool alpha)
{
    return {picture.width(), picture.height(), alpha ? 4 : 3, alpha ? picture.rgba() : picture.rgb()};
}

void saveImage(const Image& image, const std::string& path)
{
    std::vector<std::uint8_t> file;
    const auto collect = [](void* context, void* data, int size) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        auto& target = *static_cast<std::vector<std::uint8_t>*>(context);
        target.insert(target.end(), bytes, bytes + size);
    };
    const std::string extension = extensionOf(path);
    const auto [width, height, channels] = std::tuple(image.width, image.height, image.channels);
    const std::uint8_t* bytes = image.bytes.data();
    int written = 0;
    if (extension == ".png")
        written = stbi_write_png_to_func(collect, &file, width, height, channels, bytes, width * channels);
    else if (extension == ".jpg" || extension == ".jpeg")
        written = stbi_write_jpg_to_func(collect, &file, width, height, channels, bytes, jpegQuality);
    else if (extension == ".bmp")
        written = stbi_write_bmp_to_func(collect, &file, width, height, channels, bytes);
    else if (extension == ".tga")
        written = stbi_write_tga_to_func(collect, &file, width, height, channels, bytes);
    else
        throw Error("cannot write " + path + ": a picture's name must end in .png, .jpg, .bmp or .tga");
    if (written == 0)
        throw Error("cannot write " + path + ": the picture cannot be stored in this format");
    writeBytes(path, file);
}

Image scaledTo(Image image, int width)
{
    if (image.width <= width)
        return image;
    const int height = std::max(1, static_cast<int>(std::int64_t{image.height} * width / image.width));
    Image result{width, height, image.channels, {}};
    result.bytes.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height * image.channels));
    if (stbir_resize_uint8(image.bytes.data(), image.width, image.height, 0, result.bytes.data(), width,
                           height, 0, image.channels) == 0)
        throw Error("no memory to scale a picture");
    return result;
}

standin::MemoryBlock loadBlock(standin::Host& host, const std::string& path)
{
    const std::string file = readBytes(path);
    return host.newMemoryBlock(asBytes(extensionOf(path) == ".wav" ? samplesOf(file, path) : file));
}

standin::Value loadFile(standin::Host& host, const std::string& path, standin::Type type,
                        std::optional<standin::Storage> storage)
{
    switch (type)
    {
    case standin::Type::Picture:
        return loadPicture(host, path, storage);
    case standin::Type::MemoryBlock:
        return loadBlock(host, path);
    default:
        return host.newString(readBytes(path), standin::encodingNone);
    }
}

} // namespace cli
