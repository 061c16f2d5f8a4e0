#pragma once

#include "media/image.h"
#include "media/reader.h"

#include <string>

namespace media
{

/// Whether a file is a binary PPM or PGM file.
bool isPnm(ByteView file);

/// The image of such a file, with one or three channels, its levels spread to 0 to 255. Throws standin::Error
/// with the reason when there is none.
Image decodedPnm(ByteView file);

/// A PPM file for colours, a PGM file for grey. Throws standin::Error when PGM is wanted for colours.
std::vector<std::uint8_t> encodedPnm(const Image& image, Format format);

} // namespace media
