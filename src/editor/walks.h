/// \file
/// The walks that operations are made of: a handler gives the formula of one pixel and gets the whole method.
///
/// A formula is a generic lambda. It is called with a vector of pixels (`Pixels`) of each picture read and
/// returns what its walk asks for, lane by lane. Work that is not done lane by lane has walks over words.
#pragma once

#include "editor/runs.h"

namespace qvr
{

namespace detail
{

template <class Format, class Lane>
struct RunLoop
{
    using Words = typename Lane::Words;
    using Integers = typename Lane::Integers;
    using PixelVector = Pixels<Format, Lane>;
    static constexpr int32_t bytes = sizeof(Words);

    QVR_INLINE static PixelVector load(const uint8_t* address)
    {
        return {loadFrom<Words>(address)};
    }

    /// Fewer pixels than there are lanes; the first one fills the lanes beyond.
    QVR_INLINE static PixelVector loadSome(const uint8_t* address, int32_t count)
    {
        uint32_t lanes[Lane::count];
        for (int32_t i = 0; i < Lane::count; ++i)
            __builtin_memcpy(&lanes[i], address + (i < count ? i * 4 : 0), 4);
        return load(reinterpret_cast<const uint8_t*>(lanes));
    }

    QVR_INLINE static void storeSome(uint8_t* address, Words words, int32_t count)
    {
        for (int32_t i = 0; i < count; ++i)
            storeAt<uint32_t>(address + i * 4, words[i]);
    }

    /// -1 in the first `count` lanes.
    QVR_INLINE static Integers firstLanes(int32_t count)
    {
        Integers lane{};
        for (int32_t i = 0; i < Lane::count; ++i)
            lane[i] = i;
        return lane < count;
    }

    /// One bit a lane, set where the mask is -1.
    QVR_INLINE static uint32_t bitsOf(Integers mask)
    {
        typedef float Quarter __attribute__((vector_size(16)));
        if constexpr (Lane::count == 4)
            return static_cast<uint32_t>(__builtin_ia32_movmskps(reinterpret_cast<Quarter>(mask)));
        else
        {
            const auto low = __builtin_shufflevector(mask, mask, 0, 1, 2, 3);
            const auto high = __builtin_shufflevector(mask, mask, 4, 5, 6, 7);
            return static_cast<uint32_t>(__builtin_ia32_movmskps(reinterpret_cast<Quarter>(low)) |
                                         __builtin_ia32_movmskps(reinterpret_cast<Quarter>(high)) << 4);
        }
    }
};

/// The formula's value for the pixels from `index` on; `load` fetches a vector of them. A formula without
/// sources gets the place of the pixels to draw instead.
template <int32_t SourceCount, class Loop, class Formula, class Load>
QVR_INLINE inline auto formulaAt(const Formula& formula, const Run& run, int32_t index, const Load& load)
{
    if constexpr (SourceCount == 0)
        return formula(typename Loop::PixelVector{}, run.row, run.column + index);
    else if constexpr (SourceCount == 1)
        return formula(load(run.sources[0] + index * 4));
    else if constexpr (SourceCount == 2)
        return formula(load(run.sources[0] + index * 4), load(run.sources[1] + index * 4));
    else
        return formula(load(run.sources[0] + index * 4), load(run.sources[1] + index * 4),
                       load(run.sources[2] + index * 4));
}

/// Stores the formula's value of every pixel.
template <int32_t SourceCount, class Formula>
struct MapRun
{
    const Formula& sharedFormula;

