#pragma once

#include "tests/reference/filter_block.h"

#include <vector>

namespace reference
{

/// A cube of 18 x 18 x 18 nodes with three levels each, red slowest, as the filter keeps it.
class ColourCube
{
public:
    static constexpr int nodes = 18;

    double& at(int red, int green, int blue, int component)
    {
        return entries[static_cast<std::size_t>(((red * nodes + green) * nodes + blue) * 3 + component)];
    }
    double at(int red, int green, int blue, int component) const
    {
        return const_cast<ColourCube*>(this)->at(red, green, blue, component);
    }

    std::vector<double> entries = std::vector<double>(nodes * nodes * nodes * 3);
};

/// The cube that maps colours to themselves.
ColourCube identityCube();

/// One component of a colour, interpolated between the nodes around it, not yet a level.
double interpolate(const ColourCube& cube, int red, int green, int blue, int component);

/// `result`, a picture of the source's size as the host makes it, with the mapped block in it.
Picture mapThroughCube(const Picture& source, const ColourCube& cube, const FilterRectangle& rectangle,
                       Picture result);

} // namespace reference
