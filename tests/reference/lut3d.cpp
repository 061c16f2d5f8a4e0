#include "tests/reference/lut3d.h"

#include <algorithm>

namespace reference
{

namespace
{

/// Where a level lies between two nodes of an axis.
struct AxisPosition
{
    explicit AxisPosition(int level)
        : lower(level / 17),
          upper(std::min(lower + 1, 15)),
          fraction((level - 17 * lower) / 17.0)
    {
    }

    int lower;
    int upper;
    double fraction;
};

std::uint8_t toLevel(double value)
{
    if (0 > value)
        return 0;
    if (value > 255.0)
        return 255;
    return value == value ? static_cast<std::uint8_t>(static_cast<int>(value)) : 0;
}

} // namespace

ColourCube identityCube()
{
    ColourCube cube;
    for (int red = 0; red < ColourCube::nodes; ++red)
        for (int green = 0; green < ColourCube::nodes; ++green)
            for (int blue = 0; blue < ColourCube::nodes; ++blue)
            {
                cube.at(red, green, blue, 0) = 17 * red;
                cube.at(red, green, blue, 1) = 17 * green;
                cube.at(red, green, blue, 2) = 17 * blue;
            }
    return cube;
}

double interpolate(const ColourCube& cube, int red, int green, int blue, int component)
{
    const AxisPosition r{red};
    const AxisPosition g{green};
    const AxisPosition b{blue};
    const auto corner = [&](int upperRed, int upperGreen, int upperBlue) {
        return cube.at(upperRed ? r.upper : r.lower, upperGreen ? g.upper : g.lower,
                       upperBlue ? b.upper : b.lower, component);
    };
    const double fr = r.fraction;
    const double fg = g.fraction;
    const double fb = b.fraction;
    if (fr > fg)
    {
        if (fg > fb)
            return (1.0 - fr) * corner(0, 0, 0) + (fr - fg) * corner(1, 0, 0) + (fg - fb) * corner(1, 1, 0) +
                   fb * corner(1, 1, 1);
        if (fr > fb)
            return (1.0 - fr) * corner(0, 0, 0) + (fr - fb) * corner(1, 0, 0) + (fb - fg) * corner(1, 0, 1) +
                   fg * corner(1, 1, 1);
        return (1.0 - fb) * corner(0, 0, 0) + (fb - fr) * corner(0, 0, 1) + (fr - fg) * corner(1, 0, 1) +
               fg * corner(1, 1, 1);
    }
    if (fb > fg)
        return (1.0 - fb) * corner(0, 0, 0) + (fb - fg) * corner(0, 0, 1) + (fg - fr) * corner(0, 1, 1) +
               fr * corner(1, 1, 1);
    if (fb > fr)
        return (1.0 - fg) * corner(0, 0, 0) + (fg - fb) * corner(0, 1, 0) + (fb - fr) * corner(0, 1, 1) +
               fr * corner(1, 1, 1);
    return (1.0 - fg) * corner(0, 0, 0) + (fg - fr) * corner(0, 1, 0) + (fr - fb) * corner(1, 1, 0) +
           fb * corner(1, 1, 1);
}

Picture mapThroughCube(const Picture& source, const ColourCube& cube, const FilterRectangle& rectangle,
                       Picture result)
{
    const FilterBlock block = filterBlock(rectangle, source.width, source.height);
    for (int y = 0; y < block.rows; ++y)
        for (int x = 0; x < block.columns; ++x)
        {
            const Pixel& pixel = source.at(x, y);
            const auto component = [&](int index) {
                return toLevel(interpolate(cube, pixel.red, pixel.green, pixel.blue, index));
            };
            result.at(x, y) = {component(0), component(1), component(2)};
        }
    return result;
}

} // namespace reference
