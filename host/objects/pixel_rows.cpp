#include "host/objects/pixel_rows.h"

#include "abi/host_abi.h"
#include "host/host.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <numeric>
#include <random>

namespace standin
{

namespace
{

/// Taller bitmaps keep their rows in one block: each guarded row costs two mappings, of which a process has
/// few.
constexpr int mostGuardedRows = 512;

/// Bytes between the rows of a bitmap whose rows have no guard pages of their own.
constexpr std::size_t rowGap = 16;

constexpr std::size_t bitmapRecordWords = bitmapRowTableWord + 1;

/// Widens the `bits` low bits of `value` to a byte, so that the largest value becomes 255.
std::uint8_t widen(unsigned value, unsigned bits)
{
    const unsigned largest = (1U << bits) - 1;
    return static_cast<std::uint8_t>((value & largest) * 255 / largest);
}

/// The row numbers in an order that is never the natural one for three rows and more, the same in every run.
std::vector<std::size_t> shuffledOrder(std::size_t count)
{
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), std::minstd_rand(static_cast<unsigned>(count)));
    if (count > 1 && std::is_sorted(order.begin(), order.end()))
        std::swap(order.front(), order.back());
    return order;
}

} // namespace

int bytesPerPixel(Storage storage)
{
    constexpr int bitsPerByte = 8;
    return depthOf(storage) / bitsPerByte;
}

int depthOf(Storage storage)
{
    switch (storage)
    {
    case Storage::GWorld24:
        return 24;
    case Storage::GWorld16:
        return 16;
    case Storage::GWorld8:
        return 8;
    default:
        return 32;
    }
}

bool isGWorld(Storage storage)
{
    return storage != Storage::Bitmap && storage != Storage::Drawable;
}

std::uint8_t opaqueAlpha(Storage storage)
{
    return storage == Storage::Bitmap ? 0 : 255;
}

Pixel loadPixel(Storage storage, const std::uint8_t* bytes)
{
    switch (storage)
    {
    case Storage::GWorld24:
        return {bytes[0], bytes[1], bytes[2], 255};
    case Storage::GWorld16:
    {
        const unsigned word = static_cast<unsigned>(bytes[0]) << 8 | bytes[1];
        return {widen(word >> 10, 5), widen(word >> 5, 5), widen(word, 5), 255};
    }
    case Storage::GWorld8:
        return {widen(bytes[0] >> 5U, 3), widen(bytes[0] >> 2U, 3), widen(bytes[0], 2), 255};
    case Storage::Bitmap:
        return {bytes[2], bytes[1], bytes[0], bytes[3]};
    default:
        return {bytes[1], bytes[2], bytes[3], bytes[0]};
    }
}

void storePixel(Storage storage, std::uint8_t* bytes, Pixel pixel)
{
    switch (storage)
    {
    case Storage::GWorld24:
        bytes[0] = pixel.red;
        bytes[1] = pixel.green;
        bytes[2] = pixel.blue;
        break;
    case Storage::GWorld16:
    {
        const unsigned word = (pixel.red >> 3U) << 10 | (pixel.green >> 3U) << 5 | pixel.blue >> 3U;
        bytes[0] = static_cast<std::uint8_t>(word >> 8);
        bytes[1] = static_cast<std::uint8_t>(word);
        break;
    }
    case Storage::GWorld8:
        bytes[0] =
            static_cast<std::uint8_t>((pixel.red & 0xE0U) | (pixel.green >> 5U) << 2 | pixel.blue >> 6U);
        break;
    case Storage::Bitmap:
        bytes[0] = pixel.blue;
        bytes[1] = pixel.green;
        bytes[2] = pixel.red;
        bytes[3] = pixel.alpha;
        break;
    default:
        bytes[0] = pixel.alpha;
        bytes[1] = pixel.red;
        bytes[2] = pixel.green;
        bytes[3] = pixel.blue;
        break;
    }
}

std::optional<PixelRows> PixelRows::make(int width, int height, Storage storage, const RowLayout& layout,
                                         PixelPool& pool)
{
    constexpr std::uint64_t largestPicture = 0x60000000;

    const bool bitmap = storage == Storage::Bitmap;
    const std::uint64_t rowSize = static_cast<std::uint64_t>(width) * bytesPerPixel(storage);
    const int padding = bitmap ? 0 : layout.padding;
    const std::uint64_t size = (rowSize + padding) * height;
    if (width < 0 || height < 0 || rowSize + padding > INT32_MAX || size > largestPicture)
        return std::nullopt;

    PixelRows result;
    result.stride = static_cast<int>(rowSize) + padding;
    result.paddingSize = static_cast<std::size_t>(padding);
    result.paddingInStride = padding;
    result.rows.resize(static_cast<std::size_t>(height));
    const bool guarded = layout.memory == Memory::Guarded;
    const bool made = !guarded ? result.makePlain(static_cast<std::size_t>(size), layout, pool)
                      : bitmap ? result.makeScattered(static_cast<std::size_t>(rowSize), layout.fill)
                               : result.makeGuarded(static_cast<std::size_t>(rowSize), layout);
    if (!made || (bitmap && !result.makeBitmapRecord(width, height, layout.memory)))
        return std::nullopt;
    return result;
}

