/// \file
/// Pictures of coloured shapes on grey, each of them hard for somebody who looks for rectangles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench
{

/// Which pixels are coloured.
struct Shape
{
    Shape(int shapeWidth, int shapeHeight)
        : width(shapeWidth),
          height(shapeHeight),
          cells(static_cast<std::size_t>(shapeWidth) * shapeHeight)
    {
    }

    bool coloured(int x, int y) const
    {
        return cells[index(x, y)];
    }
    void colour(int x, int y)
    {
        if (inside(x, y))
            cells[index(x, y)] = true;
    }
    bool inside(int x, int y) const
    {
        return x >= 0 && y >= 0 && x < width && y < height;
    }

    int width;
    int height;

private:
    std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * width + x;
    }

    std::vector<bool> cells;
};

/// A number that depends on nothing but the place, and looks random.
std::uint32_t scatter(int x, int y);

Shape blobs(int width, int height);          ///< round, 1 % of the picture
Shape randomPixels(int width, int height);   ///< 0.1 % single pixels
Shape isolatedPixels(int width, int height); ///< one on every second column and row
Shape checkerboard(int width, int height);   ///< pixels that touch at corners only
Shape columns(int width, int height);        ///< every second column
Shape lines(int width, int height);          ///< every second row
Shape diagonals(int width, int height);      ///< chains of pixels that touch at corners only
Shape stairs(int width, int height);         ///< flights of stairs that touch along edges
Shape spiral(int width, int height);         ///< one line, one pixel wide
Shape combs(int width, int height);          ///< teeth that only meet in the row below them

} // namespace bench
