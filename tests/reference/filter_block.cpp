#include "tests/reference/filter_block.h"

#include <algorithm>

namespace reference
{

namespace
{

int extent(int minimum, int maximum, int size)
{
    const std::int64_t end = maximum > minimum && maximum < size ? maximum : size;
    return static_cast<int>(std::clamp<std::int64_t>(end - minimum, 0, size));
}

} // namespace

FilterBlock filterBlock(const FilterRectangle& rectangle, int width, int height)
{
    return {extent(rectangle.minX, rectangle.maxX, width), extent(rectangle.minY, rectangle.maxY, height)};
}

} // namespace reference
