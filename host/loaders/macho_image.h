#pragma once

#include "host/loaders/macho_format.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// A bundle in memory, linked and protected; nothing of it has run.
class MachOImage
{
public:
    /// Throws Error when the file is damaged, or imports what `findImport` lacks.
    explicit MachOImage(MachOBytes content);

    /// Where "_REALPluginMain" lies.
    const std::uint8_t* entryPoint() const
    {
        return entry;
    }
    /// Where the functions lie that are to run first.
    std::vector<std::uintptr_t> initialisers() const;
    /// Where a symbol of the file lies, by its C name; null when there is none.
    void* symbol(std::string_view name) const;
    /// Where its variables lie.
    std::vector<std::span<std::uint8_t>> variables() const;

private:
    struct Unmap
    {
        std::size_t size = 0;
        void operator()(std::uint8_t* mapped) const;
    };

    std::uint32_t slide() const;
    void map();
    std::uint8_t* at(std::uint32_t address, std::uint32_t size) const;
    std::uint32_t word(std::uint32_t address) const;
    void setWord(std::uint32_t address, std::uint32_t value) const;
    std::uint32_t importAddress(const std::string& symbol) const;
    const std::uint8_t* findEntryPoint() const;
    void protect() const;

    MachOFile file;
    std::unique_ptr<std::uint8_t, Unmap> memory{nullptr, Unmap{}};
    const std::uint8_t* entry = nullptr;
};

} // namespace standin
