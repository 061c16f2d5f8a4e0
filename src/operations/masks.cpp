#include "operations/masks.h"

#include "editor/walks.h"

namespace qvr::masks
{

namespace
{

/// Byte 0 of a pixel is alpha in `PixelFormatARGB32` alone, but it is byte 0 that receives a mask in every
/// format.
constexpr uint32_t firstByte = 255;

/// The general case of `SetEmbededMask`, pixel by pixel: a mask of another format than the picture's.
void storeMaskBytes(const PictureEditor& picture, const PictureEditor& mask, int32_t columns,
                    uint8_t swapBits)
{
    const int32_t maskRed = redByteOf(mask.pixelFormat);
    for (int32_t row = 0; row < picture.height; ++row)
    {
        uint8_t* pixel = picture.rowAddress(row);
        const uint8_t* value = mask.rowAddress(row) + maskRed;
        for (int32_t column = 0; column < columns; ++column, pixel += 4, value += mask.bytesPerPixel)
            *pixel = *value ^ swapBits;
    }
}

} // namespace

signed char PictureHasMask(REALpictureStruct* picture)
{
    if (picture == nullptr)
        return 0;
    const Reference<REALpictureStruct> mask{host.REALGetPictureMask(picture, false)};
    return mask ? 1 : 0;
}

REALpictureStruct* GetEmbededMask(REALpictureStruct* picture, signed char swap)
{
    PictureReader reader;
    PictureWriter writer;
    if (!reader.open(picture) || !writer.openNew(reader.width, reader.height))
        return nullptr;
    const int32_t swapBits = swap != 0 ? 255 : 0;
    const auto mapAlpha = [&](auto alphaOf) {
        mapBlock(
            writer, wholeBlock(reader),
            [=](auto pixels) QVR_INLINE {
                const auto grey = alphaOf(pixels.spareByte()) ^ swapBits;
                return Channels<typename decltype(pixels)::Lane>{grey, grey, grey};
            },
            reader);
    };
    if (reader.pixelFormat == PixelFormatBGRX32)
        mapAlpha([](auto spare) QVR_INLINE { return (spare * 2 & 254) | (spare & 1); });
    else
        mapAlpha([](auto alpha) QVR_INLINE { return alpha; });
    return writer.RenderPictureWriter();
}

void SetEmbededMask(REALpictureStruct* picture, signed char swap, REALpictureStruct* mask)
{
    // Opened for reading although it is written: the host's cached rendering is not cleared. Kept as it is.
    PictureReader pictureReader;
    PictureReader maskReader;
    if (mask == nullptr || !pictureReader.open(picture) || !maskReader.open(mask) || maskReader.height < 1)
        return;
    const int32_t swapBits = swap != 0 ? 255 : 0;

    Block block = wholeBlock(pictureReader);
    if (pictureReader.pixelFormat == maskReader.pixelFormat && pictureReader.bytesPerPixel == 4)
    {
        mapBlock(
            pictureReader, block,
            [swapBits](auto pixels, auto maskPixels) QVR_INLINE {
                using PixelVector = decltype(pixels);
                const auto value = reinterpret_cast<typename PixelVector::Words>(maskPixels.red() ^ swapBits);
                return RawWords<typename PixelVector::Lane>{(pixels.words & ~firstByte) | value};
            },
            pictureReader, maskReader);
        return;
    }
    // Every pixel counts as 4 bytes here, which in the 3-byte format reaches past the row's end.
    const int32_t wholePixels = pictureReader.bytesPerPixel == 4
                                    ? pictureReader.width
                                    : (pictureReader.width * pictureReader.bytesPerPixel + 3) / 4;
    storeMaskBytes(pictureReader, maskReader,
                   minimum(minimum(wholePixels, pictureReader.width), maskReader.width),
                   static_cast<uint8_t>(swapBits));
}

} // namespace qvr::masks
