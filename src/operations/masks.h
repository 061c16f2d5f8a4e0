/// \file
/// Transparency: whether a picture has a mask, and the alpha bytes inside its pixels as a grey picture.
#pragma once

#include "abi/host_abi.h"

namespace qvr::masks
{

/// Whether the host holds a separate mask for the picture; none is made by asking. False for nil.
signed char PictureHasMask(REALpictureStruct* picture);

/// A new opaque grey picture of the pixels' alpha values; `swap` gives 255 minus the value.
///
/// The 3-byte format has no alpha and gives 255. In `PixelFormatBGRX32` the low seven bits of the spare byte
/// x are widened, `(2x & 254) | (x & 1)`, so 127 gives 255 and, deliberately, 128 gives 0. One reference is
/// the caller's; null when the picture cannot be opened, when a side is not 1 to 32767, or when the host
/// cannot make the result.
REALpictureStruct* GetEmbededMask(REALpictureStruct* picture, signed char swap);

/// Stores the mask's red channel (`swap`: 255 minus it) in byte 0 of every pixel, whatever the pixel format.
///
/// Only bytes that belong to the picture's rows are written; a narrower mask leaves the pixels beyond it
/// alone, a lower one starts again at its row 0. Nothing happens when the mask is nil or either picture
/// cannot be opened. A picture that the host can only draw is changed in a copy, and the change is lost.
void SetEmbededMask(REALpictureStruct* picture, signed char swap, REALpictureStruct* mask);

} // namespace qvr::masks
