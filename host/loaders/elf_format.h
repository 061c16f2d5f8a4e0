/// \file
/// The parts of the ELF format that the host reads by itself. Everything is read with its limits checked,
/// whatever is damaged.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// A shared object for 32-bit x86. Addresses count from where it is loaded.
class ElfFile
{
public:
    struct Range
    {
        std::uint32_t address = 0;
        std::uint32_t size = 0;
    };

    /// Throws Error for what the dynamic linker would refuse with less words, or crash on.
    ElfFile(std::vector<std::uint8_t> content, const std::string& path);

    const std::vector<std::uint8_t>& bytes() const
    {
        return image;
    }
    /// The address of a symbol, those included that are not exported; 0 when there is none.
    std::uint32_t symbolAddress(std::string_view name) const;
    /// The names of the symbols that the file offers to others, and of those that others must offer.
    std::vector<std::string> exports() const;
    std::vector<std::string> imports() const;
    /// The memory that can be written to when the linker is done, without what instruments count in.
    std::vector<Range> variables() const;

private:
    template <class Record>
    bool read(Record& record, std::uint64_t offset) const;
    template <class Visit>
    void forEachSegment(Visit visit) const;
    template <class Visit>
    void forEachSection(Visit visit) const;
    /// Calls `visit(symbol, names)` for all of the table of that type; names begin at that place of the file.
    template <class Visit>
    void forEachSymbol(std::uint32_t tableType, Visit visit) const;
    /// The beginning of a text in a damaged file, which may go on for ever.
    std::string text(std::uint64_t offset) const;
    bool textIs(std::uint64_t offset, std::string_view text) const;
    bool textStarts(std::uint64_t offset, std::string_view start) const;

    std::vector<std::uint8_t> image;
};

} // namespace standin
