#include "tests/reference/masks.h"

namespace reference
{

std::uint8_t embeddedAlpha(AlphaPlace place, std::uint8_t stored)
{
    if (place == AlphaPlace::FirstByte)
        return stored;
    if (place == AlphaPlace::Nowhere)
        return 255;
    return static_cast<std::uint8_t>(((stored * 2) & 254) | (stored & 1));
}

Picture embeddedMask(const Picture& picture, AlphaPlace place, bool swap)
{
    Picture result{picture.width, picture.height};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
        {
            const std::uint8_t alpha = embeddedAlpha(place, picture.at(x, y).alpha);
            const auto grey = static_cast<std::uint8_t>(swap ? 255 - alpha : alpha);
            result.at(x, y) = {grey, grey, grey};
        }
    return result;
}

} // namespace reference
