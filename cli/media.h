/// \file
/// Files on the one side, the host's pictures and memory blocks on the other. All functions throw
/// standin::Error with the file's name when a file cannot be read, understood or written.
#pragma once

#include "host/host.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace cli
{

std::string readBytes(const std::string& path);
void writeBytes(const std::string& path, std::span<const std::uint8_t> bytes);

/// Loads a PNG, JPEG, BMP, TGA, GIF or PNM image; its alpha goes into the pixels' alpha byte, 255 where it
/// has none.
standin::Picture loadPicture(standin::Host& host, const std::string& path,
                             std::optional<standin::Storage> storage = std::nullopt);

/// Whether `savePicture` knows what a name ends in.
bool isPictureName(const std::string& path);

/// Packed 8-bit rows, three or four bytes a pixel.
struct Image
{
    int width = 0;
    int height = 0;
    int channels = 3;
    std::vector<std::uint8_t> bytes;
};

/// The colours of a picture, and its alpha byte if wanted.
Image imageOf(const standin::Picture& picture, bool alpha = false);

/// Saves as PNG, JPEG, BMP or TGA, whichever the name ends in.
void saveImage(const Image& image, const std::string& path);

/// The image scaled to a width, or itself when it is no wider.
Image scaledTo(Image image, int width);

/// The samples of a PCM sound (".wav"), as they are stored; any other file as it is.
standin::MemoryBlock loadBlock(standin::Host& host, const std::string& path);

/// A file as the type that a declaration asks for.
standin::Value loadFile(standin::Host& host, const std::string& path, standin::Type type,
                        std::optional<standin::Storage> storage = std::nullopt);

} // namespace cli
