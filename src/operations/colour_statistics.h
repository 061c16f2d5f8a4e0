/// \file
/// Histograms of a picture and tone curves applied to it.
#pragma once

#include "abi/host_abi.h"

namespace qvr::colourStatistics
{

/// Adds the picture's levels to three histograms of 256 32-bit counters (1024 bytes, native byte order).
///
/// A nil block variable receives a new zeroed block, whose reference the caller's variable then owns; a block
/// passed in is neither resized nor cleared. Deliberately crosswise: the block passed as `blue` counts green
/// and the block passed as `green` counts blue. `count` ends as the number of pixels, or -1 when a block
/// cannot be made, has no data or less than 1024 bytes, or when the picture cannot be opened; no counter has
/// changed then.
void CountColorsQVR(REALpictureStruct* picture, REALmemoryBlockStruct*& red, REALmemoryBlockStruct*& blue,
                    REALmemoryBlockStruct*& green, int32_t& count);

/// Maps each channel through its own table of 256 bytes.
///
/// The result goes into `destination` when that is given, at least as large and can be opened, else into a
/// new opaque picture; one reference of it is the caller's. A nil picture or block raises
/// "NilObjectException" with "picture is nil", "red memoryblock is nil", "green memoryblock is nil" or "blue
/// memoryblock is nil", looked at in this order. Null after that, when a block has no data or less than 256
/// bytes, when the picture cannot be opened, or when a new picture is needed and a side is not 1 to 32767 or
/// the host cannot make it.
REALpictureStruct* TransformColorsQVR(REALpictureStruct* picture, REALmemoryBlockStruct* red,
                                      REALmemoryBlockStruct* blue, REALmemoryBlockStruct* green,
                                      REALpictureStruct* destination);

} // namespace qvr::colourStatistics
