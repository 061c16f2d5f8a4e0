#pragma once

#include "tests/reference/raw_rows.h"

namespace reference
{

/// InvertQVR. `sourceBytes` and `resultBytes` are the bytes a pixel of the two storages; what the rectangle
/// leaves out is `untouched`.
Picture invert(const Picture& source, Rectangle rectangle, int sourceBytes = 4, int resultBytes = 4);

/// InvertGrayQVR: only where the three channels are equal.
Picture invertGray(const Picture& source, Rectangle rectangle, int sourceBytes = 4, int resultBytes = 4);

} // namespace reference
