#include "host/objects/guarded_block.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace standin
{

namespace
{

/// Canary bytes that are written and checked before a block, at most.
constexpr std::size_t frontCanary = 256;

std::size_t frontCanarySize(const std::uint8_t* firstPage, const std::uint8_t* begin)
{
    return std::min(frontCanary, static_cast<std::size_t>(begin - firstPage));
}

/// Mappings of blocks that are gone. A mapping costs less to open again than to make, and what uses a block
/// that is gone is caught all the same: nobody can access them.
class FreedMappings
{
public:
    /// A mapping of this size, closed; null when there is none.
    std::uint8_t* take(std::size_t size)
    {
        if (size > largest || mappings[size / pageSize()].empty())
            return nullptr;
        std::vector<std::uint8_t*>& ofSize = mappings[size / pageSize()];
        std::uint8_t* mapping = ofSize.back();
        ofSize.pop_back();
        return mapping;
    }

    void give(std::uint8_t* mapping, std::size_t size)
    {
        const bool kept = size <= largest && mappings[size / pageSize()].size() < mostOfOneSize &&
                          mprotect(mapping, size, PROT_NONE) == 0;
        if (kept)
            mappings[size / pageSize()].push_back(mapping);
        else
            munmap(mapping, size);
    }

private:
    static constexpr std::size_t mostOfOneSize = 64;
    static constexpr std::size_t mostPages = 6;

    const std::size_t largest = mostPages * pageSize();
    std::array<std::vector<std::uint8_t*>, mostPages + 1> mappings;
};

FreedMappings& freedMappings()
{
    // Blocks may end after every other variable of the program.
    static auto& freed = *new FreedMappings;
    return freed;
}

} // namespace

std::size_t pageSize()
{
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

bool isCanary(const std::uint8_t* begin, std::size_t size)
{
    return std::all_of(begin, begin + size, [](std::uint8_t byte) { return byte == canary; });
}

std::optional<GuardedBlock> GuardedBlock::make(std::size_t size, std::size_t alignment)
{
    const std::size_t page = pageSize();
    if (size > SIZE_MAX / 2)
        return std::nullopt;
    const std::size_t slack = (alignment - size % alignment) % alignment;
    const std::size_t usable = (size + slack + page - 1) / page * page;
    const std::size_t total = usable + 2 * page;

    std::uint8_t* const freed = freedMappings().take(total);
    void* mapped = freed != nullptr
                       ? freed
                       : mmap(nullptr, total, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED)
        return std::nullopt;

    GuardedBlock block;
    block.mapping = static_cast<std::uint8_t*>(mapped);
    block.mappingSize = total;
    if (usable != 0 && mprotect(block.mapping + page, usable, PROT_READ | PROT_WRITE) != 0)
        return std::nullopt;
    if (freed != nullptr)
        std::memset(block.mapping + page, 0, usable);
    block.begin = block.mapping + page + usable - slack - size;
    block.byteCount = size;

    const std::size_t front = frontCanarySize(block.mapping + page, block.begin);
    std::memset(block.begin - front, canary, front);
    std::memset(block.begin + size, canary, slack);
    return block;
}

GuardedBlock::GuardedBlock(GuardedBlock&& other) noexcept
    : mapping(std::exchange(other.mapping, nullptr)),
      mappingSize(other.mappingSize),
      begin(other.begin),
      byteCount(other.byteCount)
{
}

GuardedBlock& GuardedBlock::operator=(GuardedBlock&& other) noexcept
{
    std::swap(mapping, other.mapping);
    std::swap(mappingSize, other.mappingSize);
    std::swap(begin, other.begin);
    std::swap(byteCount, other.byteCount);
    return *this;
}

GuardedBlock::~GuardedBlock()
{
    if (mapping != nullptr)
        freedMappings().give(mapping, mappingSize);
}

bool GuardedBlock::intact() const
{
    const std::uint8_t* end = mapping + mappingSize - pageSize();
    const std::size_t front = frontCanarySize(mapping + pageSize(), begin);
    const std::uint8_t* behind = begin + byteCount;
    return isCanary(begin - front, front) && isCanary(behind, static_cast<std::size_t>(end - behind));
}

} // namespace standin
