/// \file
/// How pictures keep their pixels. A new way needs its enumerator and its line in `traitsOf` here, and how
/// its bytes are read and written in storage.cpp; the compiler asks for each.
#pragma once

#include <cstdint>
#include <string_view>

namespace standin
{

/// How a picture keeps its pixels.
enum class Storage
{
    GWorld32, ///< QuickDraw pixel map, bytes A, R, G, B
    GWorld24, ///< QuickDraw pixel map, bytes R, G, B
    GWorld16, ///< QuickDraw pixel map, two bytes x1r5g5b5, high byte first
    GWorld8,  ///< QuickDraw pixel map, one byte r3g3b2
    Bitmap,   ///< memory bitmap (description type 10), bytes B, G, R, X, rows apart from each other
    Drawable  ///< cannot be locked, only drawn; bytes A, R, G, B
};

/// How the plug-in gets at a picture's pixels.
enum class Access
{
    GWorld, ///< locks it as a QuickDraw pixel map
    Bitmap, ///< locks it as a memory bitmap
    Drawn   ///< has the host draw it into another picture
};

struct StorageTraits
{
    std::string_view name;
    Access access = Access::Drawn;
    int depth = 0;                  ///< bits of one pixel, as GetPixDepth tells them
    bool hasSpareByte = false;      ///< whether `Pixel::alpha` has a byte of its own (A or X)
    std::uint8_t opaqueAlpha = 255; ///< what the plug-in's writers put there: 255 in A, 0 in X
};

constexpr StorageTraits traitsOf(Storage storage)
{
    switch (storage)
    {
    case Storage::GWorld32:
        return {"gworld32", Access::GWorld, 32, true, 255};
    case Storage::GWorld24:
        return {"gworld24", Access::GWorld, 24};
    case Storage::GWorld16:
        return {"gworld16", Access::GWorld, 16};
    case Storage::GWorld8:
        return {"gworld8", Access::GWorld, 8};
    case Storage::Bitmap:
        return {"bitmap", Access::Bitmap, 32, true, 0};
    case Storage::Drawable:
        return {"drawable", Access::Drawn, 32, true, 255};
    }
    return {};
}

constexpr std::string_view nameOf(Storage storage)
{
    return traitsOf(storage).name;
}

/// Bytes of one pixel in memory.
constexpr int bytesPerPixel(Storage storage)
{
    constexpr int bitsPerByte = 8;
    return traitsOf(storage).depth / bitsPerByte;
}

/// One pixel. `alpha` is the stored byte as it is: A of GWorld32, X of Bitmap; storages without it read 255.
struct Pixel
{
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 0;

    bool operator==(const Pixel&) const = default;
};

Pixel loadPixel(Storage storage, const std::uint8_t* bytes);
void storePixel(Storage storage, std::uint8_t* bytes, Pixel pixel);

} // namespace standin
