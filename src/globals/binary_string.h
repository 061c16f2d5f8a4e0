/// \file
/// Pictures as strings of bytes.
///
/// The format, its numbers 32-bit big-endian: the magic "PPIC"; the total length in bytes; width; height;
/// depth (32); offset of the pixel data (40); 16 zero bytes; then packed rows of three bytes a pixel: red,
/// green, blue. Alpha and masks are not carried.
#pragma once

#include "abi/host_abi.h"

namespace qvr::binaryString
{

/// The picture as a new string without a text encoding; one reference is the caller's. Null when the picture
/// cannot be opened, when the string would be longer than 2147483646 bytes, or when memory or the host's
/// string cannot be had.
REALstringStruct* PicturetoBinaryString(REALpictureStruct* picture);

/// The new opaque picture that such a string holds; one reference is the caller's.
///
/// Depth and reserved bytes are ignored, the offset of the pixel data is honoured. Null when the bytes cannot
/// be had, when magic or length are wrong, when a side is not 1 to 32767, when the pixel data is not all
/// inside the string, or when the host cannot make the picture.
REALpictureStruct* BinaryStringtoPicture(REALstringStruct* data);

} // namespace qvr::binaryString
