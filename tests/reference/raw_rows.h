/// \file
/// Rectangles, and rows as bytes: some operations start a rectangle's rows at four bytes a pixel whatever the
/// format, so that in a format of three bytes they meet other pixels than those of the rectangle.
#pragma once

#include "tests/reference/picture.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace reference
{

struct Rectangle
{
    int left = 0;
    int top = 0;
    int width = -1;
    int height = -1;
};

/// Columns left .. right - 1 of rows top .. bottom - 1; empty where an end is not behind its start.
struct Area
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int columns() const
    {
        return right > left ? right - left : 0;
    }
    int rows() const
    {
        return bottom > top ? bottom - top : 0;
    }
};

/// Cuts a rectangle at the picture's edges: the far edges come from the left and top as they were given. A
/// negative side is the picture's.
Area clipped(const Rectangle& rectangle, int pictureWidth, int pictureHeight);

/// Rows of 3 (R, G, B) or 4 (R, G, B, A) bytes a pixel.
class RawRows
{
public:
    RawRows(const Picture& picture, int pixelBytes);

    int pixelBytes() const
    {
        return bytesPerPixel;
    }
    /// The pixel whose bytes start at a byte of a row; nothing where they reach beyond the row.
    std::optional<Pixel> load(int y, int offset) const;
    void store(int y, int offset, Pixel pixel);
    bool contains(int offset) const
    {
        return offset + bytesPerPixel <= rowLength;
    }
    Picture picture() const;

private:
    std::size_t index(int y, int offset) const;

    int width;
    int height;
    int bytesPerPixel;
    int rowLength;
    std::vector<std::uint8_t> bytes;
};

} // namespace reference
