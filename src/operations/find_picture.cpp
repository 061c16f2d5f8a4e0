#include "operations/find_picture.h"

#include "editor/walks.h"
#include "system/heap_array.h"

namespace qvr::findPicture
{

namespace
{

/// So many colours are compared at a time.
constexpr int32_t blockLength = 256;

/// Whether row `subRow` of `sub` has the colours that row `row` of `self` has from `column` on.
bool rowsMatch(const PictureReader& self, int32_t row, int32_t column, const PictureReader& sub,
               int32_t subRow)
{
    uint32_t present[blockLength];
    uint32_t wanted[blockLength];
    for (int32_t done = 0; done < sub.width; done += blockLength)
    {
        const int32_t count = minimum(blockLength, sub.width - done);
        copyColours(self, row, column + done, count, present);
        copyColours(sub, subRow, done, count, wanted);
        for (int32_t i = 0; i < count; ++i)
            if (wanted[i] != present[i])
                return false;
    }
    return true;
}

/// Finds the places of a picture's row 0 in other rows, in time that grows with the rows' length only (Knuth,
/// Morris and Pratt), and at memory speed where the row's first colour does not occur. Without working memory
/// it finds the same, more slowly.
class FirstRowSearch
{
public:
    /// `sub` has pixels, and outlives the search.
    explicit FirstRowSearch(const PictureReader& sub)
        : sub(sub),
          length(sub.width),
          pattern(sub.width),
          fallback(sub.width)
    {
        uint32_t firstWord = 0;
        copyColours(sub, 0, 0, 1, &firstWord);
        firstColour = ARGB32::colourOf(firstWord);
        if (!pattern || !fallback)
            return;
        copyColours(sub, 0, 0, length, pattern.get());
        for (int32_t i = 1, matched = 0; i < length; ++i)
        {
            matched = advanced(matched, pattern[i]);
            fallback[i] = matched;
        }
    }

    /// Calls `candidate(column)` for every place of the row in row `row` of `self`, left to right, until it
    /// returns true; whether it did.
    template <class Candidate>
    bool search(const PictureReader& self, int32_t row, const Candidate& candidate) const
    {
        return pattern && fallback ? searchInOnePass(self, row, candidate)
                                   : searchEveryPlace(self, row, candidate);
    }

private:
    /// So many pixels are looked at one by one before the next try to skip.
    static constexpr int32_t resumeAfter = 16;

    /// The first column from `column` on whose pixel has the first colour; the row's width when there is
    /// none.
    int32_t findFirstColour(const PictureReader& self, int32_t row, int32_t column) const
    {
        return findPixel(self, row, column,
                         [colour = firstColour](auto pixels) { return pixels.matches(colour); });
    }

    template <class Candidate>
    bool searchInOnePass(const PictureReader& self, int32_t row, const Candidate& candidate) const
    {
        uint32_t colours[blockLength];
        int32_t matched = 0;
        for (int32_t column = 0; column < self.width;)
        {
            const bool skipping = matched == 0;
            if (skipping)
                column = findFirstColour(self, row, column);
            const int32_t count = minimum(skipping ? resumeAfter : blockLength, self.width - column);
            copyColours(self, row, column, count, colours);
            for (int32_t i = 0; i < count; ++i)
            {
                matched = advanced(matched, colours[i]);
                if (matched < length)
                    continue;
                if (candidate(column + i + 1 - length))
                    return true;
                matched = fallback[length - 1];
            }
            column += count;
        }
        return false;
    }

    template <class Candidate>
    bool searchEveryPlace(const PictureReader& self, int32_t row, const Candidate& candidate) const
    {
        const int32_t lastColumn = self.width - length;
        for (int32_t column = findFirstColour(self, row, 0); column <= lastColumn;
             column = findFirstColour(self, row, column + 1))
            if (rowsMatch(self, row, column, sub, 0) && candidate(column))
                return true;
        return false;
    }

    /// The number of pattern pixels that match up to the pixel `word`, when `matched` did before it.
    int32_t advanced(int32_t matched, uint32_t word) const
    {
        while (matched > 0 && pattern[matched] != word)
            matched = fallback[matched - 1];
        return pattern[matched] == word ? matched + 1 : matched;
    }

    const PictureReader& sub;
    int32_t length;
    uint32_t firstColour = 0;
    HeapArray<uint32_t> pattern;
    HeapArray<int32_t> fallback;
};

/// Whether the row counter has passed the last row, after which the cursor is at row 0 for good.
bool hasEnded(const PictureReader& reader)
{
    return reader.y >= reader.height;
}

/// Whether the rows of `sub` after its first match at `column`. The cursors stay where the comparison ends.
bool restMatches(PictureReader& self, int32_t column, PictureReader& sub)
{
    self.NextRow();
    sub.NextRow();
    for (int32_t i = 1; i < sub.height; ++i)
    {
        if (!rowsMatch(self, self.y, column, sub, sub.y))
            return false;
        // The rows still to come are the same two again.
        if (hasEnded(self) && hasEnded(sub))
            return true;
        self.NextRow();
        sub.NextRow();
    }
    return true;
}

} // namespace

signed char FindPicture(REALpictureStruct* self, REALpictureStruct* sub, int32_t& x, int32_t& y)
{
    x = 0;
    y = 0;
    PictureReader selfReader;
    PictureReader subReader;
    if (!selfReader.open(self) || !subReader.open(sub) || subReader.width < 1 || subReader.height < 1)
        return 0;
    if (selfReader.height < subReader.height || selfReader.width < subReader.width)
        return 0;
    const FirstRowSearch firstRow(subReader);
    for (int32_t pass = 0; pass <= selfReader.height - subReader.height; ++pass)
    {
        const bool onlyRowZeroLeft = hasEnded(selfReader);
        bool tried = false;
        int32_t column = 0;
        const bool found = firstRow.search(selfReader, selfReader.y, [&](int32_t candidate) {
            tried = true;
            column = candidate;
            return restMatches(selfReader, candidate, subReader);
        });
        if (found)
        {
            x = column;
            y = pass;
            return 1;
        }
        // Without a candidate nothing moves any more, and every further pass would scan the same row.
        if (onlyRowZeroLeft && !tried)
            return 0;
        // From the row counter, which candidates have moved on, not from the row just scanned. Kept as it is.
        selfReader.NextRow();
    }
    return 0;
}

} // namespace qvr::findPicture
