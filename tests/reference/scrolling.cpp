#include "tests/reference/scrolling.h"

namespace reference
{

int rotationShift(int delta, int size)
{
    const int half = size / 2;
    int shift = delta % size;
    if (shift >= half)
        shift -= size;
    if (shift <= -half)
        shift += size;
    return shift;
}

namespace
{

int wrapped(int position, int size)
{
    const int rest = position % size;
    return rest < 0 ? rest + size : rest;
}

} // namespace

Picture rotateVertically(const Picture& picture, int delta)
{
    Picture result = picture;
    const int shift = rotationShift(delta, picture.height);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            result.at(x, y) = picture.at(x, wrapped(y - shift, picture.height));
    return result;
}

Picture rotateHorizontally(const Picture& picture, int delta)
{
    Picture result = picture;
    const int shift = rotationShift(delta, picture.width);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            result.at(x, y) = picture.at(wrapped(x - shift, picture.width), y);
    return result;
}

} // namespace reference
