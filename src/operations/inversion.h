/// \file
/// Inverted copies of a picture, whole or inside a rectangle.
#pragma once

#include "abi/host_abi.h"

namespace qvr::inversion
{

/// A new picture with every channel c of the rectangle's pixels turned into 255 - c.
///
/// A width or height of 0 or less means the picture's. The result has the picture's size; pixels outside the
/// rectangle are as the host made them. One reference is the caller's; null when the picture cannot be
/// opened, when a side is not 1 to 32767, or when the host cannot make the result.
REALpictureStruct* InvertPicture(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width,
                                 int32_t height);

/// The same for the whole picture.
REALpictureStruct* InvertPicture2(REALpictureStruct* picture);

/// Like `InvertPicture`, but inverts grey pixels only (three equal channels) and copies the others. Only a
/// negative width or height means the picture's; 0 gives an empty rectangle.
REALpictureStruct* InvertGrayPicture(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width,
                                     int32_t height);

/// The same for the whole picture.
REALpictureStruct* InvertGrayPicture2(REALpictureStruct* picture);

} // namespace qvr::inversion
