/// \file
/// Pixels as formulas see them. The two 4-byte formats are types here; everything about a channel's place in
/// a pixel stands in them. The 3-byte format is converted to and from a 4-byte one on its way (see runs.h).
#pragma once

#include "editor/arithmetic.h"
#include "editor/lanes.h"
#include "editor/picture_editor.h"

namespace qvr
{

/// The red, green and blue of a host colour &h00RRGGBB.
constexpr uint32_t redOf(uint32_t colour)
{
    return colour >> 16 & 255;
}
constexpr uint32_t greenOf(uint32_t colour)
{
    return colour >> 8 & 255;
}
constexpr uint32_t blueOf(uint32_t colour)
{
    return colour & 255;
}

/// The places of a pixel's colour.
enum class Channel : uint8_t
{
    Red,
    Green,
    Blue,
};

/// A 4-byte pixel format as a little-endian 32-bit word: where the channels stand and what fills the spare
/// byte.
template <PixelFormat Code, int Red, int Green, int Blue, uint32_t Spare>
struct WordFormat
{
    static constexpr PixelFormat code = Code;
    static constexpr int redShift = Red;
    static constexpr int greenShift = Green;
    static constexpr int blueShift = Blue;
    static constexpr uint32_t redMask = 255U << Red;
    static constexpr uint32_t greenMask = 255U << Green;
    static constexpr uint32_t blueMask = 255U << Blue;
    static constexpr uint32_t colourMask = redMask | greenMask | blueMask;
    static constexpr int spareShift = Red == 8 ? 0 : 24;
    /// What a writer puts into the byte beside the colour.
    static constexpr uint32_t spare = Spare;

    /// Where two neighbouring channels must agree with the two beside them for a pixel to be grey.
    static constexpr uint32_t greyMask = colourMask & colourMask >> 8;

    /// A word of `ARGB32` whose alpha is 255, in this format as a writer stores it.
    static constexpr uint32_t fromArgb(uint32_t argb)
    {
        return Code == PixelFormatARGB32 ? argb : __builtin_bswap32(argb) & colourMask;
    }
    /// A word of this format in `ARGB32`, its alpha anything.
    static constexpr uint32_t toArgb(uint32_t word)
    {
        return Code == PixelFormatARGB32 ? word : __builtin_bswap32(word);
    }

    /// What the spare byte says of a pixel's alpha. In `BGRX32` it deliberately runs through 0 to 255 twice.
    template <class Value>
    QVR_INLINE static constexpr Value alphaOf(Value spareByte)
    {
        return Code == PixelFormatARGB32 ? spareByte : (spareByte * 2 & 254) | (spareByte & 1);
    }

    /// A host colour in this format, its spare byte 0.
    static constexpr uint32_t wordOf(uint32_t colour)
    {
        return redOf(colour) << Red | greenOf(colour) << Green | blueOf(colour) << Blue;
    }

    /// The host colour of a word of this format.
    static constexpr uint32_t colourOf(uint32_t word)
    {
        return (word >> Red & 255) << 16 | (word >> Green & 255) << 8 | (word >> Blue & 255);
    }

    static constexpr uint32_t maskOf(Channel channel)
    {
        return channel == Channel::Red ? redMask : channel == Channel::Green ? greenMask : blueMask;
    }
};

using ARGB32 = WordFormat<PixelFormatARGB32, 8, 16, 24, 0x000000FF>;
using BGRX32 = WordFormat<PixelFormatBGRX32, 16, 8, 0, 0>;

/// Words that are stored as they are, spare byte included.
template <class Words>
struct RawWords
{
    Words words;
};
template <class Words>
RawWords(Words) -> RawWords<Words>;

/// Three channels of a vector of pixels, each value 0 to 255.
template <class Integers>
struct Channels
{
    Integers red;
    Integers green;
    Integers blue;
};
template <class Integers>
Channels(Integers, Integers, Integers) -> Channels<Integers>;

/// Three channels of any values; they are clamped to 0 to 255 when they are stored.
template <class Integers>
struct UnclampedChannels
{
    Integers red;
    Integers green;
    Integers blue;

