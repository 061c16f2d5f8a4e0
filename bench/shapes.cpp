#include "bench/shapes.h"

#include <algorithm>

namespace bench
{

namespace
{

template <class Rule>
Shape byRule(int width, int height, Rule rule)
{
    Shape shape(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (rule(x, y))
                shape.colour(x, y);
    return shape;
}

} // namespace

std::uint32_t scatter(int x, int y)
{
    std::uint32_t mixed =
        static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    mixed = (mixed ^ mixed >> 15) * 0x2C1B3C6DU;
    mixed = (mixed ^ mixed >> 12) * 0x297A2D39U;
    return mixed ^ mixed >> 15;
}

Shape blobs(int width, int height)
{
    constexpr int radius = 20;
    constexpr double area = 3.1416 * radius * radius;
    Shape shape(width, height);
    const int count = static_cast<int>(0.01 * width * height / area);
    for (int blob = 0; blob < count; ++blob)
    {
        const int centreX = static_cast<int>(scatter(blob, 1) % static_cast<std::uint32_t>(width));
        const int centreY = static_cast<int>(scatter(blob, 2) % static_cast<std::uint32_t>(height));
        for (int y = -radius; y <= radius; ++y)
            for (int x = -radius; x <= radius; ++x)
                if (x * x + y * y <= radius * radius)
                    shape.colour(centreX + x, centreY + y);
    }
    return shape;
}

Shape randomPixels(int width, int height)
{
    return byRule(width, height, [](int x, int y) { return scatter(x, y) % 1000 == 0; });
}

Shape isolatedPixels(int width, int height)
{
    return byRule(width, height, [](int x, int y) { return x % 2 == 1 && y % 2 == 1; });
}

Shape checkerboard(int width, int height)
{
    return byRule(width, height, [](int x, int y) { return (x + y) % 2 == 0; });
}

Shape columns(int width, int height)
{
    return byRule(width, height, [](int x, int) { return x % 2 == 0; });
}

Shape lines(int width, int height)
{
    return byRule(width, height, [](int, int y) { return y % 2 == 0; });
}

Shape diagonals(int width, int height)
{
    return byRule(width, height, [](int x, int y) { return (x + y) % 7 == 0; });
}

Shape stairs(int width, int height)
{
    constexpr int distance = 64;
    return byRule(width, height, [](int x, int y) {
        const int step = (x - y % distance + distance) % distance;
        return step == 0 || step == 1;
    });
}

Shape spiral(int width, int height)
{
    constexpr int stepX[] = {1, 0, -1, 0};
    constexpr int stepY[] = {0, 1, 0, -1};
    Shape shape(width, height);
    int x = 0;
    int y = 0;
    int direction = 0;
    int turns = 0;
    shape.colour(x, y);
    while (turns < 2)
    {
        const int nextX = x + stepX[direction];
        const int nextY = y + stepY[direction];
        const int aheadX = nextX + stepX[direction];
        const int aheadY = nextY + stepY[direction];
        const bool blocked =
            !shape.inside(nextX, nextY) || (shape.inside(aheadX, aheadY) && shape.coloured(aheadX, aheadY));
        if (blocked)
        {
            direction = (direction + 1) % 4;
            ++turns;
            continue;
        }
        turns = 0;
        x = nextX;
        y = nextY;
        shape.colour(x, y);
    }
    return shape;
}

Shape combs(int width, int height)
{
    constexpr int tooth = 63;
    return byRule(width, height, [](int x, int y) {
        return y % (tooth + 2) == tooth || (x % 2 == 0 && y % (tooth + 2) < tooth);
    });
}

} // namespace bench
