#pragma once

#include "tests/reference/picture.h"

#include <optional>
#include <string>

namespace reference
{

/// The fields of a binary string's header, each a big-endian 32-bit number; the defaults are what a writer
/// puts there.
struct BinaryStringHeader
{
    std::string magic = "PPIC";
    std::uint32_t length = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 32;
    std::uint32_t dataOffset = 40;
};

/// The 40 bytes of a header.
std::string headerBytes(const BinaryStringHeader& header);

/// The picture as a string: the header, then packed rows of red, green, blue.
std::string toBinaryString(const Picture& picture);

/// The picture in a string; nothing when the string is none or promises more than it holds.
std::optional<Picture> fromBinaryString(const std::string& text);

} // namespace reference
