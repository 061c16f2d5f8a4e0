/// \file
/// Image files. All functions throw standin::Error with the file's name when a file cannot be read,
/// understood or written.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
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
    bool hasAlpha = false; ///< the file that it was read from has an alpha other than 255
    int frames = 1;        ///< pictures in that file, of which this is the first
};

/// Reads a PNG, JPEG, BMP, TGA, GIF or PNM image with three or four channels; where it has no alpha, that is
/// 255. Of 16 bits eight are kept. The picture is turned as its file says that it is to be looked
/// at.
Image readImage(const std::string& path, int channels);

/// The image in a file's bytes; `path` is for messages.
Image decoded(std::span<const std::uint8_t> file, const std::string& path, int channels);

enum class Format
{
    png,
    jpeg,
    bmp,
    tga,
    ppm, ///< colours
    pgm, ///< levels of grey
    pnm  ///< whichever of the two fits
};

/// How files are written.
struct Encoding
{
    /// 1 to 100. No block edges show, at a tenth of the size of a PNG.
    int jpegQuality = 85;
    /// 0 (none) to 9 (the smallest that there is time for).
    int pngCompression = 6;
};

/// The format with such a name: "png", "jpg", "jpeg", "bmp", "tga", "ppm", "pgm" or "pnm".
std::optional<Format> formatNamed(std::string_view name);

/// The format that a file's name ends in.
Format formatOf(const std::string& path);

/// Whether alpha bytes can be written.
bool holdsAlpha(Format format);

/// A file with the image. Files without alpha get the colours alone.
std::vector<std::uint8_t> encoded(const Image& image, Format format, const Encoding& encoding = {});

/// Writes the image in the format that the name ends in.
void writeImage(const std::string& path, const Image& image, const Encoding& encoding = {});

/// Writes packed rows of R, G, B, A as PNG.
void writePng(const std::string& path, int width, int height, std::span<const std::uint8_t> rgba);

/// Whether no pixel has a colour.
bool isGrey(const Image& image);

/// So many of the channels, from `first` on.
Image channelsOf(const Image& image, int first, int count);

/// The image in another size.
Image scaled(const Image& image, int width, int height);

/// The average of each colour over all pixels.
std::array<double, 3> averageOf(const Image& image);

/// An image with alpha as it looks over a chequered ground, with three channels.
Image overChequers(const Image& image);

} // namespace media
