/// \file
/// Channels in double precision, lane by lane, and their conversion back to integers.
#pragma once

#include "editor/pixels.h"

namespace qvr
{

/// The vector types of the walk that hands out `PixelVector`.
template <class PixelVector>
using LaneOf = typename PixelVector::Lane;

/// Channel values as doubles; exact.
template <class Lane>
QVR_INLINE inline typename Lane::Doubles toDoubles(typename Lane::Integers values)
{
    return __builtin_convertvector(values, typename Lane::Doubles);
}

/// Truncates values below 2^31 to 0 to 255: what is negative, and NaN, becomes 0, what is above 255 becomes
/// 255.
template <class Lane>
QVR_INLINE inline typename Lane::Integers truncateToBytes(typename Lane::Doubles values)
{
    using Doubles = typename Lane::Doubles;
    const Doubles black{};
    const Doubles white = black + 255.0;
    const Doubles positive = values > black ? values : black;
    return __builtin_convertvector(positive < white ? positive : white, typename Lane::Integers);
}

/// Truncates values that are known to fit 32-bit integers.
template <class Lane>
QVR_INLINE inline typename Lane::Integers truncateFitting(typename Lane::Doubles values)
{
    return __builtin_convertvector(values, typename Lane::Integers);
}

/// Truncates any values to 32-bit integers; what does not fit, and NaN, becomes -2147483648.
template <class Lane>
QVR_INLINE inline typename Lane::Integers truncateAny(typename Lane::Doubles values)
{
    using Doubles = typename Lane::Doubles;
    const Doubles least = Doubles{} - 2147483648.0;
    const Doubles aboveLeast = values > least ? values : least;
    return __builtin_convertvector(aboveLeast < -least ? aboveLeast : least, typename Lane::Integers);
}

} // namespace qvr