    template <class Format, class Lane>
    QVR_INLINE bool visit(const Run& sharedRun) const
    {
        using Loop = RunLoop<Format, Lane>;
        using PixelVector = typename Loop::PixelVector;

        // Copies of its own: for all the compiler knows, a stored pixel could change the originals.
        const Run run = sharedRun;
        const Formula formula = sharedFormula;

        const auto wordsAt = [&](int32_t index) QVR_INLINE {
            return PixelVector::stored(formulaAt<SourceCount, Loop>(
                formula, run, index, [](const uint8_t* pixels) QVR_INLINE { return Loop::load(pixels); }));
        };
        const auto mapSome = [&](int32_t index, int32_t count) QVR_INLINE {
            const auto loadSome = [count](const uint8_t* pixels)
                                      QVR_INLINE { return Loop::loadSome(pixels, count); };
            const auto words =
                PixelVector::stored(formulaAt<SourceCount, Loop>(formula, run, index, loadSome));
            Loop::storeSome(run.destination + index * 4, words, count);
        };

        const StreamedPart streamed = streamedPart(run);
        for (int32_t index = 0; index < run.count;)
        {
            if (index == streamed.begin)
                for (; index < streamed.end; index += Lane::count)
                    streamTo(run.destination + index * 4, wordsAt(index));
            const int32_t end = index < streamed.begin ? streamed.begin : run.count;
            for (; index + Lane::count <= end; index += Lane::count)
                storeAt(run.destination + index * 4, wordsAt(index));
            if (index < end)
            {
                mapSome(index, end - index);
                index = end;
            }
        }
        return true;
    }
};

/// Counts the pixels that pass.
template <class Formula>
struct CountRun
{
    const Formula& passes;
    int32_t& total;

    template <class Format, class Lane>
    QVR_INLINE bool visit(const Run& run) const
    {
        using Loop = RunLoop<Format, Lane>;

        const uint8_t* pixels = run.sources[0];
        typename Loop::Integers count{};
        int32_t index = 0;
        for (; index + Lane::count <= run.count; index += Lane::count)
            count -= passes(Loop::load(pixels + index * 4));
        if (index < run.count)
        {
            const int32_t rest = run.count - index;
            count -= passes(Loop::loadSome(pixels + index * 4, rest)) & Loop::firstLanes(rest);
        }
        for (int32_t i = 0; i < Lane::count; ++i)
            total = wrappingAdd(total, count[i]);
        return true;
    }
};

/// Sets a bit for every pixel that passes.
template <class Formula, class BitsOfRow>
struct MarkRun
{
    const Formula& sharedPasses;
    const BitsOfRow& bitsOfRow;

    template <class Format, class Lane>
    QVR_INLINE bool visit(const Run& sharedRun) const
    {
        using Loop = RunLoop<Format, Lane>;
        constexpr int32_t wordBits = 32;

        // Copies of its own, as in MapRun.
        const Run run = sharedRun;
        const Formula passes = sharedPasses;
        // Converted runs start at multiples of a word's bits.
        uint32_t* bits = bitsOfRow(run.row) + run.column / wordBits;
        const uint8_t* pixels = run.sources[0];
        for (int32_t index = 0; index < run.count; index += wordBits, ++bits)
        {
            const int32_t count = minimum(wordBits, run.count - index);
            uint32_t word = 0;
            int32_t bit = 0;
            for (; bit + Lane::count <= count; bit += Lane::count)
                word |= Loop::bitsOf(passes(Loop::load(pixels + (index + bit) * 4))) << bit;
            if (bit < count)
                word |= Loop::bitsOf(passes(Loop::loadSome(pixels + (index + bit) * 4, count - bit)) &
                                     Loop::firstLanes(count - bit))
                        << bit;
            *bits = word;
        }
        return true;
    }
};

/// Looks for the first pixel that passes, and ends the walk there.
template <class Formula>
struct FindRun
{
    const Formula& passes;
    int32_t& foundColumn;

    template <class Format, class Lane>
    QVR_INLINE bool visit(const Run& run) const
    {
        using Loop = RunLoop<Format, Lane>;
        // Looking at the outcome costs more than a test, so it is looked at once for several vectors.
        constexpr int32_t testedTogether = 4 * Lane::count;

        const uint8_t* pixels = run.sources[0];
        const auto foundIn = [&](typename Loop::Integers passed, int32_t index) QVR_INLINE {
            const uint32_t bits = Loop::bitsOf(passed);
            if (bits != 0)
                foundColumn = run.column + index + __builtin_ctz(bits);
            return bits != 0;
        };
        const auto foundAt = [&](int32_t index) QVR_INLINE {
            return foundIn(passes(Loop::load(pixels + index * 4)), index);
        };
        if (run.count < Lane::count)
            return !foundIn(passes(Loop::loadSome(pixels, run.count)) & Loop::firstLanes(run.count), 0);

        // Loads that cross cache lines cost twice, so all but the first and the last are aligned; looking at
        // a pixel again changes nothing.
        if (foundAt(0))
            return false;
        int32_t index =
            (Loop::bytes - static_cast<int32_t>(reinterpret_cast<uintptr_t>(pixels) % Loop::bytes)) / 4;
        for (; index + testedTogether <= run.count; index += testedTogether)
        {
            typename Loop::Integers found{};
            for (int32_t i = 0; i < testedTogether; i += Lane::count)
                found |= passes(Loop::load(pixels + (index + i) * 4));
            if (Loop::bitsOf(found) != 0)
                break;
        }
        for (; index + Lane::count <= run.count; index += Lane::count)
            if (foundAt(index))
                return false;
        return !foundAt(run.count - Lane::count);
    }
};

/// Stores the function's value of every word.
template <class Function>
struct MapWordsRun
{
    const Function& mapped;

