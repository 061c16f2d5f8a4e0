#include "script/files.h"

#include "host/file.h"
#include "media/sound.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace script
{

using standin::Error;

namespace
{

constexpr std::size_t rgba = 4;
constexpr std::size_t alphaIndex = 3;
constexpr std::uint8_t opaque = 255;

/// Whether a file's name says that it holds bare bytes.
bool isNamedRaw(const std::string& path)
{
    constexpr std::array<std::string_view, 3> extensions{".raw", ".dat", ".bin"};
    const std::string extension = std::filesystem::path(path).extension();
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](std::string_view raw) { return standin::sameName(extension, raw); });
}

} // namespace

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
    const standin::Storage storage = picture.storage();
    const int width = picture.width();
    for (int y = 0; y < picture.height(); ++y)
    {
        const std::uint8_t* bytes = picture.row(y);
        for (int x = 0; x < width; ++x, bytes += bytesPerPixel(storage))
            if (loadPixel(storage, bytes).alpha != opaque)
                return true;
    }
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
    const std::vector<std::uint8_t> file = standin::readFile(path);
    return host.newMemoryBlock(isNamedRaw(path) ? file : media::samplesOf(file, path));
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
