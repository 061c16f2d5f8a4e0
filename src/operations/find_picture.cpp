#include "operations/find_picture.h"

#include "editor/walks.h"
#include "frame/heap_array.h"

namespace qvr
{

namespace
{

/// The colours of neighbouring pixels of one row, as `ARGB32` words with spare byte 0.
class RowColours
{
public:
    static constexpr int32_t blockLength = 256;

    /// `count` pixels (at most `blockLength`) from `column` on. They stay valid until the next call.
    const uint32_t* load(const PictureEditor& picture, int32_t row, int32_t column, int32_t count)
    {
        const uint8_t* pixels =
            picture.RowAddress(row) + static_cast<ptrdiff_t>(column) * picture.bytesPerPixel;
        auto* const bytes = reinterpret_cast<uint8_t*>(words);
        if (picture.pixelFormat == PixelFormatARGB32)
            __builtin_memcpy(words, pixels, static_cast<size_t>(count) * 4);
        else
            convertPixels(picture.pixelFormat, pixels, PixelFormatARGB32, bytes, count);
        for (int32_t i = 0; i < count; ++i)
            words[i] &= ARGB32::colourMask;
        return words;
    }

private:
    uint32_t words[blockLength];
};

/// Whether `count` pixels of two rows have the same colours.
bool rowsMatch(const PictureEditor& first, int32_t firstRow, int32_t firstColumn, const PictureEditor& second,
               int32_t secondRow, int32_t count)
{
    RowColours firstColours;
    RowColours secondColours;
    for (int32_t done = 0; done < count; done += RowColours::blockLength)
    {
        const int32_t length = minimum(RowColours::blockLength, count - done);
        const uint32_t* a = firstColours.load(first, firstRow, firstColumn + done, length);
        const uint32_t* b = secondColours.load(second, secondRow, done, length);
        for (int32_t i = 0; i < length; ++i)
            if (a[i] != b[i])
                return false;
    }
    return true;
}

/// Number of leading pixels of a run that do not have the colour `key` (a word with spare byte 0).
template <class Format, class Lane>
QVR_INLINE inline int32_t skipOther(const uint8_t* pixels, int32_t count, uint32_t key)
{
    using Loop = detail::RunLoop<Format, Lane>;
    constexpr int32_t together = 4 * Lane::count;

    int32_t index = 0;
    for (; index + together <= count; index += together)
    {
        typename Loop::Integers found{};
        for (int32_t i = 0; i < together; i += Lane::count)
            found |= Loop::load(pixels + (index + i) * 4).colours() == typename Loop::Words{} + key;
        if (Loop::any(found))
            break;
    }
    for (; index < count; ++index)
    {
        uint32_t word = 0;
        __builtin_memcpy(&word, pixels + index * 4, 4);
        if ((word & Format::colourMask) == key)
            break;
    }
    return index;
}

template <class Format>
int32_t skipOtherNarrow(const uint8_t* pixels, int32_t count, uint32_t key)
{
    return skipOther<Format, NarrowLanes>(pixels, count, key);
}

template <class Format>
QVR_WIDE_TARGET int32_t skipOtherWide(const uint8_t* pixels, int32_t count, uint32_t key)
{
    return skipOther<Format, WideLanes>(pixels, count, key);
}

/// Finds the places of one row of colours in other rows, in time that grows with the rows' length only (Knuth, Morris
/// and Pratt), and at memory speed where the row's first colour does not occur.
class RowSearch
{
public:
    /// Takes row 0 of `sub`, which has pixels.
    explicit RowSearch(const PictureEditor& sub) : length(sub.width), pattern(sub.width), fallback(sub.width)
    {
        if (!*this)
            return;
        RowColours colours;
        for (int32_t done = 0; done < length; done += RowColours::blockLength)
        {
            const int32_t count = minimum(RowColours::blockLength, length - done);
            libc::memcpy(&pattern[done], colours.load(sub, 0, done, count), static_cast<size_t>(count) * 4);
        }
        for (int32_t i = 1, matched = 0; i < length; ++i)
        {
            matched = advanced(matched, pattern[i]);
            fallback[i] = matched;
        }
    }

    explicit operator bool() const
    {
        return pattern && fallback;
    }

