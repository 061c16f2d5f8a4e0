/// \file
/// Values as the host's language writes them.
#pragma once

#include <cstdint>
#include <string>

namespace standin
{

std::string textOf(std::nullptr_t);
std::string textOf(bool value);
std::string textOf(std::int32_t value);
/// "&c88B5C4"; numbers that are no colour as "&hFF000000".
std::string textOf(std::uint32_t value);
/// With as many digits as tell the number from all others.
std::string textOf(double value);
/// In quotation marks.
std::string textOf(const std::string& value);

} // namespace standin
