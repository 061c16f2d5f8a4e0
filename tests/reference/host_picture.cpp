#include "tests/reference/host_picture.h"

namespace reference
{

standin::Picture upload(standin::Host& host, const Picture& picture, std::optional<standin::Storage> storage)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(picture.pixels.size() * 4);
    for (const Pixel& pixel : picture.pixels)
        bytes.insert(bytes.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
    standin::Picture result = host.newPicture(picture.width, picture.height, storage);
    result.setRgba(bytes);
    return result;
}

Picture download(const standin::Picture& picture)
{
    Picture result(picture.width(), picture.height());
    const std::vector<std::uint8_t> bytes = picture.rgba();
    const std::uint8_t* next = bytes.data();
    for (Pixel& pixel : result.pixels)
    {
        pixel = {next[0], next[1], next[2], next[3]};
        next += 4;
    }
    return result;
}

std::uint8_t storedAlpha(std::uint8_t wanted, const standin::StorageTraits& traits)
{
    return wanted == 255 ? traits.opaqueAlpha : wanted;
}

} // namespace reference