    /// The low 8 bits instead of clamped values.
    QVR_INLINE Channels<Integers> lowBytes() const
    {
        return {red & 255, green & 255, blue & 255};
    }
};
template <class Integers>
UnclampedChannels(Integers, Integers, Integers) -> UnclampedChannels<Integers>;

/// `LaneType::count` pixels as words of one format; the spare byte holds anything.
template <class FormatType, class LaneType>
struct Pixels
{
    using Format = FormatType;
    using Lane = LaneType;
    using Words = typename Lane::Words;
    using Integers = typename Lane::Integers;
    static constexpr int32_t count = Lane::count;

    Words words;

    QVR_INLINE Integers red() const
    {
        return channel<Format::redShift>();
    }
    QVR_INLINE Integers green() const
    {
        return channel<Format::greenShift>();
    }
    QVR_INLINE Integers blue() const
    {
        return channel<Format::blueShift>();
    }

    /// How opaque the pixels are, 0 to 255.
    QVR_INLINE Integers alpha() const
    {
        return Format::alphaOf(channel<Format::spareShift>());
    }

    /// The sum of the channels times their weights, which fit 16 bits.
    QVR_INLINE Integers weightedSum(int32_t redWeight, int32_t greenWeight, int32_t blueWeight) const
    {
        if constexpr (Lane::count == NarrowLanes::count)
        {
            // SSE2 cannot multiply integers of 32 bits, but it adds up products of two pairs of halves.
            typedef uint16_t Bytes __attribute__((vector_size(16)));
            typedef int16_t Halves __attribute__((vector_size(16)));
            const auto weightAt = [&](int shift) {
                return static_cast<uint32_t>(shift == Format::redShift     ? redWeight
                                             : shift == Format::greenShift ? greenWeight
                                             : shift == Format::blueShift  ? blueWeight
                                                                           : 0);
            };
            const Words evenWeights = Words{} + ((weightAt(0) & 0xFFFF) | weightAt(16) << 16);
            const Words oddWeights = Words{} + ((weightAt(8) & 0xFFFF) | weightAt(24) << 16);
            const auto evenBytes = reinterpret_cast<Bytes>(words) & 255;
            const auto oddBytes = reinterpret_cast<Bytes>(words) >> 8;
            return __builtin_ia32_pmaddwd128(reinterpret_cast<Halves>(evenBytes),
                                             reinterpret_cast<Halves>(evenWeights)) +
                   __builtin_ia32_pmaddwd128(reinterpret_cast<Halves>(oddBytes),
                                             reinterpret_cast<Halves>(oddWeights));
        }
        else
            return red() * redWeight + green() * greenWeight + blue() * blueWeight;
    }

    /// The words with 0 in the spare byte.
    QVR_INLINE Words colours() const
    {
        return words & Format::colourMask;
    }

    /// -1 where red, green and blue are equal.
    QVR_INLINE Integers isGrey() const
    {
        return ((words ^ words >> 8) & Format::greyMask) == Words{};
    }

    /// -1 where the pixel has the host colour `colour`, whatever its spare byte.
    QVR_INLINE Integers matches(uint32_t colour) const
    {
        return colours() == Words{} + Format::wordOf(colour);
    }

    /// As many pixels of one host colour.
    QVR_INLINE Pixels withColour(uint32_t colour) const
    {
        return {Words{} + Format::wordOf(colour)};
    }

    QVR_INLINE Pixels operator~() const
    {
        return {~words};
    }

    /// The pixels with one channel taken from others.
    QVR_INLINE Pixels withChannel(Channel channel, Pixels others) const
    {
        const uint32_t mask = Format::maskOf(channel);
        return {(words & ~mask) | (others.words & mask)};
    }

    /// The pixels with other values (0 to 255) in the byte that comes first in memory, whatever the format
    /// keeps there.
    QVR_INLINE RawWords<Words> withFirstByte(Integers values) const
    {
        return {(words & ~255U) | reinterpret_cast<Words>(values)};
    }

    // What a writer stores: the colour as it is, with the format's spare byte.

