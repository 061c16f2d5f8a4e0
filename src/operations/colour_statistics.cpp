#include "operations/colour_statistics.h"

#include "editor/walks.h"
#include "runtime/exceptions.h"
#include "runtime/memory_blocks.h"
#include "system/c_library.h"

namespace qvr::colourStatistics
{

namespace
{

constexpr int32_t levels = 256;
constexpr int32_t histogramBytes = levels * 4;

/// Three histograms, each in two copies: neighbouring pixels are often alike, and two increments of one
/// counter have to wait for each other.
struct Histograms
{
    uint32_t red[2][levels];
    uint32_t green[2][levels];
    uint32_t blue[2][levels];

    void count(int32_t copy, uint32_t word)
    {
        ++red[copy][word >> ARGB32::redShift & 255];
        ++green[copy][word >> ARGB32::greenShift & 255];
        ++blue[copy][word >> ARGB32::blueShift & 255];
    }
};

void addCounters(uint8_t* block, const uint32_t (&counters)[2][levels])
{
    for (int32_t level = 0; level < levels; ++level)
        storeAt(block + level * 4,
                loadFrom<uint32_t>(block + level * 4) + counters[0][level] + counters[1][level]);
}

/// The block's data if it has at least `size` bytes, else null.
uint8_t* blockData(REALmemoryBlockStruct* block, int32_t size)
{
    return BlockSize(block).holds(size) ? static_cast<uint8_t*>(host.REALMemoryBlockGetPtr(block)) : nullptr;
}

/// A reference to a memory block for the length of a call, and its data.
struct HeldTable
{
    explicit HeldTable(REALmemoryBlockStruct* block)
        : reference(Reference<REALmemoryBlockStruct>::retain(block)),
          data(blockData(block, levels))
    {
    }
    Reference<REALmemoryBlockStruct> reference;
    const uint8_t* data;
};

/// The three tables with their bytes moved to the channels' places, so that a pixel is the sum of three
/// entries.
struct PlacedTables
{
    uint32_t red[levels];
    uint32_t green[levels];
    uint32_t blue[levels];

    PlacedTables(const uint8_t* redTable, const uint8_t* greenTable, const uint8_t* blueTable)
    {
        for (int32_t level = 0; level < levels; ++level)
        {
            red[level] = static_cast<uint32_t>(redTable[level]) << ARGB32::redShift | ARGB32::spare;
            green[level] = static_cast<uint32_t>(greenTable[level]) << ARGB32::greenShift;
            blue[level] = static_cast<uint32_t>(blueTable[level]) << ARGB32::blueShift;
        }
    }

    uint32_t mapped(uint32_t word) const
    {
        return red[word >> ARGB32::redShift & 255] | green[word >> ARGB32::greenShift & 255] |
               blue[word >> ARGB32::blueShift & 255];
    }
};

/// Opens `destination` if it is large enough, else a new picture.
bool openTarget(PictureWriter& writer, REALpictureStruct* destination, const PictureReader& reader)
{
    if (destination != nullptr && REALGetPropValueInt32(destination, "Width") >= reader.width &&
        REALGetPropValueInt32(destination, "Height") >= reader.height && writer.open(destination))
        return true;
    return writer.openNew(reader.width, reader.height);
}

} // namespace

void CountColorsQVR(REALpictureStruct* picture, REALmemoryBlockStruct*& red, REALmemoryBlockStruct*& blue,
                    REALmemoryBlockStruct*& green, int32_t& count)
{
    REALmemoryBlockStruct** const blocks[] = {&red, &blue, &green};
    for (REALmemoryBlockStruct** block : blocks)
        if (*block == nullptr)
            *block = host.REALNewMemoryBlock(histogramBytes);
    count = -1;
    if (red == nullptr || blue == nullptr || green == nullptr)
        return;
    PictureReader reader;
    if (!reader.open(picture))
        return;
    uint8_t* const redData = blockData(red, histogramBytes);
    uint8_t* const blueData = blockData(blue, histogramBytes);
    uint8_t* const greenData = blockData(green, histogramBytes);
    if (redData == nullptr || blueData == nullptr || greenData == nullptr)
        return;

    Histograms histograms;
    libc::memset(&histograms, 0, sizeof histograms);
    forEachWords(reader, wholeBlock(reader), [&histograms](const uint32_t* words, int32_t count) {
        int32_t index = 0;
        for (; index + 2 <= count; index += 2)
        {
            histograms.count(0, words[index]);
            histograms.count(1, words[index + 1]);
        }
        if (index < count)
            histograms.count(0, words[index]);
    });

    addCounters(redData, histograms.red);
    // Deliberately crosswise: scripts rely on the blocks declared blue and green receiving each other's
    // channel.
    addCounters(blueData, histograms.green);
    addCounters(greenData, histograms.blue);
    count = pixelCount(reader);
}

REALpictureStruct* TransformColorsQVR(REALpictureStruct* picture, REALmemoryBlockStruct* red,
                                      REALmemoryBlockStruct* blue, REALmemoryBlockStruct* green,
                                      REALpictureStruct* destination)
{
    const char* const missing = picture == nullptr ? "picture is nil"
                                : red == nullptr   ? "red memoryblock is nil"
                                : green == nullptr ? "green memoryblock is nil"
                                : blue == nullptr  ? "blue memoryblock is nil"
                                                   : nullptr;
    if (missing != nullptr)
    {
        raiseNilObjectException(missing);
        return nullptr;
    }

    const HeldTable redTable(red);
    const HeldTable greenTable(green);
    const HeldTable blueTable(blue);
    if (redTable.data == nullptr || greenTable.data == nullptr || blueTable.data == nullptr)
        return nullptr;
    PictureReader reader;
    PictureWriter writer;
    if (!reader.open(picture) || !openTarget(writer, destination, reader))
        return nullptr;

    const PlacedTables tables(redTable.data, greenTable.data, blueTable.data);
    mapWords(
        writer, wholeBlock(reader), [&tables](uint32_t word) { return tables.mapped(word); }, reader);
    return writer.RenderPictureWriter();
}

} // namespace qvr::colourStatistics
