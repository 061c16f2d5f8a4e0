#include "operations/region_tests.h"

#include "editor/walks.h"

namespace qvr::regionTests
{

namespace
{

/// Opens the picture and looks whether every pixel of the rectangle passes.
template <class Formula>
signed char testRectangle(REALpictureStruct* picture, const Rectangle& rectangle, const Formula& passes)
{
    PictureReader reader;
    return reader.open(picture) && allPixels(reader, blockOf(reader, rectangle), passes) ? 1 : 0;
}

/// Its magnitude as a limit of channel differences, which no limit above 255 can change.
int32_t differenceLimit(int32_t tolerance)
{
    const int64_t magnitude = tolerance < 0 ? -static_cast<int64_t>(tolerance) : tolerance;
    return static_cast<int32_t>(minimum<int64_t>(magnitude, 255));
}

template <class Integers>
inline Integers isWithin(Integers difference, int32_t limit)
{
    return (difference <= limit) & (difference >= -limit);
}

} // namespace

signed char isBlack(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width, int32_t height)
{
    return testRectangle(picture, {left, top, width, height},
                         [](auto pixels) { return pixels.matches(0x000000); });
}

signed char isBlack2(REALpictureStruct* picture)
{
    return isBlack(picture, 0, 0, -1, -1);
}

signed char isWhite(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width, int32_t height)
{
    return testRectangle(picture, {left, top, width, height},
                         [](auto pixels) { return pixels.matches(0xFFFFFF); });
}

signed char isWhite2(REALpictureStruct* picture)
{
    return isWhite(picture, 0, 0, -1, -1);
}

signed char isGray(REALpictureStruct* picture, int32_t tolerance, int32_t left, int32_t top, int32_t width,
                   int32_t height)
{
    const Rectangle rectangle{left, top, width, height};
    const int32_t limit = differenceLimit(tolerance);
    if (limit == 0)
        return testRectangle(picture, rectangle, [](auto pixels) { return pixels.isGrey(); });
    return testRectangle(picture, rectangle, [limit](auto pixels) {
        const auto red = pixels.red();
        const auto green = pixels.green();
        const auto blue = pixels.blue();
        return isWithin(red - green, limit) & isWithin(red - blue, limit) & isWithin(green - blue, limit);
    });
}

signed char isGray2(REALpictureStruct* picture, int32_t tolerance)
{
    return isGray(picture, tolerance, 0, 0, -1, -1);
}

double ColornessQVR(REALpictureStruct* picture, int32_t threshold)
{
    constexpr int32_t nearBlack = 29;

    PictureReader reader;
    if (!reader.open(picture))
        return 0.0;
    const int32_t negated = wrappingSubtract(0, threshold);
    const int32_t coloured = countPixels(reader, [threshold, negated](auto pixels) {
        const auto red = pixels.red();
        const auto green = pixels.green();
        const auto blue = pixels.blue();
        const auto differs = (green - blue > threshold) | (green - red > threshold) |
                             (green - blue < negated) | (green - red < negated);
        return differs & ((red > nearBlack) | (green > nearBlack) | (blue > nearBlack));
    });
    return static_cast<double>(coloured) / static_cast<double>(pixelCount(reader));
}

} // namespace qvr::regionTests
