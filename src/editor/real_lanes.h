/// \file
/// Channels as real numbers, lane by lane, and their conversion back to integers.
#pragma once

#include "editor/lanes.h"

namespace qvr
{

/// Channel values as doubles; exact.
template <class Integers>
QVR_INLINE inline auto toDoubles(Integers values)
{
    return __builtin_convertvector(values, typename LanesOf<Integers>::Doubles);
}

/// The same in single precision, which is exact up to 2^24.
template <class Integers>
QVR_INLINE inline auto toFloats(Integers values)
{
    return __builtin_convertvector(values, typename LanesOf<Integers>::Floats);
}

/// Truncates values of either precision that are known to fit 32-bit integers.
template <class Reals>
QVR_INLINE inline auto truncateFitting(Reals values)
{
    return __builtin_convertvector(values, typename LanesOf<Reals>::Integers);
}

/// Truncates values below 2^31 to 0 to 255: what is negative, and NaN, becomes 0, what is above 255 becomes
/// 255.
template <class Doubles>
QVR_INLINE inline auto truncateToBytes(Doubles values)
{
    const Doubles black{};
    const Doubles white = black + 255.0;
    const Doubles positive = values > black ? values : black;
    return truncateFitting(positive < white ? positive : white);
}

/// Truncates any values to 32-bit integers; what does not fit, and NaN, becomes -2147483648.
template <class Doubles>
QVR_INLINE inline auto truncateAny(Doubles values)
{
    const Doubles least = Doubles{} - 2147483648.0;
    const Doubles aboveLeast = values > least ? values : least;
    return truncateFitting(aboveLeast < -least ? aboveLeast : least);
}

} // namespace qvr
