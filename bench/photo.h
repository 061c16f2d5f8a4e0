/// \file
/// A photograph to measure with.
#pragma once

#include "media/image.h"

#include <string>

namespace bench
{

/// The photograph that is used when none is named.
inline constexpr const char* defaultPhoto = "/usr/share/backgrounds/mate/abstract/Elephants_5640x3172.jpg";

/// Reads a picture file as R, G, B; where `path` is empty the default photograph, or a made-up photo-like
/// picture when it is missing. Throws standin::Error when a file that was named cannot be read.
media::Image readPhoto(const std::string& path);

} // namespace bench
