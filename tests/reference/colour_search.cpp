#include "tests/reference/colour_search.h"

namespace reference
{

namespace
{

bool matches(Pixel pixel, std::uint32_t colour)
{
    return colourOf(pixel) == (colour & 0xFFFFFF);
}

/// Cells around a picture of `width` x `height`: one more on every side.
class Grid
{
public:
    Grid(int width, int height)
        : stride(width + 2),
          cells(static_cast<std::size_t>(width + 2) * static_cast<std::size_t>(height + 2))
    {
    }
    std::uint8_t& at(int column, int row)
    {
        return cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(stride) +
                     static_cast<std::size_t>(column)];
    }
    bool rowHasMark(int row, int leftColumn, int rightColumn)
    {
        for (int column = leftColumn; column <= rightColumn; ++column)
            if (at(column, row) == 1)
                return true;
        return false;
    }
    bool columnHasMark(int column, int top, int bottom)
    {
        for (int row = top; row <= bottom; ++row)
            if (at(column, row) == 1)
                return true;
        return false;
    }

private:
    int stride;
    std::vector<std::uint8_t> cells;
};

void markColoured(const Picture& source, Rectangle rectangle, int sourceBytes, Grid& marks)
{
    const RawRows rows(source, sourceBytes);
    const Area area = clipped(rectangle, source.width, source.height);
    // The rows read are the picture's first ones; the cells are those of the rectangle.
    for (int k = 0; k < area.rows(); ++k)
        for (int j = 0; j < area.columns(); ++j)
        {
            const std::optional<Pixel> pixel = rows.load(k, area.left * 4 + j * sourceBytes);
            const bool coloured = pixel && (pixel->red != pixel->green || pixel->green != pixel->blue);
            marks.at(area.left + j + 1, area.top + k + 1) = coloured;
        }
}

/// Grows a rectangle from one mark, clears it in `marks` and sets it in `mask`.
void growFrom(int column, int row, Grid& marks, Grid& mask)
{
    int left = column;
    int right = column;
    int top = row;
    int bottom = row;
    for (bool changed = true; changed;)
    {
        changed = false;
        if (marks.rowHasMark(top - 1, left, right))
        {
            --top;
            changed = true;
        }
        if (marks.rowHasMark(bottom + 1, left, right))
        {
            ++bottom;
            changed = true;
        }
        if (marks.columnHasMark(left - 1, top, bottom))
        {
            --left;
            changed = true;
        }
        if (marks.columnHasMark(right + 1, top, bottom))
        {
            ++right;
            changed = true;
        }
    }
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x)
        {
            marks.at(x, y) = 0;
            mask.at(x, y) = 1;
        }
}

/// Grows one rectangle from the first mark in reading order; false when there is none.
bool growFirst(int width, int height, Grid& marks, Grid& mask)
{
    for (int row = 1; row <= height; ++row)
        for (int column = 1; column <= width; ++column)
            if (marks.at(column, row) == 1)
            {
                growFrom(column, row, marks, mask);
                return true;
            }
    return false;
}

} // namespace

int countColor(const Picture& source, std::uint32_t colour)
{
    int count = 0;
    for (const Pixel& pixel : source.pixels)
        count += matches(pixel, colour);
    return count;
}

Picture replaceColor(const Picture& source, std::uint32_t search, std::uint32_t replacement)
{
    return mapped(source, [=](Pixel pixel) { return matches(pixel, search) ? pixelOf(replacement) : pixel; });
}

Picture extractColor(const Picture& source, std::uint32_t search, std::uint32_t replacement,
                     std::uint32_t background)
{
    return mapped(source,
                  [=](Pixel pixel) { return pixelOf(matches(pixel, search) ? replacement : background); });
}

Picture colorRectangleMask(const Picture& source, Rectangle rectangle, int sourceBytes)
{
    Grid marks(source.width, source.height);
    Grid mask(source.width, source.height);
    markColoured(source, rectangle, sourceBytes, marks);
    while (growFirst(source.width, source.height, marks, mask))
    {
    }

    Picture result(source.width, source.height, pixelOf(0xFFFFFF));
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < source.width; ++x)
            if (mask.at(x + 1, y + 1) == 1)
                result.at(x, y) = pixelOf(0);
    return result;
}

} // namespace reference
