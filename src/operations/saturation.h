/// \file
/// Colour saturation.
#pragma once

#include "abi/host_abi.h"

namespace qvr::saturation
{

/// Pushes every channel away from (amount > 0) or towards (amount < 0) the pixel's grey value.
///
/// grey = (r + 2g + b) / 4 and c' = grey + (c - grey) * (amount + 255) / 255, in 32-bit integers that wrap,
/// the division truncating toward zero, clamped to 0 to 255. 0 leaves the picture as it is, -255 makes it
/// grey, less than that inverts the colour around the grey value. No range is enforced.
///
/// Returns a new opaque picture, one reference of which is the caller's; null when the picture cannot be
/// opened, when a side is not 1 to 32767, or when the host cannot make the result.
REALpictureStruct* SaturationPicture(REALpictureStruct* picture, int32_t amount);

} // namespace qvr::saturation
