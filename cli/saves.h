/// \file
/// Memory blocks that a call has filled, as files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace cli
{

/// A block as the file's name asks for: ".csv" is a line for each 32-bit number, ".png" and ".svg" a chart of
/// 256 counters of that variable, anything else the bytes. Throws standin::Error when it is none of these.
std::vector<std::uint8_t> savedBlock(const std::string& variable, std::span<const std::uint8_t> bytes,
                                     const std::string& path);

} // namespace cli
