#include "editor/pixels.h"

namespace qvr::pixels
{

namespace
{

uint8_t* pixelAddress(const PictureEditor& picture, int32_t x, int32_t y)
{
    return picture.rowAddress(y) + static_cast<ptrdiff_t>(x) * picture.bytesPerPixel;
}

/// The step from red to green and from green to blue, in bytes.
int32_t channelStep(const PictureEditor& picture)
{
    return picture.pixelFormat == PixelFormatBGRX32 ? -1 : 1;
}

} // namespace

} // namespace qvr::pixels

namespace qvr
{

uint32_t colourAt(const PictureEditor& picture, int32_t x, int32_t y)
{
    const uint8_t* const red = pixels::pixelAddress(picture, x, y) + redByteOf(picture.pixelFormat);
    const int32_t step = pixels::channelStep(picture);
    return static_cast<uint32_t>(red[0]) << 16 | static_cast<uint32_t>(red[step]) << 8 | red[2 * step];
}

void setColourAt(const PictureEditor& picture, int32_t x, int32_t y, uint32_t colour)
{
    uint8_t* const pixel = pixels::pixelAddress(picture, x, y);
    uint8_t* const red = pixel + redByteOf(picture.pixelFormat);
    const int32_t step = pixels::channelStep(picture);
    red[0] = static_cast<uint8_t>(redOf(colour));
    red[step] = static_cast<uint8_t>(greenOf(colour));
    red[2 * step] = static_cast<uint8_t>(blueOf(colour));
    if (picture.pixelFormat == PixelFormatARGB32)
        pixel[0] = 255;
    else if (picture.pixelFormat == PixelFormatBGRX32)
        pixel[3] = 0;
}

} // namespace qvr
