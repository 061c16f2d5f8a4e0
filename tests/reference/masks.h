#pragma once

#include "tests/reference/picture.h"

namespace reference
{

/// Where a picture keeps transparency in its pixels.
enum class AlphaPlace
{
    FirstByte, ///< the byte is the value
    Nowhere,   ///< every pixel counts as 255
    FourthByte ///< seven bits, widened; the top bit is lost
};

/// The transparency that a stored byte stands for.
std::uint8_t embeddedAlpha(AlphaPlace place, std::uint8_t stored);

/// The grey picture of the transparency in a picture's pixels; with `swap` turned round.
Picture embeddedMask(const Picture& picture, AlphaPlace place, bool swap);

} // namespace reference
