/// \file
/// Integer helpers and the one conversion from double to integer that the plug-in uses.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace qvr
{

template <class Number>
constexpr Number minimum(Number a, Number b)
{
    return b < a ? b : a;
}

template <class Number>
constexpr Number maximum(Number a, Number b)
{
    return a < b ? b : a;
}

/// `start + length` as a pixel position at most `limit`; an end beyond the 32-bit range counts as `limit` or
/// as the most negative integer.
constexpr int32_t endWithin(int32_t start, int32_t length, int32_t limit)
{
    const int64_t end = static_cast<int64_t>(start) + length;
    return static_cast<int32_t>(maximum<int64_t>(minimum<int64_t>(end, limit), INT32_MIN));
}

/// Sum, difference and product that wrap as 32-bit machine arithmetic does.
constexpr int32_t wrappingAdd(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t wrappingSubtract(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
constexpr int32_t wrappingMultiply(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// Whether truncating `value` gives a 32-bit integer; false for NaN.
constexpr bool fitsInt32(double value)
{
    return value > -2147483649.0 && value < 2147483648.0;
}

/// Truncates toward zero; what does not fit, and NaN, becomes -2147483648, as the processor's conversion
/// does.
constexpr int32_t truncateToInt32(double value)
{
    return fitsInt32(value) ? static_cast<int32_t>(value) : INT32_MIN;
}

} // namespace qvr
