/// \file
/// Sound files, as far as samples can be taken from them. All functions throw standin::Error with the file's
/// name.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace media
{

/// The samples of a WAV file that holds them uncompressed: of 8 bits as bytes without sign, of 16 bits with
/// sign, low byte first. Of 24 and 32 bits the upper 16 are taken. `path` is for messages, which name what
/// the file holds in place of such samples.
std::vector<std::uint8_t> samplesOf(std::span<const std::uint8_t> file, const std::string& path);

} // namespace media
