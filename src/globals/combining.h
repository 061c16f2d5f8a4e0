/// \file
/// Pictures made from several pictures of one size. The result is new and opaque and one reference is the
/// caller's; null when a picture is nil or cannot be opened, when sizes differ, when a side is not 1 to
/// 32767, or when the host cannot make the result.
#pragma once

#include "abi/host_abi.h"

namespace qvr::combining
{

/// Red from the first picture, blue from the second, green from the third: this order is deliberate.
REALpictureStruct* CombinePicturesQVR(REALpictureStruct* red, REALpictureStruct* blue,
                                      REALpictureStruct* green);

/// Channel by channel the larger of two values.
REALpictureStruct* MergePicture(REALpictureStruct* source1, REALpictureStruct* source2);

} // namespace qvr::combining