    QVR_INLINE static Words stored(Pixels result)
    {
        return result.colours() | Format::spare;
    }
    QVR_INLINE static Words stored(RawWords<Words> result)
    {
        return result.words;
    }
    QVR_INLINE static Words stored(const Channels<Integers>& result)
    {
        return pack(result.red, result.green, result.blue) | Format::spare;
    }
    QVR_INLINE static Words stored(const UnclampedChannels<Integers>& result)
    {
        if constexpr (Lane::count == NarrowLanes::count)
            return packSaturated(result);
        else
            return pack(clamped(result.red), clamped(result.green), clamped(result.blue)) | Format::spare;
    }

private:
    template <int Shift>
    QVR_INLINE Integers channel() const
    {
        return reinterpret_cast<Integers>(words >> Shift & 255U);
    }

    QVR_INLINE static Words pack(Integers red, Integers green, Integers blue)
    {
        return reinterpret_cast<Words>(red) << Format::redShift |
               reinterpret_cast<Words>(green) << Format::greenShift |
               reinterpret_cast<Words>(blue) << Format::blueShift;
    }

    QVR_INLINE static Integers clamped(Integers value)
    {
        return __builtin_elementwise_min(__builtin_elementwise_max(value, Integers{}), Integers{} + 255);
    }

    /// SSE2 has no minimum of 32-bit integers, but its packing instructions saturate.
    QVR_INLINE static Words packSaturated(const UnclampedChannels<Integers>& result)
    {
        typedef int16_t Halves __attribute__((vector_size(16)));

        const Integers spareByte = Integers{} + static_cast<int32_t>(Format::spare);
        // Channels in the order of their bytes in memory.
        const bool argb = Format::redShift == 8;
        const Integers& first = argb ? spareByte : result.blue;
        const Integers& second = argb ? result.red : result.green;
        const Integers& third = argb ? result.green : result.red;
        const Integers& fourth = argb ? result.blue : spareByte;

        // The four channels of a pixel come together as halves: a transposition of bytes costs twice as much.
        const Halves even = __builtin_ia32_packssdw128(first, third);
        const Halves odd = __builtin_ia32_packssdw128(second, fourth);
        const auto low =
            reinterpret_cast<Words>(__builtin_shufflevector(even, odd, 0, 8, 1, 9, 2, 10, 3, 11));
        const auto high =
            reinterpret_cast<Words>(__builtin_shufflevector(even, odd, 4, 12, 5, 13, 6, 14, 7, 15));
        return reinterpret_cast<Words>(__builtin_ia32_packuswb128(
            reinterpret_cast<Halves>(__builtin_shufflevector(low, high, 0, 4, 1, 5)),
            reinterpret_cast<Halves>(__builtin_shufflevector(low, high, 2, 6, 3, 7))));
    }
};

/// Lane by lane `first` where `mask` is -1 and `second` where it is 0.
template <class Format, class Lane>
QVR_INLINE inline Pixels<Format, Lane> select(typename Lane::Integers mask, Pixels<Format, Lane> first,
                                              Pixels<Format, Lane> second)
{
    const auto chosen = reinterpret_cast<typename Lane::Words>(mask);
    return {(first.words & chosen) | (second.words & ~chosen)};
}

/// Channel by channel the larger of two values.
template <class Format, class Lane>
QVR_INLINE inline Pixels<Format, Lane> larger(Pixels<Format, Lane> first, Pixels<Format, Lane> second)
{
    using Words = typename Lane::Words;
    typedef uint8_t Bytes __attribute__((vector_size(sizeof(Words))));
    return {reinterpret_cast<Words>(__builtin_elementwise_max(reinterpret_cast<Bytes>(first.words),
                                                              reinterpret_cast<Bytes>(second.words)))};
}

/// The colour of one pixel inside the picture, as a host colour.
uint32_t colourAt(const PictureEditor& picture, int32_t x, int32_t y);

/// Gives one pixel inside the picture a host colour, its spare byte what writers put there.
void setColourAt(const PictureEditor& picture, int32_t x, int32_t y, uint32_t colour);

/// Where the red byte of a pixel stands in a format, in bytes.
constexpr int32_t redByteOf(int32_t format)
{
    return format == PixelFormatARGB32   ? ARGB32::redShift / 8
           : format == PixelFormatBGRX32 ? BGRX32::redShift / 8
                                         : 0;
}

} // namespace qvr
