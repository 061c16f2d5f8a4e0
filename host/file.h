#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace standin
{

/// Reads a whole file, or a pipe until it ends. Throws Error when that fails.
std::vector<std::uint8_t> readFile(const std::string& path);
/// The same bytes as a text.
std::string readText(const std::string& path);

/// Writes a whole file. Throws Error when that fails.
void writeFile(const std::string& path, std::span<const std::uint8_t> bytes);

} // namespace standin
