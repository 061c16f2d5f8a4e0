/// \file
/// A photograph to measure with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench
{

/// Packed rows of R, G, B.
struct RgbImage
{
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

/// The photograph that is used when none is named.
inline constexpr const char* defaultPhoto = "/usr/share/backgrounds/mate/abstract/Elephants_5640x3172.jpg";

/// Reads a picture file; where `path` is empty the default photograph, or a made-up photo-like picture when
/// it is missing. Throws standin::Error when a file that was named cannot be read.
RgbImage readPhoto(const std::string& path);

/// The same picture in another size.
RgbImage scaled(const RgbImage& image, int width, int height);

} // namespace bench
