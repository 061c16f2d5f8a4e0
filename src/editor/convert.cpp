#include "editor/runs.h"

namespace qvr
{

namespace
{

typedef uint8_t Bytes16 __attribute__((vector_size(16)));

uint32_t loadWord(const uint8_t* address)
{
    uint32_t word = 0;
    __builtin_memcpy(&word, address, 4);
    return word;
}

void storeWord(uint8_t* address, uint32_t word)
{
    __builtin_memcpy(address, &word, 4);
}

QVR_INLINE inline Bytes16 loadBytes(const uint8_t* address)
{
    Bytes16 bytes;
    __builtin_memcpy(&bytes, address, sizeof bytes);
    return bytes;
}

QVR_INLINE inline void storeBytes(uint8_t* address, Bytes16 bytes)
{
    __builtin_memcpy(address, &bytes, sizeof bytes);
}

/// Both 4-byte formats have the colour's bytes in opposite orders.
void reverseWords(const uint8_t* source, uint8_t* destination, int32_t count, uint32_t kept, uint32_t added)
{
    for (int32_t i = 0; i < count; ++i)
        storeWord(destination + i * 4, (__builtin_bswap32(loadWord(source + i * 4)) & kept) | added);
}

uint32_t opaque(uint32_t colour)
{
    return colour | ARGB32::spare;
}

/// Four pixels from three words at a time.
void expandNarrow(const uint8_t* source, uint8_t* destination, int32_t count)
{
    int32_t i = 0;
    for (; i + 4 <= count; i += 4, source += 12, destination += 16)
    {
        const uint32_t first = loadWord(source);
        const uint32_t second = loadWord(source + 4);
        const uint32_t third = loadWord(source + 8);
        storeWord(destination, opaque(first << 8));
        storeWord(destination + 4, opaque((first >> 16 & 0xFF00U) | second << 16));
        storeWord(destination + 8, opaque((second >> 8 & 0xFFFF00U) | third << 24));
        storeWord(destination + 12, opaque(third & 0xFFFFFF00U));
    }
    for (; i < count; ++i, source += 3, destination += 4)
        storeWord(destination, opaque(static_cast<uint32_t>(source[0]) << 8 | static_cast<uint32_t>(source[1]) << 16 |
                                      static_cast<uint32_t>(source[2]) << 24));
}

/// Three words from four pixels at a time.
void compactNarrow(const uint8_t* source, uint8_t* destination, int32_t count)
{
    int32_t i = 0;
    for (; i + 4 <= count; i += 4, source += 16, destination += 12)
    {
        const uint32_t second = loadWord(source + 4);
        const uint32_t third = loadWord(source + 8);
        storeWord(destination, loadWord(source) >> 8 | (second & 0xFF00U) << 16);
        storeWord(destination + 4, second >> 16 | (third & 0xFFFF00U) << 8);
        storeWord(destination + 8, third >> 24 | (loadWord(source + 12) & 0xFFFFFF00U));
    }
    for (; i < count; ++i, source += 4, destination += 3)
    {
        destination[0] = source[1];
        destination[1] = source[2];
        destination[2] = source[3];
    }
}

/// Four pixels by one shuffle. A vector reaches four bytes past its twelve, so the last pixels are left to the narrow
/// loop.
QVR_WIDE_TARGET void expandWide(const uint8_t* source, uint8_t* destination, int32_t count)
{
    const Bytes16 alpha = {255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0};
    int32_t i = 0;
    for (; i + 6 <= count; i += 4, source += 12, destination += 16)
    {
        const Bytes16 packed = loadBytes(source);
        storeBytes(destination, __builtin_shufflevector(packed, alpha, 16, 0, 1, 2, 16, 3, 4, 5, 16, 6, 7, 8, 16, 9, 10, 11));
    }
    expandNarrow(source, destination, count - i);
}

QVR_WIDE_TARGET void compactWide(const uint8_t* source, uint8_t* destination, int32_t count)
{
    int32_t i = 0;
    for (; i + 6 <= count; i += 4, source += 16, destination += 12)
    {
        const Bytes16 pixels = loadBytes(source);
        storeBytes(destination,
                   __builtin_shufflevector(pixels, pixels, 1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, -1, -1, -1, -1));
    }
    compactNarrow(source, destination, count - i);
}

} // namespace

void convertToARGB32(int32_t format, const uint8_t* source, uint8_t* destination, int32_t count)
{
    if (format == PixelFormatBGRX32)
        reverseWords(source, destination, count, ARGB32::colourMask, ARGB32::spare);
    else if (format == PixelFormatRGB24)
        (wideLanesAvailable() ? expandWide : expandNarrow)(source, destination, count);
    else
        reverseWords(source, destination, count, 0, 0);
}

void convertFromARGB32(const uint8_t* source, int32_t format, uint8_t* destination, int32_t count)
{
    if (format == PixelFormatBGRX32)
        reverseWords(source, destination, count, BGRX32::colourMask, BGRX32::spare);
    else if (format == PixelFormatRGB24)
        (wideLanesAvailable() ? compactWide : compactNarrow)(source, destination, count);
}

} // namespace qvr
