#include "operations/masks.h"

#include "editor/walks.h"

namespace qvr::masks
{

namespace
{

/// The general case of `SetEmbededMask`: a mask of another format than the picture's, or pixels of 3 bytes.
///
/// Every pixel of the picture counts as 4 bytes here, and one is done after the other: a picture of 3-byte
/// pixels that is its own mask reads what it has just written. Kept as it is.
void storeMaskBytes(const PictureEditor& picture, const PictureEditor& mask, uint8_t swapBits)
{
    const int64_t bytesWithin = (static_cast<int64_t>(picture.width) * picture.bytesPerPixel + 3) / 4;
    const auto columns = static_cast<int32_t>(minimum<int64_t>(bytesWithin, mask.width));
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
    const int32_t swapBits = swap != 0 ? 255 : 0;
    return mapPicture(picture, [swapBits](auto pixels) {
        const auto grey = pixels.alpha() ^ swapBits;
        return Channels{grey, grey, grey};
    });
}

void SetEmbededMask(REALpictureStruct* picture, signed char swap, REALpictureStruct* mask)
{
    // Opened for reading although it is written: the host's cached rendering is not cleared. Kept as it is.
    PictureReader pictureReader;
    PictureReader maskReader;
    if (mask == nullptr || !pictureReader.open(picture) || !maskReader.open(mask) || maskReader.height < 1)
        return;
    const int32_t swapBits = swap != 0 ? 255 : 0;
    if (!sameWordFormat(pictureReader, maskReader))
        return storeMaskBytes(pictureReader, maskReader, static_cast<uint8_t>(swapBits));
    // The first byte is alpha in one format alone, but it is what receives a mask in every format.
    mapBlock(
        pictureReader, wholeBlock(pictureReader),
        [swapBits](auto pixels, auto maskPixels) {
            return pixels.withFirstByte(maskPixels.red() ^ swapBits);
        },
        pictureReader, maskReader);
}

} // namespace qvr::masks
