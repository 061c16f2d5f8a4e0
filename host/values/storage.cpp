#include "host/values/storage.h"

namespace standin
{

namespace
{

/// Widens the `bits` low bits of `value` to a byte, so that the largest value becomes 255.
std::uint8_t widen(unsigned value, unsigned bits)
{
    const unsigned largest = (1U << bits) - 1;
    return static_cast<std::uint8_t>((value & largest) * 255 / largest);
}

} // namespace

Pixel loadPixel(Storage storage, const std::uint8_t* bytes)
{
    switch (storage)
    {
    case Storage::GWorld32:
    case Storage::Drawable:
        return {bytes[1], bytes[2], bytes[3], bytes[0]};
    case Storage::GWorld24:
        return {bytes[0], bytes[1], bytes[2], 255};
    case Storage::GWorld16:
    {
        const unsigned word = static_cast<unsigned>(bytes[0]) << 8 | bytes[1];
        return {widen(word >> 10, 5), widen(word >> 5, 5), widen(word, 5), 255};
    }
    case Storage::GWorld8:
        return {widen(bytes[0] >> 5U, 3), widen(bytes[0] >> 2U, 3), widen(bytes[0], 2), 255};
    case Storage::Bitmap:
        return {bytes[2], bytes[1], bytes[0], bytes[3]};
    }
    return {};
}

void storePixel(Storage storage, std::uint8_t* bytes, Pixel pixel)
{
    switch (storage)
    {
    case Storage::GWorld32:
    case Storage::Drawable:
        bytes[0] = pixel.alpha;
        bytes[1] = pixel.red;
        bytes[2] = pixel.green;
        bytes[3] = pixel.blue;
        break;
    case Storage::GWorld24:
        bytes[0] = pixel.red;
        bytes[1] = pixel.green;
        bytes[2] = pixel.blue;
        break;
    case Storage::GWorld16:
    {
        const unsigned word = (pixel.red >> 3U) << 10 | (pixel.green >> 3U) << 5 | pixel.blue >> 3U;
        bytes[0] = static_cast<std::uint8_t>(word >> 8);
        bytes[1] = static_cast<std::uint8_t>(word);
        break;
    }
    case Storage::GWorld8:
        bytes[0] =
            static_cast<std::uint8_t>((pixel.red & 0xE0U) | (pixel.green >> 5U) << 2 | pixel.blue >> 6U);
        break;
    case Storage::Bitmap:
        bytes[0] = pixel.blue;
        bytes[1] = pixel.green;
        bytes[2] = pixel.red;
        bytes[3] = pixel.alpha;
        break;
    }
}

} // namespace standin
