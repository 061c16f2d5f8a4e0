/// \file
/// Moves a picture's content in place: rotating it (`wrap`) or shifting it and erasing the uncovered band.
///
/// A positive delta moves the content down or to the right. With `scrollMask` the picture's mask, if it has
/// one, moves the same way first. Only pictures held as QuickDraw GWorlds can be shifted.
#pragma once

#include "abi/host_abi.h"

namespace qvr::scrolling
{

/// False, with the picture as it was, when the mask could not be moved, when the picture cannot be opened or
/// is no GWorld to shift, or when working memory cannot be had.
signed char ScrollVerticalQVR(REALpictureStruct* picture, int32_t delta, signed char wrap,
                              signed char scrollMask);

/// Deliberately always true, moved or not.
signed char ScrollHorizontalQVR(REALpictureStruct* picture, int32_t delta, signed char wrap,
                                signed char scrollMask);

/// Horizontally, then vertically; the result is the vertical one.
signed char ScrollQVR(REALpictureStruct* picture, int32_t deltaX, int32_t deltaY, signed char wrap,
                      signed char scrollMask);

} // namespace qvr::scrolling
