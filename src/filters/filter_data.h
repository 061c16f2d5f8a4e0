/// \file
/// What the instance data of every filter class has.
#pragma once

#include "abi/host_abi.h"

namespace qvr
{

/// A filter's pictures and rectangle, as its properties give them.
///
/// The rectangle is in pixels of the source; a maximum that is not above the minimum and below the picture's
/// size means that size.
struct FilterData
{
    REALpictureStruct* SourcePicture;      ///< counted
    REALpictureStruct* DestinationPicture; ///< counted
    int32_t MinX;
    int32_t MinY;
    int32_t MaxX;
    int32_t MaxY;
};

static_assert(offsetof(FilterData, SourcePicture) == 0);
static_assert(offsetof(FilterData, DestinationPicture) == 4);
static_assert(offsetof(FilterData, MinX) == 8);
static_assert(offsetof(FilterData, MinY) == 12);
static_assert(offsetof(FilterData, MaxX) == 16);
static_assert(offsetof(FilterData, MaxY) == 20);
static_assert(sizeof(FilterData) == 24);

} // namespace qvr
