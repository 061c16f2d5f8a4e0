#include "editor/runs.h"
#include "system/c_library.h"

namespace qvr::conversion
{

namespace
{

typedef uint8_t Bytes16 __attribute__((vector_size(16)));

uint32_t loadWord(const uint8_t* address)
{
    return loadFrom<uint32_t>(address);
}

/// Around the cache when `Streamed`; the address must be aligned then.
template <bool Streamed, class Value>
QVR_INLINE inline void store(uint8_t* address, Value value)
{
    if constexpr (Streamed)
        streamTo(address, value);
    else
        storeAt(address, value);
}

/// Whether a format has the colour's bytes in the order red, green, blue.
template <class Format>
constexpr bool redFirst = Format::redShift < Format::blueShift;

/// Between the two 4-byte formats.
void reverseToArgb(const uint8_t* source, uint8_t* destination, int32_t count)
{
    for (int32_t i = 0; i < count; ++i)
    {
        const uint32_t word = loadWord(source + i * 4);
        storeAt(destination + i * 4,
                (__builtin_bswap32(word) & ARGB32::colourMask) | BGRX32::alphaOf(word >> BGRX32::spareShift));
    }
}
void reverseFromArgb(const uint8_t* source, uint8_t* destination, int32_t count)
{
    for (int32_t i = 0; i < count; ++i)
        storeAt(destination + i * 4, BGRX32::fromArgb(loadWord(source + i * 4)));
}

/// From the 3-byte format, four pixels from three words at a time.
template <class Format, bool Streamed>
void expandNarrow(const uint8_t* source, uint8_t* destination, int32_t count)
{
    int32_t i = 0;
    for (; i + 4 <= count; i += 4, source += 12, destination += 16)
    {
        const uint32_t first = loadWord(source);
        const uint32_t second = loadWord(source + 4);
        const uint32_t third = loadWord(source + 8);
        store<Streamed>(destination, Format::fromArgb(first << 8 | ARGB32::spare));
        store<Streamed>(destination + 4,
                        Format::fromArgb((first >> 16 & 0xFF00U) | second << 16 | ARGB32::spare));
        store<Streamed>(destination + 8,
                        Format::fromArgb((second >> 8 & 0xFFFF00U) | third << 24 | ARGB32::spare));
        store<Streamed>(destination + 12, Format::fromArgb((third & 0xFFFFFF00U) | ARGB32::spare));
    }
    for (; i < count; ++i, source += 3, destination += 4)
        store<Streamed>(destination, Format::fromArgb(ARGB32::spare | static_cast<uint32_t>(source[0]) << 8 |
                                                      static_cast<uint32_t>(source[1]) << 16 |
                                                      static_cast<uint32_t>(source[2]) << 24));
}

/// To the 3-byte format, three words from four pixels at a time.
template <class Format, bool Streamed>
void compactWords(const uint8_t* source, uint8_t* destination, int32_t count)
{
    int32_t i = 0;
    for (; i + 4 <= count; i += 4, source += 16, destination += 12)
    {
        const uint32_t first = Format::toArgb(loadWord(source));
        const uint32_t second = Format::toArgb(loadWord(source + 4));
        const uint32_t third = Format::toArgb(loadWord(source + 8));
        const uint32_t fourth = Format::toArgb(loadWord(source + 12));
        store<Streamed>(destination, first >> 8 | (second & 0xFF00U) << 16);
        store<Streamed>(destination + 4, second >> 16 | (third & 0xFFFF00U) << 8);
        store<Streamed>(destination + 8, third >> 24 | (fourth & 0xFFFFFF00U));
    }
    for (; i < count; ++i, source += 4, destination += 3)
    {
        const uint32_t pixel = Format::toArgb(loadWord(source));
        destination[0] = static_cast<uint8_t>(pixel >> 8);
        destination[1] = static_cast<uint8_t>(pixel >> 16);
        destination[2] = static_cast<uint8_t>(pixel >> 24);
    }
}

/// Four pixels by one shuffle. A vector reaches four bytes past its twelve, so the last pixels are left to
/// the loop over words.
template <class Format, bool Streamed>
QVR_WIDE_TARGET void expandWide(const uint8_t* source, uint8_t* destination, int32_t count)
{
    const Bytes16 spare = Bytes16{} + static_cast<uint8_t>(Format::spare);
    int32_t i = 0;
    for (; i + 6 <= count; i += 4, source += 12, destination += 16)
    {
        const Bytes16 packed = loadFrom<Bytes16>(source);
        if constexpr (redFirst<Format>)
            store<Streamed>(destination, __builtin_shufflevector(packed, spare, 16, 0, 1, 2, 16, 3, 4, 5, 16,
                                                                 6, 7, 8, 16, 9, 10, 11));
        else
            store<Streamed>(destination, __builtin_shufflevector(packed, spare, 2, 1, 0, 16, 5, 4, 3, 16, 8,
                                                                 7, 6, 16, 11, 10, 9, 16));
    }
    expandNarrow<Format, Streamed>(source, destination, count - i);
}

/// The colours of four pixels, packed into the first twelve bytes; what follows them is anything.
struct PackByShuffle
{
    template <class Format>
    QVR_INLINE static Bytes16 packed(Bytes16 pixels)
    {
        if constexpr (redFirst<Format>)
            return __builtin_shufflevector(pixels, pixels, 1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, -1, -1,
                                           -1, -1);
        else
            return __builtin_shufflevector(pixels, pixels, 2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1,
                                           -1);
    }
};

/// The same without a shuffle of bytes, which SSE2 does not have: two pixels come together in each half, then
/// the halves.
struct PackByShifts
{
    template <class Format>
    QVR_INLINE static Bytes16 packed(Bytes16 pixels)
    {
        typedef uint32_t Words __attribute__((vector_size(16)));
        typedef uint64_t Halves __attribute__((vector_size(16)));
        constexpr Halves lowHalf{UINT64_MAX, 0};
        constexpr Halves behindSixBytes{0xFFFF000000000000U, UINT64_MAX};

        const auto words = reinterpret_cast<Words>(pixels);
        const auto colours = reinterpret_cast<Halves>(
            redFirst<Format> ? words >> 8 : (words & 255) << 16 | (words & 0xFF00) | (words >> 16 & 255));
        const Halves pairs = (colours & 0xFFFFFF) | (colours >> 8 & 0xFFFFFF000000U);
        const auto bytes = reinterpret_cast<Bytes16>(pairs);
        const auto closer = reinterpret_cast<Halves>(__builtin_shufflevector(
            bytes, Bytes16{}, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17));
        return reinterpret_cast<Bytes16>((pairs & lowHalf) | (closer & behindSixBytes));
    }
};

/// Three whole vectors from sixteen pixels at a time.
template <class Format, bool Streamed, class Pack>
QVR_INLINE inline void compactVectors(const uint8_t* source, uint8_t* destination, int32_t count)
{
    const auto packedAt = [](const uint8_t* pixels)
                              QVR_INLINE { return Pack::template packed<Format>(loadFrom<Bytes16>(pixels)); };
    int32_t i = 0;
    for (; i + 16 <= count; i += 16, source += 64, destination += 48)
    {
        const Bytes16 first = packedAt(source);
        const Bytes16 second = packedAt(source + 16);
        const Bytes16 third = packedAt(source + 32);
        const Bytes16 fourth = packedAt(source + 48);
        store<Streamed>(destination, __builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10,
                                                             11, 16, 17, 18, 19));
        store<Streamed>(destination + 16, __builtin_shufflevector(second, third, 4, 5, 6, 7, 8, 9, 10, 11, 16,
                                                                  17, 18, 19, 20, 21, 22, 23));
        store<Streamed>(destination + 32, __builtin_shufflevector(third, fourth, 8, 9, 10, 11, 16, 17, 18, 19,
                                                                  20, 21, 22, 23, 24, 25, 26, 27));
    }
    compactWords<Format, Streamed>(source, destination, count - i);
}

template <class Format, bool Streamed>
void compactNarrow(const uint8_t* source, uint8_t* destination, int32_t count)
{
    compactVectors<Format, Streamed, PackByShifts>(source, destination, count);
}

template <class Format, bool Streamed>
QVR_WIDE_TARGET void compactWide(const uint8_t* source, uint8_t* destination, int32_t count)
{
    compactVectors<Format, Streamed, PackByShuffle>(source, destination, count);
}

using PixelLoop = void (*)(const uint8_t* source, uint8_t* destination, int32_t count);

/// A loop that stores through the cache, and one around it.
struct Loops
{
    PixelLoop cached;
    PixelLoop streamed;
};

/// The loops of one conversion. Those over words can stream to where words are aligned, the others to where
/// vectors are.
struct Conversion
{
    Loops words;
    Loops narrow;
    Loops wide;
    int32_t sourceBytes;
    int32_t destinationBytes;
};

template <class Format>
constexpr Conversion expansion{{expandNarrow<Format, false>, expandNarrow<Format, true>},
                               {expandNarrow<Format, false>, expandNarrow<Format, true>},
                               {expandWide<Format, false>, expandWide<Format, true>},
                               3,
                               4};

template <class Format>
constexpr Conversion compaction{{compactWords<Format, false>, compactWords<Format, true>},
                                {compactNarrow<Format, false>, compactNarrow<Format, true>},
                                {compactWide<Format, false>, compactWide<Format, true>},
                                4,
                                3};

/// The pixels of `pixelBytes` bytes before `address` reaches a vector's alignment; `INT32_MAX` when it never
/// does.
int32_t pixelsToAlignment(const uint8_t* address, int32_t pixelBytes)
{
    constexpr int32_t alignment = sizeof(Bytes16);
    const auto misaligned = static_cast<int32_t>(reinterpret_cast<uintptr_t>(address) % alignment);
    for (int32_t pixels = 0; pixels < alignment; ++pixels)
        if ((misaligned + pixels * pixelBytes) % alignment == 0)
            return pixels;
    return INT32_MAX;
}

const Loops& vectorLoops(const Conversion& conversion)
{
    return wideLanesAvailable() ? conversion.wide : conversion.narrow;
}

void convert(const Conversion& conversion, const uint8_t* source, uint8_t* destination, int32_t count)
{
    vectorLoops(conversion).cached(source, destination, count);
}

/// The same around the cache, as far as alignment allows.
void convertStreamed(const Conversion& conversion, const uint8_t* source, uint8_t* destination, int32_t count)
{
    const int32_t head = pixelsToAlignment(destination, conversion.destinationBytes);
    if (head > count)
        return convert(conversion, source, destination, count);
    const bool wordsAligned = reinterpret_cast<uintptr_t>(destination) % 4 == 0;
    (wordsAligned ? conversion.words.streamed : conversion.words.cached)(source, destination, head);
    vectorLoops(conversion)
        .streamed(source + static_cast<ptrdiff_t>(head) * conversion.sourceBytes,
                  destination + static_cast<ptrdiff_t>(head) * conversion.destinationBytes, count - head);
}

const Conversion& expansionTo(int32_t format)
{
    return format == PixelFormatARGB32 ? expansion<ARGB32> : expansion<BGRX32>;
}
const Conversion& compactionFrom(int32_t format)
{
    return format == PixelFormatARGB32 ? compaction<ARGB32> : compaction<BGRX32>;
}

/// `convertPixels`, or the same around the cache where the 3-byte format is one of the two.
void convertRow(int32_t sourceFormat, const uint8_t* source, int32_t destinationFormat, uint8_t* destination,
                int32_t count, bool streamed)
{
    if (!streamed || sourceFormat == destinationFormat)
        convertPixels(sourceFormat, source, destinationFormat, destination, count);
    else
        convertStreamed(sourceFormat == PixelFormatRGB24 ? expansionTo(destinationFormat)
                                                         : compactionFrom(sourceFormat),
                        source, destination, count);
}

} // namespace

} // namespace qvr::conversion

