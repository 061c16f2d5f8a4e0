#include "host/objects/guarded_block.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

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

    void* mapped = mmap(nullptr, total, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED)
        return std::nullopt;

    GuardedBlock block;
    block.mapping = static_cast<std::uint8_t*>(mapped);
    block.mappingSize = total;
    if (usable != 0 && mprotect(block.mapping + page, usable, PROT_READ | PROT_WRITE) != 0)
        return std::nullopt;
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
        munmap(mapping, mappingSize);
}

bool GuardedBlock::intact() const
{
    const std::uint8_t* end = mapping + mappingSize - pageSize();
    const std::size_t front = frontCanarySize(mapping + pageSize(), begin);
    const std::uint8_t* behind = begin + byteCount;
    return isCanary(begin - front, front) && isCanary(behind, static_cast<std::size_t>(end - behind));
}

} // namespace standin
