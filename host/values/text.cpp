#include "host/values/text.h"

#include <array>
#include <charconv>

namespace standin
{

std::string textOf(std::nullptr_t)
{
    return "nil";
}

std::string textOf(bool value)
{
    return value ? "true" : "false";
}

std::string textOf(std::int32_t value)
{
    return std::to_string(value);
}

std::string textOf(std::uint32_t value)
{
    constexpr std::uint32_t largestColour = 0xFFFFFF;
    constexpr int colourDigits = 6;
    constexpr int allDigits = 8;
    constexpr int bitsPerDigit = 4;
    const bool isColour = value <= largestColour;
    std::string text = isColour ? "&c" : "&h";
    for (int digit = (isColour ? colourDigits : allDigits) - 1; digit >= 0; --digit)
        text += "0123456789ABCDEF"[(value >> (digit * bitsPerDigit)) & 0xF];
    return text;
}

std::string textOf(double value)
{
    constexpr std::size_t longestDouble = 32;
    std::array<char, longestDouble> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string textOf(const std::string& value)
{
    return "\"" + value + "\"";
}

} // namespace standin
