/// \file
/// Audio samples as a picture of their waveform.
#pragma once

#include "abi/host_abi.h"

namespace qvr::waveform
{

/// Renders `sampleCount` packed samples (less than 1: all of the block) into `width` columns (less than 1:
/// one a sample) and `height` rows (less than 1: 500).
///
/// `bits` gives the sample format: 7 and 15 are signed, 8 and 16 unsigned, of one and two bytes. Each column
/// shows twice the mean of its negative part (above the centre row) and of its positive part (below it). Full
/// scale is 127 or 32767, or with `autoScale` twice the largest value. `smooth` averages exponentially over
/// the columns with the weight 2 / (smooth + 1): 1 changes nothing, -2 and less switch it off. Columns
/// without samples hold NaN, deliberately: they are drawn from row 0 to the centre, and with smoothing so are
/// all after them. `outlineWidth` 1 draws an anti-aliased outline, more a line of the host's own with a pen
/// that wide. Colours are &h00RRGGBB.
///
/// One reference of the new picture is the caller's. A nil block raises "NilObjectException" with
/// "memoryblock is nil". Null after that, for any other `bits`, when the block has no data or less than the
/// samples asked for (if the host tells its size), for more than 32767 columns or rows or no column, without
/// working memory, or when the host cannot make the picture.
REALpictureStruct* RenderSamples(REALmemoryBlockStruct* samples, int32_t sampleCount, int32_t smooth,
                                 int32_t width, int32_t height, int32_t outlineWidth, uint32_t backColour,
                                 uint32_t foreColour, uint32_t outlineColour, int32_t bits,
                                 signed char autoScale);

} // namespace qvr::waveform