    template <class Format, class Lane>
    bool visit(const Run& sharedRun) const
    {
        // A copy of its own, as in MapRun.
        const Run run = sharedRun;
        const auto wordAt = [&](int32_t index) {
            return Format::fromArgb(mapped(Format::toArgb(loadFrom<uint32_t>(run.sources[0] + index * 4))));
        };
        if (run.streamed && reinterpret_cast<uintptr_t>(run.destination) % 4 == 0)
            for (int32_t index = 0; index < run.count; ++index)
                streamTo(run.destination + index * 4, wordAt(index));
        else
            for (int32_t index = 0; index < run.count; ++index)
                storeAt(run.destination + index * 4, wordAt(index));
        return true;
    }
};

/// Hands out the words, where they lie or from a buffer.
template <class Function>
struct WordsRun
{
    const Function& function;

    template <class Format, class Lane>
    bool visit(const Run& run) const
    {
        constexpr int32_t bufferedWords = 256;

        const uint8_t* pixels = run.sources[0];
        if (Format::code == PixelFormatARGB32 && reinterpret_cast<uintptr_t>(pixels) % 4 == 0)
        {
            function(reinterpret_cast<const uint32_t*>(pixels), run.count);
            return true;
        }
        uint32_t words[bufferedWords];
        for (int32_t done = 0; done < run.count; done += bufferedWords)
        {
            const int32_t count = minimum(bufferedWords, run.count - done);
            for (int32_t i = 0; i < count; ++i)
                words[i] = Format::toArgb(loadFrom<uint32_t>(pixels + (done + i) * 4));
            function(words, count);
        }
        return true;
    }
};

template <class Visitor, class Format>
bool visitNarrow(const void* visitor, const Run& run)
{
    return static_cast<const Visitor*>(visitor)->template visit<Format, NarrowLanes>(run);
}

template <class Visitor, class Format>
QVR_WIDE_TARGET bool visitWide(const void* visitor, const Run& run)
{
    return static_cast<const Visitor*>(visitor)->template visit<Format, WideLanes>(run);
}

/// A visitor that does not work lane by lane, or must do with the narrow ones.
template <class Visitor>
RunVisitor narrowVisitor(const Visitor& visitor)
{
    return {&visitor, visitNarrow<Visitor, ARGB32>, visitNarrow<Visitor, BGRX32>};
}

template <class Visitor>
RunVisitor runVisitor(const Visitor& visitor)
{
    if (wideLanesAvailable())
        return {&visitor, visitWide<Visitor, ARGB32>, visitWide<Visitor, BGRX32>};
    return narrowVisitor(visitor);
}

} // namespace detail

/// Writes the formula's value of every pixel of the block. The formula takes the pixels of every source and
/// returns `Pixels`, `Channels`, `UnclampedChannels` or `RawWords`. The destination may be one of the
/// sources. Columns outside any of the pictures are left out.
template <class Formula, class... Readers>
void mapBlock(const PictureEditor& destination, const Block& block, const Formula& formula,
              const Readers&... readers)
{
    constexpr int32_t sourceCount = sizeof...(Readers);
    const PictureEditor* const sources[] = {&readers..., nullptr};
    const detail::MapRun<sourceCount, Formula> visitor{formula};
    visitRuns(detail::runVisitor(visitor), block, sources, sourceCount, &destination);
}

/// Draws the top-left `columns` by `rows` pixels: `formula(pixels, row, column)` gives the pixels from that
/// place on. `pixels` only carries the type to return.
template <class Formula>
void drawPicture(const PictureWriter& writer, int32_t columns, int32_t rows, const Formula& formula)
{
    mapBlock(writer, {0, columns, 0, rows}, formula);
}

/// Whether every pixel of the block passes: the formula returns -1 where one does and 0 where it does not.
template <class Formula>
bool allPixels(const PictureReader& reader, const Block& block, const Formula& passes)
{
    int32_t column = 0;
    const PictureEditor* const source = &reader;
    const auto fails = [&passes](auto pixels) { return ~passes(pixels); };
    const detail::FindRun<decltype(fails)> visitor{fails, column};
    return visitRuns(detail::runVisitor(visitor), block, &source, 1, nullptr);
}

/// The number of pixels of the picture that pass; the formula is that of `allPixels`.
template <class Formula>
int32_t countPixels(const PictureReader& reader, const Formula& passes)
{
    int32_t total = 0;
    const PictureEditor* const source = &reader;
    const detail::CountRun<Formula> visitor{passes, total};
    visitRuns(detail::runVisitor(visitor), wholeBlock(reader), &source, 1, nullptr);
    return total;
}

/// Sets bit i of `bitsOfRow(row)` for the block's pixel i of that row where it passes, and clears it where it
/// does not; whole 32-bit words are written. The formula is that of `allPixels`.
template <class Formula, class BitsOfRow>
void markPixels(const PictureReader& reader, const Block& block, const Formula& passes,
                const BitsOfRow& bitsOfRow)
{
    const PictureEditor* const source = &reader;
    const detail::MarkRun<Formula, BitsOfRow> visitor{passes, bitsOfRow};
    visitRuns(detail::runVisitor(visitor), block, &source, 1, nullptr);
}

/// The first column, from `column` on, of row `row` whose pixel passes; the picture's width when none does.
/// The formula is that of `allPixels`.
template <class Formula>
int32_t findPixel(const PictureReader& reader, int32_t row, int32_t column, const Formula& passes)
{
    int32_t found = reader.width - column;
    const PictureEditor* const source = &reader;
    const detail::FindRun<Formula> visitor{passes, found};
    visitRuns(detail::runVisitor(visitor),
              {column * reader.bytesPerPixel, reader.width - column, row, row + 1}, &source, 1, nullptr);
    return column + found;
}

/// Calls `function(words, count)` for the pixels of the block, as many at a time as lie side by side; the
/// words are aligned, and in `ARGB32` with anything as alpha.
template <class Function>
void forEachWords(const PictureReader& reader, const Block& block, const Function& function)
{
    const PictureEditor* const source = &reader;
    const detail::WordsRun<Function> visitor{function};
    visitRuns(detail::narrowVisitor(visitor), block, &source, 1, nullptr);
}

/// Writes `mapped(word)` for every pixel of the block: a word in `ARGB32` for another, whose alpha is 255.
template <class Function>
void mapWords(const PictureWriter& writer, const Block& block, const Function& mapped,
              const PictureReader& reader)
{
    const PictureEditor* const source = &reader;
    const detail::MapWordsRun<Function> visitor{mapped};
    visitRuns(detail::narrowVisitor(visitor), block, &source, 1, &writer);
}

/// A new picture in which the pixels of `blockFor(reader)` have the formula's values of the picture's pixels;
/// the others are as the host made them.
///
/// One reference is the caller's. Null when the picture cannot be opened, when a side is not 1 to 32767, or
/// when the host cannot make the result.
template <class BlockFor, class Formula>
REALpictureStruct* mapPart(REALpictureStruct* picture, const BlockFor& blockFor, const Formula& formula)
{
    PictureReader reader;
    PictureWriter writer;
    if (!reader.open(picture) || !writer.openNew(reader.width, reader.height))
        return nullptr;
    mapBlock(writer, blockFor(reader), formula, reader);
    return writer.RenderPictureWriter();
}

/// `mapPart` for a rectangle.
template <class Formula>
REALpictureStruct* mapRectangle(REALpictureStruct* picture, const Rectangle& rectangle,
                                const Formula& formula)
{
    return mapPart(
        picture, [&rectangle](const PictureReader& reader) { return blockOf(reader, rectangle); }, formula);
}

/// The rectangle that means the whole picture.
constexpr Rectangle wholePicture{0, 0, -1, -1};

/// `mapPart` for the whole picture.
template <class Formula>
REALpictureStruct* mapPicture(REALpictureStruct* picture, const Formula& formula)
{
    return mapRectangle(picture, wholePicture, formula);
}

} // namespace qvr
