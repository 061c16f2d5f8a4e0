#include "script/files.h"

#include "host/file.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <span>
#include <string_view>

namespace script
{

using standin::Error;

namespace
{

constexpr std::size_t rgba = 4;
constexpr std::size_t alphaIndex = 3;
constexpr std::uint8_t opaque = 255;

/// A little-endian number at the start of `bytes`, which must hold it.
template <class Number>
Number numberAt(std::string_view bytes)
{
    Number number{};
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

} // namespace

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

standin::Picture loadPicture(standin::Host& host, const std::string& path,
                             std::optional<standin::Storage> storage)
{
    return pictureOf(host, media::readImage(path, static_cast<int>(rgba)), storage);
}

standin::Picture pictureOf(standin::Host& host, const media::Image& image,
                           std::optional<standin::Storage> storage)
{
    standin::Picture picture = host.newPicture(image.width, image.height, storage);
    picture.setRgba(image.bytes);
    return picture;
}

media::Image imageOf(const standin::Picture& picture, bool alpha)
{
    return {picture.width(), picture.height(), alpha ? 4 : 3, alpha ? picture.rgba() : picture.rgb()};
}

bool isTranslucent(const standin::Picture& picture)
{
    const standin::StorageTraits traits = traitsOf(picture.storage());
    // Elsewhere the byte in this place means nothing.
    if (!traits.hasSpareByte || traits.opaqueAlpha != opaque)
        return false;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, y).alpha != opaque)
                return true;
    return false;
}

void setAlpha(media::Image& image, const standin::Picture& picture)
{
    std::size_t index = alphaIndex;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x, index += rgba)
            image.bytes[index] = picture.pixel(x, y).alpha;
}

void setOpaque(media::Image& image)
{
    for (std::size_t index = alphaIndex; index < image.bytes.size(); index += rgba)
        image.bytes[index] = opaque;
}

standin::MemoryBlock loadBlock(standin::Host& host, const std::string& path)
{
    std::vector<std::uint8_t> file = standin::readFile(path);
    if (!standin::sameName(std::filesystem::path(path).extension().string(), ".wav"))
        return host.newMemoryBlock(file);
    const std::string_view samples =
        samplesOf({reinterpret_cast<const char*>(file.data()), file.size()}, path);
    return host.newMemoryBlock(bytesOf(samples));
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
        return host.newString(standin::readText(path), standin::encodingNone);
    }
}

} // namespace script
