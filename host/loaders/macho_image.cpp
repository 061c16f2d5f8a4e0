#include "host/loaders/macho_image.h"

#include "host/loaders/plugin.h"
#include "host/objects/guarded_block.h"

#include <sys/mman.h>

#include <cstring>

namespace standin
{

MachOImage::MachOImage(MachOBytes content) : file(std::move(content))
{
    map();
    file.forEachRebase([this](std::uint32_t address) { setWord(address, word(address) + slide()); });
    file.forEachBind([this](std::uint32_t address, const std::string& symbol, std::uint32_t addend) {
        setWord(address, importAddress(symbol) + addend);
    });
    entry = findEntryPoint();
    protect();
}

std::vector<std::uintptr_t> MachOImage::initialisers() const
{
    std::vector<std::uintptr_t> functions;
    for (const std::uint32_t address : file.initialiserAddresses())
        functions.push_back(word(address));
    return functions;
}

void* MachOImage::symbol(std::string_view name) const
{
    const std::uint32_t address = file.symbolAddress("_" + std::string(name));
    return address == 0 ? nullptr : at(address, MachOFile::wordSize);
}

std::vector<std::span<std::uint8_t>> MachOImage::variables() const
{
    std::vector<std::span<std::uint8_t>> places;
    for (const MachOSegment& segment : file.segments())
        if (segment.writable)
            places.emplace_back(at(segment.address, segment.memorySize), segment.memorySize);
    return places;
}

void MachOImage::Unmap::operator()(std::uint8_t* mapped) const
{
    munmap(mapped, size);
}

void MachOImage::map()
{
    void* mapped =
        mmap(nullptr, file.memorySize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        file.bytes().fail("no memory to load it");
    memory = {static_cast<std::uint8_t*>(mapped), Unmap{file.memorySize()}};
    for (const MachOSegment& segment : file.segments())
        std::memcpy(at(segment.address, segment.fileSize),
                    file.bytes().range(segment.fileOffset, segment.fileSize), segment.fileSize);
}

/// Where an address of the file lies now.
std::uint8_t* MachOImage::at(std::uint32_t address, std::uint32_t size) const
{
    const std::uint32_t offset = address - file.lowestAddress();
    if (std::uint64_t{offset} + size > file.memorySize())
        file.bytes().fail("damaged: an address lies outside of its segments");
    return memory.get() + offset;
}

std::uint32_t MachOImage::word(std::uint32_t address) const
{
    std::uint32_t value = 0;
    std::memcpy(&value, at(address, sizeof value), sizeof value);
    return value;
}

void MachOImage::setWord(std::uint32_t address, std::uint32_t value) const
{
    std::memcpy(at(address, sizeof value), &value, sizeof value);
}

std::uint32_t MachOImage::slide() const
{
    return reinterpret_cast<std::uintptr_t>(memory.get()) - file.lowestAddress();
}

std::uint32_t MachOImage::importAddress(const std::string& symbol) const
{
    // Symbols of C have an underscore in front; the binder's own helper has none.
    const bool isC = symbol.starts_with('_');
    const void* found = findImport(isC ? symbol.substr(1) : symbol);
    if (found == nullptr)
        file.bytes().fail("imports " + symbol + ", which does not exist here");
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(found));
}

const std::uint8_t* MachOImage::findEntryPoint() const
{
    constexpr std::string_view name = "_REALPluginMain";
    std::uint32_t address = file.exportedAddress(name);
    if (address == 0)
        address = file.symbolAddress(name);
    if (address == 0)
        file.bytes().fail("exports no REALPluginMain");
    return at(address, 1);
}

void MachOImage::protect() const
{
    const auto page = static_cast<std::uint32_t>(pageSize());
    for (const MachOSegment& segment : file.segments())
    {
        const std::uint32_t size = (segment.memorySize + page - 1) / page * page;
        // The host itself reads symbols and variables, whatever a file says about their segment.
        const int rights =
            PROT_READ | (segment.writable ? PROT_WRITE : 0) | (segment.executable ? PROT_EXEC : 0);
        if (segment.memorySize != 0 && segment.address % page == 0 &&
            mprotect(at(segment.address, segment.memorySize), size, rights) != 0)
            file.bytes().fail("its segments cannot be protected");
    }
}

} // namespace standin
