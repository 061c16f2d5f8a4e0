#include "operations/colour_search.h"

#include "editor/walks.h"
#include "operations/coloured_areas.h"

namespace qvr::colourSearch
{

int32_t CountColorQVR(REALpictureStruct* picture, uint32_t colour)
{
    PictureReader reader;
    if (!reader.open(picture))
        return 0;
    return countPixels(reader, [colour](auto pixels) { return pixels.matches(colour); });
}

REALpictureStruct* ReplaceColorQVR(REALpictureStruct* picture, uint32_t search, uint32_t replacement)
{
    return mapPicture(picture, [search, replacement](auto pixels) {
        return select(pixels.matches(search), pixels.withColour(replacement), pixels);
    });
}

REALpictureStruct* ExtractColorQVR(REALpictureStruct* picture, uint32_t search, uint32_t replacement,
                                   uint32_t background)
{
    return mapPicture(picture, [search, replacement, background](auto pixels) {
        return select(pixels.matches(search), pixels.withColour(replacement), pixels.withColour(background));
    });
}

namespace
{

/// Sets the mask's bits in the rectangles of the coloured areas of the block, which lies in the mask at
/// (left, top).
bool coverAreas(const PictureReader& reader, const Block& block, int32_t left, int32_t top,
                const BitGrid& mask)
{
    ColouredAreas areas(block.columns, block.bottom);
    if (!areas)
        return false;
    areas.mark(reader, block);
    ColouredAreas::Area area{};
    while (areas.takeNext(area))
        for (int32_t row = area.top; row <= area.bottom; ++row)
            mask.set(top + row, left + area.left, left + area.right);
    return true;
}

/// Black where a bit of the mask is set, white elsewhere.
void drawMask(const PictureWriter& writer, int32_t width, int32_t height, const BitGrid& mask)
{
    const auto* const bytes = reinterpret_cast<const uint8_t*>(mask.row(0));
    const int32_t bytesPerRow = mask.bytesPerRow();
    drawPicture(writer, width, height, [bytes, bytesPerRow](auto pixels, int32_t row, int32_t column) {
        using Words = decltype(pixels.words);
        Words laneBits{};
        for (int32_t i = 0; i < pixels.count; ++i)
            laneBits[i] = 1U << i;
        // Little-endian bytes, so that any bit can come first; the row's spare word keeps the
        // load inside.
        const auto bits = loadFrom<uint32_t>(bytes + static_cast<ptrdiff_t>(row) * bytesPerRow + column / 8);
        const Words covered = (Words{} + (bits >> column % 8)) & laneBits;
        return select(covered != Words{}, pixels.withColour(0x000000), pixels.withColour(0xFFFFFF));
    });
}

} // namespace

REALpictureStruct* ExtractColorRectangleMaskQVR(REALpictureStruct* picture, int32_t left, int32_t top,
                                                int32_t width, int32_t height)
{
    PictureReader reader;
    if (!reader.open(picture) || !canBeMade(reader.width, reader.height))
        return nullptr;
    const BitGrid mask(reader.width, reader.height);
    if (!mask)
        return nullptr;
    Block block = blockOf(reader, {left, top, width, height});
    // The picture's first rows are looked at, not those of the rectangle, to whose place they are moved. Kept
    // as it is.
    block.bottom -= block.top;
    block.top = 0;
    if (!block.empty() && !coverAreas(reader, block, maximum(left, 0), maximum(top, 0), mask))
        return nullptr;
    PictureWriter writer;
    if (!writer.openNew(reader.width, reader.height))
        return nullptr;
    drawMask(writer, reader.width, reader.height, mask);
    return writer.RenderPictureWriter();
}

REALpictureStruct* ExtractColorRectangleMaskQVR2(REALpictureStruct* picture)
{
    return ExtractColorRectangleMaskQVR(picture, 0, 0, -1, -1);
}

} // namespace qvr::colourSearch
