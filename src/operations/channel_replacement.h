/// \file
/// Copies of a picture with one channel taken from another picture.
///
/// The channel picture may be larger; its top-left part is used. A nil one raises "NilObjectException" with
/// "The channel picture is nil.". The result is new and opaque and one reference is the caller's; null after
/// that exception, when either picture cannot be opened, when the channel picture is smaller in either
/// direction, when a side is not 1 to 32767, or when the host cannot make the result.
#pragma once

#include "abi/host_abi.h"

namespace qvr::channelReplacement
{

REALpictureStruct* ReplaceRedChannel(REALpictureStruct* self, REALpictureStruct* channel);
REALpictureStruct* ReplaceGreenChannel(REALpictureStruct* self, REALpictureStruct* channel);
REALpictureStruct* ReplaceBlueChannel(REALpictureStruct* self, REALpictureStruct* channel);

} // namespace qvr::channelReplacement
