/// \file
/// Files on the one side, the host's pictures and memory blocks on the other. All functions throw
/// standin::Error with the file's name when a file cannot be read or understood.
#pragma once

#include "host/host.h"
#include "media/image.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace script
{

/// Loads an image; its alpha goes into the pixels' alpha byte, 255 where it has none.
standin::Picture loadPicture(standin::Host& host, const std::string& path,
                             std::optional<standin::Storage> storage = std::nullopt);

/// A picture of an image with four channels.
standin::Picture pictureOf(standin::Host& host, const media::Image& image,
                           std::optional<standin::Storage> storage = std::nullopt);

/// The colours of a picture, and its alpha byte if wanted.
media::Image imageOf(const standin::Picture& picture, bool alpha = false);

/// Whether a picture of the desktop has alpha bytes that are not 255.
bool isTranslucent(const standin::Picture& picture);

/// Gives an image with four channels the alpha bytes of a picture of its size.
void setAlpha(media::Image& image, const standin::Picture& picture);
/// Gives it the alpha 255.
void setOpaque(media::Image& image);

/// The samples of a WAV file, as media::samplesOf gives them; of a file named .raw, .dat or .bin its bytes.
standin::MemoryBlock loadBlock(standin::Host& host, const std::string& path);

/// The bytes of a text.
inline std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A file as the type that a declaration asks for.
standin::Value loadFile(standin::Host& host, const std::string& path, standin::Type type,
                        std::optional<standin::Storage> storage = std::nullopt);

} // namespace script