    /// Calls `candidate(column)` for every place of the pattern in a row, left to right, until it returns true; whether
    /// it did.
    template <class Candidate>
    bool search(const PictureEditor& self, int32_t row, const Candidate& candidate) const
    {
        const bool direct = self.pixelFormat != PixelFormatRGB24;
        const bool argb = self.pixelFormat != PixelFormatBGRX32;
        const auto skip = wideLanesAvailable() ? (argb ? skipOtherWide<ARGB32> : skipOtherWide<BGRX32>)
                                               : (argb ? skipOtherNarrow<ARGB32> : skipOtherNarrow<BGRX32>);
        const uint32_t key = argb ? pattern[0] : __builtin_bswap32(pattern[0]);
        RowColours colours;
        int32_t matched = 0;
        for (int32_t column = 0; column < self.width;)
        {
            if (matched == 0 && direct)
                column += skip(self.RowAddress(row) + static_cast<ptrdiff_t>(column) * 4, self.width - column, key);
            const int32_t wanted = direct && matched == 0 ? resumeAfter : RowColours::blockLength;
            const int32_t count = minimum(wanted, self.width - column);
            const uint32_t* const words = colours.load(self, row, column, count);
            for (int32_t i = 0; i < count; ++i)
            {
                matched = advanced(matched, words[i]);
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

private:
    /// So many pixels are looked at one by one before the next try to skip.
    static constexpr int32_t resumeAfter = 16;

    /// The number of pattern pixels that match up to the pixel `word`, when `matched` did before it.
    int32_t advanced(int32_t matched, uint32_t word) const
    {
        while (matched > 0 && pattern[matched] != word)
            matched = fallback[matched - 1];
        return pattern[matched] == word ? matched + 1 : matched;
    }

    int32_t length;
    HeapArray<uint32_t> pattern;
    HeapArray<int32_t> fallback;
};

/// The search's row counters. They count on past the last row, where row 0 comes again.
class Cursors
{
public:
    Cursors(const PictureReader& selfReader, const PictureReader& subReader) : self(selfReader), sub(subReader)
    {
    }

    int32_t selfRow() const
    {
        return selfY < self.height ? selfY : 0;
    }

    void advanceSelf()
    {
        selfY = minimum(selfY + 1, self.height);
    }

    /// Whether the rows after the first match at `column`. The counters stay where the comparison ended.
    bool restMatches(int32_t column)
    {
        advance();
        for (int32_t i = 1; i < sub.height; ++i)
        {
            const int32_t subRow = subY < sub.height ? subY : 0;
            if (!rowsMatch(self, selfRow(), column, sub, subRow, sub.width))
                return false;
            // Both back at row 0 for good: the rows still to come are this one again.
            if (selfY >= self.height && subY >= sub.height)
                return true;
            advance();
        }
        return true;
    }

    /// Whether every row to scan from here on is row 0.
    bool selfEnded() const
    {
        return selfY >= self.height;
    }

private:
    void advance()
    {
        advanceSelf();
        subY = minimum(subY + 1, sub.height);
    }

    const PictureReader& self;
    const PictureReader& sub;
    int32_t selfY = 0;
    int32_t subY = 0;
};

} // namespace

signed char FindPicture(REALpictureStruct* self, REALpictureStruct* sub, int32_t& x, int32_t& y)
{
    x = 0;
    y = 0;
    PictureReader selfReader;
    PictureReader subReader;
    if (!selfReader.Open(self) || !subReader.Open(sub) || subReader.width < 1 || subReader.height < 1)
        return 0;
    if (selfReader.height < subReader.height || selfReader.width < subReader.width)
        return 0;
    const RowSearch firstRow(subReader);
    if (!firstRow)
        return 0;

    Cursors cursors(selfReader, subReader);
    for (int32_t pass = 0; pass <= selfReader.height - subReader.height; ++pass)
    {
        bool tried = false;
        int32_t column = 0;
        const bool onlyRowZeroLeft = cursors.selfEnded();
        const bool found = firstRow.search(selfReader, cursors.selfRow(), [&](int32_t candidate) {
            tried = true;
            column = candidate;
            return cursors.restMatches(candidate);
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
        cursors.advanceSelf();
    }
    return 0;
}

} // namespace qvr
