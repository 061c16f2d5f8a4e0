#include "operations/find_picture.h"

#include "editor/walks.h"
#include "system/heap_array.h"

namespace qvr::findPicture
{

namespace
{

/// The colours of neighbouring pixels of one row, as `ARGB32` words with spare byte 0.
class RowColours
{
public:
    static constexpr int32_t blockLength = 256;

    /// `count` pixels (at most `blockLength`) of a row of the picture, from `column` on. They stay valid
    /// until the next call.
    const uint32_t* load(const PictureEditor& picture, const uint8_t* row, int32_t column, int32_t count)
    {
        const uint8_t* pixels = row + static_cast<ptrdiff_t>(column) * picture.bytesPerPixel;
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

/// Whether the row of `sub` at its cursor has the colours that the row of `self` at its cursor has from
/// `column` on.
bool rowsMatch(const PictureReader& self, int32_t column, const PictureReader& sub)
{
    RowColours selfColours;
    RowColours subColours;
    for (int32_t done = 0; done < sub.width; done += RowColours::blockLength)
    {
        const int32_t count = minimum(RowColours::blockLength, sub.width - done);
        const uint32_t* const wanted = subColours.load(sub, sub.rowPointer, done, count);
        const uint32_t* const present = selfColours.load(self, self.rowPointer, column + done, count);
        for (int32_t i = 0; i < count; ++i)
            if (wanted[i] != present[i])
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

/// Finds the places of one row of colours in other rows, in time that grows with the rows' length only
/// (Knuth, Morris and Pratt), and at memory speed where the row's first colour does not occur.
class RowSearch
{
public:
    /// Takes the row of `sub` at its cursor; `sub` has pixels.
    explicit RowSearch(const PictureReader& sub) : length(sub.width), pattern(sub.width), fallback(sub.width)
    {
        if (!*this)
            return;
        RowColours colours;
        for (int32_t done = 0; done < length; done += RowColours::blockLength)
        {
            const int32_t count = minimum(RowColours::blockLength, length - done);
            libc::memcpy(&pattern[done], colours.load(sub, sub.rowPointer, done, count),
                         static_cast<size_t>(count) * 4);
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

    /// Calls `candidate(column)` for every place of the pattern in a row of `self`, left to right, until it
    /// returns true; whether it did.
    template <class Candidate>
    bool search(const PictureReader& self, const uint8_t* row, const Candidate& candidate) const
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
                column += skip(row + static_cast<ptrdiff_t>(column) * 4, self.width - column, key);
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
        if (!rowsMatch(self, column, sub))
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
    const RowSearch firstRow(subReader);
    if (!firstRow)
        return 0;

    for (int32_t pass = 0; pass <= selfReader.height - subReader.height; ++pass)
    {
        const bool onlyRowZeroLeft = hasEnded(selfReader);
        bool tried = false;
        int32_t column = 0;
        const bool found = firstRow.search(selfReader, selfReader.rowPointer, [&](int32_t candidate) {
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
