#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace standin
{

/// What bytes hold that nobody may write.
constexpr std::uint8_t canary = 0xC5;

/// A block of zero bytes of its own whose neighbourhood is watched: a page that nobody can access begins
/// behind it (with an alignment above 1: up to alignment - 1 canary bytes behind it), another one ends before
/// it, with canary bytes between.
class GuardedBlock
{
public:
    /// Nothing when memory or address space run out.
    static std::optional<GuardedBlock> make(std::size_t size, std::size_t alignment = 1);

    GuardedBlock(GuardedBlock&& other) noexcept;
    GuardedBlock& operator=(GuardedBlock&& other) noexcept;
    ~GuardedBlock();

    std::uint8_t* data() const
    {
        return begin;
    }
    std::size_t size() const
    {
        return byteCount;
    }
    /// Whether all canary bytes are as they were.
    bool intact() const;

private:
    GuardedBlock() = default;

    std::uint8_t* mapping = nullptr;
    std::size_t mappingSize = 0;
    std::uint8_t* begin = nullptr;
    std::size_t byteCount = 0;
};

/// The size of a memory page.
std::size_t pageSize();

/// Whether `size` bytes from `begin` all hold the canary.
bool isCanary(const std::uint8_t* begin, std::size_t size);

} // namespace standin
