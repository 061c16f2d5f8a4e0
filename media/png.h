#pragma once

#include "media/image.h"

namespace media
{

/// A PNG file. Its bytes depend on the arguments alone, and not on how many processors share the work.
std::vector<std::uint8_t> encodedPng(const Image& image, int compression);

} // namespace media
