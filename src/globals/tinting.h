/// \file
/// One-colour toning.
#pragma once

#include "abi/host_abi.h"

namespace qvr::tinting
{

/// Reduces each pixel to a grey level with the weights of one colour and colours it with another.
///
/// With every channel of both colours divided by 255: grey = (R * greyR + G * greyG) + B * greyB, and each
/// result channel is grey times the tint's, truncated, at most 255. The weights are not normalised. Colours
/// are &h00RRGGBB. The result is new and opaque and one reference is the caller's; null when the picture
/// cannot be opened, when a side is not 1 to 32767, or when the host cannot make the result.
REALpictureStruct* TintPicture(REALpictureStruct* source, uint32_t greyBase, uint32_t sepiaBase);

} // namespace qvr::tinting
