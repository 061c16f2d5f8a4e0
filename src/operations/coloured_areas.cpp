#include "operations/coloured_areas.h"

#include "editor/walks.h"

namespace qvr::colourSearch
{

namespace
{

constexpr int32_t wordBits = BitGrid::wordBits;

/// The bits of word `word` that lie from `first` to `last`.
uint32_t bitsOfWord(int32_t word, int32_t first, int32_t last)
{
    uint32_t bits = UINT32_MAX;
    if (word == first / wordBits)
        bits &= UINT32_MAX << first % wordBits;
    if (word == last / wordBits)
        bits &= UINT32_MAX >> (wordBits - 1 - last % wordBits);
    return bits;
}

/// Mirrors a square of 32 by 32 bits along its diagonal, halving the squares that change places.
void transposeSquare(uint32_t (&square)[wordBits])
{
    uint32_t kept = 0x0000FFFF;
    for (int32_t half = wordBits / 2; half != 0; half /= 2, kept ^= kept << half)
        for (int32_t i = 0; i < wordBits; i = (i + half + 1) & ~half)
        {
            const uint32_t exchanged = (square[i] >> half ^ square[i + half]) & kept;
            square[i] ^= exchanged << half;
            square[i + half] ^= exchanged;
        }
}

} // namespace

bool BitGrid::any(int32_t index, int32_t first, int32_t last) const
{
    const uint32_t* const bits = row(index);
    for (int32_t word = first / wordBits; word <= last / wordBits; ++word)
        if ((bits[word] & bitsOfWord(word, first, last)) != 0)
            return true;
    return false;
}

void BitGrid::set(int32_t index, int32_t first, int32_t last) const
{
    uint32_t* const bits = row(index);
    for (int32_t word = first / wordBits; word <= last / wordBits; ++word)
        bits[word] |= bitsOfWord(word, first, last);
}

void BitGrid::clear(int32_t index, int32_t first, int32_t last) const
{
    uint32_t* const bits = row(index);
    for (int32_t word = first / wordBits; word <= last / wordBits; ++word)
        bits[word] &= ~bitsOfWord(word, first, last);
}

ColouredAreas::ColouredAreas(int32_t columnCount, int32_t rowCount)
    : columns(columnCount),
      rows(rowCount),
      marks(columnCount, rowCount),
      columnMarks(rowCount, columnCount)
{
}

void ColouredAreas::mark(const PictureReader& reader, const Block& block)
{
    markPixels(
        reader, block, [](auto pixels) { return ~pixels.isGrey(); },
        [this](int32_t row) { return marks.row(row); });
    transposeMarks();
}

void ColouredAreas::transposeMarks()
{
    uint32_t square[wordBits];
    for (int32_t top = 0; top < rows; top += wordBits)
        for (int32_t left = 0; left < columns; left += wordBits)
        {
            const int32_t height = minimum(wordBits, rows - top);
            uint32_t any = 0;
            for (int32_t i = 0; i < wordBits; ++i)
                any |= square[i] = i < height ? marks.row(top + i)[left / wordBits] : 0;
            if (any == 0)
                continue;
            transposeSquare(square);
            for (int32_t i = 0; i < minimum(wordBits, columns - left); ++i)
                columnMarks.row(left + i)[top / wordBits] = square[i];
        }
}

bool ColouredAreas::findFirstMark(Area& area)
{
    const int32_t words = (columns + wordBits - 1) / wordBits;
    for (; nextRow < rows; ++nextRow, nextWord = 0)
        for (; nextWord < words; ++nextWord)
            if (const uint32_t bits = marks.row(nextRow)[nextWord])
            {
                area.left = area.right = nextWord * wordBits + __builtin_ctz(bits);
                area.top = area.bottom = nextRow;
                return true;
            }
    return false;
}

/// Grows until no side has a mark beside it. The order of growing cannot change where that ends, and nothing
/// is left to find above the first mark. What a side has shown to be empty is not read again: only the cells
/// that have come to it.
void ColouredAreas::grow(Area& area) const
{
    int32_t leftSeen = area.top;  // column left of the area: rows before this one are empty
    int32_t rightSeen = area.top; // column right of it, likewise
    Area below{0, -1, 0, 0};      // row below it: these columns are empty

    for (bool grown = true; grown;)
    {
        grown = false;
        if (area.bottom + 1 < rows)
        {
            const int32_t row = area.bottom + 1;
            const bool unseen = below.left > below.right;
            const bool found =
                unseen ? marks.any(row, area.left, area.right)
                       : (area.left < below.left && marks.any(row, area.left, below.left - 1)) ||
                             (area.right > below.right && marks.any(row, below.right + 1, area.right));
            below = {found ? 0 : area.left, found ? -1 : area.right, 0, 0};
            area.bottom += found ? 1 : 0;
            grown |= found;
        }
        if (area.left > 0 && leftSeen <= area.bottom)
        {
            const bool found = columnMarks.any(area.left - 1, leftSeen, area.bottom);
            leftSeen = found ? area.top : area.bottom + 1;
            area.left -= found ? 1 : 0;
            grown |= found;
        }
        if (area.right + 1 < columns && rightSeen <= area.bottom)
        {
            const bool found = columnMarks.any(area.right + 1, rightSeen, area.bottom);
            rightSeen = found ? area.top : area.bottom + 1;
            area.right += found ? 1 : 0;
            grown |= found;
        }
    }
}

bool ColouredAreas::takeNext(Area& area)
{
    if (!findFirstMark(area))
        return false;
    grow(area);
    for (int32_t row = area.top; row <= area.bottom; ++row)
        marks.clear(row, area.left, area.right);
    for (int32_t column = area.left; column <= area.right; ++column)
        columnMarks.clear(column, area.top, area.bottom);
    return true;
}

} // namespace qvr::colourSearch
