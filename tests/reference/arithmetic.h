#pragma once

#include <cstdint>
#include <limits>

namespace reference
{

/// Truncates towards zero; a value that does not fit, and NaN, becomes the most negative integer.
inline std::int32_t truncated(double value)
{
    if (value > -2147483649.0 && value < 2147483648.0)
        return static_cast<std::int32_t>(value);
    return std::numeric_limits<std::int32_t>::min();
}

inline std::uint8_t clampedByte(std::int32_t value)
{
    return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

inline std::uint8_t lowByte(std::int32_t value)
{
    return static_cast<std::uint8_t>(value & 255);
}

/// The low 32 bits of a wide result, as a signed integer.
inline std::int32_t wrapped(std::int64_t value)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

} // namespace reference
