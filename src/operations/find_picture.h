/// \file
/// Search for a picture inside another.
#pragma once

#include "abi/host_abi.h"

namespace qvr::findPicture
{

/// Looks for an exact copy of `sub` (alpha not looked at) and gives the column and row of its top-left
/// corner; false with x = y = 0 when there is none, when either picture cannot be opened or has no pixels, or
/// without working memory.
///
/// Candidates are tried row by row from the top, left to right. A candidate whose first row fits but whose
/// other rows do not leaves the row counters of both pictures where they are, so later rows are compared
/// further down and row 0 comes again past the last row: scripts rely on the exact outcome, which can be a
/// place where `sub` is not.
signed char FindPicture(REALpictureStruct* self, REALpictureStruct* sub, int32_t& x, int32_t& y);

} // namespace qvr::findPicture
