/// \file
/// The rectangles that cover the coloured areas of a picture, found on bit grids.
#pragma once

#include "editor/runs.h"
#include "system/heap_array.h"

namespace qvr::colourSearch
{

/// Rows of bits, one bit a cell; cell i of a row is bit i % 32 of its word i / 32.
class BitGrid
{
public:
    static constexpr int32_t wordBits = 32;

    /// All bits 0. A row has a spare word behind its bits.
    BitGrid(int32_t columns, int32_t rows)
        : wordsPerRow(columns / wordBits + 2),
          words(static_cast<int32_t>(minimum<int64_t>(static_cast<int64_t>(wordsPerRow) * rows, INT32_MAX)))
    {
    }

    explicit operator bool() const
    {
        return static_cast<bool>(words);
    }
    uint32_t* row(int32_t index) const
    {
        return words.get() + static_cast<ptrdiff_t>(index) * wordsPerRow;
    }

    int32_t bytesPerRow() const
    {
        return wordsPerRow * 4;
    }

    /// Whether a bit from `first` to `last` of the row is set.
    bool any(int32_t index, int32_t first, int32_t last) const;
    /// Sets or clears the bits from `first` to `last` of the row.
    void set(int32_t index, int32_t first, int32_t last) const;
    void clear(int32_t index, int32_t first, int32_t last) const;

private:
    int32_t wordsPerRow;
    HeapArray<uint32_t> words;
};

/// Finds the coloured areas' rectangles, one after the other.
///
/// The marks are kept by rows and by columns, so that a look along any side of a rectangle reads 32 cells at
/// once.
class ColouredAreas
{
public:
    /// For a block of that many columns and rows.
    ColouredAreas(int32_t columns, int32_t rows);

    /// False when the working memory could not be had.
    explicit operator bool() const
    {
        return marks && columnMarks;
    }

    /// Marks the block's coloured pixels. `block.top` is 0.
    void mark(const PictureReader& reader, const Block& block);

    /// The inclusive bounds of one rectangle.
    struct Area
    {
        int32_t left;
        int32_t right;
        int32_t top;
        int32_t bottom;
    };

    /// Takes the next rectangle: the one that grows from the first mark, from the top, left to right. Its
    /// marks are used up. False when no mark is left.
    bool takeNext(Area& area);

private:
    bool findFirstMark(Area& area);
    void grow(Area& area) const;
    void transposeMarks();

    int32_t columns;
    int32_t rows;
    BitGrid marks;
    BitGrid columnMarks;
    /// Marks above this row, and in it before this word, are used up.
    int32_t nextRow = 0;
    int32_t nextWord = 0;
};

} // namespace qvr::colourSearch
