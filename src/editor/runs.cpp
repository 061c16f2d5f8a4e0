#include "editor/runs.h"

// As qvrLaneLimit: changed from outside only.
__attribute__((used)) int32_t qvrSmallestStreamed = 4 << 20;

namespace qvr::runs
{

namespace
{

/// Pixels of a converted block: four such blocks fit the first-level cache.
constexpr int32_t convertedBlock = 1024;

struct ConvertedPixels
{
    alignas(32) uint8_t bytes[convertedBlock * 4];
};

/// Whether the destination is so large, and not a source as well, that storing around the cache pays.
bool isStreamed(const PictureEditor* const* sources, int32_t sourceCount, const PictureEditor* destination)
{
    if (destination == nullptr ||
        !isStreamedSize(static_cast<int64_t>(destination->rowBytes) * destination->height))
        return false;
    for (int32_t i = 0; i < sourceCount; ++i)
        if (sources[i]->baseAddress == destination->baseAddress)
            return false;
    return true;
}

bool haveFormat(PixelFormat format, const PictureEditor* const* sources, int32_t sourceCount,
                const PictureEditor* destination)
{
    for (int32_t i = 0; i < sourceCount; ++i)
        if (sources[i]->pixelFormat != format)
            return false;
    return destination == nullptr || destination->pixelFormat == format;
}

bool visitRows(VisitRun visit, const void* visitor, const Block& block, const PictureEditor* const* sources,
               int32_t sourceCount, const PictureEditor* destination, bool streamed)
{
    Run run{};
    run.count = block.columns;
    run.streamed = streamed;
    for (int32_t row = block.top; row < block.bottom; ++row)
    {
        run.row = row;
        for (int32_t i = 0; i < sourceCount; ++i)
            run.sources[i] = sources[i]->rowAddress(row) + block.byteOffset;
        if (destination != nullptr)
            run.destination = destination->rowAddress(row) + block.byteOffset;
        if (!visit(visitor, run))
            return false;
    }
    return true;
}

bool visitConvertedBlocks(VisitRun visit, const void* visitor, const Block& block,
                          const PictureEditor* const* sources, int32_t sourceCount,
                          const PictureEditor* destination, bool streamed)
{
    ConvertedPixels converted[mostSources];
    ConvertedPixels result;
    Run run{};
    run.streamed = streamed && destination->pixelFormat == PixelFormatARGB32;
    for (int32_t row = block.top; row < block.bottom; ++row)
        for (int32_t column = 0; column < block.columns; column += convertedBlock)
        {
            run.row = row;
            run.column = column;
            run.count = minimum(convertedBlock, block.columns - column);
            for (int32_t i = 0; i < sourceCount; ++i)
            {
                const PictureEditor& source = *sources[i];
                const uint8_t* pixels = source.rowAddress(row) + block.byteOffset +
                                        static_cast<ptrdiff_t>(column) * source.bytesPerPixel;
                run.sources[i] = pixels;
                if (source.pixelFormat == PixelFormatARGB32)
                    continue;
                convertPixels(source.pixelFormat, pixels, PixelFormatARGB32, converted[i].bytes, run.count);
                run.sources[i] = converted[i].bytes;
            }
            if (destination == nullptr)
            {
                if (!visit(visitor, run))
                    return false;
                continue;
            }
            uint8_t* pixels = destination->rowAddress(row) + block.byteOffset +
                              static_cast<ptrdiff_t>(column) * destination->bytesPerPixel;
            const bool inPlace = destination->pixelFormat == PixelFormatARGB32;
            run.destination = inPlace ? pixels : result.bytes;
            if (!visit(visitor, run))
                return false;
            if (!inPlace)
                convertPixels(PixelFormatARGB32, result.bytes, destination->pixelFormat, pixels, run.count);
        }
    return true;
}

} // namespace

} // namespace qvr::runs

namespace qvr
{

bool sameWordFormat(const PictureEditor& first, const PictureEditor& second)
{
    return first.pixelFormat == second.pixelFormat && first.bytesPerPixel == 4;
}

bool isStreamedSize(int64_t bytes)
{
    const volatile int32_t& smallest = qvrSmallestStreamed;
    return bytes >= smallest;
}

Block wholeBlock(const PictureEditor& picture)
{
    return {0, picture.width, 0, picture.height};
}

int32_t pixelCount(const PictureEditor& picture)
{
    return wrappingMultiply(maximum(picture.width, 0), maximum(picture.height, 0));
}

int32_t columnsWithin(const PictureEditor& picture, const Block& block)
{
    const int64_t rowEnd = static_cast<int64_t>(picture.width) * picture.bytesPerPixel;
    const int64_t bytes = rowEnd - block.byteOffset;
    if (bytes <= 0 || block.columns <= 0 || picture.height < 1)
        return 0;
    const int64_t wanted = static_cast<int64_t>(block.columns) * picture.bytesPerPixel;
    // The smaller of the two fits 32 bits wherever the picture's rows do.
    return static_cast<int32_t>(static_cast<uint32_t>(minimum(bytes, wanted))) / picture.bytesPerPixel;
}

Block blockOf(const PictureEditor& picture, const Rectangle& rectangle)
{
    const int32_t width = rectangle.width < 0 ? picture.width : rectangle.width;
    const int32_t height = rectangle.height < 0 ? picture.height : rectangle.height;
    const int32_t left = maximum(rectangle.left, 0);
    const int32_t right = endWithin(rectangle.left, width, picture.width);
    if (left >= right)
        return {};
    Block block{left * 4, right - left, maximum(rectangle.top, 0),
                endWithin(rectangle.top, height, picture.height)};
    block.columns = columnsWithin(picture, block);
    return block;
}

bool visitRuns(const RunVisitor& visitor, Block block, const PictureEditor* const* sources,
               int32_t sourceCount, const PictureEditor* destination)
{
    for (int32_t i = 0; i < sourceCount; ++i)
        block.columns = columnsWithin(*sources[i], block);
    if (destination != nullptr)
        block.columns = columnsWithin(*destination, block);
    if (block.empty())
        return true;
    const bool streamed = runs::isStreamed(sources, sourceCount, destination);
    const auto visited = [&](auto visitIn, VisitRun visit) {
        return visitIn(visit, visitor.visitor, block, sources, sourceCount, destination, streamed);
    };
    const bool finished = runs::haveFormat(PixelFormatARGB32, sources, sourceCount, destination)
                              ? visited(runs::visitRows, visitor.visitARGB32)
                          : runs::haveFormat(PixelFormatBGRX32, sources, sourceCount, destination)
                              ? visited(runs::visitRows, visitor.visitBGRX32)
                              : visited(runs::visitConvertedBlocks, visitor.visitARGB32);
    if (streamed)
        endStreaming();
    return finished;
}

} // namespace qvr
