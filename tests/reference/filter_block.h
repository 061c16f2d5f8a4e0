#pragma once

#include "tests/reference/picture.h"

namespace reference
{

/// The rectangle properties that both filter classes have.
struct FilterRectangle
{
    int minX = 0;
    int minY = 0;
    int maxX = 0;
    int maxY = 0;
};

/// Columns and rows of the block that a filter computes; it always begins at the top left corner.
struct FilterBlock
{
    int columns = 0;
    int rows = 0;
};

/// The block that the rectangle means for a picture; never larger than the picture.
FilterBlock filterBlock(const FilterRectangle& rectangle, int width, int height);

} // namespace reference
