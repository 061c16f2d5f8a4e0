#pragma once

#include "host/objects/guarded_block.h"
#include "host/options.h"
#include "host/values/storage.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace standin
{

/// Freed picture memory that waits for the next picture of its size.
using PixelPool = std::multimap<std::size_t, std::unique_ptr<std::uint8_t[]>>;

/// How a picture's rows are to be laid out.
struct RowLayout
{
    Memory memory;
    int padding = 0;
    std::uint8_t fill = 0;
};

/// The memory behind a picture's rows.
class PixelRows
{
public:
    /// Nothing when memory runs out.
    static std::optional<PixelRows> make(int width, int height, Storage storage, const RowLayout& layout,
                                         PixelPool& pool);
    PixelRows(PixelRows&&) = default;
    PixelRows& operator=(PixelRows&&) = default;
    ~PixelRows();

    std::uint8_t* row(int y) const
    {
        return rows[static_cast<std::size_t>(y)];
    }
    /// Start of row 0; not null even without rows.
    std::uint8_t* base() const
    {
        return firstRow;
    }
    int rowBytes() const
    {
        return stride;
    }
    /// Whether all canary bytes are as they were.
    bool intact() const;
    /// The words of a memory bitmap, made for storages that are locked as bitmaps only.
    std::uint32_t* bitmapWords() const
    {
        return words;
    }

private:
    PixelRows() = default;

    bool makePlain(std::size_t rowSize, const RowLayout& layout, PixelPool& pool);
    bool makeGuarded(std::size_t rowSize, const RowLayout& layout);
    bool makeScattered(std::size_t rowSize, std::uint8_t fill);
    bool makeBitmapRecord(int width, int height, Memory memory);

    std::vector<std::uint8_t*> rows;
    std::uint8_t* firstRow = nullptr;
    int stride = 0;
    std::size_t paddingSize = 0; ///< canary bytes behind each row
    int paddingInStride = 0;     ///< how many of them the stride contains: all for GWorlds, none for bitmaps
    std::vector<GuardedBlock> blocks;
    std::uint32_t* words = nullptr;
    std::vector<std::uint32_t> plainRecord;
    std::unique_ptr<std::uint8_t[]> plain;
    std::size_t plainSize = 0;
    PixelPool* pool = nullptr;
};

} // namespace standin
