/// \file
/// Image files. All functions throw standin::Error with the file's name when a file cannot be read,
/// understood or written.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace media
{

/// Packed 8-bit rows: R, G, B or R, G, B, A.
struct Image
{
    int width = 0;
    int height = 0;
    int channels = 3;
    std::vector<std::uint8_t> bytes;
};

/// Reads a PNG, JPEG, BMP, TGA, GIF or PNM image with three or four channels; where it has no alpha, that is
/// 255.
Image readImage(const std::string& path, int channels);

/// The image in a file's bytes; `path` is for messages.
Image decoded(std::span<const std::uint8_t> file, const std::string& path, int channels);

/// Throws standin::Error unless the name ends in one of the formats that `writeImage` knows.
void checkImageName(const std::string& path);

/// Writes a PNG, JPEG, BMP or TGA image, whichever the name ends in.
void writeImage(const std::string& path, const Image& image);

/// What `writeImage` would write.
std::vector<std::uint8_t> encoded(const std::string& path, const Image& image);

/// Writes packed rows of R, G, B, A as PNG.
void writePng(const std::string& path, int width, int height, std::span<const std::uint8_t> rgba);

/// The image in another size.
Image scaled(const Image& image, int width, int height);

/// The average of each colour over all pixels.
std::array<double, 3> averageOf(const Image& image);

/// An image with alpha as it looks over a chequered ground, with three channels.
Image overChequers(const Image& image);

} // namespace media
