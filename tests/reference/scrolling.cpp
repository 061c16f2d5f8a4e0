#include "tests/reference/scrolling.h"

#include <cstdint>

namespace reference
{

namespace
{

/// Where a row or column ends that is moved by a distance on a ring of this size.
int moved(int position, int distance, int size)
{
    const std::int64_t end = (std::int64_t{position} + distance) % size;
    return static_cast<int>(end < 0 ? end + size : end);
}

} // namespace

Picture rotateVertically(const Picture& picture, int delta)
{
    Picture result = picture;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            result.at(x, moved(y, delta, picture.height)) = picture.at(x, y);
    return result;
}

Picture rotateHorizontally(const Picture& picture, int delta)
{
    Picture result = picture;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            result.at(moved(x, delta, picture.width), y) = picture.at(x, y);
    return result;
}

} // namespace reference
