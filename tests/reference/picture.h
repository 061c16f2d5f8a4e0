/// \file
/// The picture that the reference operations work on: plain pixels, no storage, no stride.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace reference
{

/// One pixel. Alpha 255 stands for "opaque, as every writer leaves it", whatever byte a storage uses for
/// that.
struct Pixel
{
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;

    bool operator==(const Pixel&) const = default;
};

/// What a pixel reads as that nobody has written since the host made the picture.
inline constexpr std::uint8_t untouchedByte = 0x5A;
inline constexpr Pixel untouched{untouchedByte, untouchedByte, untouchedByte, untouchedByte};

/// Rows of pixels, one after the other.
struct Picture
{
    Picture() = default;
    Picture(int pictureWidth, int pictureHeight, Pixel fill = {})
        : width(pictureWidth),
          height(pictureHeight),
          pixels(static_cast<std::size_t>(pictureWidth) * static_cast<std::size_t>(pictureHeight), fill)
    {
    }

    Pixel& at(int x, int y)
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    const Pixel& at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    bool operator==(const Picture&) const = default;

    int width = 0;
    int height = 0;
    std::vector<Pixel> pixels;
};

/// A colour value &h00RRGGBB as an opaque pixel; the top byte is ignored.
constexpr Pixel pixelOf(std::uint32_t colour)
{
    return {static_cast<std::uint8_t>(colour >> 16), static_cast<std::uint8_t>(colour >> 8),
            static_cast<std::uint8_t>(colour), 255};
}

constexpr std::uint32_t colourOf(Pixel pixel)
{
    return static_cast<std::uint32_t>(pixel.red << 16 | pixel.green << 8 | pixel.blue);
}

/// Puts `function(pixel)` in the place of every pixel; the result is opaque.
template <class Function>
Picture mapped(Picture picture, Function function)
{
    for (Pixel& pixel : picture.pixels)
    {
        pixel = function(std::as_const(pixel));
        pixel.alpha = 255;
    }
    return picture;
}

/// The same colours, opaque.
inline Picture opaque(const Picture& picture)
{
    return mapped(picture, [](Pixel pixel) { return pixel; });
}

} // namespace reference
