#include "operations/inversion.h"

#include "editor/walks.h"

namespace qvr::inversion
{

REALpictureStruct* InvertPicture(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width,
                                 int32_t height)
{
    // Unlike every other rectangle, a side of 0 means the picture's here.
    const Rectangle rectangle{left, top, width == 0 ? -1 : width, height == 0 ? -1 : height};
    return mapRectangle(picture, rectangle, [](auto pixels) { return ~pixels; });
}

REALpictureStruct* InvertPicture2(REALpictureStruct* picture)
{
    return InvertPicture(picture, 0, 0, -1, -1);
}

REALpictureStruct* InvertGrayPicture(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width,
                                     int32_t height)
{
    return mapRectangle(picture, {left, top, width, height},
                        [](auto pixels) { return select(pixels.isGrey(), ~pixels, pixels); });
}

REALpictureStruct* InvertGrayPicture2(REALpictureStruct* picture)
{
    return InvertGrayPicture(picture, 0, 0, -1, -1);
}

} // namespace qvr::inversion