namespace qvr
{

void convertPixels(int32_t sourceFormat, const uint8_t* source, int32_t destinationFormat,
                   uint8_t* destination, int32_t count)
{
    const bool fromRGB24 = sourceFormat == PixelFormatRGB24;
    const bool toRGB24 = destinationFormat == PixelFormatRGB24;
    if (fromRGB24 && toRGB24)
        libc::memcpy(destination, source, static_cast<size_t>(count) * 3);
    else if (fromRGB24)
        conversion::convert(conversion::expansionTo(destinationFormat), source, destination, count);
    else if (toRGB24)
        conversion::convert(conversion::compactionFrom(sourceFormat), source, destination, count);
    else if (destinationFormat == PixelFormatBGRX32)
        conversion::reverseFromArgb(source, destination, count);
    else
        conversion::reverseToArgb(source, destination, count);
}

void packPicture(const PictureReader& reader, uint8_t* packed)
{
    const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(reader.width) * 3;
    const bool streamed = isStreamedSize(static_cast<int64_t>(rowBytes) * reader.height);
    for (int32_t row = 0; row < reader.height; ++row)
        conversion::convertRow(reader.pixelFormat, reader.rowAddress(row), PixelFormatRGB24,
                               packed + row * rowBytes, reader.width, streamed);
    if (streamed)
        endStreaming();
}

void unpackPicture(const PictureWriter& writer, const uint8_t* packed, int32_t columns, int32_t rows)
{
    const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(columns) * 3;
    const bool streamed = isStreamedSize(static_cast<int64_t>(writer.rowBytes) * writer.height);
    for (int32_t row = 0; row < minimum(rows, writer.height); ++row)
        conversion::convertRow(PixelFormatRGB24, packed + row * rowBytes, writer.pixelFormat,
                               writer.rowAddress(row), minimum(columns, writer.width), streamed);
    if (streamed)
        endStreaming();
}

void copyColours(const PictureEditor& picture, int32_t row, int32_t column, int32_t count, uint32_t* colours)
{
    const uint8_t* const pixels =
        picture.rowAddress(row) + static_cast<ptrdiff_t>(column) * picture.bytesPerPixel;
    if (picture.pixelFormat == PixelFormatARGB32)
        libc::memcpy(colours, pixels, static_cast<size_t>(count) * 4);
    else
        convertPixels(picture.pixelFormat, pixels, PixelFormatARGB32, reinterpret_cast<uint8_t*>(colours),
                      count);
    for (int32_t i = 0; i < count; ++i)
        colours[i] &= ARGB32::colourMask;
}

} // namespace qvr
