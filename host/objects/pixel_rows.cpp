#include "host/objects/pixel_rows.h"

#include "abi/host_abi.h"

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

/// More bytes between the rows of a bitmap whose rows have no guard pages of their own.
constexpr std::size_t rowGap = 16;

/// Rows of a bitmap begin at a word's boundary or so many bytes beside it.
constexpr int wordSize = 4;

constexpr std::size_t bitmapRecordWords = bitmapRowTableWord + 1;

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

std::optional<PixelRows> PixelRows::make(int width, int height, Storage storage, const RowLayout& layout,
                                         PixelPool& pool)
{
    constexpr std::uint64_t largestPicture = 0x60000000;

    const bool bitmap = traitsOf(storage).access == Access::Bitmap;
    const std::uint64_t rowSize = static_cast<std::uint64_t>(width) * bytesPerPixel(storage);
    const int padding = bitmap ? layout.padding % wordSize : layout.padding;
    const std::uint64_t size = (rowSize + padding) * height;
    if (width < 0 || height < 0 || rowSize + padding > INT32_MAX || size > largestPicture)
        return std::nullopt;

    PixelRows result;
    result.paddingSize = static_cast<std::size_t>(padding);
    result.paddingInStride = bitmap ? 0 : padding;
    result.stride = static_cast<int>(rowSize) + result.paddingInStride;
    result.rows.resize(static_cast<std::size_t>(height));
    const bool guarded = layout.memory == Memory::Guarded;
    const bool made = !guarded ? result.makePlain(static_cast<std::size_t>(rowSize), layout, pool)
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

bool PixelRows::makePlain(std::size_t rowSize, const RowLayout& layout, PixelPool& freed)
{
    const std::size_t size = rows.size() * (rowSize + paddingSize);
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
        rows[y] = firstRow + y * (rowSize + paddingSize);
        std::memset(rows[y] + rowSize, canary, paddingSize);
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
    if (!guardEachRow)
        paddingSize += rowGap;
    const std::size_t distance = rowSize + paddingSize;
    const std::size_t blockSize = guardEachRow ? rows.empty() ? 0 : distance : rows.size() * distance;
    for (std::size_t count = 0; count < blockCount; ++count)
    {
        auto block = GuardedBlock::make(blockSize);
        if (!block)
            return false;
        blocks.push_back(std::move(*block));
    }
    const std::vector<std::size_t> order = shuffledOrder(rows.size());
    for (std::size_t y = 0; y < rows.size(); ++y)
    {
        rows[y] = guardEachRow ? blocks[order[y]].data() : blocks.front().data() + order[y] * distance;
        std::memset(rows[y], fill, rowSize);
        std::memset(rows[y] + rowSize, canary, paddingSize);
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
