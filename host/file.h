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

/// Writes a whole file, with the permissions of one that it replaces. Throws Error when that fails; then, and
/// when the process is killed, an old file is what it was, and a new one is not there. Devices and pipes are
/// written to as they are.
void writeFile(const std::string& path, std::span<const std::uint8_t> bytes);

} // namespace standin
