/// \file
/// Walks over locked pictures, row by row, as runs of pixels of one 4-byte format.
///
/// The format is decided once for a whole walk. Where all pictures share a 4-byte format a run is a row, in
/// place; otherwise a run is a block small enough to stay in the first-level cache, converted to `ARGB32` on
/// the way in and from it on the way out.
#pragma once

#include "editor/pixels.h"

namespace qvr
{

/// A rectangle given as left, top, width and height, as scripts give it.
struct Rectangle
{
    int32_t left = 0;
    int32_t top = 0;
    int32_t width = 0;
    int32_t height = 0;
};

/// The pixels of a walk: `columns` pixels from `byteOffset` on, in each row from `top` to before `bottom`.
struct Block
{
    int32_t byteOffset = 0;
    int32_t columns = 0;
    int32_t top = 0;
    int32_t bottom = 0;

    bool empty() const
    {
        return columns < 1 || top >= bottom;
    }
};

/// Columns times rows, in 32 bits that wrap; 0 for a picture that the host describes with a negative side.
int32_t pixelCount(const PictureEditor& picture);

/// All pixels of a picture.
Block wholeBlock(const PictureEditor& picture);

/// The part of `rectangle` that lies inside the picture; a negative width or height means the picture's.
///
/// A row starts `4 * left` bytes in for every format. In the 3-byte format that is a deliberate oddity, kept
/// because scripts can see it; pixels that would end outside the row are left out.
Block blockOf(const PictureEditor& picture, const Rectangle& rectangle);

/// The block's columns that lie inside the rows of `picture`; none when it has no rows.
int32_t columnsWithin(const PictureEditor& picture, const Block& block);

/// Whether both pictures have one 4-byte format.
bool sameWordFormat(const PictureEditor& first, const PictureEditor& second);

/// Whether so many bytes are better stored around the cache: they would not stay in it, and storing that way
/// saves reading the destination first.
bool isStreamedSize(int64_t bytes);

/// Ends stores around the cache, which the processor does not order with any others.
inline void endStreaming()
{
    __builtin_ia32_sfence();
}

/// The most pictures that one walk reads.
constexpr int32_t mostSources = 3;

/// Neighbouring pixels of a walk, at the same place in every picture.
struct Run
{
    const uint8_t* sources[mostSources];
    /// Null in a walk that only reads.
    uint8_t* destination;
    int32_t count;
    /// Where the run starts: its row in the pictures and its column in the block.
    int32_t row;
    int32_t column;
    /// The destination is large: storing around the cache saves reading it first.
    bool streamed;
};

/// The pixels of a run that are stored around the cache: whole cache lines. One that is written both ways
/// costs more than one that is not streamed at all.
struct StreamedPart
{
    int32_t begin;
    int32_t end;
};

/// Empty, and behind the run, when nothing of it is streamed.
inline StreamedPart streamedPart(const Run& run)
{
    constexpr int32_t lineBytes = 64;
    const auto place = static_cast<int32_t>(reinterpret_cast<uintptr_t>(run.destination) % lineBytes);
    const int32_t begin = (lineBytes - place) % lineBytes / 4;
    if (!run.streamed || place % 4 != 0 || begin >= run.count)
        return {run.count, run.count};
    return {begin, begin + (run.count - begin) / (lineBytes / 4) * (lineBytes / 4)};
}

/// What a walk does with a run. `visitor` is the argument of the walk; false ends the walk.
using VisitRun = bool (*)(const void* visitor, const Run& run);

/// A visitor with its code for each 4-byte format.
struct RunVisitor
{
    const void* visitor;
    VisitRun visitARGB32;
    VisitRun visitBGRX32;
};

/// Visits the block's pixels in `sourceCount` pictures and, unless it is null, in the destination, which may
/// be one of them. Columns outside any of the pictures are left out. False when the visitor ended the walk.
bool visitRuns(const RunVisitor& visitor, Block block, const PictureEditor* const* sources,
               int32_t sourceCount, const PictureEditor* destination);

/// Converts `count` pixels from one format to another. The two differ, unless both are `PixelFormatRGB24`.
///
/// A spare byte gets what writers put there; from `PixelFormatBGRX32` to `PixelFormatARGB32` it becomes the
/// alpha that it stands for.
void convertPixels(int32_t sourceFormat, const uint8_t* source, int32_t destinationFormat,
                   uint8_t* destination, int32_t count);

/// Writes the picture's pixels as bytes R, G, B, row after row without gaps.
void packPicture(const PictureReader& reader, uint8_t* packed);

/// Fills the writer with `columns` by `rows` such pixels; what would lie outside the picture is left out.
void unpackPicture(const PictureWriter& writer, const uint8_t* packed, int32_t columns, int32_t rows);

/// The colours of `count` pixels of row `row`, from `column` on, as `ARGB32` words whose spare byte is 0.
void copyColours(const PictureEditor& picture, int32_t row, int32_t column, int32_t count, uint32_t* colours);

} // namespace qvr

/// The fewest bytes of a result that are stored around the cache; tests lower it to stream small pictures.
extern "C" int32_t qvrSmallestStreamed;