PixelRows::~PixelRows()
{
    if (pool != nullptr && plain != nullptr)
        pool->emplace(plainSize, std::move(plain));
}

bool PixelRows::makePlain(std::size_t size, const RowLayout& layout, PixelPool& freed)
{
    const auto pooled = freed.find(size);
    if (pooled != freed.end())
    {
        plain = std::move(pooled->second);
        freed.erase(pooled);
    }
    else
    {
        plain.reset(new (std::nothrow) std::uint8_t[size + 1]);
        if (plain == nullptr)
            return false;
        std::memset(plain.get(), layout.fill, size);
    }
    if (layout.memory == Memory::Pooled)
        pool = &freed;
    plainSize = size;
    firstRow = plain.get();
    for (std::size_t y = 0; y < rows.size(); ++y)
    {
        rows[y] = firstRow + y * static_cast<std::size_t>(stride);
        std::memset(rows[y] + stride - paddingSize, canary, paddingSize);
    }
    return true;
}

bool PixelRows::makeGuarded(std::size_t rowSize, const RowLayout& layout)
{
    auto block = GuardedBlock::make(rows.size() * static_cast<std::size_t>(stride));
    if (!block)
        return false;
    firstRow = block->data();
    for (std::size_t y = 0; y < rows.size(); ++y)
    {
        rows[y] = firstRow + y * static_cast<std::size_t>(stride);
        std::memset(rows[y], layout.fill, rowSize);
        std::memset(rows[y] + rowSize, canary, paddingSize);
    }
    blocks.push_back(std::move(*block));
    return true;
}

bool PixelRows::makeScattered(std::size_t rowSize, std::uint8_t fill)
{
    const bool guardEachRow = rows.size() <= mostGuardedRows;
    const std::size_t blockCount = guardEachRow ? std::max<std::size_t>(rows.size(), 1) : 1;
    const std::size_t blockSize =
        guardEachRow ? rows.empty() ? 0 : rowSize : rows.size() * (rowSize + rowGap);
    for (std::size_t count = 0; count < blockCount; ++count)
    {
        auto block = GuardedBlock::make(blockSize);
        if (!block)
            return false;
        blocks.push_back(std::move(*block));
    }
    if (!guardEachRow)
    {
        paddingSize = rowGap;
        std::memset(blocks.front().data(), canary, blockSize);
    }
    const std::vector<std::size_t> order = shuffledOrder(rows.size());
    for (std::size_t y = 0; y < rows.size(); ++y)
    {
        rows[y] =
            guardEachRow ? blocks[order[y]].data() : blocks.front().data() + order[y] * (rowSize + rowGap);
        std::memset(rows[y], fill, rowSize);
    }
    firstRow = rows.empty() ? blocks.front().data() : rows.front();
    return true;
}

bool PixelRows::makeBitmapRecord(int width, int height, Memory memory)
{
    constexpr std::size_t recordSize = bitmapRecordWords * sizeof(std::uint32_t);
    const std::size_t tableSize = std::max<std::size_t>(rows.size(), 1) * sizeof(std::uint8_t*);
    std::uint8_t* table = nullptr;
    if (memory == Memory::Guarded)
    {
        auto recordBlock = GuardedBlock::make(recordSize);
        auto tableBlock = GuardedBlock::make(tableSize);
        if (!recordBlock || !tableBlock)
            return false;
        words = reinterpret_cast<std::uint32_t*>(recordBlock->data());
        table = tableBlock->data();
        blocks.push_back(std::move(*recordBlock));
        blocks.push_back(std::move(*tableBlock));
    }
    else
    {
        plainRecord.resize((recordSize + tableSize) / sizeof(std::uint32_t));
        words = plainRecord.data();
        table = reinterpret_cast<std::uint8_t*>(words + bitmapRecordWords);
    }

    if (rows.empty())
        std::memcpy(table, &firstRow, sizeof firstRow);
    else
        std::memcpy(table, rows.data(), tableSize);
    words[bitmapWidthWord] = static_cast<std::uint32_t>(width);
    words[bitmapHeightWord] = static_cast<std::uint32_t>(height);
    words[bitmapPresentWord] = reinterpret_cast<std::uintptr_t>(firstRow);
    words[bitmapRowTableWord] = reinterpret_cast<std::uintptr_t>(table);
    return true;
}

bool PixelRows::intact() const
{
    const auto blockIntact = [](const GuardedBlock& block) { return block.intact(); };
    return std::all_of(blocks.begin(), blocks.end(), blockIntact) &&
           std::all_of(rows.begin(), rows.end(), [this](const std::uint8_t* row) {
               return isCanary(row + stride - paddingInStride, paddingSize);
           });
}

} // namespace standin
